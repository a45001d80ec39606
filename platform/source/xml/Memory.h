#pragma once

namespace analytics::xml
{

// Sets libxml2 up. Before its first use; cheap after that.
void Initialise();

// Throws std::bad_alloc if libxml2 has run out of memory on this thread since the last call. To be called
// after each use of it: what it does then is to leave something out of the document.
void RequireMemory();

} // namespace analytics::xml
