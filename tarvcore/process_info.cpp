#include "tarvcore/process_info.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "tarvcore/error_exception.h"
#include "tarvcore/impl/environment.h"
#include "tarvcore/impl/measured_length.h"
#include "tarvcore/to_string.h"
#include "tarvcore/ucsutil.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/process_info.cpp#1 $");

namespace tarvcore {
namespace {

constexpr impl::EnvironmentCalls system_calls = {
    [](const wchar_t* name, wchar_t* buffer, unsigned long size, unsigned long* error) {
        // The call leaves what it was where the value is empty.
        SetLastError(ERROR_SUCCESS);
        const unsigned long length = GetEnvironmentVariableW(name, buffer, size);
        *error = length == 0 ? GetLastError() : ERROR_SUCCESS;
        return length;
    },
};

// A name in UTF-16; short ones take no allocation.
class WideName {
public:
    WideName(const char* name, unsigned length) {
        length = impl::measured_length(name, length);
        if (length < std::size(short_)) {
            short_[utf8_to_wstr(name, length, short_, length, 0, nullptr)] = L'\0';
        } else {
            long_ = to_wstring(name, length);
        }
        // Such a byte stands for nothing but this character.
        if (std::find(name, name + length, '\0') != name + length) impl::raise_embedded_nul_error();
    }

    const wchar_t* c_str() const { return long_.empty() ? short_ : long_.c_str(); }

private:
    wchar_t short_[64];
    std::wstring long_;
};

}  // namespace

std::string impl::environment_variable(const EnvironmentCalls& calls, const char* name,
                                       unsigned length, bool* found) {
    const WideName wide_name(name, length);
    wchar_t first_buffer[2048];
    std::vector<wchar_t> larger_buffer;
    wchar_t* buffer = first_buffer;
    unsigned long size = std::size(first_buffer);
    for (;;) {
        unsigned long error = 0;
        const unsigned long result = calls.get(wide_name.c_str(), buffer, size, &error);
        if (result == 0 && error != ERROR_SUCCESS && error != ERROR_ENVVAR_NOT_FOUND) {
            throw_winerror(TARVCORE_LOCATION("tarvcore::get_environment_variable()"), error, true);
        }
        if (result < size) {
            std::string value = to_string(buffer, result);
            if (found != nullptr) *found = result != 0 || error == ERROR_SUCCESS;
            return value;
        }
        // What is needed, unless the variable grows in between.
        larger_buffer.resize(result + 1);
        buffer = larger_buffer.data();
        size = result + 1;
    }
}

std::string get_environment_variable(const char* name, unsigned int length, bool* found) {
    return impl::environment_variable(system_calls, name, length, found);
}

}  // namespace tarvcore
