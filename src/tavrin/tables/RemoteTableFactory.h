#pragma once
// Makes RemoteTable objects from the message that a table writes with SerializeSpecification; one
// process-wide instance through GetInstance(). Holds no state, so it may be used from any thread.
//
// Create returns a table that the caller owns, or throws: DatabaseException 8 (no message) when the
// table can't be allocated, else whatever the table's construction throws (see RemoteTable.h), after
// the half-made table is deleted.

#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Singleton.h"
#include "tavrin/tables/ITable.h"

namespace Tavrin::Database {

class RemoteTableFactory : public Tavrin::Singleton<RemoteTableFactory> {
public:
    ITable* Create(MessageValidator& validator) const;

private:
    friend class Tavrin::Singleton<RemoteTableFactory>;
    RemoteTableFactory() = default;
};

}  // namespace Tavrin::Database
