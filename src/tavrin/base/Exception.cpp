#include "tavrin/base/Exception.h"

#include <sstream>

#include "tavrin/base/Status.h"

namespace Tavrin {

Exception::Exception(const char* file, const char* function, std::uint32_t line, std::uint32_t code)
    : file_(file ? file : ""), function_(function ? function : ""), line_(line), code_(code) {}

Exception::Exception(const Exception& other)
    : std::exception(other),
      file_(other.file_),
      function_(other.function_),
      line_(other.line_),
      code_(other.code_),
      chain_(other.chain_) {}

Exception& Exception::operator=(const Exception& other) {
    if (this != &other) {
        file_ = other.file_;
        function_ = other.function_;
        line_ = other.line_;
        code_ = other.code_;
        chain_ = other.chain_;
        what_.clear();
    }
    return *this;
}

Exception::~Exception() = default;

std::string Exception::ToString() const {
    std::ostringstream out;
    out << "exception " << code_ << SiteSuffix();
    return out.str();
}

std::string Exception::ToSiteString() const { return ToString(); }

std::string Exception::SiteSuffix() const {
    std::ostringstream out;
    out << " at " << function_ << " (" << file_ << ":" << line_ << ")";
    return out.str();
}

std::ostream& Exception::ToStream(std::ostream& stream) const {
    stream << ToString();
    if (chain_) {
        for (const auto& chained : *chain_) stream << '\n' << chained->ToString();
    }
    return stream;
}

void Exception::AddException(Exception* exception) const {
    std::unique_ptr<Exception> owned(exception);
    if (!owned) return;
    if (!chain_) chain_ = std::make_shared<Chain>();
    chain_->push_back(std::move(owned));
    what_.clear();
}

const Exception::Chain& Exception::GetChain() const {
    static const Chain empty;
    return chain_ ? *chain_ : empty;
}

const char* Exception::what() const noexcept {
    try {
        if (what_.empty()) {
            std::string text = ToSiteString();
            for (const auto& chained : GetChain()) text += '\n' + chained->ToSiteString();
            what_ = std::move(text);
        }
        return what_.c_str();
    } catch (...) {
        return "Tavrin::Exception";
    }
}

std::ostream& operator<<(std::ostream& stream, const Exception& exception) {
    return exception.ToStream(stream);
}

std::string StatusCodeException::ToString() const {
    std::ostringstream out;
    out << "status " << GetCode() << " (" << StatusCodeToString(static_cast<StatusCode>(GetCode())) << ")"
        << SiteSuffix();
    return out.str();
}

}  // namespace Tavrin
