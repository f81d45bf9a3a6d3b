// Wrappers that print one value in the library's trace style.
#pragma once

#include <cstring>
#include <cwchar>
#include <iosfwd>

#include "tarvcore/config.h"

// Each wrapper holds what it was given, never a copy of the data behind a pointer, and prints
// itself with `write_trace` or `<<`.  They are made where they are printed:
//
//     os << streamers::Hex(flags, true) << ' ' << streamers::String(name, name_length);
//
// Nothing here raises of its own accord, and nothing depends on a locale.  Hex, Pointer and HexDump
// allocate nothing; a String does only where the stream has a field width.
namespace tarvcore::streamers {

// Base that gives a wrapper its `<<`.
template <class Wrapper>
class Streamable {
    friend std::ostream& operator<<(std::ostream& os, const Wrapper& wrapper) {
        wrapper.write_trace(os);
        return os;
    }
};

// "true" or "false".
class TARVCORE_API Boolean : public Streamable<Boolean> {
public:
    // See the class.
    explicit Boolean(bool value) : value_(value) {}

    void write_trace(std::ostream& os) const;

private:
    bool value_;
};

// "0x" and lower-case digits.  With `pad` true as many digits as the argument's type has, else no
// leading zeros.  A negative argument shows the bits of its own width: Hex(short(-2), false) is
// 0xfffe.
class TARVCORE_API Hex : public Streamable<Hex> {
public:
    // See the class.
    Hex(char value, bool pad) : Hex(static_cast<unsigned char>(value), pad) {}
    Hex(unsigned char value, bool pad) : value_(value), min_digits_(pad ? 2 : 0) {}
    Hex(short value, bool pad) : Hex(static_cast<unsigned short>(value), pad) {}
    Hex(unsigned short value, bool pad) : value_(value), min_digits_(pad ? 4 : 0) {}
    Hex(int value, bool pad) : Hex(static_cast<unsigned long>(value), pad) {}
    Hex(unsigned int value, bool pad) : Hex(static_cast<unsigned long>(value), pad) {}
    Hex(long value, bool pad) : Hex(static_cast<unsigned long>(value), pad) {}
    Hex(unsigned long value, bool pad) : value_(value), min_digits_(pad ? 8 : 0) {}
    Hex(const void* value, bool pad) : Hex(reinterpret_cast<unsigned long>(value), pad) {}
    Hex(long long value, bool pad) : Hex(static_cast<unsigned long long>(value), pad) {}
    Hex(unsigned long long value, bool pad) : value_(value), min_digits_(pad ? 16 : 0) {}

    void write_trace(std::ostream& os) const { write_trace_impl(os, value_, min_digits_); }
    static void write_trace_impl(std::ostream& os, unsigned long long value, unsigned min_digits);

private:
    unsigned long long value_;
    unsigned min_digits_;
};

// "0x" and eight lower-case digits.
class TARVCORE_API Pointer : public Streamable<Pointer> {
public:
    // Any address: nothing is read there.
    explicit Pointer(const void* value) : value_(value) {}

    void write_trace(std::ostream& os) const { write_trace_impl(os, value_); }
    static void write_trace_impl(std::ostream& os, const void* value);

private:
    const void* value_;
};

// UTF-8 text between quote characters, cut at a limit in bytes.  A cut text is followed by "...";
// the cut never splits a UTF-8 sequence.  Quote 0: no quotes.  Nothing in the text is escaped.
class String : public Streamable<String> {
public:
    // The limit where none is given.
    static constexpr unsigned maxlenDefault = 256;

    // Without a length, up to the terminator.
    explicit String(const char* text) : String(text, std::strlen(text)) {}
    String(const char* text, unsigned length) : String(text, length, maxlenDefault, '"') {}
    String(const char* text, unsigned length, unsigned limit, char quote)
        : text_(text), length_(length), limit_(limit), quote_(quote) {}

    void write_trace(std::ostream& os) const { write_string(os, text_, length_, limit_, quote_); }
    // The stream's width and fill apply to the text between the quotes.
    TARVCORE_API static void write_string(std::ostream& os, const char* text, unsigned length,
                                          unsigned limit, char quote);

private:
    const char* text_;
    unsigned length_;
    unsigned limit_;
    char quote_;
};

// UTF-16 text, printed as String prints its UTF-8 form: the limit counts UTF-8 bytes.  What is no
// character is printed as "?", a high surrogate together with the unit behind it.
class WString : public Streamable<WString> {
public:
    // The limit where none is given.
    static constexpr unsigned maxlenDefault = 256;

    // Without a length, and with 0xFFFFFFFF, up to the terminator.
    explicit WString(const wchar_t* text) : WString(text, std::wcslen(text)) {}
    WString(const wchar_t* text, unsigned length) : WString(text, length, maxlenDefault, '"') {}
    WString(const wchar_t* text, unsigned length, unsigned limit, char quote)
        : text_(text), length_(length), limit_(limit), quote_(quote) {}

    void write_trace(std::ostream& os) const { write_string(os, text_, length_, limit_, quote_); }
    TARVCORE_API static void write_string(std::ostream& os, const wchar_t* text, unsigned length,
                                          unsigned limit, char quote);

private:
    const wchar_t* text_;
    unsigned length_;
    unsigned limit_;
    char quote_;
};

// Lines of 16 bytes: prefix, address, the bytes in hexadecimal, the bytes as characters.  Bytes
// from 32 to 127 inclusive stand for themselves (127 too: who reads dumps relies on it), others as
// ".". Without data, nothing is printed.
class TARVCORE_API HexDump : public Streamable<HexDump> {
public:
    // Addresses are those of the data.
    HexDump(const void* data, unsigned size) : HexDump(data, size, data, nullptr) {}
    HexDump(const void* data, unsigned size, const char* prefix)
        : HexDump(data, size, data, prefix) {}
    // `display_address` is printed as the address of the first byte.
    HexDump(const void* data, unsigned size, const void* display_address, const char* prefix)
        : data_(data), size_(size), display_address_(display_address), prefix_(prefix) {}

    void write_trace(std::ostream& os) const;

private:
    const void* data_;
    unsigned size_;
    const void* display_address_;
    const char* prefix_;
};

// Prints a HexDump.  A null prefix is an empty one.
TARVCORE_API void render_hex_dump(std::ostream& os, const void* data, unsigned size,
                                  const void* display_address, const char* prefix);

}  // namespace tarvcore::streamers
