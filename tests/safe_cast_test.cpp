// Faults to catch: a boundary off by one; the wrong raiser for a fault; unsigned values shown with
// a sign; a cast that passes the wrong class or a null.

#include "tarvcore/safe_cast.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/ref_count.h"

namespace {

using namespace tarvcore;

// The record of a failed cast; null where the value goes through unchanged.
template <class Dest, class Source>
ErrorInfo::Ptr failure(Source value) {
    try {
        EXPECT_EQ(std::to_string(safe_cast<Dest>(value)), std::to_string(value));
        return {};
    } catch (const ErrorException& e) {
        return e.error();
    }
}

// Casts every value of a 16-bit type to a destination, against what the ranges say.
template <class Dest, class Source>
void check_all(Source first, Source last) {
    for (long value = first; value <= last; ++value) {
        const ErrorInfo::Ptr error = failure<Dest>(static_cast<Source>(value));
        const bool fits =
            value >= std::numeric_limits<Dest>::min() && value <= std::numeric_limits<Dest>::max();
        ASSERT_EQ(error.is_null(), fits) << value;
        if (fits) continue;
        const ErrorCode& expected =
            value < 0 && std::is_unsigned_v<Dest> ? error::tarvcore_cast_negativeToUnsigned
            : std::is_unsigned_v<Source> && std::is_signed_v<Dest> && sizeof(Dest) >= sizeof(Source)
                ? error::tarvcore_cast_valueTooBig_signReversal
                : error::tarvcore_cast_valueTooBig;
        ASSERT_EQ(error->code(), expected) << value;
        ASSERT_EQ(error->params().get_value("srcValue", 8), std::to_string(value));
    }
}

TEST(SafeCast, ChecksEverySixteenBitValue) {
    check_all<signed char, short>(-32768, 32767);
    check_all<unsigned char, short>(-32768, 32767);
    check_all<unsigned short, short>(-32768, 32767);
    check_all<signed char, unsigned short>(0, 65535);
    check_all<unsigned char, unsigned short>(0, 65535);
    check_all<short, unsigned short>(0, 65535);
}

TEST(SafeCast, ChecksTheWidestTypes) {
    constexpr long long lowest = std::numeric_limits<long long>::min();
    constexpr unsigned long long highest = std::numeric_limits<unsigned long long>::max();
    EXPECT_TRUE(failure<long long>(lowest).is_null());
    EXPECT_TRUE(failure<unsigned long long>(highest).is_null());
    EXPECT_TRUE(failure<long long>(0xFFFFFFFFu).is_null());
    EXPECT_EQ(failure<unsigned long long>(lowest)->code(), error::tarvcore_cast_negativeToUnsigned);
    EXPECT_EQ(failure<long long>(highest)->code(), error::tarvcore_cast_valueTooBig_signReversal);
    EXPECT_EQ(failure<int>(highest)->code(), error::tarvcore_cast_valueTooBig);
    EXPECT_EQ(failure<int>(lowest)->code(), error::tarvcore_cast_valueTooBig);
    EXPECT_EQ(failure<int>(0x80000000u)->code(), error::tarvcore_cast_valueTooBig_signReversal);
}

TEST(SafeCast, TellsValueTypeAndPlace) {
    const struct {
        void (*raise)();
        const char* message;
        const char* function;
        unsigned line;
    } rows[] = {
        {[] { impl::safe_cast_throw_negative_to_unsigned(typeid(unsigned), -5); },
         "Attempt to cast negative value into unsigned type.  SrcValue: -5, DestType: unsigned int",
         "tarvcore::impl::safe_cast_throw_negative_to_unsigned()", 41},
        {[] { impl::safe_cast_throw_value_truncated(typeid(char), 18446744073709551615u); },
         "Source value of cast does not fit into destination type.  SrcValue: "
         "18446744073709551615, "
         "DestType: char",
         "tarvcore::impl::safe_cast_throw_value_truncated()", 53},
        {[] { impl::safe_cast_throw_value_truncated(typeid(short), -70000LL); },
         "Source value of cast does not fit into destination type.  SrcValue: -70000, DestType: "
         "short",
         "tarvcore::impl::safe_cast_throw_value_truncated()", 65},
        {[] { impl::safe_cast_throw_sign_reversal(typeid(long), 2147483648u); },
         "Unsigned source value of cast does not fit into signed destination type (sign reversal). "
         " "
         "SrcValue: 2147483648, DestType: long",
         "tarvcore::impl::safe_cast_throw_sign_reversal()", 77},
    };
    for (const auto& row : rows) {
        try {
            row.raise();
            ADD_FAILURE() << row.function;
        } catch (const ErrorException& e) {
            EXPECT_EQ(e.error()->expanded_message().as_string(), row.message);
            EXPECT_EQ(e.error()->location().function(), row.function);
            EXPECT_EQ(e.error()->location().file_path(), "//tarvcore/safe_cast.cpp");
            EXPECT_EQ(e.error()->location().line(), row.line);
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
    const auto text_of = [](auto cast) {
        try {
            cast();
        } catch (const std::bad_cast& e) {
            EXPECT_EQ(ErrorInfo::from_exception(e, SourceLocation())->code(),
                      error::exception_badCast);
            return std::string(e.what());
        }
        return std::string();
    };
    EXPECT_EQ(text_of([&] { dynamic_reference_cast<Derived>(other); }),
              "Bad tarvcore::dynamic_reference_cast<> (cast failed)");
    EXPECT_EQ(text_of([&] { dynamic_reference_cast<Derived>(null); }),
              "Bad tarvcore::dynamic_reference_cast<> (NULL source)");
}

}  // namespace
