#include "tavrin/storage/DiskDataStoreHeader.h"

namespace Tavrin::Database {

StatusCode DiskDataStoreHeader::Serialize(MessageBuilder& builder) const {
    StatusCode status = builder.AppendUInt8(Format);
    if (status == Status::Success) status = builder.AppendUInt32(scratchOffset);
    if (status == Status::Success) status = builder.AppendUInt32(entryTableOffset);
    if (status == Status::Success) status = builder.AppendUInt32(cacheSize);
    if (status == Status::Success) status = builder.AppendInt32(freeHead);
    if (status == Status::Success) status = builder.AppendInt32(freeTail);
    return status;
}

StatusCode DiskDataStoreHeader::Deserialize(MessageValidator& validator) {
    constexpr StatusCode ok = Status::Success;
    std::uint8_t format = 0;
    const bool complete = validator.ReadUInt8(format) == ok && validator.ReadUInt32(scratchOffset) == ok &&
                          validator.ReadUInt32(entryTableOffset) == ok && validator.ReadUInt32(cacheSize) == ok &&
                          validator.ReadInt32(freeHead) == ok && validator.ReadInt32(freeTail) == ok;
    return complete && format == Format ? Status::Success : Status::Invalid;
}

}  // namespace Tavrin::Database
