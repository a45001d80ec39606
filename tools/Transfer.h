#pragma once

#include "ProfileFolder.h"
#include "Service.h"

#include <string>
#include <vector>

namespace client
{

// Fetches all documents of a profile.
ProfileDocuments Fetch(Service& service, const Profile& profile);

// Checks all documents, with warnings on standard error, before a service sees any of them. Throws Failure.
// Points are held against the documents' own frame, and documents in JSON are XML afterwards.
void CheckAll(ProfileDocuments& profile, Checking checking);

// The documents with their coordinates in another frame.
ProfileDocuments InFrame(const ProfileDocuments& profile, const Frame& frame);

struct StoreOptions
{
    bool run = false;     // run the new profile
    bool replace = false; // it takes the place of those of the same name, and runs if one of them ran
};

struct Stored
{
    int id = 0;
    int replaced = 0; // how many profiles it took the place of
    bool runs = false;
    std::vector<Change>
        changes; // what the service stored differently, with the document in front of the node
};

// Makes a profile of the documents, once it has warned of behaviors that can't be active together. Throws
// Failure; the service then has the profiles that it had before, unless the sentence says otherwise.
Stored Store(Service& service, const ProfileDocuments& profile, const StoreOptions& options,
             const Checking& checking);

} // namespace client
