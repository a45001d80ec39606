#pragma once

namespace analytics
{

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
