// A platform without documents, with one profile, one plug-in and no store.

#include "Platform.h"

#include <condition_variable>
#include <mutex>
#include <optional>

namespace
{
std::mutex gMutex;
std::condition_variable gChanged;
std::optional<tarno::osa::ITcpSocketAccept*> gAcceptor;

void SetAcceptor(tarno::osa::ITcpSocketAccept* acceptor)
{
    const std::lock_guard lock(gMutex);
    gAcceptor = acceptor;
    gChanged.notify_all();
}
} // namespace

tarno::osa::ITcpSocketAccept* other::Acceptor()
{
    std::unique_lock lock(gMutex);
    gChanged.wait(lock, [] { return gAcceptor.has_value(); });
    return *gAcceptor;
}

namespace analytics
{
DocumentNode::~DocumentNode() = default;
int DocumentNode::GetValue(int defaultValue) { return defaultValue; }
void DocumentNode::SetValue(int) {}
int DocumentNode::GetProperty(const std::string&, int defaultValue) { return defaultValue; }
std::string DocumentNode::GetProperty(const std::string&) { return {}; }
void DocumentNode::SetProperty(const std::string&, int) {}
void DocumentNode::SetProperty(const std::string&, const std::string&) {}
DocumentNode* DocumentNode::AddNewChild(const std::string&, const std::string&) { return nullptr; }
DocumentNode* DocumentNode::AddNewChild(const std::string&, int) { return nullptr; }

Document::Document() = default;
Document::~Document() { static_cast<void>(m_tree); }
bool Document::ParseString(const std::string&) { return false; }
std::string Document::DumpToString() { return {}; }
DocumentNode* Document::SelectNode(const std::string&, DocumentNode*) { return nullptr; }
std::vector<DocumentNode*> Document::SelectNodes(const std::string&, DocumentNode*) { return {}; }
std::string Document::GetSingleValue(const std::string&, DocumentNode*) { return {}; }
int Document::GetSingleValue(const std::string&, int defaultValue, DocumentNode*) { return defaultValue; }
void Document::DeleteNodes(const std::string&, DocumentNode*) {}

ProfileDoc::ProfileDoc() = default;
ProfileDoc::~ProfileDoc() = default;
std::vector<DocumentNode*> ProfileDoc::SelectRules(const std::string&) { return {}; }
DocumentNode* ProfileDoc::SelectRule(const std::string&) { return nullptr; }
void ProfileDoc::DeleteRules(const std::string&) {}
bool ProfileDoc::RuleIsActive(const std::string&) { return false; }
DocumentNode* ProfileDoc::SelectEngine(const std::string&) { return nullptr; }
std::string ProfileDoc::ElementItemQry(bool) { return {}; }
std::string ProfileDoc::SimpleItemQry(bool) { return {}; }
DocumentNode* ProfileDoc::SelectElementItemNode(DocumentNode*, bool) { return nullptr; }
int ProfileDoc::GetSimpleItemValue(const std::string&, int defaultValue, DocumentNode*, bool)
{
    return defaultValue;
}
void ProfileDoc::SetSimpleItemValue(const std::string&, int, DocumentNode*) {}
void ProfileDoc::GetPoints(std::vector<types::Point>&, const std::string&, DocumentNode*) {}
bool ProfileDoc::GetLine(types::Point (&)[2], const std::string&, DocumentNode*) { return false; }

ProfileManager::ProfileManager() = default;
ProfileManager::~ProfileManager() { static_cast<void>(m_store); }
bool ProfileManager::CreateProfile(int&, const std::string&) { return true; }
bool ProfileManager::DeleteProfile(int) { return true; }
bool ProfileManager::ExecuteProfile(int) { return true; }
bool ProfileManager::StopProfile(int) { return true; }
bool ProfileManager::AlgorithmControl(int) { return true; }
bool ProfileManager::GetActiveProfile(int&) const { return true; }
bool ProfileManager::GetProfileList(std::vector<ProfileSummary>& list) const
{
    list.push_back({7, "The only profile there is", "Gate", true});
    return true;
}
std::string ProfileManager::GetProfileName(int) { return {}; }
std::string ProfileManager::GetCameraPreset(int) { return {}; }
std::string ProfileManager::GetConfig(int) { return {}; }
bool ProfileManager::GetActiveRules(int, std::vector<std::string>&) { return true; }
bool ProfileManager::GetEngineConfig(int, const std::string&, std::string&) { return false; }
bool ProfileManager::SetEngineConfig(int, const std::string&, const std::string&) { return true; }
bool ProfileManager::SetEngineConfig(int, const std::string&, const std::string&, const std::string&,
                                     const std::string&)
{
    return true;
}
bool ProfileManager::SetRuleConfig(int, const std::string&, const std::string&, bool) { return true; }
bool ProfileManager::DeleteRule(int, const std::string&) { return true; }
bool ProfileManager::GetMDActiveState() { return false; }

void PluginManager::GetManifest(Manifest& manifest, const std::string&) const
{
    manifest = Manifest("com.varlo.rule.only", "urn:varlo-com:AlgorithmId:TheOnlyBehavior:1");
}
void PluginManager::GetRulesManifests(std::vector<Manifest>& manifests) const
{
    manifests.emplace_back("com.varlo.rule.only", "urn:varlo-com:AlgorithmId:TheOnlyBehavior:1");
}
std::string PluginManager::GetDefaultConfiguration(const std::string&) const { return {}; }
std::string PluginManager::GetVarloDefaultConfiguration(const std::string&) const { return {}; }

std::string Settings::GetValue(const std::string&) { return {}; }
int Settings::GetValue(const std::string&, int defaultValue) { return defaultValue; }
std::vector<std::string> Settings::GetValues(const std::string&) { return {}; }
std::uint32_t Settings::MaxResource() { return 100; }
std::string Settings::OnvifPrefix() { return "tt"; }
std::string Settings::RulesTag() { return "Rules"; }
std::string Settings::EnginePattern() { return "engine"; }

Mutex::Mutex(bool) {}
Mutex::~Mutex() { static_cast<void>(m_handle); }
int Mutex::Lock() noexcept { return 0; }
int Mutex::Unlock() noexcept { return 0; }

ClientFault::~ClientFault() = default;
AnalyticsFault::~AnalyticsFault() = default;
} // namespace analytics

namespace tarno::osa
{
TcpSocket::~TcpSocket() = default;
ITcpSocketAccept::~ITcpSocketAccept() = default;
TcpServer::TcpServer(const char*, unsigned short) {}
TcpServer::~TcpServer() { static_cast<void>(m_members); }
void TcpServer::Another() {}
void TcpServer::Stop() { SetAcceptor(nullptr); }
void TcpServer::SetBufferSize(unsigned int) const {}
void TcpServer::Start(ITcpSocketAccept* acceptor, unsigned short) { SetAcceptor(acceptor); }
SocketException::~SocketException() = default;
SocketException::SocketError SocketException::GetError() const { return kError; }
} // namespace tarno::osa
