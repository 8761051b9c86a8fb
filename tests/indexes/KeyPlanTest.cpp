// The plans an index makes once for its keys must agree with the general field machinery: the
// inline key order with FieldList::CompareKey on every pair of images (random integer keys in
// both layouts, with undefined fields, signed values and descending fields, compared both ways),
// and the direct key copy with FieldList::CopyFieldByNumber byte for byte. Keys of other types take
// the general paths; the tree's model test runs them.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "tavrin/indexes/KeyCopy.h"
#include "tavrin/indexes/KeyOrder.h"
#include "tavrin/records/ManagedFieldListFactory.h"
#include "tavrin/records/UnmanagedFieldListFactory.h"

namespace Tavrin::Database::Testing {
namespace {

int Sign(int order) { return order < 0 ? -1 : (order > 0 ? 1 : 0); }

std::vector<FieldSpecification> IntegerKeyFields() {
    // Unmanaged offsets: 0, 1, 3, 7, 15, 16.
    return {FieldSpecification(1, "Small", FieldSpecification::SInt, 1, 0, 0),
            FieldSpecification(2, "Short", FieldSpecification::UInt, 2, 1, FieldSpecification::DescendingProperty),
            FieldSpecification(3, "Int", FieldSpecification::SInt, 4, 3, 0),
            FieldSpecification(4, "Long", FieldSpecification::UInt, 8, 7, 0),
            FieldSpecification(5, "Flag", FieldSpecification::Boolean, 1, 15, FieldSpecification::DescendingProperty),
            FieldSpecification(6, "Wide", FieldSpecification::SInt, 8, 16, 0)};
}

// Few distinct byte values, so that equal fields (and so the later fields) are compared often.
void FillRandom(const FieldList& list, unsigned char* image, std::mt19937& random) {
    list.ResetData(image);
    std::uniform_int_distribution<int> pick(0, 3);
    for (auto field = list.Begin(); field != list.End(); ++field) {
        if (pick(random) == 0) continue;  // left undefined where the layout allows
        const std::uint32_t length = field.GetSpecification().GetMaxLength();
        std::vector<unsigned char> value(length);
        for (unsigned char& byte : value) byte = static_cast<unsigned char>(pick(random) == 0 ? 0x80 : pick(random));
        if (field.GetType() == FieldSpecification::Boolean) value[0] &= 1;
        ASSERT_EQ(list.SetField(image, field.GetId(), value.data(), length), Status::Success);
    }
}

void ExpectSameOrderAsTheFieldList(const IFieldListFactory& factory) {
    const std::unique_ptr<FieldList> list(factory.Create(IntegerKeyFields()));
    std::mt19937 random(5);
    std::vector<unsigned char> a(list->GetDataLength());
    std::vector<unsigned char> b(list->GetDataLength());
    for (std::uint32_t compared = 1; compared <= list->GetFieldCount(); ++compared) {
        const KeyOrder order(*list, compared);
        ASSERT_TRUE(order.IsInline());
        for (int pair = 0; pair < 3000; ++pair) {
            FillRandom(*list, a.data(), random);
            FillRandom(*list, b.data(), random);
            ASSERT_EQ(Sign(order.Compare(a.data(), b.data())), Sign(list->CompareKey(a.data(), b.data(), compared)))
                << compared << " fields, pair " << pair;
            ASSERT_EQ(Sign(order.Compare(b.data(), a.data())), Sign(list->CompareKey(b.data(), a.data(), compared)));
            ASSERT_EQ(order.Compare(a.data(), a.data()), 0);
        }
    }
}

TEST(KeyOrder, InlineOrderAgreesWithTheFieldListInBothLayouts) {
    ExpectSameOrderAsTheFieldList(ManagedFieldListFactory::GetInstance());
    ExpectSameOrderAsTheFieldList(UnmanagedFieldListFactory::GetInstance());
}

// A key of every fixed-filled field, in another order than the table's, built from random records
// both ways; the key images start from the same stale bytes, which an undefined field leaves.
void ExpectSameKeyAsTheGeneralCopy(const IFieldListFactory& factory) {
    std::vector<FieldSpecification> tableFields = IntegerKeyFields();
    tableFields.emplace_back(7, "Code", FieldSpecification::TextArray, 5, 24, 0);
    const std::unique_ptr<FieldList> table(factory.Create(tableFields));
    std::vector<FieldSpecification> keyFields;
    std::vector<std::uint32_t> numbers;
    std::uint32_t offset = 0;
    for (const std::uint32_t number : {6u, 1u, 3u, 4u}) {
        FieldSpecification field = table->GetFieldSpecificationList()[number];
        keyFields.emplace_back(field.GetId(), field.GetName(), field.GetType(), field.GetMaxLength(), offset, 0);
        offset += field.GetMaxLength();
        numbers.push_back(number);
    }
    const std::unique_ptr<FieldList> key(factory.Create(keyFields));
    const KeyCopy copy(*key, *table, numbers);
    ASSERT_TRUE(copy.IsDirect());
    std::mt19937 random(9);
    std::vector<unsigned char> record(table->GetDataLength());
    std::vector<unsigned char> direct(key->GetDataLength(), 0x5A);
    std::vector<unsigned char> general(key->GetDataLength(), 0x5A);
    for (int round = 0; round < 500; ++round) {
        FillRandom(*table, record.data(), random);
        ASSERT_EQ(copy.Build(direct.data(), record.data()), Status::Success);
        for (std::uint32_t i = 0; i < numbers.size(); ++i) {
            ASSERT_EQ(key->CopyFieldByNumber(i, general.data(), numbers[i], *table, record.data()), Status::Success);
        }
        ASSERT_EQ(direct, general) << "round " << round;
    }
}

TEST(KeyCopy, DirectCopyLeavesTheBytesOfTheGeneralCopy) {
    ExpectSameKeyAsTheGeneralCopy(ManagedFieldListFactory::GetInstance());
    ExpectSameKeyAsTheGeneralCopy(UnmanagedFieldListFactory::GetInstance());
}

}  // namespace
}  // namespace Tavrin::Database::Testing
