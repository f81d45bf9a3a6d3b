#include "tarvcore/streamers.h"

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>

#include "tarvcore/impl/measured_length.h"
#include "tarvcore/impl/unicode_codec.h"
#include "tarvcore/impl/unicode_kernels.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/streamers.cpp#1 $");

namespace tarvcore::streamers {
namespace {

constexpr char digits[] = "0123456789abcdef";

}  // namespace

void Boolean::write_trace(std::ostream& os) const {
    value_ ? os.write("true", 4) : os.write("false", 5);
}

void Hex::write_trace_impl(std::ostream& os, unsigned long long value, unsigned min_digits) {
    constexpr unsigned capacity = 2 + 2 * sizeof value;
    char buffer[capacity];
    char* const end = buffer + capacity;
    char* begin = end;
    do {
        *--begin = digits[value & 0xF];
        value >>= 4;
    } while (value != 0);
    while (begin > buffer + 2 && end - begin < static_cast<std::ptrdiff_t>(min_digits)) {
        *--begin = '0';
    }

    // Only a caller of this very function can want more digits than the widest number has.
    if (min_digits > capacity - 2) {
        os.write("0x", 2);
        for (unsigned i = capacity - 2; i < min_digits; ++i)
            os.put('0');
    } else {
        *--begin = 'x';
        *--begin = '0';
    }
    os.write(begin, end - begin);
}

void Pointer::write_trace_impl(std::ostream& os, const void* value) {
    Hex::write_trace_impl(os, reinterpret_cast<std::uintptr_t>(value), 8);
}

void String::write_string(std::ostream& os, const char* text, unsigned length, unsigned limit,
                          char quote) {
    constexpr char ellipsis[] = "...";
    const unsigned shown = impl::utf8_prefix_length(text, length, limit);

    if (quote != 0) os.put(quote);
    if (os.width() != 0) {
        std::string item(text, shown);
        if (shown != length) item += ellipsis;
        os << item;
    } else {
        os.write(text, static_cast<std::streamsize>(shown));
        if (shown != length) os.write(ellipsis, sizeof ellipsis - 1);
    }
    if (quote != 0) os.put(quote);
}

void WString::write_string(std::ostream& os, const wchar_t* text, unsigned length, unsigned limit,
                           char quote) {
    length = impl::measured_length(text, length);
    const std::string utf8 = impl::utf16_to_utf8_replacing(text, length, '?', limit);
    String::write_string(os, utf8.data(), utf8.size(), limit, quote);
}

void HexDump::write_trace(std::ostream& os) const {
    render_hex_dump(os, data_, size_, display_address_, prefix_);
}

void render_hex_dump(std::ostream& os, const void* data, unsigned size, const void* display_address,
                     const char* prefix) {
    if (data == nullptr) return;
    constexpr unsigned bytes_per_line = 16;
    const auto* bytes = static_cast<const unsigned char*>(data);
    const std::streamsize prefix_length =
        prefix ? static_cast<std::streamsize>(std::strlen(prefix)) : 0;
    auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(display_address));

    while (size != 0) {
        const unsigned count = std::min(size, bytes_per_line);
        char line[8 + 2 + 3 * bytes_per_line + 2 + bytes_per_line + 1];
        char* out = line;
        for (int shift = 28; shift >= 0; shift -= 4)
            *out++ = digits[(address >> shift) & 0xF];
        *out++ = ':';
        *out++ = ' ';
        for (unsigned i = 0; i < bytes_per_line; ++i) {
            *out++ = i < count ? digits[bytes[i] >> 4] : ' ';
            *out++ = i < count ? digits[bytes[i] & 0xF] : ' ';
            *out++ = ' ';
        }
        *out++ = ':';
        *out++ = ' ';
        for (unsigned i = 0; i < bytes_per_line; ++i) {
            const bool printable = i < count && bytes[i] >= 32 && bytes[i] <= 127;
            *out++ = i >= count ? ' ' : printable ? static_cast<char>(bytes[i]) : '.';
        }
        *out++ = '\n';

        if (prefix_length != 0) os.write(prefix, prefix_length);
        os.write(line, out - line);
        bytes += count;
        size -= count;
        address += count;
    }
}

}  // namespace tarvcore::streamers
