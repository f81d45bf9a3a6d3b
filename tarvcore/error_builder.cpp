#include "tarvcore/error_builder.h"

#include <utility>

#include "tarvcore/error_exception.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/error_builder.cpp#1 $");

namespace tarvcore {

ErrorBuilder::ErrorBuilder() = default;
ErrorBuilder::~ErrorBuilder() = default;

ErrorInfo::Ptr ErrorBuilder::create(const ErrorCode& code, const SourceLocation& location,
                                    ErrorInfo::Ptr nested) const {
    return create(code, location, 0L, std::move(nested));
}

ErrorInfo::Ptr ErrorBuilder::create(const ErrorCode& code, const SourceLocation& location,
                                    long native_code, ErrorInfo::Ptr nested, Attachment) const {
    const std::string_view text = view();
    ErrorParams params;
    if (native_code != 0) params.add("nativeCode", native_code);
    return ErrorInfo::create(code, SourceString(text.data(), text.size()), std::move(params),
                             location, std::move(nested));
}

ErrorInfo::Ptr ErrorBuilder::create_with_nested_errno(const ErrorCode& code,
                                                      const SourceLocation& location,
                                                      int value) const {
    return create(code, location, ErrorInfo::from_errno(location, value));
}

void ErrorBuilder::throw_error(const ErrorCode& code, const SourceLocation& location,
                               ErrorInfo::Ptr nested) const {
    tarvcore::throw_error(create(code, location, std::move(nested)));
}

void ErrorBuilder::throw_error(const ErrorCode& code, const SourceLocation& location,
                               long native_code, ErrorInfo::Ptr nested,
                               Attachment attachment) const {
    tarvcore::throw_error(
        create(code, location, native_code, std::move(nested), std::move(attachment)));
}

void ErrorBuilder::throw_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                           int value) const {
    tarvcore::throw_error(create_with_nested_errno(code, location, value));
}

}  // namespace tarvcore
