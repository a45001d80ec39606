#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace analytics::platform
{

// Numbers as SQLite writes them: most significant byte first. The caller has seen that they are there.
std::uint32_t BigEndian(std::string_view bytes, std::size_t position, int count);

// The pages of a database file that SQLite can't open any more, with what the valid part of its log puts
// in their place. What the disk doesn't read is zero.
class StorePages
{
  public:
    // `file` and its log may be missing or anything at all.
    explicit StorePages(const std::string& file);

    std::uint32_t Count() const { return m_count; }
    // Page `number` of 1 to Count(), whole; empty if there is no such page.
    std::string_view Page(std::uint32_t number) const;

  private:
    void ApplyLog(std::string_view log);

    std::string m_file;
    std::size_t m_pageSize;
    std::uint32_t m_count;
    std::map<std::uint32_t, std::string> m_newer; // from the log
};

} // namespace analytics::platform
