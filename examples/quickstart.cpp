// A tour of TavrinDatabase: lay out records from field specifications, write and read typed fields,
// order records by a descending key, keep records in a mapped store, and then the real thing: a table
// in a directory with a primary and a secondary index, read by key, walked both ways and by prefix,
// updated, removed, closed and opened again from the name of its record file, saved as a copy,
// and described to a remote table through a message.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

#include "TavrinDatabase.h"

using namespace Tavrin;
using namespace Tavrin::Database;

namespace {

// A directory of this process's own under the temporary path: a table's files have one opener at a
// time, so two runs of this program side by side must not share one.
std::filesystem::path ScratchDirectory(const std::string& stem) {
    return std::filesystem::temp_directory_path() / (stem + "-" + std::to_string(::getpid()));
}

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
    const std::filesystem::path directory = ScratchDirectory("tavrin-quickstart");
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

// Typed values: integers by width, text, dates and decimals; a key with a descending field.
void TypedFieldsAndOrdering() {
    const std::vector<FieldSpecification> specs = {
        FieldSpecification(1, "Id", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(2, "Joined", FieldSpecification::Date, 3, 0, 0),
        FieldSpecification(3, "Balance", FieldSpecification::Rational, 9, 0, FieldSpecification::DescendingProperty),
        FieldSpecification(4, "Name", FieldSpecification::TextString, 20, 0, 0),
    };
    std::unique_ptr<FieldList> fields(ManagedFieldListFactory::GetInstance().Create(specs));
    const std::uint32_t length = fields->GetDataLength();
    std::vector<std::vector<unsigned char>> images;
    const std::int64_t cents[] = {1250, -300, 99999, 4200};
    for (std::uint32_t i = 0; i < 4; ++i) {
        std::vector<unsigned char> image(length);
        fields->ResetData(image.data());
        Check(fields->SetField(image.data(), 1, static_cast<std::uint32_t>(100 + i)), "set Id");
        Date joined;
        Check(joined.Set(2026, 1 + i, 15), "make date");
        Check(fields->SetField(image.data(), 2, joined), "set Joined");
        Rational balance;
        Check(balance.Set(cents[i], 2), "make balance");  // denominator code 2: two decimals
        Check(fields->SetField(image.data(), 3, balance), "set Balance");
        Check(fields->SetField(image.data(), 4, std::string("customer ") + std::to_string(i)), "set Name");
        images.push_back(std::move(image));
    }
    // To order by Balance, descending, copy it into a one-field key layout whose field carries the
    // descending bit, and compare those keys.
    std::unique_ptr<FieldList> key(ManagedFieldListFactory::GetInstance().Create(
        {FieldSpecification(3, "Balance", FieldSpecification::Rational, 9, 0, FieldSpecification::DescendingProperty)}));
    std::vector<std::vector<unsigned char>> keys;
    for (const auto& image : images) {
        std::vector<unsigned char> k(key->GetDataLength());
        key->ResetData(k.data());
        Check(key->CopyFields(k.data(), *fields, image.data(), true), "copy key");
        keys.push_back(std::move(k));
    }
    std::vector<std::size_t> order = {0, 1, 2, 3};
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return key->CompareKey(keys[a].data(), keys[b].data()) < 0; });
    std::printf("records by descending balance:\n");
    for (std::size_t i : order) std::printf("  %s\n", fields->ToLogString(images[i].data()).c_str());
    std::printf("the first one in full:\n%s", fields->ToString(images[order[0]].data()).c_str());
}

enum : std::uint16_t { IdField = 1, CityField = 2, ScoreField = 3, NoteField = 4 };

std::unique_ptr<ITable> CreatePeopleTable(const std::string& directory) {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(IdField, "Id", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(CityField, "City", FieldSpecification::TextString, 16, 0, 0),
        FieldSpecification(ScoreField, "Score", FieldSpecification::SInt, 4, 0, 0),
        FieldSpecification(NoteField, "Note", FieldSpecification::TextString, 32, 0, 0),
    };
    const std::uint32_t properties = TableSpecification::CreateRecordFileProperty | TableSpecification::CreateMutexProperty;
    std::unique_ptr<ITable> table(ManagedTableFactory::GetInstance().Create("People", directory, properties, fields,
                                                                            1024, 1024, TableSpecification::CacheAll));
    // Index 0: primary unique on Id. Index 1: by city, and within a city by descending score.
    std::vector<IndexSpecification> indexes = {
        IndexSpecification("ById", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty,
                           {IndexSpecification::Field(IdField, 0)}),
        IndexSpecification("ByCityScore", IndexSpecification::RedBlack, IndexSpecification::DuplicateProperty,
                           {IndexSpecification::Field(CityField, 0),
                            IndexSpecification::Field(ScoreField, FieldSpecification::DescendingProperty)}),
    };
    table->CreateIndexes(indexes);
    return table;
}

void PrintPerson(const Record& record) {
    const FieldList& fields = *record.GetFieldList();
    std::uint32_t id = 0;
    std::string city;
    std::int32_t score = 0;
    fields.GetField(record.GetData(), IdField, id);
    fields.GetField(record.GetData(), CityField, city);
    fields.GetField(record.GetData(), ScoreField, score);
    std::printf("    #%u %s %d\n", id, city.c_str(), score);
}

// Another process would build a RemoteTable from the table's description and decode its records.
void RemoteTableRoundTrip(ITable& table) {
    MessageBuilder description;
    Check(table.SerializeSpecification(description), "describe");
    MessageValidator reader(description.GetBuffer(), description.GetLength());
    std::unique_ptr<ITable> remote(RemoteTableFactory::GetInstance().Create(reader));

    std::vector<Record> records;
    Key walk(&table, 0);
    Check(table.GetFirst(walk, records, 4), "first four");
    MessageBuilder message;
    Check(table.SerializeRecords(message, records), "send records");
    MessageValidator received(message.GetBuffer(), message.GetLength());
    std::vector<Record> decoded;
    Check(remote->DeserializeRecords(received, decoded), "receive records");
    std::printf("remote table %s decoded %zu records from a %u-byte message:\n", remote->GetName().c_str(),
                decoded.size(), message.GetLength());
    for (const Record& r : decoded) PrintPerson(r);
}

void TableInADirectory() {
    const std::filesystem::path directory = ScratchDirectory("tavrin-quickstart-table");
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
    const char* cities[] = {"Berlin", "Bern", "Boston", "Lisbon", "Lyon"};
    constexpr std::uint32_t people = 5000;
    {
        std::unique_ptr<ITable> table = CreatePeopleTable(directory.string());
        Record record(table.get());
        for (std::uint32_t id = 0; id < people; ++id) {
            Check(table->ResetRecord(record), "reset");
            const FieldList& fields = *record.GetFieldList();
            fields.SetField(record.GetData(), IdField, id);
            fields.SetField(record.GetData(), CityField, std::string(cities[id % 5]));
            fields.SetField(record.GetData(), ScoreField, static_cast<std::int32_t>((id * 7919) % 1000));
            Check(table->WriteRecord(record), "write");
        }
        std::uint32_t count = 0;
        table->GetCurrentRecords(count);
        std::printf("table People: %u records in %s\n", count, directory.c_str());

        Key byId(table.get(), 0);
        byId.GetFieldList()->SetField(byId.GetData(), IdField, static_cast<std::uint32_t>(1234));
        Check(table->GetEqual(byId, record), "get 1234");
        std::printf("  by key 1234:\n");
        PrintPerson(record);

        std::vector<Record> batch;
        Key walk(table.get(), 0);
        Check(table->GetFirst(walk, batch, 3), "first three");
        std::printf("  first three by Id:\n");
        for (const Record& r : batch) PrintPerson(r);
        Key back(table.get(), 0);
        Check(table->GetLast(back, record), "last");
        std::printf("  walking back from the last:\n");
        PrintPerson(record);
        Check(table->GetPrevious(back, record), "previous");
        PrintPerson(record);

        // Every city that begins with "Be", best score first within a city.
        Key prefix(table.get(), 1);
        prefix.GetFieldList()->SetField(prefix.GetData(), CityField, std::string("Be"));
        std::uint32_t matches = 0;
        std::printf("  best scores in cities beginning with \"Be\":\n");
        for (StatusCode s = table->GetFirstEqual(prefix, record, CityField, 2); s == Status::Success;
             s = table->GetNextEqual(prefix, record, CityField, 2)) {
            if (matches++ < 3) PrintPerson(record);
        }
        std::printf("  %u people live in a city beginning with \"Be\"\n", matches);

        // Update one person's score (an index field: the secondary index follows), remove another.
        Check(table->GetEqual(byId, record), "get 1234 again");
        record.GetFieldList()->SetField(record.GetData(), ScoreField, static_cast<std::int32_t>(-1));
        Check(table->WriteRecord(record), "update");
        Key gone(table.get(), 0);
        gone.GetFieldList()->SetField(gone.GetData(), IdField, static_cast<std::uint32_t>(0));
        Check(table->RemoveRecord(gone), "remove");
        table->GetCurrentRecords(count);
        std::printf("  after one update and one removal: %u records\n", count);
    }  // deleting the table closes its files in order

    // The record file holds the table's description and each index file its index's, so the name of
    // the record file brings back the table with both indexes.
    std::unique_ptr<ITable> table(OpenTable((directory / "People.tab").string(), true, true));
    std::uint32_t count = 0;
    table->GetCurrentRecords(count);
    Record record(table.get());
    Key byId(table.get(), 0);
    byId.GetFieldList()->SetField(byId.GetData(), IdField, static_cast<std::uint32_t>(1234));
    Check(table->GetEqual(byId, record), "get 1234 after reopening");
    std::printf("reopened People with %u indexes: %u records, #1234 kept its update:\n",
                table->GetNumberOfIndexes(), count);
    PrintPerson(record);

    // A copy of every file of the open table, which opens as the table does.
    const std::filesystem::path backup = directory / "backup";
    std::filesystem::create_directories(backup);
    Check(table->SaveAs(backup.string()), "save as");
    std::unique_ptr<ITable> saved(OpenTable((backup / "People.tab").string(), true, true));
    saved->GetCurrentRecords(count);
    std::printf("the copy in %s: %u records\n", backup.c_str(), count);
    saved.reset();

    RemoteTableRoundTrip(*table);
    table.reset();
    std::filesystem::remove_all(directory);
}

// An unmanaged table fixes every field at an offset of the caller's choice (a 64-byte record here)
// and lives in temporary memory: no directory, nothing left behind.
void UnmanagedTableInMemory() {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(1, "Key", FieldSpecification::UInt, 8, 0, 0),
        FieldSpecification(2, "Counter", FieldSpecification::UInt, 4, 8, 0),
        FieldSpecification(3, "Number", FieldSpecification::SInt, 8, 12, 0),
        FieldSpecification(4, "Text", FieldSpecification::TextArray, 44, 20, 0),
    };
    std::unique_ptr<ITable> table(UnmanagedTableFactory::GetInstance().Create(
        "Counters", TableSpecification::CreateRecordFileProperty, fields, 100, 64, 100, TableSpecification::CacheAll));
    std::vector<IndexSpecification> indexes = {IndexSpecification(
        "ByKey", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {{1, 0}})};
    table->CreateIndexes(indexes);
    Record record(table.get());
    for (std::uint64_t key = 0; key < 10; ++key) {
        table->ResetRecord(record);
        record.GetFieldList()->SetField(record.GetData(), 1, key);
        record.GetFieldList()->SetField(record.GetData(), 3, -static_cast<std::int64_t>(key) * 1000);
        Check(table->WriteRecord(record), "write counter");
    }
    // A record through a message and back, as its raw 64-byte image.
    MessageBuilder builder;
    Check(record.Serialize(builder), "serialise record");
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    Record copy;
    Check(copy.Deserialize(table.get(), validator), "deserialise record");
    std::int64_t number = 0;
    copy.GetFieldList()->GetField(copy.GetData(), 3, number);
    std::printf("unmanaged table of %u-byte records in memory; a record sent in %u bytes came back with "
                "Number %lld, equal: %s\n", table->GetRecordLength(), builder.GetLength(),
                static_cast<long long>(number), copy == record ? "yes" : "no");
}

}  // namespace

int main() {
    try {
        FieldsAndMessages();
        TypedFieldsAndOrdering();
        StoreSurvivesCloseAndOpen();
        UnmanagedTableInMemory();
        TableInADirectory();
    } catch (const Tavrin::Exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    return 0;
}
