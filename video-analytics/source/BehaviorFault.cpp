#include <BehaviorFault.h>

#include <stdsoap2.h>

namespace analyticsapi
{

int UnsupportedBehavior(soap* soap) { return soap_sender_fault(soap, "Unsupported behavior Id", nullptr); }

} // namespace analyticsapi
