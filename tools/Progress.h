#pragma once

#include <cstddef>
#include <string>

namespace client
{

// Tells on standard error how far something has come: a bar on a terminal, else a line for each step.
class Progress
{
  public:
    explicit Progress(std::size_t count);
    // Clears the bar.
    ~Progress();
    void Step(std::size_t done, const std::string& line) const;

  private:
    void Draw(std::size_t done) const;

    std::size_t m_count;
    bool m_terminal;
};

} // namespace client
