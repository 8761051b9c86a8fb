#pragma once
// The interface of every table.
//
// A table owns one FieldList (the record layout), one data store (the records; none in a remote
// table), its indexes (numbered from 0 in the order of their creation) and, with property bit 1, a
// mutex private to the process. A caller gets an ITable* from a factory, OpenTable,
// TableSpecification::CreateTable or Clone, owns it and deletes it.
//
// Failures: everything that builds or reshapes a table throws (DatabaseException or
// StatusCodeException); everything that works on records and keys returns a status (base/Status.h).
// A record of another table is refused with status 30, a key of another table with 27.
//
// Locking: with property bit 1 the record operations, walks, SaveAs, Clear, CreateIndexes and
// CreateTemporaryIndex hold the table's mutex for the whole call (a batch for the whole batch).
// Accessors, the record file operations, Convert, Clone, CopyRecords, CheckIntegrity and the
// serialising operations take no lock. A table without bit 1 relies on its caller.
//
// The operations stand in the order of the virtual table; overloads of one name stand together,
// the batch form before the one-record form.

#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/indexes/KeyValueList.h"
#include "tavrin/records/FieldSpecification.h"
#include "tavrin/records/IdentityToken.h"
#include "tavrin/tables/ConversionReport.h"

namespace Tavrin {
class MessageBuilder;
class MessageValidator;
}  // namespace Tavrin

namespace Tavrin::Database {

class FieldList;
class FieldListObject;
class IIndex;
class IndexSpecification;
class Key;
class Record;
class TableSpecification;

/// The interface of every table: a record layout, a store of records, the indexes over them, and
/// the operations that write, read, walk and serialise records and keys.
///
/// A caller gets an ITable* from ManagedTableFactory, UnmanagedTableFactory, RemoteTableFactory or
/// TableSpecification::CreateTable, owns it and deletes it; the records and keys bound to it stop
/// being initialized then. Building or reshaping a table throws; the operations on records and
/// keys answer a status: 0 for success, 30 for a record and 27 for a key that is not bound to this
/// table. With property bit 1 a table has a mutex private to the process, which the operations that
/// say so hold for their whole call; a table without it does no locking and relies on its caller.
/// A remote table (RemoteTableFactory) describes a table of another process and has no store and
/// no files: whatever needs records answers 13 or throws StatusCodeException 13.
class ITable {
public:
    /// Issues the table's identity token, which every record and key bound to it copies.
    ITable() : identityToken_(IdentityToken::Issue(this)) {}
    /// Not copyable: records and keys are bound to one table object.
    ITable(const ITable&) = delete;
    /// Not copyable: records and keys are bound to one table object.
    ITable& operator=(const ITable&) = delete;
    /// Saves and closes the table's files (a table without files loses its records), then revokes
    /// the token: every record and key bound to the table stops being initialized.
    virtual ~ITable() { identityToken_.Revoke(); }

    /// @name Record file
    /// None of these takes the mutex but Sync: open, close and create the record file before the
    /// table is shared. While the table has indexes the record file stays as it is.
    ///@{

    /// Creates a new, empty record file and opens the store on it: `directory + fileName` with a
    /// new Uuid, or a temporary file for a table without files (IsInMemory). The table's
    /// description goes into the file. An existing file of that name is replaced once the new one
    /// is complete; until then, and when creation fails, the former file stays. Throws
    /// StatusCodeException 13 for a table without a store, StatusCodeException 26 while the table
    /// has indexes, and what the store throws (StatusCodeException 47 when the store is open
    /// already, 17 when another opener holds the file, else the status of the failure, as for a
    /// directory that does not exist) with DatabaseException 9
    /// `error creating record file for table <name>` added to its chain. Takes no lock.
    virtual void CreateRecordFile() = 0;
    /// Opens the existing record file `directory + fileName` and checks the description stored in
    /// it against the table's name, layout, fields and record length (property bits and sizing are
    /// not compared; GetMaxRecords then gives the file's). 0; 13 for a table without a store; 26
    /// while the table has indexes; 6 for a table without files and for a missing file; 17 when the
    /// store is open already or another opener holds the file; 25 for a file that holds another
    /// table's description or a store of other sizes, unless property bit 2 is set: then the result
    /// is that of Convert, which throws what it throws; 23 for a file left open by a crash (refused once: the
    /// next open passes) or a damaged header; 22 for a file shorter than its header; 21 for a
    /// store of another format; 41 when memory runs out; 1 for any other failure. A failed open
    /// leaves the store as it was. Takes no lock.
    virtual StatusCode OpenRecordFile() = 0;
    /// Saves the store's header and the table's description into the record file and closes it;
    /// the temporary file of a table without files is removed, with its records. 0, also when the
    /// file is not open; 13 for a table without a store; 26 while the table has indexes (a table
    /// with indexes closes its file when it is deleted); else the status of the save, and the file
    /// is closed all the same. Takes no lock.
    virtual StatusCode CloseRecordFile() = 0;
    /// Writes the record file and every index file through to the disk (msync), with the store's
    /// header and description saved first. What a completed call wrote survives the death of the
    /// process anyway; what survives a power loss is what came before the last Sync or orderly
    /// close. 0, also for a table without files (in memory); 16 when the record file is not open;
    /// 13 for a table without a store (remote); else the status of the write that failed. Holds
    /// the mutex.
    virtual StatusCode Sync() = 0;
    /// Rewrites the closed record file, written with another description, into this table's layout
    /// and opens the store on it: the fields are matched by name (and type); a field of the new
    /// layout without a partner is undefined, a field that the new layout lacks is dropped, an
    /// integer of another width converts by value, and a value that does not fit its new field
    /// stays undefined and is counted (GetLastConversionReport). Records get new ids, in the order
    /// of the old ones. The new file takes the record file's name only when it is complete; the old
    /// record file (a disk store's records file with it) and the old index files move into the
    /// sub-directory "Convert", replacing what an earlier conversion left there. A kill at any
    /// moment leaves the old table or the complete new one. 0; 13 for a table without files or
    /// without a store; 26 while the table has indexes; 17 while the store is open; 6 when there is
    /// no record file; 25 when it holds a table of another name; 1 when "Convert" can't be made;
    /// else the status of the step that failed, and then the table's files are as before. Throws
    /// what opening the old table throws (as OpenTable), and the store's exceptions. Takes no lock.
    virtual StatusCode Convert() = 0;
    /// What the last Convert of this table that ran to its end did; all zero before one did.
    virtual ConversionReport GetLastConversionReport() = 0;
    /// Writes a copy of the record file, with the store's header and description saved first, and
    /// then of every index's files, in number order, into `directory` (empty: the working
    /// directory), under the names the table has in its own directory; the copies carry the table's
    /// Uuid and open with OpenTable. The table stays open on its own files. Each copy appears
    /// under its name only when complete, replacing a file there. 0, without writing, for a table
    /// without files (in memory); 13 for a table without a store (remote); 16 when the record file
    /// is not open; 23, with nothing written, when `directory` holds the table's own files; else
    /// the first status that is not 0 (17 when another table holds a file of that name), and then
    /// every file that this call wrote is removed again, so that no part of a set is left. Holds
    /// the mutex.
    virtual StatusCode SaveAs(const std::string& directory) = 0;
    /// Copies the closed files of the table of this name from the directory `source` (empty: the
    /// working directory) to `destination`: the record file and the files of every index whose
    /// file in `source` is named exactly for this table and the index name stored inside (another
    /// table's files are never copied, even where its name begins with this one's). The files are
    /// locked while they are copied, and the copy is one set: 0; 13 for a table without a store;
    /// 6 when `source` or the record file is missing; 17 while a table holds one of the files;
    /// 23 when both are the same directory; else the status of the copy that failed, after every
    /// copy made is removed again. Uses neither the open store nor the mutex.
    virtual StatusCode CopyFiles(const std::string& source, const std::string& destination) = 0;
    ///@}

    /// @name Indexes
    /// The indexes are numbered from 0 in the order of creation; each lives until the table is
    /// deleted. The primary index, by which WriteRecord knows a record, is the index that is
    /// primary unique, else the first unique one; a table without one refuses writes (34).
    ///@{

    /// Creates the table's permanent indexes in the order of `specifications`, and writes each
    /// index's number into its specification. In a table with files whose store holds records, an
    /// index file beside the record file that carries its Uuid and was closed in order is opened;
    /// one that is missing, stale or was left open by a crash is made again and rebuilt from the
    /// records, without a word to the caller. Otherwise each index starts in a new file (a
    /// temporary one for a table without files, rebuilt from any records). Then the record file
    /// and every index get a new Uuid. An empty vector makes no index and may be followed by
    /// another call. Throws DatabaseException 12 when the table has indexes already, 10 when the
    /// record file is not open; for a specification, DatabaseException 12 for one that
    /// IndexSpecification::Validate refuses, a name that an index has already, a second primary
    /// unique index, no key fields, an unknown type or a key field that the table lacks, 11 for a
    /// hash index (not available yet), 4 when the index can't be allocated, StatusCodeException 26
    /// when the records hold a key of the index twice, and what the index's files throw. The
    /// failing index leaves no file behind that an open would trust; the indexes made before it
    /// stay, with the old Uuid, so a further call is refused with 12 unless there are none. A
    /// remote table throws DatabaseException 4 whatever the arguments. Holds the mutex for the
    /// whole call; accessors, BuildRecord and the message operations, which take no lock, must not
    /// run on other threads meanwhile.
    virtual void CreateIndexes(std::vector<IndexSpecification>& specifications) = 0;
    /// Adds one index to a table that has a primary index, as CreateIndexes makes each (the number
    /// goes into `specification`, the same checks and throws), under the record file's current
    /// Uuid. Its files stay in the table's directory after the table is deleted. Throws
    /// DatabaseException 4 when the table has no primary index, and always on a remote table. On
    /// failure the table has the indexes it had. Holds the mutex for the whole call; accessors,
    /// BuildRecord and the message operations must not run on other threads meanwhile.
    virtual void CreateTemporaryIndex(IndexSpecification& specification) = 0;
    ///@}

    /// Makes a new table of this one's name, layout, fields and sizes in `directory` (empty: a table
    /// without files), with the record file open, a mutex when `createMutex` or property bit 1 says
    /// so, the indexes of GetIndexSpecificationList, and, when `copyRecords`, the records
    /// (CopyRecords with clearFirst, `batchSize` at a time). The caller owns it. Throws
    /// StatusCodeException 13 for a table without a store; DatabaseException 12, before any file is
    /// touched, when `directory` is this table's own; what the factory and CreateIndexes throw; a
    /// StatusCodeException with the status of a failed CopyRecords. A failure after the factory
    /// deletes the clone and removes the files that it made. Takes no lock of its own.
    virtual ITable* Clone(const std::string& directory, bool createMutex, bool copyRecords,
                          std::uint32_t batchSize) = 0;
    /// Removes every record and empties every index; the files keep their size and record ids are
    /// given out from 0 again. 0, also for an empty table; 13 for a table without a store; 16 when
    /// the record file is not open; the status of a failing store clear; else the status of the
    /// first index that fails to clear (1 when its store can't be cleared), with the indexes after
    /// it left as they were. Records and keys that callers hold stay bound. Holds the mutex.
    virtual StatusCode Clear() = 0;
    /// Writes every record of `source` into this table, `batchSize` records read at a time (0: all at
    /// once), after Clear when `clearFirst`. Fields are matched by name and type; for each source
    /// record the target image is reset, the matched fields are copied (an integer of another width
    /// by value) and WriteRecord inserts it, or, when this table's primary key finds a record,
    /// rewrites that record whole: matched fields from the source, the others reset. 0; 23 for a
    /// null `source` or this table itself; 13 for a table without a store; the status of Clear, of
    /// the source's reads, of a value that does not fit (22, 36) and of WriteRecord (34 without a
    /// primary index), the records written before it staying. Takes no lock of its own.
    virtual StatusCode CopyRecords(ITable* source, bool clearFirst, std::uint32_t batchSize) = 0;

    /// @name Messages
    /// Records, keys, statuses and counts in messages, each count and status a 32-bit
    /// little-endian number. None of these takes a lock, and all work on a remote table as on any
    /// other: a table and its remote table (built from SerializeSpecification) read each other's
    /// records and keys. On failure a builder keeps what was appended before it.
    ///@{

    /// Appends the table's description (GetSpecification, version 1), the number of indexes and
    /// each index's specification in number order: what RemoteTableFactory::Create reads. 0, or the
    /// status of the first append that fails (41 when a growable builder can't grow, 23 when a
    /// fixed buffer is full or a name is longer than 65535 bytes).
    virtual StatusCode SerializeSpecification(MessageBuilder& builder) = 0;
    /// Appends the number of statuses, each status as a 32-bit number, then `records` as
    /// SerializeRecords(builder, records) does. The two vectors need not be of one length. 0; the
    /// builder's status (41, 23); the statuses of the records form.
    virtual StatusCode SerializeRecords(MessageBuilder& builder, const std::vector<unsigned char>& statuses,
                                        const std::vector<Record>& records) = 0;
    /// Appends the number of records, then each record's serialised form (Record::Serialize). 0;
    /// 30 for a record that is not bound to this table, which ends the message there; the
    /// builder's status (41 when a growable builder can't grow, 23 when a fixed buffer is full).
    virtual StatusCode SerializeRecords(MessageBuilder& builder, const std::vector<Record>& records) = 0;
    /// Appends the number of keys, then each key's serialised form (Key::Serialize). 0; 27 for a
    /// key that is not initialized, is bound to another table or names no index of this one, which
    /// ends the message there; the builder's status (41, 23).
    virtual StatusCode SerializeKeys(MessageBuilder& builder, const std::vector<Key>& keys) = 0;
    /// Reads what SerializeRecords(builder, statuses, records) wrote: appends each status (the low
    /// 8 bits of its 32-bit number) to `statuses`, then the records as
    /// DeserializeRecords(validator, records) does. 0; 23 when the message ends early; the
    /// statuses of the records form. On failure the statuses read so far stay appended, and
    /// `records` is as it was.
    virtual StatusCode DeserializeRecords(MessageValidator& validator, std::vector<unsigned char>& statuses,
                                          std::vector<Record>& records) = 0;
    /// Reads two 32-bit numbers, whose meaning lies with the caller. 0; 23 when the message ends
    /// early: `first` is then set if it could be read, `second` is untouched.
    virtual StatusCode DeserializeCounts(MessageValidator& validator, std::uint32_t& first,
                                         std::uint32_t& second) = 0;
    /// Reads what SerializeRecords(builder, records) wrote and appends the records, each bound to
    /// this table with the record id it carried. 0; 23 when the message ends early (also for a
    /// count larger than the message holds); 21 for a record of another version; 22 for a stored
    /// field length that does not fit its field; 41 when a record can't be allocated. On failure
    /// `records` is cut back to its old size.
    virtual StatusCode DeserializeRecords(MessageValidator& validator, std::vector<Record>& records) = 0;
    /// Reads what SerializeKeys wrote and appends the keys, each bound to this table and its
    /// index. 0; 23 when the message ends early; 21 for a key of another version; 36 for an index
    /// number that is no index of this table; 41 when a key can't be allocated. On failure the
    /// keys read before the failing one stay appended.
    virtual StatusCode DeserializeKeys(MessageValidator& validator, std::vector<Key>& keys) = 0;
    ///@}

    /// @name Writes
    /// WriteRecord is an insert or an update: the table decides which from the record's id and its
    /// primary key. A failure midway through one is undone, so that store and indexes are as they
    /// were; if the undo itself fails, its status is the result and store and indexes may disagree.
    ///@{

    /// Empties every field of a record bound to this table and sets its record id to none
    /// (0xFFFFFFFF). 0; 30 for a record that is not bound to this table, which is then untouched.
    /// Takes no lock, and works on a remote table.
    virtual StatusCode ResetRecord(Record& record) = 0;
    /// WriteRecord(record) that also gives the former content in `previous`: after an update in
    /// place the stored image with its id; after an add an unbound record (not initialized), also
    /// when the add then fails; after a replacement by primary key the stored image with no id
    /// (0xFFFFFFFF), also when the replacement then fails. A write refused before any of these
    /// leaves `previous` untouched. Statuses and locking as WriteRecord(record), and also 41 when
    /// `previous` can't be allocated (then nothing is written).
    virtual StatusCode WriteRecord(Record& record, Record& previous) = 0;
    /// Writes only the fields `fieldIds` of `record`, in list order, as WriteRecord(record) chooses
    /// the stored record: into it, with its other fields as they were, or, for a primary key that
    /// no record has, into a new record that holds the key's fields and the listed ones and
    /// nothing else. `record` itself, its id included, is never changed. An empty list leaves a
    /// stored record unchanged (status 0). Statuses and locking as WriteRecord(record), and also 6
    /// for a listed id that is not a field of the table, with nothing written. Throws
    /// DatabaseException 7 when a temporary record can't be allocated; the mutex is released.
    virtual StatusCode WriteRecord(Record& record, const std::vector<std::uint16_t>& fieldIds) = 0;
    /// Adds `record`, or replaces the stored record with its primary key. A record whose id names
    /// a stored record and whose key fields (the fields of every index, additional fields
    /// included) equal the stored ones is updated in place, and no index is touched. Otherwise the
    /// record's primary key is looked up: a new key adds the record, gives `record` the new id and
    /// adds its key to every index in number order; a known key replaces that record and moves
    /// its entries in the other indexes whose key changed, and leaves `record`'s id as it was. So
    /// a record whose primary key fields were changed does not move: the record under the old key
    /// stays. 0; 13 for a table without a store; 30 for a record that is not bound to this table;
    /// 34 when the table has no primary index; 40 when the store (or an index's store) is full and
    /// can't grow; 26 when an index other than the primary one already holds the record's key for
    /// it (a Duplicate index, whose keys carry the record id, never does); 36 when the record to update is gone; 41 when memory runs
    /// out; 23 for a damaged store or index; 1 for any other exception that the store or an index
    /// throws; the status of building the primary key. After a failed add `record` keeps the id
    /// that it was given, which names no record. Holds the mutex for the whole call, undo
    /// included.
    virtual StatusCode WriteRecord(Record& record) = 0;
    /// RemoveRecord(key) that also gives the record in `removed`, with its id, once it is found;
    /// before that `removed` is untouched. Statuses and locking as RemoveRecord(key), and also 41
    /// when `removed` can't be allocated (then nothing is removed).
    virtual StatusCode RemoveRecord(Key& key, Record& removed) = 0;
    /// Removes the record that the key finds in its index (as GetEqual finds it) from the store and
    /// its key from every index. 0; 13 for a table without a store; 27 for a key that is not
    /// initialized, is bound to another table or names no index of this one; 6 when no record has
    /// the key (in a Duplicate index the key's record id must name the record, as BuildKey from a
    /// record sets it); 36 when the index names a record that the store does not hold, 23 for a
    /// damaged index (nothing removed in either case). Once found, every index loses the key even
    /// when one of them fails, and the record leaves the store: the status is then the store's
    /// when it fails, else the last index failure. The key's cursor is set; its bytes stay. Holds
    /// the mutex.
    virtual StatusCode RemoveRecord(Key& key) = 0;
    ///@}

    /// @name Reads by key
    /// Each read checks the key, asks the key's index for a record id and copies that record out of
    /// the store into the caller's record, which is bound to this table and takes the id. A walk
    /// keeps its place in the caller's Key: the index copies the key it found into it, so the next
    /// call goes on from there, and several walks on one table don't disturb each other. Every
    /// read answers 13 for a table without a store; 27 for a key that is not initialized, is bound
    /// to another table or names no index of this one; 23 for a damaged index; 36 when the index
    /// names a record that the store does not hold; 41 when the record can't be allocated. On any
    /// failure the record is untouched, and so is the key when nothing was found (6). A one-record
    /// read holds the mutex for the call, a batch for the whole batch. A batch appends the records
    /// to the caller's vector, at most until it holds `maxRecords` elements (0: no limit), the
    /// elements that it held before counted; a vector that already holds `maxRecords` or more
    /// gets every remaining record. A batch whose first step fails answers that status with the
    /// vector unchanged; once the first record is in, it answers 0 whatever ends it, and the next
    /// call tells the end (6). Between calls a walk is not isolated from writers: a key removed
    /// meanwhile still leads on to its neighbour.
    ///@{

    /// One GetEqual(key, record) per key, under one hold of the mutex: appends one status and one
    /// record per key, so that the elements that each vector gains stand in the order of `keys`.
    /// A key that finds nothing gets its status (27, 6 and so on) and a blank record of this table
    /// (bound, every field empty, no id). 0 whatever the keys found; 13 for a table without a
    /// store, with the vectors untouched. Throws DatabaseException 7 when a record can't be
    /// copied; the mutex is released, and `statuses` may then hold one element more than
    /// `records` gained.
    virtual StatusCode GetEqual(std::vector<Key>& keys, std::vector<unsigned char>& statuses,
                                std::vector<Record>& records) = 0;
    /// The record whose key equals the key's bytes in its index. In a Duplicate index the key's
    /// record id (set by BuildKey from a record, none in a key filled field by field) takes part,
    /// so only the entry of that record matches; GetFirstEqual finds the others. 0; 6 when no key
    /// equals it; the statuses of every read by key. The key's bytes stay; its cursor is set.
    virtual StatusCode GetEqual(Key& key, Record& record) = 0;
    /// The batch form of GetFirst: appends the records from the smallest key on, ascending, up to
    /// `maxRecords` as the group says. GetFirst's status when the first step fails (vector
    /// unchanged), else 0. The key ends at the last record's key, so GetNext goes on from there.
    virtual StatusCode GetFirst(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) = 0;
    /// The record of the smallest key in the key's index, whose bytes the key takes; its own bytes
    /// don't count. 0; 6 for an empty index; the statuses of every read by key.
    virtual StatusCode GetFirst(Key& key, Record& record) = 0;
    /// The batch form of GetLast: appends the records from the greatest key down, descending, up to
    /// `maxRecords` as the group says. GetLast's status when the first step fails (vector
    /// unchanged), else 0. The key ends at the last record's key, so GetPrevious goes on from there.
    virtual StatusCode GetLast(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) = 0;
    /// The record of the greatest key in the key's index, whose bytes the key takes; its own bytes
    /// don't count. 0; 6 for an empty index; the statuses of every read by key.
    virtual StatusCode GetLast(Key& key, Record& record) = 0;
    /// The batch form of GetNext: appends the records of the keys after the key's bytes, ascending,
    /// up to `maxRecords` as the group says. GetNext's status when the first step fails (vector
    /// unchanged), else 0. The key ends at the last record's key.
    virtual StatusCode GetNext(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) = 0;
    /// The record of the next greater key after the key's bytes, which the key takes. The key
    /// need not be in the index. 0; 6 after the last key; the statuses of every read by key.
    virtual StatusCode GetNext(Key& key, Record& record) = 0;
    /// The batch form of GetPrevious: appends the records of the keys before the key's bytes,
    /// descending, up to `maxRecords` as the group says. GetPrevious's status when the first step
    /// fails (vector unchanged), else 0. The key ends at the last record's key.
    virtual StatusCode GetPrevious(Key& key, std::vector<Record>& records, std::uint32_t maxRecords) = 0;
    /// The record of the next smaller key before the key's bytes, which the key takes. The key
    /// need not be in the index. 0; 6 before the first key; the statuses of every read by key.
    virtual StatusCode GetPrevious(Key& key, Record& record) = 0;
    /// The batch form of GetFirstEqual: appends the matching records, ascending (the later steps
    /// as GetNextEqual), up to `maxRecords` as the group says. GetFirstEqual's status when the
    /// first step fails (vector unchanged), else 0. The key ends at the last record's key.
    virtual StatusCode GetFirstEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                     std::uint32_t length, std::uint32_t maxRecords) = 0;
    /// The record of the smallest key that matches the key's bytes in every key field before
    /// `fieldId` and in the first `length` bytes of field `fieldId` (0 leaves that field out,
    /// 0xFFFFFFFF compares all of it). The key takes the found key's bytes, which match the same
    /// prefix, so GetNextEqual with the same `fieldId` and `length` goes on from it. 0; 6 when no
    /// key matches; 29 when `fieldId` is not a compared field of the key's index (additional
    /// fields count as not in the key); 23 when `length` exceeds the length of the field's value
    /// in the key; the statuses of every read by key.
    virtual StatusCode GetFirstEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) = 0;
    /// The batch form of GetLastEqual: appends the matching records, descending (the later steps
    /// as GetPreviousEqual), up to `maxRecords` as the group says. GetLastEqual's status when the
    /// first step fails (vector unchanged), else 0. The key ends at the last record's key.
    virtual StatusCode GetLastEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                    std::uint32_t length, std::uint32_t maxRecords) = 0;
    /// GetFirstEqual from the other end: the record of the greatest matching key. Statuses and
    /// the key as GetFirstEqual.
    virtual StatusCode GetLastEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) = 0;
    /// The batch form of GetNextEqual: appends the matching records after the key's bytes,
    /// ascending, up to `maxRecords` as the group says. GetNextEqual's status when the first step
    /// fails (vector unchanged), else 0. The key ends at the last record's key.
    virtual StatusCode GetNextEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                    std::uint32_t length, std::uint32_t maxRecords) = 0;
    /// The record of the next greater key after the key's bytes, when it still matches their
    /// prefix up to `fieldId` and `length` as GetFirstEqual says; the key takes it. 0; 6 when there
    /// is no next key or it does not match (the key is then unchanged); 29 and 23 as
    /// GetFirstEqual; the statuses of every read by key.
    virtual StatusCode GetNextEqual(Key& key, Record& record, std::uint16_t fieldId, std::uint32_t length) = 0;
    /// The batch form of GetPreviousEqual: appends the matching records before the key's bytes,
    /// descending, up to `maxRecords` as the group says. GetPreviousEqual's status when the first
    /// step fails (vector unchanged), else 0. The key ends at the last record's key.
    virtual StatusCode GetPreviousEqual(Key& key, std::vector<Record>& records, std::uint16_t fieldId,
                                        std::uint32_t length, std::uint32_t maxRecords) = 0;
    /// GetNextEqual backwards: the record of the next smaller key, when it still matches the
    /// prefix. Statuses and the key as GetNextEqual.
    virtual StatusCode GetPreviousEqual(Key& key, Record& record, std::uint16_t fieldId,
                                        std::uint32_t length) = 0;
    ///@}

    /// @name Reads in store order
    /// The records in ascending order of their ids, without keys or indexes. The walk keeps its
    /// place in the caller's `recordId`, which need not name a record still in use. A removed
    /// record's id is given out again, so a walk may see or miss records written between its
    /// calls. Each answers 13 for a table without a store and 16 when the record file is not open.
    /// A one-record call holds the mutex for the call, a batch for the whole batch.
    ///@{

    /// The batch form of GetFirstRecord: the records from the first on, up to `maxRecords`
    /// elements in the vector (0: no limit), the elements that it held before counted; a vector
    /// that already holds `maxRecords` or more gets every remaining record. `recordId` ends at the
    /// last record appended. A first step that fails answers its status (6 for an empty store)
    /// with `recordId` and the vector unchanged; then 0, or 41 when a record can't be allocated,
    /// the records appended before it staying. Throws DatabaseException 7 when a record can't be
    /// copied into the vector; the mutex is released.
    virtual StatusCode GetFirstRecord(std::uint32_t& recordId, std::vector<Record>& records,
                                      std::uint32_t maxRecords) = 0;
    /// The record with the smallest id in use, into `record` (bound to this table, with its id)
    /// and its id into `recordId`. 0; 6 for an empty store, 13, 16 (`recordId` and `record`
    /// untouched); 41 when the record can't be allocated (`recordId` is already set then).
    virtual StatusCode GetFirstRecord(std::uint32_t& recordId, Record& record) = 0;
    /// The batch form of GetNextRecord: the records after `recordId`, as the batch form of
    /// GetFirstRecord gives them; 30 when `recordId` is 0xFFFFFFFF, and 6 after the last record,
    /// with `recordId` and the vector unchanged.
    virtual StatusCode GetNextRecord(std::uint32_t& recordId, std::vector<Record>& records,
                                     std::uint32_t maxRecords) = 0;
    /// The record with the next greater id in use after `recordId`, into `record` and its id into
    /// `recordId`. 0; 30 when `recordId` is 0xFFFFFFFF (no record; checked before 16); 6 after the
    /// last record, 13, 16 (`recordId` and `record` untouched); 41 when the record can't be
    /// allocated (`recordId` is already set then).
    virtual StatusCode GetNextRecord(std::uint32_t& recordId, Record& record) = 0;
    ///@}

    /// Sets the key fields of index `indexNumber` in `record` (its compared fields, then its
    /// additional fields) from `values` in that order; the other fields stay. 0; 26 when
    /// `indexNumber` is no index of this table; 30 for a record that is not bound to this table;
    /// 23 for more values than the key has fields; the status of a field write (22 for a length
    /// that the field refuses), the fields written before it staying. Takes no lock, and works on
    /// a remote table.
    virtual StatusCode BuildRecord(Record& record, std::uint16_t indexNumber, const KeyValueList& values) = 0;
    /// Checks every index, in number order, against the records, and returns when all agree: first
    /// the index's own structure, then a tree index is walked in key order (each key after the one
    /// before it, and equal to the key built from its record) and the store is walked through a
    /// hash index (each record found by its key, and the record found has that key). Throws
    /// DatabaseException 12 at the first problem: its message is two line ends and a report of
    /// lines that name the index, the record id and the keys involved; or, for an exception on the
    /// way (a damaged index structure, a walk that fails), that exception's text. Throws
    /// StatusCodeException 13 for a table without a store. Takes no lock of its own: each read
    /// locks, so writers running beside it can cause a report.
    virtual void CheckIntegrity() = 0;

    /// @name Accessors
    /// None takes a lock. Each reads what the table's construction and its index creation set,
    /// so they must not run while CreateIndexes or CreateTemporaryIndex runs on another thread;
    /// the record counts may be stale while other threads write. All work on a remote table, the
    /// record counts excepted.
    ///@{

    /// The record layout. It belongs to the table and lives as long as the table; the caller
    /// must not delete it. Never null.
    virtual FieldList* GetFieldList() = 0;
    /// The table's description: name, layout flag (IsManaged), property bits, fields, the
    /// maxRecords that the table was made with, record length, the grow step (half of maxRecords
    /// where 0xFFFFFFFF was given) and cache size. A remote table gives the far table's.
    virtual TableSpecification GetSpecification() = 0;
    /// Appends, in field order, the id of each field that matches `pattern`
    /// (FieldSpecification::IsMatch). True if any did; the vector keeps what it held.
    virtual bool GetMatchingFields(const FieldSpecification& pattern, std::vector<std::uint16_t>& fieldIds) = 0;
    /// The fields in list order, with the offsets that the layout gives them.
    virtual std::vector<FieldSpecification> GetFieldSpecificationList() = 0;
    /// Copies the specification of field `id` out. 0; 6 when the table has no field `id`, with
    /// `specification` untouched.
    virtual StatusCode GetFieldSpecification(std::uint16_t id, FieldSpecification& specification) = 0;
    /// Sets `specification` to the first field's.
    virtual void GetFirstFieldSpecification(FieldSpecification& specification) = 0;
    /// Replaces `specification` by that of the field behind the one with its id. 0; 23 when its id
    /// is no field of the table; 6 when it is the last field (untouched on both).
    virtual StatusCode GetNextFieldSpecification(FieldSpecification& specification) = 0;
    /// Appends, in number order, the specification of each index that matches `pattern`
    /// (IndexSpecification::IsMatch). True if any did; the vector keeps what it held.
    virtual bool GetMatchingIndexes(const IndexSpecification& pattern,
                                    std::vector<IndexSpecification>& specifications) = 0;
    /// The specification of each index, in number order, rebuilt from the index's key layout.
    virtual std::vector<IndexSpecification> GetIndexSpecificationList() = 0;
    /// The specification of index `number`. 0; 6 when there is no such index, with
    /// `specification` untouched.
    virtual StatusCode GetIndexSpecification(std::uint16_t number, IndexSpecification& specification) = 0;
    /// The field ids in list order.
    virtual std::vector<std::uint16_t> GetFieldIdList() = 0;
    /// Sets `id` to the first field's id.
    virtual void GetFirstFieldId(std::uint16_t& id) = 0;
    /// Replaces `id` by the id of the field behind it. 0; 23 when `id` is no field of the table; 6
    /// when it is the last field (untouched on both).
    virtual StatusCode GetNextFieldId(std::uint16_t& id) = 0;
    /// The type of field `id`. 0; 6 when the table has no field `id`, with `type` untouched.
    virtual StatusCode GetFieldType(std::uint16_t id, FieldSpecification::Type& type) = 0;
    /// The name as it was given, blanks included.
    virtual std::string GetName() = 0;
    /// The directory of the table's files, ending in a slash or a backslash (a slash is appended
    /// to one given without); empty for a table without files.
    virtual std::string GetDirectory() = 0;
    /// The record file's name in GetDirectory(): the name with each blank written '_', then
    /// ".tab"; empty for a table without files.
    virtual std::string GetFileName() = 0;
    /// The number of records that the store has room for now; a full store grows by the grow step
    /// (none when it is 0). 0; 13 for a table without a store, which gives 0.
    virtual StatusCode GetMaxRecords(std::uint32_t& maxRecords) = 0;
    /// The number of records in the store. 0; 13 for a table without a store, which gives 0.
    virtual StatusCode GetCurrentRecords(std::uint32_t& currentRecords) = 0;
    /// The length in bytes of every record image (Record::GetData), as the layout gives it.
    virtual std::uint32_t GetRecordLength() = 0;
    /// The number of indexes; the next index gets this number.
    virtual std::uint32_t GetNumberOfIndexes() = 0;
    /// The number of indexes that CreateTemporaryIndex added. They are the last ones, numbered from
    /// GetNumberOfIndexes() less this count on; a Database leaves them out of its description.
    virtual std::uint32_t GetNumberOfTemporaryIndexes() = 0;
    /// The number of the primary index; 0xFFFF when there is none.
    virtual std::uint16_t GetPrimaryIndex() = 0;
    /// Sets `index` to index `number`. It belongs to the table and lives as long as the table; the
    /// caller must not delete it. A remote table's indexes lay out keys and hold nothing. 0; 26
    /// when there is no such index, with `index` untouched.
    virtual StatusCode GetIndex(std::uint16_t number, IIndex*& index) = 0;
    /// Whether the store is open on its record file; false for a table without a store.
    virtual bool IsRecordFileOpen() = 0;
    /// True for a table without files (whose store lives in a temporary file), and for a remote
    /// table.
    virtual bool IsInMemory() = 0;
    /// True when `left` is initialized and `right` is not; the contents are not compared, so two
    /// initialized objects are ordered neither way.
    virtual bool IsOrderedBefore(const FieldListObject& left, const FieldListObject& right) = 0;
    /// True when both are initialized and bound to the same table, whichever it is.
    virtual bool IsSameBinding(const FieldListObject& left, const FieldListObject& right) = 0;
    /// Whether the table has a field `id`.
    virtual bool HasField(std::uint16_t id) = 0;
    /// True for the managed layout (ManagedTableFactory), false for the unmanaged one; a remote
    /// table gives the far table's.
    virtual bool IsManaged() = 0;
    ///@}

    /// The token that bound records and keys copy (records/IdentityToken.h).
    const IdentityToken& GetIdentityToken() const noexcept { return identityToken_; }

protected:
    /// Gives the table a new token: every record and key bound so far stops being initialized.
    void RenewIdentityToken() {
        identityToken_.Revoke();
        identityToken_ = IdentityToken::Issue(this);
    }

private:
    IdentityToken identityToken_;
};

}  // namespace Tavrin::Database
