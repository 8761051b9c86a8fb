#pragma once

#include <cstdint>

namespace Tavrin {

/// Common base of MessageBuilder and MessageValidator: both carry the version of the serialised
/// object being handled (0xFF when nothing has set it).
class MessageHandler {
public:
    static constexpr std::uint8_t NoVersion = 0xFF;

    MessageHandler() = default;
    MessageHandler(const MessageHandler&) = delete;
    MessageHandler& operator=(const MessageHandler&) = delete;
    virtual ~MessageHandler() = default;

    virtual void Reset(std::uint8_t version) = 0;

    std::uint8_t GetVersion() const noexcept { return version_; }
    void SetVersion(std::uint8_t version) noexcept { version_ = version; }

protected:
    std::uint8_t version_ = NoVersion;
};

}  // namespace Tavrin
