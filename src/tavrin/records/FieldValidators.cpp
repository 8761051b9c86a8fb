#include "tavrin/records/FieldValidators.h"

#include <algorithm>
#include <initializer_list>

#include "tavrin/base/DatabaseException.h"

namespace Tavrin::Database {

namespace {

using Type = FieldSpecification::Type;

void RefuseType(ThrowSite site, const FieldSpecification& specification) {
    ThrowDatabase(site, DatabaseException::InvalidParameter, "invalid field type <%u> for field <%s>",
                  static_cast<unsigned>(specification.GetType()), specification.GetName().c_str());
}

void RefuseLength(ThrowSite site, const FieldSpecification& specification) {
    ThrowDatabase(site, DatabaseException::InvalidParameter, "invalid length <%u> for field <%s>",
                  static_cast<unsigned>(specification.GetMaxLength()), specification.GetName().c_str());
}

// The common rule, then the type, then maxLength against `lengths`. A validator's own name is the
// function of the exceptions it throws, so each passes its site in.
void ValidateExactLength(ThrowSite site, const FieldSpecification& specification, Type type,
                         std::initializer_list<std::uint32_t> lengths) {
    ValidateSpecification(specification);
    if (specification.GetType() != type) RefuseType(site, specification);
    if (std::find(lengths.begin(), lengths.end(), specification.GetMaxLength()) == lengths.end()) {
        RefuseLength(site, specification);
    }
}

void ValidateMinimumLength(ThrowSite site, const FieldSpecification& specification, Type type,
                           std::uint32_t minimum) {
    ValidateSpecification(specification);
    if (specification.GetType() != type) RefuseType(site, specification);
    if (specification.GetMaxLength() < minimum) RefuseLength(site, specification);
}

}  // namespace

void ValidateSpecification(const FieldSpecification& specification) {
    if (specification.GetId() >= FieldSpecification::NoFieldId) {
        ThrowDatabase("Tavrin::Database::ValidateSpecification", DatabaseException::InvalidParameter,
                      "invalid field id <%u> for field <%s>", static_cast<unsigned>(specification.GetId()),
                      specification.GetName().c_str());
    }
}

void ValidateNoneSpecification(const FieldSpecification& specification) {
    constexpr const char* kFunction = "Tavrin::Database::ValidateNoneSpecification";
    const char* name = specification.GetName().c_str();
    if (specification.GetType() != FieldSpecification::None) RefuseType(kFunction, specification);
    if (specification.GetId() != FieldSpecification::NoFieldId) {
        ThrowDatabase(kFunction, DatabaseException::InvalidParameter, "invalid field id <%u> for field <%s>",
                      static_cast<unsigned>(specification.GetId()), name);
    }
    if (specification.GetMaxLength() != 0) RefuseLength(kFunction, specification);
    if (specification.GetOffset() != 0) {
        ThrowDatabase(kFunction, DatabaseException::InvalidParameter, "invalid offset <%u> for field <%s>",
                      static_cast<unsigned>(specification.GetOffset()), name);
    }
    if (specification.GetProperties() != 0) {
        ThrowDatabase(kFunction, DatabaseException::InvalidParameter,
                      "invalid field properties <%u> for field <%s>",
                      static_cast<unsigned>(specification.GetProperties()), name);
    }
}

void ValidateBlobSpecification(const FieldSpecification& specification) {
    ValidateMinimumLength("Tavrin::Database::ValidateBlobSpecification", specification,
                          FieldSpecification::Blob, 5);
}

void ValidateCrcBlobSpecification(const FieldSpecification& specification) {
    ValidateMinimumLength("Tavrin::Database::ValidateCrcBlobSpecification", specification,
                          FieldSpecification::CrcBlob, 9);
}

void ValidateBooleanSpecification(const FieldSpecification& specification) {
    ValidateExactLength("Tavrin::Database::ValidateBooleanSpecification", specification,
                        FieldSpecification::Boolean, {1});
}

void ValidateDateSpecification(const FieldSpecification& specification) {
    ValidateExactLength("Tavrin::Database::ValidateDateSpecification", specification,
                        FieldSpecification::Date, {3});
}

void ValidateDateTimeSpecification(const FieldSpecification& specification) {
    ValidateExactLength("Tavrin::Database::ValidateDateTimeSpecification", specification,
                        FieldSpecification::DateTime, {6, 7});
}

void ValidateTimeSpecification(const FieldSpecification& specification) {
    ValidateExactLength("Tavrin::Database::ValidateTimeSpecification", specification,
                        FieldSpecification::Time, {3, 4});
}

void ValidateRationalSpecification(const FieldSpecification& specification) {
    ValidateExactLength("Tavrin::Database::ValidateRationalSpecification", specification,
                        FieldSpecification::Rational, {2, 3, 5, 9});
}

void ValidateTRationalSpecification(const FieldSpecification& specification) {
    ValidateExactLength("Tavrin::Database::ValidateTRationalSpecification", specification,
                        FieldSpecification::TRational, {3, 4, 6, 10});
}

void ValidateSignedIntegralSpecification(const FieldSpecification& specification) {
    ValidateExactLength("Tavrin::Database::ValidateSignedIntegralSpecification", specification,
                        FieldSpecification::SInt, {1, 2, 4, 8});
}

void ValidateUnsignedIntegralSpecification(const FieldSpecification& specification) {
    ValidateExactLength("Tavrin::Database::ValidateUnsignedIntegralSpecification", specification,
                        FieldSpecification::UInt, {1, 2, 4, 8});
}

}  // namespace Tavrin::Database
