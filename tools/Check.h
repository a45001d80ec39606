#pragma once

#include "Model.h"

#include <string>
#include <vector>

namespace client
{

// Something in a document that the service would ignore, or that a user interface would not have allowed.
struct Finding
{
    long line;
    std::string text;
};

// Compares the element and all below it with the model, in document order.
std::vector<Finding> Check(const xmlNode* element, const Model& model);

} // namespace client
