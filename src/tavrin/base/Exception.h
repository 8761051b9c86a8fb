#pragma once
// Base of every exception of the library.
//
// An exception names its throw site (source file, full operation name, line) and carries a 32-bit
// code whose meaning depends on the derived class. It also holds a chain of further exceptions that
// were added on the way out of a layer (`AddException`); copies share that chain, which is what a
// throw by value needs. Exceptions belong to the thread that threw them.

#include <cstdint>
#include <exception>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace Tavrin {

/// Base of the library's exceptions: a throw site, a code whose meaning the derived class gives, and
/// a chain of further exceptions shared by its copies.
class Exception : public std::exception {
public:
    /// The chained exceptions, in the order they were added; each owned by the chain.
    using Chain = std::vector<std::unique_ptr<Exception>>;

    /// An exception of `code` thrown at the given site (full operation name and line); a null `file`
    /// or `function` is taken as empty. The chain is empty.
    Exception(const char* file, const char* function, std::uint32_t line, std::uint32_t code);
    /// A copy of the site and code that shares the chain of `other`.
    Exception(const Exception& other);
    /// Takes the site, code and (shared) chain of `other`.
    Exception& operator=(const Exception& other);
    /// Gives up this copy's share of the chain.
    ~Exception() override;

    /// "exception <code> at <function> (<file>:<line>)"; derived classes describe their code instead.
    virtual std::string ToString() const;
    /// ToString() with the throw site: "<text> at <function> (<file>:<line>)". The base class and
    /// StatusCodeException name their site in ToString() already.
    virtual std::string ToSiteString() const;
    /// Writes ToString() and then, one per line, every chained exception.
    virtual std::ostream& ToStream(std::ostream& stream) const;

    /// Appends `exception` to the chain and takes ownership. A null pointer is accepted and ignored:
    /// callers allocate the exception without throwing and pass on whatever they got.
    void AddException(Exception* exception) const;

    /// The code given at construction; its meaning depends on the derived class.
    std::uint32_t GetCode() const noexcept { return code_; }
    /// The source file of the throw site.
    const std::string& GetFile() const noexcept { return file_; }
    /// The full name of the operation that threw.
    const std::string& GetFunction() const noexcept { return function_; }
    /// The source line of the throw site.
    std::uint32_t GetLine() const noexcept { return line_; }
    /// The chained exceptions (AddException), an empty chain when none were added; valid while this
    /// exception or a copy of it lives.
    const Chain& GetChain() const;

    /// ToSiteString() of this exception and then, one per line, of every chained one: what a user
    /// who catches std::exception needs to find the failure.
    const char* what() const noexcept override;

protected:
    /// " at <function> (<file>:<line>)".
    std::string SiteSuffix() const;

private:
    std::string file_;
    std::string function_;
    std::uint32_t line_;
    std::uint32_t code_;
    mutable std::shared_ptr<Chain> chain_;
    mutable std::string what_;
};

/// Writes `exception` with Exception::ToStream.
std::ostream& operator<<(std::ostream& stream, const Exception& exception);

/// Carries a status code through a layer that has no status result; whoever catches it returns
/// GetCode() as the status.
class StatusCodeException : public Exception {
public:
    /// The constructors of Exception; the code is a status (Status.h).
    using Exception::Exception;
    /// A copy that shares the chain of `other`.
    StatusCodeException(const StatusCodeException& other) = default;
    /// "status <code> (<status text>) at <function> (<file>:<line>)".
    std::string ToString() const override;
};

}  // namespace Tavrin
