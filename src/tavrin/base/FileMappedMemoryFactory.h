#pragma once
// Makes the mapped files of the library (see IFileMappedMemory for what one guarantees).
//
// Modes of Create:
//   1 (ModeCreate): makes a new file of `size` bytes of zeros (mode 0644 less the umask) as the part
//     file of `path` (File::CreateReplacement) and maps all of it; IFileMappedMemory::Commit puts it
//     in place of an existing file of that name, which stays untouched until then;
//   2 (ModeOpen): opens an existing file and maps all of it; `size` is ignored;
//   9 (ModeCreateTemporary): makes the file exclusively (it must not exist) with mode 0600 and
//     removes it from its directory at once, so it goes away with the mapping.
// Modes 1 and 2 lock the file (File::Lock) for the life of the mapping: 17 when another opener
// holds it. Any other mode is refused with status 23. A file longer than 4 GiB - 1 cannot be mapped
// (status 22). The process-wide factory keeps no state but the flush hook, so it may be used from
// any thread.

#include <cstdint>
#include <string>

#include "tavrin/base/IFileMappedMemory.h"
#include "tavrin/base/Singleton.h"

namespace Tavrin {

/// The process-wide maker of IFileMappedMemory objects (GetInstance); the modes of Create are told in
/// the file comment above.
class FileMappedMemoryFactory : public Singleton<FileMappedMemoryFactory> {
public:
    ///@{
    /// Modes of Create: ModeCreate, ModeOpen and ModeCreateTemporary; ModeTemporary alone is refused.
    static constexpr std::uint32_t ModeCreate = 1;
    static constexpr std::uint32_t ModeOpen = 2;
    static constexpr std::uint32_t ModeTemporary = 8;
    static constexpr std::uint32_t ModeCreateTemporary = ModeCreate | ModeTemporary;
    ///@}

    /// Maps `path` as `mode` says and hands the caller the new object. `flag` and `last` are not used
    /// (callers pass false and 0). Throws StatusCodeException with the status of the failure; nothing
    /// is left open then, and a file made by this call is removed again.
    IFileMappedMemory* Create(const std::string& path, std::uint32_t size, bool flag, std::uint32_t mode,
                              std::uint32_t last);

    /// A test's stand-in for a write-back: gets the range a flush is about to write and answers
    /// whether the flush may go on.
    using FlushHook = bool (*)(const void* address, std::uint32_t size);
    /// For tests of what a failed write-back does: every IFileMappedMemory::Flush first calls `hook`
    /// with the range it is about to write, and fails as a refused msync (StatusCodeException 1) when
    /// it answers false. Null (the default) removes the hook. Atomic: may be set from any thread.
    static void SetFlushHook(FlushHook hook) noexcept;

private:
    friend class Singleton<FileMappedMemoryFactory>;
    FileMappedMemoryFactory() = default;
};

}  // namespace Tavrin
