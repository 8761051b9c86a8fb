#pragma once
// Helpers of the storage tests: an owner with user data of its choosing, and raw access to files.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/base/File.h"
#include "tavrin/storage/UserDataStore.h"

namespace Tavrin::Database::Testing {

// Keeps `bytes` as its user data (as a string: 2-byte length and the characters), and remembers
// what it last read back. `failSave` makes SerializeUserData fail; `openStatus` is what
// DeserializeUserData answers once it has read.
class TextOwner : public UserDataStore {
public:
    explicit TextOwner(std::string text = "owner") : text(std::move(text)) {}
    StatusCode SerializeUserData(MessageBuilder& builder) override {
        return failSave ? Status::Invalid : builder.AppendString(text);
    }
    StatusCode DeserializeUserData(MessageValidator& validator) override {
        const StatusCode status = validator.ValidateString(&readBack, nullptr, nullptr);
        return status != Status::Success ? status : openStatus;
    }
    std::string text;
    std::string readBack;
    bool failSave = false;
    StatusCode openStatus = Status::Success;
};

inline std::vector<unsigned char> ReadFile(const std::string& path) {
    std::int64_t size = 0;
    if (File::GetSize(path, size) != Status::Success) return {};
    std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
    File file;
    if (file.Open(path, File::ReadAccess, 0) != Status::Success) return {};
    if (file.Read(bytes.data(), static_cast<std::uint32_t>(size)) != Status::Success) return {};
    return bytes;
}

inline void WriteFile(const std::string& path, const std::vector<unsigned char>& bytes) {
    File file;
    ASSERT_EQ(file.Create(path, File::WriteAccess, 0), Status::Success);
    ASSERT_EQ(file.Write(bytes.data(), static_cast<std::uint32_t>(bytes.size())), Status::Success);
}

// A record of `size` bytes that tells `seed` apart from other seeds.
inline std::vector<unsigned char> MakeRecord(std::uint32_t size, std::uint32_t seed) {
    std::vector<unsigned char> record(size);
    for (std::uint32_t i = 0; i < size; ++i) record[i] = static_cast<unsigned char>(seed * 31 + i * 7 + (seed >> 8));
    return record;
}

}  // namespace Tavrin::Database::Testing
