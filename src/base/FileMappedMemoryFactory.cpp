#include "base/FileMappedMemoryFactory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <new>
#include <utility>

#include "base/SystemStatus.h"
#include "base/Throw.h"

namespace Tavrin {

namespace {

constexpr int Protection = PROT_READ | PROT_WRITE;

// A shared, writable mapping of one whole open file. The descriptor stays open for Resize.
class MappedFile final : public IFileMappedMemory {
public:
    MappedFile(int descriptor, void* address, std::uint32_t size) noexcept
        : descriptor_(descriptor), address_(address), size_(size) {}

    ~MappedFile() override {
        if (address_ != nullptr) ::munmap(address_, size_);
        ::close(descriptor_);
    }

    void* GetAddress() override { return address_; }
    std::uint32_t GetSize() override { return size_; }

    void* Resize(std::uint32_t size) override {
        if (size == size_) return address_;
        if (size < size_) ThrowStatus("Tavrin::FileMappedMemory::Resize", Status::Invalid);
        // Reserve the blocks first: a mapping over blocks the disk cannot supply would fault later.
        const int error = ::posix_fallocate(descriptor_, size_, size - size_);
        if (error != 0) FailResize(error);
        void* moved = address_ == nullptr ? ::mmap(nullptr, size, Protection, MAP_SHARED, descriptor_, 0)
                                          : ::mremap(address_, size_, size, MREMAP_MAYMOVE);
        if (moved == MAP_FAILED) FailResize(errno);
        address_ = moved;
        size_ = size;
        return address_;
    }

    void Flush(std::uint32_t size) override {
        const std::uint32_t length = std::min(size, size_);
        if (address_ != nullptr && length != 0) ::msync(address_, length, MS_SYNC);
    }

private:
    // Gives the file back its old length, so that it still matches the mapping, and throws.
    [[noreturn]] void FailResize(int error) {
        // If even this fails nothing more can be done; the first failure is the one reported.
        const bool restored = ::ftruncate(descriptor_, size_) == 0;
        static_cast<void>(restored);
        ThrowStatus("Tavrin::FileMappedMemory::Resize", StatusFromErrno(error));
    }

    int descriptor_;
    void* address_;
    std::uint32_t size_;
};

// An open descriptor that is closed, and a file made by this call that is removed, unless Release()
// hands the descriptor on.
class PendingFile {
public:
    PendingFile(int descriptor, const std::string& path, bool created) noexcept
        : descriptor_(descriptor), path_(path), created_(created) {}
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;
    ~PendingFile() {
        if (descriptor_ < 0) return;
        ::close(descriptor_);
        if (created_) ::unlink(path_.c_str());
    }
    int Get() const noexcept { return descriptor_; }
    // The file is no longer in its directory; there is nothing left to remove on failure.
    void Unlinked() noexcept { created_ = false; }
    int Release() noexcept { return std::exchange(descriptor_, -1); }

private:
    int descriptor_;
    const std::string& path_;
    bool created_;
};

int OpenFlags(std::uint32_t mode) noexcept {
    switch (mode) {
        case FileMappedMemoryFactory::ModeCreate: return O_RDWR | O_CREAT | O_TRUNC;
        case FileMappedMemoryFactory::ModeOpen: return O_RDWR;
        case FileMappedMemoryFactory::ModeCreateTemporary: return O_RDWR | O_CREAT | O_EXCL;
        default: return -1;
    }
}

[[noreturn]] void FailCreate(StatusCode status) { ThrowStatus("Tavrin::FileMappedMemoryFactory::Create", status); }

// The length of an existing file, which must fit the 32-bit size of a mapping.
std::uint32_t ExistingSize(int descriptor) {
    struct stat information {};
    if (::fstat(descriptor, &information) != 0) FailCreate(StatusFromErrno(errno));
    if (information.st_size < 0 || information.st_size > std::numeric_limits<std::uint32_t>::max()) {
        FailCreate(Status::LengthMismatch);
    }
    return static_cast<std::uint32_t>(information.st_size);
}

}  // namespace

IFileMappedMemory* FileMappedMemoryFactory::Create(const std::string& path, std::uint32_t size, bool /*flag*/,
                                                    std::uint32_t mode, std::uint32_t /*last*/) {
    const int flags = OpenFlags(mode);
    if (flags < 0) FailCreate(Status::Invalid);
    const bool temporary = mode == ModeCreateTemporary;
    const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC, temporary ? 0600 : 0644);
    if (descriptor < 0) FailCreate(StatusFromErrno(errno));
    PendingFile file(descriptor, path, mode != ModeOpen);
    if (temporary) {
        ::unlink(path.c_str());
        file.Unlinked();
    }

    if (mode == ModeOpen) {
        size = ExistingSize(descriptor);
    } else if (size != 0) {
        const int error = ::posix_fallocate(descriptor, 0, size);
        if (error != 0) FailCreate(StatusFromErrno(error));
    }

    void* address = nullptr;
    if (size != 0) {
        address = ::mmap(nullptr, size, Protection, MAP_SHARED, descriptor, 0);
        if (address == MAP_FAILED) FailCreate(StatusFromErrno(errno));
    }
    auto* mapping = new (std::nothrow) MappedFile(descriptor, address, size);
    if (mapping == nullptr) {
        if (address != nullptr) ::munmap(address, size);
        FailCreate(Status::OutOfMemory);
    }
    file.Release();
    return mapping;
}

}  // namespace Tavrin
