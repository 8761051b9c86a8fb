#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "base/MutexHolder.h"
#include "base/PrivateMutexFactory.h"

namespace Tavrin {
namespace {

std::unique_ptr<IMutex> MakeMutex(bool recursive) {
    return std::unique_ptr<IMutex>(PrivateMutexFactory::GetInstance().Create(recursive));
}

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
    const auto mutex = MakeMutex(false);
    {
        MutexHolder holder(mutex.get());
        EXPECT_FALSE(FreeForOthers(*mutex));
    }
    EXPECT_TRUE(FreeForOthers(*mutex));
    try {
        MutexHolder holder(mutex.get());
        throw std::runtime_error("passing through");
    } catch (const std::runtime_error&) {
    }
    EXPECT_TRUE(FreeForOthers(*mutex));
    MutexHolder none(nullptr);  // no mutex, no locking
}

TEST(Mutex, RecursiveMutexMayBeTakenTwice) {
    const auto mutex = MakeMutex(true);
    MutexHolder outer(mutex.get());
    MutexHolder inner(mutex.get());
    EXPECT_FALSE(FreeForOthers(*mutex));
}

TEST(Mutex, GuardsACounterAcrossThreads) {
    const auto mutex = MakeMutex(false);
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 20000; ++i) {
                MutexHolder holder(mutex.get());
                ++counter;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(counter, 80000);
}

}  // namespace
}  // namespace Tavrin
