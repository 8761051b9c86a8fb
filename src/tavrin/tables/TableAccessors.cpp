// What a table tells about itself: its description, its fields, its indexes and its counts. None of
// these takes the table's lock. A table without a store has no counts: 0 and status 13.

#include "tavrin/indexes/IIndex.h"
#include "tavrin/records/FieldListObject.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

TableSpecification Table::GetSpecification() {
    return TableSpecification(name_, IsManaged(), properties_, GetFieldSpecificationList(), initialMaxRecords_,
                              GetRecordLength(), growRecords_, cacheSize_);
}

bool Table::GetMatchingFields(const FieldSpecification& pattern, std::vector<std::uint16_t>& fieldIds) {
    bool found = false;
    for (auto field = fieldList_->Begin(); field != fieldList_->End(); ++field) {
        if (!field.GetSpecification().IsMatch(pattern)) continue;
        fieldIds.push_back(field.GetId());
        found = true;
    }
    return found;
}

std::vector<FieldSpecification> Table::GetFieldSpecificationList() { return fieldList_->GetFieldSpecificationList(); }

StatusCode Table::GetFieldSpecification(std::uint16_t id, FieldSpecification& specification) {
    return fieldList_->GetFieldSpecification(id, specification);
}

void Table::GetFirstFieldSpecification(FieldSpecification& specification) {
    fieldList_->GetFirstFieldSpecification(specification);
}

StatusCode Table::GetNextFieldSpecification(FieldSpecification& specification) {
    return fieldList_->GetNextFieldSpecification(specification);
}

bool Table::GetMatchingIndexes(const IndexSpecification& pattern, std::vector<IndexSpecification>& specifications) {
    bool found = false;
    for (const auto& index : indexes_) {
        IndexSpecification specification = index->GetSpecification();
        if (!specification.IsMatch(pattern)) continue;
        specifications.push_back(std::move(specification));
        found = true;
    }
    return found;
}

std::vector<IndexSpecification> Table::GetIndexSpecificationList() {
    std::vector<IndexSpecification> specifications;
    specifications.reserve(indexes_.size());
    for (const auto& index : indexes_) specifications.push_back(index->GetSpecification());
    return specifications;
}

StatusCode Table::GetIndexSpecification(std::uint16_t number, IndexSpecification& specification) {
    if (number >= numberOfIndexes_) return Status::NotFound;
    specification = indexes_[number]->GetSpecification();
    return Status::Success;
}

std::vector<std::uint16_t> Table::GetFieldIdList() { return fieldList_->GetFieldIdList(); }

void Table::GetFirstFieldId(std::uint16_t& id) { fieldList_->GetFirstFieldId(id); }

StatusCode Table::GetNextFieldId(std::uint16_t& id) { return fieldList_->GetNextFieldId(id); }

StatusCode Table::GetFieldType(std::uint16_t id, FieldSpecification::Type& type) {
    return fieldList_->GetType(id, type);
}

StatusCode Table::GetMaxRecords(std::uint32_t& maxRecords) {
    if (HasNoStore()) {
        maxRecords = 0;
        return Status::NotAvailable;
    }
    maxRecords = dataStore_->GetMaxEntries();
    return Status::Success;
}

StatusCode Table::GetCurrentRecords(std::uint32_t& currentRecords) {
    if (HasNoStore()) {
        currentRecords = 0;
        return Status::NotAvailable;
    }
    currentRecords = dataStore_->GetCurrentEntries();
    return Status::Success;
}

StatusCode Table::GetIndex(std::uint16_t number, IIndex*& index) {
    if (number >= numberOfIndexes_) return Status::IndexConflict;
    index = indexes_[number].get();
    return Status::Success;
}

bool Table::IsOrderedBefore(const FieldListObject& left, const FieldListObject& right) {
    return left.IsInitialized() && !right.IsInitialized();
}

bool Table::IsSameBinding(const FieldListObject& left, const FieldListObject& right) {
    return left.IsInitialized() && right.IsInitialized() && left.GetTableToken().IsSame(right.GetTableToken());
}

bool Table::HasField(std::uint16_t id) {
    FieldSpecification::Type type;
    return fieldList_->GetType(id, type) == Status::Success;
}

}  // namespace Tavrin::Database
