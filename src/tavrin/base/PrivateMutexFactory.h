#pragma once
// Makes mutexes private to the process. The factory is stateless and may be used from any thread.

#include "tavrin/base/IMutex.h"
#include "tavrin/base/Singleton.h"

namespace Tavrin {

class PrivateMutexFactory : public Singleton<PrivateMutexFactory> {
public:
    /// A new mutex owned by the caller: recursive when `recursive` is true (callers of the table
    /// library pass false). Throws StatusCodeException 41 if it cannot be allocated.
    IMutex* Create(bool recursive);

private:
    friend class Singleton<PrivateMutexFactory>;
    PrivateMutexFactory() = default;
};

}  // namespace Tavrin
