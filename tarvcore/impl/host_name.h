// The name of this host, as error records show it.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/source_string.h"

namespace tarvcore::impl {

constexpr unsigned host_name_capacity = 128;

// The system calls behind the host name; tests inject their own.
struct HostNameCalls {
    // 0 on success, like gethostname; before the sockets library is started it fails.
    int (*socket_host_name)(char* name, int size);
    // Whether the name was stored, like GetComputerNameA.
    bool (*computer_name)(char* name, unsigned long size);
    unsigned long (*last_error)();
};

// Fills the buffer, zeroed before, with the sockets library's name of this host, else with the
// computer name, else with "<unknown>"; the last sets errno to what `last_error` answers.
TARVCORE_API void read_host_name(char (&buffer)[host_name_capacity], const HostNameCalls& calls);

// The name that all records of this process share: read once, while the library is loaded.
const SourceString& process_host_name();

}  // namespace tarvcore::impl
