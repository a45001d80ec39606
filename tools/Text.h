#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace client
{

// One character of UTF-8, taken from the front of `text`. A byte that begins none is U+FFFD.
char32_t TakeCharacter(std::string_view& text);
void AppendCharacter(std::string& text, char32_t character);

// For a terminal: a character that would control it, or turn the direction of writing, becomes its number,
// as in <U+001B>, and invalid UTF-8 becomes U+FFFD. With `lines`, line breaks and tabs stay.
std::string Printable(std::string_view text, bool lines = false);

// Columns that a printable text takes on a terminal.
std::size_t Width(std::string_view text);

// Without white space in front and behind.
std::string Trimmed(std::string_view text);

// With a full stop behind it, unless it is empty or ends as a sentence does.
std::string Sentence(std::string text);

// The integer in the text, which may have a sign and white space around it.
std::optional<long long> Integer(std::string_view text);

} // namespace client
