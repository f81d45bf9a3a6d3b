// Faults to catch: the calls in the wrong order; a failed call's rest shown; no name, no
// terminator.

#include "tarvcore/impl/host_name.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "tarvcore/error_info.h"

namespace {

using namespace tarvcore;
using impl::HostNameCalls;
using impl::read_host_name;

int no_socket_name(char* name, int size) {
    std::strncpy(name, "rubbish", static_cast<std::size_t>(size));
    return -1;
}

TEST(HostName, AsksTheSocketsLibraryFirst) {
    const HostNameCalls calls = {[](char* name, int size) {
                                     EXPECT_EQ(size, 127);
                                     std::memset(name, 'x', static_cast<std::size_t>(size));
                                     return 0;
                                 },
                                 [](char*, unsigned long) {
                                     ADD_FAILURE() << "not asked for";
                                     return false;
                                 },
                                 [] { return 0UL; }};
    char buffer[impl::host_name_capacity] = {};
    read_host_name(buffer, calls);
    EXPECT_EQ(std::strlen(buffer), 127u);
}

TEST(HostName, FallsBackToTheComputerNameAndThenToUnknown) {
    char buffer[impl::host_name_capacity] = {};
    read_host_name(buffer, {no_socket_name,
                            [](char* name, unsigned long size) {
                                EXPECT_EQ(size, 127u);
                                std::strcpy(name, "PC");
                                return true;
                            },
                            [] { return 0UL; }});
    EXPECT_STREQ(buffer, "PC");

    errno = 0;
    read_host_name(
        buffer, {no_socket_name, [](char*, unsigned long) { return false; }, [] { return 111UL; }});
    EXPECT_STREQ(buffer, "<unknown>");
    EXPECT_EQ(errno, 111);
}

TEST(HostName, RecordsReferToOneMeasuredText) {
    const ErrorInfo::Ptr record = ErrorInfo::create(ErrorCode(), "", SourceLocation());
    EXPECT_TRUE(record->hostname().is_reference());
    EXPECT_EQ(record->hostname().size(), std::strlen(record->hostname().text()));
}

}  // namespace
