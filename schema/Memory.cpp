// The SOAP runtime goes on with a null in several places where it gets no memory. What links it calls this in
// the place of malloc (the linker's --wrap), which gives none: the exception ends the request in the
// transport, which releases all that the request's context holds. On 32-bit Arm the compiler left the tables
// of several of the runtime's operations without a way for exceptions (soap_malloc): there the service ends,
// and its unit starts it again.

#include <cstddef>
#include <new>

extern "C"
{
    void* __real_malloc(std::size_t size);

    [[gnu::visibility("hidden")]] void* __wrap_malloc(std::size_t size)
    {
        void* const block = __real_malloc(size);
        if (block == nullptr)
            throw std::bad_alloc();
        return block;
    }
}
