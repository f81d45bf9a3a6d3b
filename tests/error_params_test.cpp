// Faults to catch: pairs out of order or twice; placeholders found where there are none or values
// expanded again; a cut inside a character; hash and comparison that disagree with equality.

#include "tarvcore/error_params.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <map>
#include <random>
#include <sstream>
#include <string>

#include "tests/fuzz/targets.h"
#include "tests/support/allocations.h"

namespace {

using namespace tarvcore;

ErrorParams params_of(const std::map<std::string, std::string>& pairs) {
    ErrorParams params;
    for (const auto& [name, value] : pairs) {
        params.add(name.data(), name.size(), value.data(), value.size());
    }
    return params;
}

std::string expand(const ErrorParams& params, std::string_view text, unsigned limit = 0xFFFFFFFF) {
    return params.expanded_message_with_limit(text.data(), text.size(), limit).as_string();
}

TEST(ErrorParams, KeepsPairsInOrderOfNames) {
    ErrorParams params;
    params.add("b", "1")
        .add("a\xFF", 2)
        .add("a", -3)
        .add("ab", true)
        .add("", 18446744073709551615u);
    params.add("a", '\xFB').add("b", SourceString("last"));
    params.add("ac", false).add("ad", static_cast<const char*>(nullptr));
    std::string pairs;
    for (const auto& [name, value] : params)
        pairs += name.as_string() + '=' + value + ' ';
    EXPECT_EQ(pairs, "=18446744073709551615 a=-5 ab=true ac=false ad= a\xFF=2 b=last ");

    EXPECT_EQ(params.count("ab", 2), 1u);
    EXPECT_EQ(params.count("ab", 1), 1u) << "'a', whatever follows";
    EXPECT_EQ(params.count("abc", 3), 0u);
    EXPECT_EQ(&params.get_value("none", 4), &ErrorParams().get_value("x", 1));
    std::string value = "untouched";
    EXPECT_FALSE(params.query_value("none", 4, &value));
    EXPECT_EQ(value, "untouched");
    EXPECT_TRUE(params.query_value("b", 1, nullptr));
    EXPECT_TRUE(params.query_value("b", 1, &value));
    EXPECT_EQ(value, "last");
}

TEST(ErrorParams, OwnsWhatItCopies) {
    char name[] = "name";
    char value[] = "value";
    ErrorParams params;
    params.add(name, 4, value, 5);
    name[0] = value[0] = 'X';
    EXPECT_EQ(params.get_value("name", 4), "value");
    // Parts of the set itself as arguments.
    params.add(params.begin()->name.text(), 2, params.begin()->value.data(), 3);
    EXPECT_EQ(params.get_value("na", 2), "val");
    const std::string_view na = std::string_view("name").substr(0, 2);
    EXPECT_EQ(&params.get_value(na), &params.find(na)->value);
    EXPECT_EQ(params.count(na) + params.count("nam"), 1u);
    EXPECT_TRUE(params.query_value(na, nullptr));
    EXPECT_EQ(params.count(std::string_view()), 0u);
    EXPECT_EQ(ErrorParams().add("v", na).get_value("v"), "na");
    EXPECT_EQ(params.size(), 2u);
    params.add(params);
    EXPECT_EQ(params.size(), 2u);

    ErrorParams taken(params.transfer());
    EXPECT_TRUE(params.empty());
    EXPECT_EQ(taken.size(), 2u);
    EXPECT_THROW(params.add(name, 0x80000000, value, 1), std::runtime_error);
    EXPECT_THROW(params.count(name, 0x80000000), std::runtime_error);
}

TEST(ErrorParams, ExpandsTemplates) {
    const ErrorParams params = params_of({{"type", "int"},
                                          {"value", "-1"},
                                          {"a", "x"},
                                          {"", "empty name"},
                                          {"self", "{@a}"},
                                          {"{@a", "opener in name"},
                                          {"long", "abcdef"},
                                          {"cut", "a\xC3\xA9"}});
    const struct {
        const char* text;
        const char* expanded;
    } rows[] = {
        {"Bad {@type} value '{@value}'", "Bad int value '-1'"},
        {"{@a}{@a}", "xx"},
        {"{@}", "empty name"},
        {"", ""},
        {"{", "{"},
        {"{@", "{@"},
        {"x {@open", "x {@open"},
        {"{@a} {@b", "x {@b"},
        {"{@missing} {@a}", "{@missing} x"},
        {"{@ a} {@A}", "{@ a} {@A}"},
        {"{@self}", "{@a}"},
        {"{@{@a}}", "opener in name}"},
        {"{{@a}}", "{x}"},
        {"}{@a}{", "}x{"},
        {"{}{0}{a}@{a}", "{}{0}{a}@{a}"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(params.expanded_message(row.text).as_string(), row.expanded);
        EXPECT_EQ(params.expanded_message(SourceString(row.text, true)).as_string(), row.expanded);
    }
    EXPECT_EQ(params.expanded_message(nullptr).as_string(), "");
    EXPECT_EQ(expand(params, "{@long}", 3), "abc...");
    EXPECT_EQ(expand(params, "{@long}{@long}", 6), "abcdefabcdef");
    EXPECT_EQ(expand(params, "<{@long}>", 0), "<...>");
    EXPECT_EQ(expand(params, "{@cut}", 2), "a...");
    EXPECT_EQ(expand(params, std::string_view("{@a}\0{@a}", 9)), std::string("x\0x", 3));
    EXPECT_FALSE(params.expanded_message(SourceString("plain", true)).is_reference());
}

TEST(ErrorParams, RefusesMessagesThatNoTextCanHold) {
    const ErrorParams params = params_of({{"", std::string(1 << 26, 'v')}});
    std::string text;
    for (int i = 0; i < 32; ++i)
        text += "{@}";
    EXPECT_THROW(expand(params, text), std::runtime_error);
    for (int i = 0; i < 32; ++i)
        text += "{@}";
    EXPECT_THROW(expand(params, text), std::runtime_error) << "2^32 bytes";
}

// Every way to break a template up, against the fuzzer's expander, which is slow and obvious.
TEST(ErrorParams, ExpandsLikeTheObviousExpander) {
    const std::string values = "\377\3770\377a\377{@b}\377{@a\377" + std::string(2000, 'y');
    const char* const tokens[] = {
        "{", "@", "}", "a", "b", "{@a}", "{@}", "{@", "a long text of 21"};
    std::mt19937 random(1);
    for (int trial = 0; trial < 20'000; ++trial) {
        std::string input(1, trial % 2 == 0 ? '\xFF' : '\3');  // no limit, and one
        for (unsigned parts = random() % 40; parts != 0; --parts)
            input += tokens[random() % std::size(tokens)];
        input += values;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(input.data());
        ASSERT_NO_THROW(tarv_fuzz::run_error_params({bytes, input.size()})) << input;
    }
}

TEST(ErrorParams, ComparesPairByPair) {
    const ErrorParams ascending[] = {params_of({}),
                                     params_of({{"a", "1"}}),
                                     params_of({{"a", "1"}, {"b", ""}}),
                                     params_of({{"a", "1"}, {"b", "\xFF"}}),
                                     params_of({{"a", "2"}}),
                                     params_of({{"b", ""}})};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            EXPECT_EQ(ascending[i].compare(ascending[j]), (i > j) - (i < j));
            EXPECT_EQ(ascending[i] == ascending[j], i == j);
            EXPECT_EQ(ascending[i].hash() == ascending[j].hash(), i == j);
        }
    }
    EXPECT_EQ(params_of({}).hash(), 0u);
    // s("a") = 97, s("\xFF") = -1, each combined with what stands before.
    std::uint32_t hash = 97 + 0x9E3779B9;
    hash ^= 0xFFFFFFFF + 0x9E3779B9 + (hash << 6) + (hash >> 2);
    EXPECT_EQ(params_of({{"a", "\xFF"}}).hash(), hash);
}

TEST(ErrorParams, WritesItsTrace) {
    std::ostringstream os;
    params_of({{"b", std::string(300, 'v')}, {std::string(130, 'n'), "\"quoted\""}})
        .write_trace(os, "; ");
    params_of({}).write_trace(os, "; ");
    EXPECT_EQ(os.str(), "'b' => \"" + std::string(256, 'v') + "...\"; '" + std::string(128, 'n') +
                            "...' => \"\"quoted\"\"");

    std::ostringstream padded;
    padded << std::setw(5);
    params_of({{"a", "1"}, {"b", "2"}}).write_trace(padded, "; ");
    EXPECT_EQ(padded.str(), "'    a' => \"1\"; 'b' => \"2\"");
}

TEST(ErrorParams, PassesATemporaryOn) {
    const std::string value(40, 'v');
    const tarv_test::AllocationWatch watch;
    const ErrorParams params = ErrorParams().add("a", value).add("b", 2).add("c", 1, "3", 1);
    EXPECT_EQ(params.size(), 3u);
    EXPECT_EQ(watch.allocations(), 3) << "the pairs, a long value, and a name that is copied";
}

TEST(ErrorParams, RunsOutOfMemoryCleanly) {
    const std::string name(40, 'n');
    const std::string value(40, 'v');
    const ErrorParams before = params_of({{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}});
    ErrorParams params = before;
    tarv_test::fail_each_allocation(
        [&] { params.add(name.data(), name.size(), value.data(), value.size()); },
        [&] { EXPECT_TRUE(params == before); });
    ErrorParams merged = before;
    tarv_test::fail_each_allocation([&] { merged.add(params); },
                                    [&] { EXPECT_TRUE(merged == before); });
    SourceString expanded("before");
    tarv_test::fail_each_allocation(
        [&] { expanded = params.expanded_message("{@nnn} is longer than it seems {@a}"); },
        [&] { EXPECT_EQ(expanded, "before"); });
}

}  // namespace
