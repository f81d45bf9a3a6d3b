// The value of operations that have none.
#pragma once

#include "tarvcore/config.h"

namespace tarvcore {
namespace impl {

// Stands for "no value" wherever templates over a value's type need an object for `void`.  There is
// one.
class TARVCORE_API Nil {
public:
    static const Nil instance;

private:
    constexpr Nil() = default;
};

// What an operation of that type answers where nobody gives a value.
template <class T>
struct ValueDefault;
template <>
struct ValueDefault<void> {
    static const Nil& get() { return Nil::instance; }
};

// The types of the arguments that carry a value of type T: none for void.
template <class... Value>
struct Values {};
template <class T>
struct ValuesOfType {
    using Type = Values<T>;
};
template <>
struct ValuesOfType<void> {
    using Type = Values<>;
};
template <class T>
using ValuesOf = typename ValuesOfType<T>::Type;

}  // namespace impl

// What stands for the value of an operation that has none.
inline const impl::Nil& nil = impl::Nil::instance;

}  // namespace tarvcore
