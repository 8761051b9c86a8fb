// The body compare functions must be strict weak orders over all byte strings, bodies that do not
// decode included, or an index built on them would lose keys. Each class is checked on a pool of
// valid bodies, random bytes and valid bodies with one byte changed.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>

#include "tavrin/base/FieldTypes/CrcBlob.h"
#include "tavrin/base/FieldTypes/DateTime.h"
#include "tavrin/base/FieldTypes/FieldTypeFactory.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "ValueTestSupport.h"

namespace Tavrin {
namespace {

using Testing::BodyOf;
using Testing::Bytes;
using Testing::Order;

struct OrderedClass {
    const char* name;
    std::uint8_t number;
    BodyCompareFunction compare;
    // Fills a defined value of the class with a random value.
    std::function<void(IFieldType&, std::mt19937_64&)> randomize;
};

void RandomDateTime(IFieldType& value, std::mt19937_64& random) {
    Date date;
    date.SetDayNumber(static_cast<std::uint32_t>(random() % (Date::MaxDayNumber + 1)));
    Time time;
    time.Set(std::chrono::milliseconds{random() % 2 ? random() % Time::MillisecondsPerDay : random() % 86400 * 1000});
    if (auto* dateTime = dynamic_cast<DateTime*>(&value)) dateTime->Set(date, time);
    if (auto* datePart = dynamic_cast<Date*>(&value)) *datePart = date;
    if (auto* timePart = dynamic_cast<Time*>(&value)) *timePart = time;
}

void RandomRational(IFieldType& value, std::mt19937_64& random) {
    const auto numerator = static_cast<std::int64_t>(random() >> (1 + random() % 63)) * (random() % 2 ? 1 : -1);
    const auto code = static_cast<std::uint32_t>(random() % Rational::CodeCount);
    if (auto* rational = dynamic_cast<Rational*>(&value)) rational->Set(numerator, code);
    if (auto* trending = dynamic_cast<TRational*>(&value)) {
        trending->Set(numerator, code);
        trending->SetTrends(random() % 4, random() % 4, random() % 4);
    }
}

void RandomBlob(IFieldType& value, std::mt19937_64& random) {
    Bytes data(random() % 6);
    for (auto& byte : data) byte = static_cast<unsigned char>(random() % 3);  // few values: many ties
    static_cast<Blob&>(value).Set(data.data(), static_cast<std::uint32_t>(data.size()));
}

const OrderedClass orderedClasses[] = {
    {"Date", FieldTypeNumber::Date, &Date::Compare, RandomDateTime},
    {"Time", FieldTypeNumber::Time, &Time::Compare, RandomDateTime},
    {"DateTime", FieldTypeNumber::DateTime, &DateTime::Compare, RandomDateTime},
    {"Rational", FieldTypeNumber::Rational, &Rational::Compare, RandomRational},
    {"TRational", FieldTypeNumber::TRational, &TRational::Compare, RandomRational},
    {"Blob", FieldTypeNumber::Blob, &Blob::Compare, RandomBlob},
    {"CrcBlob", FieldTypeNumber::CrcBlob, &CrcBlob::Compare, RandomBlob},
};

std::vector<Bytes> MakePool(const OrderedClass& type, std::mt19937_64& random) {
    std::vector<Bytes> pool;
    const std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(type.number));
    for (int i = 0; i < 60; ++i) {
        type.randomize(*value, random);
        Bytes body = BodyOf(*value);
        pool.push_back(body);
        pool.push_back(body);  // equal bodies must compare 0
        body[random() % body.size()] ^= static_cast<unsigned char>(1u << random() % 8);
        pool.push_back(body);
        Bytes noise(random() % 12);
        for (auto& byte : noise) byte = static_cast<unsigned char>(random());
        pool.push_back(noise);
    }
    return pool;
}

bool Decodes(std::uint8_t number, const Bytes& body) {
    const std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(number));
    return value->DeserializeBody(body.data(), static_cast<std::uint32_t>(body.size())) == Status::Success;
}

TEST(BodyOrder, EveryCompareFunctionIsAStrictTotalOrder) {
    std::mt19937_64 random(5);
    for (const OrderedClass& type : orderedClasses) {
        SCOPED_TRACE(type.name);
        std::vector<Bytes> pool = MakePool(type, random);
        for (const Bytes& a : pool) {
            EXPECT_EQ(Order(type.compare, a, a), 0);
            for (const Bytes& b : pool) {
                ASSERT_EQ(Order(type.compare, a, b), -Order(type.compare, b, a));
                // Only equal bodies tie.
                ASSERT_EQ(Order(type.compare, a, b) == 0, a == b);
            }
        }
        // Transitivity: after sorting, no later element may order before an earlier one.
        std::stable_sort(pool.begin(), pool.end(),
                         [&](const Bytes& a, const Bytes& b) { return Order(type.compare, a, b) < 0; });
        for (std::size_t i = 0; i < pool.size(); ++i) {
            for (std::size_t j = i + 1; j < pool.size(); ++j) ASSERT_LE(Order(type.compare, pool[i], pool[j]), 0);
        }
        // Undecodable bodies come first.
        const auto firstValid = std::find_if(pool.begin(), pool.end(), [&](const Bytes& b) { return Decodes(type.number, b); });
        EXPECT_TRUE(std::all_of(firstValid, pool.end(), [&](const Bytes& b) { return Decodes(type.number, b); }));
    }
}

TEST(BodyOrder, ObjectCompareAgreesWithBodyCompare) {
    std::mt19937_64 random(9);
    for (const OrderedClass& type : orderedClasses) {
        SCOPED_TRACE(type.name);
        const std::unique_ptr<IFieldType> value(FieldTypeFactory::GetInstance().Create(type.number));
        int result = 0;
        EXPECT_EQ(value->Compare("", 0, result), Status::NotUsable);
        for (const Bytes& body : MakePool(type, random)) {
            type.randomize(*value, random);
            const bool valid = Decodes(type.number, body);
            ASSERT_EQ(value->Compare(body.data(), static_cast<std::uint32_t>(body.size()), result),
                      valid ? Status::Success : Status::Invalid);
            EXPECT_EQ(Testing::Sign(result), Order(type.compare, BodyOf(*value), body));
        }
    }
}

}  // namespace
}  // namespace Tavrin
