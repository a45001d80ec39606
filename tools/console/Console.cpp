#include "console/Console.h"

#include "Behaviors.h"
#include "Failure.h"
#include "Scene.h"
#include "Service.h"
#include "XmlDocument.h"
#include "console/DocumentPage.h"
#include "console/Page.h"
#include "console/Selectable.h"
#include "documents/Models.h"

#include <xml/Text.h>

#include <cstdint>
#include <limits>

namespace client
{
namespace
{

// The page has asked for something that it can't ask for.
struct WrongRequest
{
    std::string sentence;
};

WebAnswer JsonAnswer(unsigned status, const Json& json)
{
    // Names come from the camera: invalid UTF-8 in them must not break the answer.
    return {status, "application/json", json.dump(-1, ' ', false, Json::error_handler_t::replace)};
}

WebAnswer WrongJson(const std::exception& error)
{
    return JsonAnswer(400, {{"error", std::string("The request isn't what it should be: ") + error.what()}});
}

int Number(const Json& request, const char* key)
{
    const auto found = request.find(key);
    if (found == request.end())
        throw WrongRequest{std::string(key) + " is missing"};
    // The query of a GET holds nothing but text.
    const Json value = found->is_string() ? Json::parse(found->get<std::string>(), nullptr, false) : *found;
    if (!value.is_number_integer() || value < 0 || value > std::numeric_limits<int>::max())
        throw WrongRequest{std::string(key) + " isn't a number"};
    return value.get<int>();
}

std::string Text(const Json& request, const char* key)
{
    const auto found = request.find(key);
    if (found == request.end() || !found->is_string())
        throw WrongRequest{std::string(key) + " is missing"};
    return found->get<std::string>();
}

bool Flag(const Json& request, const char* key)
{
    const auto found = request.find(key);
    return found != request.end() && found->is_boolean() && found->get<bool>();
}

const Json& Member(const Json& request, const char* key)
{
    const auto found = request.find(key);
    if (found == request.end())
        throw WrongRequest{std::string(key) + " is missing"};
    return *found;
}

// "a=1&b=x%3Ay" as an object of texts.
Json Query(std::string_view query)
{
    Json object = Json::object();
    while (!query.empty())
    {
        const std::string_view pair = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(pair.size() + 1, query.size()));
        std::string text;
        for (std::size_t i = 0; i < pair.size(); ++i)
        {
            std::uint8_t code = 0;
            const bool escaped = pair[i] == '%' && i + 2 < pair.size() &&
                                 analytics::xml::ReadInteger(pair.substr(i + 1, 2), code, 16) == std::errc();
            text += escaped ? static_cast<char>(code) : pair[i] == '+' ? ' ' : pair[i];
            i += escaped ? 2 : 0;
        }
        const std::size_t equals = std::min(text.find('='), text.size());
        object[text.substr(0, equals)] = text.substr(std::min(equals + 1, text.size()));
    }
    return object;
}

// HOST:PORT of a whole URL.
std::string Title(const std::string& url)
{
    const std::size_t host = url.find("://") + 3;
    const std::string authority = url.substr(host, url.find_first_of("/?#", host) - host);
    const bool port =
        authority.find(':', authority.front() == '[' ? authority.find(']') : 0) != std::string::npos;
    return port ? authority : authority + (url.starts_with("https") ? ":443" : ":80");
}

Json NullOr(std::optional<bool> value) { return value ? Json(*value) : Json(); }

} // namespace

const Console::Entry Console::kRoutes[] = {
    {"GET", "/api/console", &Console::Overview},
    {"GET", "/api/camera", &Console::Profiles},
    {"GET", "/api/behaviors", &Console::Behaviors},
    {"GET", "/api/document", &Console::Document},
    {"POST", "/api/profile", &Console::ChangeProfile},
    {"POST", "/api/switch", &Console::Switch},
    {"POST", "/api/check", &Console::Check},
    {"POST", "/api/review", &Console::Review},
    {"POST", "/api/save", &Console::Save},
    {"POST", "/api/scale", &Console::Scale},
};

Console::Console(const std::vector<ConsoleCamera>& cameras, bool choice, std::optional<Picture> picture)
    : m_choice(choice), m_picture(std::move(picture))
{
    for (const ConsoleCamera& camera : cameras)
        m_cameras.push_back({camera, std::nullopt, std::nullopt});
}

WebAnswer Console::Answer(const std::string& method, const std::string& target, const std::string& body)
{
    try
    {
        return Routed(method, target, body);
    }
    catch (const ChangedMeanwhile& changed)
    {
        return JsonAnswer(409, changed.answer);
    }
    catch (const WrongRequest& wrong)
    {
        return JsonAnswer(400, {{"error", wrong.sentence}});
    }
    catch (const Json::exception& error)
    {
        return WrongJson(error);
    }
    catch (const JsonError& error)
    {
        return WrongJson(error);
    }
    catch (const Failure& failure)
    {
        const bool lost = failure.Code() == Exit::Unreachable;
        return JsonAnswer(lost ? 502 : 422, {{"error", failure.what()}, {"lost", lost}});
    }
    catch (const std::exception& error)
    {
        return JsonAnswer(500, {{"error", error.what()}});
    }
}

WebAnswer Console::Routed(const std::string& method, const std::string& target, const std::string& body)
{
    const std::size_t question = std::min(target.find('?'), target.size());
    const std::string path = target.substr(0, question);
    const bool reading = method == "GET" || method == "HEAD";
    bool known = false;
    for (const Entry& entry : kRoutes)
    {
        known = known || path == entry.path;
        if (path != entry.path || (reading ? "GET" : method) != std::string_view(entry.method))
            continue;
        const Json request =
            reading ? Query(std::string_view(target).substr(std::min(question + 1, target.size())))
                    : ParseJson(body);
        return JsonAnswer(200, (this->*entry.route)(request));
    }
    if (path == "/picture" && m_picture && reading)
    {
        Picture::Content content = m_picture->Read();
        return {200, content.type, std::move(content.bytes)};
    }
    for (const PageFile& file : PageFiles())
    {
        known = known || path == file.path;
        if (path == file.path && reading)
            return {200, std::string(file.type), std::string(file.text)};
    }
    if (path == "/" && reading)
        return Routed(method, "/index.html", body);
    return known || path == "/" || path == "/picture"
               ? JsonAnswer(405, {{"error", "The method isn't allowed here"}})
               : JsonAnswer(404, {{"error", "There is nothing here"}});
}

Console::Camera& Console::CameraOf(const Json& request, const char* key)
{
    const auto index = static_cast<std::size_t>(Number(request, key));
    if (index >= m_cameras.size())
        throw WrongRequest{"there is no such camera"};
    return m_cameras[index];
}

Json Console::Overview(const Json&)
{
    Json cameras = Json::array();
    for (const Camera& camera : m_cameras)
        cameras.push_back({{"title", Title(camera.known.access.url)},
                           {"url", camera.known.access.url},
                           {"frame", {camera.known.frame.width, camera.known.frame.height}}});
    return {{"cameras", cameras}, {"choice", m_choice}, {"picture", m_picture.has_value()}};
}

Json Console::Profiles(const Json& request)
{
    Camera& camera = CameraOf(request);
    Json profiles = Json::array();
    for (const Profile& profile : Service(camera.known.access).Profiles())
        profiles.push_back({{"id", profile.id}, {"name", profile.name}, {"running", profile.active}});
    const std::lock_guard lock(m_mutex);
    return {{"profiles", profiles},
            {"switches", {{"analytics", NullOr(camera.analytics)}, {"motion", NullOr(camera.motion)}}}};
}

Json Console::Behaviors(const Json& request)
{
    Service service(CameraOf(request).known.access);
    return {{"behaviors", AvailabilityOf(service, Number(request, "profile"))}};
}

Json Console::Document(const Json& request)
{
    Service service(CameraOf(request).known.access);
    return DocumentPage(service, Number(request, "profile"), Text(request, "behavior")).Read();
}

Json Console::ChangeProfile(const Json& request)
{
    Service service(CameraOf(request).known.access);
    const std::string action = Text(request, "action");
    if (action == "create" || action == "rename")
        CheckProfileName(Text(request, "name"));
    if (action == "create")
        return {{"profile", service.CreateProfile(Text(request, "name"))}};
    const int profile = Number(request, "profile");
    if (action == "rename")
    {
        const std::optional<std::string> scene = SceneOf(service, profile);
        service.SetScene(profile,
                         RenamedScene(scene ? *scene : service.DefaultScene(), Text(request, "name")));
    }
    else if (action == "delete")
        service.DeleteProfile(profile);
    else if (action == "run")
        service.RunProfile(profile);
    else if (action == "stop")
        service.StopProfile(profile);
    else
        throw WrongRequest{"there is no action " + action};
    return Json::object();
}

Json Console::Switch(const Json& request)
{
    Camera& camera = CameraOf(request);
    const bool on = Flag(request, "on");
    const bool motion = Text(request, "what") == "motion";
    Service service(camera.known.access);
    if (motion)
        service.Control(on ? Command::MotionDetectionOn : Command::MotionDetectionOff);
    else
        service.Control(on ? Command::Start : Command::Stop);
    const std::lock_guard lock(m_mutex);
    (motion ? camera.motion : camera.analytics) = on;
    return Json::object();
}

Json Console::Check(const Json& request)
{
    return {{"findings", FindingsOf(ModelOf(Text(request, "behavior")), Member(request, "document"),
                                    CameraOf(request).known.frame)}};
}

Json Console::Review(const Json& request)
{
    Camera& camera = CameraOf(request);
    Service service(camera.known.access);
    return DocumentPage(service, Number(request, "profile"), Text(request, "behavior"))
        .Review(Member(request, "base"), Member(request, "document"), camera.known.frame);
}

Json Console::Save(const Json& request)
{
    Camera& camera = CameraOf(request);
    Service service(camera.known.access);
    return DocumentPage(service, Number(request, "profile"), Text(request, "behavior"))
        .Save(Member(request, "base"), Member(request, "document"), camera.known.frame);
}

// Scales points from the frame of one camera to that of another, as a scene's exclude zone.
Json Console::Scale(const Json& request)
{
    Findings findings;
    const pugi::xml_document points =
        FromJson(SceneModel(), {{"excludeZones", Json::array({Member(request, "points")})}}, findings);
    const std::string scaled = Scaled(XmlDocument(points).Text(), CameraOf(request, "from").known.frame,
                                      CameraOf(request, "to").known.frame);
    return {{"points", ToJson(SceneModel(), scaled).at("excludeZones").at(0)}};
}

} // namespace client
