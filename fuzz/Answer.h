#pragma once

#include <string>

namespace fuzzing
{

// Expects `answer` to be what a client can read: one HTTP response whose length is what it says, with
// an envelope that holds a fault or a response that is valid against the schema. Nothing at all is an
// answer too: the connection was closed.
void CheckAnswer(std::string answer, const std::string& request);

} // namespace fuzzing
