#include "tavrin/base/MessageBuilder.h"

#include <cstring>
#include <new>

namespace Tavrin {

MessageBuilder::MessageBuilder(void* buffer, std::uint32_t capacity, bool growable) noexcept
    : growable_(growable),
      initialBuffer_(static_cast<unsigned char*>(buffer)),
      initialCapacity_(capacity),
      buffer_(static_cast<unsigned char*>(buffer)),
      capacity_(capacity) {}

void MessageBuilder::Reset(std::uint8_t version) {
    version_ = version;
    length_ = 0;
}

StatusCode MessageBuilder::AdjustBufferSize(std::uint32_t size) {
    if (size == 0) {
        allocated_.reset();
        buffer_ = initialBuffer_;
        capacity_ = initialCapacity_;
        length_ = 0;
        return Status::Success;
    }
    return size <= capacity_ ? Status::Success : Grow(size - length_);
}

void MessageBuilder::SetFixedBuffer(void* buffer, std::uint32_t capacity) {
    AdjustBufferSize(0);
    growable_ = false;
    initialBuffer_ = buffer_ = static_cast<unsigned char*>(buffer);
    initialCapacity_ = capacity_ = capacity;
    Reset(NoVersion);
}

StatusCode MessageBuilder::AppendString(std::string_view text) {
    if (text.size() > 0xFFFF) return Status::Invalid;
    const std::uint32_t needed = 2 + static_cast<std::uint32_t>(text.size());
    if (capacity_ - length_ < needed) {
        const StatusCode status = Grow(needed);
        if (status != Status::Success) return status;
    }
    AppendUInt16(static_cast<std::uint16_t>(text.size()));
    return AppendBuffer(text.data(), static_cast<std::uint32_t>(text.size()), false);
}

StatusCode MessageBuilder::AppendBuffer(const void* data, std::uint32_t length, bool) {
    if (capacity_ - length_ < length) {
        const StatusCode status = Grow(length);
        if (status != Status::Success) return status;
    }
    if (length != 0) std::memcpy(buffer_ + length_, data, length);
    length_ += length;
    return Status::Success;
}

StatusCode MessageBuilder::Grow(std::uint32_t extra) {
    if (!growable_) return Status::Invalid;
    const std::uint64_t needed = static_cast<std::uint64_t>(length_) + extra;
    if (needed > 0xFFFFFFFFu) return Status::OutOfMemory;
    std::uint64_t capacity = capacity_ < 64 ? 64 : static_cast<std::uint64_t>(capacity_) * 2;
    while (capacity < needed) capacity *= 2;
    if (capacity > 0xFFFFFFFFu) capacity = 0xFFFFFFFFu;
    std::unique_ptr<unsigned char[]> grown(new (std::nothrow) unsigned char[capacity]);
    if (!grown) return Status::OutOfMemory;
    if (length_ != 0) std::memcpy(grown.get(), buffer_, length_);
    allocated_ = std::move(grown);
    buffer_ = allocated_.get();
    capacity_ = static_cast<std::uint32_t>(capacity);
    return Status::Success;
}

}  // namespace Tavrin
