// Construction, files and user data of a red-black tree index, and the way from an entry number to
// its node. The walks are in RedBlackTreeWalk.cpp, the changes of shape in RedBlackTreeUpdate.cpp.
#include "tavrin/indexes/RedBlackTreeIndex.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

#include "tavrin/base/DatabaseException.h"
#include "tavrin/base/Exception.h"

namespace Tavrin::Database {

namespace {

constexpr const char* ConstructorOperation = "Tavrin::Database::RedBlackTreeIndex::RedBlackTreeIndex";
constexpr const char* InitializeOperation = "Tavrin::Database::RedBlackTreeIndex::Initialize";

}  // namespace

RedBlackTreeIndex::RedBlackTreeIndex(const IndexSpecification& specification, const FieldList& tableFieldList,
                                     const IFieldListFactory& factory, std::uint32_t initialEntries,
                                     std::uint32_t growEntries)
    : Index(specification, tableFieldList, factory),
      order_(*GetFieldList(), GetComparedFieldCount()),
      distinctKeys_(IsPrimaryUnique() || IsUnique() || IsDuplicate()),
      duplicateTail_(IsDuplicate() ? GetFieldList()->GetDataLength() : 0),
      store_(this, GetKeySize() + Node::HeaderSize, initialEntries, growEntries) {
    scratch_.reset(new (std::nothrow) unsigned char[2 * GetKeySize() + Node::HeaderSize]);
    if (scratch_ == nullptr) ThrowDatabase(ConstructorOperation, DatabaseException::AllocateIndex);
}

RedBlackTreeIndex::~RedBlackTreeIndex() { scratch_.reset(); }

std::uint32_t RedBlackTreeIndex::GetCurrentRecords() {
    const std::uint32_t entries = store_.IsOpen() ? store_.GetCurrentEntries() : 0;
    return entries == 0 ? 0 : entries - 1;
}

void RedBlackTreeIndex::Create(const std::string& directory, const std::string& tableName, const Tavrin::Uuid& uuid) {
    store_.Create(GetFileName(directory, tableName, GetName()), uuid);
    Initialize();
}

void RedBlackTreeIndex::Create() {
    store_.Create();
    Initialize();
}

StatusCode RedBlackTreeIndex::Open(const std::string& directory, const std::string& tableName,
                                   const Tavrin::Uuid& uuid) {
    ForgetInsertionPoint();
    return store_.Open(GetFileName(directory, tableName, GetName()), &uuid);
}

StatusCode RedBlackTreeIndex::SaveAs(const std::string& directory, const std::string& tableName) {
    return store_.SaveAs(GetFileName(directory, tableName, GetName()));
}

StatusCode RedBlackTreeIndex::Clear() {
    try {
        store_.Clear();
        Initialize();
    } catch (const std::exception&) {
        return Status::Failure;
    }
    return Status::Success;
}

StatusCode RedBlackTreeIndex::SetUuid(const Tavrin::Uuid& uuid) { return store_.SetUuid(uuid); }

StatusCode RedBlackTreeIndex::Sync() { return store_.Sync(); }

void RedBlackTreeIndex::Discard() noexcept {
    ForgetInsertionPoint();
    store_.Discard();
}

void RedBlackTreeIndex::Initialize() {
    const std::uint32_t nodeSize = GetKeySize() + Node::HeaderSize;
    std::memset(scratch_.get(), 0, nodeSize);
    std::uint32_t sentinel = NoEntry;
    if (store_.Add(sentinel, scratch_.get()) != Status::Success) {
        ThrowDatabase(InitializeOperation, DatabaseException::AllocateIndex);
    }
    Node(scratch_.get()).Reset(Node::NoRecord, sentinel);
    if (store_.Update(sentinel, scratch_.get()) != Status::Success) {
        ThrowDatabase(InitializeOperation, DatabaseException::AllocateIndex);
    }
    sentinel_ = sentinel;
    root_ = sentinel;
    ForgetInsertionPoint();
}

StatusCode RedBlackTreeIndex::SerializeUserData(MessageBuilder& builder) {
    StatusCode status = GetSpecification().Serialize(builder);
    if (status == Status::Success) status = builder.AppendInt32(static_cast<std::int32_t>(root_));
    if (status == Status::Success) status = builder.AppendInt32(static_cast<std::int32_t>(sentinel_));
    return status;
}

StatusCode RedBlackTreeIndex::DeserializeUserData(MessageValidator& validator) {
    IndexSpecification stored;
    StatusCode status = stored.Deserialize(validator);
    if (status != Status::Success) return status;
    if (stored != GetSpecification()) return Status::Invalid;
    std::int32_t root = 0;
    std::int32_t sentinel = 0;
    if (validator.ReadInt32(root) != Status::Success || validator.ReadInt32(sentinel) != Status::Success) {
        return Status::Invalid;
    }
    // The store is mapped by now: both must name entries in use, or every later walk would start
    // from nowhere. The sentinel must be one, the root must hang under it, and an empty tree must
    // be all the store holds (its count is the file's): a root or sentinel damaged into the number
    // of another entry in use would otherwise hide keys without a word.
    unsigned char* rootBytes = nullptr;
    unsigned char* sentinelBytes = nullptr;
    if (store_.GetEntry(static_cast<std::uint32_t>(root), rootBytes) != Status::Success ||
        store_.GetEntry(static_cast<std::uint32_t>(sentinel), sentinelBytes) != Status::Success) {
        return Status::Invalid;
    }
    const Node nil(sentinelBytes);
    const auto sentinelId = static_cast<std::uint32_t>(sentinel);
    if (nil.GetRecord() != Node::NoRecord || nil.GetLeft() != sentinelId || nil.GetRight() != sentinelId) {
        return Status::Invalid;
    }
    if (root == sentinel ? store_.GetCurrentEntries() != 1 : Node(rootBytes).GetParent() != sentinelId) {
        return Status::Invalid;
    }
    root_ = static_cast<std::uint32_t>(root);
    sentinel_ = static_cast<std::uint32_t>(sentinel);
    return Status::Success;
}

std::string RedBlackTreeIndex::GetFileName(const std::string& directory, const std::string& tableName,
                                           const std::string& indexName) {
    std::string stem = tableName + "-" + indexName;
    std::replace(stem.begin(), stem.end(), ' ', '_');
    std::string name = directory;
    if (!name.empty() && name.back() != '/' && name.back() != '\\') name += '/';
    return name + stem + ".rb.idx";
}

StatusCode RedBlackTreeIndex::CheckUsable(const Key& key) const noexcept {
    if (!store_.IsOpen()) return Status::NotOpen;
    return key.GetCapacity() < GetKeySize() ? Status::Invalid : Status::Success;
}

RedBlackTreeNode::Side RedBlackTreeIndex::SideOf(std::uint32_t id) {
    return ChildOf(ParentOf(id), Node::Left) == id ? Node::Left : Node::Right;
}

}  // namespace Tavrin::Database
