#pragma once
// The consumer's own header under a name that the library's headers once used: it must never be
// taken for the library's.
namespace consumer {
enum class Status { Fine, Broken };
}
