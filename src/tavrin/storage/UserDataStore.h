#pragma once
// How the owner of a store keeps its own bytes inside the store's file: the store calls
// SerializeUserData at each save, into a fixed area sized once when the store was built, and
// DeserializeUserData when it opens a file. The base class writes and reads nothing.

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"

namespace Tavrin::Database {

/// The owner's side of a store's user data area: what it writes at each save and checks at each
/// open. The base class writes and reads nothing.
class UserDataStore {
public:
    /// An owner with nothing to keep.
    UserDataStore() = default;
    /// Copies nothing: the class has no state.
    UserDataStore(const UserDataStore&) = default;
    /// Copies nothing: the class has no state.
    UserDataStore& operator=(const UserDataStore&) = default;
    /// Destroys the owner's part.
    virtual ~UserDataStore() = default;

    /// Appends the owner's data; a status other than 0 when it does not fit.
    virtual StatusCode SerializeUserData(MessageBuilder& builder) {
        static_cast<void>(builder);
        return Status::Success;
    }
    /// Reads the owner's data back and checks it against the owner; 0 when it agrees.
    virtual StatusCode DeserializeUserData(MessageValidator& validator) {
        static_cast<void>(validator);
        return Status::Success;
    }
};

}  // namespace Tavrin::Database
