#include "tarvcore/exception_types.h"

#include <new>
#include <stdexcept>
#include <utility>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/type_name.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/exception_types.cpp#1 $");

namespace tarvcore {
namespace {

template <class Exception>
bool is_a(const std::exception& e) {
    return dynamic_cast<const Exception*>(&e) != nullptr;
}

struct KnownType {
    bool (*matches)(const std::exception&);
    const ErrorCode* code;
};

// The first match wins, so that derived classes stand before their bases.
constexpr KnownType known_types[] = {
    {is_a<std::bad_alloc>, &error::exception_badAlloc},
    {is_a<std::bad_cast>, &error::exception_badCast},
    {is_a<std::domain_error>, &error::exception_logicError_domainError},
    {is_a<std::invalid_argument>, &error::exception_logicError_invalidArgument},
    {is_a<std::length_error>, &error::exception_logicError_lengthError},
    {is_a<std::out_of_range>, &error::exception_logicError_outOfRange},
    {is_a<std::logic_error>, &error::exception_logicError},
    {is_a<std::range_error>, &error::exception_runtimeError_rangeError},
    {is_a<std::overflow_error>, &error::exception_runtimeError_overflowError},
    {is_a<std::underflow_error>, &error::exception_runtimeError_underflowError},
    {is_a<std::runtime_error>, &error::exception_runtimeError},
    {is_a<WeakRefPromoteException>, &error::exception_weakRefPromoteException},
};

}  // namespace

BadLexicalCast::~BadLexicalCast() noexcept = default;

const char* BadLexicalCast::what() const noexcept {
    return "bad lexical cast";
}

WeakRefPromoteException::~WeakRefPromoteException() noexcept = default;

const char* WeakRefPromoteException::what() const noexcept {
    return "weak reference to an object that is gone";
}

ErrorInfo::Ptr ErrorInfo::from_exception(const std::exception& e, const SourceLocation& where) {
    if (const auto* own = dynamic_cast<const ErrorException*>(&e)) return own->error();

    ErrorParams params;
    if (const auto* cast = dynamic_cast<const BadLexicalCast*>(&e)) {
        params.add("sourceType", impl::readable_type_name(cast->source_type()))
            .add("targetType", impl::readable_type_name(cast->target_type()));
        return create(error::exception_badCast_badLexicalCast,
                      "Bad lexical cast: Unable to convert value of type '{@sourceType}' to "
                      "'{@targetType}'",
                      std::move(params), where);
    }

    for (const auto& [matches, code] : known_types) {
        if (matches(e)) return create(*code, SourceString(e.what()), where);
    }
    params.add("classname", impl::readable_type_name(typeid(e)));
    return create(error::exception, SourceString(e.what()), std::move(params), where);
}

}  // namespace tarvcore
