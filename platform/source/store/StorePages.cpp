#include "store/StorePages.h"

#include "files/FileHandle.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace analytics::platform
{
namespace
{
constexpr std::size_t kUsualPage = 4096;
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kPageSizeAt = 16;

// The log: a header, then frames of a header and a page each.
constexpr std::size_t kLogHeader = 32;
constexpr std::size_t kLogSummed = 24; // bytes of the header that its sum is over
constexpr std::size_t kFrameHeader = 24;
constexpr std::size_t kFrameSummed = 8;
constexpr std::size_t kSaltsAt = 16; // in the header of the log
constexpr std::size_t kFrameSaltsAt = 8;
constexpr std::size_t kSalts = 8;               // bytes
constexpr std::uint32_t kLogMagic = 0x377f0682; // plus 1 if the sums are over big-endian words

// All bytes of a file, zero where the disk doesn't read.
std::string BytesOf(const std::string& path)
{
    const FileHandle file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    if (!file || fstat(file.Get(), &status) != 0)
        return {};
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    for (std::size_t at = 0; at < bytes.size(); at += kUsualPage)
    {
        const std::size_t size = std::min(kUsualPage, bytes.size() - at);
        if (pread(file.Get(), &bytes[at], size, static_cast<off_t>(at)) < 0)
            bytes.replace(at, size, size, '\0');
    }
    return bytes;
}

std::size_t PageSizeOf(std::string_view file)
{
    if (!file.starts_with(kMagic) || file.size() < kUsualPage)
        return kUsualPage;
    const std::uint32_t size = BigEndian(file, kPageSizeAt, 2);
    const bool powerOfTwo = (size & (size - 1)) == 0;
    return size >= 512 && powerOfTwo ? size : kUsualPage;
}

// The sum that chains the frames: each covers all before it.
class LogSum
{
  public:
    explicit LogSum(bool bigEndian) : m_bigEndian(bigEndian) {}

    void Add(std::string_view bytes)
    {
        for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8)
        {
            m_first += Word(bytes, at) + m_second;
            m_second += Word(bytes, at + 4) + m_first;
        }
    }
    bool Is(std::string_view bytes, std::size_t position) const
    {
        return BigEndian(bytes, position, 4) == m_first && BigEndian(bytes, position + 4, 4) == m_second;
    }

  private:
    std::uint32_t Word(std::string_view bytes, std::size_t at) const
    {
        const std::uint32_t word = BigEndian(bytes, at, 4);
        return m_bigEndian ? word : __builtin_bswap32(word);
    }

    bool m_bigEndian;
    std::uint32_t m_first = 0;
    std::uint32_t m_second = 0;
};
} // namespace

std::uint32_t BigEndian(std::string_view bytes, std::size_t position, int count)
{
    std::uint32_t number = 0;
    for (int i = 0; i < count; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[position++]);
    return number;
}

StorePages::StorePages(const std::string& file)
    : m_file(BytesOf(file)),
      m_pageSize(PageSizeOf(m_file)),
      m_count(static_cast<std::uint32_t>(m_file.size() / m_pageSize))
{
    const std::string log = BytesOf(file + "-wal");
    if (log.size() >= kLogHeader)
        ApplyLog(log);
}

// As SQLite does: up to the first frame that isn't whole, and of those only whole transactions.
void StorePages::ApplyLog(std::string_view log)
{
    const std::uint32_t magic = BigEndian(log, 0, 4);
    LogSum sum((magic & 1U) != 0);
    sum.Add(log.substr(0, kLogSummed));
    if ((magic & ~1U) != kLogMagic || BigEndian(log, 8, 4) != m_pageSize || !sum.Is(log, kLogSummed))
        return;
    const std::string_view salts = log.substr(kSaltsAt, kSalts);
    std::map<std::uint32_t, std::string> transaction;
    const std::size_t size = kFrameHeader + m_pageSize;
    for (std::size_t at = kLogHeader; at + size <= log.size(); at += size)
    {
        const std::string_view frame = log.substr(at, size);
        sum.Add(frame.substr(0, kFrameSummed));
        sum.Add(frame.substr(kFrameHeader));
        if (frame.substr(kFrameSaltsAt, kSalts) != salts || !sum.Is(frame, kFrameSaltsAt + kSalts))
            return;
        transaction.insert_or_assign(BigEndian(frame, 0, 4), std::string(frame.substr(kFrameHeader)));
        const std::uint32_t pages = BigEndian(frame, 4, 4); // in all, if this frame ends a transaction
        if (pages == 0)
            continue;
        m_count = pages;
        transaction.merge(m_newer);
        m_newer.swap(transaction);
        transaction.clear();
    }
}

std::string_view StorePages::Page(std::uint32_t number) const
{
    if (number == 0 || number > m_count)
        return {};
    const auto newer = m_newer.find(number);
    if (newer != m_newer.end())
        return newer->second;
    const std::size_t at = (number - 1) * m_pageSize;
    return at + m_pageSize > m_file.size() ? std::string_view()
                                           : std::string_view(m_file).substr(at, m_pageSize);
}

} // namespace analytics::platform
