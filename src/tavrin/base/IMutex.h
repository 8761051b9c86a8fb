#pragma once
// A mutual exclusion lock private to the process, made by PrivateMutexFactory. It is always taken
// through a MutexHolder, so that it is released on every path, also when an exception passes.

namespace Tavrin {

/// A lock private to the process, taken through a MutexHolder.
class IMutex {
public:
    /// A free lock.
    IMutex() = default;
    /// Not copyable.
    IMutex(const IMutex&) = delete;
    /// Not copyable.
    IMutex& operator=(const IMutex&) = delete;
    /// Destroys the lock, which must be free.
    virtual ~IMutex() = default;

    /// Takes the lock if it is free and tells whether it did; never waits.
    virtual bool TryLock() = 0;
    /// Waits for the lock. A non-recursive mutex must not be taken twice by one thread.
    virtual void Lock() = 0;
    /// Releases the lock (one level of it for a recursive mutex), which the calling thread holds.
    virtual void Unlock() = 0;
};

}  // namespace Tavrin
