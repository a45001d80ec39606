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

// Holds a lock for the length of a scope. LockT has Lock(), TryLock() and Unlock(), 0 for success.
template <class LockT>
class AutoLock
{
  public:
    // `initLock` false holds nothing until Lock() is called. The lock must outlive this object.
    AutoLock(LockT& lock, bool initLock) : m_lock(lock), m_locked(false)
    {
        if (initLock)
            Lock();
    }
    ~AutoLock()
    {
        if (Locked())
            Unlock();
    }
    AutoLock(const AutoLock&) = delete;
    AutoLock& operator=(const AutoLock&) = delete;

    int Lock()
    {
        const int result = m_lock.Lock();
        m_locked = result == 0;
        return result;
    }
    // Stays locked if the lock refuses to be given up.
    int Unlock()
    {
        const int result = m_lock.Unlock();
        m_locked = result != 0;
        return result;
    }
    int TryLock()
    {
        const int result = m_lock.TryLock();
        m_locked = result == 0;
        return result;
    }
    bool Locked() const { return m_locked; }

  private:
    LockT& m_lock;
    bool m_locked;
};

} // namespace analytics
