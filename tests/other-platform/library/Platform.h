#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

// The classes that the API library asks of a platform layer, declared a second time by what it is promised of
// them and not by our own headers: names, arguments, const-ness, order of virtual operations, and the members
// of what both sides hold. What is here and nothing else makes a platform that the library can be loaded
// with.
namespace analytics
{
namespace types
{
class Point
{
  protected: // nothing here reads them
    std::int32_t m_x = 0;
    std::int32_t m_y = 0;
};
} // namespace types

class DocumentNode
{
  public:
    ~DocumentNode();
    int GetValue(int defaultValue);
    void SetValue(int value);
    int GetProperty(const std::string& name, int defaultValue);
    std::string GetProperty(const std::string& name);
    void SetProperty(const std::string& name, int value);
    void SetProperty(const std::string& name, const std::string& value);
    DocumentNode* AddNewChild(const std::string& name, const std::string& value);
    DocumentNode* AddNewChild(const std::string& name, int value);

  private:
    void* m_handle = nullptr;
};

class Document
{
  public:
    virtual ~Document();
    Document();
    bool ParseString(const std::string& xml);
    std::string DumpToString();
    DocumentNode* SelectNode(const std::string& query, DocumentNode* context);
    std::vector<DocumentNode*> SelectNodes(const std::string& query, DocumentNode* context);
    std::string GetSingleValue(const std::string& query, DocumentNode* context);
    int GetSingleValue(const std::string& query, int defaultValue, DocumentNode* context);
    void DeleteNodes(const std::string& query, DocumentNode* context);

  private:
    void* m_tree = nullptr;
};

class ProfileDoc : public Document
{
  public:
    ProfileDoc();
    ~ProfileDoc() override;
    std::vector<DocumentNode*> SelectRules(const std::string& ruleId);
    DocumentNode* SelectRule(const std::string& ruleId);
    void DeleteRules(const std::string& ruleId);
    bool RuleIsActive(const std::string& ruleId);
    DocumentNode* SelectEngine(const std::string& engineId);
    std::string ElementItemQry(bool);
    std::string SimpleItemQry(bool);
    DocumentNode* SelectElementItemNode(DocumentNode* context, bool);
    int GetSimpleItemValue(const std::string& name, int defaultValue, DocumentNode* context, bool);
    void SetSimpleItemValue(const std::string& name, int value, DocumentNode* context);
    void GetPoints(std::vector<types::Point>& points, const std::string& query, DocumentNode* context);
    bool GetLine(types::Point (&line)[2], const std::string& query, DocumentNode* context);
};

struct ProfileSummary
{
    int id;
    std::string name;
    std::string preset;
    bool active;
};

class Manifest
{
  public:
    Manifest(const std::string& id, const std::string& alias) : m_texts{id, alias, "Name", ""} {}
    virtual ~Manifest() = default;

  protected: // in this order on both sides; nothing here reads them
    std::string m_texts[4];
    bool m_flag = true;
    std::uint32_t m_number = 1;
    std::vector<std::string> m_list;
    std::string m_text;
    bool m_lastFlag = true;
};

class ProfileManager
{
  public:
    ProfileManager();
    ~ProfileManager();
    bool CreateProfile(int& profileId, const std::string& name);
    bool DeleteProfile(int profileId);
    bool ExecuteProfile(int profileId);
    bool StopProfile(int profileId);
    bool AlgorithmControl(int command);
    bool GetActiveProfile(int& profileId) const;
    bool GetProfileList(std::vector<ProfileSummary>& list) const;
    std::string GetProfileName(int profileId);
    std::string GetCameraPreset(int profileId);
    std::string GetConfig(int profileId);
    bool GetActiveRules(int profileId, std::vector<std::string>& rules);
    bool GetEngineConfig(int profileId, const std::string& id, std::string& config);
    bool SetEngineConfig(int profileId, const std::string& id, const std::string& config);
    bool SetEngineConfig(int profileId, const std::string& id, const std::string& config,
                         const std::string& profileName, const std::string& cameraPreset);
    bool SetRuleConfig(int profileId, const std::string& id, const std::string& config, bool active);
    bool DeleteRule(int profileId, const std::string& id);
    bool GetMDActiveState();

  private:
    void* m_store = nullptr;
};

class PluginManager
{
  public:
    void GetManifest(Manifest& manifest, const std::string& id) const;
    void GetRulesManifests(std::vector<Manifest>& manifests) const;
    std::string GetDefaultConfiguration(const std::string& id) const;
    std::string GetVarloDefaultConfiguration(const std::string& id) const;
};

class Settings
{
  public:
    static std::string GetValue(const std::string& key);
    static int GetValue(const std::string& key, int defaultValue);
    static std::vector<std::string> GetValues(const std::string& key);
    static std::uint32_t MaxResource();
    static std::string OnvifPrefix();
    static std::string RulesTag();
    static std::string EnginePattern();
};

class Mutex
{
  public:
    explicit Mutex(bool flag);
    ~Mutex();
    int Lock() noexcept;
    int Unlock() noexcept;

  private:
    void* m_handle = nullptr;
};

class ClientFault : public std::exception
{
  public:
    ~ClientFault() override;
};

class AnalyticsFault : public std::exception
{
  public:
    ~AnalyticsFault() override;
};
} // namespace analytics

namespace tarno::osa
{
class TcpSocket
{
  public:
    virtual ~TcpSocket();
    virtual void SetBufferSize(unsigned int bytes) const = 0;
    virtual void SendAll(const void* data, unsigned int size) = 0;
    virtual int Recv(void* data, unsigned int size, unsigned int timeout) = 0;
};

class ITcpSocketAccept
{
  public:
    virtual ~ITcpSocketAccept();
    virtual void AcceptSocket(TcpSocket* socket) = 0;
};

class TcpServer
{
  public:
    TcpServer(const char* address, unsigned short port);
    virtual ~TcpServer();
    virtual void Another();
    virtual void Stop();
    void SetBufferSize(unsigned int bytes) const;
    void Start(ITcpSocketAccept* acceptor, unsigned short backlog);

  private:
    void* m_members[2] = {};
};

class SocketException : public std::exception
{
  public:
    enum SocketError : int
    {
        kTimeout,
        kBindError,
        kInvalid,
        kError
    };
    ~SocketException() override;
    SocketError GetError() const;
};
} // namespace tarno::osa

// What a test asks of this platform.
namespace other
{
// Whom the server has been started for, waited for; null once it has stopped.
tarno::osa::ITcpSocketAccept* Acceptor();
} // namespace other
