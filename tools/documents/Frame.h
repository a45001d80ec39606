#pragma once

#include "documents/Model.h"

#include <string>
#include <string_view>

namespace client
{

// The picture that coordinates count in: from 0 to its width and its height, both included.
struct Frame
{
    int width = 320;
    int height = 240;

    std::string Text() const; // as in "320x240"
    friend bool operator==(const Frame&, const Frame&) = default;
};

// "WIDTHxHEIGHT", each from 1 to 100,000. Throws Failure (usage); `source` says where the text stands.
Frame ParseFrame(std::string_view text, const std::string& source);

// The document with all its points taken from one frame to another, each axis by its own factor, rounded
// to the nearest. What isn't a number stays. Throws Failure if the text isn't XML.
std::string Scaled(const std::string& document, const Frame& from, const Frame& to);

} // namespace client
