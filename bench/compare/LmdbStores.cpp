// LMDB as a W1 store: one environment in the run's folder, MDB_WRITEMAP | MDB_NOSYNC |
// MDB_NOMETASYNC, a map of N * 512 bytes (at least 64 MiB), keys big-endian. Either one
// transaction per phase (a write transaction for insert, update and remove, a read-only one for
// get and scan) or one per operation (a write transaction per write, a reset-and-renewed read-only
// one per lookup).

#include <lmdb.h>

#include <algorithm>
#include <string>
#include <vector>

#include "StoreRegistry.h"

namespace Tavrin::Compare {

namespace {

void Check(int result, const char* what) {
    if (result != MDB_SUCCESS) throw CompareError(std::string("lmdb ") + what + ": " + mdb_strerror(result));
}

MDB_val View(const void* bytes, std::size_t size) { return MDB_val{size, const_cast<void*>(bytes)}; }

bool IsWrite(Phase phase) { return phase == Phase::Insert || phase == Phase::Update || phase == Phase::Remove; }

class LmdbStore {
public:
    static constexpr bool Ordered = true;

    LmdbStore(std::uint64_t n, bool transactionPerPhase, const std::string& directory)
        : perPhase_(transactionPerPhase) {
        Check(mdb_env_create(&env_), "env_create");
        const std::size_t mapSize = std::max<std::size_t>(64u << 20, static_cast<std::size_t>(n) * 512);
        Check(mdb_env_set_mapsize(env_, mapSize), "set_mapsize");
        Check(mdb_env_open(env_, directory.c_str(), MDB_WRITEMAP | MDB_NOSYNC | MDB_NOMETASYNC, 0600), "env_open");
        MDB_txn* txn = nullptr;
        Check(mdb_txn_begin(env_, nullptr, 0, &txn), "txn_begin");
        Check(mdb_dbi_open(txn, nullptr, 0, &dbi_), "dbi_open");
        Check(mdb_txn_commit(txn), "commit");
    }
    ~LmdbStore() {
        if (txn_ != nullptr) mdb_txn_abort(txn_);
        if (reader_ != nullptr) mdb_txn_abort(reader_);
        mdb_env_close(env_);
    }
    LmdbStore(const LmdbStore&) = delete;
    LmdbStore& operator=(const LmdbStore&) = delete;

    void Begin(Phase phase) {
        if (perPhase_) Check(mdb_txn_begin(env_, nullptr, IsWrite(phase) ? 0 : MDB_RDONLY, &txn_), "txn_begin");
    }
    void End(Phase phase) {
        if (!perPhase_) return;
        MDB_txn* txn = txn_;
        txn_ = nullptr;
        if (IsWrite(phase)) {
            Check(mdb_txn_commit(txn), "commit");
        } else {
            mdb_txn_abort(txn);
        }
    }

    void Insert(std::uint64_t key, const Value& value) {
        ValueBytes bytes;
        EncodeValue(value, bytes.data());
        Write([&](MDB_txn* txn) { Put(txn, key, bytes.data()); });
    }

    bool Get(std::uint64_t key, Value& value) {
        bool found = false;
        Read([&](MDB_txn* txn) {
            MDB_val data;
            if (!Find(txn, key, data)) return;
            DecodeValue(static_cast<const unsigned char*>(data.mv_data), value);
            found = true;
        });
        return found;
    }

    bool Update(std::uint64_t key) {
        bool found = false;
        Write([&](MDB_txn* txn) {
            MDB_val data;
            if (!Find(txn, key, data)) return;
            ValueBytes bytes;
            std::copy_n(static_cast<const unsigned char*>(data.mv_data), ValueSize, bytes.begin());
            EncodeCounter(bytes.data(), DecodeCounter(bytes.data()) + 1);
            Put(txn, key, bytes.data());
            found = true;
        });
        return found;
    }

    bool Remove(std::uint64_t key) {
        int result = MDB_SUCCESS;
        Write([&](MDB_txn* txn) {
            const KeyBytes bytes = EncodeKey(key);
            MDB_val k = View(bytes.data(), KeySize);
            result = mdb_del(txn, dbi_, &k, nullptr);
            if (result != MDB_NOTFOUND) Check(result, "del");
        });
        return result == MDB_SUCCESS;
    }

    template <class Visit>
    void Scan(Visit&& visit) {
        Read([&](MDB_txn* txn) {
            MDB_cursor* cursor = nullptr;
            Check(mdb_cursor_open(txn, dbi_, &cursor), "cursor_open");
            MDB_val k, data;
            MDB_cursor_op op = MDB_FIRST;
            while (mdb_cursor_get(cursor, &k, &data, op) == MDB_SUCCESS) {
                const auto* value = static_cast<const unsigned char*>(data.mv_data);
                visit(DecodeKey(static_cast<const unsigned char*>(k.mv_data)), DecodeCounter(value),
                      DecodeNumber(value));
                op = MDB_NEXT;
            }
            mdb_cursor_close(cursor);
        });
    }

    std::uint64_t Count() {
        MDB_stat stat;
        Check(mdb_env_stat(env_, &stat), "stat");
        return stat.ms_entries;
    }

private:
    void Put(MDB_txn* txn, std::uint64_t key, const unsigned char* value) {
        const KeyBytes bytes = EncodeKey(key);
        MDB_val k = View(bytes.data(), KeySize);
        MDB_val data = View(value, ValueSize);
        Check(mdb_put(txn, dbi_, &k, &data, 0), "put");
    }

    bool Find(MDB_txn* txn, std::uint64_t key, MDB_val& data) {
        const KeyBytes bytes = EncodeKey(key);
        MDB_val k = View(bytes.data(), KeySize);
        const int result = mdb_get(txn, dbi_, &k, &data);
        if (result == MDB_NOTFOUND) return false;
        Check(result, "get");
        if (data.mv_size != ValueSize) throw CompareError("lmdb get: value of the wrong size");
        return true;
    }

    // Runs `step` in the phase's transaction, or in a write transaction of its own.
    template <class Step>
    void Write(Step&& step) {
        if (perPhase_) return step(txn_);
        MDB_txn* txn = nullptr;
        Check(mdb_txn_begin(env_, nullptr, 0, &txn), "txn_begin");
        step(txn);
        Check(mdb_txn_commit(txn), "commit");
    }

    // Runs `step` in the phase's transaction, or in the reused read-only one, renewed for it.
    template <class Step>
    void Read(Step&& step) {
        if (perPhase_) return step(txn_);
        if (reader_ == nullptr) {
            Check(mdb_txn_begin(env_, nullptr, MDB_RDONLY, &reader_), "txn_begin");
        } else {
            Check(mdb_txn_renew(reader_), "txn_renew");
        }
        step(reader_);
        mdb_txn_reset(reader_);
    }

    bool perPhase_;
    MDB_env* env_ = nullptr;
    MDB_dbi dbi_ = 0;
    MDB_txn* txn_ = nullptr;
    MDB_txn* reader_ = nullptr;
};

}  // namespace

void AddLmdbStores(std::vector<StoreEntry>& stores) {
    const std::string flags = "MDB_WRITEMAP|MDB_NOSYNC|MDB_NOMETASYNC, map N*512 B, keys big-endian";
    stores.push_back({"lmdb", "LMDB, one transaction per phase, " + flags,
                      [](std::uint64_t n, const std::string& directory) { return RunW1<LmdbStore>(n, true, directory); }});
    stores.push_back({"lmdb-txn-per-op", "LMDB, one transaction per operation, " + flags,
                      [](std::uint64_t n, const std::string& directory) {
                          return RunW1<LmdbStore>(n, false, directory);
                      }});
}

}  // namespace Tavrin::Compare
