// The contract that both layouts share, run against each of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "RecordsTestSupport.h"
#include "records/FieldList.h"
#include "records/ManagedFieldListFactory.h"
#include "records/UnmanagedFieldListFactory.h"

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
    FieldListContract()
        : list_(Layout::Factory().Create(CommonFields())), image_(list_->GetDataLength(), 0xEE) {
        list_->ResetData(image_.data());
    }

    unsigned char* Image() { return image_.data(); }

    std::unique_ptr<FieldList> list_;
    std::vector<unsigned char> image_;
};

using Layouts = ::testing::Types<Managed, Unmanaged>;
TYPED_TEST_SUITE(FieldListContract, Layouts);

TYPED_TEST(FieldListContract, UnknownIdsAreNotFoundEverywhere) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->Image();
    const unsigned char value[4] = {1, 2, 3, 4};
    for (std::uint16_t id : {0, 2, 6, 11, 13, 1000, 65535}) {
        SCOPED_TRACE(id);
        bool flag = false;
        const void* pointer = nullptr;
        void* writable = nullptr;
        std::uint32_t length = 0;
        FieldSpecification::Type type{};
        FieldSpecification specification;
        const FieldSpecification* entry = nullptr;
        EXPECT_EQ(list.SetField(data, id, value, 4), Status::NotFound);
        EXPECT_EQ(list.SetField(data, id, value, 4, flag), Status::NotFound);
        EXPECT_EQ(list.SetField(data, id, true), Status::NotFound);
        EXPECT_EQ(list.GetField(static_cast<const unsigned char*>(data), id, pointer, length), Status::NotFound);
        EXPECT_EQ(list.GetField(data, id, writable, length), Status::NotFound);
        EXPECT_EQ(list.SetFieldLength(data, id, 4), Status::NotFound);
        EXPECT_EQ(list.IsFieldDefined(data, id, flag), Status::NotFound);
        EXPECT_EQ(list.GetType(id, type), Status::NotFound);
        EXPECT_EQ(list.GetFieldSpecification(id, specification), Status::NotFound);
        EXPECT_EQ(list.GetFieldSpecification(id, length, entry), Status::NotFound);
    }
}

TYPED_TEST(FieldListContract, RawValuesRoundTripAndWrongLengthsChangeNothing) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->Image();
    ASSERT_EQ(list.SetField(data, 1, Bytes("\x01\x02\x03\x04"), 4), Status::Success);
    ASSERT_EQ(list.SetField(data, 7, Bytes("abc"), 3), Status::Success);

    const std::vector<unsigned char> before = this->image_;
    EXPECT_EQ(list.SetField(data, 1, Bytes("\x01\x02"), 2), Status::LengthMismatch);
    EXPECT_EQ(list.SetField(data, 7, Bytes("abcd"), 4), Status::LengthMismatch);  // arrays are fixed
    EXPECT_EQ(list.SetField(data, 7, Bytes("ab"), 2), Status::LengthMismatch);
    EXPECT_EQ(list.SetField(data, 12, Bytes(""), 0), Status::LengthMismatch);
    EXPECT_EQ(list.SetField(data, 9, Bytes("12345"), 5), Status::LengthMismatch);  // Time holds at most 4
    EXPECT_EQ(this->image_, before);

    unsigned char buffer[4] = {9, 9, 9, 9};
    std::uint32_t length = 77;
    EXPECT_EQ(list.GetField(data, 7, buffer, 2, length), Status::BufferTooSmall);
    EXPECT_EQ(length, 77u);
    EXPECT_EQ(buffer[0], 9);
    ASSERT_EQ(list.GetField(data, 7, buffer, 3, length), Status::Success);
    EXPECT_EQ(length, 3u);
    EXPECT_TRUE(std::equal(buffer, buffer + 3, Bytes("abc")));
    EXPECT_EQ(buffer[3], 9);
    ASSERT_EQ(list.GetField(data, 1, buffer, 4, length), Status::Success);
    EXPECT_EQ(DecodeU32(buffer), 0x04030201u);
}

TYPED_TEST(FieldListContract, WriteReportsWhetherItChangedTheValue) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->Image();
    bool changed = false;
    ASSERT_EQ(list.SetField(data, 7, Bytes("abc"), 3, changed), Status::Success);
    ASSERT_EQ(list.SetField(data, 7, Bytes("abc"), 3, changed), Status::Success);
    EXPECT_FALSE(changed);
    ASSERT_EQ(list.SetField(data, 7, Bytes("abd"), 3, changed), Status::Success);
    EXPECT_TRUE(changed);
    // Same leading bytes, other length: a change.
    ASSERT_EQ(list.SetField(data, 9, Bytes("\x01\x02\x03"), 3, changed), Status::Success);
    ASSERT_EQ(list.SetField(data, 9, Bytes("\x81\x02\x03\x04"), 4, changed), Status::Success);
    EXPECT_TRUE(changed);
}

TYPED_TEST(FieldListContract, BooleanWritesOneByteAndChecksTheType) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->Image();
    const std::vector<unsigned char> before = this->image_;
    EXPECT_EQ(list.SetField(data, 1, true), Status::WrongType);
    EXPECT_EQ(this->image_, before);
    ASSERT_EQ(list.SetField(data, 5, true), Status::Success);
    const void* value = nullptr;
    std::uint32_t length = 0;
    ASSERT_EQ(list.GetField(static_cast<const unsigned char*>(data), 5, value, length), Status::Success);
    EXPECT_EQ(length, 1u);
    EXPECT_EQ(*static_cast<const unsigned char*>(value), 1);
    ASSERT_EQ(list.SetField(data, 5, false), Status::Success);
    EXPECT_EQ(*static_cast<const unsigned char*>(value), 0);
}

TYPED_TEST(FieldListContract, TimeValuesTellTheirOwnLength) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->Image();
    std::uint32_t number = 0;
    const FieldSpecification* at = nullptr;
    const FieldSpecification* when = nullptr;
    ASSERT_EQ(list.GetFieldSpecification(9, number, at), Status::Success);
    ASSERT_EQ(list.SetField(data, 9, Bytes("\x01\x02\x03"), 3), Status::Success);
    EXPECT_EQ(list.GetFieldLength(number, data), 3u);
    ASSERT_EQ(list.SetField(data, 9, Bytes("\x81\x02\x03\x04"), 4), Status::Success);
    EXPECT_EQ(list.GetFieldLength(number, data), 4u);

    ASSERT_EQ(list.GetFieldSpecification(10, number, when), Status::Success);
    ASSERT_EQ(list.SetField(data, 10, Bytes("\x01\x02\x03\x04\x05\x06"), 6), Status::Success);
    EXPECT_EQ(list.GetFieldLength(number, data), 6u);
    ASSERT_EQ(list.SetField(data, 10, Bytes("\x01\x02\x03\x84\x05\x06\x07"), 7), Status::Success);
    EXPECT_EQ(list.GetFieldLength(number, data), 7u);
}

TYPED_TEST(FieldListContract, SetFieldLengthOpensTheSlotForWritingInPlace) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->Image();
    EXPECT_EQ(list.SetFieldLength(data, 1, 3), Status::LengthMismatch);
    ASSERT_EQ(list.SetFieldLength(data, 1, FieldList::FullLength), Status::Success);
    void* slot = nullptr;
    std::uint32_t length = 0;
    ASSERT_EQ(list.GetField(data, 1, slot, length), Status::Success);
    EXPECT_EQ(length, 4u);
    EncodeU32(slot, 0xCAFEF00Du);
    const void* value = nullptr;
    ASSERT_EQ(list.GetField(static_cast<const unsigned char*>(data), 1, value, length), Status::Success);
    EXPECT_EQ(DecodeU32(value), 0xCAFEF00Du);
}

TYPED_TEST(FieldListContract, CopiesBetweenListsFollowTheTargetsLengthRule) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->Image();
    std::unique_ptr<FieldList> wide(TypeParam::Factory().Create(Testing::PackedSpecifications({
        {3, "count", FieldSpecification::UInt, 8},
        {4, "code", FieldSpecification::TextArray, 3},
    })));
    std::vector<unsigned char> source(wide->GetDataLength(), 0);
    wide->ResetData(source.data());
    ASSERT_EQ(wide->SetField(source.data(), 3, Bytes("12345678"), 8), Status::Success);
    ASSERT_EQ(wide->SetField(source.data(), 4, Bytes("xyz"), 3), Status::Success);

    EXPECT_EQ(list.CopyFieldByNumber(0, data, 0, *wide, source.data()), Status::LengthMismatch);
    ASSERT_EQ(list.CopyFieldByNumber(2, data, 1, *wide, source.data()), Status::Success);
    unsigned char buffer[3] = {};
    std::uint32_t length = 0;
    ASSERT_EQ(list.GetField(data, 7, buffer, 3, length), Status::Success);
    EXPECT_TRUE(std::equal(buffer, buffer + 3, Bytes("xyz")));
}

TYPED_TEST(FieldListContract, IterationVisitsEveryFieldOnceThenStaysAtTheEnd) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->Image();
    ASSERT_EQ(list.SetField(data, 12, Bytes("\x01\x00"), 2), Status::Success);
    std::vector<std::uint16_t> ids;
    auto iterator = list.Begin();
    for (; iterator != list.End(); ++iterator) ids.push_back(iterator.GetId());
    EXPECT_EQ(ids, list.GetFieldIdList());
    EXPECT_EQ(ids, (std::vector<std::uint16_t>{1, 5, 7, 9, 10, 12}));
    ++iterator;
    EXPECT_EQ(iterator, list.End());
    EXPECT_EQ(iterator.GetId(), FieldSpecification::NoFieldId);
    EXPECT_EQ(iterator.GetName(), "");
    EXPECT_EQ(iterator.GetType(), FieldSpecification::None);
    EXPECT_EQ(iterator.GetSpecification(), FieldSpecification());

    const void* value = nullptr;
    std::uint32_t length = 0;
    EXPECT_EQ(list.GetField(data, list.End(), value, length), Status::NotUsable);
    auto last = list.Begin();
    for (int i = 0; i < 5; ++i) ++last;
    std::uint16_t id = 0;
    FieldSpecification::Type type{};
    ASSERT_EQ(list.GetField(data, last, id, type, value, length), Status::Success);
    EXPECT_EQ(id, 12);
    EXPECT_EQ(type, FieldSpecification::SInt);
    EXPECT_EQ(DecodeLE<std::int16_t>(value), 1);

    // An iterator of another list is not usable here.
    std::unique_ptr<FieldList> other(TypeParam::Factory().Create(CommonFields()));
    EXPECT_EQ(list.GetField(data, other->Begin(), value, length), Status::NotUsable);
}

TYPED_TEST(FieldListContract, WalkingByIdAndFindingFields) {
    const FieldList& list = *this->list_;
    std::uint16_t id = 0;
    list.GetFirstFieldId(id);
    EXPECT_EQ(id, 1);
    ASSERT_EQ(list.GetNextFieldId(id), Status::Success);
    EXPECT_EQ(id, 5);
    id = 12;
    EXPECT_EQ(list.GetNextFieldId(id), Status::NotFound);
    id = 2;
    EXPECT_EQ(list.GetNextFieldId(id), Status::Invalid);

    FieldSpecification specification;
    list.GetFirstFieldSpecification(specification);
    ASSERT_EQ(list.GetNextFieldSpecification(specification), Status::Success);
    EXPECT_EQ(specification.GetName(), "flag");

    std::uint32_t number = 99;
    EXPECT_TRUE(list.GetFieldNumber(FieldSpecification(9, "at", FieldSpecification::Time, 4, 0, 0), number));
    EXPECT_EQ(number, 3u);
    number = 99;
    EXPECT_FALSE(list.GetFieldNumber(FieldSpecification(10, "other", FieldSpecification::Time, 4, 0, 0), number));
    EXPECT_EQ(number, 4u);  // set once the id is found
    EXPECT_FALSE(list.GetFieldNumber(FieldSpecification(11, "at", FieldSpecification::Time, 4, 0, 0), number));
}

TYPED_TEST(FieldListContract, SpecificationTravelsAndRebuildsTheSameLayout) {
    const FieldList& list = *this->list_;
    MessageBuilder builder;
    ASSERT_EQ(list.SerializeSpecification(builder), Status::Success);
    std::vector<FieldSpecification> specifications(3);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    ASSERT_EQ(FieldList::DeserializeSpecification(validator, specifications), Status::Success);
    ASSERT_EQ(specifications, list.GetFieldSpecificationList());
    std::unique_ptr<FieldList> copy(TypeParam::Factory().Create(specifications));
    EXPECT_EQ(copy->GetDataLength(), list.GetDataLength());
    for (std::uint32_t i = 0; i < list.GetFieldCount(); ++i) {
        EXPECT_EQ(copy->GetFieldSpecificationList()[i].GetOffset(), list.GetFieldSpecificationList()[i].GetOffset());
    }

    Testing::ExpectEveryCutRefused(builder.GetBuffer(), builder.GetLength(), [](MessageValidator& cut) {
        std::vector<FieldSpecification> read;
        return FieldList::DeserializeSpecification(cut, read);
    });
}

TYPED_TEST(FieldListContract, ImageTravelsAndEveryCutIsRefused) {
    const FieldList& list = *this->list_;
    unsigned char* data = this->Image();
    ASSERT_EQ(list.SetField(data, 1, Bytes("\x01\x02\x03\x04"), 4), Status::Success);
    ASSERT_EQ(list.SetField(data, 7, Bytes("abc"), 3), Status::Success);
    ASSERT_EQ(list.SetField(data, 9, Bytes("\x01\x02\x03"), 3), Status::Success);
    ASSERT_EQ(list.SetField(data, 10, Bytes("\x01\x02\x03\x84\x05\x06\x07"), 7), Status::Success);
    MessageBuilder builder;
    ASSERT_EQ(list.SerializeFields(builder, data), Status::Success);

    std::vector<unsigned char> copy(list.GetDataLength(), 0);
    list.ResetData(copy.data());
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    ASSERT_EQ(list.DeserializeFields(validator, copy.data()), Status::Success);
    EXPECT_EQ(validator.GetRemaining(), 0u);
    for (auto iterator = list.Begin(); iterator != list.End(); ++iterator) {
        const void* a = nullptr;
        const void* b = nullptr;
        std::uint32_t lengthA = 0;
        std::uint32_t lengthB = 0;
        const StatusCode statusA = list.GetField(data, iterator, a, lengthA);
        ASSERT_EQ(list.GetField(copy.data(), iterator, b, lengthB), statusA);
        if (statusA != Status::Success) continue;
        ASSERT_EQ(lengthA, lengthB);
        EXPECT_EQ(std::memcmp(a, b, lengthA), 0) << iterator.GetName();
    }

    Testing::ExpectEveryCutRefused(builder.GetBuffer(), builder.GetLength(), [&](MessageValidator& cut) {
        std::vector<unsigned char> target(list.GetDataLength(), 0);
        return list.DeserializeFields(cut, target.data());
    });
}

TEST(FieldListSpecificationWire, CountAndFailuresKeepWhatWasRead) {
    std::unique_ptr<FieldList> list(ManagedFieldListFactory::GetInstance().Create(CommonFields()));
    MessageBuilder builder;
    ASSERT_EQ(list->SerializeSpecification(builder), Status::Success);
    EXPECT_EQ(DecodeU32(builder.GetBuffer()), 6u);

    // A count larger than the message: the six whole specifications stay, then the message ends.
    EncodeU32(builder.GetBuffer(), 0xFFFFFFFFu);
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    std::vector<FieldSpecification> read;
    EXPECT_EQ(FieldList::DeserializeSpecification(validator, read), Status::Invalid);
    EXPECT_EQ(read.size(), 6u);
}

TEST(FieldListFactories, AreSingletonsAndPassConstructionErrorsThrough) {
    EXPECT_EQ(&ManagedFieldListFactory::GetInstance(), &ManagedFieldListFactory::GetInstance());
    EXPECT_EQ(&UnmanagedFieldListFactory::GetInstance(), &UnmanagedFieldListFactory::GetInstance());
    Testing::ExpectDatabaseException([] { ManagedFieldListFactory::GetInstance().Create(CommonFields(), 100); },
                                     DatabaseException::AllocateFieldList,
                                     "Tavrin::Database::ManagedFieldListFactory::Create", "");
    Testing::ExpectDatabaseException([] { UnmanagedFieldListFactory::GetInstance().Create({}); },
                                     DatabaseException::InvalidParameter,
                                     "Tavrin::Database::UnmanagedFieldList::UnmanagedFieldList",
                                     "empty field specification list");
    std::unique_ptr<FieldList> list(UnmanagedFieldListFactory::GetInstance().Create(CommonFields(), 50));
    EXPECT_EQ(list->GetDataLength(), 50u);
}

}  // namespace
}  // namespace Tavrin::Database
