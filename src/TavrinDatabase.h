#pragma once
// The whole public interface of TavrinDatabase.

#include "tavrin/Version.h"

// Base layer (namespace Tavrin).
#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/DirectoryWalker.h"
#include "tavrin/base/Encoding.h"
#include "tavrin/base/Exception.h"
#include "tavrin/base/File.h"
#include "tavrin/base/FileSet.h"
#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Singleton.h"
#include "tavrin/base/Status.h"
#include "tavrin/base/Uuid.h"
#include "tavrin/base/FieldTypes/BinaryArray.h"
#include "tavrin/base/FieldTypes/BinaryString.h"
#include "tavrin/base/FieldTypes/Blob.h"
#include "tavrin/base/FieldTypes/CrcBlob.h"
#include "tavrin/base/FieldTypes/Date.h"
#include "tavrin/base/FieldTypes/DateTime.h"
#include "tavrin/base/FieldTypes/FieldTypeFactory.h"
#include "tavrin/base/FieldTypes/IFieldType.h"
#include "tavrin/base/FieldTypes/Rational.h"
#include "tavrin/base/FieldTypes/SInt.h"
#include "tavrin/base/FieldTypes/TRational.h"
#include "tavrin/base/FieldTypes/TextArray.h"
#include "tavrin/base/FieldTypes/TextString.h"
#include "tavrin/base/FieldTypes/Time.h"
#include "tavrin/base/FieldTypes/UInt.h"

// Records.
#include "tavrin/records/FieldList.h"
#include "tavrin/records/FieldListObject.h"
#include "tavrin/records/FieldSpecification.h"
#include "tavrin/records/Key.h"
#include "tavrin/records/ManagedFieldList.h"
#include "tavrin/records/ManagedFieldListFactory.h"
#include "tavrin/records/Record.h"
#include "tavrin/records/UnmanagedFieldList.h"
#include "tavrin/records/UnmanagedFieldListFactory.h"

// Storage.
#include "tavrin/storage/DataStore.h"
#include "tavrin/storage/MemoryDataStore.h"
#include "tavrin/storage/StoreStatistics.h"
#include "tavrin/storage/UserDataStore.h"

// Indexes.
#include "tavrin/indexes/HashIndex.h"
#include "tavrin/indexes/HashIndexDirectoryWalker.h"
#include "tavrin/indexes/IIndex.h"
#include "tavrin/indexes/Index.h"
#include "tavrin/indexes/IndexDirectoryWalker.h"
#include "tavrin/indexes/IndexStatistics.h"
#include "tavrin/indexes/KeyValueList.h"
#include "tavrin/indexes/RedBlackTreeIndex.h"
#include "tavrin/indexes/RedBlackTreeIndexDirectoryWalker.h"

// Schema.
#include "tavrin/schema/IndexSpecification.h"
#include "tavrin/schema/TableSpecification.h"

// Tables.
#include "tavrin/tables/ConversionReport.h"
#include "tavrin/tables/ITable.h"
#include "tavrin/tables/ManagedTableFactory.h"
#include "tavrin/tables/OpenTable.h"
#include "tavrin/tables/RemoteTableFactory.h"
#include "tavrin/tables/UnmanagedTableFactory.h"

// The description of a database, and the database.
#include "tavrin/schema/DatabaseSpecification.h"
#include "tavrin/database/Database.h"
