// Berkeley DB as a W1 store: a btree or a hash database in one file of the run's folder, opened
// without an environment (so no locking, logging or transactions), with a 256 MiB cache, keys
// big-endian. The hash database is told to expect N keys. Closed with DB_NOSYNC.

#include <db.h>

#include <string>
#include <vector>

#include "ByteStore.h"
#include "StoreRegistry.h"

namespace Tavrin::Compare {

namespace {

constexpr std::uint32_t CacheBytes = 256u << 20;

void Check(int result, const char* what) {
    if (result != 0) throw CompareError(std::string("berkeley db ") + what + ": " + db_strerror(result));
}

// A DBT over bytes that the caller owns, for keys and values read into the caller's buffer.
DBT Bytes(const void* bytes, std::uint32_t size) {
    DBT dbt{};
    dbt.data = const_cast<void*>(bytes);
    dbt.size = size;
    dbt.ulen = size;
    dbt.flags = DB_DBT_USERMEM;
    return dbt;
}

class BerkeleyStore : public ByteStore<BerkeleyStore> {
public:
    static constexpr bool Ordered = true;

    BerkeleyStore(std::uint64_t n, DBTYPE type, const std::string& directory, std::uint32_t cacheBytes = CacheBytes) {
        Check(db_create(&db_, nullptr, 0), "create");
        Check(db_->set_cachesize(db_, 0, cacheBytes, 1), "set_cachesize");
        if (type == DB_HASH) Check(db_->set_h_nelem(db_, static_cast<std::uint32_t>(n)), "set_h_nelem");
        const std::string path = directory + "/w1.db";
        Check(db_->open(db_, nullptr, path.c_str(), nullptr, type, DB_CREATE, 0600), "open");
    }
    ~BerkeleyStore() { db_->close(db_, DB_NOSYNC); }
    BerkeleyStore(const BerkeleyStore&) = delete;
    BerkeleyStore& operator=(const BerkeleyStore&) = delete;

    bool Remove(std::uint64_t key) {
        const KeyBytes keyBytes = EncodeKey(key);
        DBT k = Bytes(keyBytes.data(), KeySize);
        const int result = db_->del(db_, nullptr, &k, 0);
        if (result == DB_NOTFOUND) return false;
        Check(result, "del");
        return true;
    }

    template <class Visit>
    void Scan(Visit&& visit) {
        DBC* cursor = nullptr;
        Check(db_->cursor(db_, nullptr, &cursor, 0), "cursor");
        KeyBytes keyBytes;
        ValueBytes bytes;
        DBT k = Bytes(keyBytes.data(), KeySize);
        DBT data = Bytes(bytes.data(), ValueSize);
        int result = 0;
        while ((result = cursor->get(cursor, &k, &data, DB_NEXT)) == 0) {
            visit(DecodeKey(keyBytes.data()), DecodeCounter(bytes.data()), DecodeNumber(bytes.data()));
        }
        cursor->close(cursor);
        if (result != DB_NOTFOUND) Check(result, "cursor get");
    }

    std::uint64_t Count() {
        std::uint64_t count = 0;
        Scan([&](std::uint64_t, std::uint32_t, std::int64_t) { ++count; });
        return count;
    }

    void Put(std::uint64_t key, const unsigned char* value) {
        const KeyBytes keyBytes = EncodeKey(key);
        DBT k = Bytes(keyBytes.data(), KeySize);
        DBT data = Bytes(value, ValueSize);
        Check(db_->put(db_, nullptr, &k, &data, 0), "put");
    }

    bool Find(std::uint64_t key, ValueBytes& bytes) {
        const KeyBytes keyBytes = EncodeKey(key);
        DBT k = Bytes(keyBytes.data(), KeySize);
        DBT data = Bytes(bytes.data(), ValueSize);
        const int result = db_->get(db_, nullptr, &k, &data, 0);
        if (result == DB_NOTFOUND) return false;
        Check(result, "get");
        if (data.size != ValueSize) throw CompareError("berkeley db get: value of the wrong size");
        return true;
    }

private:
    DB* db_ = nullptr;
};

// The same store over a hash database, walked in hash order.
class BerkeleyHashStore : public BerkeleyStore {
public:
    static constexpr bool Ordered = false;
    BerkeleyHashStore(std::uint64_t n, const std::string& directory) : BerkeleyStore(n, DB_HASH, directory) {}
};

class BerkeleyBtreeStore : public BerkeleyStore {
public:
    BerkeleyBtreeStore(std::uint64_t n, const std::string& directory) : BerkeleyStore(n, DB_BTREE, directory) {}
};

// The btree with a cache of a quarter of the data, beside our disk store with the same budget.
class BerkeleyQuarterBtreeStore : public BerkeleyStore {
public:
    BerkeleyQuarterBtreeStore(std::uint64_t n, const std::string& directory)
        : BerkeleyStore(n, DB_BTREE, directory, static_cast<std::uint32_t>(QuarterCacheBytes(n))) {}
};

}  // namespace

void AddBerkeleyStores(std::vector<StoreEntry>& stores) {
    const std::string settings = "no environment, 256 MiB cache, keys big-endian, closed with DB_NOSYNC";
    stores.push_back({"bdb-btree", "Berkeley DB btree, " + settings,
                      [](std::uint64_t n, const std::string& directory) {
                          return RunW1<BerkeleyBtreeStore>(n, directory);
                      }});
    stores.push_back({"bdb-btree-quarter", "Berkeley DB btree, cache of a quarter of the keys and values, no "
                      "environment, keys big-endian, closed with DB_NOSYNC",
                      [](std::uint64_t n, const std::string& directory) {
                          return RunW1<BerkeleyQuarterBtreeStore>(n, directory);
                      }});
    stores.push_back({"bdb-hash", "Berkeley DB hash expecting N keys, " + settings,
                      [](std::uint64_t n, const std::string& directory) {
                          return RunW1<BerkeleyHashStore>(n, directory);
                      }});
}

}  // namespace Tavrin::Compare
