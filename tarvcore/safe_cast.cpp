#include "tarvcore/safe_cast.h"

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/impl/type_name.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/safe_cast.cpp#1 $");

namespace tarvcore::impl {
namespace {

template <class Value>
[[noreturn]] void throw_cast_error(const ErrorCode& code, const char* message,
                                   const std::type_info& dest, Value value,
                                   const SourceLocation& location) {
    ErrorComposer(message)
        .param("srcValue", value)
        .param("destType", readable_type_name(dest))
        .throw_error(code, location);
}

constexpr char truncated_message[] =
    "Source value of cast does not fit into destination type.  SrcValue: {@srcValue}, DestType: "
    "{@destType}";
constexpr char truncated_function[] = "tarvcore::impl::safe_cast_throw_value_truncated()";

}  // namespace

// The lines are part of the records: support tools tell the kinds of failure apart by them.

void safe_cast_throw_negative_to_unsigned(const std::type_info& dest, long long value) {
    throw_cast_error(error::tarvcore_cast_negativeToUnsigned,
                     "Attempt to cast negative value into unsigned type.  SrcValue: {@srcValue}, "
                     "DestType: {@destType}",
                     dest, value,
                     SourceLocation("tarvcore::impl::safe_cast_throw_negative_to_unsigned()",
                                    source_file_id, 41));
}

void safe_cast_throw_value_truncated(const std::type_info& dest, unsigned long long value) {
    throw_cast_error(error::tarvcore_cast_valueTooBig, truncated_message, dest, value,
                     SourceLocation(truncated_function, source_file_id, 53));
}

void safe_cast_throw_value_truncated(const std::type_info& dest, long long value) {
    throw_cast_error(error::tarvcore_cast_valueTooBig, truncated_message, dest, value,
                     SourceLocation(truncated_function, source_file_id, 65));
}

void safe_cast_throw_sign_reversal(const std::type_info& dest, unsigned long long value) {
    throw_cast_error(
        error::tarvcore_cast_valueTooBig_signReversal,
        "Unsigned source value of cast does not fit into signed destination type "
        "(sign reversal).  SrcValue: {@srcValue}, DestType: {@destType}",
        dest, value,
        SourceLocation("tarvcore::impl::safe_cast_throw_sign_reversal()", source_file_id, 77));
}

BadDynamicRefCast::~BadDynamicRefCast() noexcept = default;

const char* BadDynamicRefCast::what() const noexcept {
    return "Bad tarvcore::dynamic_reference_cast<> (cast failed)";
}

BadCastNullRef::~BadCastNullRef() noexcept = default;

const char* BadCastNullRef::what() const noexcept {
    return "Bad tarvcore::dynamic_reference_cast<> (NULL source)";
}

void throw_bad_dynamic_ref_cast(const void* source) {
    if (source == nullptr) throw BadCastNullRef();
    throw BadDynamicRefCast();
}

}  // namespace tarvcore::impl
