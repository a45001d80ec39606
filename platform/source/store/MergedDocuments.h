#pragma once

#include "store/StoredConfiguration.h"
#include "threads/Lock.h"

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace analytics
{

// The merged documents of the profiles that were asked for last, each with the configurations that it was
// merged of. A profile that now holds others is merged anew: nobody has to tell of a change, whoever made
// it. Any thread.
class MergedDocuments
{
  public:
    using Configurations = std::vector<StoredConfiguration>;
    using Merge = std::function<std::string(const Configurations&)>;

    // What is kept at most, and how many bytes of text. What is larger alone isn't kept.
    static constexpr std::size_t kMost = 16;
    static constexpr std::size_t kMostBytes = 512 * 1024;

    // The document of the profile, which holds what is in `stored`.
    std::string Get(int profile, Configurations stored, const Merge& merge);

  private:
    struct Document
    {
        int profile;
        Configurations stored;
        std::string text;
        std::size_t bytes; // of all texts
    };
    using Kept = std::shared_ptr<const Document>;

    Kept Find(int profile);
    void Keep(const Kept& document);

    platform::Lock m_lock;
    std::list<Kept> m_kept ANALYTICS_GUARDED_BY(m_lock); // the last one asked for first
    std::size_t m_bytes ANALYTICS_GUARDED_BY(m_lock) = 0;
};

} // namespace analytics
