// A killed process never costs a record that it wrote. A forked child runs a random mix of inserts,
// updates and removes on a table with three tree indexes and appends each finished operation to a
// log with write(2); the parent kills it with SIGKILL at a random moment, reopens the table and
// holds it against the log. Only the operation in flight, the one behind the last logged one, may
// have happened or not.
//
// TAVRIN_CRASH_KILLS sets the number of kills (tools/crash-soak.sh runs thousands) and
// TAVRIN_CRASH_SEED fixes the random seed of a run: the same workloads and delays, though the
// moment at which each kill lands still varies. The files of a failed kill are kept under
// the temporary path as tavrin-crash-<seed>-<kill>.

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>

#include "../base/ScratchDirectory.h"
#include "../base/ThrownStatus.h"
#include "WriteTestSupport.h"

namespace Tavrin::Database::Testing {

static void PrintTo(const Person& p, std::ostream* out) {
    *out << "{" << p.id << " " << p.code << " " << p.group << " " << p.score << " " << p.note << "}";
}

namespace {

using People = std::map<std::uint32_t, Person>;  // by the primary key, Id

// One write: Insert, Note (a read, a change of the non-key field and a write back), Keys (a fresh
// record under an existing id with other secondary keys), Remove by Id, remove by Code (Drop).
struct Operation {
    enum Kind : char { Insert = 'I', Note = 'N', Keys = 'K', Remove = 'R', Drop = 'D' };
    Kind kind = Insert;
    Person person;  // what the record is after the operation; the removed record for Remove and Drop
    bool operator==(const Operation&) const = default;

    std::string ToLine() const {
        std::ostringstream line;
        line << static_cast<char>(kind) << ' ' << person.id << ' ' << person.code << ' ' << person.group << ' '
             << person.score << ' ' << person.note << '\n';
        return line.str();
    }
    static bool FromLine(const std::string& text, Operation& operation) {
        std::istringstream line(text);
        char kind = 0;
        Person& p = operation.person;
        if (!(line >> kind >> p.id >> p.code >> p.group >> p.score >> p.note)) return false;
        operation.kind = static_cast<Kind>(kind);
        return true;
    }
};

// The random mix, a pure function of the seed and the operations applied so far: the parent replays
// the log through it and so learns the operation in flight.
class Workload {
public:
    Workload(std::uint32_t seed, std::uint32_t maxPeople) : random_(seed), maxPeople_(maxPeople) {}

    Operation Next() {
        const std::uint32_t roll = Draw(100);
        if (people_.empty() || (roll < 45 && people_.size() < maxPeople_)) {
            Person fresh{FreshId(), FreshCode(), Group(), Score(), NoteText()};
            return {Operation::Insert, fresh};
        }
        Person person = std::next(people_.begin(), Draw(people_.size()))->second;
        if (roll < 65) {
            person.note = NoteText();
            return {Operation::Note, person};
        }
        if (roll < 85) {
            if (Draw(2) == 0) person.code = FreshCode();
            person.group = Group();
            person.score = Score();
            return {Operation::Keys, person};
        }
        return {roll < 93 ? Operation::Remove : Operation::Drop, person};
    }

    void Apply(const Operation& operation) { Apply(people_, codes_, operation); }

    static void Apply(People& people, std::set<std::uint32_t>& codes, const Operation& operation) {
        const auto old = people.find(operation.person.id);
        if (old != people.end()) codes.erase(old->second.code);
        if (operation.kind == Operation::Remove || operation.kind == Operation::Drop) {
            people.erase(operation.person.id);
        } else {
            people[operation.person.id] = operation.person;
            codes.insert(operation.person.code);
        }
    }

    const People& GetPeople() const { return people_; }

private:
    std::uint32_t Draw(std::size_t bound) { return static_cast<std::uint32_t>(random_() % bound); }
    std::uint32_t FreshId() {
        for (;;) {
            const std::uint32_t id = 1 + Draw(3 * maxPeople_);
            if (people_.count(id) == 0) return id;
        }
    }
    // Codes come from a small range, so that removed and moved codes come back soon.
    std::uint32_t FreshCode() {
        for (;;) {
            const std::uint32_t code = 1 + Draw(2 * maxPeople_);
            if (codes_.count(code) == 0) return code;
        }
    }
    std::int32_t Group() { return static_cast<std::int32_t>(Draw(6)); }
    std::int32_t Score() { return static_cast<std::int32_t>(Draw(40)); }
    std::string NoteText() { return "n" + std::to_string(Draw(100000)); }

    std::mt19937 random_;
    std::uint32_t maxPeople_;
    People people_;
    std::set<std::uint32_t> codes_;
};

struct Shape {
    std::uint32_t maxRecords;
    std::uint32_t growRecords;
    std::uint32_t maxPeople;
    std::uint32_t maxDelayMicroseconds;
};

StatusCode Execute(ITable& table, const Operation& operation) {
    Record record = ToRecord(table, operation.person);
    switch (operation.kind) {
        case Operation::Insert:
        case Operation::Keys:
            return table.WriteRecord(record);
        case Operation::Note: {
            Key key(kById, record);
            if (const StatusCode status = table.GetEqual(key, record); status != Status::Success) return status;
            const FieldList& list = *record.GetFieldList();
            if (const StatusCode status = list.SetField(record.GetData(), kNote, operation.person.note);
                status != Status::Success) {
                return status;
            }
            return table.WriteRecord(record);  // same id and key fields: the store alone changes
        }
        case Operation::Remove:
        case Operation::Drop: {
            Key key(operation.kind == Operation::Remove ? kById : kByCode, record);
            return table.RemoveRecord(key);
        }
    }
    return Status::Failure;
}

// The child: opens the table, says it is ready on `ready`, then works until it is killed. Each
// finished operation is logged with one write(2), which the kill cannot undo. Never returns.
[[noreturn]] void RunChild(const std::string& directory, const std::string& logPath, const Shape& shape,
                           std::uint32_t seed, int ready) {
    int code = 0;
    try {
        auto table = MakePeople(directory, shape.maxRecords, shape.growRecords);
        const int log = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        const char byte = 1;
        if (log < 0 || ::write(ready, &byte, 1) != 1) ::_exit(3);
        Workload workload(seed, shape.maxPeople);
        for (;;) {
            const Operation operation = workload.Next();
            if (const StatusCode status = Execute(*table, operation); status != Status::Success) {
                std::fprintf(stderr, "child: %s gives status %u\n", operation.ToLine().c_str(), status);
                ::_exit(4);
            }
            const std::string line = operation.ToLine();
            if (::write(log, line.data(), line.size()) != static_cast<ssize_t>(line.size())) ::_exit(5);
            workload.Apply(operation);
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "child: %s\n", e.what());
        code = 6;
    }
    ::_exit(code);
}

// Forks the child, waits until its table is open, lets it work for a random time and kills it.
// False if the child ended by itself.
bool RunAndKill(const std::string& directory, const std::string& logPath, const Shape& shape, std::uint32_t seed,
                std::mt19937& random) {
    int pipe[2];
    if (::pipe(pipe) != 0) return false;
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipe[0]);
        RunChild(directory, logPath, shape, seed, pipe[1]);
    }
    ::close(pipe[1]);
    char byte = 0;
    const bool ready = child > 0 && ::read(pipe[0], &byte, 1) == 1;
    ::close(pipe[0]);
    if (ready) ::usleep(random() % (shape.maxDelayMicroseconds + 1));
    if (child > 0) ::kill(child, SIGKILL);
    int status = 0;
    if (child <= 0 || ::waitpid(child, &status, 0) != child) return false;
    return ready && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

// The people of the store by Id and by record id. A repeated Id or Code stops the walk, so that a
// walk that runs in a circle ends.
void StoreWalk(ITable& table, People& people, std::map<std::uint32_t, Person>& byRecordId) {
    std::set<std::uint32_t> codes;
    std::uint32_t recordId = 0;
    Record record;
    for (StatusCode status = table.GetFirstRecord(recordId, record); status == Status::Success;
         status = table.GetNextRecord(recordId, record)) {
        const Person person = ToPerson(record);
        ASSERT_TRUE(people.emplace(person.id, person).second) << "repeated id " << person.id;
        ASSERT_TRUE(codes.insert(person.code).second) << "repeated code " << person.code;
        ASSERT_TRUE(byRecordId.emplace(record.GetRecordId(), person).second) << "repeated " << record.GetRecordId();
    }
}

// Walks index `number` through the table: each key strictly after the one before it and equal to
// the key built from the record that it gives; the records found are exactly those of the store.
void ExpectIndexWalk(ITable& table, std::uint16_t number, const std::map<std::uint32_t, Person>& stored) {
    IIndex* index = nullptr;
    ASSERT_EQ(table.GetIndex(number, index), Status::Success);
    std::map<std::uint32_t, Person> walked;
    Key key(&table, number);
    Key previous;
    Record record;
    for (StatusCode status = table.GetFirst(key, record); status == Status::Success;
         status = table.GetNext(key, record)) {
        if (previous.IsInitialized()) {
            EXPECT_LT(index->CompareKeys(previous, key), 0) << "index " << number;
        }
        ASSERT_EQ(index->CompareKeys(Key(number, record), key), 0) << "index " << number << ": stale key";
        ASSERT_TRUE(walked.emplace(record.GetRecordId(), ToPerson(record)).second)
            << "index " << number << ": record " << record.GetRecordId() << " again";
        previous = key;
    }
    EXPECT_EQ(walked, stored) << "index " << number;
}

std::string Differences(const People& found, const People& expected) {
    std::ostringstream text;
    for (const auto& [id, person] : expected) {
        const auto other = found.find(id);
        if (other == found.end()) text << "\n  lost " << testing::PrintToString(person);
        else if (!(other->second == person))
            text << "\n  " << testing::PrintToString(other->second) << " instead of " << testing::PrintToString(person);
    }
    for (const auto& [id, person] : found) {
        if (expected.count(id) == 0) text << "\n  unexpected " << testing::PrintToString(person);
    }
    return text.str();
}

// The table against the log: the store holds the logged people, with or without `inFlight`, and
// every index agrees with it.
void ExpectTableMatchesLog(ITable& table, const People& logged, const Operation& inFlight) {
    People stored;
    std::map<std::uint32_t, Person> byRecordId;
    StoreWalk(table, stored, byRecordId);
    if (testing::Test::HasFatalFailure()) return;
    People after = logged;
    std::set<std::uint32_t> codes;
    Workload::Apply(after, codes, inFlight);
    EXPECT_TRUE(stored == logged || stored == after)
        << "in flight: " << inFlight.ToLine() << "against the log:" << Differences(stored, logged);
    std::uint32_t count = 0;
    EXPECT_EQ(table.GetCurrentRecords(count), Status::Success);
    EXPECT_EQ(count, stored.size()) << "the record count disagrees with the store's records";
    for (std::uint16_t number = 0; number < table.GetNumberOfIndexes(); ++number) {
        ExpectIndexWalk(table, number, byRecordId);
    }
}

// Replays the log through a workload of the same seed: the people that it leaves, and the
// operation in flight when the child died.
People ReplayLog(const std::string& logPath, std::uint32_t seed, const Shape& shape, Operation& inFlight,
                 std::size_t& operations) {
    Workload workload(seed, shape.maxPeople);
    std::ifstream log(logPath);
    std::string line;
    operations = 0;
    while (std::getline(log, line) && !log.eof()) {  // a line cut by the kill has no newline
        Operation logged;
        EXPECT_TRUE(Operation::FromLine(line, logged)) << line;
        const Operation expected = workload.Next();
        EXPECT_EQ(logged, expected) << "log line " << operations << ": " << line;
        if (!(logged == expected)) break;
        workload.Apply(expected);
        ++operations;
    }
    inFlight = workload.Next();
    return workload.GetPeople();
}

std::uint32_t FromEnvironment(const char* name, std::uint32_t fallback) {
    const char* value = std::getenv(name);
    return value == nullptr ? fallback : static_cast<std::uint32_t>(std::strtoul(value, nullptr, 10));
}

// 200 kills a run unless TAVRIN_CRASH_KILLS says otherwise.
std::uint32_t Kills() { return FromEnvironment("TAVRIN_CRASH_KILLS", 200); }

void KillAndCheck(const Shape& shape, std::uint32_t kills) {
    const std::uint32_t runSeed = FromEnvironment("TAVRIN_CRASH_SEED", std::random_device{}());
    std::mt19937 random(runSeed);
    std::size_t operations = 0;
    std::uint32_t kill = 0;
    for (; kill < kills && !testing::Test::HasFailure(); ++kill) {
        const std::uint32_t seed = static_cast<std::uint32_t>(random());
        SCOPED_TRACE("TAVRIN_CRASH_SEED=" + std::to_string(runSeed) + ", kill " + std::to_string(kill));
        Tavrin::Testing::ScratchDirectory directory;
        const std::string logPath = directory / "operations.log";
        ASSERT_TRUE(RunAndKill(directory.Path(), logPath, shape, seed, random)) << "the child was not killed";

        std::size_t logged = 0;
        Operation inFlight;
        const People people = ReplayLog(logPath, seed, shape, inFlight, logged);
        operations += logged;
        EXPECT_EQ(Tavrin::Testing::ThrownStatus([&] { MakePeople(directory.Path(), shape.maxRecords); }),
                  Status::Invalid)
            << "the record file left open by the kill was not refused";
        for (int open = 0; open < 2; ++open) {  // rebuilt indexes, then the files that they left
            std::unique_ptr<ITable> table;
            ASSERT_NO_THROW(table = MakePeople(directory.Path(), shape.maxRecords, shape.growRecords));
            ExpectTableMatchesLog(*table, people, inFlight);
        }
        if (testing::Test::HasFailure()) {
            const std::string kept = Tavrin::File::MakePath(
                Tavrin::File::GetTemporaryPath(), "tavrin-crash-" + std::to_string(runSeed) + "-" + std::to_string(kill));
            std::error_code ignored;
            std::filesystem::copy(directory.Path(), kept, ignored);
            ADD_FAILURE() << "the files are kept in " << kept;
        }
    }
    std::printf("%u kills, %zu logged operations\n", kill, operations);
}

TEST(Crash, KilledWritersLoseNoLoggedRecord) {
    KillAndCheck(Shape{512, kHalf, 300, 15000}, Kills());
}

TEST(Crash, KilledWritersLoseNoLoggedRecordWhileTheTableGrows) {
    KillAndCheck(Shape{2, 3, 400, 6000}, std::max<std::uint32_t>(Kills() / 6, 1));
}

}  // namespace
}  // namespace Tavrin::Database::Testing
