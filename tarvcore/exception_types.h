// Exceptions of other kinds that error records know by name.
#pragma once

#include <typeinfo>

#include "tarvcore/config.h"

namespace tarvcore {

// Thrown where text (or another value) cannot be converted to a type.  ErrorInfo::from_exception
// names both types in the record's parameters.
class TARVCORE_API BadLexicalCast : public std::bad_cast {
public:
    // References to both are kept.
    BadLexicalCast(const std::type_info& source_type, const std::type_info& target_type) noexcept
        : source_type_(&source_type), target_type_(&target_type) {}
    ~BadLexicalCast() noexcept override;

    const std::type_info& source_type() const noexcept { return *source_type_; }
    const std::type_info& target_type() const noexcept { return *target_type_; }

    const char* what() const noexcept override;

private:
    const std::type_info* source_type_;
    const std::type_info* target_type_;
};

// Thrown where a weak reference should become a strong one and the object is gone.
class TARVCORE_API WeakRefPromoteException : public std::exception {
public:
    WeakRefPromoteException() noexcept = default;
    ~WeakRefPromoteException() noexcept override;

    const char* what() const noexcept override;
};

}  // namespace tarvcore
