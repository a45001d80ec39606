#pragma once

#include "store/StorePages.h"

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace analytics::platform
{

// A null, a number or a text; the store holds no other values.
using StoreValue = std::variant<std::monostate, std::int64_t, std::string>;

// A row of some table, or a key of some index: the page doesn't say of which.
struct StoreRow
{
    bool key = false;
    std::int64_t number = 0; // of the row in its table; 0 for a key
    std::vector<StoreValue> values;
};

// Calls `visit` with all that can be read, page after page, whether or not the tree above still leads
// there. Returns how many rows and keys are there that can't be read.
//
// Freed pages hold nothing that was deleted: the store's connections have them overwritten.
int ReadStoreRows(const StorePages& pages, const std::function<void(const StoreRow&)>& visit);

} // namespace analytics::platform
