#include "tavrin/tables/RemoteTableFactory.h"

#include <memory>
#include <new>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Throw.h"
#include "tavrin/tables/RemoteTable.h"

namespace Tavrin::Database {

ITable* RemoteTableFactory::Create(MessageValidator& validator) const {
    std::unique_ptr<RemoteTable> table(new (std::nothrow) RemoteTable);
    if (!table) ThrowDatabase("Tavrin::Database::RemoteTableFactory::Create", DatabaseException::AllocateTable);
    table->Construct(validator);
    return table.release();
}

}  // namespace Tavrin::Database
