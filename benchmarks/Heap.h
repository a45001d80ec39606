#pragma once

#include <cstddef>

// What the program has allocated, from Begin() to Peak(): for one thread, without mapped files.
namespace heap
{

void Begin();
std::size_t Peak(); // bytes at most, beside what there was before

} // namespace heap
