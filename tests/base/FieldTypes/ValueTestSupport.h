#pragma once
// Helpers shared by the value class tests.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/base/FieldTypes/IFieldType.h"

namespace Tavrin::Testing {

using Bytes = std::vector<unsigned char>;

// The body of a defined value, written into a buffer of exactly GetBodySize() bytes.
inline Bytes BodyOf(const IFieldType& value) {
    Bytes body(value.GetBodySize());
    std::uint32_t written = 0;
    EXPECT_EQ(value.SerializeBody(body.data(), static_cast<std::uint32_t>(body.size()), written), Status::Success);
    body.resize(written);
    return body;
}

inline StatusCode ReadText(IFieldType& value, const std::string& text) {
    MessageValidator validator(text.data(), static_cast<std::uint32_t>(text.size()));
    return value.FromString(validator);
}

inline int Sign(int value) { return (value > 0) - (value < 0); }

// Orders two bodies with a class's static compare function, returning the sign only.
inline int Order(BodyCompareFunction compare, const Bytes& a, const Bytes& b) {
    int result = 0;
    compare(a.data(), static_cast<std::uint32_t>(a.size()), b.data(), static_cast<std::uint32_t>(b.size()), result);
    return Sign(result);
}

// Checks that a body and a text survive a trip through a fresh object of the same class, and that
// the fresh object orders equal to the original (by `compare`, if the class has one).
template <class T>
void ExpectRoundTrips(const T& value, BodyCompareFunction compare) {
    const Bytes body = BodyOf(value);
    T fromBody;
    ASSERT_EQ(fromBody.DeserializeBody(body.data(), static_cast<std::uint32_t>(body.size())), Status::Success)
        << value.ToString();
    EXPECT_EQ(BodyOf(fromBody), body) << value.ToString();
    T fromText;
    ASSERT_EQ(ReadText(fromText, value.ToString()), Status::Success) << value.ToString();
    EXPECT_EQ(BodyOf(fromText), body) << value.ToString();
    if (compare != nullptr) {
        EXPECT_EQ(Order(compare, body, BodyOf(fromText)), 0);
    }
}

}  // namespace Tavrin::Testing
