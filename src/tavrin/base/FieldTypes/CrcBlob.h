#pragma once
// CrcBlob: a Blob whose body also carries a CRC-32 of its data, checked on every read.
//
// Body, length + 8 bytes:
//   bytes 0-3  length of the data, little-endian; must equal the body's length minus 8
//   bytes 4-7  CRC-32 of the data (the common CRC-32 of zip and Ethernet), little-endian
//   bytes 8-   the data
// DeserializeBody refuses a body whose CRC does not match with status 23, and the body compare
// function orders such a body with the undecodable ones. The length-and-body form is a 4-byte
// length of the body and the body (length + 12 bytes). Everything else is as Blob.

#include <cstdint>

#include "tavrin/base/FieldTypes/Blob.h"

namespace Tavrin {

/// A Blob whose body also carries a CRC-32 of its data, checked whenever a body is read.
class CrcBlob final : public Blob {
public:
    /// Bytes before the data in a CrcBlob body: the 4-byte length and the 4-byte CRC.
    static constexpr std::uint32_t HeaderSize = 8;

    /// An undefined value with no arrays.
    CrcBlob() noexcept : Blob(FieldTypeNumber::CrcBlob) {}

    /// The CRC-32 of the current data.
    std::uint32_t GetCrc() const noexcept { return crc_; }

    /// The CRC-32 (as zip and Ethernet compute it) of `length` bytes at `data`.
    static std::uint32_t ComputeCrc(const void* data, std::uint32_t length) noexcept;
    /// Orders two CrcBlob bodies by their data. Status 23 when either does not decode or its CRC
    /// differs; `result` is set all the same (such a body orders before every valid one).
    static StatusCode Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                              int& result);
    /// Finds the data in a body and checks its CRC; false if it is not a body or the CRC differs, and
    /// then `data` and `dataLength` are untouched.
    static bool Decode(const void* body, std::uint32_t length, const unsigned char*& data,
                       std::uint32_t& dataLength) noexcept;

    /// The Compare of a value with a body, beside the static one above.
    using Blob::Compare;

protected:
    std::uint32_t GetHeaderSize() const noexcept override { return HeaderSize; }
    void EncodeHeader(unsigned char* header) const noexcept override;
    DecodeFunction GetDecoder() const noexcept override { return &CrcBlob::Decode; }
    void OnDataChanged() noexcept override { crc_ = ComputeCrc(GetData(), GetLength()); }

private:
    std::uint32_t crc_ = 0;
};

}  // namespace Tavrin
