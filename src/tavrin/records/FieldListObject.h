#pragma once
// FieldListObject: the common base of Record and Key, an image bound to a table.
//
// Owns: the image. It lives in a 1024-byte buffer inside the object as long as it fits, so records
// and keys of ordinary tables cost no allocation; a longer image gets an array of its own. The
// buffer grows and never shrinks: once an array is taken, the inline buffer stays unused until the
// object is cleared. Holds, unowned: the table it is bound to and the FieldList that lays the image
// out (the table's for a Record, the index's for a Key).
//
// Binding copies the table's identity token. The object counts as initialized while it is bound
// and that token is still the table's current one; the test reads only the token's shared cell, so
// it is safe after the table object is gone. Every operation that needs the table or the list
// tests IsInitialized() first and answers status 14 (Status::NotUsable) without touching a stale
// pointer.
//
// Not locked: an object belongs to one thread at a time. The table's operations lock the table.

#include <cstdint>
#include <memory>
#include <ostream>
#include <vector>

#include "tavrin/base/MessageBuilder.h"
#include "tavrin/base/MessageValidator.h"
#include "tavrin/base/Status.h"
#include "tavrin/records/FieldList.h"
#include "tavrin/records/IdentityToken.h"

namespace Tavrin::Database {

class ITable;

/// The common base of Record and Key: an image that the object owns, bound to a table and laid out
/// by a FieldList that it holds unowned. Operations that need the table or the list answer 14 while
/// the object is not bound or its table is gone. Not locked: one thread at a time.
class FieldListObject {
public:
    /// Bytes of the buffer inside the object; a longer image gets an array of its own.
    static constexpr std::uint32_t InlineCapacity = 1024;
    /// The record id of an object that has none.
    static constexpr std::uint32_t NoRecordId = 0xFFFFFFFF;

    /// Frees an image array that the object took.
    virtual ~FieldListObject() = default;

    /// Appends the object's serialised form; status 14 if it is not initialized.
    virtual StatusCode Serialize(MessageBuilder& builder) const = 0;
    /// Binds to `table` and reads the serialised form. On failure the object is partly filled but
    /// stays safe to destroy, copy or read again.
    virtual StatusCode Deserialize(ITable* table, MessageValidator& validator) = 0;
    /// Brings the image to its empty state and forgets the record id; status 14 if not initialized.
    virtual StatusCode Reset() = 0;
    /// Copies the fields of `source` into this image by field id (FieldList::CopyFields). Status 14
    /// unless both objects are initialized; with `strict`, 29 for a field that the source lacks.
    virtual StatusCode CopyFields(const FieldListObject& source, bool strict);

    /// Bound, and the table's token is still the one copied at binding.
    bool IsInitialized() const noexcept { return initialized_ && tableToken_.IsLive(); }

    /// An iterator at the layout's first field; the end iterator if the object is not initialized.
    FieldList::ConstIterator Begin() const noexcept;
    /// The end iterator.
    FieldList::ConstIterator End() const noexcept { return FieldList::ConstIterator(); }

    /// The layout, null before binding. Valid while the table lives (test IsInitialized()).
    const FieldList* GetFieldList() const noexcept { return fieldList_; }
    ///@{
    /// The image: GetFieldList()->GetDataLength() bytes for a record, the index's key size for a key.
    unsigned char* GetData() noexcept { return data_; }
    const unsigned char* GetData() const noexcept { return data_; }
    ///@}
    /// Id of the record in the store; NoRecordId when there is none.
    std::uint32_t GetRecordId() const noexcept { return recordId_; }
    /// For the table's own use: remembers where the image was stored. Const because a tree index
    /// keeps its cursor here also through a const Key (Key::SetCursor).
    void SetRecordId(std::uint32_t recordId) const noexcept { recordId_ = recordId; }
    /// The table bound to, null before binding. Do not call through it unless IsInitialized().
    ITable* GetTable() const noexcept { return table_; }
    /// The token copied at binding; the table compares it with its own to refuse foreign objects.
    const IdentityToken& GetTableToken() const noexcept { return tableToken_; }
    /// Bytes available at GetData().
    std::uint32_t GetCapacity() const noexcept { return capacity_; }
    /// True while the image lives in the object's own 1024 bytes.
    bool IsInline() const noexcept { return data_ == inlineBuffer_; }

    /// For each field of `other` in order, the first field here of the same name and type: its id
    /// goes to `ids` and other's to `otherIds`, at the same position. Both vectors keep what they
    /// held. Status 14 unless both objects are initialized.
    StatusCode GetMatchingFieldsByName(std::vector<std::uint16_t>& ids, const FieldListObject& other,
                                       std::vector<std::uint16_t>& otherIds) const;
    /// Appends the id of each field of `other`, in other's order, that this layout also has. Status
    /// 14 if this object is not initialized; an `other` that is not initialized adds nothing.
    StatusCode GetMatchingFieldsById(std::vector<std::uint16_t>& ids, const FieldListObject& other) const;

    /// The text of the image, or "Not initialized\n".
    friend std::ostream& operator<<(std::ostream& stream, const FieldListObject& object);

protected:
    /// Not initialized: no table, no list, the inline buffer, no record id.
    FieldListObject() noexcept;
    /// Marks the constructor below.
    struct ImageFollows {};
    /// As the default constructor, but the inline buffer is not zeroed: for a derived constructor
    /// that binds and writes the whole image at once. The bytes beyond the image then stay unwritten;
    /// nothing reads them, as every binding writes or resets the whole image of its layout.
    explicit FieldListObject(ImageFollows) noexcept {}
    ///@{
    /// Copying and moving are the derived classes' business (they go through Initialize).
    FieldListObject(const FieldListObject&) = delete;
    FieldListObject& operator=(const FieldListObject&) = delete;
    ///@}

    /// A table that can be bound to: not null, with a token (step one of every binding).
    static bool IsBindable(const ITable* table) noexcept;
    /// Makes room for `size` bytes (status 41 if the allocation fails; then nothing changes) and
    /// takes the table, its current token and the list. The image is not touched.
    StatusCode Bind(ITable* table, const FieldList* fieldList, std::uint32_t size) noexcept;
    /// Back to the state of a default-constructed object: an array is freed and the inline buffer
    /// is zeroed.
    void Clear() noexcept;
    /// Takes over `other`'s binding, image and record id, and clears `other`. No allocation.
    void TakeFrom(FieldListObject& other) noexcept;
    /// True when both are bound to the same issue of one table's token.
    bool IsSameTable(const FieldListObject& other) const noexcept { return tableToken_.IsSame(other.tableToken_); }

private:
    bool initialized_ = false;
    ITable* table_ = nullptr;
    IdentityToken tableToken_;
    const FieldList* fieldList_ = nullptr;
    unsigned char inlineBuffer_[InlineCapacity];
    /// Owns data_ once the image has outgrown the inline buffer; null before that.
    std::unique_ptr<unsigned char[]> array_;
    /// The image: inlineBuffer_ or array_.
    unsigned char* data_ = inlineBuffer_;
    /// Bytes available at data_.
    std::uint32_t capacity_ = InlineCapacity;
    /// Where the image was stored; a tree index's cursor for a Key.
    mutable std::uint32_t recordId_ = NoRecordId;
};

}  // namespace Tavrin::Database
