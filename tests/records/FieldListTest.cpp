// The contract that both layouts share, run against each of them.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "RecordsTestSupport.h"
#include "tavrin/records/FieldList.h"
#include "tavrin/records/ManagedFieldListFactory.h"
#include "tavrin/records/UnmanagedFieldListFactory.h"

namespace Tavrin::Database {
namespace {

using Testing::Bytes;

struct Managed {
    static const IFieldListFactory& Factory() { return ManagedFieldListFactory::GetInstance(); }
};
struct Unmanaged {
    static const IFieldListFactory& Factory() { return UnmanagedFieldListFactory::GetInstance(); }
};

std::vector<FieldSpecification> CommonFields() {
    return Testing::PackedSpecifications({
        {1, "count", FieldSpecification::UInt, 4},
        {5, "flag", FieldSpecification::Boolean, 1},
        {7, "code", FieldSpecification::TextArray, 3},
        {9, "at", FieldSpecification::Time, 4},
        {10, "when", FieldSpecification::DateTime, 7},
        {12, "delta", FieldSpecification::SInt, 2},
    });
}

template <class Layout>
class FieldListContract : public ::testing::Test {
protected:
    FieldListContract() : list_(Layout::Factory().Create(CommonFields())), image_(list_->GetDataLength(), 0xEE) {
        list_->ResetData(image_.data());
    }

    std::unique_ptr<FieldList> list_;
    std::vector<unsigned char> image_;
};

using Layouts = ::testing::Types<Managed, Unmanaged>;
TYPED_TEST_SUITE(FieldListContract, Layouts);

TYPED_TEST(FieldListContract, IdsOutsideTheListAreNotFound) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->image_.data();
    for (std::uint16_t id : {0, 6, 11, 13, 65535}) {  // gaps in the id table and ids beyond it
        const void* value = nullptr;
        std::uint32_t length = 0;
        bool flag = false;
        FieldSpecification specification;
        EXPECT_EQ(list.SetField(data, id, Bytes("abcd"), 4), Status::NotFound);
        EXPECT_EQ(list.SetField(data, id, true), Status::NotFound);
        EXPECT_EQ(list.GetField(static_cast<const unsigned char*>(data), id, value, length), Status::NotFound);
        EXPECT_EQ(list.IsFieldDefined(data, id, flag), Status::NotFound);
        EXPECT_EQ(list.GetFieldSpecification(id, specification), Status::NotFound);
    }
}

TYPED_TEST(FieldListContract, WritesFollowTheLengthRuleAndFailuresChangeNothing) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->image_.data();
    ASSERT_EQ(list.SetField(data, 7, Bytes("abc"), 3), Status::Success);
    const std::vector<unsigned char> before = this->image_;
    EXPECT_EQ(list.SetField(data, 1, Bytes("\x01\x02"), 2), Status::LengthMismatch);
    EXPECT_EQ(list.SetField(data, 9, Bytes("12345"), 5), Status::LengthMismatch);  // Time holds at most 4
    EXPECT_EQ(list.SetField(data, 1, true), Status::WrongType);
    EXPECT_EQ(this->image_, before);

    unsigned char buffer[4] = {9, 9, 9, 9};
    std::uint32_t length = 77;
    EXPECT_EQ(list.GetField(data, 7, buffer, 2, length), Status::BufferTooSmall);
    EXPECT_EQ(length, 77u);
    EXPECT_EQ(buffer[0], 9);
    ASSERT_EQ(list.GetField(data, 7, buffer, 3, length), Status::Success);
    EXPECT_EQ(std::string(buffer, buffer + length), "abc");
    EXPECT_EQ(buffer[3], 9);

    ASSERT_EQ(list.SetField(data, 5, true), Status::Success);
    ASSERT_EQ(list.GetField(data, 5, buffer, 4, length), Status::Success);
    EXPECT_EQ(length, 1u);
    EXPECT_EQ(buffer[0], 1);
}

TYPED_TEST(FieldListContract, WriteReportsWhetherItChangedTheValue) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->image_.data();
    bool changed = false;
    ASSERT_EQ(list.SetField(data, 7, Bytes("abc"), 3, changed), Status::Success);
    ASSERT_EQ(list.SetField(data, 7, Bytes("abc"), 3, changed), Status::Success);
    EXPECT_FALSE(changed);
    ASSERT_EQ(list.SetField(data, 7, Bytes("abd"), 3, changed), Status::Success);
    EXPECT_TRUE(changed);
    // Same leading bytes at another length is a change.
    ASSERT_EQ(list.SetField(data, 9, Bytes("\x01\x02\x03"), 3, changed), Status::Success);
    ASSERT_EQ(list.SetField(data, 9, Bytes("\x81\x02\x03\x04"), 4, changed), Status::Success);
    EXPECT_TRUE(changed);
}

TYPED_TEST(FieldListContract, TimeValuesTellTheirOwnLength) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->image_.data();
    ASSERT_EQ(list.SetField(data, 9, Bytes("\x01\x02\x03"), 3), Status::Success);
    EXPECT_EQ(list.GetFieldLength(3, data), 3u);
    ASSERT_EQ(list.SetField(data, 10, Bytes("\x01\x02\x03\x84\x05\x06\x07"), 7), Status::Success);
    EXPECT_EQ(list.GetFieldLength(4, data), 7u);
}

TYPED_TEST(FieldListContract, SetFieldLengthOpensTheSlotForWritingInPlace) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->image_.data();
    EXPECT_EQ(list.SetFieldLength(data, 1, 3), Status::LengthMismatch);
    ASSERT_EQ(list.SetFieldLength(data, 1, FieldList::FullLength), Status::Success);
    void* slot = nullptr;
    std::uint32_t length = 0;
    ASSERT_EQ(list.GetField(data, 1, slot, length), Status::Success);
    EXPECT_EQ(length, 4u);
    EncodeU32(slot, 0xCAFEF00Du);
    unsigned char buffer[4] = {};
    ASSERT_EQ(list.GetField(data, 1, buffer, 4, length), Status::Success);
    EXPECT_EQ(DecodeU32(buffer), 0xCAFEF00Du);
}

TYPED_TEST(FieldListContract, CopyFromAnotherListTakesTheSourceLength) {
    std::unique_ptr<FieldList> wide(TypeParam::Factory().Create(Testing::PackedSpecifications({
        {3, "count", FieldSpecification::UInt, 8},
        {4, "code", FieldSpecification::TextArray, 3},
    })));
    std::vector<unsigned char> source(wide->GetDataLength(), 0);
    ASSERT_EQ(wide->SetField(source.data(), 3, Bytes("12345678"), 8), Status::Success);
    ASSERT_EQ(wide->SetField(source.data(), 4, Bytes("xyz"), 3), Status::Success);
    unsigned char* data = this->image_.data();
    EXPECT_EQ(this->list_->CopyFieldByNumber(0, data, 0, *wide, source.data()), Status::LengthMismatch);
    ASSERT_EQ(this->list_->CopyFieldByNumber(2, data, 1, *wide, source.data()), Status::Success);
    unsigned char buffer[3] = {};
    std::uint32_t length = 0;
    ASSERT_EQ(this->list_->GetField(data, 7, buffer, 3, length), Status::Success);
    EXPECT_EQ(std::string(buffer, buffer + 3), "xyz");
}

TYPED_TEST(FieldListContract, IterationAndWalkingById) {
    const FieldList& list = *this->list_;
    std::vector<std::uint16_t> ids;
    auto iterator = list.Begin();
    for (; iterator != list.End(); ++iterator) ids.push_back(iterator.GetId());
    EXPECT_EQ(ids, (std::vector<std::uint16_t>{1, 5, 7, 9, 10, 12}));
    EXPECT_EQ(iterator.GetSpecification(), FieldSpecification());
    const void* value = nullptr;
    std::uint32_t length = 0;
    EXPECT_EQ(list.GetField(this->image_.data(), iterator, value, length), Status::NotUsable);
    std::unique_ptr<FieldList> other(TypeParam::Factory().Create(CommonFields()));
    EXPECT_EQ(list.GetField(this->image_.data(), other->Begin(), value, length), Status::NotUsable);

    std::uint16_t id = 5;
    ASSERT_EQ(list.GetNextFieldId(id), Status::Success);
    EXPECT_EQ(id, 7);
    id = 12;
    EXPECT_EQ(list.GetNextFieldId(id), Status::NotFound);
    id = 2;
    EXPECT_EQ(list.GetNextFieldId(id), Status::Invalid);

    std::uint32_t number = 99;
    EXPECT_FALSE(list.GetFieldNumber(FieldSpecification(10, "other", FieldSpecification::Time, 4, 0, 0), number));
    EXPECT_EQ(number, 4u);  // set once the id is found
    EXPECT_TRUE(list.GetFieldNumber(FieldSpecification(9, "at", FieldSpecification::Time, 4, 0, 0), number));
    EXPECT_EQ(number, 3u);
}

TYPED_TEST(FieldListContract, SpecificationTravelsAndRebuildsTheSameLayout) {
    const FieldList& list = *this->list_;
    MessageBuilder builder;
    ASSERT_EQ(list.SerializeSpecification(builder), Status::Success);
    EXPECT_EQ(DecodeU32(builder.GetBuffer()), 6u);
    std::vector<FieldSpecification> specifications(3);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    ASSERT_EQ(FieldList::DeserializeSpecification(validator, specifications), Status::Success);
    ASSERT_EQ(specifications, list.GetFieldSpecificationList());
    std::unique_ptr<FieldList> copy(TypeParam::Factory().Create(specifications));
    EXPECT_EQ(copy->GetDataLength(), list.GetDataLength());

    Testing::ExpectEveryCutRefused(builder.GetBuffer(), builder.GetLength(), [](MessageValidator& cut) {
        std::vector<FieldSpecification> read;
        return FieldList::DeserializeSpecification(cut, read);
    });
    // A count beyond the message keeps the specifications that were read whole.
    EncodeU32(builder.GetBuffer(), 0xFFFFFFFFu);
    MessageValidator overcounted(builder.GetBuffer(), builder.GetLength());
    EXPECT_EQ(FieldList::DeserializeSpecification(overcounted, specifications), Status::Invalid);
    EXPECT_EQ(specifications.size(), 6u);
}

TYPED_TEST(FieldListContract, ImageTravelsAndEveryCutIsRefused) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->image_.data();
    ASSERT_EQ(list.SetField(data, 1, Bytes("\x01\x02\x03\x04"), 4), Status::Success);
    ASSERT_EQ(list.SetField(data, 7, Bytes("abc"), 3), Status::Success);
    ASSERT_EQ(list.SetField(data, 9, Bytes("\x01\x02\x03"), 3), Status::Success);
    MessageBuilder builder;
    ASSERT_EQ(list.SerializeFields(builder, data), Status::Success);

    std::vector<unsigned char> copy(list.GetDataLength(), 0);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    ASSERT_EQ(list.DeserializeFields(validator, copy.data()), Status::Success);
    EXPECT_EQ(validator.GetRemaining(), 0u);
    MessageBuilder again;
    ASSERT_EQ(list.SerializeFields(again, copy.data()), Status::Success);
    ASSERT_EQ(again.GetLength(), builder.GetLength());
    EXPECT_TRUE(std::equal(again.GetBuffer(), again.GetBuffer() + again.GetLength(), builder.GetBuffer()));

    Testing::ExpectEveryCutRefused(builder.GetBuffer(), builder.GetLength(), [&](MessageValidator& cut) {
        std::vector<unsigned char> target(list.GetDataLength(), 0);
        return list.DeserializeFields(cut, target.data());
    });
}

TEST(FieldListFactories, ManagedListsCannotBeToldTheirLength) {
    Testing::ExpectDatabaseException([] { ManagedFieldListFactory::GetInstance().Create(CommonFields(), 100); },
                                     DatabaseException::AllocateFieldList,
                                     "Tavrin::Database::ManagedFieldListFactory::Create", "");
    std::unique_ptr<FieldList> list(UnmanagedFieldListFactory::GetInstance().Create(CommonFields(), 50));
    EXPECT_EQ(list->GetDataLength(), 50u);
}

}  // namespace
}  // namespace Tavrin::Database
