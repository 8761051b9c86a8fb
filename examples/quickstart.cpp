// A tour of TavrinDatabase: lay out records from field specifications, write and read fields, send
// a record through a message, and keep records in a mapped store that survives close and open.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "TavrinDatabase.h"

using namespace Tavrin;
using namespace Tavrin::Database;

namespace {

void Check(StatusCode status, const char* what) {
    if (status != Status::Success) {
        std::fprintf(stderr, "%s failed: status %u (%s)\n", what, status, StatusCodeToString(status).c_str());
        std::exit(1);
    }
}

// A managed layout: every field may be undefined, text keeps its length beside it.
std::vector<FieldSpecification> CustomerFields() {
    return {
        FieldSpecification(1, "Id", FieldSpecification::UInt, 8, 0, 0),
        FieldSpecification(2, "Name", FieldSpecification::TextString, 40, 0, 0),
        FieldSpecification(3, "Balance", FieldSpecification::SInt, 8, 0, 0),
    };
}

void FieldsAndMessages() {
    std::unique_ptr<FieldList> fields(ManagedFieldListFactory::GetInstance().Create(CustomerFields()));
    std::printf("record image of %u bytes for %u fields\n", fields->GetDataLength(), fields->GetFieldCount());

    std::vector<unsigned char> image(fields->GetDataLength());
    fields->ResetData(image.data());
    const unsigned char id[8] = {42};
    Check(fields->SetField(image.data(), 1, id, sizeof id), "set Id");
    const std::string name = "Ada Lovelace";
    Check(fields->SetField(image.data(), 2, name.data(), static_cast<std::uint32_t>(name.size())), "set Name");

    bool defined = true;
    Check(fields->IsFieldDefined(image.data(), 3, defined), "is Balance defined");
    std::printf("Balance defined: %s\n", defined ? "yes" : "no");

    // The layout and the image travel in one message; the receiver rebuilds the layout from it.
    MessageBuilder builder;
    Check(fields->SerializeSpecification(builder), "serialise layout");
    Check(fields->SerializeFields(builder, image.data()), "serialise image");
    std::printf("message of %u bytes\n", builder.GetLength());

    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    std::vector<FieldSpecification> received;
    Check(FieldList::DeserializeSpecification(validator, received), "read layout");
    std::unique_ptr<FieldList> copy(ManagedFieldListFactory::GetInstance().Create(received));
    std::vector<unsigned char> copyImage(copy->GetDataLength());
    copy->ResetData(copyImage.data());
    Check(copy->DeserializeFields(validator, copyImage.data()), "read image");

    char text[64];
    std::uint32_t length = 0;
    Check(copy->GetField(copyImage.data(), 2, text, sizeof text, length), "get Name");
    std::printf("received Name: %.*s\n", static_cast<int>(length), text);
}

void StoreSurvivesCloseAndOpen() {
    const std::filesystem::path directory = std::filesystem::temp_directory_path() / "tavrin-quickstart";
    std::filesystem::create_directories(directory);
    const std::string file = (directory / "numbers.store").string();
    std::filesystem::remove(file);

    constexpr std::uint32_t recordSize = 16;
    std::uint32_t removedId = 0;
    {
        MemoryDataStore store(nullptr, recordSize, 4, 4);  // grows by 4 entries when full
        store.Create(file, Uuid());
        for (std::uint32_t i = 0; i < 10; ++i) {
            unsigned char record[recordSize] = {};
            std::snprintf(reinterpret_cast<char*>(record), recordSize, "record %u", i);
            std::uint32_t id = 0;
            Check(store.Add(id, record), "add");
        }
        removedId = 3;
        Check(store.Remove(removedId), "remove");
        std::printf("store holds %u of %u entries\n", store.GetCurrentEntries(), store.GetMaxEntries());
        Check(store.Close(), "close");
    }
    MemoryDataStore store(nullptr, recordSize, 4, 4);
    Check(store.Open(file, nullptr), "open");
    std::printf("reopened: %u records\n", store.GetCurrentEntries());
    std::uint32_t id = 0;
    unsigned char* record = nullptr;
    for (StatusCode s = store.GetFirst(id, record); s == Status::Success; s = store.GetNext(id, record)) {
        std::printf("  id %u: %s\n", id, reinterpret_cast<const char*>(record));
    }
    unsigned char again[recordSize] = "reused";
    std::uint32_t reused = 0;
    Check(store.Add(reused, again), "add again");
    std::printf("a removed id is handed out first: %u\n", reused);
    Check(store.Close(), "close");
    std::filesystem::remove_all(directory);
}

}  // namespace

int main() {
    try {
        FieldsAndMessages();
        StoreSurvivesCloseAndOpen();
    } catch (const Tavrin::Exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    return 0;
}
