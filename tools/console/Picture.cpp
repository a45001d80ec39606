#include "console/Picture.h"

#include "Connection.h"
#include "Documents.h"
#include "Failure.h"

#include <fstream>
#include <string_view>

namespace client
{
namespace
{

constexpr int kMostRedirects = 5;

std::string_view Origin(std::string_view url)
{
    return url.substr(0, url.find_first_of("/?#", url.find("://") + 3));
}

// Another host, or the same without its TLS, isn't what the person has named.
std::string Redirected(const std::string& from, const std::string& to)
{
    const std::string whole = to.starts_with("/") ? std::string(Origin(from)) + to : to;
    if (Origin(whole) != Origin(from))
        throw Failure(Exit::Document, "it redirects to another host, " + std::string(Origin(whole)));
    return whole;
}

std::string Fetch(const std::string& source, Access access)
{
    std::string why;
    const std::string url = WholeUrl(source, why);
    if (!why.empty())
        throw Failure(Exit::Document, why);
    if (Origin(url) != Origin(access.url))
    {
        access.user.clear();
        access.password.clear();
        access.certificate.clear();
        access.key.clear();
    }
    access.url = url;
    access.timeout = std::chrono::seconds(10);
    const auto deadline = Connection::Clock::now() + access.timeout;
    for (int redirects = 0; redirects <= kMostRedirects; ++redirects)
    {
        const Connection::Fetched fetched = Connection(access, deadline).Get(Picture::kMostBytes);
        if (fetched.location.empty())
            return fetched.body;
        access.url = Redirected(access.url, fetched.location);
    }
    throw Failure(Exit::Document, "it redirects again and again");
}

std::string ReadWhole(const std::string& file)
{
    std::string why;
    std::ifstream stream = OpenFile(file, why);
    if (!why.empty())
        throw Failure(Exit::Document, why);
    std::string bytes(Picture::kMostBytes + 1, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    if (bytes.size() > Picture::kMostBytes)
        throw Failure(Exit::Document, "it is larger than 16 MiB");
    return bytes;
}

std::string TypeOf(const std::string& bytes)
{
    using namespace std::string_view_literals;
    if (bytes.starts_with("\xFF\xD8\xFF"sv))
        return "image/jpeg";
    if (bytes.starts_with("\x89PNG\r\n\x1A\n"sv))
        return "image/png";
    throw Failure(Exit::Document, "it is neither a JPEG nor a PNG picture");
}

} // namespace

Picture::Picture(const std::string& source, const Access& access)
    : m_source(source),
      m_url(source.starts_with("http://") || source.starts_with("https://")),
      m_access(access)
{
}

Picture::Content Picture::Read()
{
    try
    {
        std::string bytes = m_url ? Fetch(m_source, m_access) : ReadWhole(m_source);
        return {TypeOf(bytes), std::move(bytes)};
    }
    catch (const Failure& failure)
    {
        std::string why = failure.what();
        why.erase(why.find_last_not_of('.') + 1);
        throw Failure(Exit::Document, "The picture " + m_source + " can't be used: " + why +
                                          ". Name a JPEG or PNG picture of at most 16 MiB with --picture");
    }
}

} // namespace client
