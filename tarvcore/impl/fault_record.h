// The error records of what ends processes.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/error_info.h"

#include <windows.h>

namespace tarvcore::impl {

// An exception of the system, such as an access violation, of a thread by its number.
TARVCORE_API ErrorInfo::Ptr fault_record(unsigned long thread, const EXCEPTION_POINTERS& exception);

// What made the calling thread call std::terminate, from where the registers are.
ErrorInfo::Ptr termination_record(const CONTEXT& context);

}  // namespace tarvcore::impl
