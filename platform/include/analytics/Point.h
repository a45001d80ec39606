#pragma once

#include <cstdint>

namespace analytics::types
{

using Coordinate = std::int32_t;

// A point of a zone or line, in the units of the client's picture.
class Point
{
  public:
    Point() : m_x(0), m_y(0) {}
    Point(Coordinate x, Coordinate y) : m_x(x), m_y(y) {}

    Coordinate X() const { return m_x; }
    Coordinate Y() const { return m_y; }
    void SetX(Coordinate x) { m_x = x; }
    void SetY(Coordinate y) { m_y = y; }
    void Set(Coordinate x, Coordinate y)
    {
        m_x = x;
        m_y = y;
    }

  private:
    Coordinate m_x;
    Coordinate m_y;
};

} // namespace analytics::types
