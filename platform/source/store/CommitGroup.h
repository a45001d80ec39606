#pragma once

#include "threads/Mutex.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace analytics::platform
{

class StoreConnection;

// Brings changes that come while another is being written into one transaction: the disk is waited for
// once for all of them. The first thread leads; what comes until it is done waits, and of these the first
// leads the next group. A change that comes alone waits for nobody. Any thread.
class CommitGroup
{
  public:
    using Operation = std::function<void(StoreConnection&)>;

    // With neither of the two its own thread is to do it, in a transaction of its own.
    struct Member
    {
        const Operation& operation;
        bool committed = false;   // on the disk
        std::string failure = {}; // why the whole group has failed, as a sentence
    };

  private:
    // Those that are served together, the one that leads first.
    struct Batch
    {
        std::vector<Member*> members; // guarded by m_lock until the batch is led
        Event called;                 // its leader may begin
        Event served;                 // all of them
    };

  public:
    // A thread's part in a group. The constructor returns when the member is served or leads; a leader's
    // destructor ends its group and calls the next leader. The member has to outlive it.
    class Turn
    {
      public:
        Turn(CommitGroup& group, Member& member);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

        // Empty unless this thread leads; otherwise all that are to be served, its own one first.
        const std::vector<Member*>& Members() const;

      private:
        CommitGroup& m_group;
        std::shared_ptr<Batch> m_led; // null for one that was served
    };

    // How many wait for the next group to begin.
    std::size_t Waiting();

  private:
    Mutex m_lock;
    std::shared_ptr<Batch> m_next ANALYTICS_GUARDED_BY(m_lock); // that waits to be led; null if nobody waits
    bool m_busy ANALYTICS_GUARDED_BY(m_lock) = false;           // a batch is led, or its leader called
};

} // namespace analytics::platform
