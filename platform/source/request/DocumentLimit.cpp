#include "request/DocumentLimit.h"

#include <analytics/Settings.h>

#include "request/Request.h"

#include <cstdint>
#include <limits>

namespace analytics::platform
{
namespace
{
constexpr int kDocumentElements = 200'000;
constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

struct Limit
{
    std::uint64_t request = 0;
    std::size_t elements = kNoLimit;
    std::size_t counted = 0; // of the document that is being built
    bool exceeded = false;
};

Limit& LimitOfThread()
{
    thread_local Limit limit;
    const std::uint64_t request = CurrentRequest();
    if (limit.request != request)
        limit = {request, request == 0 ? kNoLimit : DocumentElements(), 0, false};
    return limit;
}

bool Admit(Limit& limit, std::size_t count)
{
    limit.counted = count;
    limit.exceeded = limit.exceeded || count > limit.elements;
    return count <= limit.elements;
}
} // namespace

std::size_t DocumentElements()
{
    const int elements = Settings::GetValue("//limits/documentElements", kDocumentElements);
    return static_cast<std::size_t>(elements > 0 ? elements : kDocumentElements);
}

bool AdmitElements(std::size_t count) { return Admit(LimitOfThread(), count); }

bool AdmitAnother()
{
    Limit& limit = LimitOfThread();
    return Admit(limit, limit.counted + 1);
}

bool DocumentIsTooLarge() { return LimitOfThread().exceeded; }

void LiftDocumentLimit() { LimitOfThread().elements = kNoLimit; }

} // namespace analytics::platform
