#pragma once
// A store of fixed-size records under 32-bit entry ids, kept in a mapped file, and the frame of the
// stores that derive from it.
//
// A plain DataStore (built with no arguments) reads any store file: Open checks the common header
// (DataStoreHeader.h) and GetUserData then gives the owner's bytes, which is how a table or index
// description is read back before the object that wrote it exists. Every other operation of the
// plain class answers status 13 or throws StatusCodeException 13 (see each operation).
//
// Pointers into the mapping (GetEntry, GetFirst, GetNext, GetUserData) stay valid until the next
// operation that can grow the store (Add) or close it; ids stay valid across growth.
//
// Ownership: a store owns its FileMappedMemoryManager and, through it, the mapping; it never owns
// its UserDataStore. Locking: none; the owner calls a store under its own mutex.

#include <cstdint>
#include <new>
#include <string>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"
#include "tavrin/base/Throw.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/storage/DataStoreHeader.h"
#include "tavrin/storage/FileMappedMemoryManager.h"
#include "tavrin/storage/UserDataStore.h"

namespace Tavrin::Database {

/// A store of fixed-size records under 32-bit entry ids in one mapped file; the plain class only
/// opens a store file to read its header and user data (see the file comment above). Not
/// thread-safe: the owner locks.
class DataStore {
public:
    /// A plain store, not open.
    DataStore() = default;
    /// Not copyable: the store owns its mapping.
    DataStore(const DataStore&) = delete;
    /// Not copyable: the store owns its mapping.
    DataStore& operator=(const DataStore&) = delete;
    /// Releases the mapping without a save (clean flag 1).
    virtual ~DataStore();

    ///@{
    /// Creates a named store file with `uuid`, or a temporary one; failures are thrown as
    /// StatusCodeException. The plain class throws 13.
    virtual void Create(const std::string& fileName, const Uuid& uuid);
    virtual void Create();
    ///@}
    /// Opens a store file; with `uuid` the file must carry that Uuid. Never throws: 17 when open
    /// already, 22 for a file shorter than its file header, 23 for a file left open by a crash (once),
    /// another Uuid or a malformed header, the factory's status (6 for a missing file), 41 when
    /// memory runs out, 1 otherwise. A failed open leaves the store closed.
    virtual StatusCode Open(const std::string& fileName, const Uuid* uuid);
    /// Releases the mapping (clean flag 1) without a save; 0, also when not open.
    virtual StatusCode Close();
    /// Copies the store file to `fileName`; the store stays open on its own file. The plain class
    /// answers 13.
    virtual StatusCode SaveAs(const std::string& fileName);
    /// Makes every entry free again. The plain class throws StatusCodeException 13.
    virtual void Clear();
    /// Copies a record into a free entry and gives the entry's id in `id`; may grow the store and
    /// move the mapping. The plain class throws StatusCodeException 13.
    virtual StatusCode Add(std::uint32_t& id, const void* record);
    /// Frees the entry `id`. The plain class answers 13.
    virtual StatusCode Remove(std::uint32_t id);
    /// Overwrites the record of the entry `id` with `record`. The plain class answers 13.
    virtual StatusCode Update(std::uint32_t id, const void* record);
    /// Copies the record of the entry `id` into `buffer`. The plain class answers 13.
    virtual StatusCode Read(std::uint32_t id, void* buffer);
    /// Points `record` at the record of the entry `id` in the mapping. The plain class answers 13.
    virtual StatusCode GetEntry(std::uint32_t id, unsigned char*& record);
    /// The used entry of the lowest id: its id and a pointer to its record in the mapping. The plain
    /// class answers 13.
    virtual StatusCode GetFirst(std::uint32_t& id, unsigned char*& record);
    /// The used entry of the lowest id above `id`: its id and a pointer to its record in the
    /// mapping. The plain class answers 13.
    virtual StatusCode GetNext(std::uint32_t& id, unsigned char*& record);
    /// The number of entries in use. The plain class throws StatusCodeException 13.
    virtual std::uint32_t GetCurrentEntries() const;
    /// The number of entries that exist, in use or free; every id is below it. The plain class
    /// throws StatusCodeException 13.
    virtual std::uint32_t GetMaxEntries() const;
    /// The user data area of the open file; null and 0 when the store is not open.
    virtual void GetUserData(unsigned char*& address, std::uint32_t& size) const;
    /// Writes the Uuid into the file header; 16 when not open.
    virtual StatusCode SetUuid(const Uuid& uuid);
    /// The Uuid of the file header; Uuid::Nil() when not open.
    virtual Uuid GetUuid() const;
    /// Whether a store file is mapped.
    virtual bool IsOpen() const;
    /// Whether the store is a temporary one, made without a name; false in the plain class.
    virtual bool IsTemporary() const;
    /// Writes everything the store holds in its files through to the disk, so that a power loss
    /// after it takes nothing that came before it: 16 when not open, 13 in the plain class, else
    /// 0 or the status of the failed write. A temporary store answers 0 and writes nothing.
    virtual StatusCode Sync();
    /// Closes the store without a save and removes its files, which it still holds until they are
    /// gone; used to drop files that a failed build left. Nothing when not open.
    virtual void Discard();

protected:
    /// The serialised length of a header, measured with a growing builder; a failure throws
    /// DatabaseException 12 "failed to get memory header size" at `site`.
    template <class Header>
    static std::uint32_t MeasureHeaderSize(const Header& header, ThrowSite site) {
        MessageBuilder builder;
        if (header.Serialize(builder) != Status::Success) {
            ThrowDatabase(site, DatabaseException::InvalidParameter, "failed to get memory header size");
        }
        return builder.GetLength();
    }
    /// The length of what `userData` writes now (0 without one); a failure throws DatabaseException 12
    /// "failed to get user data store size" at `site`.
    static std::uint32_t MeasureUserDataSize(UserDataStore* userData, ThrowSite site);
    /// Writes the owner's data into the user data area of the mapping; the owner's status.
    StatusCode WriteUserData(UserDataStore* userData);

    /// Runs `openSteps`, which throw on failure, and turns what they throw into the status of Open:
    /// the StatusCodeException's code, 41 when memory ran out, otherwise 1. On failure the mapping
    /// is released.
    template <class Steps>
    StatusCode GuardOpen(Steps openSteps) {
        try {
            openSteps();
            return Status::Success;
        } catch (const StatusCodeException& e) {
            Release();
            return static_cast<StatusCode>(e.GetCode());
        } catch (const Exception&) {
            Release();
            return Status::Failure;
        } catch (const std::bad_alloc&) {
            Release();
            return Status::OutOfMemory;
        }
    }
    /// Maps the store file `fileName` (with the Uuid test when `uuid` is not null) and reads the
    /// common header and a store's `extension` from its data area; throws StatusCodeException with
    /// the status of the mapping or of the reading at `site`.
    template <class Extension>
    void MapAndReadHeaders(const std::string& fileName, const Uuid* uuid, DataStoreHeader& common,
                           Extension& extension, ThrowSite site) {
        data_ = uuid != nullptr ? manager_.Open(fileName, *uuid) : manager_.Open(fileName);
        MessageValidator validator(data_, manager_.GetDataSize());
        StatusCode status = common.Deserialize(validator);
        if (status == Status::Success) status = extension.Deserialize(validator);
        if (status != Status::Success) ThrowStatus(site, status);
    }
    /// Grows the mapping to `dataSize` bytes of data area and refreshes the data area's address:
    /// false, with the store as it was, when that passes the largest mapped file or the file can't
    /// grow (no disk space, size limit).
    bool GrowDataArea(std::uint64_t dataSize) noexcept;
    /// Closes the mapping (clean flag 1) and forgets the data area.
    void Release();
    /// Writes the whole mapping through to the disk: 0, or the status of the failed write.
    StatusCode SyncMapping();

    FileMappedMemoryManager manager_;  ///< the store file and its mapping, owned
    unsigned char* data_ = nullptr;  ///< data area of the mapping, refreshed after every create, open, resize
    DataStoreHeader header_;         ///< the common header; a subclass keeps its extension itself
};

}  // namespace Tavrin::Database
