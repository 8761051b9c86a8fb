#include "tavrin/base/PrivateMutexFactory.h"

#include <mutex>
#include <new>

#include "tavrin/base/Throw.h"

namespace Tavrin {

namespace {

template <class StandardMutex>
class PrivateMutex final : public IMutex {
public:
    bool TryLock() override { return mutex_.try_lock(); }
    void Lock() override { mutex_.lock(); }
    void Unlock() override { mutex_.unlock(); }

private:
    StandardMutex mutex_;
};

}  // namespace

IMutex* PrivateMutexFactory::Create(bool recursive) {
    IMutex* mutex = recursive ? static_cast<IMutex*>(new (std::nothrow) PrivateMutex<std::recursive_mutex>())
                              : static_cast<IMutex*>(new (std::nothrow) PrivateMutex<std::mutex>());
    if (mutex == nullptr) ThrowStatus("Tavrin::PrivateMutexFactory::Create", Status::OutOfMemory);
    return mutex;
}

}  // namespace Tavrin
