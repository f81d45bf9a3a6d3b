// The library's one exception type, and the functions that throw it.
#pragma once

#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/error_code.h"
#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_info.h"
#include "tarvcore/error_params.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/source_location.h"
#include "tarvcore/source_string.h"

namespace tarvcore {

// Carries the record of an error.  Throwing moves one pointer; no text is put together before
// `what()` is asked for.  One exception object is not for several threads at once; its record is.
//
//     try {
//         deadline = AbsoluteTime::from_string(text);
//     } catch (const ErrorException& e) {
//         if (!e.matches("error.tarvcore.absoluteTime")) throw;
//         log(e.what());
//     }
class TARVCORE_API ErrorException : public std::exception {
public:
    // A null pointer is replaced by a record with the code "error.tarvcore".
    explicit ErrorException(const ErrorInfo::Ptr& error);

    // A copy shares the record and puts its own text together.
    ErrorException(const ErrorException& other) noexcept;
    ErrorException& operator=(const ErrorException& other) noexcept;
    ~ErrorException() noexcept override;

    // Never null.
    const ErrorInfo::Ptr& error() const { return error_; }

    // The record's trace text, which begins with a line feed and has several lines; made by the
    // first call and kept.  "tarvcore::ErrorException" where there is no memory for it.
    const char* what() const noexcept override;

    // Throws a new exception with the same record.
    [[noreturn]] virtual void rethrow() const;

    // Throws an exception with that record.
    [[noreturn]] static void throw_error(const ErrorInfo::Ptr& error);
    // The same with a reference that the caller hands over (see RefCountPtr::detach).  A caller
    // that holds nothing else has nothing to destroy, and each frame that has costs the unwinding a
    // stop.
    [[noreturn]] TARVCORE_INLINE static void throw_adopted(const ErrorInfo* error) {
        throw ErrorException(error, Adopt());
    }
    // Returns when there is no error.
    static void throw_if_error(const ErrorInfo::Ptr& error) {
        if (error) throw_error(error);
    }

    // See ErrorInfo.
    bool matches(const char* code) const { return error_->matches(code); }
    bool matches(const char* code, unsigned length) const { return error_->matches(code, length); }
    bool matches(const ErrorCode& code) const { return error_->matches(code); }
    bool matches(const SourceString& code) const { return error_->matches(code); }
    bool any_matches(const char* code) const { return error_->any_matches(code); }
    bool any_matches(const char* code, unsigned length) const {
        return error_->any_matches(code, length);
    }
    bool any_matches(const ErrorCode& code) const { return error_->any_matches(code); }
    bool any_matches(const SourceString& code) const { return error_->any_matches(code); }
    ErrorInfo::Ptr first_matching(const char* code) const { return error_->first_matching(code); }
    ErrorInfo::Ptr first_matching(const char* code, unsigned length) const {
        return error_->first_matching(code, length);
    }
    ErrorInfo::Ptr first_matching(const ErrorCode& code) const {
        return error_->first_matching(code);
    }
    ErrorInfo::Ptr first_matching(const SourceString& code) const {
        return error_->first_matching(code);
    }

protected:
    // What `what` shows; called when that is first asked for.
    virtual std::string build_what_text() const;

private:
    struct Adopt {};
    ErrorException(const ErrorInfo* error, Adopt) noexcept : error_(error, false) {}

    ErrorInfo::Ptr error_;
    mutable std::unique_ptr<const std::string> what_text_;
};

static_assert(sizeof(ErrorException) == 12, "a virtual-table pointer and two pointers");

namespace impl {

// Raised wherever a counted text must become a NUL-terminated one and has a NUL inside.
[[noreturn]] TARVCORE_API void raise_embedded_nul_error();

}  // namespace impl

// Throw an ErrorException with that record, or with a new one of those parts; see ErrorInfo::create
// for the parts, among them messages, which are literals.
[[noreturn]] TARVCORE_API void throw_error(const ErrorInfo::Ptr& error);
// This one, of literals, throws in the caller's frame: to unwind a frame costs as much as making
// the record.
[[noreturn]] TARVCORE_INLINE void throw_error(const ErrorCode& code, const char* message,
                                              const LiteralLocation& location,
                                              ErrorInfo::Ptr nested = {}) {
    ErrorException::throw_adopted(
        ErrorInfo::create(code, message, location, std::move(nested)).detach());
}
[[noreturn]] TARVCORE_API void throw_error(const ErrorCode& code, MessageTemplate message,
                                           const SourceLocation& location,
                                           ErrorInfo::Ptr nested = {});
[[noreturn]] TARVCORE_API void throw_error(const ErrorCode& code, MessageTemplate message,
                                           ErrorParams params, const SourceLocation& location,
                                           ErrorInfo::Ptr nested = {});
[[noreturn]] TARVCORE_API void throw_error(const ErrorCode& code, MessageTemplate message,
                                           ErrorParams params, const SourceLocation& location,
                                           ErrorInfo::Ptr nested, SourceString hostname);

// Returns when there is no error.
inline void throw_if_error(const ErrorInfo::Ptr& error) {
    ErrorException::throw_if_error(error);
}

// Throw the record of an operating-system error; see ErrorInfo::from_errno and from_winerror.
[[noreturn]] TARVCORE_API void throw_errno(const SourceLocation& location, int value);
[[noreturn]] TARVCORE_API void throw_errno(const SourceLocation& location, ErrorInfo::Ptr nested,
                                           int value);
[[noreturn]] TARVCORE_API void throw_winerror(const SourceLocation& location, unsigned long code,
                                              bool keep_windows_record);
[[noreturn]] TARVCORE_API void throw_winerror(const SourceLocation& location, ErrorInfo::Ptr nested,
                                              unsigned long code, bool keep_windows_record);

// Throw a record of the given parts whose cause is the record of an operating-system error or of
// another exception.
[[noreturn]] TARVCORE_API void throw_with_nested_errno(const ErrorCode& code,
                                                       MessageTemplate message,
                                                       const SourceLocation& location, int value);
[[noreturn]] TARVCORE_API void throw_with_nested_errno(const ErrorCode& code,
                                                       MessageTemplate message, ErrorParams params,
                                                       const SourceLocation& location, int value);
[[noreturn]] TARVCORE_API void throw_with_nested_winerror(const ErrorCode& code,
                                                          MessageTemplate message,
                                                          const SourceLocation& location,
                                                          unsigned long winerror,
                                                          bool keep_windows_record);
[[noreturn]] TARVCORE_API void throw_with_nested_winerror(
    const ErrorCode& code, MessageTemplate message, ErrorParams params,
    const SourceLocation& location, unsigned long winerror, bool keep_windows_record);
[[noreturn]] TARVCORE_API void throw_with_nested_exception(const ErrorCode& code,
                                                           MessageTemplate message,
                                                           const SourceLocation& location,
                                                           const std::exception& cause);
[[noreturn]] TARVCORE_API void throw_with_nested_exception(const ErrorCode& code,
                                                           MessageTemplate message,
                                                           ErrorParams params,
                                                           const SourceLocation& location,
                                                           const std::exception& cause);

}  // namespace tarvcore
