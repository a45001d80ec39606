#pragma once

#include "feed/EngineFeed.h"
#include "store/Store.h"

#include <optional>
#include <string>

namespace analytics
{

// What the analytics engine is shown of the store, if it is shown anything: the active profile and what is
// switched on. The number of times that this has changed is stored with the change itself. Any thread.
class EngineView
{
  public:
    // `folder`: where the engine reads; empty: nothing is shown.
    EngineView(const std::string& folder, platform::Store& store);

    // Shows what is stored. Before there are changes.
    void Begin();
    // Writes an operation on a profile, or on the camera as a whole. What the engine sees of it is shown on
    // return.
    void Write(std::optional<int> profile, const platform::Store::Operation& operation);

  private:
    platform::EngineState Next(platform::StoreConnection& connection) const;

    platform::Store& m_store;
    std::optional<platform::EngineFeed> m_feed;
};

} // namespace analytics
