#include "xml/PathReader.h"

namespace analytics::xml
{
namespace
{
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsNameCharacter(char c) { return IsLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.'; }
} // namespace

std::optional<Path> Path::Read(std::string_view query)
{
    std::optional<Path> path(std::in_place);
    if (!PathReader(query).Read(*path))
        path.reset();
    return path;
}

bool PathReader::Read(Path& path)
{
    const bool relative = Take(".");
    path.m_anywhere = Take("//");
    const bool slash = path.m_anywhere || Take("/");
    path.m_fromRoot = slash && !relative;
    if (relative && !slash)
        return false;
    do
    {
        if (path.m_steps.size() == Path::kMaxSteps || !TakeStep(path.m_steps.emplace_back()))
            return false;
    } while (Take("/"));
    return m_rest.empty();
}

bool PathReader::Take(std::string_view text)
{
    const bool present = m_rest.starts_with(text);
    if (present)
        m_rest.remove_prefix(text.size());
    return present;
}

void PathReader::SkipSpace()
{
    while (Take(" "))
    {
    }
}

bool PathReader::TakeName(std::string& name)
{
    std::size_t length = 0;
    while (length < m_rest.size() && IsNameCharacter(m_rest[length]))
        ++length;
    name = m_rest.substr(0, length);
    m_rest.remove_prefix(length);
    return length > 0 && IsLetter(name.front());
}

bool PathReader::TakeLiteral(std::string& value)
{
    const char quote = m_rest.empty() ? '\0' : m_rest.front();
    const std::size_t end = quote == '"' || quote == '\'' ? m_rest.find(quote, 1) : std::string_view::npos;
    if (end == std::string_view::npos)
        return false;
    value = m_rest.substr(1, end - 1);
    m_rest.remove_prefix(end + 1);
    return true;
}

bool PathReader::TakeStep(Path::Step& step)
{
    if (!TakeName(step.name))
        return false;
    if (Take(":"))
    {
        step.prefix.swap(step.name);
        if (!TakeName(step.name))
            return false;
    }
    return !Take("[") || TakeCondition(step);
}

bool PathReader::TakeComparison(Path::Comparison& comparison)
{
    SkipSpace();
    comparison.attribute = Take("@");
    if (!TakeName(comparison.name))
        return false;
    SkipSpace();
    if (!Take("="))
        return false;
    SkipSpace();
    return TakeLiteral(comparison.value);
}

bool PathReader::TakeCondition(Path::Step& step)
{
    do
    {
        if (!TakeComparison(step.anyOf.emplace_back()))
            return false;
        SkipSpace();
    } while (Take("or "));
    return Take("]");
}

} // namespace analytics::xml
