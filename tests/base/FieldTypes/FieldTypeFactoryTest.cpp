#include <gtest/gtest.h>

#include <memory>

#include "tavrin/base/FieldTypes/FieldTypeFactory.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "ValueTestSupport.h"

namespace Tavrin {
namespace {

// A text of each class, for objects made by number.
const char* const sampleTexts[] = {
    "2026-11-22", "13:45:07.123", "2026-11-22 13:45:07", "-42", "42", "-12.5", "7/8 (1,2,3)",
    "some text", "abc", "00ff", "0102", "cafe", "beef",
};

// Each number makes an undefined object of its class; the message form of every class carries the
// value, and a reader finds where each value ends even when several stand in a row.
TEST(FieldTypeFactory, MessageFormsOfEveryClassReadBack) {
    const FieldTypeFactory& factory = FieldTypeFactory::GetInstance();
    EXPECT_EQ(factory.Create(13), nullptr);
    MessageBuilder builder;
    for (std::uint8_t number = 0; number < 13; ++number) {
        const std::unique_ptr<IFieldType> value(factory.Create(number));
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(value->number, number);
        EXPECT_EQ(value->GetBodySize(), number == FieldTypeNumber::TRational ? 1u : 0u);
        EXPECT_EQ(value->ToString(), "");
        ASSERT_EQ(Testing::ReadText(*value, sampleTexts[number]), Status::Success) << int{number};
        EXPECT_EQ(value->ToString(), sampleTexts[number]);
        const std::uint32_t before = builder.GetLength();
        ASSERT_EQ(value->Serialize(builder, 0), Status::Success);
        EXPECT_EQ(builder.GetLength() - before, 1 + value->GetLengthAndBodySize()) << int{number};
        const std::unique_ptr<IFieldType> undefined(factory.Create(number));
        ASSERT_EQ(undefined->Serialize(builder, 0), Status::Success);
    }
    MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    for (std::uint8_t number = 0; number < 13; ++number) {
        const std::unique_ptr<IFieldType> value(factory.Create(number));
        ASSERT_EQ(value->Deserialize(validator, 0), Status::Success) << int{number};
        EXPECT_EQ(value->ToString(), sampleTexts[number]);
        ASSERT_EQ(value->Deserialize(validator, 0), Status::Success);
        EXPECT_FALSE(value->defined);
    }
    EXPECT_EQ(validator.GetRemaining(), 0u);
}

TEST(FieldTypeFactory, TruncatedMessagesAreRefused) {
    const FieldTypeFactory& factory = FieldTypeFactory::GetInstance();
    for (std::uint8_t number = 0; number < 13; ++number) {
        const std::unique_ptr<IFieldType> value(factory.Create(number));
        Testing::ReadText(*value, sampleTexts[number]);
        MessageBuilder builder;
        ASSERT_EQ(value->Serialize(builder, 0), Status::Success);
        for (std::uint32_t length = 0; length < builder.GetLength(); ++length) {
            MessageValidator validator(builder.GetBuffer(), length);
            const std::unique_ptr<IFieldType> back(factory.Create(number));
            EXPECT_NE(back->Deserialize(validator, 0), Status::Success) << int{number} << " at " << length;
        }
    }
}

TEST(FieldTypeFactory, ConvertGoesThroughTextAndRefusesUnrelatedClasses) {
    const FieldTypeFactory& factory = FieldTypeFactory::GetInstance();
    const std::unique_ptr<IFieldType> text(factory.Create(FieldTypeNumber::TextString));
    for (std::uint8_t number = 0; number < 13; ++number) {
        const std::unique_ptr<IFieldType> source(factory.Create(number));
        Testing::ReadText(*source, sampleTexts[number]);
        ASSERT_EQ(text->Convert(source.get()), Status::Success);
        const std::unique_ptr<IFieldType> target(factory.Create(number));
        ASSERT_EQ(target->Convert(text.get()), Status::Success) << int{number};
        if (number < FieldTypeNumber::TextString) {
            EXPECT_EQ(target->ToString(), sampleTexts[number]);
        }
    }
    const std::unique_ptr<IFieldType> date(factory.Create(FieldTypeNumber::Date));
    const std::unique_ptr<IFieldType> rational(factory.Create(FieldTypeNumber::Rational));
    Testing::ReadText(*rational, "1");
    EXPECT_EQ(date->Convert(rational.get()), Status::WrongType);
    EXPECT_EQ(date->Convert(nullptr), Status::Invalid);
}

}  // namespace
}  // namespace Tavrin
