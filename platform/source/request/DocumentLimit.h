#pragma once

#include <cstddef>

namespace analytics::platform
{

// Bounds what the documents that a client sends may grow to, in the client's form and in the engine's:
// limits/documentElements. It applies within a request, until the request reads what is stored; outside of
// requests nothing is bounded. One thread's business.

// The setting.
std::size_t DocumentElements();

// Whether a document may have so many elements: to be asked before the tree of a text is built. False is
// remembered: the request's document is too large, and the store refuses it in words for the client.
bool AdmitElements(std::size_t count);
// Whether an element may be added to those that were counted last and have been added since.
bool AdmitAnother();

// Whether one of these has been false in this request.
bool DocumentIsTooLarge();

// For the rest of the request: what comes now was admitted when it was stored.
void LiftDocumentLimit();

} // namespace analytics::platform
