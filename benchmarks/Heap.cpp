#include "Heap.h"

#include <malloc.h>

#include <algorithm>

// The functions of glibc behind those that are replaced here. Whatever allocates otherwise isn't counted.
extern "C"
{
    void* __libc_malloc(std::size_t size);
    void* __libc_calloc(std::size_t count, std::size_t size);
    void* __libc_realloc(void* block, std::size_t size);
    void __libc_free(void* block);
}

namespace
{
bool gCounting = false;
long gBytes = 0;
long gPeak = 0;

void Count(const void* block, long sign)
{
    if (!gCounting || block == nullptr)
        return;
    gBytes += sign * static_cast<long>(malloc_usable_size(const_cast<void*>(block)));
    gPeak = std::max(gPeak, gBytes);
}

void* Counted(void* block)
{
    Count(block, 1);
    return block;
}
} // namespace

extern "C"
{
    void* malloc(std::size_t size) { return Counted(__libc_malloc(size)); }
    void* calloc(std::size_t count, std::size_t size) { return Counted(__libc_calloc(count, size)); }
    void* realloc(void* block, std::size_t size)
    {
        Count(block, -1);
        return Counted(__libc_realloc(block, size));
    }
    void free(void* block)
    {
        Count(block, -1);
        __libc_free(block);
    }
}

namespace heap
{

void Begin()
{
    gBytes = gPeak = 0;
    gCounting = true;
}

std::size_t Peak()
{
    gCounting = false;
    return static_cast<std::size_t>(gPeak);
}

} // namespace heap
