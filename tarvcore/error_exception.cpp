#include "tarvcore/error_exception.h"

#include <sstream>
#include <utility>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/error_exception.cpp#1 $");

namespace tarvcore {
namespace {

// The line that records show wherever this stands: logs are compared with it.
constexpr unsigned null_pointer_line = 43;

ErrorInfo::Ptr null_pointer_record() {
    return ErrorInfo::create(error::tarvcore, "Unknown error (NULL ErrorInfo pointer)",
                             SourceLocation("tarvcore::ErrorException::ErrorException()",
                                            source_file_id, null_pointer_line));
}

}  // namespace

ErrorException::ErrorException(const ErrorInfo::Ptr& error)
    : error_(error ? error : null_pointer_record()) {}

ErrorException::ErrorException(const ErrorException& other) noexcept
    : std::exception(other), error_(other.error_) {}

ErrorException& ErrorException::operator=(const ErrorException& other) noexcept {
    what_text_.reset();
    error_ = other.error_;
    return *this;
}

ErrorException::~ErrorException() noexcept = default;

const char* ErrorException::what() const noexcept {
    if (!what_text_) {
        try {
            what_text_ = std::make_unique<const std::string>(build_what_text());
        } catch (...) {
            return "tarvcore::ErrorException";
        }
    }
    return what_text_->c_str();
}

std::string ErrorException::build_what_text() const {
    std::ostringstream text;
    // Without this, a stream that runs out of memory would keep silent about it.
    text.exceptions(std::ios::badbit);
    error_->write_trace(text, 0);
    return std::move(text).str();
}

void ErrorException::rethrow() const {
    throw_error(error_);
}

void ErrorException::throw_error(const ErrorInfo::Ptr& error) {
    throw ErrorException(error);
}

void throw_error(const ErrorInfo::Ptr& error) {
    ErrorException::throw_error(error);
}

void throw_error(const ErrorCode& code, MessageTemplate message, const SourceLocation& location,
                 ErrorInfo::Ptr nested) {
    throw_error(code, std::move(message), ErrorParams(), location, std::move(nested));
}

void throw_error(const ErrorCode& code, MessageTemplate message, ErrorParams params,
                 const SourceLocation& location, ErrorInfo::Ptr nested) {
    const ErrorInfo* error =
        ErrorInfo::create(code, std::move(message), std::move(params), location, std::move(nested))
            .detach();
    ErrorException::throw_adopted(error);
}

void throw_error(const ErrorCode& code, MessageTemplate message, ErrorParams params,
                 const SourceLocation& location, ErrorInfo::Ptr nested, SourceString hostname) {
    throw_error(ErrorInfo::create(code, std::move(message), std::move(params), location,
                                  std::move(nested), std::move(hostname)));
}

void throw_errno(const SourceLocation& location, int value) {
    throw_error(ErrorInfo::from_errno(location, value));
}

void throw_errno(const SourceLocation& location, ErrorInfo::Ptr nested, int value) {
    throw_error(ErrorInfo::from_errno(location, std::move(nested), value));
}

void throw_winerror(const SourceLocation& location, unsigned long code, bool keep_windows_record) {
    throw_error(ErrorInfo::from_winerror(location, code, keep_windows_record));
}

void throw_winerror(const SourceLocation& location, ErrorInfo::Ptr nested, unsigned long code,
                    bool keep_windows_record) {
    throw_error(ErrorInfo::from_winerror(location, std::move(nested), code, keep_windows_record));
}

void throw_with_nested_errno(const ErrorCode& code, MessageTemplate message,
                             const SourceLocation& location, int value) {
    throw_error(code, std::move(message), location, ErrorInfo::from_errno(location, value));
}

void throw_with_nested_errno(const ErrorCode& code, MessageTemplate message, ErrorParams params,
                             const SourceLocation& location, int value) {
    throw_error(code, std::move(message), std::move(params), location,
                ErrorInfo::from_errno(location, value));
}

void throw_with_nested_winerror(const ErrorCode& code, MessageTemplate message,
                                const SourceLocation& location, unsigned long winerror,
                                bool keep_windows_record) {
    throw_error(code, std::move(message), location,
                ErrorInfo::from_winerror(location, winerror, keep_windows_record));
}

void throw_with_nested_winerror(const ErrorCode& code, MessageTemplate message, ErrorParams params,
                                const SourceLocation& location, unsigned long winerror,
                                bool keep_windows_record) {
    throw_error(code, std::move(message), std::move(params), location,
                ErrorInfo::from_winerror(location, winerror, keep_windows_record));
}

void throw_with_nested_exception(const ErrorCode& code, MessageTemplate message,
                                 const SourceLocation& location, const std::exception& cause) {
    throw_error(code, std::move(message), location, ErrorInfo::from_exception(cause, location));
}

void throw_with_nested_exception(const ErrorCode& code, MessageTemplate message, ErrorParams params,
                                 const SourceLocation& location, const std::exception& cause) {
    throw_error(code, std::move(message), std::move(params), location,
                ErrorInfo::from_exception(cause, location));
}

void impl::raise_embedded_nul_error() {
    throw_error(error::tarvcore_string_embeddedNul,
                "String contains embedded NUL character and cannot be converted to a 'C'-string",
                TARVCORE_LOCATION("tarvcore::impl::raise_embedded_nul_error()"));
}

}  // namespace tarvcore
