#include "xml/Arena.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace analytics::xml
{
namespace
{
// Nothing in libxml2's trees wants more.
constexpr std::size_t kAlign = alignof(std::int64_t);
constexpr std::size_t kLeastPiece = std::size_t{4} * 1024;
// Pieces grow with the arena, so that they stay few, and little of the last one is wasted.
constexpr std::size_t kShare = 8;

// Pages that large are taken from the system at once, where it has them: page by page, the first touch of
// the nodes of 10,000 zones takes a fifth of the time of their conversion.
constexpr std::uintptr_t kLargePage = std::uintptr_t{2} * 1024 * 1024;

void AskForLargePages(char* bytes, std::size_t size)
{
    const auto begin = (reinterpret_cast<std::uintptr_t>(bytes) + kLargePage - 1) / kLargePage * kLargePage;
    const auto end = (reinterpret_cast<std::uintptr_t>(bytes) + size) / kLargePage * kLargePage;
    if (begin < end) // refused, it is as good as never asked
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

thread_local Arena* gInUse = nullptr;
} // namespace

Arena::Use::Use(Arena& arena) : m_before(std::exchange(gInUse, &arena)) {}
Arena::Use::~Use() { gInUse = m_before; }

Arena* Arena::InUse() { return gInUse; }

void* Arena::Take(std::size_t size)
{
    const std::size_t whole = (std::max(size, std::size_t{1}) + kAlign - 1) / kAlign * kAlign;
    if (whole > m_left && !Extend(whole))
        return nullptr;
    m_newest = m_free;
    m_free += whole;
    m_left -= whole;
    return m_newest;
}

bool Arena::GiveBack(void* block)
{
    if (block != m_newest)
        return Owns(block);
    m_left += static_cast<std::size_t>(m_free - m_newest);
    m_free = std::exchange(m_newest, nullptr);
    return true;
}

void* Arena::Resize(void* block, std::size_t size)
{
    const std::size_t rest = RestOf(block);
    if (block == m_newest && size <= rest)
    {
        GiveBack(block);
        return Take(size);
    }
    // How long the block was isn't known: what is behind it comes along, even the place it moves to.
    void* const moved = Take(size);
    return moved == nullptr ? nullptr : std::memmove(moved, block, std::min(size, rest));
}

void Arena::Share(const Arena& other)
{
    const auto holds = [this](const Piece& piece)
    {
        return std::any_of(m_pieces.rbegin(), m_pieces.rend(),
                           [&piece](const Piece& own) { return own.bytes == piece.bytes; });
    };
    m_lent = m_lent || other.m_lent;
    // Whoever holds the last one of another arena has shared the others with it.
    if (other.m_pieces.empty() || holds(other.m_pieces.back()))
        return;
    for (const Piece& piece : other.m_pieces)
        if (!holds(piece))
            m_pieces.push_back(piece);
}

bool Arena::Extend(std::size_t size)
{
    const std::size_t piece = std::max({m_next, kLeastPiece, size});
    try
    {
        m_pieces.push_back({std::make_shared_for_overwrite<char[]>(piece), piece});
    }
    catch (const std::bad_alloc&)
    {
        return false; // the frames above are C
    }
    m_free = m_pieces.back().bytes.get();
    m_left = piece;
    AskForLargePages(m_free, piece);
    std::size_t all = 0;
    for (const Piece& each : m_pieces)
        all += each.size;
    m_next = all / kShare;
    return true;
}

std::size_t Arena::RestOf(const void* block) const
{
    const auto* const byte = static_cast<const char*>(block);
    for (auto piece = m_pieces.rbegin(); piece != m_pieces.rend(); ++piece)
        if (byte >= piece->bytes.get() && byte < piece->bytes.get() + piece->size)
            return piece->size - static_cast<std::size_t>(byte - piece->bytes.get());
    return 0;
}

} // namespace analytics::xml
