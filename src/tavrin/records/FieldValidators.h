#pragma once
// The rules a field specification must meet, one validator per type, reached through the validate
// column of FieldTypeTable. Each returns, or throws DatabaseException code 12 (InvalidParameter)
// with a message that names the offending value and the field, and with its own name as the
// exception's function. Offsets, properties and names are not checked except for type None.

#include "tavrin/records/FieldSpecification.h"

namespace Tavrin::Database {

/// The common rule: the id is below 65535. The whole rule of BinaryArray, BinaryString, Bitmap,
/// Pointer, TextArray and TextString; every validator with a length rule runs it first.
void ValidateSpecification(const FieldSpecification& specification);

/// Type None describes no field: id 65535 and zero length, offset and properties.
void ValidateNoneSpecification(const FieldSpecification& specification);

/// The typed validators: the common rule, then the type, then maxLength.
void ValidateBlobSpecification(const FieldSpecification& specification);              // 5 or more
void ValidateCrcBlobSpecification(const FieldSpecification& specification);           // 9 or more
void ValidateBooleanSpecification(const FieldSpecification& specification);           // 1
void ValidateDateSpecification(const FieldSpecification& specification);              // 3
void ValidateDateTimeSpecification(const FieldSpecification& specification);          // 6 or 7
void ValidateTimeSpecification(const FieldSpecification& specification);              // 3 or 4
void ValidateRationalSpecification(const FieldSpecification& specification);          // 2, 3, 5, 9
void ValidateTRationalSpecification(const FieldSpecification& specification);         // 3, 4, 6, 10
void ValidateSignedIntegralSpecification(const FieldSpecification& specification);    // 1, 2, 4, 8
void ValidateUnsignedIntegralSpecification(const FieldSpecification& specification);  // 1, 2, 4, 8

}  // namespace Tavrin::Database
