#pragma once

#include "xml/Path.h"

namespace analytics::xml
{

// Reads the plain forms of a path. Each operation takes what it reads from the front of the query.
class PathReader
{
  public:
    explicit PathReader(std::string_view query) : m_rest(query) {}
    bool Read(Path& path);

  private:
    bool Take(std::string_view text);
    void SkipSpace();
    bool TakeName(std::string& name);
    bool TakeLiteral(std::string& value);
    bool TakeStep(Path::Step& step);
    bool TakeComparison(Path::Comparison& comparison);
    bool TakeCondition(Path::Step& step);

    std::string_view m_rest;
};

} // namespace analytics::xml
