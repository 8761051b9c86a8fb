// Kyoto Cabinet as a W1 store: a HashDB or a TreeDB file in the run's folder, opened with OWRITER
// | OCREATE | OTRUNCATE and no auto-transaction or auto-sync, its file mapped in full (tune_map of
// N * 256 bytes, at least 64 MiB), keys big-endian. The HashDB gets 2N buckets, the TreeDB a
// 256 MiB page cache.

#include <kchashdb.h>

#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "ByteStore.h"
#include "StoreRegistry.h"

namespace Tavrin::Compare {

namespace {

namespace kc = kyotocabinet;

constexpr std::int64_t PageCacheBytes = 256 << 20;

const char* Chars(const unsigned char* bytes) { return reinterpret_cast<const char*>(bytes); }
const unsigned char* Bytes(const char* chars) { return reinterpret_cast<const unsigned char*>(chars); }

// Hands each record to `visit`. The store holds its locks while it calls a visitor, so what
// `visit` throws is kept and thrown again once the cursor step is over.
template <class Visit>
class ScanVisitor : public kc::DB::Visitor {
public:
    explicit ScanVisitor(Visit& visit) : visit_(visit) {}
    const char* visit_full(const char* key, std::size_t keySize, const char* value, std::size_t valueSize,
                           std::size_t*) override {
        try {
            if (keySize != KeySize || valueSize != ValueSize) throw CompareError("kyoto scan: wrong size of record");
            visit_(DecodeKey(Bytes(key)), DecodeCounter(Bytes(value)), DecodeNumber(Bytes(value)));
        } catch (...) {
            failure_ = std::current_exception();
        }
        return NOP;
    }
    void ThrowFailure() const {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    Visit& visit_;
    std::exception_ptr failure_;
};

template <class Database, bool IsOrdered>
class KyotoStore : public ByteStore<KyotoStore<Database, IsOrdered>> {
public:
    static constexpr bool Ordered = IsOrdered;

    // A `cacheBytes` other than 0 is the whole budget: the page cache and the mapped part of the file.
    KyotoStore(std::uint64_t n, const std::string& directory, std::int64_t cacheBytes = 0) {
        db_.tune_map(cacheBytes != 0 ? cacheBytes : std::max<std::int64_t>(64 << 20, static_cast<std::int64_t>(n) * 256));
        if constexpr (IsOrdered) {
            db_.tune_page_cache(cacheBytes != 0 ? cacheBytes : PageCacheBytes);
        } else {
            db_.tune_buckets(static_cast<std::int64_t>(n) * 2);
        }
        const std::string path = directory + (IsOrdered ? "/w1.kct" : "/w1.kch");
        Check(db_.open(path, kc::BasicDB::OWRITER | kc::BasicDB::OCREATE | kc::BasicDB::OTRUNCATE), "open");
    }
    ~KyotoStore() { db_.close(); }

    bool Remove(std::uint64_t key) {
        const KeyBytes keyBytes = EncodeKey(key);
        if (db_.remove(Chars(keyBytes.data()), KeySize)) return true;
        if (db_.error().code() == kc::BasicDB::Error::NOREC) return false;
        return Check(false, "remove");
    }

    // A cursor from the first record on, one step per record.
    template <class Visit>
    void Scan(Visit&& visit) {
        std::unique_ptr<kc::DB::Cursor> cursor(db_.cursor());
        ScanVisitor<Visit> visitor(visit);
        if (!cursor->jump()) return;
        while (cursor->accept(&visitor, false, true)) visitor.ThrowFailure();
        visitor.ThrowFailure();
    }

    std::uint64_t Count() { return static_cast<std::uint64_t>(db_.count()); }

    void Put(std::uint64_t key, const unsigned char* value) {
        const KeyBytes keyBytes = EncodeKey(key);
        Check(db_.set(Chars(keyBytes.data()), KeySize, Chars(value), ValueSize), "set");
    }

    bool Find(std::uint64_t key, ValueBytes& bytes) {
        const KeyBytes keyBytes = EncodeKey(key);
        const std::int32_t size =
            db_.get(Chars(keyBytes.data()), KeySize, reinterpret_cast<char*>(bytes.data()), ValueSize);
        if (size < 0) {
            if (db_.error().code() == kc::BasicDB::Error::NOREC) return false;
            Check(false, "get");
        }
        if (size != static_cast<std::int32_t>(ValueSize)) throw CompareError("kyoto get: value of the wrong size");
        return true;
    }

private:
    bool Check(bool done, const char* what) {
        if (!done) throw CompareError(std::string("kyoto ") + what + ": " + db_.error().message());
        return true;
    }

    Database db_;
};

}  // namespace

void AddKyotoStores(std::vector<StoreEntry>& stores) {
    const std::string settings = "no auto-transaction or auto-sync, tune_map N*256 B, keys big-endian";
    stores.push_back({"kc-hash", "Kyoto Cabinet HashDB, 2N buckets, " + settings,
                      [](std::uint64_t n, const std::string& directory) {
                          return RunW1<KyotoStore<kc::HashDB, false>>(n, directory);
                      }});
    stores.push_back({"kc-tree", "Kyoto Cabinet TreeDB, 256 MiB page cache, " + settings,
                      [](std::uint64_t n, const std::string& directory) {
                          return RunW1<KyotoStore<kc::TreeDB, true>>(n, directory);
                      }});
    stores.push_back({"kc-tree-quarter",
                      "Kyoto Cabinet TreeDB, page cache and tune_map each a quarter of the keys and values, "
                      "no auto-transaction or auto-sync, keys big-endian",
                      [](std::uint64_t n, const std::string& directory) {
                          return RunW1<KyotoStore<kc::TreeDB, true>>(
                              n, directory, static_cast<std::int64_t>(QuarterCacheBytes(n)));
                      }});
}

}  // namespace Tavrin::Compare
