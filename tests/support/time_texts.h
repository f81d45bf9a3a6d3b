// What the tests of all readers of times share.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

#include "tarvcore/error_info.h"
#include "tests/support/guarded_memory.h"

namespace tarv_test {

// What a slow reader must come to: a count, or the message up to the text that was read.
struct Outcome {
    std::string fault;
    std::int64_t count = 0;
};

// A slow reader of texts from their begin.  It throws its messages.
class SlowReader {
public:
    // What `Reader(text).read_all()` comes to.
    template <class Reader>
    static Outcome read(std::string_view text) {
        try {
            return {"", Reader(text).read_all()};
        } catch (const std::string& fault) {
            return {fault, 0};
        }
    }

protected:
    explicit SlowReader(std::string_view text) : rest_(text) {}

    bool is_next(std::string_view characters) const {
        return !rest_.empty() && characters.find(rest_[0]) != characters.npos;
    }
    bool is_digit() const { return is_next("0123456789"); }

    std::string_view rest_;
};

// An error's code, message, one of its parameters and place.
inline std::string told(const tarvcore::ErrorInfo& error, const std::string& parameter) {
    return error.code().as_string() + '\n' + error.expanded_message().as_string() + '\n' +
           error.params().get_value(parameter.data(), parameter.size()) + '\n' +
           error.location().function().as_string();
}

// Calls `check` for good texts cut off after every byte, and with every byte at every position;
// each lies right in front of a guard.
template <class Check>
void check_damaged(std::initializer_list<std::string> good_texts, Check check) {
    const GuardedMemory memory(100);
    const auto check_guarded = [&](const std::string& text) {
        char* const begin = memory.before_guard(text.size());
        std::ranges::copy(text, begin);
        check(std::string_view(begin, text.size()));
    };
    for (const std::string& good : good_texts) {
        for (std::size_t position = 0; position <= good.size(); ++position) {
            ASSERT_NO_FATAL_FAILURE(check_guarded(good.substr(0, position)));
            std::string text = good;
            for (int byte = 0; byte < 256 && position != good.size(); ++byte) {
                text[position] = static_cast<char>(byte);
                ASSERT_NO_FATAL_FAILURE(check_guarded(text));
            }
        }
    }
}

}  // namespace tarv_test
