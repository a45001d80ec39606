#pragma once

namespace analytics
{

// A lock. All operations may be called from any thread; Unlock() only from the one that holds it.
class Mutex
{
  public:
    // `recursive`: the thread that holds the lock may take it again, and gives it up as often.
    explicit Mutex(bool recursive);
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    // 0 for success, otherwise an errno number. TryLock() gives EBUSY where Lock() would wait.
    int Lock() noexcept;
    int TryLock() noexcept;
    int Unlock() noexcept;

  private:
    void* m_handle;
};

} // namespace analytics
