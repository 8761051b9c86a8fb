#pragma once
// Writes serialised forms: a plain concatenation of little-endian integers, raw bytes and strings
// (a 2-byte length and the characters, no terminator), with no tags and no alignment.
//
// A growable builder allocates as it needs (status 41 if that fails); a builder on a fixed buffer
// never allocates and answers 23 when the buffer is full. A failed append leaves the length as it
// was. A buffer given at construction is never freed by the builder; one it allocated is freed in
// its destructor. Belongs to one thread.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/MessageHandler.h"
#include "tavrin/base/Status.h"

namespace Tavrin {

/// Writes a serialised form into a growable or a fixed buffer (see the file comment above for the
/// format, the statuses and the ownership of the buffer).
class MessageBuilder : public MessageHandler {
public:
    /// An empty, growable builder with no buffer.
    MessageBuilder() = default;
    /// A builder on `buffer` of `capacity` bytes; with `growable` it moves to an allocated buffer
    /// once `buffer` is full (a small stack buffer then serves most messages without allocation).
    /// The caller keeps `buffer`, which must outlive the builder's use of it.
    MessageBuilder(void* buffer, std::uint32_t capacity, bool growable = false) noexcept;
    /// Frees a buffer that the builder allocated; never the one given to it.
    ~MessageBuilder() override = default;

    /// Sets the version and the length to 0; keeps the buffer.
    void Reset(std::uint8_t version) override;

    /// With 0: gives back an allocated buffer and returns to the initial one, length 0. Otherwise
    /// makes room for `size` bytes in all (status 41 if growth fails, 23 on a fixed buffer).
    StatusCode AdjustBufferSize(std::uint32_t size);
    /// Points the builder at a new fixed buffer: AdjustBufferSize(0), then the buffer becomes the
    /// initial and current one, growable false, and Reset(0xFF).
    void SetFixedBuffer(void* buffer, std::uint32_t capacity);

    ///@{
    /// Appends `value` as little-endian bytes of its width: 41 when a growable builder can't grow,
    /// 23 when a fixed buffer has no room.
    StatusCode AppendUInt8(std::uint8_t value) { return AppendBuiltIn(value); }
    StatusCode AppendUInt16(std::uint16_t value) { return AppendBuiltIn(value); }
    StatusCode AppendUInt32(std::uint32_t value) { return AppendBuiltIn(value); }
    StatusCode AppendInt32(std::int32_t value) { return AppendBuiltIn(value); }
    StatusCode AppendUInt64(std::uint64_t value) { return AppendBuiltIn(value); }
    StatusCode AppendInt64(std::int64_t value) { return AppendBuiltIn(value); }
    ///@}
    /// Appends a 16-bit id as a 32-bit field; statuses as AppendUInt32.
    StatusCode AppendId16(std::uint16_t id) { return AppendBuiltIn(static_cast<std::uint32_t>(id)); }
    /// Appends `value` as a 32-bit 1 or 0; statuses as AppendUInt32.
    StatusCode AppendBool32(bool value) { return AppendBuiltIn(static_cast<std::uint32_t>(value ? 1 : 0)); }
    /// Appends `length` raw bytes from `data`, with no length before them: 41 when a growable
    /// builder can't grow, 23 when a fixed buffer has no room.
    StatusCode AppendBytes(const void* data, std::uint32_t length) { return AppendBuffer(data, length, false); }
    /// 2-byte length and the characters; status 23 if the string is longer than 65535 bytes.
    StatusCode AppendString(std::string_view text);

    ///@{
    /// The current buffer (the initial one or an allocated one), owned as the file comment says;
    /// valid until the next append, AdjustBufferSize or SetFixedBuffer. Null for a growable builder
    /// that has written nothing yet.
    const unsigned char* GetBuffer() const noexcept { return buffer_; }
    unsigned char* GetBuffer() noexcept { return buffer_; }
    ///@}
    /// The number of bytes written since the last Reset.
    std::uint32_t GetLength() const noexcept { return length_; }
    /// The size of the current buffer.
    std::uint32_t GetCapacity() const noexcept { return capacity_; }
    /// Whether the builder moves to a larger allocated buffer when the current one is full.
    bool IsGrowable() const noexcept { return growable_; }

private:
    template <class T>
    StatusCode AppendBuiltIn(T value) {
        if (capacity_ - length_ < sizeof(T)) {
            const StatusCode status = Grow(sizeof(T));
            if (status != Status::Success) return status;
        }
        EncodeLE(buffer_ + length_, value);
        length_ += sizeof(T);
        return Status::Success;
    }
    StatusCode AppendBuffer(const void* data, std::uint32_t length, bool flag);
    /// Makes room for `extra` more bytes.
    StatusCode Grow(std::uint32_t extra);

    bool growable_ = true;
    unsigned char* initialBuffer_ = nullptr;
    std::uint32_t initialCapacity_ = 0;
    unsigned char* buffer_ = nullptr;
    std::uint32_t capacity_ = 0;
    std::uint32_t length_ = 0;
    std::unique_ptr<unsigned char[]> allocated_;  // owns buffer_ when it differs from initialBuffer_
};

}  // namespace Tavrin
