// CompareKey, the comparison of every index descent: a one-field integer key and a three-field key
// of text, descending signed integer and date.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "tavrin/base/FieldTypes/Date.h"
#include "tavrin/records/ManagedFieldList.h"

namespace {

using Tavrin::Database::FieldSpecification;
using Tavrin::Database::ManagedFieldList;

void CompareIntegerKey(benchmark::State& state) {
    const ManagedFieldList list({FieldSpecification(1, "id", FieldSpecification::UInt, 8, 0, 0)});
    std::vector<unsigned char> a(list.GetDataLength());
    std::vector<unsigned char> b(list.GetDataLength());
    list.ResetData(a.data());
    list.ResetData(b.data());
    list.SetField(a.data(), 1, std::uint64_t{1000003});
    list.SetField(b.data(), 1, std::uint64_t{1000033});
    for (auto _ : state) benchmark::DoNotOptimize(list.CompareKey(a.data(), b.data()));
}
BENCHMARK(CompareIntegerKey);

// The keys are equal in their first two fields, so all three fields are compared.
void CompareMixedKey(benchmark::State& state) {
    const ManagedFieldList list({FieldSpecification(1, "name", FieldSpecification::TextString, 24, 0, 0),
                                 FieldSpecification(2, "rank", FieldSpecification::SInt, 4, 0,
                                                    FieldSpecification::DescendingProperty),
                                 FieldSpecification(3, "day", FieldSpecification::Date, 3, 0, 0)});
    std::vector<unsigned char> a(list.GetDataLength());
    std::vector<unsigned char> b(list.GetDataLength());
    Tavrin::Date early;
    Tavrin::Date late;
    early.Set(2026, 1, 31);
    late.Set(2026, 2, 1);
    for (auto* image : {a.data(), b.data()}) {
        list.ResetData(image);
        list.SetField(image, 1, std::string("a common customer name"));
        list.SetField(image, 2, std::int32_t{-17});
    }
    list.SetField(a.data(), 3, early);
    list.SetField(b.data(), 3, late);
    for (auto _ : state) benchmark::DoNotOptimize(list.CompareKey(a.data(), b.data()));
}
BENCHMARK(CompareMixedKey);

}  // namespace
