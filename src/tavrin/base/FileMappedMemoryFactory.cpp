#include "tavrin/base/FileMappedMemoryFactory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <limits>
#include <memory>
#include <new>

#include "tavrin/base/File.h"
#include "tavrin/base/SystemStatus.h"
#include "tavrin/base/Throw.h"

namespace Tavrin {

namespace {

constexpr int Protection = PROT_READ | PROT_WRITE;
constexpr const char* CreateOperation = "Tavrin::FileMappedMemoryFactory::Create";
constexpr std::uint32_t ReadWrite = File::ReadAccess | File::WriteAccess;

std::atomic<FileMappedMemoryFactory::FlushHook> flushHook{nullptr};

[[noreturn]] void FailCreate(StatusCode status) { ThrowStatus(CreateOperation, status); }

// A shared, writable mapping of one whole open file. The file stays open (and locked) for Resize.
class MappedFile final : public IFileMappedMemory {
public:
    ~MappedFile() override {
        if (address_ != nullptr) ::munmap(address_, size_);
        // file_ closes after the unmap; a part file never committed goes with it.
    }

    // Opens or creates the file of `mode` and maps `size` bytes of it (all of an existing file).
    void Map(const std::string& path, std::uint32_t size, std::uint32_t mode) {
        StatusCode status = Status::Invalid;
        switch (mode) {
            case FileMappedMemoryFactory::ModeCreate: status = file_.CreateReplacement(path, ReadWrite, 0644); break;
            case FileMappedMemoryFactory::ModeOpen: status = file_.OpenExclusive(path, ReadWrite); break;
            case FileMappedMemoryFactory::ModeCreateTemporary: status = CreateTemporary(path); break;
            default: break;
        }
        if (status != Status::Success) FailCreate(status);
        pending_ = mode == FileMappedMemoryFactory::ModeCreate;
        anonymous_ = mode == FileMappedMemoryFactory::ModeCreateTemporary;
        if (mode == FileMappedMemoryFactory::ModeOpen) {
            size = ExistingSize();
        } else if (size != 0 && !anonymous_) {
            const int error = ::posix_fallocate(file_.GetDescriptor(), 0, size);
            if (error != 0) FailCreate(StatusFromErrno(error));
        }
        if (size == 0) return;
        void* address = MapNew(size);
        if (address == MAP_FAILED) FailCreate(StatusFromErrno(errno));
        address_ = address;
        size_ = size;
        AdviseHugePages();
    }

    void* GetAddress() override { return address_; }
    std::uint32_t GetSize() override { return size_; }

    void* Resize(std::uint32_t size) override {
        if (size == size_) return address_;
        if (size < size_) ThrowStatus("Tavrin::FileMappedMemory::Resize", Status::Invalid);
        // Reserve the blocks first: a mapping over blocks the disk cannot supply would fault later.
        if (!anonymous_) {
            const int error = ::posix_fallocate(file_.GetDescriptor(), size_, size - size_);
            if (error != 0) FailResize(error);
        }
        void* moved = address_ == nullptr ? MapNew(size) : ::mremap(address_, size_, size, MREMAP_MAYMOVE);
        if (moved == MAP_FAILED) FailResize(errno);
        address_ = moved;
        size_ = size;
        AdviseHugePages();
        return address_;
    }

    void Flush(std::uint32_t size) override {
        const std::uint32_t length = std::min(size, size_);
        if (address_ == nullptr || length == 0) return;
        const FileMappedMemoryFactory::FlushHook hook = flushHook.load();
        if (hook != nullptr && !hook(address_, length)) ThrowStatus("Tavrin::FileMappedMemory::Flush", Status::Failure);
        if (::msync(address_, length, MS_SYNC) != 0) {
            ThrowStatus("Tavrin::FileMappedMemory::Flush", StatusFromErrno(errno));
        }
    }

    void Commit() override {
        if (!pending_) return;
        Flush(size_);
        const StatusCode status = file_.CommitReplacement(true);
        if (status != Status::Success) ThrowStatus("Tavrin::FileMappedMemory::Commit", status);
        pending_ = false;
        // The write-back left every page clean and so write-protected: the first write to each
        // would fault again, in the middle of the owner's first operations. Taking those faults
        // here keeps them out of the operations; a kernel without this advice just skips it.
        ::madvise(address_, size_, MADV_POPULATE_WRITE);
    }

private:
    // A temporary mapping outlives no process and is never read back, so it lies in anonymous
    // memory rather than in a file: the kernel may then back it with huge pages, and a random
    // lookup in a large index or store costs one translation miss fewer.
    void* MapNew(std::uint32_t size) {
        if (anonymous_) return ::mmap(nullptr, size, Protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        return ::mmap(nullptr, size, Protection, MAP_SHARED, file_.GetDescriptor(), 0);
    }

    void AdviseHugePages() {
        if (anonymous_) ::madvise(address_, size_, MADV_HUGEPAGE);
    }

    // Exclusive (it must not exist), private to the owner, and gone from its directory at once.
    StatusCode CreateTemporary(const std::string& path) {
        const StatusCode status = file_.CreateNew(path, ReadWrite, 0600);
        if (status == Status::Success) File::Remove(path);
        return status;
    }

    // The length of an existing file, which must fit the 32-bit size of a mapping.
    std::uint32_t ExistingSize() {
        struct stat information {};
        if (::fstat(file_.GetDescriptor(), &information) != 0) FailCreate(StatusFromErrno(errno));
        if (information.st_size < 0 || information.st_size > std::numeric_limits<std::uint32_t>::max()) {
            FailCreate(Status::LengthMismatch);
        }
        return static_cast<std::uint32_t>(information.st_size);
    }

    // Gives the file back its old length, so that it still matches the mapping, and throws.
    [[noreturn]] void FailResize(int error) {
        // If even this fails nothing more can be done; the first failure is the one reported.
        const bool restored = ::ftruncate(file_.GetDescriptor(), size_) == 0;
        static_cast<void>(restored);
        ThrowStatus("Tavrin::FileMappedMemory::Resize", StatusFromErrno(error));
    }

    File file_;
    void* address_ = nullptr;
    std::uint32_t size_ = 0;
    bool pending_ = false;    // a new named file not yet under its name
    bool anonymous_ = false;  // a temporary mapping, in memory only
};

}  // namespace

IFileMappedMemory* FileMappedMemoryFactory::Create(const std::string& path, std::uint32_t size, bool /*flag*/,
                                                    std::uint32_t mode, std::uint32_t /*last*/) {
    std::unique_ptr<MappedFile> mapping(new (std::nothrow) MappedFile);
    if (!mapping) FailCreate(Status::OutOfMemory);
    mapping->Map(path, size, mode);
    return mapping.release();
}

void FileMappedMemoryFactory::SetFlushHook(FlushHook hook) noexcept { flushHook.store(hook); }

}  // namespace Tavrin
