#pragma once

// Memory that runs out: this program's `new` and, by the linker's --wrap, its malloc, calloc and realloc,
// those of the libraries linked into it included. One thread.
namespace shortage
{

// From now on the `nth` request for memory fails, counted from 1 (0: none), and if `lasting` all after it.
void Begin(int nth, bool lasting);
// Ends it; whether any request has failed.
bool End();

// Not counted, for what isn't under test.
void Pause();
void Resume();

} // namespace shortage
