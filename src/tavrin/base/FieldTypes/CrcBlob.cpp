#include "tavrin/base/FieldTypes/CrcBlob.h"

#include <boost/crc.hpp>

#include "tavrin/base/Encoding.h"

namespace Tavrin {

std::uint32_t CrcBlob::ComputeCrc(const void* data, std::uint32_t length) noexcept {
    boost::crc_32_type crc;
    if (length != 0) crc.process_bytes(data, length);
    return crc.checksum();
}

bool CrcBlob::Decode(const void* body, std::uint32_t length, const unsigned char*& data,
                     std::uint32_t& dataLength) noexcept {
    if (length < HeaderSize || DecodeU32(body) != length - HeaderSize) return false;
    const auto* bytes = static_cast<const unsigned char*>(body);
    if (DecodeU32(bytes + 4) != ComputeCrc(bytes + HeaderSize, length - HeaderSize)) return false;
    data = bytes + HeaderSize;
    dataLength = length - HeaderSize;
    return true;
}

StatusCode CrcBlob::Compare(const void* a, std::uint32_t lengthA, const void* b, std::uint32_t lengthB,
                            int& result) {
    return CompareBodies(&CrcBlob::Decode, a, lengthA, b, lengthB, result);
}

void CrcBlob::EncodeHeader(unsigned char* header) const noexcept {
    EncodeU32(header, GetLength());
    EncodeU32(header + 4, crc_);
}

}  // namespace Tavrin
