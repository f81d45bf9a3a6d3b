// What a thread was doing, as parameters of error records.
#pragma once

#include "tarvcore/error_params.h"
#include "tarvcore/impl/stack_walk.h"

namespace tarvcore::impl {

// Of a thread by its number: "registers", "stackTrace", "stackDump" (512 bytes at most),
// "processId", decimal, and "threadId", hexadecimal.
ErrorParams thread_state(unsigned long thread, const CONTEXT& context, const StackAddresses& stack);

}  // namespace tarvcore::impl
