// What the SOAP runtime has of us instead of its own.
//
// Memory. It goes on with a null in several places, so it never gets one: the exception ends the request in
// the transport, which releases all that the request's context holds.
//
// References from one element of a message to another. Contexts that serve look for none (SOAP_XML_TREE), so
// there are none to resolve; the runtime would go through a table of 2,000 lists for them.
//
// Making and cleaning contexts. A new one is filled twice, 48 KiB each time, and cleaned before it is used;
// then it is cleaned three times more, each time a table of 2,000 lists and another of 32 KiB. All of this
// goes through the processor's caches for some small texts, all that a request leaves.
//
// Texts. Documents come as the escaped text of an element, which the runtime takes through three functions
// for each character. What no function of it would change is copied here; it reads the rest.

#include <stdsoap2.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

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
extern "C" void RuntimeBegin(soap* context);
extern "C" void RuntimeFreeTemp(soap* context);

namespace
{

thread_local soap* t_new = nullptr; // the context that this thread made last, until it is begun

} // namespace

// The build lets the runtime's own give way to it.
extern "C" [[gnu::visibility("hidden")]] soap* soap_versioning(soap_new)(soap_mode input, soap_mode output)
{
    t_new = new (std::nothrow) soap(input, output); // its constructor fills it
    return t_new;
}

// The build lets the runtime's own give way to it.
extern "C" [[gnu::visibility("hidden")]] void soap_begin(soap* context)
{
    const bool isNew = context == t_new;
    t_new = nullptr;
#if GSOAP_VERSION == 208124 // all else that it sets is set already
    if (isNew)
    {
        context->mode = 0;
        context->encodingStyle = "";
        return;
    }
#endif
    RuntimeBegin(context);
}

// The build lets the runtime's own give way to it.
extern "C" [[gnu::visibility("hidden")]] void soap_free_temp(soap* context)
{
#if GSOAP_VERSION == 208124 // another one may have more to clean
    // The table of pointers is filled from blocks, and the one of references stays empty.
    if ((context->imode & SOAP_XML_TREE) != 0 && context->nlist == nullptr && context->blist == nullptr &&
        context->xlist == nullptr && context->pblk == nullptr)
    {
        while (struct soap_attribute* const attribute = context->attributes)
        {
            context->attributes = attribute->next;
            SOAP_FREE(context, attribute->value);
            SOAP_FREE(context, attribute);
        }
        for (Namespace* it = context->local_namespaces; it != nullptr && it->id != nullptr; ++it)
            SOAP_FREE(context, it->out);
        SOAP_FREE(context, context->local_namespaces);
        context->local_namespaces = nullptr;
        SOAP_FREE(context, context->labbuf); // the text that was read last
        context->labbuf = nullptr;
        context->lablen = 0;
        context->labidx = 0;
        return;
    }
#endif
    RuntimeFreeTemp(context);
}

// The runtime's own.
extern "C" char* RuntimeStringIn(soap* context, int flag, long least, long most, const char* pattern);

namespace
{

struct Reference
{
    std::string_view text;
    char character;
};

constexpr std::array<Reference, 5> kReferences = {
    {{"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}}};

// Whether a byte of a text stands for itself wherever it is. The others, from 0x80 on among them, are left
// to the runtime.
constexpr bool IsPlain(char byte)
{
    return (byte >= ' ' && byte <= '~' && byte != '<' && byte != '&') || byte == '\t' || byte == '\n';
}

// Appends the beginning of `input` that is plain, its references replaced, and returns how much it was.
std::size_t AppendPlain(std::string_view input, std::string& text)
{
    std::size_t at = 0;
    for (;;)
    {
        const auto* const run = input.begin() + at;
        const auto* const end = std::find_if_not(run, input.end(), IsPlain);
        text.append(run, end);
        at = static_cast<std::size_t>(end - input.begin());
        const auto reference = std::find_if(kReferences.begin(), kReferences.end(),
                                            [rest = input.substr(at)](const Reference& r)
                                            { return rest.substr(0, r.text.size()) == r.text; });
        if (reference == kReferences.end())
            return at;
        text += reference->character;
        at += reference->text.size();
    }
}

} // namespace

// The build lets the runtime's own give way to it.
extern "C" [[gnu::visibility("hidden")]] char* soap_string_in(soap* context, int flag, long least, long most,
                                                              const char* pattern)
{
    std::string text;
    // A string without bounds, of which the runtime has taken nothing yet.
    if (flag == 1 && least <= 0 && most < 0 && pattern == nullptr && context->peeked == 0 &&
        context->ahead == 0 && context->cdata == 0)
    {
        do
            context->bufidx +=
                AppendPlain({context->buf + context->bufidx, context->buflen - context->bufidx}, text);
        while (context->bufidx >= context->buflen && soap_recv(context) == SOAP_OK);
    }
    char* const rest = RuntimeStringIn(context, flag, least, most, pattern);
    if (rest == nullptr || text.empty())
        return rest;
    text += rest;
    auto* const whole = static_cast<char*>(soap_malloc(context, text.size() + 1));
    text.copy(whole, text.size());
    whole[text.size()] = '\0';
    return whole;
}
