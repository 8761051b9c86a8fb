#pragma once
// A table's identity token.
//
// A table issues a token when it is constructed: a shared cell that holds the table's address while
// the table lives, and 0 once it is destroyed. A bound Record or Key keeps a reference to the cell
// and a copy of the value. So the test "bound to this table, and the table is still there" never
// reads the table object itself: a record that outlives its table reads the cell, which it co-owns,
// and finds 0. A table constructed later at the same address issues a new cell, so an old record
// never passes for one of the new table.
//
// Copies share the cell. The cell is atomic because a table may be destroyed on another thread than
// the one that holds a record of it.

#include <atomic>
#include <cstdint>
#include <memory>

namespace Tavrin::Database {

class IdentityToken {
public:
    IdentityToken() = default;

    /// A new token whose value is `owner`'s address.
    static IdentityToken Issue(const void* owner) {
        IdentityToken token;
        token.value_ = reinterpret_cast<std::uintptr_t>(owner);
        token.cell_ = std::make_shared<std::atomic<std::uintptr_t>>(token.value_);
        return token;
    }

    /// The owner is going away: every copy stops being live.
    void Revoke() noexcept {
        if (cell_) cell_->store(0, std::memory_order_release);
    }

    /// True while the issuing owner lives.
    bool IsLive() const noexcept {
        return cell_ && value_ != 0 && cell_->load(std::memory_order_acquire) == value_;
    }

    /// True when both copies come from the same issue (whether or not it is still live).
    bool IsSame(const IdentityToken& other) const noexcept {
        return cell_ == other.cell_ && value_ == other.value_;
    }

    /// The value at issue; 0 for a token that was never issued.
    std::uintptr_t GetValue() const noexcept { return value_; }

    void Clear() noexcept {
        cell_.reset();
        value_ = 0;
    }

private:
    std::shared_ptr<std::atomic<std::uintptr_t>> cell_;
    std::uintptr_t value_ = 0;
};

}  // namespace Tavrin::Database
