// Typed field access: integers written and read by value, and a value object written and read.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/records/ManagedFieldList.h"

namespace {

using Tavrin::Database::FieldSpecification;
using Tavrin::Database::ManagedFieldList;

ManagedFieldList MakeList() {
    return ManagedFieldList({FieldSpecification(1, "count", FieldSpecification::UInt, 8, 0, 0),
                             FieldSpecification(2, "delta", FieldSpecification::SInt, 4, 0, 0),
                             FieldSpecification(3, "price", FieldSpecification::Rational, 9, 0, 0)});
}

void SetAndGetIntegers(benchmark::State& state) {
    const ManagedFieldList list = MakeList();
    std::vector<unsigned char> image(list.GetDataLength());
    list.ResetData(image.data());
    std::uint64_t count = 0;
    std::int32_t delta = 0;
    for (auto _ : state) {
        list.SetField(image.data(), 1, std::uint32_t{123456});  // zero-extended to 8 bytes
        list.SetField(image.data(), 2, std::int16_t{-42});      // sign-extended to 4 bytes
        list.GetField(image.data(), 1, count);
        list.GetField(image.data(), 2, delta);
        benchmark::DoNotOptimize(count + delta);
    }
}
BENCHMARK(SetAndGetIntegers);

// The changed form on a field that already holds the value: a comparison and no write.
void SetUnchangedInteger(benchmark::State& state) {
    const ManagedFieldList list = MakeList();
    std::vector<unsigned char> image(list.GetDataLength());
    list.ResetData(image.data());
    list.SetField(image.data(), 1, std::uint64_t{77});
    bool changed = false;
    for (auto _ : state) {
        list.SetField(image.data(), 1, std::uint64_t{77}, changed);
        benchmark::DoNotOptimize(changed);
    }
}
BENCHMARK(SetUnchangedInteger);

void SetAndGetRational(benchmark::State& state) {
    const ManagedFieldList list = MakeList();
    std::vector<unsigned char> image(list.GetDataLength());
    list.ResetData(image.data());
    Tavrin::Rational price;
    price.Set(1999, 2);
    Tavrin::Rational read;
    for (auto _ : state) {
        list.SetField(image.data(), 3, price);
        list.GetField(image.data(), 3, read);
        benchmark::DoNotOptimize(read.GetNumerator());
    }
}
BENCHMARK(SetAndGetRational);

}  // namespace
