// Faults to catch: a fault under the name of another one; an access of another kind; parameters
// that are read where there are none; a stack that is read past its end.

#include "tarvcore/impl/fault_record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/streamers.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/scoped_calls.h"

namespace {

using namespace tarvcore;

// The record of a fault; names of functions would take long to find.
ErrorInfo::Ptr record_of(EXCEPTION_RECORD fault, CONTEXT context) {
    tarv_test::ScopedCalls<impl::DebugHelpCalls> calls(impl::debug_help_calls);
    calls->load = []() -> const impl::DebugHelp& {
        static constexpr impl::DebugHelp none = {};
        return none;
    };
    EXCEPTION_POINTERS exception = {&fault, &context};
    return impl::fault_record(0x1A, exception);
}

// The first line of what is said of a fault at 0x00401234, and its code.
std::string text_of(DWORD code, const std::vector<ULONG_PTR>& parameters) {
    EXCEPTION_RECORD fault = {};
    fault.ExceptionCode = code;
    fault.ExceptionAddress = reinterpret_cast<void*>(0x401234);
    for (const ULONG_PTR parameter : parameters)
        fault.ExceptionInformation[fault.NumberParameters++] = parameter;
    const ErrorInfo::Ptr error = record_of(fault, {});
    const std::string text = error->expanded_message().as_string();
    return error->code().as_string() + ' ' + text.substr(0, text.find('\n'));
}

TEST(FaultRecord, TellsWhatHappened) {
    const struct {
        DWORD code;
        const char* name;
    } names[] = {
        {0x80000001, "Guard page"},
        {0x80000002, "Datatype misalignment"},
        {0x80000003, "Breakpoint"},
        {0x80000004, "Single step"},
        {0xC0000005, "0xc0000005"},  // without parameters
        {0xC0000006, "In-page error"},
        {0xC0000008, "Invalid handle"},
        {0xC000001D, "Illegal instruction"},
        {0xC0000025, "Noncontinuable exception"},
        {0xC000008C, "Array bounds exceeded"},
        {0xC000008D, "Floating-point denormal operand"},
        {0xC000008E, "Floating-point division by zero"},
        {0xC000008F, "Floating-point inexact result"},
        {0xC0000090, "Floating-point invalid operation"},
        {0xC0000091, "Floating-point overflow"},
        {0xC0000092, "Floating-point stack check"},
        {0xC0000093, "Floating-point underflow"},
        {0xC0000094, "Integer division by zero"},
        {0xC0000095, "Integer overflow"},
        {0xC0000096, "Privileged instruction"},
        {0xC00000FD, "Stack overflow"},
        {0xE1234567, "0xe1234567"},
    };
    for (const auto& [code, name] : names)
        EXPECT_EQ(text_of(code, {}), std::string("error.exception.fault Fault \"") + name +
                                         "\" by thread 0x1a at address 0x00401234!");
    const std::pair<ULONG_PTR, const char*> accesses[] = {
        {0, "reading"}, {1, "writing"}, {8, "executing"}, {7, "accessing"}};
    for (const auto& [kind, name] : accesses)
        EXPECT_EQ(text_of(0xC0000005, {kind, 0x10}),
                  "error.exception.fault.accessViolation Access violation at address 0x00401234: " +
                      std::string(name) + " address 0x00000010 by thread 0x1a!");
}

TEST(FaultRecord, ShowsRegistersAndTheStackAsFarAsItGoes) {
    const tarv_test::GuardedMemory stack(0x300);
    for (const unsigned size : {0u, 5u, 0x200u, 0x300u}) {
        CONTEXT context = {};
        context.Eax = 0x1A;
        context.Esp = reinterpret_cast<std::uintptr_t>(stack.before_guard(size));
        context.EFlags = 0x246;
        const ErrorParams params = record_of({}, context)->params();
        std::ostringstream registers;
        registers << "eax=0x0000001a ebx=0x00000000 ecx=0x00000000 edx=0x00000000\n"
                     "esi=0x00000000 edi=0x00000000 ebp=0x00000000 esp="
                  << streamers::Hex(context.Esp, true) << "\neip=0x00000000 efl=0x00000246";
        EXPECT_EQ(params.get_value("registers"), registers.str());
        std::ostringstream dump;
        dump << streamers::HexDump(stack.before_guard(size), std::min(size, 0x200u),
                                   stack.before_guard(size), nullptr);
        EXPECT_EQ(params.get_value("stackDump"), dump.str());
    }
}

}  // namespace
