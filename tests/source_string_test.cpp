// Faults to catch: literals copied or copies not shared; a length measured twice, wrongly, or never
// stored; leaks of empty copies; an order by signed bytes; equality by pointer only.

#include "tarvcore/source_string.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/support/allocations.h"
#include "tests/support/racers.h"

namespace {

using namespace tarvcore;
using tarv_test::AllocationWatch;

constexpr const char* literal = "literal";

TEST(SourceString, LiteralsAndEmptyCopiesCostNothing) {
    AllocationWatch watch;
    SourceString reference(literal, true);
    SourceString copy(reference);
    const SourceString moved(copy.transfer());
    EXPECT_TRUE(copy.empty());
    EXPECT_EQ(moved.text(), literal);
    EXPECT_EQ(moved.end()[-1], 'l');
    EXPECT_EQ(SourceString(literal, 3, true).as_string_view(), "lit");
    const SourceString empties[] = {SourceString(""), SourceString("abc", 0u),
                                    SourceString::create_copy(""), SourceString("", false)};
    for (const SourceString& empty : empties)
        EXPECT_TRUE(empty.empty() && empty.is_reference());
    EXPECT_EQ(watch.allocations(), 0);
}

TEST(SourceString, AnUnmeasuredEmptyTextIsNotKnownToBeEmpty) {
    const SourceString reference("", true);
    EXPECT_FALSE(reference.empty());
    EXPECT_EQ(reference.size(), 0u);
    EXPECT_TRUE(reference.empty());
}

TEST(SourceString, CopiesShareOneBlock) {
    char buffer[] = "changes";
    AllocationWatch watch;
    {
        SourceString first(buffer);
        buffer[0] = 'X';
        EXPECT_EQ(first.as_string_view(), "changes");
        EXPECT_EQ(first.text()[7], '\0');
        EXPECT_FALSE(first.is_reference());

        SourceString second(first);
        SourceString third;
        third = second;
        first = SourceString();
        EXPECT_EQ(third.text(), second.text());
        EXPECT_EQ(watch.allocations(), 1);

        SourceString taken(std::move(second));
        EXPECT_TRUE(second.empty() && second.is_reference());
        taken = taken.transfer();
        EXPECT_EQ(taken.as_string_view(), "changes") << "a transfer to itself";
    }
    EXPECT_EQ(watch.live(), 0);
}

TEST(SourceString, RefusesExcessiveLengths) {
    for (const bool is_reference : {true, false}) {
        try {
            SourceString(literal, 0x80000000, is_reference);
            FAIL();
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), "tarvcore::SourceString : excessive string length");
        }
    }
    EXPECT_THROW(SourceString(literal, 0xFFFFFFFF), std::runtime_error);
    EXPECT_EQ(SourceString(literal, 0x7FFFFFFE, true).size(), 0x7FFFFFFEu);
}

TEST(SourceString, OrdersByUnsignedBytesThenLength) {
    const char* const ascending[] = {"", "a", "ab", "abc", "b", "b\x7F", "b\x80", "b\xFF"};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            const SourceString a(ascending[i]);
            const SourceString b(ascending[j]);
            SCOPED_TRACE(std::string(ascending[i]) + " / " + ascending[j]);
            EXPECT_EQ(a.compare(b) <=> 0, i <=> j);
            EXPECT_EQ(a.compare(ascending[j]) <=> 0, i <=> j);
            EXPECT_EQ(a == b, i == j);
            EXPECT_EQ(a == ascending[j], i == j);
            EXPECT_EQ(a < b, i < j);
            EXPECT_EQ(std::hash<SourceString>()(a) == std::hash<SourceString>()(b), i == j);
        }
    }
    // Handles on the same characters are equal unread, whatever lengths they state.
    EXPECT_EQ(SourceString(literal, 3, true).compare(SourceString(literal, 5, true)), 0);
    EXPECT_NE(SourceString("lit", 3u).compare(literal), 0);
}

TEST(SourceString, RemembersTheTraceDataItWasMadeFrom) {
    const SourceString original("original");
    const auto data = original.query_trace_data();
    AllocationWatch watch;
    {
        const SourceString derived(data);
        EXPECT_EQ(derived.as_string_view(), "original");
        EXPECT_NE(derived.text(), original.text());
        EXPECT_EQ(derived.query_trace_data().get(), data.get());
        EXPECT_TRUE(SourceString(literal, true).query_trace_data().is_null());
    }
    EXPECT_EQ(watch.live(), 0);
    auto moved = data;
    const auto taken = std::move(moved);
    EXPECT_TRUE(moved.is_null() && moved.owner().is_null()) << "nobody keeps what it pointed to";
    EXPECT_EQ(taken->query_trace_text(), "original");
}

TEST(SourceString, HandlersMayWriteSharedTexts) {
    static const StringTraceHandlers handlers = {
        [](const std::ostream& os) { return os.width() == 0; },
        [](std::ostream& os, const StringTraceData& data) {
            if (data.query_trace_file_offset(0) == 0) return false;
            os << '@' << data.query_trace_file_offset(0);
            return true;
        },
    };
    const SourceString text("text");
    text.query_trace_data()->set_trace_file_offset(0, 42);
    text.query_trace_data()->set_trace_file_offset(StringTraceData::max_trace_sink_count, 43);
    EXPECT_EQ(text.query_trace_data()->query_trace_file_offset(2), 0u);
    std::ostringstream os;
    EXPECT_EQ(set_string_trace_handlers(&handlers), nullptr);
    os.width(1);
    EXPECT_FALSE(StringTraceData::supported_by_stream(os));
    os.width(0);
    EXPECT_TRUE(StringTraceData::supported_by_stream(os));
    os << text << SourceString("other") << SourceString(literal, true);
    EXPECT_EQ(set_string_trace_handlers(nullptr), &handlers);
    EXPECT_FALSE(StringTraceData::supported_by_stream(os));
    os << SourceString("e\0d", 3u);
    EXPECT_EQ(os.str(), std::string("@42otherliterale\0d", 18));
}

TEST(SourceString, ThreadsMayMeasureOneHandle) {
    const std::vector<SourceString> shared(10'000, SourceString(literal, true));
    std::vector<const SourceString*> handles;
    for (const SourceString& handle : shared)
        handles.push_back(&handle);
    const auto measure = [](const SourceString* handle) { EXPECT_EQ(handle->size(), 7u); };
    const auto copy = [](const SourceString* handle) {
        EXPECT_EQ(SourceString(*handle).size(), 7u);
    };
    tarv_test::race<const SourceString*>(std::move(handles), {measure, measure, copy});
}

TEST(SourceString, RunsOutOfMemoryCleanly) {
    SourceString target("before");
    tarv_test::fail_each_allocation([&] { target = SourceString("after the allocation"); },
                                    [&] { EXPECT_EQ(target.as_string_view(), "before"); });
}

}  // namespace
