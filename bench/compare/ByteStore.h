#pragma once
// Insert, Get and Update of W1 for stores that keep the value as its 56 bytes (Workload.h), in
// terms of two operations of the store itself (CRTP, so the calls still inline):
//   void Put(std::uint64_t key, const unsigned char* value);    writes 56 bytes, throws on failure
//   bool Find(std::uint64_t key, ValueBytes& value);            copies them out; false if missing
// An update reads the value, adds 1 to the counter in its first 4 bytes and writes it back.

#include "Phases.h"

namespace Tavrin::Compare {

template <class Store>
class ByteStore {
public:
    void Begin(Phase) {}
    void End(Phase) {}

    void Insert(std::uint64_t key, const Value& value) {
        ValueBytes bytes;
        EncodeValue(value, bytes.data());
        Self().Put(key, bytes.data());
    }

    bool Get(std::uint64_t key, Value& value) {
        ValueBytes bytes;
        if (!Self().Find(key, bytes)) return false;
        DecodeValue(bytes.data(), value);
        return true;
    }

    bool Update(std::uint64_t key) {
        ValueBytes bytes;
        if (!Self().Find(key, bytes)) return false;
        EncodeCounter(bytes.data(), DecodeCounter(bytes.data()) + 1);
        Self().Put(key, bytes.data());
        return true;
    }

private:
    Store& Self() { return static_cast<Store&>(*this); }
};

}  // namespace Tavrin::Compare
