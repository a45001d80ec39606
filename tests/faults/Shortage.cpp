#include "Shortage.h"

#include <pugixml.hpp>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace
{
int gLeft = 0;
bool gLasting = false;
bool gCounting = false;
bool gFailed = false;
int gPauses = 0;

bool Refused()
{
    if (!gCounting || gPauses > 0)
        return false;
    const bool refused = gFailed ? gLasting : --gLeft == 0;
    gFailed = gFailed || refused;
    return refused;
}
} // namespace

namespace shortage
{

void Begin(int nth, bool lasting)
{
    // Documents ask where they can be refused.
    pugi::set_memory_management_functions([](std::size_t size) { return std::calloc(1, size); }, std::free);
    gLeft = nth;
    gLasting = lasting;
    gFailed = false;
    gPauses = 0;
    gCounting = true;
}

bool End()
{
    gCounting = false;
    return gFailed;
}

void Pause() { ++gPauses; }
void Resume() { --gPauses; }

} // namespace shortage

extern "C"
{
    void* __real_malloc(std::size_t size);
    void* __real_calloc(std::size_t count, std::size_t size);
    void* __real_realloc(void* block, std::size_t size);
    // Throws as the delivered one does.
    void* __wrap_malloc(std::size_t size)
    {
        void* const block = Refused() ? nullptr : __real_malloc(size);
        if (block == nullptr)
            throw std::bad_alloc();
        return block;
    }
    void* __wrap_calloc(std::size_t count, std::size_t size)
    {
        return Refused() ? nullptr : __real_calloc(count, size);
    }
    void* __wrap_realloc(void* block, std::size_t size)
    {
        return Refused() ? nullptr : __real_realloc(block, size);
    }
}

void* operator new(std::size_t size) { return __wrap_malloc(size); }
void* operator new[](std::size_t size) { return __wrap_malloc(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Refused() ? nullptr : __real_malloc(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept { return operator new(size, tag); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
