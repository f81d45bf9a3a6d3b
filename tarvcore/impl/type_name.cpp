#include "tarvcore/impl/type_name.h"

#include <cstdlib>
#include <memory>

#include <cxxabi.h>

#include "tarvcore/config.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/type_name.cpp#1 $");

namespace tarvcore::impl {

std::string readable_type_name(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? name.get() : type.name();
}

}  // namespace tarvcore::impl
