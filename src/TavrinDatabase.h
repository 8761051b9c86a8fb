#pragma once
// The whole public interface of TavrinDatabase.

// Base layer (namespace Tavrin).
#include "base/DatabaseException.h"
#include "base/DirectoryWalker.h"
#include "base/Encoding.h"
#include "base/Exception.h"
#include "base/File.h"
#include "base/MessageBuilder.h"
#include "base/MessageValidator.h"
#include "base/Singleton.h"
#include "base/Status.h"
#include "base/Uuid.h"
#include "base/FieldTypes/BinaryArray.h"
#include "base/FieldTypes/BinaryString.h"
#include "base/FieldTypes/Blob.h"
#include "base/FieldTypes/CrcBlob.h"
#include "base/FieldTypes/Date.h"
#include "base/FieldTypes/DateTime.h"
#include "base/FieldTypes/FieldTypeFactory.h"
#include "base/FieldTypes/IFieldType.h"
#include "base/FieldTypes/Rational.h"
#include "base/FieldTypes/SInt.h"
#include "base/FieldTypes/TRational.h"
#include "base/FieldTypes/TextArray.h"
#include "base/FieldTypes/TextString.h"
#include "base/FieldTypes/Time.h"
#include "base/FieldTypes/UInt.h"

// Records.
#include "records/FieldList.h"
#include "records/FieldListObject.h"
#include "records/FieldSpecification.h"
#include "records/Key.h"
#include "records/ManagedFieldList.h"
#include "records/ManagedFieldListFactory.h"
#include "records/Record.h"
#include "records/UnmanagedFieldList.h"
#include "records/UnmanagedFieldListFactory.h"

// Storage.
#include "storage/DataStore.h"
#include "storage/MemoryDataStore.h"
#include "storage/UserDataStore.h"

// Indexes.
#include "indexes/IIndex.h"
#include "indexes/Index.h"
#include "indexes/KeyValueList.h"
#include "indexes/RedBlackTreeIndex.h"

// Schema.
#include "schema/IndexSpecification.h"
#include "schema/TableSpecification.h"

// Tables.
#include "tables/ITable.h"
#include "tables/ManagedTableFactory.h"
#include "tables/RemoteTableFactory.h"
#include "tables/UnmanagedTableFactory.h"
