#pragma once
// Helpers shared by the records tests.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/records/FieldList.h"
#include "tavrin/records/FieldSpecification.h"

namespace Tavrin::Database::Testing {

// Checks that `action` throws a DatabaseException with this code, function and message.
inline void ExpectDatabaseException(const std::function<void()>& action, std::uint32_t code,
                                    const std::string& function, const std::string& message) {
    try {
        action();
        ADD_FAILURE() << "no exception, expected: " << message;
    } catch (const DatabaseException& exception) {
        EXPECT_EQ(exception.GetCode(), code);
        EXPECT_EQ(exception.GetFunction(), function);
        EXPECT_EQ(exception.GetMessage(), message);
    }
}

// A specification with any member values, valid or not: built from its wire form, which skips
// validation.
inline FieldSpecification MakeUnchecked(std::uint32_t id, const std::string& name, std::uint32_t type,
                                        std::uint32_t maxLength, std::uint32_t offset = 0,
                                        std::uint32_t properties = 0) {
    MessageBuilder builder;
    EXPECT_EQ(builder.AppendUInt32(id), Status::Success);
    EXPECT_EQ(builder.AppendString(name), Status::Success);
    for (std::uint32_t value : {type, maxLength, offset, properties}) {
        EXPECT_EQ(builder.AppendUInt32(value), Status::Success);
    }
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    FieldSpecification specification;
    EXPECT_EQ(specification.Deserialize(validator), Status::Success);
    return specification;
}

struct FieldDefinition {
    std::uint16_t id;
    const char* name;
    FieldSpecification::Type type;
    std::uint32_t maxLength;
};

// Specifications whose offsets pack the fields one after the other from 0, so that both layouts
// accept them.
inline std::vector<FieldSpecification> PackedSpecifications(std::initializer_list<FieldDefinition> fields) {
    std::vector<FieldSpecification> specifications;
    std::uint32_t offset = 0;
    for (const FieldDefinition& field : fields) {
        specifications.emplace_back(field.id, field.name, field.type, field.maxLength, offset, 0);
        offset += field.maxLength;
    }
    return specifications;
}

// Whether field `id` of `data` is defined; the lookup itself must succeed.
inline bool IsDefined(const FieldList& list, const unsigned char* data, std::uint16_t id) {
    bool defined = false;
    EXPECT_EQ(list.IsFieldDefined(data, id, defined), Status::Success) << "field " << id;
    return defined;
}

// An image of `list`, reset, with setters that expect success.
struct Image {
    explicit Image(const FieldList& owner) : list(owner), bytes(owner.GetDataLength()) { list.ResetData(data()); }
    unsigned char* data() { return bytes.data(); }
    Image& Text(std::uint16_t id, const std::string& value) { return Number(id, value); }
    template <class T>
    Image& Number(std::uint16_t id, T value) {
        EXPECT_EQ(list.SetField(data(), id, value), Status::Success) << "field " << id;
        return *this;
    }
    const FieldList& list;
    std::vector<unsigned char> bytes;
};

// The bytes that `Serialize(builder, args...)` writes.
template <class Object, class... Args>
std::vector<unsigned char> Serialized(const Object& object, Args... args) {
    MessageBuilder builder;
    EXPECT_EQ(object.Serialize(builder, args...), Status::Success);
    return std::vector<unsigned char>(builder.GetBuffer(), builder.GetBuffer() + builder.GetLength());
}

// Reads `object` back from `message`.
template <class Object>
StatusCode Read(const std::vector<unsigned char>& message, Object& object) {
    MessageValidator validator(message.data(), static_cast<std::uint32_t>(message.size()));
    return object.Deserialize(validator);
}

inline const unsigned char* Bytes(const char* text) { return reinterpret_cast<const unsigned char*>(text); }

// Calls `read` on every proper prefix of `message`, each copied into a heap buffer of exactly its
// own length so that a sanitizer sees any read past the end; every cut must be refused with a
// non-zero status.
inline void ExpectEveryCutRefused(const unsigned char* message, std::uint32_t length,
                                  const std::function<StatusCode(MessageValidator&)>& read) {
    for (std::uint32_t cut = 0; cut < length; ++cut) {
        auto copy = std::make_unique<unsigned char[]>(cut);
        if (cut != 0) std::memcpy(copy.get(), message, cut);
        MessageValidator validator(copy.get(), cut);
        EXPECT_NE(read(validator), Status::Success) << "a message cut to " << cut << " bytes was accepted";
    }
}

}  // namespace Tavrin::Database::Testing
