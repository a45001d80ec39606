#pragma once

#include <cstddef>

namespace client
{

// Tells on standard error, if it is a terminal, how far something has come.
class Progress
{
  public:
    explicit Progress(std::size_t count);
    // Clears the line.
    ~Progress();
    // One more is done.
    void Step();
    // Before lines are written to the same terminal; the next step draws the bar again.
    void Clear() const;

  private:
    void Draw() const;

    std::size_t m_count;
    std::size_t m_done = 0;
    bool m_terminal;
};

} // namespace client
