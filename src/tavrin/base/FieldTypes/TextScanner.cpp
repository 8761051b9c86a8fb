#include "tavrin/base/FieldTypes/TextScanner.h"

namespace Tavrin {

namespace {

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

int HexDigitValue(char c) noexcept {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::string_view TextScanner::TakeRest(MessageValidator& validator) noexcept {
    const std::uint32_t length = validator.GetRemaining();
    const void* characters = nullptr;
    if (validator.ValidateBytes(length, characters) != Status::Success || length == 0) return {};
    return std::string_view(static_cast<const char*>(characters), length);
}

bool TextScanner::Consume(char c) noexcept {
    if (AtEnd() || text_[position_] != c) return false;
    ++position_;
    return true;
}

bool TextScanner::Consume(std::string_view word) noexcept {
    if (Rest().substr(0, word.size()) != word) return false;
    position_ += word.size();
    return true;
}

bool TextScanner::ReadFixedDigits(unsigned count, std::uint32_t& value) noexcept {
    if (text_.size() - position_ < count) return false;
    std::uint32_t result = 0;
    for (unsigned i = 0; i < count; ++i) {
        const char c = text_[position_ + i];
        if (!IsDigit(c)) return false;
        result = result * 10 + static_cast<std::uint32_t>(c - '0');
    }
    position_ += count;
    value = result;
    return true;
}

bool TextScanner::ReadUnsigned(std::uint64_t maximum, std::uint64_t& value, unsigned& digits) noexcept {
    std::size_t end = position_;
    std::uint64_t result = 0;
    while (end < text_.size() && IsDigit(text_[end])) {
        const auto digit = static_cast<std::uint64_t>(text_[end] - '0');
        if (result > (maximum - digit) / 10) return false;
        result = result * 10 + digit;
        ++end;
    }
    if (end == position_) return false;
    digits = static_cast<unsigned>(end - position_);
    position_ = end;
    value = result;
    return true;
}

bool TextScanner::ReadUnsigned(std::uint64_t maximum, std::uint64_t& value) noexcept {
    unsigned digits = 0;
    return ReadUnsigned(maximum, value, digits);
}

namespace TextForms {

std::string ToHex(const unsigned char* data, std::uint32_t length) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text(std::size_t{length} * 2, '0');
    for (std::uint32_t i = 0; i < length; ++i) {
        text[2 * i] = digits[data[i] >> 4];
        text[2 * i + 1] = digits[data[i] & 0x0F];
    }
    return text;
}

std::string ToPrintable(const unsigned char* data, std::uint32_t length) {
    if (length == 0) return {};
    std::string text(reinterpret_cast<const char*>(data), length);
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 32 || byte >= 127) c = '.';
    }
    return text;
}

std::string BytesToText(const unsigned char* data, std::uint32_t length, bool printable) {
    return printable ? ToPrintable(data, length) : ToHex(data, length);
}

bool FromHex(std::string_view text, std::string& bytes) {
    if (text.size() % 2 != 0) return false;
    std::string result(text.size() / 2, '\0');
    for (std::size_t i = 0; i < result.size(); ++i) {
        const int high = HexDigitValue(text[2 * i]);
        const int low = HexDigitValue(text[2 * i + 1]);
        if (high < 0 || low < 0) return false;
        result[i] = static_cast<char>(high * 16 + low);
    }
    bytes.swap(result);
    return true;
}

}  // namespace TextForms

}  // namespace Tavrin
