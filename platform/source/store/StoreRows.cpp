#include "store/StoreRows.h"

#include <optional>

namespace analytics::platform
{
namespace
{
constexpr std::size_t kFileHeader = 100; // at the front of the first page
constexpr std::uint64_t kMaxPayload = 1U << 30U;

enum PageType : unsigned char
{
    kIndexInner = 0x02,
    kIndexLeaf = 0x0a,
    kTableLeaf = 0x0d
};

// Reads on from a place; ends for good at the first thing that isn't there.
class Cursor
{
  public:
    explicit Cursor(std::string_view bytes) : m_rest(bytes) {}

    bool Ended() const { return m_ended; }
    std::size_t Left() const { return m_rest.size(); }

    std::string_view Take(std::size_t size)
    {
        if (m_ended || size > m_rest.size())
        {
            m_ended = true;
            return {};
        }
        const std::string_view taken = m_rest.substr(0, size);
        m_rest.remove_prefix(size);
        return taken;
    }
    // Seven bits a byte, the ninth byte whole.
    std::uint64_t Varint()
    {
        std::uint64_t number = 0;
        for (int i = 0; i < 9; ++i)
        {
            const std::string_view next = Take(1);
            if (next.empty())
                return 0;
            const auto byte = static_cast<unsigned char>(next.front());
            if (i == 8)
                return number << 8U | byte;
            number = number << 7U | (byte & 0x7fU);
            if (byte < 0x80)
                return number;
        }
        return number;
    }
    std::int64_t Number(std::size_t size)
    {
        const std::string_view bytes = Take(size);
        std::uint64_t number = !bytes.empty() && static_cast<signed char>(bytes.front()) < 0 ? ~0ULL : 0;
        for (const char byte : bytes)
            number = number << 8U | static_cast<unsigned char>(byte);
        return static_cast<std::int64_t>(number);
    }

  private:
    std::string_view m_rest;
    bool m_ended = false;
};

// How many bytes of a payload lie in the page itself.
std::size_t LocalSize(std::size_t page, std::size_t payload, bool key)
{
    const std::size_t most = key ? (page - 12) * 64 / 255 - 23 : page - 35;
    if (payload <= most)
        return payload;
    const std::size_t least = (page - 12) * 32 / 255 - 23;
    const std::size_t local = least + (payload - least) % (page - 4);
    return local <= most ? local : least;
}

std::optional<std::string> Payload(const StorePages& pages, std::size_t page, Cursor& cell,
                                   std::uint64_t size, bool key)
{
    if (size > kMaxPayload)
        return std::nullopt;
    const std::size_t local = LocalSize(page, size, key);
    std::string payload(cell.Take(local));
    auto next = local < size ? static_cast<std::uint32_t>(cell.Number(4)) : 0;
    while (!cell.Ended() && payload.size() < size)
    {
        Cursor overflow(pages.Page(next));
        next = static_cast<std::uint32_t>(overflow.Number(4));
        const std::string_view more =
            overflow.Take(std::min<std::size_t>(overflow.Left(), size - payload.size()));
        if (more.empty())
            return std::nullopt;
        payload += more;
    }
    return cell.Ended() ? std::nullopt : std::optional(payload);
}

std::optional<StoreValue> Value(Cursor& body, std::uint64_t type)
{
    constexpr std::size_t kNumberSizes[] = {0, 1, 2, 3, 4, 6, 8};
    if (type == 0)
        return StoreValue();
    if (type < std::size(kNumberSizes))
        return body.Number(kNumberSizes[type]);
    if (type == 8 || type == 9)
        return static_cast<std::int64_t>(type - 8);
    if (type < 13 || type % 2 == 0)
        return std::nullopt;
    return std::string(body.Take((type - 13) / 2));
}

bool ReadValues(std::string_view record, std::vector<StoreValue>& values)
{
    Cursor size(record);
    const std::uint64_t header = size.Varint();
    const std::size_t begin = record.size() - size.Left();
    if (size.Ended() || header < begin || header > record.size())
        return false;
    Cursor types(record.substr(begin, header - begin));
    Cursor body(record.substr(header));
    while (types.Left() > 0)
    {
        std::optional<StoreValue> value = Value(body, types.Varint());
        if (!value || types.Ended() || body.Ended())
            return false;
        values.push_back(std::move(*value));
    }
    return true;
}

bool ReadCell(const StorePages& pages, std::size_t page, PageType type, Cursor cell, StoreRow& row)
{
    row.key = type != kTableLeaf;
    if (type == kIndexInner)
        cell.Take(4); // the page below
    const std::uint64_t size = cell.Varint();
    if (!row.key)
        row.number = static_cast<std::int64_t>(cell.Varint());
    if (cell.Ended())
        return false;
    const std::optional<std::string> payload = Payload(pages, page, cell, size, row.key);
    return payload && ReadValues(*payload, row.values);
}
} // namespace

int ReadStoreRows(const StorePages& pages, const std::function<void(const StoreRow&)>& visit)
{
    int unreadable = 0;
    for (std::uint32_t number = 1; number <= pages.Count(); ++number)
    {
        const std::string_view page = pages.Page(number);
        Cursor header(page.substr(number == 1 && !page.empty() ? kFileHeader : 0));
        const auto type = static_cast<PageType>(header.Number(1));
        if (type != kTableLeaf && type != kIndexLeaf && type != kIndexInner)
            continue;
        header.Take(2); // free space
        const auto cells = static_cast<std::uint16_t>(header.Number(2));
        header.Take(type == kIndexInner ? 7 : 3);
        for (int cell = 0; cell < cells && !header.Ended(); ++cell)
        {
            const auto at = static_cast<std::uint16_t>(header.Number(2));
            StoreRow row;
            if (at == 0 || header.Ended()) // no cell: the number of cells is wrong
                break;
            if (at < page.size() && ReadCell(pages, page.size(), type, Cursor(page.substr(at)), row))
                visit(row);
            else
                ++unreadable;
        }
    }
    return unreadable;
}

} // namespace analytics::platform
