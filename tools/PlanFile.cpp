#include "PlanFile.h"

#include "Documents.h"
#include "Failure.h"
#include "Json.h"

#include <openssl/sha.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

namespace client
{
namespace
{

constexpr int kVersion = 1;

std::string Digest(const std::string& text)
{
    std::string digest(SHA256_DIGEST_LENGTH, '\0');
    SHA256(reinterpret_cast<const unsigned char*>(text.data()), text.size(),
           reinterpret_cast<unsigned char*>(digest.data()));
    return digest;
}

[[noreturn]] void RefuseToWrite(const std::string& file)
{
    throw Failure(Exit::Document,
                  file + " can't be written: " + std::strerror(errno) + ". Name another place with --out");
}

[[noreturn]] void RefusePlan(const std::string& file, const std::string& what)
{
    throw Failure(Exit::Document, file + " " + what + ". 'varlo-analytics plan DIR --out " + file +
                                      "' makes one; a folder that 'export' has written is taken as well");
}

// The fields of a camera that a plan keeps, by their keys. Paths are absolute, so that the plan works from
// any folder.
constexpr std::pair<const char*, std::string Camera::*> kTexts[] = {{"url", &Camera::url},
                                                                    {"user", &Camera::user}};
constexpr std::pair<const char*, std::string Camera::*> kFiles[] = {{"password-file", &Camera::passwordFile},
                                                                    {"cacert", &Camera::authorities},
                                                                    {"cert", &Camera::certificate},
                                                                    {"key", &Camera::key}};

Json Written(const Target& target)
{
    Camera camera = target.said;
    camera.url = target.access.url;
    Json json = {{"frame", target.frame.Text()}};
    for (const auto& [key, field] : kTexts)
        if (!(camera.*field).empty())
            json[key] = camera.*field;
    for (const auto& [key, field] : kFiles)
        if (!(camera.*field).empty())
            json[key] = std::filesystem::absolute(camera.*field).string();
    return json;
}

Camera ReadCamera(const Json& json, const std::string& file)
{
    Camera camera;
    camera.frame = FrameOf(json.at("frame"), file);
    camera.url = json.at("url");
    for (const auto& [key, field] : kTexts)
        camera.*field = json.value(key, "");
    for (const auto& [key, field] : kFiles)
        camera.*field = json.value(key, "");
    return camera;
}

Json Written(const Goal& goal, const std::vector<Target>& targets)
{
    Json behaviors = Json::array();
    for (const ProfileDocuments::Behavior& behavior : goal.wanted.behaviors)
        behaviors.push_back({{"id", behavior.id}, {"document", behavior.document.text}});
    Json hosts = Json::array();
    for (const Target& target : targets)
        hosts.push_back(Written(target));
    return {{"plan", kVersion},
            {"prune", goal.options.prune},
            {"run", goal.options.run},
            {"name", goal.wanted.name},
            {"frame", goal.wanted.frame.Text()},
            {"scene", goal.wanted.scene ? Json(goal.wanted.scene->text) : Json()},
            {"behaviors", behaviors},
            {"hosts", hosts}};
}

void ReadHeader(const Json& header, const std::string& file, const Target& otherwise, SavedPlan& plan)
{
    if (header.at("plan") != kVersion)
        RefusePlan(file, "is the plan of another version of this program");
    plan.goal.options = {header.at("prune"), header.at("run")};
    ProfileDocuments& wanted = plan.goal.wanted;
    wanted.name = header.at("name");
    wanted.frame = FrameOf(header.at("frame"), file);
    if (!header.at("scene").is_null())
        wanted.scene = Source{file + ": scene", header.at("scene")};
    for (const Json& behavior : header.at("behaviors"))
    {
        const std::string id = behavior.at("id");
        wanted.behaviors.push_back({id, {file + ": " + id, behavior.at("document")}});
    }
    std::vector<Camera> cameras;
    for (const Json& host : header.at("hosts"))
        cameras.push_back(ReadCamera(host, file));
    plan.targets = TargetsOf(cameras, otherwise);
}

// Returns whether this was the last line.
bool ReadLine(const Json& line, SavedPlan& plan)
{
    if (line.contains("host"))
        plan.digests[line.at("host")] = line.contains("error") ? "" : Digest(JsonLine(line.at("changes")));
    return line.contains("end");
}

} // namespace

PlanWriter::PlanWriter(const std::string& file, const Goal& goal, const std::vector<Target>& targets)
    : m_name(file), m_file(file)
{
    m_file.Stream() << JsonLine(Written(goal, targets)) << '\n' << std::flush;
    if (!m_file.Stream())
        RefuseToWrite(file);
}

void PlanWriter::Add(const HostResult& result)
{
    m_file.Stream() << JsonLine(result);
    ++m_hosts;
}

void PlanWriter::Finish()
{
    m_file.Stream() << JsonLine(Json{{"end", m_hosts}}) << '\n' << std::flush;
    if (!m_file.Finish())
        RefuseToWrite(m_name);
}

bool SavedPlan::Permits(HostResult& plan) const
{
    const std::string& digest = digests.at(plan.host);
    if (digest.empty())
        plan.error = "The saved plan holds nothing for it, since it couldn't be planned then. Plan again.";
    else if (digest != Digest(ChangesJson(plan.steps)))
        plan.error = "It isn't as it was when the plan was made, and nothing was written. Plan again.";
    return plan.error.empty();
}

SavedPlan ReadPlan(const std::string& file, const Target& otherwise)
{
    std::string why;
    std::ifstream stream = OpenFile(file, why);
    if (!why.empty())
        RefusePlan(file, "can't be read: " + why);
    SavedPlan plan;
    bool whole = false;
    try
    {
        std::string line;
        for (std::getline(stream, line), ReadHeader(ParseJson(line), file, otherwise, plan);
             !whole && std::getline(stream, line);)
            whole = ReadLine(ParseJson(line), plan);
    }
    catch (const Json::exception&)
    {
        RefusePlan(file, "isn't a saved plan, or is damaged");
    }
    catch (const JsonError&)
    {
        RefusePlan(file, "isn't a saved plan, or is damaged");
    }
    const auto held = [&plan](const Target& target) { return plan.digests.contains(target.access.url); };
    if (!whole || plan.digests.size() != plan.targets.size() ||
        !std::all_of(plan.targets.begin(), plan.targets.end(), held))
        RefusePlan(file, "is a saved plan that was cut off");
    return plan;
}

} // namespace client
