#pragma once
// The one place where an operating system error number becomes a status code. Every platform
// class (File, mapped memory, directory walking) reports its failures through it.

#include "tavrin/base/Status.h"

namespace Tavrin {

/// ENOENT, ENOTDIR: 6; ENOMEM: 41; EEXIST: 47; ENOSPC, EFBIG, EDQUOT: 40 (no room to grow);
/// EINVAL, EBADF, ENAMETOOLONG, ELOOP: 23; anything else: 1.
StatusCode StatusFromErrno(int error) noexcept;

}  // namespace Tavrin
