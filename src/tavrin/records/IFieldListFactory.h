#pragma once
// IFieldListFactory: makes field lists of one layout kind. Table factories hand their field list
// factory down to the table and its indexes, so that key lists share the table's layout kind.
// Factories hold no state and may be used from any thread.

#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/records/FieldList.h"
#include "tavrin/records/FieldSpecification.h"

namespace Tavrin::Database {

/// Makes field lists of one layout kind; stateless and usable from any thread.
class IFieldListFactory {
public:
    /// Virtual for the interface's sake; the factories themselves are process-wide singletons.
    virtual ~IFieldListFactory() = default;

    /// A new list of `specifications` with images of `dataLength` bytes, for a layout that lets the
    /// caller choose it; the caller owns the result. Construction failures of the list pass through
    /// as DatabaseException; an allocation failure is DatabaseException code 3 (AllocateFieldList),
    /// and so is a layout that decides its own data length.
    virtual FieldList* Create(const std::vector<FieldSpecification>& specifications,
                              std::uint32_t dataLength) const = 0;
    /// A new list of `specifications` whose data length the layout works out; the caller owns the
    /// result. Construction failures of the list pass through as DatabaseException; an allocation
    /// failure is DatabaseException code 3 (AllocateFieldList).
    virtual FieldList* Create(const std::vector<FieldSpecification>& specifications) const = 0;

protected:
    /// Allocates a List without throwing std::bad_alloc: any allocation failure, also one inside the
    /// list's constructor, becomes DatabaseException code 3 at `site`.
    template <class List, class... Arguments>
    static FieldList* NewFieldList(ThrowSite site, Arguments&&... arguments) {
        FieldList* list = nullptr;
        try {
            list = new (std::nothrow) List(std::forward<Arguments>(arguments)...);
        } catch (const std::bad_alloc&) {
            list = nullptr;
        }
        if (list == nullptr) ThrowDatabase(site, DatabaseException::AllocateFieldList);
        return list;
    }
};

}  // namespace Tavrin::Database
