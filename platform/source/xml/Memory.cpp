#include "xml/Memory.h"

#include "xml/Arena.h"

#include <libxml/parser.h>
#include <libxml/xmlmemory.h>

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>

namespace analytics::xml
{
namespace
{
thread_local bool gShort = false;

// What libxml2 lives on when there is no memory, until the next RequireMemory(): not each of its functions
// stands a null. Blocks are given one behind the other; the space is free again when all have come back,
// which is soon, since whatever was being done is given up.
class Reserve
{
  public:
    void* Take(std::size_t size)
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        const std::size_t whole = (size + kAlign - 1) / kAlign * kAlign;
        if (size > sizeof m_bytes || m_used + whole > sizeof m_bytes)
            return nullptr;
        ++m_blocks;
        void* const block = m_bytes + m_used;
        m_used += whole;
        return block;
    }
    // False for a block of somebody else.
    bool GiveBack(const void* block)
    {
        if (!Owns(block))
            return false;
        const std::lock_guard<std::mutex> hold(m_mutex);
        if (--m_blocks == 0)
            m_used = 0;
        return true;
    }
    bool Owns(const void* block) const { return block >= m_bytes && block < m_bytes + sizeof m_bytes; }
    // Bytes from the block to the end: at least as many as it has.
    std::size_t Behind(const void* block) const
    {
        return static_cast<std::size_t>(m_bytes + sizeof m_bytes - static_cast<const char*>(block));
    }

  private:
    static constexpr std::size_t kAlign = alignof(std::max_align_t);

    std::mutex m_mutex;
    std::size_t m_used = 0;
    int m_blocks = 0;
    alignas(kAlign) char m_bytes[256 * 1024] = {};
};
Reserve gReserve;

void* OrReserve(void* block, std::size_t size)
{
    if (block != nullptr)
        return block;
    gShort = true;
    if (Arena* const arena = Arena::InUse())
        arena->NoteLoan();
    return gReserve.Take(size);
}

void Free(void* block)
{
    Arena* const arena = Arena::InUse();
    const bool kept = arena != nullptr && block != nullptr && arena->GiveBack(block);
    if (!kept && !gReserve.GiveBack(block))
        std::free(block);
}

void* Allocate(std::size_t size)
{
    Arena* const arena = Arena::InUse();
    return OrReserve(arena == nullptr ? std::malloc(size) : arena->Take(size), size);
}

void* ResizeIn(Arena& arena, void* block, std::size_t size)
{
    if (void* const moved = arena.Resize(block, size))
        return moved;
    void* const lent = OrReserve(nullptr, size);
    return lent == nullptr ? nullptr : std::memcpy(lent, block, std::min(size, arena.RestOf(block)));
}

void* Reallocate(void* block, std::size_t size)
{
    if (block == nullptr)
        return Allocate(size);
    Arena* const arena = Arena::InUse();
    if (arena != nullptr && arena->Owns(block))
        return ResizeIn(*arena, block, size);
    const bool reserved = gReserve.Owns(block);
    if (!reserved)
        if (void* const grown = std::realloc(block, size))
            return grown;
    void* const moved = reserved ? Allocate(size) : OrReserve(nullptr, size);
    if (moved == nullptr)
        return nullptr;
    std::memmove(moved, block, std::min(size, reserved ? gReserve.Behind(block) : malloc_usable_size(block)));
    Free(block);
    return moved;
}

char* Duplicate(const char* text)
{
    const std::size_t size = std::strlen(text) + 1;
    void* const copy = Allocate(size);
    return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}
} // namespace

void Initialise()
{
    // Once, before threads race to it.
    static const int ready = (xmlMemSetup(Free, Allocate, Reallocate, Duplicate), xmlInitParser(), 0);
    static_cast<void>(ready);
}

void RequireMemory()
{
    if (std::exchange(gShort, false))
        throw std::bad_alloc();
}

} // namespace analytics::xml
