// Type names for people.
#pragma once

#include <string>
#include <typeinfo>

namespace tarvcore::impl {

// "unsigned int", "std::runtime_error": the demangled name, or the compiler's own where that fails.
std::string readable_type_name(const std::type_info& type);

}  // namespace tarvcore::impl
