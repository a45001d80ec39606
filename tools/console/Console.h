#pragma once

#include "Access.h"
#include "console/Picture.h"
#include "console/WebServer.h"
#include "documents/DocumentJson.h"
#include "documents/Frame.h"

#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace client
{

struct ConsoleCamera
{
    Access access;
    Frame frame;
};

// Answers the page: its own files, the picture, and the cameras in JSON below /api/. Every request that needs
// a camera uses a connection of its own.
class Console
{
  public:
    // With `choice` the page lets the person choose a camera, even of one.
    Console(const std::vector<ConsoleCamera>& cameras, bool choice, std::optional<Picture> picture);

    // Any thread. Never throws.
    WebAnswer Answer(const std::string& method, const std::string& target, const std::string& body);

  private:
    // No operation returns these: known once they have been switched here.
    struct Camera
    {
        ConsoleCamera known;
        std::optional<bool> analytics;
        std::optional<bool> motion;
    };
    using Route = Json (Console::*)(const Json& request);
    struct Entry
    {
        const char* method;
        const char* path;
        Route route;
    };
    static const Entry kRoutes[];

    WebAnswer Routed(const std::string& method, const std::string& target, const std::string& body);

    Json Overview(const Json& request);
    Json Profiles(const Json& request);
    Json Behaviors(const Json& request);
    Json Document(const Json& request);
    Json ChangeProfile(const Json& request);
    Json Switch(const Json& request);
    Json Check(const Json& request);
    Json Review(const Json& request);
    Json Save(const Json& request);
    Json Scale(const Json& request);

    Camera& CameraOf(const Json& request, const char* key = "camera");

    std::mutex m_mutex; // guards what is switched
    std::deque<Camera> m_cameras;
    bool m_choice;
    std::optional<Picture> m_picture;
};

} // namespace client
