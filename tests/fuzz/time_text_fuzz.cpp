// Texts of instants, durations and date-times: what is read is what its own text says.
#include <cstdlib>
#include <vector>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/simple_date_time.h"
#include "tests/fuzz/targets.h"

namespace tarv_fuzz {
namespace {

using namespace tarvcore;

template <class Time>
ErrorInfo::Ptr read(const std::vector<char>& text, Time* time) {
    if constexpr (std::is_same_v<Time, RelativeTime>) {
        return Time::from_string_nothrow(std::string(text.begin(), text.end()), time);
    } else {
        return Time::from_string_nothrow(text.data(), text.size(), time);
    }
}

// The last day of durations can be written only.
bool has_readable_text(const RelativeTime& time) {
    return std::abs(time.as_nsec() / RelativeTime::days(1).as_nsec()) < 106751;
}
template <class Time>
bool has_readable_text(const Time&) {
    return true;
}

template <class Time>
void check(const std::vector<char>& text) {
    Time time;
    if (const auto error = read(text, &time)) {
        require(time == Time(), "a failure that changes its output");
        return;
    }
    const std::string shown = time.as_string();
    Time again;
    const bool is_read = !read({shown.begin(), shown.end()}, &again);
    require(is_read == has_readable_text(time), "whether a text of a time can be read");
    require(!is_read || again == time, "a text of a time");
}

}  // namespace

void run_time_text(Input input) {
    // In memory that ends where the text does.
    const std::vector<char> text(input.begin(), input.end());
    check<AbsoluteTime>(text);
    check<RelativeTime>(text);
    check<SimpleDateTime>(text);
}

}  // namespace tarv_fuzz
