#include "tarvcore/string_util.h"

#include <algorithm>
#include <cstring>

#include "tarvcore/impl/measured_length.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/string_util.cpp#1 $");

namespace tarvcore {
namespace {

constexpr int case_distance = 'a' - 'A';

// As signed char: that is how the bytes enter differences and hashes.
constexpr int lower(char c) {
    return c >= 'A' && c <= 'Z' ? c + case_distance : c;
}

constexpr int upper(char c) {
    return c >= 'a' && c <= 'z' ? c - case_distance : c;
}

template <int (&fold)(char)>
unsigned folded_hash(const char* text, unsigned length) {
    length = impl::measured_length(text, length);
    unsigned hash = 0;
    for (unsigned i = 0; i < length; ++i)
        hash = hash * 5 + static_cast<unsigned>(fold(text[i]));
    return hash;
}

template <int (&fold)(char)>
void fold_inplace(std::string& text) {
    for (char& c : text)
        c = static_cast<char>(fold(c));
}

template <int (&fold)(char)>
std::string folded_copy(std::string_view text) {
    std::string copy(text);
    fold_inplace<fold>(copy);
    return copy;
}

}  // namespace

int compare_nocase_ascii(const char* a, unsigned a_length, const char* b, unsigned b_length) {
    a_length = impl::measured_length(a, a_length);
    b_length = impl::measured_length(b, b_length);
    const unsigned common = std::min(a_length, b_length);
    for (unsigned i = 0; i < common; ++i) {
        const int difference = lower(a[i]) - lower(b[i]);
        if (difference != 0) return difference;
    }
    return static_cast<int>(a_length - b_length);
}

bool string_equal_nocase_ascii(const char* a, unsigned a_length, const char* b, unsigned b_length) {
    a_length = impl::measured_length(a, a_length);
    b_length = impl::measured_length(b, b_length);
    return a_length == b_length && compare_nocase_ascii(a, a_length, b, b_length) == 0;
}

unsigned string_hash_lowercase_ascii(const char* text, unsigned length) {
    return folded_hash<lower>(text, length);
}

unsigned string_hash_uppercase_ascii(const char* text, unsigned length) {
    return folded_hash<upper>(text, length);
}

void to_lower_ascii_inplace(std::string& text) {
    fold_inplace<lower>(text);
}

void to_upper_ascii_inplace(std::string& text) {
    fold_inplace<upper>(text);
}

std::string to_lower_ascii(std::string_view text) {
    return folded_copy<lower>(text);
}

std::string to_upper_ascii(std::string_view text) {
    return folded_copy<upper>(text);
}

std::string to_lower_ascii(const char* text, unsigned length) {
    return to_lower_ascii(std::string_view(text, impl::measured_length(text, length)));
}

std::string to_upper_ascii(const char* text, unsigned length) {
    return to_upper_ascii(std::string_view(text, impl::measured_length(text, length)));
}

}  // namespace tarvcore
