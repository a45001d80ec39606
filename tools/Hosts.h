#pragma once

#include "Access.h"
#include "Cameras.h"
#include "documents/Frame.h"

#include <string>
#include <vector>

namespace client
{

// A host among others.
struct Target
{
    Access access;
    Frame frame; // in which its coordinates count
    Camera said; // what was said of this host alone
};

// The hosts in a file, a line each as ParseHost() takes it; empty lines and what follows a # don't count.
// Throws Failure with the line of what is wrong, also for an address that stands there twice.
std::vector<Camera> ReadHosts(const std::string& file);

// How to access the cameras; fields that aren't set are taken from `otherwise`. Asks for the password of a
// user once, and reads password files. Throws Failure.
std::vector<Target> TargetsOf(const std::vector<Camera>& cameras, const Target& otherwise);

} // namespace client
