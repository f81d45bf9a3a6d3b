// Faults to catch: the calls in the wrong order; a failed call's rest shown; no name, no
// terminator.

#include "tarvcore/impl/host_name.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "tarvcore/error_info.h"

namespace {

using namespace tarvcore;
using impl::HostNameCalls;
using impl::read_host_name;

TEST(HostName, IsTheSocketsLibrarysOrElseTheComputersOrElseUnknown) {
    HostNameCalls calls = {[](char* name, int size) {
                               EXPECT_EQ(size, 127);
                               std::memset(name, 'x', static_cast<std::size_t>(size));
                               return 0;
                           },
                           [](char*, unsigned long) {
                               ADD_FAILURE() << "not asked for";
                               return false;
                           },
                           [] { return 111UL; }};
    const auto name = [&calls] {
        char buffer[impl::host_name_capacity] = {};
        read_host_name(buffer, calls);
        return std::string(buffer);
    };
    EXPECT_EQ(name(), std::string(127, 'x'));

    calls.socket_host_name = [](char* rest, int) {
        std::strcpy(rest, "rubbish");
        return -1;
    };
    calls.computer_name = [](char* computer, unsigned long size) {
        EXPECT_EQ(size, 127u);
        std::strcpy(computer, "PC");
        return true;
    };
    EXPECT_EQ(name(), "PC");

    calls.computer_name = [](char*, unsigned long) { return false; };
    errno = 0;
    EXPECT_EQ(name(), "<unknown>");
    EXPECT_EQ(errno, 111);
}

TEST(HostName, RecordsReferToOneMeasuredText) {
    const ErrorInfo::Ptr record = ErrorInfo::create(ErrorCode(), "", SourceLocation());
    EXPECT_TRUE(record->hostname().is_reference());
    EXPECT_EQ(record->hostname().size(), std::strlen(record->hostname().text()));
    EXPECT_NE(record->hostname(), "<unknown>") << "the system knows it";
}

}  // namespace
