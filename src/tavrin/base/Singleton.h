#pragma once

namespace Tavrin {

/// Base of process-wide objects: non-copyable, reached through GetInstance(), which makes the one
/// object at its first call (thread-safe since C++11) and destroys it at the end of the process.
template <class T>
class Singleton {
public:
    Singleton(const Singleton&) = delete;
    Singleton& operator=(const Singleton&) = delete;

    static T& GetInstance() {
        static T instance;
        return instance;
    }

protected:
    Singleton() = default;
    ~Singleton() = default;
};

}  // namespace Tavrin
