#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tavrin/base/FieldTypes/BinaryArray.h"
#include "tavrin/base/FieldTypes/CrcBlob.h"
#include "tavrin/base/FieldTypes/TextArray.h"
#include "ValueTestSupport.h"

namespace Tavrin {
namespace {

using Testing::BodyOf;
using Testing::Bytes;
using Testing::ReadText;

Bytes SerializeInto(const IFieldType& value, std::uint32_t size, StatusCode expected = Status::Success) {
    Bytes buffer(size, 0xEE);
    std::uint32_t written = 0;
    EXPECT_EQ(value.SerializeBody(buffer.data(), size, written), expected);
    buffer.resize(expected == Status::Success ? written : 0);
    return buffer;
}

TEST(BinaryString, ResetKeepsTheHeapBufferAndClearFreesIt) {
    BinaryString value;
    const std::string small(10, 'a');
    const std::string large(100, 'b');
    ASSERT_EQ(value.Set(large.data(), 100), Status::Success);
    const unsigned char* heap = value.GetData();
    EXPECT_EQ(value.GetCapacity(), 100u);

    value.Reset();
    EXPECT_FALSE(value.defined);
    EXPECT_EQ(value.GetCapacity(), 100u);
    ASSERT_EQ(value.Set(small.data(), 10), Status::Success);
    EXPECT_EQ(value.GetData(), heap);

    value.Clear();
    EXPECT_EQ(value.GetCapacity(), BinaryString::InlineCapacity);
    EXPECT_NE(value.GetData(), heap);
}

TEST(BinaryString, SetFromItsOwnBytes) {
    BinaryString value;
    ASSERT_EQ(value.Set("0123456789", 10), Status::Success);
    ASSERT_EQ(value.Set(value.GetData() + 2, 8), Status::Success);
    EXPECT_EQ(value.ToString(true), "23456789");
    Blob blob;
    ASSERT_EQ(blob.Set("0123456789", 10), Status::Success);
    ASSERT_EQ(blob.Set(blob.GetData() + 1, 9), Status::Success);
    EXPECT_EQ(blob.ToString(true), "123456789");
}

TEST(BinaryString, TextAndMessageForms) {
    BinaryString value;
    ASSERT_EQ(ReadText(value, "00fF10"), Status::Success);
    EXPECT_EQ(value.ToString(), "00ff10");
    EXPECT_EQ(value.ToString(true), "...");
    EXPECT_EQ(value.GetLengthAndBodySize(), 4u);
    EXPECT_EQ(ReadText(value, "0"), Status::Invalid);
    EXPECT_EQ(ReadText(value, "0g"), Status::Invalid);

    const Bytes long256(256, 1);
    ASSERT_EQ(value.Set(long256.data(), 256), Status::Success);
    MessageBuilder builder;
    EXPECT_EQ(value.SerializeLengthAndBody(builder, 0), Status::LengthMismatch);
}

TEST(FixedArrays, PadToTheFieldAndCompareAsPadded) {
    TextArray text;
    ASSERT_EQ(text.Set("ab"), Status::Success);
    EXPECT_EQ(SerializeInto(text, 4), (Bytes{'a', 'b', 0, 0}));
    SerializeInto(text, 1, Status::LengthMismatch);
    const unsigned char field[] = {'a', 'b', 0, 0, 0};
    ASSERT_EQ(text.DeserializeBody(field, 5), Status::Success);
    EXPECT_EQ(text.GetText(), "ab");

    bool different = true;
    ASSERT_EQ(text.IsDifferent(field, 5, different), Status::Success);
    EXPECT_FALSE(different);
    const unsigned char other[] = {'a', 'b', 0, 'c'};
    text.IsDifferent(other, 4, different);
    EXPECT_TRUE(different);
    int result = 0;
    ASSERT_EQ(text.Compare(other, 4, result), Status::Success);
    EXPECT_LT(result, 0);
    text.Compare("a", 1, result);
    EXPECT_GT(result, 0);

    BinaryArray binary;
    ASSERT_EQ(binary.DeserializeBody(field, 5), Status::Success);
    EXPECT_EQ(binary.GetLength(), 5u);  // binary keeps its zero bytes
    EXPECT_EQ(SerializeInto(binary, 6), (Bytes{'a', 'b', 0, 0, 0, 0}));
    binary.IsDifferent(field, 5, different);
    EXPECT_FALSE(different);
}

TEST(Blob, BodyCarriesTheDataLength) {
    Blob blob;
    ASSERT_EQ(blob.Set("xyz", 3), Status::Success);
    EXPECT_EQ(BodyOf(blob), (Bytes{3, 0, 0, 0, 'x', 'y', 'z'}));
    EXPECT_EQ(blob.GetBodySize(), 7u);
    EXPECT_EQ(blob.GetLengthAndBodySize(), 11u);

    const Bytes shortened{4, 0, 0, 0, 'x', 'y', 'z'};
    EXPECT_EQ(blob.DeserializeBody(shortened.data(), 7), Status::Invalid);
    EXPECT_EQ(blob.ToString(true), "xyz");
}

TEST(CrcBlob, BodyCarriesACrcThatIsChecked) {
    CrcBlob blob;
    ASSERT_EQ(blob.Set("123456789", 9), Status::Success);
    EXPECT_EQ(blob.GetCrc(), 0xCBF43926u);  // the check value of CRC-32
    Bytes body = BodyOf(blob);
    EXPECT_EQ(body.size(), 17u);
    EXPECT_EQ(blob.GetLengthAndBodySize(), 21u);
    EXPECT_EQ(Bytes(body.begin(), body.begin() + 8), (Bytes{9, 0, 0, 0, 0x26, 0x39, 0xF4, 0xCB}));

    CrcBlob copy;
    ASSERT_EQ(copy.DeserializeBody(body.data(), 17), Status::Success);
    body[12] ^= 1;
    EXPECT_EQ(copy.DeserializeBody(body.data(), 17), Status::Invalid);
    EXPECT_EQ(copy.ToString(true), "123456789");
    bool different = false;
    ASSERT_EQ(blob.IsDifferent(body.data(), 17, different), Status::Success);
    EXPECT_TRUE(different);

    // A Blob body is not a CrcBlob body, and the two convert by their data.
    Blob plain;
    ASSERT_EQ(plain.Convert(&blob), Status::Success);
    EXPECT_EQ(copy.DeserializeBody(BodyOf(plain).data(), plain.GetBodySize()), Status::Invalid);
    ASSERT_EQ(copy.Convert(&plain), Status::Success);
    EXPECT_EQ(copy.GetCrc(), 0xCBF43926u);
}

TEST(Blob, ResetKeepsBothArraysAndClearFreesThem) {
    Blob blob;
    const Bytes data(50, 7);
    blob.Set(data.data(), 50);
    blob.Set(data.data(), 40);
    blob.Reset();
    // The two arrays take turns: no new array for a value that fits the spare one.
    blob.Set(data.data(), 45);
    EXPECT_EQ(blob.GetCapacity(), 50u);
    EXPECT_EQ(blob.GetSpareCapacity(), 40u);
    blob.Clear();
    EXPECT_EQ(blob.GetCapacity(), 0u);
    EXPECT_EQ(blob.GetSpareCapacity(), 0u);
    EXPECT_EQ(blob.GetData(), nullptr);
}

// Random contents of every byte-holding class survive body and text, and the classes with a length
// prefix order their bodies as the byte rule orders their contents.
TEST(ByteValues, RandomContentsRoundTripAndOrderByBytes) {
    std::mt19937_64 random(3);
    auto draw = [&] {
        std::string bytes(random() % 70, '\0');
        for (char& c : bytes) c = static_cast<char>('a' + random() % 3);
        return bytes;
    };
    for (int i = 0; i < 500; ++i) {
        const std::string a = draw(), b = draw();
        const int expected = Testing::Sign(a.compare(b));
        BinaryString binaryA, binaryB;
        binaryA.Set(a.data(), static_cast<std::uint32_t>(a.size()));
        binaryB.Set(b.data(), static_cast<std::uint32_t>(b.size()));
        Testing::ExpectRoundTrips(binaryA, nullptr);
        int result = 0;
        binaryA.Compare(BodyOf(binaryB).data(), binaryB.GetBodySize(), result);
        EXPECT_EQ(Testing::Sign(result), expected);

        CrcBlob blobA, blobB;
        blobA.Convert(&binaryA);
        blobB.Convert(&binaryB);
        Testing::ExpectRoundTrips(blobA, &CrcBlob::Compare);
        EXPECT_EQ(Testing::Order(&CrcBlob::Compare, BodyOf(blobA), BodyOf(blobB)), expected);

        TextString text;
        ASSERT_EQ(text.Convert(&binaryA), Status::Success);  // a binary value's text is its hex form
        BinaryString back;
        ASSERT_EQ(back.Convert(&text), Status::Success);      // and text converts by its bytes
        EXPECT_EQ(back.GetLength(), 2 * a.size());
        TextString plain;
        ASSERT_EQ(plain.Set(a), Status::Success);
        Testing::ExpectRoundTrips(plain, nullptr);
    }
}

}  // namespace
}  // namespace Tavrin
