// The integrity checks of a hash index and the dumps in their reports. Each check gathers the texts
// of the first fault it meets, with the dumps of the entries and the bucket concerned, and throws
// them as one DatabaseException code 12 (format "\n%s", cut to the exception's message buffer).
// Labels are 21 characters wide; offsets print unsigned, so -1 shows as 4294967295, and record ids
// signed.
#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/indexes/HashIndexBucketHandler.h"
#include "tavrin/indexes/HashIndexEntryHandler.h"

namespace Tavrin::Database {

namespace {

constexpr const char* FreeListOperation = "Tavrin::Database::HashIndex::EntryHandler::CheckFreeListIntegrity";
constexpr const char* EntryListOperation = "Tavrin::Database::HashIndex::EntryHandler::CheckEntryListIntegrity";
constexpr const char* BucketOperation = "Tavrin::Database::HashIndex::BucketHandler::CheckIntegrity";

std::string Line(const char* label, std::uint32_t value) { return label + std::to_string(value) + "\n"; }

[[noreturn]] void Report(ThrowSite site, const std::string& text) {
    ThrowDatabase(site, DatabaseException::InvalidParameter, "\n%s", text.c_str());
}

}  // namespace

std::string HashIndex::EntryHandler::Dump(std::uint32_t entry) const {
    const unsigned char* bytes = area_ + entry;
    return Line("Offset ............. ", DecodeU32(bytes + EntryOffsetOffset)) +
           Line("Previous ........... ", DecodeU32(bytes + PreviousOffset)) +
           Line("Next ............... ", DecodeU32(bytes + NextOffset)) +
           "Record Id .......... " + std::to_string(DecodeI32(bytes + RecordIdOffset)) + "\n" +
           Line("Key Offset ......... ", DecodeU32(bytes + KeyOffsetOffset)) + "Key ................ " +
           owner_.GetFieldList()->ToLogString(GetKey(entry)) + "\n";
}

std::string HashIndex::BucketHandler::Dump(std::uint32_t bucket) const {
    return Line("Head entry ......... ", GetHead(bucket)) + Line("Tail entry ......... ", GetTail(bucket));
}

void HashIndex::EntryHandler::CheckFreeListIntegrity() const {
    const std::uint32_t head = GetFreeHead();
    const std::uint32_t tail = GetFreeTail();
    std::vector<bool> seen(GetMaxEntries());
    std::string text;
    std::uint32_t last = NoEntry;
    for (std::uint32_t offset = head; offset != NoEntry; offset = GetNext(offset)) {
        if (!IsEntry(offset)) {
            text = "Free list contains an invalid offset\n" + (last != NoEntry ? Dump(last) : std::string());
            break;
        }
        if (seen[offset / entrySize_]) {
            text = "Free list contains a loop\n" + Dump(offset);
            break;
        }
        seen[offset / entrySize_] = true;
        last = offset;
    }
    if (text.empty() && last != NoEntry && tail != last) {
        text = "End of free list not equal to the last entry in it\n" + Dump(last);
    } else if (text.empty() && last == NoEntry && tail != NoEntry) {
        text = "End of free list isn't undefined\n";
    }
    if (text.empty()) return;
    Report(FreeListOperation, text + Line("Start free list .... ", head) + Line("End free list ...... ", tail));
}

void HashIndex::EntryHandler::CheckEntryListIntegrity(const BucketHandler& buckets) const {
    const std::uint32_t maxEntries = GetMaxEntries();
    // The free list once, instead of once for each free entry; a walk that meets a loop or a link
    // that names no entry stops there, and the entries behind it count as off the list.
    std::vector<bool> free(maxEntries);
    std::uint32_t offset = GetFreeHead();
    for (std::uint32_t step = 0; offset != NoEntry && IsEntry(offset) && step < maxEntries; ++step) {
        free[offset / entrySize_] = true;
        offset = GetNext(offset);
    }
    std::uint32_t used = 0;
    for (std::uint32_t number = 0; number < maxEntries; ++number) {
        const std::uint32_t entry = number * entrySize_;
        if (GetRecordId(entry) == NoEntry) {
            if (!free[number]) Report(EntryListOperation, "Failed to find free entry in free list\n" + Dump(entry));
            continue;
        }
        ++used;
        const std::uint32_t bucket = buckets.GetBucket(GetKey(entry));
        std::uint32_t found = NoEntry;
        if (Find(buckets.GetHead(bucket), GetKey(entry), found) != Status::Success || found != entry) {
            Report(EntryListOperation,
                   "Failed to find allocated entry in bucket\n" + buckets.Dump(bucket) + Dump(entry));
        }
    }
    if (used != GetUsedEntries()) {
        Report(EntryListOperation, "Count of entries in use not equal to the entries allocated\n" +
                                       Line("Used entries ....... ", GetUsedEntries()) +
                                       Line("Allocated entries .. ", used));
    }
}

void HashIndex::BucketHandler::CheckIntegrity(const EntryHandler& entries) const {
    const std::uint32_t inUse = GetBucketsInUse();
    const std::uint32_t entrySize = entries.GetEntrySize();
    // The bucket that reached each entry last: an entry reached twice by one walk closes a loop.
    std::vector<std::uint32_t> reachedBy(entries.GetMaxEntries(), NoEntry);
    for (std::uint32_t bucket = 0; bucket < inUse; ++bucket) {
        std::string text;
        std::uint32_t last = NoEntry;
        bool ended = true;
        for (std::uint32_t offset = GetHead(bucket); offset != NoEntry; offset = entries.GetNext(offset)) {
            if (!entries.IsEntry(offset)) {
                text += "Bucket contains an invalid offset\n" + (last != NoEntry ? entries.Dump(last) : std::string());
                ended = false;
                break;
            }
            if (reachedBy[offset / entrySize] == bucket) {
                text += "Bucket contains a loop\n" + entries.Dump(offset);
                ended = false;
                break;
            }
            reachedBy[offset / entrySize] = bucket;
            if (last == NoEntry) {
                if (entries.GetPrevious(offset) != NoEntry) {
                    text += "Head entry's previous is not undefined\n" + entries.Dump(offset);
                }
            } else {
                if (entries.GetNext(last) != offset) {
                    text += "Previous entry's next does not point to current entry\n" + entries.Dump(last) +
                            entries.Dump(offset);
                }
                if (entries.GetPrevious(offset) != last) {
                    text += "Current entry's previous does not point to previous entry\n" + entries.Dump(last) +
                            entries.Dump(offset);
                }
            }
            last = offset;
        }
        if (ended && last != NoEntry && GetTail(bucket) != last) {
            text += "Tail of bucket not equal to the last entry in it\n" + entries.Dump(last);
        } else if (ended && last == NoEntry && GetTail(bucket) != NoEntry) {
            text += "Tail of bucket isn't undefined\n";
        }
        if (!text.empty()) Report(BucketOperation, text + Line("Bucket ............. ", bucket) + Dump(bucket));
    }
    for (std::uint32_t bucket = inUse; bucket < GetCapacity(); ++bucket) {
        if (GetHead(bucket) != NoEntry || GetTail(bucket) != NoEntry) {
            Report(BucketOperation,
                   "Unused bucket with defined head/tail\n" + Line("Bucket ............. ", bucket) + Dump(bucket));
        }
    }
}

}  // namespace Tavrin::Database
