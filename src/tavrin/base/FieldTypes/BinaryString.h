#pragma once
// BinaryString: a string of bytes of any length (the value of a binary field with a length prefix).
//
// Storage: a 32-byte inline buffer holds short values without allocating; a longer value moves to
// a heap buffer. Reset keeps the heap buffer for the next value; Clear frees it and returns to the
// inline buffer. Not copyable (copy through Convert, which reports a failed allocation as 41).
//
// Body: the bytes; the field's prefix holds the length. The length-and-body form is one length byte
// and the bytes, so it holds up to 255 bytes (status 22 beyond). Order: bytes as unsigned, a shorter
// value before a longer one that begins with it.
//
// Text form: two lowercase hexadecimal digits per byte ("00ff10"); FromString takes either case.
// ToString(true) shows the bytes as characters instead, with "." for those that do not print.
// Converts from BinaryString, BinaryArray, Blob, CrcBlob and from the bytes of a text. No locks.

#include <cstdint>
#include <memory>
#include <string>

#include "tavrin/base/FieldTypes/IFieldType.h"

namespace Tavrin {

/// A string of bytes of any length, kept inline up to InlineCapacity bytes and on the heap beyond
/// (see the file comment above).
class BinaryString : public IFieldType {
public:
    /// Bytes held without allocating.
    static constexpr std::uint32_t InlineCapacity = 32;

    /// An undefined value on the inline buffer.
    BinaryString() noexcept : BinaryString(FieldTypeNumber::BinaryString) {}
    /// Not copyable: copy through Convert.
    BinaryString(const BinaryString&) = delete;
    /// Not copyable: copy through Convert.
    BinaryString& operator=(const BinaryString&) = delete;
    /// Frees the heap buffer, if any.
    ~BinaryString() override = default;

    /// Copies `length` bytes from `data` and marks the value defined. Status 41 if memory runs out;
    /// the value is then unchanged. `data` may point into this value.
    StatusCode Set(const void* data, std::uint32_t length);
    /// The value's bytes, owned by this object: valid until the next Set, Clear or destruction.
    /// Meaningful only while defined.
    const unsigned char* GetData() const noexcept { return heap_ ? heap_.get() : inline_; }
    /// The number of bytes of the value; 0 when undefined.
    std::uint32_t GetLength() const noexcept { return length_; }
    /// Bytes that the current buffer holds: InlineCapacity until a value needed the heap.
    std::uint32_t GetCapacity() const noexcept { return heap_ ? heapCapacity_ : InlineCapacity; }

    void Reset() override;
    void Clear() override;
    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    std::string GetFromStringFormat() const override { return "hexadecimal digits, two per byte"; }
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode SerializeLengthAndBody(MessageBuilder& builder, std::uint32_t options) const override;
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
    StatusCode DeserializeLengthAndBody(MessageValidator& validator, std::uint32_t options) override;
    std::uint32_t GetLengthAndBodySize() const override { return defined ? length_ + 1 : 0; }
    std::uint32_t GetBodySize() const override { return defined ? length_ : 0; }
    StatusCode IsDifferent(const void* data, std::uint32_t length, bool& different) const override;
    /// With `printable` the bytes as characters, else as ToString().
    std::string ToString(bool printable) const;

protected:
    /// An undefined value of the class numbered `typeNumber` (BinaryArray).
    explicit BinaryString(std::uint8_t typeNumber) noexcept : IFieldType(typeNumber) {}
    StatusCode ConvertFrom(const IFieldType& other) override;

    /// The value's bytes, for PaddedBytes.
    const void* ValueData() const noexcept { return GetData(); }
    /// The number of the value's bytes, for PaddedBytes.
    std::uint32_t ValueLength() const noexcept { return length_; }

private:
    unsigned char inline_[InlineCapacity] = {};
    std::unique_ptr<unsigned char[]> heap_;
    std::uint32_t heapCapacity_ = 0;
    std::uint32_t length_ = 0;
};

}  // namespace Tavrin
