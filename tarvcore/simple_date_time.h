// Date-times with a zone offset.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/error_info.h"

namespace tarvcore {

// An instant, and how far the local time of the place where it was written is ahead of UTC, in
// whole minutes from -720 to 720.  It knows no zones and no daylight saving.  An infinite time has
// no offset.
//
// Ordered, compared and hashed by what the local clock showed, not by the instant: the same instant
// with another offset is another value.  This is meant.  All sums wrap, as those of instants do.
// Thread safety: that of an integer.
//
//     SimpleDateTime departure(AbsoluteTime::from_string("2014-07-16T13:23:00Z"), 120);
//     log << departure;                                      // 2014-07-16 13:23:00.0+02:00
//     log << departure.as_local_time();                      // 2014-07-16 15:23:00.0
//     departure = SimpleDateTime::from_string("2014-07-16T13:23:00+02:00", 25);
class TARVCORE_API SimpleDateTime {
public:
    // Each constructor has a `set` of the same meaning.

    // 1970-01-01 00:00:00, offset 0.
    constexpr SimpleDateTime() = default;
    // Offset 0.
    constexpr explicit SimpleDateTime(const AbsoluteTime& utc) : utc_(utc) {}
    // Of an offset beyond 720 minutes whole days are moved onto the instant, so that the local time
    // stays: 780 minutes become -660 and a day.  Raises
    // "error.tarvcore.simpleDateTime.timezoneOffset" where the time is infinite and the offset is
    // not 0.
    SimpleDateTime(const AbsoluteTime& utc, int timezone_offset) { set(utc, timezone_offset); }
    // The offset is truncated to whole minutes; an infinite one is refused like the above.
    SimpleDateTime(const AbsoluteTime& utc, const RelativeTime& timezone_offset) {
        set(utc, timezone_offset);
    }

    // As the constructors.  Where one raises, the object is as before.
    constexpr void set(const AbsoluteTime& utc) { *this = SimpleDateTime(utc); }
    void set(const AbsoluteTime& utc, int timezone_offset);
    void set(const AbsoluteTime& utc, const RelativeTime& timezone_offset);

    // Reads the text of an instant (see AbsoluteTime::from_string_nothrow), which is in UTC, and
    // behind it the offset: Z, z or nothing for 0, or a sign and hh, hhmm or hh:mm.  Hours go up to
    // 99; see above for those beyond 12.  Fails with "error.tarvcore.simpleDateTime.invalidString",
    // or "error.tarvcore.simpleDateTime.timezoneOffset" for an infinite time with an offset; then
    // `*out` stays as it is.  It may be null.
    [[nodiscard]] static ErrorInfo::Ptr from_string_nothrow(const char* text, unsigned int length,
                                                            SimpleDateTime* out);
    static SimpleDateTime from_string(const char* text, unsigned int length);

    constexpr const AbsoluteTime& utc() const { return utc_; }
    // Minutes.
    constexpr int timezone_offset() const { return timezone_offset_; }
    // The same as a duration.
    constexpr RelativeTime timezone_offset_as_relative_time() const {
        return RelativeTime::minutes(timezone_offset_);
    }
    // What the local clock shows, as if it were UTC.
    constexpr AbsoluteTime as_local_time() const {
        return utc_ + timezone_offset_as_relative_time();
    }

    // "2014-07-16 13:23:00.25+02:00": the digits are UTC, the offset says how far local time is
    // from it; for an offset of 0 it is "Z".  "##INFINITE##".
    std::string as_string() const;
    // As `as_string`, with the stream's width, adjustment and fill.
    friend TARVCORE_API std::ostream& operator<<(std::ostream& os, const SimpleDateTime& time);

    constexpr std::uint32_t hash() const { return as_local_time().hash(); }

    friend constexpr bool operator==(const SimpleDateTime& a, const SimpleDateTime& b) {
        return a.as_local_time() == b.as_local_time();
    }
    friend constexpr auto operator<=>(const SimpleDateTime& a, const SimpleDateTime& b) {
        return a.as_local_time() <=> b.as_local_time();
    }

private:
    AbsoluteTime utc_;
    std::int32_t timezone_offset_ = 0;
};

}  // namespace tarvcore

template <>
struct std::hash<tarvcore::SimpleDateTime> {
    std::size_t operator()(const tarvcore::SimpleDateTime& time) const noexcept {
        return time.hash();
    }
};
