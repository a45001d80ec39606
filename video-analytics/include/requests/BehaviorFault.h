#pragma once

struct soap;

namespace analyticsapi
{

// The sender's fault for a behavior that no plug-in has, or that the profile has nothing of. Returns
// gSOAP's status for a fault.
int UnsupportedBehavior(soap* soap);

} // namespace analyticsapi
