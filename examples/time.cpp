// Instants and durations: read, computed with, written.
#include <iostream>

#include "tarvcore/tarvcore.h"

using namespace tarvcore;

int main() {
    const auto start = AbsoluteTime::from_string("2014-07-16T13:23:00Z");
    const auto flight = RelativeTime::from_string("9h 47m 12.5s");
    const AbsoluteTime landing = start + flight;
    std::cout << landing << ", " << landing.as_iso8601_string() << '\n'
              << landing - start << " later\n";

    const AbsoluteTime::Components date = landing.as_components();
    std::cout << "year " << date.year() << ", day of the week " << date.day_of_week() << '\n';

    // The clocks there are two hours ahead.
    const SimpleDateTime local(landing, 120);
    std::cout << local << " is " << local.as_local_time() << " there\n";

    // No deadline is the latest of all, and stays so.
    const AbsoluteTime deadline = AbsoluteTime::infinite;
    std::cout << std::boolalpha << (deadline > landing) << ", " << deadline - flight << '\n';

    AbsoluteTime read = start;
    if (const auto error = AbsoluteTime::from_string_nothrow("16 July 2014", &read)) {
        std::cout << error->code() << "; still " << read << '\n';
    }
}
