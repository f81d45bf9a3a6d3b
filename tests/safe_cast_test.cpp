// Faults to catch: a boundary off by one; the wrong raiser for a fault; unsigned values shown with
// a sign; a cast that passes the wrong class or a null.

#include "tarvcore/safe_cast.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/ref_count.h"

namespace {

using namespace tarvcore;

// Casts a value, against what the ranges say.
template <class Dest, class Source>
void check(Source value) {
    SCOPED_TRACE(value);
    try {
        EXPECT_TRUE(std::cmp_equal(safe_cast<Dest>(value), value));
        EXPECT_TRUE(std::in_range<Dest>(value));
    } catch (const ErrorException& e) {
        EXPECT_FALSE(std::in_range<Dest>(value));
        const ErrorCode& expected =
            value < 0 && std::is_unsigned_v<Dest> ? error::tarvcore_cast_negativeToUnsigned
            : std::is_unsigned_v<Source> && std::is_signed_v<Dest> && sizeof(Dest) >= sizeof(Source)
                ? error::tarvcore_cast_valueTooBig_signReversal
                : error::tarvcore_cast_valueTooBig;
        EXPECT_EQ(e.error()->code(), expected);
        EXPECT_EQ(e.error()->params().get_value("srcValue", 8), std::to_string(value));
    }
}

TEST(SafeCast, ChecksEverySixteenBitValue) {
    for (int value = -32768; value < 32768; ++value) {
        const auto with_sign = static_cast<short>(value);
        check<signed char>(with_sign);
        check<unsigned char>(with_sign);
        check<unsigned short>(with_sign);
        const auto without = static_cast<unsigned short>(value);
        check<signed char>(without);
        check<unsigned char>(without);
        check<short>(without);
    }
}

TEST(SafeCast, ChecksTheWidestTypes) {
    constexpr long long lowest = std::numeric_limits<long long>::min();
    constexpr unsigned long long highest = std::numeric_limits<unsigned long long>::max();
    check<long long>(lowest);
    check<unsigned long long>(lowest);
    check<int>(lowest);
    check<unsigned long long>(highest);
    check<long long>(highest);
    check<int>(highest);
    check<long long>(0xFFFFFFFFu);
    check<int>(0x80000000u);
}

TEST(SafeCast, TellsValueTypeAndPlace) {
    const struct {
        void (*raise)();
        std::string message;
        std::string function;
        unsigned line;
    } rows[] = {
        {[] { impl::safe_cast_throw_negative_to_unsigned(typeid(unsigned), -5); },
         "Attempt to cast negative value into unsigned type.  SrcValue: -5, DestType: unsigned int",
         "negative_to_unsigned", 41},
        {[] { impl::safe_cast_throw_value_truncated(typeid(char), 18446744073709551615u); },
         "Source value of cast does not fit into destination type.  "
         "SrcValue: 18446744073709551615, DestType: char",
         "value_truncated", 53},
        {[] { impl::safe_cast_throw_value_truncated(typeid(short), -70000LL); },
         "Source value of cast does not fit into destination type.  "
         "SrcValue: -70000, DestType: short",
         "value_truncated", 65},
        {[] { impl::safe_cast_throw_sign_reversal(typeid(long), 2147483648u); },
         "Unsigned source value of cast does not fit into signed destination type (sign reversal). "
         " SrcValue: 2147483648, DestType: long",
         "sign_reversal", 77},
    };
    for (const auto& row : rows) {
        try {
            row.raise();
            ADD_FAILURE() << row.function;
        } catch (const ErrorException& e) {
            const SourceLocation& place = e.error()->location();
            EXPECT_EQ(e.error()->expanded_message().as_string(), row.message);
            EXPECT_EQ(place.function().as_string(),
                      "tarvcore::impl::safe_cast_throw_" + row.function + "()");
            EXPECT_EQ(place.file_path(), "//tarvcore/safe_cast.cpp");
            EXPECT_EQ(place.line(), row.line);
        }
    }
}

struct Base {
    virtual ~Base() = default;
};
struct Derived : Base {};

TEST(DynamicReferenceCast, PassesTheRightClassOnly) {
    const auto derived = std::make_shared<Derived>();
    const std::shared_ptr<Base> base = derived;
    EXPECT_EQ(&dynamic_reference_cast<Derived>(*base), derived.get());
    EXPECT_EQ(&dynamic_reference_cast<Derived>(base), derived.get());
    EXPECT_EQ(&dynamic_reference_cast<const Derived>(static_cast<const Base*>(derived.get())),
              derived.get());

    Base other;
    const std::shared_ptr<Base> null;
    const auto text_of = [](auto cast) -> std::string {
        try {
            cast();
            return "";
        } catch (const std::bad_cast& e) {
            EXPECT_TRUE(
                ErrorInfo::from_exception(e, SourceLocation())->matches(error::exception_badCast));
            return e.what();
        }
    };
    EXPECT_EQ(text_of([&] { dynamic_reference_cast<Derived>(other); }),
              "Bad tarvcore::dynamic_reference_cast<> (cast failed)");
    EXPECT_EQ(text_of([&] { dynamic_reference_cast<Derived>(null); }),
              "Bad tarvcore::dynamic_reference_cast<> (NULL source)");
}

}  // namespace
