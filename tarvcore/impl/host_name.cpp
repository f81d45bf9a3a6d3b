#include "tarvcore/impl/host_name.h"

#include <cerrno>
#include <cstring>

#include <winsock2.h>
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/host_name.cpp#1 $");

namespace tarvcore::impl {
namespace {

constexpr HostNameCalls system_calls = {
    [](char* name, int size) { return gethostname(name, size); },
    [](char* name, unsigned long size) { return GetComputerNameA(name, &size) != 0; },
    [] { return GetLastError(); },
};

class HostName {
public:
    HostName() {
        read_host_name(buffer_, system_calls);
        text_ = SourceString(buffer_, std::strlen(buffer_), true);
    }

    const SourceString& text() const { return text_; }

private:
    char buffer_[host_name_capacity] = {};
    SourceString text_;
};

// Reads the name at load, unless a record made by another initialiser has done so before.
[[maybe_unused]] const SourceString& read_at_load = process_host_name();

}  // namespace

void read_host_name(char (&buffer)[host_name_capacity], const HostNameCalls& calls) {
    constexpr unsigned usable = host_name_capacity - 1;  // the terminator is never overwritten
    if (calls.socket_host_name(buffer, usable) == 0) return;
    if (calls.computer_name(buffer, usable)) return;
    errno = static_cast<int>(calls.last_error());
    std::strcpy(buffer, "<unknown>");
}

const SourceString& process_host_name() {
    static const HostName host;
    return host.text();
}

}  // namespace tarvcore::impl
