#include "tarvcore/error_composer.h"

#include "tarvcore/error_exception.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/error_composer.cpp#1 $");

namespace tarvcore {

ErrorInfo::Ptr ErrorComposer::create(const ErrorCode& code, const SourceLocation& location,
                                     ErrorInfo::Ptr nested) const {
    return ErrorInfo::create(code, message_, params_, location, std::move(nested));
}

ErrorInfo::Ptr ErrorComposer::create_with_nested_errno(const ErrorCode& code,
                                                       const SourceLocation& location,
                                                       int value) const {
    return create(code, location, ErrorInfo::from_errno(location, value));
}

ErrorInfo::Ptr ErrorComposer::create_with_nested_winerror(const ErrorCode& code,
                                                          const SourceLocation& location,
                                                          unsigned long winerror,
                                                          bool keep_windows_record) const {
    return create(code, location,
                  ErrorInfo::from_winerror(location, winerror, keep_windows_record));
}

ErrorInfo::Ptr ErrorComposer::create_with_nested_exception(const ErrorCode& code,
                                                           const SourceLocation& location,
                                                           const std::exception& cause) const {
    return create(code, location, ErrorInfo::from_exception(cause, location));
}

void ErrorComposer::create_transfer(ErrorInfo::Ptr* error, const ErrorCode& code,
                                    const SourceLocation& location, ErrorInfo::Ptr nested) {
    if (error == nullptr) throw_error(code, location, std::move(nested));
    *error = ErrorInfo::create(code, message_.transfer(), params_.transfer(), location,
                               std::move(nested));
}

void ErrorComposer::create_transfer_with_nested_errno(ErrorInfo::Ptr* error, const ErrorCode& code,
                                                      const SourceLocation& location, int value) {
    create_transfer(error, code, location, ErrorInfo::from_errno(location, value));
}

void ErrorComposer::create_transfer_with_nested_winerror(ErrorInfo::Ptr* error,
                                                         const ErrorCode& code,
                                                         const SourceLocation& location,
                                                         unsigned long winerror,
                                                         bool keep_windows_record) {
    create_transfer(error, code, location,
                    ErrorInfo::from_winerror(location, winerror, keep_windows_record));
}

void ErrorComposer::create_transfer_with_nested_exception(ErrorInfo::Ptr* error,
                                                          const ErrorCode& code,
                                                          const SourceLocation& location,
                                                          const std::exception& cause) {
    create_transfer(error, code, location, ErrorInfo::from_exception(cause, location));
}

void ErrorComposer::throw_error(const ErrorCode& code, const SourceLocation& location,
                                ErrorInfo::Ptr nested) {
    tarvcore::throw_error(code, message_.transfer(), params_.transfer(), location,
                          std::move(nested));
}

void ErrorComposer::throw_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                            int value) {
    throw_error(code, location, ErrorInfo::from_errno(location, value));
}

void ErrorComposer::throw_with_nested_winerror(const ErrorCode& code,
                                               const SourceLocation& location,
                                               unsigned long winerror, bool keep_windows_record) {
    throw_error(code, location, ErrorInfo::from_winerror(location, winerror, keep_windows_record));
}

void ErrorComposer::throw_with_nested_exception(const ErrorCode& code,
                                                const SourceLocation& location,
                                                const std::exception& cause) {
    throw_error(code, location, ErrorInfo::from_exception(cause, location));
}

}  // namespace tarvcore
