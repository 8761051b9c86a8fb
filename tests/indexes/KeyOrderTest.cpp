// The inline key order must agree with FieldList::CompareKey on every pair of images: random
// images of integer keys in both layouts, with undefined fields, signed values and descending
// fields, compared both ways.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "indexes/KeyOrder.h"
#include "records/ManagedFieldListFactory.h"
#include "records/UnmanagedFieldListFactory.h"

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

TEST(KeyOrder, KeysWithOtherTypesUseTheFieldList) {
    const std::unique_ptr<FieldList> list(ManagedFieldListFactory::GetInstance().Create(
        {FieldSpecification(1, "Number", FieldSpecification::UInt, 4, 0, 0),
         FieldSpecification(2, "Name", FieldSpecification::TextString, 8, 4, 0)}));
    EXPECT_TRUE(KeyOrder(*list, 1).IsInline());
    const KeyOrder order(*list, 2);
    ASSERT_FALSE(order.IsInline());
    std::vector<unsigned char> a(list->GetDataLength());
    std::vector<unsigned char> b(list->GetDataLength());
    list->ResetData(a.data());
    list->ResetData(b.data());
    ASSERT_EQ(list->SetField(a.data(), 2, "abc", 3), Status::Success);
    ASSERT_EQ(list->SetField(b.data(), 2, "abd", 3), Status::Success);
    EXPECT_LT(order.Compare(a.data(), b.data()), 0);
    EXPECT_GT(order.Compare(b.data(), a.data()), 0);
}

}  // namespace
}  // namespace Tavrin::Database::Testing
