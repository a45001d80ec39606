#include "ProfileFolder.h"

#include "Behaviors.h"
#include "Failure.h"
#include "Output.h"
#include "XmlDocument.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <set>

namespace client
{
namespace
{

constexpr char kList[] = "profile.xml";
constexpr char kScene[] = "scene.xml";

void Set(pugi::xml_node node, const char* attribute, const std::string& value)
{
    node.append_attribute(attribute).set_value(value.c_str());
}

// A plain name of a file, whatever the identifier holds, that isn't taken yet.
std::string FileFor(const std::string& id, std::set<std::string>& taken)
{
    std::string name = BehaviorCalled(id);
    for (char& c : name)
        if (std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '.' && c != '_')
            c = '-';
    if (name.empty() || name.front() == '.')
        name.insert(0, "behavior");
    std::string file = name + ".xml";
    for (int number = 2; !taken.insert(file).second; ++number)
        file = name + "-" + std::to_string(number) + ".xml";
    return file;
}

Source ReadInside(const std::string& folder, const std::string& file)
{
    if (file.empty() || file.find('/') != std::string::npos || file == "." || file == "..")
        throw Failure(Exit::Document, folder + "/" + kList + " names '" + file +
                                          "', which isn't a file in its folder. Put it there, "
                                          "and name it without a path");
    return ReadSource(folder + "/" + file);
}

// A list that isn't as WriteFolder() writes it would be taken for one that holds less.
void CheckList(const XmlDocument& list, const Source& source, const pugi::xml_node& root)
{
    const auto refuse = [&](const pugi::xml_node& node, const std::string& why)
    {
        throw DocumentFailure(source.name, list.LineOf(node),
                              why + ". Nothing has been sent; correct it, or write the folder anew with "
                                    "'varlo-analytics export'");
    };
    if (root.attribute("name").empty())
        refuse(root, "<profile> has no name");
    std::set<std::string> known;
    for (const pugi::xml_node& child : Children(root))
    {
        const std::string element = child.name();
        const std::string id = child.attribute("id").value();
        if (element != "scene" && element != "behavior")
            refuse(child, "<" + element + "> isn't known here; there are <scene> and <behavior>");
        if (element == "behavior" && id.empty())
            refuse(child, "<behavior> has no id");
        const std::string what = element == "scene" ? "<scene>" : "the behavior '" + BehaviorCalled(id) + "'";
        if (!known.insert(what).second)
            refuse(child, what + " stands there twice");
    }
}

void MakeFolder(const std::string& folder, bool force)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw Failure(Exit::Document, folder + " can't be made: " + error.message() +
                                          ". Name another place, or look at who may write there");
    if (!force && std::filesystem::exists(folder + "/" + kList, error))
        throw Failure(Exit::Document,
                      folder + " holds a profile already. Name another folder, or replace it with --force");
}

} // namespace

Frame FrameOf(const std::string& text, const std::string& file)
{
    try
    {
        return ParseFrame(text, file);
    }
    catch (const Failure& failure)
    {
        throw Failure(Exit::Document, failure.what());
    }
}

void WriteFolder(const std::string& folder, const ProfileDocuments& profile, bool force)
{
    MakeFolder(folder, force);
    const XmlDocument list("<profile/>", kList);
    pugi::xml_node root = list.First("profile");
    Set(root, "name", profile.name);
    Set(root, "active", profile.active ? "1" : "0");
    Set(root, "frame", profile.frame.Text());
    if (!profile.preset.empty())
        Set(root, "preset", profile.preset);
    std::set<std::string> taken = {kList, kScene};
    if (profile.scene)
    {
        WriteFile(folder + "/" + kScene, Readable(profile.scene->text) + '\n');
        Set(root.append_child("scene"), "file", kScene);
    }
    for (const ProfileDocuments::Behavior& behavior : profile.behaviors)
    {
        const std::string file = FileFor(behavior.id, taken);
        WriteFile(folder + "/" + file, Readable(behavior.document.text) + '\n');
        pugi::xml_node node = root.append_child("behavior");
        Set(node, "id", behavior.id);
        Set(node, "file", file);
    }
    // Last, so that a folder with a list is a whole one.
    WriteFile(folder + "/" + kList, list.Indented() + '\n');
}

ProfileDocuments ReadFolder(const std::string& folder)
{
    std::error_code error;
    if (std::filesystem::status(folder + "/" + kList, error).type() == std::filesystem::file_type::not_found)
        throw Failure(Exit::Document, folder + " holds no profile: there is no " + kList +
                                          " in it. 'varlo-analytics export' makes such a folder");
    const Source source = ReadSource(folder + "/" + kList);
    const XmlDocument list(source.text, source.name);
    const pugi::xml_node root = list.First("profile");
    if (root.empty())
        throw Failure(Exit::Document,
                      source.name +
                          ": there is no <profile> in it. 'varlo-analytics export' writes such a file");
    CheckList(list, source, root);
    ProfileDocuments profile;
    profile.name = root.attribute("name").value();
    profile.preset = root.attribute("preset").value();
    profile.active = root.attribute("active").value() == std::string("1");
    if (const pugi::xml_attribute frame = root.attribute("frame"))
        profile.frame = FrameOf(frame.value(), source.name);
    if (const pugi::xml_node scene = root.child("scene"))
        profile.scene = ReadInside(folder, scene.attribute("file").value());
    for (const pugi::xml_node& behavior : Children(root, "behavior"))
        profile.behaviors.push_back(
            {behavior.attribute("id").value(), ReadInside(folder, behavior.attribute("file").value())});
    return profile;
}

} // namespace client
