#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <thread>

#include "tavrin/base/MutexHolder.h"
#include "tavrin/base/PrivateMutexFactory.h"

namespace Tavrin {
namespace {

// Whether another thread finds the mutex free.
bool FreeForOthers(IMutex& mutex) {
    bool taken = false;
    std::thread([&] {
        taken = mutex.TryLock();
        if (taken) mutex.Unlock();
    }).join();
    return taken;
}

TEST(Mutex, HolderReleasesOnEveryPath) {
    const std::unique_ptr<IMutex> mutex(PrivateMutexFactory::GetInstance().Create(false));
    {
        MutexHolder holder(mutex.get());
        EXPECT_FALSE(FreeForOthers(*mutex));
    }
    EXPECT_TRUE(FreeForOthers(*mutex));
    EXPECT_THROW(
        {
            MutexHolder holder(mutex.get());
            throw std::runtime_error("passing through");
        },
        std::runtime_error);
    EXPECT_TRUE(FreeForOthers(*mutex));

    const std::unique_ptr<IMutex> recursive(PrivateMutexFactory::GetInstance().Create(true));
    MutexHolder outer(recursive.get());
    MutexHolder inner(recursive.get());
    EXPECT_FALSE(FreeForOthers(*recursive));
}

}  // namespace
}  // namespace Tavrin
