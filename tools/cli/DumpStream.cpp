#include "DumpStream.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <ostream>

#include "tavrin/base/Encoding.h"

namespace Tavrin::Tool {

namespace {

constexpr std::size_t FrameHeaderSize = 5;
constexpr std::uint64_t ReadChunk = 1 << 20;

}  // namespace

StatusCode WriteStreamStart(std::ostream& out) {
    out.write(StreamMagic, sizeof StreamMagic);
    return out ? Status::Success : Status::Failure;
}

StatusCode WriteFrame(std::ostream& out, FrameKind kind, const unsigned char* body, std::uint32_t length) {
    unsigned char header[FrameHeaderSize];
    header[0] = static_cast<unsigned char>(kind);
    EncodeU32(header + 1, length);
    out.write(reinterpret_cast<const char*>(header), sizeof header);
    if (length != 0) out.write(reinterpret_cast<const char*>(body), length);
    return out ? Status::Success : Status::Failure;
}

StatusCode ReadStreamStart(std::istream& in) {
    char magic[sizeof StreamMagic] = {};
    in.read(magic, sizeof magic);
    return in && std::memcmp(magic, StreamMagic, sizeof magic) == 0 ? Status::Success : Status::Invalid;
}

StatusCode ReadFrame(std::istream& in, FrameKind& kind, std::vector<unsigned char>& body) {
    unsigned char header[FrameHeaderSize];
    in.read(reinterpret_cast<char*>(header), sizeof header);
    if (!in) return Status::LengthMismatch;
    if (header[0] < static_cast<unsigned char>(FrameKind::Table) || header[0] > static_cast<unsigned char>(FrameKind::End)) {
        return Status::Invalid;
    }
    kind = static_cast<FrameKind>(header[0]);
    const std::uint64_t length = DecodeU32(header + 1);
    body.clear();
    while (body.size() < length) {
        const std::size_t start = body.size();
        const std::uint64_t chunk = std::min<std::uint64_t>(ReadChunk, length - start);
        body.resize(start + static_cast<std::size_t>(chunk));
        in.read(reinterpret_cast<char*>(body.data() + start), static_cast<std::streamsize>(chunk));
        if (!in) return Status::LengthMismatch;
    }
    return Status::Success;
}

}  // namespace Tavrin::Tool
