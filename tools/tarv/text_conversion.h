// Text between encodings, in bytes.
#pragma once

#include <string>
#include <string_view>

#include "tarvcore/error_info.h"

namespace tarv {

enum class Encoding { utf8, utf16le, utf32le };

class TextConversion {
public:
    // `replacement` is one unit of `to`, which stands for every bad character; 0: there is none,
    // and bad characters are errors.
    TextConversion(Encoding from, Encoding to, unsigned replacement)
        : from_(from), to_(to), replacement_(replacement) {}

    Encoding from() const { return from_; }
    bool replaces() const { return replacement_ != 0; }

    // Raises what the library raises, and "error.tarv.text.units" for bytes that end inside a unit.
    std::string operator()(std::string_view bytes) const;

private:
    Encoding from_;
    Encoding to_;
    unsigned replacement_;
};

}  // namespace tarv
