// CheckIntegrity: proof that every index of a table agrees with its records.
//
// Each index checks its own structure first (a hash index its chains, free list and counts). Then
// a tree index is walked in key order through the table, and each key is checked against the one
// before it and against the key built from the record that it delivered; a hash index has no order,
// so the store is walked and each record is looked up through the index.
//
// The first disagreement ends the run. Its report is a few lines of plain text, each ending in
// File::GetEndOfLine(); it travels to the caller in the message of a DatabaseException 12, after
// two line ends. Any exception on the way (the index's own check, a walk that ends with a status
// other than 6, a key that can't be built) becomes a DatabaseException 12 with its text instead.

#include <sstream>
#include <string>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/File.h"
#include "tavrin/base/Throw.h"
#include "tavrin/indexes/IIndex.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/Record.h"
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/tables/Table.h"

namespace Tavrin::Database {

namespace {

constexpr const char* CheckOperation = "Tavrin::Database::Table::CheckIntegrity";

// The report of the first problem; thrown inside the run and caught around it.
struct Report {
    std::string text;
};

std::string Decimal(std::uint32_t value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

// A key's text, then the line end: "Not initialized\n" for a key that is not, else the values of
// its fields through its own layout.
std::string KeyText(const Key& key) {
    const std::string text =
        key.IsInitialized() ? key.GetFieldList()->ToLogString(key.GetData()) : std::string("Not initialized\n");
    return text + File::GetEndOfLine();
}

std::string Line(const std::string& text) { return text + File::GetEndOfLine(); }

std::string IndexLine(std::uint16_t number, const IndexSpecification& specification) {
    return Line("Index " + Decimal(number) + ": " + specification.GetName());
}

// Whether `a` sorts before `b`: an uninitialized key before an initialized one, then by table
// name, by index name, and within one index by the index's order.
bool IsBefore(const Key& a, const Key& b) {
    if (a.IsInitialized() != b.IsInitialized()) return !a.IsInitialized();
    if (!a.IsInitialized()) return false;
    if (!a.GetTableToken().IsSame(b.GetTableToken())) return a.GetTable()->GetName() < b.GetTable()->GetName();
    if (a.GetIndex() != b.GetIndex()) return a.GetIndex()->GetName() < b.GetIndex()->GetName();
    return a.GetIndex()->CompareKeys(a, b) < 0;
}

// Equal keys: neither initialized, or both of one table and one index and comparing 0. In an index
// with duplicates the record id behind the fields takes part, so an entry must name its own record.
bool IsEqual(const Key& a, const Key& b) {
    if (a.IsInitialized() != b.IsInitialized()) return false;
    if (!a.IsInitialized()) return true;
    return a.GetTableToken().IsSame(b.GetTableToken()) && a.GetIndex() == b.GetIndex() &&
           a.GetIndex()->CompareKeys(a, b) == 0;
}

void CheckFinalStatus(StatusCode status) {
    if (status != Status::NotFound) ThrowStatus(CheckOperation, status);
}

// The walk in key order. Only keys that the walk delivered are compared: the first entry has no
// predecessor (a fresh key's undefined fields would sort after defined ones in a descending field).
// The id of a report is that of the record the walk landed on.
void WalkTree(ITable& table, IIndex& index, std::uint16_t number, const IndexSpecification& specification) {
    Key current(&table, number);
    Key previous(&table, number);
    bool hasPrevious = false;
    Record record;
    StatusCode status = table.GetFirst(current, record);
    for (; status == Status::Success; status = table.GetNext(current, record)) {
        const std::string id = Decimal(record.GetRecordId());
        if (hasPrevious && IsBefore(current, previous)) {
            throw Report{IndexLine(number, specification) + Line("Out of order key found at id " + id) +
                         "Previous key .... " + KeyText(previous) + "Current key ..... " + KeyText(current)};
        }
        const Key recordKey(number, record);
        if (!IsEqual(recordKey, current)) {
            throw Report{IndexLine(number, specification) +
                         Line("Key at id " + id + " does not match the corresponding key from the retrieved record") +
                         "Current key ..... " + KeyText(current) + "Record key ...... " + KeyText(recordKey)};
        }
        previous = current;
        hasPrevious = true;
    }
    // A tree ends a walk with 23 at a key that is not beyond the one before; the index's own step
    // from the last key delivered hands out the key and record id that it met there.
    if (status == Status::Invalid && hasPrevious) {
        Key met = previous;
        std::uint32_t metId = Record::NoRecordId;
        auto* tree = dynamic_cast<Index*>(&index);
        if (tree != nullptr && tree->GetNext(met, metId) == Status::Invalid && metId != Record::NoRecordId) {
            throw Report{IndexLine(number, specification) + Line("Out of order key found at id " + Decimal(metId)) +
                         "Previous key .... " + KeyText(previous) + "Current key ..... " + KeyText(met)};
        }
    }
    CheckFinalStatus(status);
}

// The walk in store order: every record must be found through the index, and the record found
// must have the same key.
void WalkHash(ITable& table, std::uint16_t number, const IndexSpecification& specification) {
    std::uint32_t recordId = FieldListObject::NoRecordId;
    Record record;
    StatusCode status = table.GetFirstRecord(recordId, record);
    for (; status == Status::Success; status = table.GetNextRecord(recordId, record)) {
        const std::string id = Decimal(recordId);
        Key recordKey(number, record);
        Record found;
        const StatusCode lookup = table.GetEqual(recordKey, found);
        if (lookup != Status::Success) {
            throw Report{IndexLine(number, specification) +
                         Line("Failed to find matching key for recordId " + id + ", error " +
                              StatusCodeToString(lookup)) +
                         "Current key ..... " + KeyText(recordKey)};
        }
        const Key foundKey(number, found);
        if (!IsEqual(foundKey, recordKey)) {
            throw Report{IndexLine(number, specification) +
                         Line("Retrieved hash key does not match requested key for record id " + id) +
                         "Current key ..... " + KeyText(recordKey) + "Retrieved key ... " + KeyText(foundKey)};
        }
    }
    CheckFinalStatus(status);
}

void CheckIndex(ITable& table, std::uint16_t number) {
    IIndex* index = nullptr;
    StatusCode status = table.GetIndex(number, index);
    if (status != Status::Success) ThrowStatus(CheckOperation, status);
    index->CheckIntegrity();
    IndexSpecification specification;
    status = table.GetIndexSpecification(number, specification);
    if (status != Status::Success) ThrowStatus(CheckOperation, status);
    if (specification.IsTree()) {
        WalkTree(table, *index, number, specification);
    } else if (specification.IsHash()) {
        WalkHash(table, number, specification);
    }
}

}  // namespace

void Table::CheckIntegrity() {
    // A table without a store has nothing to check against; that is no finding of the check.
    if (HasNoStore()) ThrowStatus(CheckOperation, Status::NotAvailable);
    try {
        for (std::uint16_t number = 0; number < numberOfIndexes_; ++number) CheckIndex(*this, number);
    } catch (const Report& report) {
        ThrowDatabase(CheckOperation, DatabaseException::InvalidParameter, "\n\n%s", report.text.c_str());
    } catch (const Exception& exception) {
        ThrowDatabase(CheckOperation, DatabaseException::InvalidParameter, "%s", exception.ToString().c_str());
    }
}

}  // namespace Tavrin::Database
