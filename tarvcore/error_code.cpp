#include "tarvcore/error_code.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/error_code.cpp#1 $");

namespace tarvcore {

void ErrorCode::append_segment(const char* segment, unsigned length) {
    if (segment == nullptr) return;
    std::string text;
    if (!empty()) text.append(text_.as_string_view()).push_back('.');
    text.append(segment, impl::measured_length(segment, length));
    assign(text.data(), text.size());
}

}  // namespace tarvcore
