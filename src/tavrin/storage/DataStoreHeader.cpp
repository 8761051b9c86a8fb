#include "tavrin/storage/DataStoreHeader.h"

namespace Tavrin::Database {

StatusCode DataStoreHeader::Serialize(MessageBuilder& builder) const {
    const std::uint32_t fields[] = {storeType,      valid ? 1u : 0u, headerSize,     userDataSize, recordSize,
                                    initialEntries, growEntries,     currentEntries, maxEntries};
    StatusCode status = builder.AppendUInt8(Format);
    for (const std::uint32_t field : fields) {
        if (status != Status::Success) break;
        status = builder.AppendUInt32(field);
    }
    return status;
}

StatusCode DataStoreHeader::Deserialize(MessageValidator& validator) {
    return Deserialize(validator, validator.GetLength());
}

StatusCode DataStoreHeader::Deserialize(MessageValidator& validator, std::uint64_t dataSize) {
    constexpr StatusCode ok = Status::Success;
    std::uint8_t format = 0;
    const bool complete = validator.ReadUInt8(format) == ok && validator.ReadUInt32(storeType) == ok &&
                          validator.ReadBool32(valid) == ok && validator.ReadUInt32(headerSize) == ok &&
                          validator.ReadUInt32(userDataSize) == ok && validator.ReadUInt32(recordSize) == ok &&
                          validator.ReadUInt32(initialEntries) == ok && validator.ReadUInt32(growEntries) == ok &&
                          validator.ReadUInt32(currentEntries) == ok && validator.ReadUInt32(maxEntries) == ok;
    if (!complete || format != Format || !valid) return Status::Invalid;
    const std::uint64_t userDataEnd = static_cast<std::uint64_t>(headerSize) + userDataSize;
    return userDataEnd <= dataSize ? Status::Success : Status::Invalid;
}

}  // namespace Tavrin::Database
