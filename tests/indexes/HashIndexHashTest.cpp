// Where keys lie: every entry in use of an index's files is on exactly one chain, that of the bucket
// that a hash written here gives its stored key; and for every field type, key images that CompareKey
// calls equal hash alike, so a unique hash index never holds two equal keys.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "../base/ScratchDirectory.h"
#include "HashIndexTestSupport.h"
#include "tavrin/base/Uuid.h"

namespace Tavrin::Database::Testing {
namespace {

// lookup2 as published: three words at a time, then the last bytes into a, b and the top of c.
std::uint32_t Lookup2(const unsigned char* k, std::uint32_t length, std::uint32_t initval) {
    std::uint32_t a = 0x9E3779B9, b = 0x9E3779B9, c = initval, len = length;
    const auto mix = [&] {
        a -= b, a -= c, a ^= (c >> 13), b -= c, b -= a, b ^= (a << 8), c -= a, c -= b, c ^= (b >> 13);
        a -= b, a -= c, a ^= (c >> 12), b -= c, b -= a, b ^= (a << 16), c -= a, c -= b, c ^= (b >> 5);
        a -= b, a -= c, a ^= (c >> 3), b -= c, b -= a, b ^= (a << 10), c -= a, c -= b, c ^= (b >> 15);
    };
    const auto word = [](const unsigned char* p) {
        return p[0] + (std::uint32_t{p[1]} << 8) + (std::uint32_t{p[2]} << 16) + (std::uint32_t{p[3]} << 24);
    };
    for (; len >= 12; k += 12, len -= 12) {
        a += word(k), b += word(k + 4), c += word(k + 8);
        mix();
    }
    c += length;
    for (std::uint32_t i = 0; i < len; ++i) {  // the lowest byte of c is the length's
        std::uint32_t& word = i < 4 ? a : (i < 8 ? b : c);
        word += std::uint32_t{k[i]} << (i < 8 ? 8 * (i % 4) : 8 * (i - 7));
    }
    mix();
    return c;
}

// The bucket of a stored key, from its fields as the key list gives them (an undefined one as four
// 0xFF bytes) and the addressing state in the bucket file's bytes.
std::uint32_t BucketOf(const HashIndex& index, const unsigned char* key, const std::vector<unsigned char>& buckets) {
    static const unsigned char undefined[4] = {0xFF, 0xFF, 0xFF, 0xFF};
    std::uint32_t hash = 0;
    for (const std::uint16_t id : {NumberField, NameField}) {
        const void* value = nullptr;
        std::uint32_t length = 0;
        hash = index.GetFieldList()->GetField(key, id, value, length) == Status::Success
                   ? Lookup2(static_cast<const unsigned char*>(value), length, hash)
                   : Lookup2(undefined, 4, hash);
    }
    if (index.IsDuplicate()) hash = Lookup2(key + index.GetFieldList()->GetDataLength(), 4, hash);
    const std::uint32_t count = DecodeU32(&buckets[kBucketCount]);
    return hash % count < DecodeU32(&buckets[kSplitIndex]) ? hash % (2 * count) : hash % count;
}

TEST(HashIndexHash, EveryEntryLiesOnTheChainOfItsKeysBucketInTheFiles) {
    for (const std::uint32_t properties : {IndexSpecification::UniqueProperty, IndexSpecification::DuplicateProperty}) {
        Tavrin::Testing::ScratchDirectory directory;
        HashHarness index(properties, 100, 100);
        index.index->Create(directory.Path(), "T", Uuid());
        std::mt19937 random(properties);
        const Name names[] = {std::nullopt, "x", "yy", "abcdef"};
        for (std::uint32_t id = 0; index.index->GetCurrentRecords() < 1400; ++id) {
            ASSERT_EQ(index.Add(random() % 600, names[random() % 4], id, id), Status::Success);
        }
        ASSERT_NE(index.index->GetBucketHandler().GetSplitIndex(), 0u) << "both moduli should be in use";
        ASSERT_EQ(index.index->Sync(), Status::Success);  // the mapping is shared: the files hold it all
        const std::vector<unsigned char> entries = ReadFile(index.EntryFile(directory.Path()));
        const std::vector<unsigned char> buckets = ReadFile(index.BucketFile(directory.Path()));
        const std::uint32_t size = DecodeU32(&entries[kEntrySize]);
        const std::uint32_t area = DecodeU32(&entries[kEntryMax]) * size;
        ASSERT_EQ(size, index.index->GetKeySize() + 20);
        ASSERT_EQ(entries.size(), kEntryArea + area);
        ASSERT_EQ(buckets.size(), kBucketArray + 8 * std::size_t{DecodeU32(&buckets[kCapacity])});

        std::map<std::uint32_t, std::vector<std::uint32_t>> chainsOf;  // entry offset -> buckets holding it
        const std::uint32_t inUse = DecodeU32(&buckets[kBucketCount]) + DecodeU32(&buckets[kSplitIndex]);
        for (std::uint32_t bucket = 0; bucket < inUse; ++bucket) {
            std::uint32_t steps = 0;
            for (std::uint32_t offset = DecodeU32(&buckets[kBucketArray + 8 * bucket]); offset != NoId;
                 offset = DecodeU32(&entries[kEntryArea + offset + 4])) {
                ASSERT_LT(offset, area);
                ASSERT_LE(++steps, 1400u) << "a loop";
                chainsOf[offset].push_back(bucket);
            }
        }
        std::uint32_t used = 0;
        for (std::uint32_t offset = 0; offset < area; offset += size) {
            const unsigned char* entry = &entries[kEntryArea + offset];
            ASSERT_EQ(DecodeU32(entry), offset);
            ASSERT_EQ(DecodeU32(entry + 16), offset + 20);
            const bool inUseEntry = DecodeU32(entry + 12) != NoId;
            used += inUseEntry;
            const std::vector<std::uint32_t> expected =
                inUseEntry ? std::vector<std::uint32_t>{BucketOf(*index.index, entry + 20, buckets)}
                           : std::vector<std::uint32_t>{};
            ASSERT_EQ(chainsOf[offset], expected) << "entry " << offset;
        }
        EXPECT_EQ(used, 1400u);
    }
}

// ---- Equal keys hash alike, for every field type --------------------------------------------------

// Small alphabets make equal images common, and include the bytes that mark forms: lengths, the long
// forms of times, the widths of rationals.
const unsigned char kAlphabet[] = {0x00, 0x01, 0x02, 0x40, 0x80, 0xFF};

// A twin of `image`: the same key for CompareKey as far as the bytes that carry the value go, but
// with other bytes where the value is not: behind its current length, or in the whole slot and
// prefix of an undefined field.
std::vector<unsigned char> Twin(const FieldList& list, std::vector<unsigned char> image, std::mt19937& random) {
    unsigned char* data = image.data();
    void* slot = nullptr;
    std::uint32_t length = 0;
    EXPECT_EQ(list.GetField(data, 1, slot, length), Status::Success);
    const auto offset = static_cast<std::uint32_t>(static_cast<unsigned char*>(slot) - data);
    bool defined = false;
    EXPECT_EQ(list.IsFieldDefined(data, 1, defined), Status::Success);
    const std::uint32_t from = defined ? offset + length : 1;  // byte 0 holds the defined bit
    for (std::uint32_t i = from; i < image.size(); ++i) image[i] = kAlphabet[random() % sizeof(kAlphabet)];
    return image;
}

TEST(HashIndexHash, KeysThatCompareEqualLandInOneBucketForEveryType) {
    using T = FieldSpecification;
    const std::vector<std::pair<FieldSpecification::Type, std::uint32_t>> cases{
        {T::BinaryArray, 3}, {T::BinaryString, 3}, {T::Bitmap, 2},     {T::Blob, 6},     {T::Date, 3},
        {T::DateTime, 6},    {T::DateTime, 7},     {T::Pointer, 4},    {T::Rational, 3}, {T::Rational, 9},
        {T::SInt, 2},        {T::TextArray, 3},    {T::TextString, 3}, {T::Time, 3},     {T::Time, 4},
        {T::TRational, 4},   {T::UInt, 2},         {T::Boolean, 1},    {T::CrcBlob, 10},
    };
    std::mt19937 random(5);
    for (const auto& [type, maxLength] : cases) {
        const std::vector<FieldSpecification> fields{FieldSpecification(1, "F", type, maxLength, 0, 0)};
        const std::unique_ptr<FieldList> table(FactoryOf(true).Create(fields));
        const HashIndex index(IndexSpecification("H", IndexSpecification::Hash, IndexSpecification::UniqueProperty,
                                                 {IndexSpecification::Field(1, 0)}),
                              *table, FactoryOf(true), 4, 4);
        const FieldList& list = *index.GetFieldList();
        std::vector<std::vector<unsigned char>> images;
        for (int i = 0; i < 3000; ++i) {
            std::vector<unsigned char> image(list.GetDataLength());
            for (unsigned char& byte : image) byte = kAlphabet[random() % sizeof(kAlphabet)];
            images.push_back(image);
            images.push_back(Twin(list, image, random));
        }
        std::sort(images.begin(), images.end(),
                  [&](const auto& a, const auto& b) { return list.CompareKey(a.data(), b.data(), 1) < 0; });
        std::uint32_t differentBytes = 0;
        for (std::size_t i = 1; i < images.size(); ++i) {
            if (list.CompareKey(images[i - 1].data(), images[i].data(), 1) != 0) continue;
            differentBytes += images[i - 1] != images[i];
            ASSERT_EQ(index.HashKey(images[i - 1].data()), index.HashKey(images[i].data()))
                << "type " << type << ", length " << maxLength << ": " << list.ToLogString(images[i].data());
        }
        EXPECT_GT(differentBytes, 100u) << "type " << type;
    }
}

}  // namespace
}  // namespace Tavrin::Database::Testing
