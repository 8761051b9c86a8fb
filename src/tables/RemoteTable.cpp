#include "tables/RemoteTable.h"

#include <memory>
#include <new>

#include "base/DatabaseException.h"
#include "base/MutexHolder.h"
#include "base/Throw.h"
#include "indexes/Index.h"
#include "records/ManagedFieldListFactory.h"
#include "records/UnmanagedFieldListFactory.h"
#include "schema/IndexSpecification.h"
#include "schema/TableSpecification.h"

namespace Tavrin::Database {

namespace {

constexpr const char* kCreate = "Tavrin::Database::RemoteTable::Create";

FieldList* MakeManagedFieldList(const std::vector<FieldSpecification>& fields, std::uint32_t) {
    return ManagedFieldListFactory::GetInstance().Create(fields);
}

FieldList* MakeUnmanagedFieldList(const std::vector<FieldSpecification>& fields, std::uint32_t recordLength) {
    return UnmanagedFieldListFactory::GetInstance().Create(fields, recordLength);
}

void ThrowOnFailure(StatusCode status) {
    if (status != Status::Success) ThrowStatus(kCreate, status);
}

}  // namespace

// The indexes and the field list go in Table's order; there is no store to save.
RemoteTable::~RemoteTable() = default;

void RemoteTable::Construct(MessageValidator& validator) {
    TableSpecification specification;
    ThrowOnFailure(specification.Deserialize(validator));
    std::uint32_t count = 0;
    ThrowOnFailure(validator.ReadUInt32(count));
    // Each description is read before it is kept, so a count that the message can't hold ends where
    // the bytes run out.
    std::vector<IndexSpecification> indexSpecifications;
    for (std::uint32_t read = 0; read < count; ++read) {
        IndexSpecification index;
        ThrowOnFailure(index.Deserialize(validator));
        indexSpecifications.push_back(std::move(index));
    }

    managed_ = specification.IsManaged();
    ConstructDescribed(specification, managed_ ? &MakeManagedFieldList : &MakeUnmanagedFieldList);
    const IFieldListFactory& factory = managed_ ? static_cast<const IFieldListFactory&>(ManagedFieldListFactory::GetInstance())
                                                : UnmanagedFieldListFactory::GetInstance();
    MutexHolder holder(GetMutex());
    for (const IndexSpecification& each : indexSpecifications) {
        std::unique_ptr<IIndex> index(new (std::nothrow) Index(each, *GetFieldList(), factory));
        if (!index) ThrowDatabase(kCreate, DatabaseException::AllocateIndex);
        AppendDescribedIndex(std::move(index));
    }
}

void RemoteTable::CreateIndexes(std::vector<IndexSpecification>&) {
    ThrowDatabase("Tavrin::Database::RemoteTable::CreateIndexes", DatabaseException::AllocateIndex);
}

void RemoteTable::CreateTemporaryIndex(IndexSpecification&) {
    ThrowDatabase("Tavrin::Database::RemoteTable::CreateTemporaryIndex", DatabaseException::AllocateIndex);
}

// ---- Nothing to work on without a store: 13 ----------------------------------------------------

void RemoteTable::CreateRecordFile() {
    ThrowStatus("Tavrin::Database::RemoteTable::CreateRecordFile", Status::NotAvailable);
}
StatusCode RemoteTable::OpenRecordFile() { return Status::NotAvailable; }
StatusCode RemoteTable::CloseRecordFile() { return Status::NotAvailable; }
StatusCode RemoteTable::Convert() { return Status::NotAvailable; }
StatusCode RemoteTable::SaveAs(const std::string&) { return Status::NotAvailable; }
StatusCode RemoteTable::CopyFiles(const std::string&, const std::string&) { return Status::NotAvailable; }
ITable* RemoteTable::Clone(const std::string&, bool, bool, std::uint32_t) {
    ThrowStatus("Tavrin::Database::RemoteTable::Clone", Status::NotAvailable);
}
StatusCode RemoteTable::Clear() { return Status::NotAvailable; }
StatusCode RemoteTable::CopyRecords(ITable*, bool, std::uint32_t) { return Status::NotAvailable; }

StatusCode RemoteTable::WriteRecord(Record&, Record&) { return Status::NotAvailable; }
StatusCode RemoteTable::WriteRecord(Record&, const std::vector<std::uint16_t>&) { return Status::NotAvailable; }
StatusCode RemoteTable::WriteRecord(Record&) { return Status::NotAvailable; }
StatusCode RemoteTable::RemoveRecord(Key&, Record&) { return Status::NotAvailable; }
StatusCode RemoteTable::RemoveRecord(Key&) { return Status::NotAvailable; }

StatusCode RemoteTable::GetEqual(std::vector<Key>&, std::vector<unsigned char>&, std::vector<Record>&) {
    return Status::NotAvailable;
}
StatusCode RemoteTable::GetEqual(Key&, Record&) { return Status::NotAvailable; }
StatusCode RemoteTable::GetFirst(Key&, std::vector<Record>&, std::uint32_t) { return Status::NotAvailable; }
StatusCode RemoteTable::GetFirst(Key&, Record&) { return Status::NotAvailable; }
StatusCode RemoteTable::GetLast(Key&, std::vector<Record>&, std::uint32_t) { return Status::NotAvailable; }
StatusCode RemoteTable::GetLast(Key&, Record&) { return Status::NotAvailable; }
StatusCode RemoteTable::GetNext(Key&, std::vector<Record>&, std::uint32_t) { return Status::NotAvailable; }
StatusCode RemoteTable::GetNext(Key&, Record&) { return Status::NotAvailable; }
StatusCode RemoteTable::GetPrevious(Key&, std::vector<Record>&, std::uint32_t) { return Status::NotAvailable; }
StatusCode RemoteTable::GetPrevious(Key&, Record&) { return Status::NotAvailable; }
StatusCode RemoteTable::GetFirstEqual(Key&, std::vector<Record>&, std::uint16_t, std::uint32_t, std::uint32_t) {
    return Status::NotAvailable;
}
StatusCode RemoteTable::GetFirstEqual(Key&, Record&, std::uint16_t, std::uint32_t) { return Status::NotAvailable; }
StatusCode RemoteTable::GetLastEqual(Key&, std::vector<Record>&, std::uint16_t, std::uint32_t, std::uint32_t) {
    return Status::NotAvailable;
}
StatusCode RemoteTable::GetLastEqual(Key&, Record&, std::uint16_t, std::uint32_t) { return Status::NotAvailable; }
StatusCode RemoteTable::GetNextEqual(Key&, std::vector<Record>&, std::uint16_t, std::uint32_t, std::uint32_t) {
    return Status::NotAvailable;
}
StatusCode RemoteTable::GetNextEqual(Key&, Record&, std::uint16_t, std::uint32_t) { return Status::NotAvailable; }
StatusCode RemoteTable::GetPreviousEqual(Key&, std::vector<Record>&, std::uint16_t, std::uint32_t, std::uint32_t) {
    return Status::NotAvailable;
}
StatusCode RemoteTable::GetPreviousEqual(Key&, Record&, std::uint16_t, std::uint32_t) {
    return Status::NotAvailable;
}
StatusCode RemoteTable::GetFirstRecord(std::uint32_t&, std::vector<Record>&, std::uint32_t) {
    return Status::NotAvailable;
}
StatusCode RemoteTable::GetFirstRecord(std::uint32_t&, Record&) { return Status::NotAvailable; }
StatusCode RemoteTable::GetNextRecord(std::uint32_t&, std::vector<Record>&, std::uint32_t) {
    return Status::NotAvailable;
}
StatusCode RemoteTable::GetNextRecord(std::uint32_t&, Record&) { return Status::NotAvailable; }

void RemoteTable::CheckIntegrity() {
    ThrowStatus("Tavrin::Database::RemoteTable::CheckIntegrity", Status::NotAvailable);
}

StatusCode RemoteTable::GetMaxRecords(std::uint32_t& maxRecords) {
    maxRecords = 0;
    return Status::NotAvailable;
}

StatusCode RemoteTable::GetCurrentRecords(std::uint32_t& currentRecords) {
    currentRecords = 0;
    return Status::NotAvailable;
}

}  // namespace Tavrin::Database
