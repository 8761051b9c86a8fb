#pragma once
// The fields of a memory store file's header by file offset, and the damage that the header tests
// write into them: 0, 1, all ones and one value drawn from a fixed seed, cut to the field's width.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "StoreTestSupport.h"
#include "tavrin/base/Encoding.h"

namespace Tavrin::Database::Testing {

struct HeaderField {
    std::string name;
    std::uint32_t offset;  // in the file
    std::uint32_t width;   // 1 or 4
};

// The clean flag, the common header and the memory store's extension.
inline std::vector<HeaderField> MemoryStoreHeaderFields() {
    return {{"clean flag", 0, 1},        {"format", 17, 1},         {"storeType", 18, 4},
            {"valid", 22, 4},            {"headerSize", 26, 4},     {"userDataSize", 30, 4},
            {"recordSize", 34, 4},       {"initialEntries", 38, 4}, {"growEntries", 42, 4},
            {"currentEntries", 46, 4},   {"maxEntries", 50, 4},     {"extension format", 54, 1},
            {"firstEntryOffset", 55, 4}, {"entryStride", 59, 4},    {"freeHead", 63, 4},
            {"freeTail", 67, 4}};
}

inline std::vector<std::uint32_t> DamageValues(const HeaderField& field, std::mt19937& random) {
    const std::uint32_t mask = field.width == 1 ? 0xFFu : 0xFFFFFFFFu;
    return {0, 1, mask, static_cast<std::uint32_t>(random()) & mask};
}

inline std::uint32_t ReadField(const std::vector<unsigned char>& bytes, const HeaderField& field) {
    return field.width == 1 ? bytes[field.offset] : DecodeU32(bytes.data() + field.offset);
}

inline std::vector<unsigned char> WithField(std::vector<unsigned char> bytes, const HeaderField& field,
                                            std::uint32_t value) {
    if (field.width == 1) {
        bytes[field.offset] = static_cast<unsigned char>(value);
    } else {
        EncodeU32(bytes.data() + field.offset, value);
    }
    return bytes;
}

// Whether Open may take a store file with `field` set to `value`: it is the file's own value, or one
// that does no harm: growEntries is the object's, currentEntries is counted again, initialEntries
// only has to lie in [1, maxEntries], a free list end may name any entry or none. Any other field
// (a tree's root and sentinel among them) only as it was.
inline bool MayOpen(const HeaderField& field, std::uint32_t value, const std::vector<unsigned char>& original) {
    const std::uint32_t maxEntries = DecodeU32(original.data() + 50);
    if (value == ReadField(original, field) || field.name == "growEntries") return true;
    if (field.name == "clean flag" || field.name == "valid") return value != 0;
    if (field.name == "currentEntries") return value <= maxEntries;
    if (field.name == "initialEntries") return value >= 1 && value <= maxEntries;
    if (field.name == "freeHead" || field.name == "freeTail") return value == 0xFFFFFFFF || value < maxEntries;
    return false;
}

// Writes every damage of every field into the cleanly closed file `path` in turn, and has `open` open
// it and check what its kind of file promises; `open` gives the open's status. A file taken (0) must
// be one MayOpen allows; a refused one must be answered 21, 23 or 25, with nothing written into it
// but the clean flag of the release. What was taken is kept as the test's "accepted" property.
template <class Open>
void SweepHeaderDamage(const std::vector<HeaderField>& fields, const std::string& path, Open open) {
    const std::vector<unsigned char> original = ReadFile(path);
    ASSERT_EQ(original[0], 1);
    std::mt19937 random(7);
    std::string accepted;
    for (const HeaderField& field : fields) {
        for (const std::uint32_t value : DamageValues(field, random)) {
            SCOPED_TRACE(field.name + " = " + std::to_string(value));
            const std::vector<unsigned char> damaged = WithField(original, field, value);
            WriteFile(path, damaged);
            const StatusCode status = open();
            if (status == Status::Success) {
                accepted += field.name + "=" + std::to_string(value) + " ";
                EXPECT_TRUE(MayOpen(field, value, original)) << "a damaged header was taken";
                continue;
            }
            EXPECT_TRUE(status == Status::Invalid || status == Status::DescriptionDiffers ||
                        status == Status::WrongVersion)
                << "status " << int{status};
            std::vector<unsigned char> released = damaged;
            released[0] = 1;
            EXPECT_EQ(ReadFile(path), released) << "the refusal wrote into the file";
        }
    }
    ::testing::Test::RecordProperty("accepted", accepted);
}

}  // namespace Tavrin::Database::Testing
