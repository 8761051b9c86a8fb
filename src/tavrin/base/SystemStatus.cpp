#include "tavrin/base/SystemStatus.h"

#include <cerrno>

namespace Tavrin {

StatusCode StatusFromErrno(int error) noexcept {
    switch (error) {
        case 0: return Status::Success;
        case ENOENT:
        case ENOTDIR: return Status::NotFound;
        case ENOMEM: return Status::OutOfMemory;
        case EEXIST: return Status::AlreadyCreated;
        case ENOSPC:
        case EFBIG:
        case EDQUOT: return Status::StoreFull;
        case EINVAL:
        case EBADF:
        case ENAMETOOLONG:
        case ELOOP: return Status::Invalid;
        default: return Status::Failure;
    }
}

}  // namespace Tavrin
