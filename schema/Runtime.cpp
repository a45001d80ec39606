// What the SOAP runtime has of us instead of its own.
//
// Memory. It goes on with a null in several places, so it never gets one: the exception ends the request in
// the transport, which releases all that the request's context holds. Each connection has a context of its
// own, 160 KiB of which every request touches the same parts. A few lie in places that are kept: they stay
// where the processor knows them, and the allocator isn't made to take so much from the system and give it
// back with each request.
//
// References from one element of a message to another. Contexts that serve look for none (SOAP_XML_TREE), so
// there are none to resolve; the runtime would go through a table of 2,000 lists for them.
//
// Cleaning up. It is done four times a request, each time the same table and another of 32 KiB; three times
// there is nothing to clean, and 150 KiB go through the processor's caches for it.

#include <stdsoap2.h>

#include <sanitizer/asan_interface.h>

#include <atomic>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace
{

// More requests than processors are under way at a time only when some wait for the disk.
constexpr int kPlaces = 8;

struct alignas(64) Place
{
    std::byte bytes[sizeof(soap)];
};
Place gPlaces[kPlaces];                // the system backs what has been used
std::atomic<std::uint32_t> gTaken = 0; // a bit for each place

// The lowest place that is free, or null. Any thread.
void* TakePlace()
{
    std::uint32_t taken = gTaken.load(std::memory_order_relaxed);
    for (;;)
    {
        const int place = std::countr_one(taken);
        if (place >= kPlaces)
            return nullptr;
        if (!gTaken.compare_exchange_weak(taken, taken | 1U << place, std::memory_order_acquire))
            continue;
        ASAN_UNPOISON_MEMORY_REGION(&gPlaces[place], sizeof gPlaces[place]);
        return &gPlaces[place];
    }
}

bool GiveBack(const void* block)
{
    const auto offset = reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(gPlaces);
    if (offset >= sizeof gPlaces)
        return false;
    const std::size_t place = offset / sizeof(Place);
    ASAN_POISON_MEMORY_REGION(&gPlaces[place], sizeof gPlaces[place]);
    gTaken.fetch_and(~(std::uint32_t{1} << place), std::memory_order_release);
    return true;
}

} // namespace

// Called by the names that the build gives them in place of malloc and free.
extern "C" [[gnu::visibility("hidden")]] void* RuntimeAllocate(std::size_t size)
{
    void* block = size == sizeof(soap) ? TakePlace() : nullptr;
    if (block == nullptr)
        block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

extern "C" [[gnu::visibility("hidden")]] void RuntimeRelease(void* block)
{
    if (!GiveBack(block))
        std::free(block);
}

// The build lets the runtime's own give way to it.
extern "C" [[gnu::visibility("hidden")]] int soap_resolve(soap* context)
{
    assert((context->imode & SOAP_XML_TREE) != 0);
    return SOAP_OK;
}

// The runtime's own.
extern "C" void RuntimeFreeTemp(soap* context);

// The build lets the runtime's own give way to it.
extern "C" [[gnu::visibility("hidden")]] void soap_free_temp(soap* context)
{
#if GSOAP_VERSION == 208124 // another one may have more to clean
    // The table of pointers is filled from blocks, and the one of references stays empty.
    if ((context->imode & SOAP_XML_TREE) != 0 && context->nlist == nullptr && context->blist == nullptr &&
        context->attributes == nullptr && context->labbuf == nullptr &&
        context->local_namespaces == nullptr && context->xlist == nullptr && context->pblk == nullptr)
        return;
#endif
    RuntimeFreeTemp(context);
}
