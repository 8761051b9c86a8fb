#pragma once
// Blob: a large string of bytes with a length check in its body.
//
// Body, length + 4 bytes:
//   bytes 0-3  length of the data, little-endian; must equal the body's length minus 4, so a body
//              cut short or run together with another is refused
//   bytes 4-   the data
// The length-and-body form is a 4-byte length of the body and the body (length + 8 bytes).
// Order: by the data, bytes as unsigned, a shorter value before a longer one that begins with it.
//
// Storage: two heap arrays, each a pointer and a capacity. The first holds the current data. A new
// value (Set, DeserializeBody, Convert) is written into the second, spare array, and the two swap
// only when the value is complete, so a failed allocation or a refused body leaves the old value
// whole, and a source inside the current data (Set(GetData() + 1, ...)) is copied safely. Reset
// keeps both arrays, so values of similar size alternate without allocating; Clear frees both.
// Not copyable (copy through Convert).
//
// Text form: two lowercase hexadecimal digits per byte of the data; ToString(true) shows the data
// as characters. Converts from Blob, CrcBlob, BinaryString, BinaryArray and from the bytes of a
// text. No locks.

#include <cstdint>
#include <memory>
#include <string>

#include "tavrin/base/FieldTypes/IFieldType.h"

namespace Tavrin {

/// A large string of bytes whose body carries its own length, kept in two heap arrays so that a new
/// value replaces the old one only when complete (see the file comment above).
class Blob : public IFieldType {
public:
    /// Bytes before the data in a Blob body: the 4-byte length.
    static constexpr std::uint32_t HeaderSize = 4;

    /// An undefined value with no arrays.
    Blob() noexcept : Blob(FieldTypeNumber::Blob) {}
    /// Not copyable: copy through Convert.
    Blob(const Blob&) = delete;
    /// Not copyable: copy through Convert.
    Blob& operator=(const Blob&) = delete;
    /// Frees both arrays.
    ~Blob() override = default;

    /// Copies `length` bytes from `data` (which may point into the current data) and marks the value
    /// defined. Status 41 if memory runs out; the value is then unchanged.
    StatusCode Set(const void* data, std::uint32_t length);
    /// The data, owned by this object: valid until the next change of the value, Clear or
    /// destruction. Null while nothing was ever stored (and after Clear).
    const unsigned char* GetData() const noexcept { return data_.get(); }
    /// The number of bytes of the data; 0 when undefined.
    std::uint32_t GetLength() const noexcept { return length_; }
    /// Bytes that the array of the current data can hold.
    std::uint32_t GetCapacity() const noexcept { return dataCapacity_; }
    /// Bytes that the spare array, where the next value is written, can hold.
    std::uint32_t GetSpareCapacity() const noexcept { return spareCapacity_; }

    /// Orders two Blob bodies by their data. Status 23 when either does not decode; `result` is set
    /// all the same (an undecodable body orders before every valid one).
    static StatusCode Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                              int& result);
    /// Finds the data in a body: `data` points into `body`. False if it is not one, and then `data`
    /// and `dataLength` are untouched.
    static bool Decode(const void* body, std::uint32_t length, const unsigned char*& data,
                       std::uint32_t& dataLength) noexcept;

    void Reset() override;
    void Clear() override;
    StatusCode Compare(const void* data, std::uint32_t length, int& result) const override;
    std::string ToString() const override;
    StatusCode FromString(MessageValidator& text) override;
    std::string GetFromStringFormat() const override { return "hexadecimal digits, two per byte"; }
    StatusCode SerializeBody(void* buffer, std::uint32_t size, std::uint32_t& written) const override;
    StatusCode DeserializeBody(const void* data, std::uint32_t length) override;
    std::uint32_t GetBodySize() const override { return defined ? GetHeaderSize() + length_ : 0; }
    StatusCode IsDifferent(const void* data, std::uint32_t length, bool& different) const override;
    /// With `printable` the data as characters, else as ToString().
    std::string ToString(bool printable) const;

protected:
    /// A function that finds the data in a body of one class, as Decode.
    using DecodeFunction = bool (*)(const void*, std::uint32_t, const unsigned char*&, std::uint32_t&) noexcept;

    /// An undefined value of the class numbered `typeNumber` (CrcBlob).
    explicit Blob(std::uint8_t typeNumber) noexcept : IFieldType(typeNumber) {}
    StatusCode ConvertFrom(const IFieldType& other) override;

    /// The bytes that the class puts before the data in a body (at most 16).
    virtual std::uint32_t GetHeaderSize() const noexcept { return HeaderSize; }
    /// Writes the GetHeaderSize() bytes before the data for the current value into `header`.
    virtual void EncodeHeader(unsigned char* header) const noexcept;
    /// The function that finds the data in a body of the class.
    virtual DecodeFunction GetDecoder() const noexcept { return &Blob::Decode; }
    /// Called after every change of the data.
    virtual void OnDataChanged() noexcept {}

    /// The static Compare of a class, given its decoder.
    static StatusCode CompareBodies(DecodeFunction decode, const void* a, std::uint32_t lengthA, const void* b,
                                    std::uint32_t lengthB, int& result);

private:
    std::unique_ptr<unsigned char[]> data_;
    std::uint32_t dataCapacity_ = 0;
    std::unique_ptr<unsigned char[]> spare_;
    std::uint32_t spareCapacity_ = 0;
    std::uint32_t length_ = 0;
};

}  // namespace Tavrin
