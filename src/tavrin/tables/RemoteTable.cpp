#include "tavrin/tables/RemoteTable.h"

#include <memory>
#include <new>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/MutexHolder.h"
#include "tavrin/base/Throw.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/records/ManagedFieldListFactory.h"
#include "tavrin/records/UnmanagedFieldListFactory.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/TableFactorySupport.h"
#include "tavrin/tables/TableIndexRules.h"

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

    // A description from a message passes what a factory checks before it makes anything, the bound
    // on the record length included; the field list then validates every field.
    managed_ = specification.IsManaged();
    const std::string& name = specification.GetName();
    TableFactorySupport::CheckSettings(kCreate,
                                       {name, nullptr, specification.GetProperties(), specification.GetFields(),
                                        specification.GetInitialMaximumRecords(), specification.GetRecordLength(),
                                        specification.GetGrowRecords(), specification.GetCacheSize()},
                                       managed_);
    ConstructDescribed(specification, managed_ ? &MakeManagedFieldList : &MakeUnmanagedFieldList);
    const IFieldListFactory& factory = managed_ ? static_cast<const IFieldListFactory&>(ManagedFieldListFactory::GetInstance())
                                                : UnmanagedFieldListFactory::GetInstance();
    // Every index is checked as a table checks one that it creates, against those before it, and
    // made before any is appended.
    std::vector<std::unique_ptr<IIndex>> indexes;
    indexes.reserve(indexSpecifications.size());
    for (const IndexSpecification& each : indexSpecifications) {
        CheckNewIndex(kCreate, name, indexes, each);
        std::unique_ptr<IIndex> index(new (std::nothrow) Index(each, *GetFieldList(), factory));
        if (!index) ThrowDatabase(kCreate, DatabaseException::AllocateIndex);
        indexes.push_back(std::move(index));
    }
    MutexHolder holder(GetMutex());
    for (std::unique_ptr<IIndex>& index : indexes) AppendDescribedIndex(std::move(index));
}

void RemoteTable::CreateIndexes(std::vector<IndexSpecification>&) {
    ThrowDatabase("Tavrin::Database::RemoteTable::CreateIndexes", DatabaseException::AllocateIndex);
}

void RemoteTable::CreateTemporaryIndex(IndexSpecification&) {
    ThrowDatabase("Tavrin::Database::RemoteTable::CreateTemporaryIndex", DatabaseException::AllocateIndex);
}

}  // namespace Tavrin::Database
