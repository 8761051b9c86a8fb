#pragma once
// Runs a piece of a test in a forked child that ends with _exit, skipping every destructor, as a
// killed process would. The child's exit code comes back to the parent; -1 if it did not exit.

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>

namespace Tavrin::Testing {

template <class Body>
int RunInChild(Body body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        int code = 100;
        try {
            code = body();
        } catch (const std::exception& e) {
            std::fprintf(stderr, "child: %s\n", e.what());
            code = 101;
        }
        ::_exit(code);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Ends the child at once, as a kill would: no destructor runs, nothing is closed. Exit code 0.
[[noreturn]] inline void DieWithoutCleanup() { ::_exit(0); }

// In a child: files may grow to `bytes` at most, and passing the limit is an error, not a signal.
inline void LimitFileSize(rlim_t bytes) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace Tavrin::Testing
