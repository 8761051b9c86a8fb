#pragma once
// TextScanner: reads the text forms of the value classes, one token at a time, without allocating.
// Every read either consumes what it matched and returns true, or consumes nothing and returns
// false, so a caller can try alternatives.

#include <cstdint>
#include <string>
#include <string_view>

#include "tavrin/base/MessageValidator.h"

namespace Tavrin {

/// Reads tokens of a text form from the front of `text`, which it does not own or copy; each read
/// consumes what it matched or nothing.
class TextScanner {
public:
    /// A scanner at the start of `text`, which must outlive it.
    explicit TextScanner(std::string_view text) noexcept : text_(text) {}

    /// Takes all characters left in `validator` and moves it to its end.
    static std::string_view TakeRest(MessageValidator& validator) noexcept;

    /// Whether every character has been consumed.
    bool AtEnd() const noexcept { return position_ == text_.size(); }
    /// The characters not consumed yet (a view into the text).
    std::string_view Rest() const noexcept { return text_.substr(position_); }

    /// The next character if it is `c`.
    bool Consume(char c) noexcept;
    /// The next characters if they are `word`.
    bool Consume(std::string_view word) noexcept;
    /// Exactly `count` decimal digits, as their value; `value` is untouched on failure.
    bool ReadFixedDigits(unsigned count, std::uint32_t& value) noexcept;
    ///@{
    /// One or more decimal digits whose value is at most `maximum`; `digits` (where asked for) is how
    /// many were read. `value` and `digits` are untouched on failure.
    bool ReadUnsigned(std::uint64_t maximum, std::uint64_t& value, unsigned& digits) noexcept;
    bool ReadUnsigned(std::uint64_t maximum, std::uint64_t& value) noexcept;
    ///@}

private:
    std::string_view text_;
    std::size_t position_ = 0;
};

namespace TextForms {
/// Two lowercase hexadecimal digits per byte.
std::string ToHex(const unsigned char* data, std::uint32_t length);
/// The bytes, with every byte below 32 or from 127 up shown as ".".
std::string ToPrintable(const unsigned char* data, std::uint32_t length);
/// ToPrintable if `printable`, else ToHex.
std::string BytesToText(const unsigned char* data, std::uint32_t length, bool printable);
/// Decodes hexadecimal digits (either case, two per byte) into `bytes`; false if `text` is not that.
bool FromHex(std::string_view text, std::string& bytes);
}  // namespace TextForms

}  // namespace Tavrin
