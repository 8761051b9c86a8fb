#pragma once
// Makes the mapped files of the library (see IFileMappedMemory for what one guarantees).
//
// Modes of Create:
//   1 (ModeCreate): makes the file, or truncates an existing one, at `size` bytes of zeros (mode 0644
//     less the umask) and maps all of it;
//   2 (ModeOpen): opens an existing file and maps all of it; `size` is ignored;
//   9 (ModeCreateTemporary): as 1, but the file is created exclusively (it must not exist) with mode 0600
//     and is removed from its directory at once, so it goes away with the mapping.
// Any other mode is refused with status 23. A file longer than 4 GiB - 1 cannot be mapped (status 22).
// The process-wide factory is stateless, so it may be used from any thread.

#include <cstdint>
#include <string>

#include "base/IFileMappedMemory.h"
#include "base/Singleton.h"

namespace Tavrin {

class FileMappedMemoryFactory : public Singleton<FileMappedMemoryFactory> {
public:
    static constexpr std::uint32_t ModeCreate = 1;
    static constexpr std::uint32_t ModeOpen = 2;
    static constexpr std::uint32_t ModeTemporary = 8;
    static constexpr std::uint32_t ModeCreateTemporary = ModeCreate | ModeTemporary;

    // Maps `path` as `mode` says and hands the caller the new object. `flag` and `last` are not used
    // (callers pass false and 0). Throws StatusCodeException with the status of the failure; nothing
    // is left open then, and a file made by this call is removed again.
    IFileMappedMemory* Create(const std::string& path, std::uint32_t size, bool flag, std::uint32_t mode,
                              std::uint32_t last);

private:
    friend class Singleton<FileMappedMemoryFactory>;
    FileMappedMemoryFactory() = default;
};

}  // namespace Tavrin
