#pragma once
// The byte layout of one node of a red-black tree index: the data of one entry of the index's
// MemoryDataStore. All integers are little-endian and unaligned (the entry can begin at any byte of
// the mapping), so every field is read and written through the encoding helpers.
//
//   offset  width        field
//   0       4            record   record id given to Add; 0xFFFFFFFF in the sentinel
//   4       4            left     entry number of the left child; the sentinel's number if none
//   8       4            right    entry number of the right child; the sentinel's number if none
//   12      4            parent   entry number of the parent; the sentinel's number at the root
//   16      4            colour   0 black, 1 red
//   20      key size     key      the key image, laid out by the index's key FieldList
//
// Links are entry numbers, never addresses, so the tree survives a re-mapping of its file. A node
// view holds an address and is therefore good only until the store next grows.

#include <cstdint>
#include <cstring>

#include "tavrin/base/Encoding.h"

namespace Tavrin::Database {

/// A view of one node's bytes in the mapping (layout above); holds an address, so it is good only
/// until the store next grows. Owns nothing.
class RedBlackTreeNode {
public:
    ///@{
    /// Byte offsets of the node's fields (see the layout above).
    static constexpr std::uint32_t RecordOffset = 0;
    static constexpr std::uint32_t LeftOffset = 4;
    static constexpr std::uint32_t RightOffset = 8;
    static constexpr std::uint32_t ParentOffset = 12;
    static constexpr std::uint32_t ColourOffset = 16;
    static constexpr std::uint32_t KeyOffset = 20;
    ///@}
    /// Bytes in front of the key.
    static constexpr std::uint32_t HeaderSize = KeyOffset;

    ///@{
    /// Values of the colour field.
    static constexpr std::uint32_t Black = 0;
    static constexpr std::uint32_t Red = 1;
    ///@}
    /// The record field of the sentinel.
    static constexpr std::uint32_t NoRecord = 0xFFFFFFFF;

    /// The two children by side, so that mirrored cases share one piece of code.
    enum Side : std::uint32_t { Left = 0, Right = 1 };
    /// The other side.
    static constexpr Side Opposite(Side side) noexcept { return side == Left ? Right : Left; }

    /// A view of the node whose bytes begin at `bytes`.
    explicit RedBlackTreeNode(unsigned char* bytes) noexcept : bytes_(bytes) {}

    ///@{
    /// Each reads the field it names (GetChild a child by side; IsRed whether the colour is Red);
    /// GetKey points at the key image in the node.
    std::uint32_t GetRecord() const noexcept { return DecodeU32(bytes_ + RecordOffset); }
    std::uint32_t GetChild(Side side) const noexcept { return DecodeU32(bytes_ + ChildOffset(side)); }
    std::uint32_t GetLeft() const noexcept { return GetChild(Left); }
    std::uint32_t GetRight() const noexcept { return GetChild(Right); }
    std::uint32_t GetParent() const noexcept { return DecodeU32(bytes_ + ParentOffset); }
    std::uint32_t GetColour() const noexcept { return DecodeU32(bytes_ + ColourOffset); }
    bool IsRed() const noexcept { return GetColour() == Red; }
    const unsigned char* GetKey() const noexcept { return bytes_ + KeyOffset; }
    ///@}

    ///@{
    /// Each writes the field it names; GetKey points at the key image in the node, for writing.
    void SetRecord(std::uint32_t record) noexcept { EncodeU32(bytes_ + RecordOffset, record); }
    void SetChild(Side side, std::uint32_t id) noexcept { EncodeU32(bytes_ + ChildOffset(side), id); }
    void SetParent(std::uint32_t id) noexcept { EncodeU32(bytes_ + ParentOffset, id); }
    void SetColour(std::uint32_t colour) noexcept { EncodeU32(bytes_ + ColourOffset, colour); }
    unsigned char* GetKey() noexcept { return bytes_ + KeyOffset; }
    ///@}

    /// Points every link at `sentinel`, colours the node black and sets the record.
    void Reset(std::uint32_t record, std::uint32_t sentinel) noexcept {
        SetRecord(record);
        SetChild(Left, sentinel);
        SetChild(Right, sentinel);
        SetParent(sentinel);
        SetColour(Black);
    }

    /// Copies a key image: byte by byte below 10 bytes, where a call to memcpy costs more than the
    /// loop, in one block from 10 bytes on.
    static void CopyKey(unsigned char* destination, const unsigned char* source, std::uint32_t length) noexcept {
        if (length < 10) {
            for (std::uint32_t i = 0; i < length; ++i) destination[i] = source[i];
        } else {
            std::memcpy(destination, source, length);
        }
    }

private:
    static constexpr std::uint32_t ChildOffset(Side side) noexcept { return LeftOffset + 4 * side; }

    unsigned char* bytes_;
};

}  // namespace Tavrin::Database
