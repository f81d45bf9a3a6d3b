// Faults to catch: a path cut at the wrong "#", "/" or "$"; the order of the fields in comparisons.

#include "tarvcore/source_location.h"

#include <gtest/gtest.h>

namespace {

using namespace tarvcore;

TEST(SourceLocation, FindsThePathInAnIdentificationLine) {
    const struct {
        const char* id;
        const char* depot_path;
        const char* file_path;
        const char* reason;
    } rows[] = {
        {"$Id: //dir/sub/file.ext#3 $", "//dir/sub/file.ext#3", "//dir/sub/file.ext", "usual"},
        {"plain", "plain", "plain", "neither slash nor revision"},
        {"x#y/z", "/z", "x#y/z", "the revision mark stands before the path"},
        {"/a#1#2", "/a#1#2", "/a#1", "the last mark counts"},
        {"/a $ $", "/a", "/a $ $", "the tail of blanks and signs"},
        {"$$ $", "$$ $", "$$ $", "nothing but blanks and signs"},
        {"a b$", "a b", "a b$", "no slash: from the beginning"},
        {"#", "#", "#", "an end at the start is no path"},
        {"", "", "", "empty"},
        {nullptr, "", "", "null"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(SourceLocation::depot_path_from_file_id(row.id), row.depot_path) << row.reason;
        EXPECT_EQ(SourceLocation::file_path_from_file_id(row.id), row.file_path) << row.reason;
    }
    EXPECT_EQ(SourceLocation::file_path_from_file_id("/a#1/b#2", 4), "/a");
    EXPECT_EQ(SourceLocation("f()", "$Id: //x/y.cpp#7 $", 1).file_depot_path(), "//x/y.cpp#7");
}

TEST(SourceLocation, OrdersByLineFunctionFile) {
    const SourceLocation ascending[] = {SourceLocation("z", "z", 1), SourceLocation("a", "z", 2),
                                        SourceLocation("b", "a", 2), SourceLocation("b", "b", 2),
                                        SourceLocation("a", "a", 0x80000000)};
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            EXPECT_EQ(ascending[i] < ascending[j], i < j) << i << ' ' << j;
            EXPECT_EQ(ascending[i] == ascending[j], i == j) << i << ' ' << j;
        }
    }
}

TEST(SourceLocation, IsEmptyOnlyWhereKnownToBe) {
    EXPECT_TRUE(SourceLocation().empty());
    SourceLocation location("", "", 5);
    EXPECT_FALSE(location.empty());
    EXPECT_EQ(location.function().size() + location.file_id().size(), 0u);
    EXPECT_TRUE(location.empty());
    EXPECT_FALSE(SourceLocation(SourceString(), "id", 5).empty());

    SourceLocation source("f", "id", 9);
    SourceLocation target(source.transfer());
    EXPECT_TRUE(source.empty());
    EXPECT_EQ(source.line(), 0u);
    EXPECT_EQ(target, SourceLocation("f", "id", 9));
    target.clear();
    EXPECT_EQ(target, SourceLocation());
}

}  // namespace
