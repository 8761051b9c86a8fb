#pragma once

namespace Tavrin {

/// Base of process-wide objects: non-copyable, reached through GetInstance(), which makes the one
/// object at its first call (thread-safe since C++11) and destroys it at the end of the process.
template <class T>
class Singleton {
public:
    /// Not copyable: there is one object.
    Singleton(const Singleton&) = delete;
    /// Not copyable: there is one object.
    Singleton& operator=(const Singleton&) = delete;

    /// The process's one T, made at the first call (thread-safe) and destroyed at the end of the
    /// process; the reference stays valid until then. The object is not the caller's to delete.
    static T& GetInstance() {
        static T instance;
        return instance;
    }

protected:
    /// Only GetInstance makes the object, through T.
    Singleton() = default;
    /// Runs at the end of the process.
    ~Singleton() = default;
};

}  // namespace Tavrin
