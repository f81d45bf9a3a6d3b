// Composing an error's message with stream output.
#pragma once

#include <sstream>

#include "tarvcore/config.h"
#include "tarvcore/error_code.h"
#include "tarvcore/error_info.h"
#include "tarvcore/ref_count.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/source_location.h"

namespace tarvcore {

// A stream whose text becomes the message of a record.  The text is a template still: a {@name} in
// it is looked up among the parameters whenever the message is shown.
//
//     ErrorBuilder builder;
//     builder << "Line " << line << ": unexpected '" << token << '\'';
//     builder.throw_error(my::error::syntax, TARVCORE_LOCATION("my::parse()"));
class TARVCORE_API ErrorBuilder : public std::ostringstream {
public:
    // What is kept alive until the record has been made; records hold no such thing themselves.
    using Attachment = RefCountPtr<RefCounted<AtomicRefCount>>;

    ErrorBuilder();
    ~ErrorBuilder() override;

    // A record of the text written so far.  A native code other than 0 becomes the parameter
    // "nativeCode".
    ErrorInfo::Ptr create(const ErrorCode& code, const SourceLocation& location,
                          ErrorInfo::Ptr nested = {}) const;
    ErrorInfo::Ptr create(const ErrorCode& code, const SourceLocation& location, long native_code,
                          ErrorInfo::Ptr nested = {}, Attachment attachment = {}) const;
    ErrorInfo::Ptr create_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                            int value) const;

    // The same, thrown.
    [[noreturn]] void throw_error(const ErrorCode& code, const SourceLocation& location,
                                  ErrorInfo::Ptr nested = {}) const;
    [[noreturn]] void throw_error(const ErrorCode& code, const SourceLocation& location,
                                  long native_code, ErrorInfo::Ptr nested = {},
                                  Attachment attachment = {}) const;
    [[noreturn]] void throw_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                              int value) const;
};

}  // namespace tarvcore
