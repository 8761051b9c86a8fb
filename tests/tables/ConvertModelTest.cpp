// Conversion between random layouts against a model of its rules: fields are matched by name and
// type, an integer of another width keeps a value that fits, a text keeps a value that fits, and
// everything else is undefined. In some rounds a child process is killed while it converts: the
// table is then either the old one, whole, or the complete new one.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <set>

#include "../base/ChildProcess.h"
#include "../base/ScratchDirectory.h"
#include "OpenTableTestSupport.h"

namespace Tavrin::Database::Testing {
namespace {

using Tavrin::Testing::ScratchDirectory;
using Type = FieldSpecification::Type;

struct Value {
    bool defined = false;
    std::uint64_t bits = 0;  // an SInt as its 64-bit two's complement
    std::string text;
    bool operator==(const Value&) const = default;
};
void PrintTo(const Value& value, std::ostream* out) {
    *out << (value.defined ? std::to_string(value.bits) + " \"" + value.text + "\"" : std::string("undefined"));
}
using Row = std::vector<Value>;  // in the order of its layout
using Layout = std::vector<FieldSpecification>;

FieldSpecification RandomField(const std::string& name, std::uint16_t id, std::mt19937& random) {
    const Type type = std::array{FieldSpecification::UInt, FieldSpecification::SInt, FieldSpecification::TextString}[random() % 3];
    const std::uint32_t length = type == FieldSpecification::TextString ? 2 + random() % 9 : 1u << (random() % 4);
    return FieldSpecification(id, name, type, length, 0, 0);
}

// "Key" (the old table's primary key) and some of F0 to F4, each of a random type and width.
Layout RandomLayout(std::mt19937& random) {
    Layout layout = {FieldSpecification(1, "Key", FieldSpecification::UInt, 4, 0, 0)};
    for (std::uint16_t i = 0; i < 5; ++i) {
        if (random() % 3 != 0) layout.push_back(RandomField("F" + std::to_string(i), 2 + i, random));
    }
    return layout;
}

// Fields dropped, retyped, widened or narrowed, under new ids, moved, and new ones added.
Layout Mutate(const Layout& old, std::mt19937& random) {
    Layout next;
    std::set<std::uint16_t> ids;
    const auto freshId = [&] {
        std::uint16_t id = 0;
        do id = static_cast<std::uint16_t>(1 + random() % 60); while (!ids.insert(id).second);
        return id;
    };
    for (const FieldSpecification& field : old) {
        const std::uint32_t change = random() % 6;
        if (change == 0) continue;
        FieldSpecification changed = change == 1 ? RandomField(field.GetName(), 0, random) : field;
        if (change == 2) changed = RandomField(field.GetName(), 0, random);
        while (change == 2 && changed.GetType() != field.GetType()) changed = RandomField(field.GetName(), 0, random);
        next.push_back(changed);
    }
    for (std::uint32_t i = random() % 3; i > 0; --i) next.push_back(RandomField("G" + std::to_string(i), 0, random));
    if (next.empty()) next.push_back(RandomField("G0", 0, random));
    std::shuffle(next.begin(), next.end(), random);
    Layout numbered;
    for (const FieldSpecification& field : next) {
        numbered.emplace_back(freshId(), field.GetName(), field.GetType(), field.GetMaxLength(), 0, 0);
    }
    return numbered;
}

Value RandomValue(const FieldSpecification& field, std::mt19937_64& random) {
    Value value;
    if (random() % 5 == 0) return value;
    value.defined = true;
    if (field.GetType() == FieldSpecification::TextString) {
        value.text.assign(1 + random() % field.GetMaxLength(), static_cast<char>('a' + random() % 26));
        return value;
    }
    const std::uint32_t bits = 8 * field.GetMaxLength() - (field.GetType() == FieldSpecification::SInt ? 1 : 0);
    const std::uint32_t magnitude = static_cast<std::uint32_t>(random() % (bits + 1));  // any the field holds
    value.bits = magnitude == 0 ? 0 : random() >> (64 - magnitude);
    if (field.GetType() == FieldSpecification::SInt && random() % 2 == 0) value.bits = ~value.bits;
    return value;
}

// Whether a defined value of `from` fits `to`, a field of the same name and type.
bool Fits(const Value& value, const FieldSpecification& to) {
    if (to.GetType() == FieldSpecification::TextString) return value.text.size() <= to.GetMaxLength();
    if (to.GetMaxLength() == 8) return true;
    const std::int64_t limit = std::int64_t{1} << (8 * to.GetMaxLength() - (to.GetType() == FieldSpecification::SInt));
    if (to.GetType() == FieldSpecification::UInt) return value.bits < static_cast<std::uint64_t>(limit);
    const auto signedValue = static_cast<std::int64_t>(value.bits);
    return signedValue >= -limit && signedValue < limit;
}

// The row that the conversion must make of `row`, counting the values that don't fit.
Row Convert(const Layout& from, const Row& row, const Layout& to, std::uint64_t& dropped) {
    Row converted(to.size());
    for (std::size_t i = 0; i < to.size(); ++i) {
        for (std::size_t j = 0; j < from.size(); ++j) {
            if (from[j].GetName() != to[i].GetName() || from[j].GetType() != to[i].GetType()) continue;
            if (row[j].defined && !Fits(row[j], to[i])) ++dropped;
            if (row[j].defined && Fits(row[j], to[i])) converted[i] = row[j];
        }
    }
    return converted;
}

void Write(const FieldList& list, unsigned char* data, const FieldSpecification& field, const Value& value) {
    if (!value.defined) return;
    const std::uint16_t id = field.GetId();
    StatusCode status = Status::Success;
    if (field.GetType() == FieldSpecification::TextString) {
        status = list.SetField(data, id, value.text);
    } else if (field.GetType() == FieldSpecification::UInt) {
        const std::uint32_t w = field.GetMaxLength();
        status = w == 1 ? list.SetField(data, id, static_cast<std::uint8_t>(value.bits))
                 : w == 2 ? list.SetField(data, id, static_cast<std::uint16_t>(value.bits))
                 : w == 4 ? list.SetField(data, id, static_cast<std::uint32_t>(value.bits))
                          : list.SetField(data, id, value.bits);
    } else {
        const std::uint32_t w = field.GetMaxLength();
        const auto v = static_cast<std::int64_t>(value.bits);
        status = w == 1 ? list.SetField(data, id, static_cast<std::int8_t>(v))
                 : w == 2 ? list.SetField(data, id, static_cast<std::int16_t>(v))
                 : w == 4 ? list.SetField(data, id, static_cast<std::int32_t>(v))
                          : list.SetField(data, id, v);
    }
    ASSERT_EQ(status, Status::Success) << field.GetName();
}

Row Read(const Record& record, const Layout& layout) {
    Row row(layout.size());
    const FieldList& list = *record.GetFieldList();
    for (std::size_t i = 0; i < layout.size(); ++i) {
        const std::uint16_t id = layout[i].GetId();
        std::int64_t signedValue = 0;
        row[i].defined = layout[i].GetType() == FieldSpecification::TextString ? list.GetField(record.GetData(), id, row[i].text) == 0
                         : layout[i].GetType() == FieldSpecification::UInt
                             ? list.GetField(record.GetData(), id, row[i].bits) == 0
                             : list.GetField(record.GetData(), id, signedValue) == 0;
        if (layout[i].GetType() == FieldSpecification::SInt) row[i].bits = static_cast<std::uint64_t>(signedValue);
    }
    return row;
}

ITable* MakeTable(const std::string& directory, const Layout& layout, std::uint32_t properties, std::uint32_t cache) {
    return ManagedTableFactory::GetInstance().Create("Mig", directory, properties, layout, 64, kHalf, cache);
}

// The rows of the table's store, in store order, if it has `layout`.
std::vector<Row> Rows(ITable& table, const Layout& layout) {
    std::vector<Row> rows;
    for (const Record& record : StoredRecords(table)) rows.push_back(Read(record, layout));
    return rows;
}

// The first row that differs, if any, with the layout that names its fields.
void ExpectRows(const std::vector<Row>& actual, const std::vector<Row>& expected, const Layout& layout) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        for (std::size_t f = 0; f < layout.size(); ++f) {
            ASSERT_EQ(actual[i][f], expected[i][f]) << "record " << i << ", " << layout[f].ToFormattedString();
        }
    }
}

bool HasLayout(ITable& table, const Layout& layout) {
    const Layout stored = table.GetFieldSpecificationList();
    return std::equal(stored.begin(), stored.end(), layout.begin(), layout.end());
}

// Converts in a child that is killed after `delay` microseconds, unless it is done by then.
void ConvertAndKill(const std::string& directory, const Layout& next, std::uint32_t cache, std::uint32_t delay) {
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const char byte = 1;
        if (::write(ready[1], &byte, 1) != 1) ::_exit(3);
        try {
            MakeTable(directory, next, kCreateFile | 4, cache);
        } catch (...) {
            ::_exit(4);
        }
        Tavrin::Testing::DieWithoutCleanup();
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    ::close(ready[0]);
    ::close(ready[1]);
    ::usleep(delay);
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) || (WIFEXITED(status) && WEXITSTATUS(status) == 0)) << status;
}

// A file that the kill left open is refused once.
std::unique_ptr<ITable> Reopen(const std::string& path) {
    try {
        return std::unique_ptr<ITable>(OpenTable(path, true, false));
    } catch (const StatusCodeException& e) {
        if (e.GetCode() != Status::Invalid) throw;
    }
    return std::unique_ptr<ITable>(OpenTable(path, true, false));
}

TEST(ConvertModel, RandomLayoutsConvertByTheRulesAndSurviveKills) {
    std::mt19937 random(20240617);
    std::mt19937_64 values(17);
    std::uint32_t olds = 0, news = 0;
    for (std::uint32_t round = 0; round < 45; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        ScratchDirectory directory;
        const Layout old = RandomLayout(random);
        const Layout next = Mutate(old, random);
        const std::uint32_t cache = random() % 3 == 0 ? 8 : kAll;
        std::vector<Row> rows(200 + random() % 1500);
        {
            std::unique_ptr<ITable> table(MakeTable(directory.Path(), old, kCreateFile, cache));
            std::vector<IndexSpecification> indexes = {IndexSpecification(
                "ByKey", IndexSpecification::RedBlack, IndexSpecification::PrimaryUniqueProperty, {Field(1, 0)})};
            table->CreateIndexes(indexes);
            for (std::uint32_t i = 0; i < rows.size(); ++i) {
                Record record(table.get());
                for (std::size_t f = 0; f < old.size(); ++f) {
                    rows[i].push_back(f == 0 ? Value{true, i + 1, ""} : RandomValue(old[f], values));
                    Write(*record.GetFieldList(), record.GetData(), old[f], rows[i][f]);
                }
                ASSERT_EQ(table->WriteRecord(record), Status::Success);
            }
        }
        std::uint64_t dropped = 0;
        std::vector<Row> expected;
        for (const Row& row : rows) expected.push_back(Convert(old, row, next, dropped));

        const std::string path = directory / "Mig.tab";
        if (round % 3 == 2) {
            ConvertAndKill(directory.Path(), next, cache, random() % 150000);
            std::unique_ptr<ITable> table = Reopen(path);
            if (HasLayout(*table, old)) {
                ++olds;
                ExpectRows(Rows(*table, old), rows, old);
                continue;
            }
            ++news;
            ASSERT_TRUE(HasLayout(*table, next));
            ExpectRows(Rows(*table, next), expected, next);
            continue;
        }
        std::unique_ptr<ITable> table(MakeTable(directory.Path(), next, kCreateFile | 4, cache));
        ExpectRows(Rows(*table, next), expected, next);
        EXPECT_EQ(table->GetLastConversionReport().droppedValues, dropped);
        EXPECT_FALSE(File::IsFound(directory / "Mig-ByKey.rb.idx"));
    }
    std::printf("killed conversions: %u left the old table, %u the new one\n", olds, news);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
