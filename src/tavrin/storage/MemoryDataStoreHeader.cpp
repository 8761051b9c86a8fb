#include "tavrin/storage/MemoryDataStoreHeader.h"

namespace Tavrin::Database {

StatusCode MemoryDataStoreHeader::Serialize(MessageBuilder& builder) const {
    StatusCode status = builder.AppendUInt8(Format);
    if (status == Status::Success) status = builder.AppendUInt32(firstEntryOffset);
    if (status == Status::Success) status = builder.AppendUInt32(entryStride);
    if (status == Status::Success) status = builder.AppendInt32(freeHead);
    if (status == Status::Success) status = builder.AppendInt32(freeTail);
    return status;
}

StatusCode MemoryDataStoreHeader::Deserialize(MessageValidator& validator) {
    constexpr StatusCode ok = Status::Success;
    std::uint8_t format = 0;
    if (validator.ReadUInt8(format) != ok) return Status::Invalid;
    if (format != Format) return Status::WrongVersion;
    const bool complete = validator.ReadUInt32(firstEntryOffset) == ok && validator.ReadUInt32(entryStride) == ok &&
                          validator.ReadInt32(freeHead) == ok && validator.ReadInt32(freeTail) == ok;
    return complete ? Status::Success : Status::Invalid;
}

}  // namespace Tavrin::Database
