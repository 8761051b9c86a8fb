#pragma once
// A mutual exclusion lock private to the process, made by PrivateMutexFactory. It is always taken
// through a MutexHolder, so that it is released on every path, also when an exception passes.

namespace Tavrin {

class IMutex {
public:
    IMutex() = default;
    IMutex(const IMutex&) = delete;
    IMutex& operator=(const IMutex&) = delete;
    virtual ~IMutex() = default;

    /// Takes the lock if it is free and tells whether it did; never waits.
    virtual bool TryLock() = 0;
    ///@{
    /// Waits for the lock. A non-recursive mutex must not be taken twice by one thread.
    virtual void Lock() = 0;
    virtual void Unlock() = 0;
    ///@}
};

}  // namespace Tavrin
