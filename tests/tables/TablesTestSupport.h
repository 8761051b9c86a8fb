#pragma once
// Helpers of the table tests: sample fields, short ways to make tables, and a record of what an
// action threw, chain included. Raw file access comes from the storage tests' helpers.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../storage/StoreTestSupport.h"
#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Exception.h"
#include "tavrin/records/FieldSpecification.h"
#include "tavrin/tables/ITable.h"
#include "tavrin/tables/ManagedTableFactory.h"
#include "tavrin/tables/UnmanagedTableFactory.h"

namespace Tavrin::Database::Testing {

constexpr std::uint32_t kCreateFile = 1;  // property bit 0
constexpr std::uint32_t kAll = 0xFFFFFFFF;
constexpr std::uint32_t kHalf = 0xFFFFFFFF;

// Two fixed-length fields packed from offset 0: 8 bytes, valid in both layouts.
inline std::vector<FieldSpecification> SampleFields() {
    return {FieldSpecification(1, "Age", FieldSpecification::SInt, 4, 0, 0),
            FieldSpecification(2, "Code", FieldSpecification::UInt, 4, 4, 0)};
}

inline std::unique_ptr<ITable> MakeManaged(const std::string& name, const std::string& directory,
                                           std::uint32_t properties = kCreateFile,
                                           const std::vector<FieldSpecification>& fields = SampleFields()) {
    return std::unique_ptr<ITable>(
        ManagedTableFactory::GetInstance().Create(name, directory, properties, fields, 10, kHalf, kAll));
}

inline std::unique_ptr<ITable> MakeUnmanaged(const std::string& name, const std::string& directory,
                                             std::uint32_t recordLength = 8, std::uint32_t properties = kCreateFile,
                                             const std::vector<FieldSpecification>& fields = SampleFields()) {
    return std::unique_ptr<ITable>(UnmanagedTableFactory::GetInstance().Create(name, directory, properties, fields,
                                                                               10, recordLength, kHalf, kAll));
}

// A managed table in temporary memory, of four records.
inline std::unique_ptr<ITable> MakeInMemory(const std::string& name, std::uint32_t properties = kCreateFile,
                                            const std::vector<FieldSpecification>& fields = SampleFields()) {
    return std::unique_ptr<ITable>(
        ManagedTableFactory::GetInstance().Create(name, properties, fields, 4, kHalf, kAll));
}

inline std::uint32_t CountOf(ITable& table) {
    std::uint32_t count = 0;
    EXPECT_EQ(table.GetCurrentRecords(count), Status::Success);
    return count;
}

// Bytes 1 to 16 of a store file: its Uuid, drawn anew whenever the file is created.
inline std::vector<unsigned char> UuidOf(const std::string& path) {
    const std::vector<unsigned char> bytes = ReadFile(path);
    return bytes.size() < 17 ? bytes : std::vector<unsigned char>(bytes.begin() + 1, bytes.begin() + 17);
}

// What an action threw: the outer exception and, in order, the chain added on its way out.
struct Thrown {
    bool thrown = false;
    bool isStatus = false;    // a StatusCodeException
    bool isDatabase = false;  // a DatabaseException
    std::uint32_t code = 0;
    std::string function;
    std::string message;  // of a DatabaseException
    struct Link {
        std::uint32_t code;
        std::string function;
        std::string message;
        bool operator==(const Link&) const = default;
    };
    std::vector<Link> chain;  // each a DatabaseException
};

inline Thrown Catch(const std::function<void()>& action) {
    Thrown result;
    try {
        action();
    } catch (const Exception& exception) {
        result.thrown = true;
        result.isStatus = dynamic_cast<const StatusCodeException*>(&exception) != nullptr;
        const auto* database = dynamic_cast<const DatabaseException*>(&exception);
        result.isDatabase = database != nullptr;
        if (database != nullptr) result.message = database->GetMessage();
        result.code = exception.GetCode();
        result.function = exception.GetFunction();
        for (const auto& link : exception.GetChain()) {
            const auto* chained = dynamic_cast<const DatabaseException*>(link.get());
            result.chain.push_back({link->GetCode(), link->GetFunction(), chained ? chained->GetMessage() : "?"});
        }
    }
    return result;
}

}  // namespace Tavrin::Database::Testing
