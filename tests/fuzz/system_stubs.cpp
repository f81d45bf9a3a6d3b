// What the portable files need from those that are not: no target gets there, but to the host name.
#include <cstdlib>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/host_name.h"

namespace tarvcore {

constinit const AbsoluteTime AbsoluteTime::infinite = AbsoluteTime::from_nsec(TIMEVALUE_INFINITE);

ErrorInfo::Ptr ErrorInfo::from_errno(const SourceLocation&, int) {
    std::abort();
}

ErrorInfo::Ptr ErrorInfo::from_errno(const SourceLocation&, Ptr, int) {
    std::abort();
}

ErrorInfo::Ptr ErrorInfo::from_winerror(const SourceLocation&, unsigned long, bool) {
    std::abort();
}

ErrorInfo::Ptr ErrorInfo::from_winerror(const SourceLocation&, Ptr, unsigned long, bool) {
    std::abort();
}

const SourceString& impl::process_host_name() {
    static const SourceString name("fuzz");
    return name;
}

}  // namespace tarvcore
