// SQLite as a W1 store: a database in memory (":memory:", journal off, synchronous off), one table
// w1(key INTEGER PRIMARY KEY, counter, number, text), prepared statements bound anew for every
// operation, one transaction per phase.

#include <sqlite3.h>

#include <cstring>
#include <string>
#include <vector>

#include "StoreRegistry.h"

namespace Tavrin::Compare {

namespace {

class SqliteStore {
public:
    static constexpr bool Ordered = true;

    explicit SqliteStore(std::uint64_t) {
        Check(sqlite3_open(":memory:", &db_), "open");
        Execute("PRAGMA journal_mode = OFF");
        Execute("PRAGMA synchronous = OFF");
        Execute("CREATE TABLE w1 (key INTEGER PRIMARY KEY, counter INTEGER NOT NULL, number INTEGER NOT NULL, "
                "text TEXT NOT NULL)");
        insert_ = Prepare("INSERT INTO w1 (key, counter, number, text) VALUES (?, ?, ?, ?)");
        select_ = Prepare("SELECT counter, number, text FROM w1 WHERE key = ?");
        update_ = Prepare("UPDATE w1 SET counter = ? WHERE key = ?");
        delete_ = Prepare("DELETE FROM w1 WHERE key = ?");
        scan_ = Prepare("SELECT key, counter, number FROM w1 ORDER BY key");
        count_ = Prepare("SELECT count(*) FROM w1");
    }
    ~SqliteStore() {
        for (sqlite3_stmt* statement : {insert_, select_, update_, delete_, scan_, count_}) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(db_);
    }
    SqliteStore(const SqliteStore&) = delete;
    SqliteStore& operator=(const SqliteStore&) = delete;

    void Begin(Phase) { Execute("BEGIN"); }
    void End(Phase) { Execute("COMMIT"); }

    void Insert(std::uint64_t key, const Value& value) {
        sqlite3_bind_int64(insert_, 1, static_cast<sqlite3_int64>(key));
        sqlite3_bind_int64(insert_, 2, value.counter);
        sqlite3_bind_int64(insert_, 3, value.number);
        sqlite3_bind_text(insert_, 4, value.text.data(), TextSize, SQLITE_STATIC);
        Done(insert_, "insert");
    }

    bool Get(std::uint64_t key, Value& value) {
        if (!Select(key)) return false;
        value.counter = static_cast<std::uint32_t>(sqlite3_column_int64(select_, 0));
        value.number = sqlite3_column_int64(select_, 1);
        const void* text = sqlite3_column_text(select_, 2);
        if (text == nullptr || sqlite3_column_bytes(select_, 2) != static_cast<int>(TextSize)) {
            throw CompareError("sqlite get: wrong text");
        }
        std::memcpy(value.text.data(), text, TextSize);
        sqlite3_reset(select_);
        return true;
    }

    bool Update(std::uint64_t key) {
        if (!Select(key)) return false;
        const sqlite3_int64 counter = sqlite3_column_int64(select_, 0);
        sqlite3_reset(select_);
        sqlite3_bind_int64(update_, 1, counter + 1);
        sqlite3_bind_int64(update_, 2, static_cast<sqlite3_int64>(key));
        Done(update_, "update");
        return true;
    }

    bool Remove(std::uint64_t key) {
        sqlite3_bind_int64(delete_, 1, static_cast<sqlite3_int64>(key));
        Done(delete_, "delete");
        return sqlite3_changes(db_) == 1;
    }

    template <class Visit>
    void Scan(Visit&& visit) {
        int result = SQLITE_ROW;
        while ((result = sqlite3_step(scan_)) == SQLITE_ROW) {
            visit(static_cast<std::uint64_t>(sqlite3_column_int64(scan_, 0)),
                  static_cast<std::uint32_t>(sqlite3_column_int64(scan_, 1)), sqlite3_column_int64(scan_, 2));
        }
        sqlite3_reset(scan_);
        if (result != SQLITE_DONE) Check(result, "scan");
    }

    std::uint64_t Count() {
        if (sqlite3_step(count_) != SQLITE_ROW) Check(sqlite3_errcode(db_), "count");
        const sqlite3_int64 count = sqlite3_column_int64(count_, 0);
        sqlite3_reset(count_);
        return static_cast<std::uint64_t>(count);
    }

private:
    void Check(int result, const char* what) {
        if (result != SQLITE_OK) throw CompareError(std::string("sqlite ") + what + ": " + sqlite3_errmsg(db_));
    }

    void Execute(const char* sql) { Check(sqlite3_exec(db_, sql, nullptr, nullptr, nullptr), sql); }

    sqlite3_stmt* Prepare(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        Check(sqlite3_prepare_v2(db_, sql, -1, &statement, nullptr), sql);
        return statement;
    }

    // Steps a statement that returns no row, then makes it ready for the next binding.
    void Done(sqlite3_stmt* statement, const char* what) {
        const int result = sqlite3_step(statement);
        sqlite3_reset(statement);
        if (result != SQLITE_DONE) Check(result, what);
    }

    // Leaves the row of `key` in select_ (the caller resets it), or resets select_ and says false.
    bool Select(std::uint64_t key) {
        sqlite3_bind_int64(select_, 1, static_cast<sqlite3_int64>(key));
        const int result = sqlite3_step(select_);
        if (result == SQLITE_ROW) return true;
        sqlite3_reset(select_);
        if (result != SQLITE_DONE) Check(result, "select");
        return false;
    }

    sqlite3* db_ = nullptr;
    sqlite3_stmt* insert_ = nullptr;
    sqlite3_stmt* select_ = nullptr;
    sqlite3_stmt* update_ = nullptr;
    sqlite3_stmt* delete_ = nullptr;
    sqlite3_stmt* scan_ = nullptr;
    sqlite3_stmt* count_ = nullptr;
};

}  // namespace

void AddSqliteStores(std::vector<StoreEntry>& stores) {
    stores.push_back({"sqlite", "SQLite in memory, INTEGER PRIMARY KEY, prepared statements, one transaction per phase",
                      [](std::uint64_t n, const std::string&) { return RunW1<SqliteStore>(n); }});
}

}  // namespace Tavrin::Compare
