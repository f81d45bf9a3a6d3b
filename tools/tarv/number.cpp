#include "tools/tarv/number.h"

#include <charconv>
#include <string>

#include "tarvcore/config.h"
#include "tarvcore/error_composer.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/number.cpp#1 $");

namespace tarv {

using tarvcore::ErrorCode;
using tarvcore::ErrorComposer;

tarvcore::ErrorInfo::Ptr parse_number(std::string_view text, long long* number) {
    const auto location = TARVCORE_LOCATION("tarv::parse_number()");
    const char* end = text.data() + text.size();
    long long value = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (stop != end || error == std::errc::invalid_argument) {
        return ErrorComposer("Not a decimal number: \"{@text}\"")
            .param("text", std::string(text))
            .create(ErrorCode("error.tarv.number", true), location);
    }
    if (error == std::errc::result_out_of_range) {
        return ErrorComposer("Number outside of the range of 64 bits: \"{@text}\"")
            .param("text", std::string(text))
            .create(ErrorCode("error.tarv.number.range", true), location);
    }
    *number = value;
    return {};
}

}  // namespace tarv
