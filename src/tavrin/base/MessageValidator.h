#pragma once
// Reads serialised forms written by MessageBuilder, forward only, never past the end.
//
// Every read checks its bounds first: a read that does not fit answers status 23 and leaves the
// offset where it was. Integers are little-endian. The validator does not own the data. Belongs to
// one thread.

#include <cstdint>
#include <limits>
#include <string>

#include "tavrin/base/Encoding.h"
#include "tavrin/base/MessageHandler.h"
#include "tavrin/base/Status.h"

namespace Tavrin {

/// Reads a serialised form from `length` bytes at `data`, checking every read against the end (see
/// the file comment above).
class MessageValidator : public MessageHandler {
public:
    /// A validator at offset 0 of the `length` bytes at `data`, which the caller keeps alive and
    /// unchanged while it reads.
    MessageValidator(const void* data, std::uint32_t length) noexcept
        : data_(static_cast<const unsigned char*>(data)), length_(length) {}
    /// Leaves the data alone.
    ~MessageValidator() override = default;

    /// Sets the version and takes the offset back to 0.
    void Reset(std::uint8_t version) override {
        version_ = version;
        offset_ = 0;
    }

    ///@{
    /// Reads a little-endian integer of `value`'s width and moves on: 23 if too few bytes are left,
    /// and then `value` and the offset stay as they were.
    StatusCode ReadUInt8(std::uint8_t& value) noexcept { return ReadBuiltIn(value); }
    StatusCode ReadUInt16(std::uint16_t& value) noexcept { return ReadBuiltIn(value); }
    StatusCode ReadUInt32(std::uint32_t& value) noexcept { return ReadBuiltIn(value); }
    StatusCode ReadInt32(std::int32_t& value) noexcept { return ReadBuiltIn(value); }
    StatusCode ReadUInt64(std::uint64_t& value) noexcept { return ReadBuiltIn(value); }
    StatusCode ReadInt64(std::int64_t& value) noexcept { return ReadBuiltIn(value); }
    ///@}

    /// Reads 4 bytes into a narrower unsigned type: 23 if too few bytes are left, 36 if the value
    /// exceeds the type's maximum (the offset and `value` stay in both cases).
    template <class T>
    StatusCode ReadRangeChecked(T& value) noexcept {
        static_assert(std::numeric_limits<T>::is_integer && !std::numeric_limits<T>::is_signed);
        if (length_ - offset_ < 4) return Status::Invalid;
        const std::uint64_t wide = DecodeU32(data_ + offset_);
        if (wide > std::numeric_limits<T>::max()) return Status::OutOfRange;
        value = static_cast<T>(wide);
        offset_ += 4;
        return Status::Success;
    }
    /// Reads a 16-bit id from its 32-bit field: ReadRangeChecked, so 23 or 36 leave `id` as it was.
    StatusCode ReadId16(std::uint16_t& id) noexcept { return ReadRangeChecked(id); }

    /// A boolean stored in 32 bits; anything but 0 is true. 23 if too few bytes are left, and then
    /// `value` and the offset stay as they were.
    StatusCode ReadBool32(bool& value) noexcept {
        std::uint32_t raw = 0;
        const StatusCode status = ReadBuiltIn(raw);
        if (status == Status::Success) value = raw != 0;
        return status;
    }

    /// Reads a string (2-byte length, then the characters). With `string` it copies the characters;
    /// with `data` and `length` it points into the message instead; any of the three may be null.
    /// Status 23 if the message is short, and then nothing is written and the offset stays. May
    /// throw std::bad_alloc from the copy into `string`.
    StatusCode ValidateString(std::string* string, const void** data, std::uint32_t* length);
    /// Copies `length` bytes to `destination` and moves on; status 23 if the message is short.
    StatusCode ValidateBytesCopy(std::uint32_t length, void* destination) noexcept;
    /// Points `data` at the next `length` bytes and moves on; status 23 if the message is short.
    StatusCode ValidateBytes(std::uint32_t length, const void*& data) noexcept;

    /// The number of bytes read so far.
    std::uint32_t GetOffset() const noexcept { return offset_; }
    /// The length given at construction.
    std::uint32_t GetLength() const noexcept { return length_; }
    /// The number of bytes not read yet.
    std::uint32_t GetRemaining() const noexcept { return length_ - offset_; }
    /// The data given at construction (not owned).
    const unsigned char* GetData() const noexcept { return data_; }

private:
    template <class T>
    StatusCode ReadBuiltIn(T& value) noexcept {
        if (length_ - offset_ < sizeof(T)) return Status::Invalid;
        value = DecodeLE<T>(data_ + offset_);
        offset_ += sizeof(T);
        return Status::Success;
    }

    const unsigned char* data_;
    std::uint32_t length_;
    std::uint32_t offset_ = 0;
};

}  // namespace Tavrin
