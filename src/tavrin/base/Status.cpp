#include "tavrin/base/Status.h"

#include <array>

namespace Tavrin {

const std::string& StatusCodeToString(StatusCode status) {
    static const std::array<std::string, 256> texts = [] {
        std::array<std::string, 256> t;
        for (auto& text : t) text = "unknown status";
        t[Status::Success] = "success";
        t[Status::Failure] = "failure";
        t[Status::NotFound] = "not found";
        t[Status::BufferTooSmall] = "buffer too small";
        t[Status::NotAvailable] = "not available";
        t[Status::NotUsable] = "object not usable";
        t[Status::NotOpen] = "not open";
        t[Status::AlreadyOpen] = "already open";
        t[Status::WrongVersion] = "wrong version";
        t[Status::LengthMismatch] = "length does not fit";
        t[Status::Invalid] = "invalid parameter or data";
        t[Status::DescriptionDiffers] = "stored description differs";
        t[Status::IndexConflict] = "index out of range or key exists";
        t[Status::KeyInvalid] = "key not usable";
        t[Status::WrongType] = "wrong field type";
        t[Status::FieldMissing] = "field missing";
        t[Status::OtherTable] = "record of another table";
        t[Status::Undefined] = "field undefined";
        t[Status::NoPrimaryIndex] = "no primary index";
        t[Status::OutOfRange] = "out of range";
        t[Status::StoreFull] = "store full";
        t[Status::OutOfMemory] = "out of memory";
        t[Status::AlreadyCreated] = "already created";
        return t;
    }();
    return texts[status];
}

}  // namespace Tavrin
