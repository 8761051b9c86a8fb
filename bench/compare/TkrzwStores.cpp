// Tkrzw as a W1 store, keys big-endian, values copied out into a reused string:
//   HashDBM and TreeDBM: a file in the run's folder, opened with OPEN_TRUNCATE, never synced; the
//   HashDBM with 2N buckets, the TreeDBM with 32768 cached pages (about 256 MiB) and 2N / 16
//   buckets of pages.
//   TinyDBM (a hash table, 2N buckets) and BabyDBM (a B+ tree): in memory, without a file.

#include <tkrzw_dbm_baby.h>
#include <tkrzw_dbm_hash.h>
#include <tkrzw_dbm_tiny.h>
#include <tkrzw_dbm_tree.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ByteStore.h"
#include "StoreRegistry.h"

namespace Tavrin::Compare {

namespace {

constexpr std::int32_t CachedPages = 32768;

void Check(const tkrzw::Status& status, const char* what) {
    if (!status.IsOK()) throw CompareError(std::string("tkrzw ") + what + ": " + status.GetMessage());
}

std::string_view View(const unsigned char* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}
const unsigned char* Bytes(const std::string& text) { return reinterpret_cast<const unsigned char*>(text.data()); }

std::unique_ptr<tkrzw::DBM> OpenHash(std::uint64_t n, const std::string& directory) {
    auto dbm = std::make_unique<tkrzw::HashDBM>();
    tkrzw::HashDBM::TuningParameters tuning;
    tuning.num_buckets = static_cast<std::int64_t>(n) * 2;
    Check(dbm->OpenAdvanced(directory + "/w1.tkh", true, tkrzw::File::OPEN_TRUNCATE, tuning), "open");
    return dbm;
}

std::unique_ptr<tkrzw::DBM> OpenTree(std::uint64_t n, const std::string& directory) {
    auto dbm = std::make_unique<tkrzw::TreeDBM>();
    tkrzw::TreeDBM::TuningParameters tuning;
    tuning.max_cached_pages = CachedPages;
    tuning.num_buckets = static_cast<std::int64_t>(n) * 2 / 16;
    Check(dbm->OpenAdvanced(directory + "/w1.tkt", true, tkrzw::File::OPEN_TRUNCATE, tuning), "open");
    return dbm;
}

// One class for the four kinds: they share the DBM interface, and the virtual call is theirs.
template <bool IsOrdered>
class TkrzwStore : public ByteStore<TkrzwStore<IsOrdered>> {
public:
    static constexpr bool Ordered = IsOrdered;

    explicit TkrzwStore(std::uint64_t, std::unique_ptr<tkrzw::DBM> dbm) : dbm_(std::move(dbm)) {}
    ~TkrzwStore() {
        if (dbm_->IsOpen()) dbm_->Close();
    }
    TkrzwStore(const TkrzwStore&) = delete;
    TkrzwStore& operator=(const TkrzwStore&) = delete;

    bool Remove(std::uint64_t key) {
        const KeyBytes keyBytes = EncodeKey(key);
        const tkrzw::Status status = dbm_->Remove(View(keyBytes.data(), KeySize));
        if (status == tkrzw::Status::NOT_FOUND_ERROR) return false;
        Check(status, "remove");
        return true;
    }

    template <class Visit>
    void Scan(Visit&& visit) {
        std::unique_ptr<tkrzw::DBM::Iterator> iterator = dbm_->MakeIterator();
        Check(iterator->First(), "first");
        std::string key;
        while (iterator->Get(&key, &value_).IsOK()) {
            if (key.size() != KeySize || value_.size() != ValueSize) throw CompareError("tkrzw scan: wrong size");
            visit(DecodeKey(Bytes(key)), DecodeCounter(Bytes(value_)), DecodeNumber(Bytes(value_)));
            const tkrzw::Status next = iterator->Next();
            if (next != tkrzw::Status::NOT_FOUND_ERROR) Check(next, "next");
        }
    }

    std::uint64_t Count() { return static_cast<std::uint64_t>(dbm_->CountSimple()); }

    void Put(std::uint64_t key, const unsigned char* value) {
        const KeyBytes keyBytes = EncodeKey(key);
        Check(dbm_->Set(View(keyBytes.data(), KeySize), View(value, ValueSize)), "set");
    }

    bool Find(std::uint64_t key, ValueBytes& bytes) {
        const KeyBytes keyBytes = EncodeKey(key);
        const tkrzw::Status status = dbm_->Get(View(keyBytes.data(), KeySize), &value_);
        if (status == tkrzw::Status::NOT_FOUND_ERROR) return false;
        Check(status, "get");
        if (value_.size() != ValueSize) throw CompareError("tkrzw get: value of the wrong size");
        std::copy_n(Bytes(value_), ValueSize, bytes.begin());
        return true;
    }

private:
    std::unique_ptr<tkrzw::DBM> dbm_;
    std::string value_;
};

template <bool IsOrdered, class Open>
void AddTkrzw(std::vector<StoreEntry>& stores, const char* name, const std::string& settings, Open open) {
    stores.push_back({name, settings, [open](std::uint64_t n, const std::string& directory) {
                          return RunW1<TkrzwStore<IsOrdered>>(n, open(n, directory));
                      }});
}

}  // namespace

void AddTkrzwStores(std::vector<StoreEntry>& stores) {
    AddTkrzw<false>(stores, "tkrzw-hash", "Tkrzw HashDBM file, 2N buckets, never synced, keys big-endian", OpenHash);
    AddTkrzw<true>(stores, "tkrzw-tree", "Tkrzw TreeDBM file, 32768 cached pages, never synced, keys big-endian",
                   OpenTree);
    AddTkrzw<false>(stores, "tkrzw-tiny", "Tkrzw TinyDBM in memory, 2N buckets, keys big-endian",
                    [](std::uint64_t n, const std::string&) -> std::unique_ptr<tkrzw::DBM> {
                        return std::make_unique<tkrzw::TinyDBM>(static_cast<std::int64_t>(n) * 2);
                    });
    AddTkrzw<true>(stores, "tkrzw-baby", "Tkrzw BabyDBM (B+ tree) in memory, keys big-endian",
                   [](std::uint64_t, const std::string&) -> std::unique_ptr<tkrzw::DBM> {
                       return std::make_unique<tkrzw::BabyDBM>();
                   });
}

}  // namespace Tavrin::Compare
