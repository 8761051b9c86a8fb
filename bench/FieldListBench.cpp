// Raw field access by id and record image (de)serialisation, for both layouts.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/records/FieldList.h"
#include "tavrin/records/ManagedFieldListFactory.h"
#include "tavrin/records/UnmanagedFieldListFactory.h"

namespace {

using Tavrin::Database::FieldList;
using Tavrin::Database::FieldSpecification;

// Twelve fixed-length fields (both layouts accept them), packed from offset 0, ids 1..12.
std::vector<FieldSpecification> Fields() {
    std::vector<FieldSpecification> fields;
    std::uint32_t offset = 0;
    for (std::uint16_t id = 1; id <= 12; ++id) {
        const bool text = id % 3 == 0;
        const std::uint32_t length = text ? 24 : 8;
        fields.emplace_back(id, "field" + std::to_string(id),
                            text ? FieldSpecification::TextArray : FieldSpecification::UInt, length, offset, 0);
        offset += length;
    }
    return fields;
}

std::unique_ptr<FieldList> MakeList(bool managed) {
    const auto& factory = managed ? static_cast<const Tavrin::Database::IFieldListFactory&>(
                                        Tavrin::Database::ManagedFieldListFactory::GetInstance())
                                  : Tavrin::Database::UnmanagedFieldListFactory::GetInstance();
    return std::unique_ptr<FieldList>(factory.Create(Fields()));
}

void FillImage(const FieldList& list, unsigned char* data) {
    list.ResetData(data);
    const std::string text(24, 't');
    for (std::uint16_t id = 1; id <= 12; ++id) {
        const std::uint64_t number = id * 1000003u;
        if (id % 3 == 0) {
            list.SetField(data, id, text.data(), 24);
        } else {
            list.SetField(data, id, &number, 8);
        }
    }
}

void SetAndGetFieldById(benchmark::State& state) {
    const auto list = MakeList(state.range(0) != 0);
    std::vector<unsigned char> image(list->GetDataLength());
    FillImage(*list, image.data());
    std::uint64_t value = 42;
    unsigned char buffer[8];
    std::uint32_t length = 0;
    for (auto _ : state) {
        ++value;
        benchmark::DoNotOptimize(list->SetField(image.data(), 7, &value, 8));
        benchmark::DoNotOptimize(list->GetField(image.data(), 7, buffer, sizeof buffer, length));
        benchmark::ClobberMemory();
    }
    state.SetLabel(state.range(0) != 0 ? "managed" : "unmanaged");
}
BENCHMARK(SetAndGetFieldById)->Arg(1)->Arg(0);

void SerializeImage(benchmark::State& state) {
    const auto list = MakeList(state.range(0) != 0);
    std::vector<unsigned char> image(list->GetDataLength());
    FillImage(*list, image.data());
    std::vector<unsigned char> buffer(1024);
    Tavrin::MessageBuilder builder(buffer.data(), static_cast<std::uint32_t>(buffer.size()));
    for (auto _ : state) {
        builder.Reset(1);
        benchmark::DoNotOptimize(list->SerializeFields(builder, image.data()));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * builder.GetLength());
    state.SetLabel(state.range(0) != 0 ? "managed" : "unmanaged");
}
BENCHMARK(SerializeImage)->Arg(1)->Arg(0);

void DeserializeImage(benchmark::State& state) {
    const auto list = MakeList(state.range(0) != 0);
    std::vector<unsigned char> image(list->GetDataLength());
    FillImage(*list, image.data());
    Tavrin::MessageBuilder builder;
    list->SerializeFields(builder, image.data());
    std::vector<unsigned char> target(list->GetDataLength());
    for (auto _ : state) {
        Tavrin::MessageValidator validator(builder.GetBuffer(), builder.GetLength());
        benchmark::DoNotOptimize(list->DeserializeFields(validator, target.data()));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * builder.GetLength());
    state.SetLabel(state.range(0) != 0 ? "managed" : "unmanaged");
}
BENCHMARK(DeserializeImage)->Arg(1)->Arg(0);

}  // namespace
