// Values and texts as narrow and wide standard strings.
#pragma once

#include <string>

#include "tarvcore/config.h"

// Narrow strings are UTF-8, wide strings UTF-16, both by the rules of ucsutil.h.
namespace tarvcore {

// Text in the other encoding.  Where it has a bad character, the forms without a replacement (or
// with a replacement of 0) raise "error.tarvcore.string.conversion"; the others put the replacement
// in its place and store the offset of the first one, or -1, in `*error_position`, unless that is
// null.  See utf16_to_utf8 and utf8_to_wstr.  Length 0xFFFFFFFF, and no length: up to the
// terminator, which is not converted.
TARVCORE_API std::string to_string(const wchar_t* text, unsigned length, char replacement,
                                   int* error_position);
TARVCORE_API std::string to_string(const std::wstring& text, char replacement, int* error_position);
TARVCORE_API std::string to_string(const wchar_t* text, unsigned length);
TARVCORE_API std::string to_string(const wchar_t* text);
TARVCORE_API std::string to_string(const std::wstring& text);

// The same in the other direction.
TARVCORE_API std::wstring to_wstring(const char* text, unsigned length, wchar_t replacement,
                                     int* error_position);
TARVCORE_API std::wstring to_wstring(const std::string& text, wchar_t replacement,
                                     int* error_position);
TARVCORE_API std::wstring to_wstring(const char* text, unsigned length);
TARVCORE_API std::wstring to_wstring(const char* text);
TARVCORE_API std::wstring to_wstring(const std::string& text);

// Copies, unchecked.  Length 0xFFFFFFFF: up to the terminator.
TARVCORE_API std::string to_string(const char* text, unsigned length);
TARVCORE_API std::string to_string(const char* text);
TARVCORE_API std::string to_string(const std::string& text);
TARVCORE_API std::wstring to_wstring(const wchar_t* text, unsigned length);
TARVCORE_API std::wstring to_wstring(const wchar_t* text);
TARVCORE_API std::wstring to_wstring(const std::wstring& text);

// "true" or "false".
TARVCORE_API std::string to_string(bool value);
TARVCORE_API std::wstring to_wstring(bool value);
// Any other pointer would be taken for a bool.
std::string to_string(const void*) = delete;
std::wstring to_wstring(const void*) = delete;

// Decimal.  Characters are numbers: to_string('A') is "65".
TARVCORE_API std::string to_string(char value);
TARVCORE_API std::string to_string(unsigned char value);
TARVCORE_API std::string to_string(short value);
TARVCORE_API std::string to_string(unsigned short value);
TARVCORE_API std::string to_string(int value);
TARVCORE_API std::string to_string(unsigned value);
TARVCORE_API std::string to_string(long value);
TARVCORE_API std::string to_string(unsigned long value);
TARVCORE_API std::string to_string(long long value);
TARVCORE_API std::string to_string(unsigned long long value);

// The same as wide text.
TARVCORE_API std::wstring to_wstring(char value);
TARVCORE_API std::wstring to_wstring(unsigned char value);
TARVCORE_API std::wstring to_wstring(short value);
TARVCORE_API std::wstring to_wstring(unsigned short value);
TARVCORE_API std::wstring to_wstring(int value);
TARVCORE_API std::wstring to_wstring(unsigned value);
TARVCORE_API std::wstring to_wstring(long value);
TARVCORE_API std::wstring to_wstring(unsigned long value);
TARVCORE_API std::wstring to_wstring(long long value);
TARVCORE_API std::wstring to_wstring(unsigned long long value);

}  // namespace tarvcore
