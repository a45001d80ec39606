// What the SOAP runtime has of us instead of its own.
//
// Memory. It goes on with a null in several places, so it never gets one: the exception ends the request in
// the transport, which releases all that the request's context holds.
//
// References from one element of a message to another. Contexts that serve look for none (SOAP_XML_TREE), so
// there are none to resolve; the runtime would go through a table of 2,000 lists for them.
//
// Cleaning up. It is done four times a request, each time the same table and another of 32 KiB; three times
// there is nothing to clean, and 150 KiB go through the processor's caches for it.

#include <stdsoap2.h>

#include <cassert>
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
