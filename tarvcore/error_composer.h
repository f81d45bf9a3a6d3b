// Composing an error: message and parameters first, code and place at the end.
#pragma once

#include <exception>
#include <utility>

#include "tarvcore/config.h"
#include "tarvcore/error_code.h"
#include "tarvcore/error_info.h"
#include "tarvcore/error_params.h"
#include "tarvcore/message_template.h"
#include "tarvcore/source_location.h"

namespace tarvcore {

// A message with its parameters, from which a record is made.  `create` copies them, so that one
// composer may make several records; `create_transfer` and the throwing operations take them and
// leave the composer empty.
//
//     ErrorComposer("Invalid UTC time string: \"{@utcTime}\"")
//         .param("utcTime", text)
//         .throw_error(error::tarvcore_absoluteTime_invalidUtcString, location);
class TARVCORE_API ErrorComposer {
public:
    ErrorComposer() = default;
    // The message is a template, in which the parameters have their places.
    ErrorComposer(MessageTemplate message) : message_(std::move(message.text)) {}
    ErrorComposer(MessageTemplate message, ErrorParams params)
        : message_(std::move(message.text)), params_(std::move(params)) {}
    ErrorComposer(const char* literal) : ErrorComposer(MessageTemplate(literal)) {}

    // A literal, which is not copied.
    ErrorComposer& message(const char* literal) {
        message_ = SourceString(literal, true);
        return *this;
    }
    // Replaces all parameters.
    ErrorComposer& params(ErrorParams params) {
        params_ = std::move(params);
        return *this;
    }
    // See ErrorParams::add.
    ErrorComposer& param(const char* name, unsigned name_length, const char* value,
                         unsigned value_length) {
        params_.add(name, name_length, value, value_length);
        return *this;
    }
    template <class Value>
    ErrorComposer& param(LiteralName name, Value&& value) {
        params_.add(name, std::forward<Value>(value));
        return *this;
    }

    const SourceString& message() const { return message_; }
    const ErrorParams& params() const { return params_; }

    // A record of the message and parameters; the cause is given, or made of an operating-system
    // error or another exception.
    ErrorInfo::Ptr create(const ErrorCode& code, const SourceLocation& location,
                          ErrorInfo::Ptr nested = {}) const;
    ErrorInfo::Ptr create_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                            int value) const;
    ErrorInfo::Ptr create_with_nested_winerror(const ErrorCode& code,
                                               const SourceLocation& location,
                                               unsigned long winerror,
                                               bool keep_windows_record) const;
    ErrorInfo::Ptr create_with_nested_exception(const ErrorCode& code,
                                                const SourceLocation& location,
                                                const std::exception& cause) const;

    // The same, stored in `*error` in place of what it holds; thrown if `error` is null.
    void create_transfer(ErrorInfo::Ptr* error, const ErrorCode& code,
                         const SourceLocation& location, ErrorInfo::Ptr nested = {});
    void create_transfer_with_nested_errno(ErrorInfo::Ptr* error, const ErrorCode& code,
                                           const SourceLocation& location, int value);
    void create_transfer_with_nested_winerror(ErrorInfo::Ptr* error, const ErrorCode& code,
                                              const SourceLocation& location,
                                              unsigned long winerror, bool keep_windows_record);
    void create_transfer_with_nested_exception(ErrorInfo::Ptr* error, const ErrorCode& code,
                                               const SourceLocation& location,
                                               const std::exception& cause);

    // The same, thrown.
    [[noreturn]] void throw_error(const ErrorCode& code, const SourceLocation& location,
                                  ErrorInfo::Ptr nested = {});
    [[noreturn]] void throw_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                              int value);
    [[noreturn]] void throw_with_nested_winerror(const ErrorCode& code,
                                                 const SourceLocation& location,
                                                 unsigned long winerror, bool keep_windows_record);
    [[noreturn]] void throw_with_nested_exception(const ErrorCode& code,
                                                  const SourceLocation& location,
                                                  const std::exception& cause);

private:
    SourceString message_;
    ErrorParams params_;
};

}  // namespace tarvcore
