#pragma once
// Holds an IMutex for the life of a scope. A null mutex is allowed and means no locking, which is how
// an object that was made without a mutex runs its operations.

#include "tavrin/base/IMutex.h"

namespace Tavrin {

class MutexHolder {
public:
    explicit MutexHolder(IMutex* mutex) : mutex_(mutex) {
        if (mutex_ != nullptr) mutex_->Lock();
    }
    MutexHolder(const MutexHolder&) = delete;
    MutexHolder& operator=(const MutexHolder&) = delete;
    ~MutexHolder() {
        if (mutex_ != nullptr) mutex_->Unlock();
    }

private:
    IMutex* mutex_;
};

}  // namespace Tavrin
