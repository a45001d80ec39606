// Where the SOAP runtime gets its memory. It goes on with a null in several places, so it never gets one:
// the exception ends the request in the transport, which releases all that the request's context holds.

#include <cstddef>
#include <cstdlib>
#include <new>

// Called by the name that the build gives it in place of malloc.
extern "C" [[gnu::visibility("hidden")]] void* RuntimeAllocate(std::size_t size)
{
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}
