// Records, keys, statuses and counts in messages, and the description of a table from which a
// remote table is built. None of these takes the table's lock.
//
// Message forms, little-endian, every count and status a 32-bit unsigned number:
//   keys:               count, then each Key in its serialised form (records/Key.h)
//   records:            count, then each Record in its serialised form (records/Record.h)
//   statuses, records:  count, then each status (its low 8 bits carry it), then the records form
//   counts:             two numbers whose meaning lies with the caller
//   specification:      the TableSpecification (version byte 1 first), the number of indexes, then
//                       each IndexSpecification in number order

#include <new>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/PrivateMutexFactory.h"
#include "tavrin/base/Throw.h"
#include "tavrin/indexes/IIndex.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

namespace {

// The count of a message vector. Vectors longer than a 32-bit count can say are not sent.
StatusCode AppendCount(MessageBuilder& builder, std::size_t count) {
    if (count > 0xFFFFFFFFu) return Status::Invalid;
    return builder.AppendUInt32(static_cast<std::uint32_t>(count));
}

}  // namespace

StatusCode Table::SerializeSpecification(MessageBuilder& builder) {
    StatusCode status = GetSpecification().Serialize(builder, TableSpecification::CurrentVersion);
    if (status != Status::Success) return status;
    status = builder.AppendUInt32(numberOfIndexes_);
    for (std::uint16_t number = 0; status == Status::Success && number < numberOfIndexes_; ++number) {
        status = indexes_[number]->GetSpecification().Serialize(builder);
    }
    return status;
}

void Table::ConstructDescribed(const TableSpecification& specification, FieldListMaker makeFieldList) {
    name_ = specification.GetName();
    properties_ = specification.GetProperties();
    initialMaxRecords_ = specification.GetInitialMaximumRecords();
    growRecords_ = specification.GetGrowRecords();
    cacheSize_ = specification.GetCacheSize();
    mutex_.reset(PrivateMutexFactory::GetInstance().Create(false));
    fieldList_.reset(makeFieldList(specification.GetFields(), specification.GetRecordLength()));
    if (!fieldList_) ThrowDatabase("Tavrin::Database::RemoteTable::Create", DatabaseException::AllocateFieldList);
}

void Table::AppendDescribedIndex(std::unique_ptr<IIndex> index) {
    indexes_.push_back(std::move(index));
    ++numberOfIndexes_;
    ApplyPrimaryRule(*indexes_.back());
}

StatusCode Table::SerializeRecords(MessageBuilder& builder, const std::vector<unsigned char>& statuses,
                                   const std::vector<Record>& records) {
    StatusCode status = AppendCount(builder, statuses.size());
    for (auto each = statuses.begin(); status == Status::Success && each != statuses.end(); ++each) {
        status = builder.AppendUInt32(*each);
    }
    return status == Status::Success ? SerializeRecords(builder, records) : status;
}

StatusCode Table::SerializeRecords(MessageBuilder& builder, const std::vector<Record>& records) {
    StatusCode status = AppendCount(builder, records.size());
    for (auto record = records.begin(); status == Status::Success && record != records.end(); ++record) {
        if (!record->GetTableToken().IsSame(GetIdentityToken())) return Status::OtherTable;
        status = record->Serialize(builder);
    }
    return status;
}

StatusCode Table::SerializeKeys(MessageBuilder& builder, const std::vector<Key>& keys) {
    StatusCode status = AppendCount(builder, keys.size());
    for (auto key = keys.begin(); status == Status::Success && key != keys.end(); ++key) {
        if (!key->IsInitialized() || !key->GetTableToken().IsSame(GetIdentityToken()) ||
            key->GetIndexNumber() >= numberOfIndexes_) {
            return Status::KeyInvalid;
        }
        status = key->Serialize(builder);
    }
    return status;
}

StatusCode Table::DeserializeRecords(MessageValidator& validator, std::vector<unsigned char>& statuses,
                                     std::vector<Record>& records) {
    std::uint32_t count = 0;
    StatusCode status = validator.ReadUInt32(count);
    for (std::uint32_t read = 0; status == Status::Success && read < count; ++read) {
        std::uint32_t value = 0;
        status = validator.ReadUInt32(value);
        if (status == Status::Success) statuses.push_back(static_cast<unsigned char>(value & 0xFF));
    }
    return status == Status::Success ? DeserializeRecords(validator, records) : status;
}

StatusCode Table::DeserializeCounts(MessageValidator& validator, std::uint32_t& first, std::uint32_t& second) {
    const StatusCode status = validator.ReadUInt32(first);
    return status == Status::Success ? validator.ReadUInt32(second) : status;
}

StatusCode Table::DeserializeRecords(MessageValidator& validator, std::vector<Record>& records) {
    std::uint32_t count = 0;
    StatusCode status = validator.ReadUInt32(count);
    if (status != Status::Success) return status;
    // The records are added one by one rather than made blank all at once, so that a count that the
    // message can't hold ends in status 23 where the bytes run out instead of in a huge allocation.
    const std::size_t oldSize = records.size();
    try {
        for (std::uint32_t read = 0; status == Status::Success && read < count; ++read) {
            records.emplace_back(this);
            status = records.back().Deserialize(this, validator);
        }
    } catch (const Exception&) {
        status = Status::OutOfMemory;  // a blank record that could not be allocated
    } catch (const std::bad_alloc&) {
        status = Status::OutOfMemory;
    }
    if (status != Status::Success) records.erase(records.begin() + static_cast<std::ptrdiff_t>(oldSize), records.end());
    return status;
}

StatusCode Table::DeserializeKeys(MessageValidator& validator, std::vector<Key>& keys) {
    std::uint32_t count = 0;
    StatusCode status = validator.ReadUInt32(count);
    Key scratch;
    for (std::uint32_t read = 0; status == Status::Success && read < count; ++read) {
        status = scratch.Deserialize(this, validator);
        if (status == Status::Success) keys.push_back(scratch);
    }
    return status;
}

}  // namespace Tavrin::Database
