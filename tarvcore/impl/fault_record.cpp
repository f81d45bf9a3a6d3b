#include "tarvcore/impl/fault_record.h"

#include <cxxabi.h>

#include <exception>
#include <string>
#include <typeinfo>

#include "tarvcore/error_code_constants.h"
#include "tarvcore/impl/stream_text.h"
#include "tarvcore/impl/thread_state.h"
#include "tarvcore/impl/type_name.h"
#include "tarvcore/streamers.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/fault_record.cpp#1 $");

// What every message ends with.
#define TARVCORE_THREAD_STATE \
    "\n\nRegisters: \n{@registers}\n\nStack Trace: \n{@stackTrace}\nStack Dump: \n{@stackDump}"

namespace tarvcore::impl {
namespace {

const char* fault_text(DWORD code) {
    switch (code) {
        case EXCEPTION_DATATYPE_MISALIGNMENT:
            return "Datatype misalignment";
        case EXCEPTION_BREAKPOINT:
            return "Breakpoint";
        case EXCEPTION_SINGLE_STEP:
            return "Single step";
        case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
            return "Array bounds exceeded";
        case EXCEPTION_FLT_DENORMAL_OPERAND:
            return "Floating-point denormal operand";
        case EXCEPTION_FLT_DIVIDE_BY_ZERO:
            return "Floating-point division by zero";
        case EXCEPTION_FLT_INEXACT_RESULT:
            return "Floating-point inexact result";
        case EXCEPTION_FLT_INVALID_OPERATION:
            return "Floating-point invalid operation";
        case EXCEPTION_FLT_OVERFLOW:
            return "Floating-point overflow";
        case EXCEPTION_FLT_STACK_CHECK:
            return "Floating-point stack check";
        case EXCEPTION_FLT_UNDERFLOW:
            return "Floating-point underflow";
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
            return "Integer division by zero";
        case EXCEPTION_INT_OVERFLOW:
            return "Integer overflow";
        case EXCEPTION_PRIV_INSTRUCTION:
            return "Privileged instruction";
        case EXCEPTION_IN_PAGE_ERROR:
            return "In-page error";
        case EXCEPTION_ILLEGAL_INSTRUCTION:
            return "Illegal instruction";
        case EXCEPTION_NONCONTINUABLE_EXCEPTION:
            return "Noncontinuable exception";
        case EXCEPTION_STACK_OVERFLOW:
            return "Stack overflow";
        case EXCEPTION_GUARD_PAGE:
            return "Guard page";
        case EXCEPTION_INVALID_HANDLE:
            return "Invalid handle";
        default:
            return nullptr;
    }
}

const char* access_text(ULONG_PTR kind) {
    switch (kind) {
        case 0:
            return "reading";
        case 1:
            return "writing";
        case 8:
            return "executing";
        default:
            return "accessing";
    }
}

std::string pointer_text(const void* address) {
    return stream_text(streamers::Pointer(address));
}

// Any fault with a name.
ErrorInfo::Ptr named_fault(ErrorParams&& thread_state, const char* name, const void* address,
                           const SourceLocation& where) {
    thread_state.add("faultText", name).add("faultAddress", pointer_text(address));
    return ErrorInfo::create(error::exception_fault,
                             "Fault \"{@faultText}\" by thread {@threadId} at address "
                             "{@faultAddress}!" TARVCORE_THREAD_STATE,
                             std::move(thread_state), where);
}

// The record of the exception that is being handled; null where it tells nothing.
ErrorInfo::Ptr current_record() {
    try {
        throw;
    } catch (const std::exception& error) {
        return ErrorInfo::from_exception(error, SourceLocation());
    } catch (...) {
        return {};
    }
}

}  // namespace

ErrorInfo::Ptr fault_record(unsigned long thread, const EXCEPTION_POINTERS& exception) {
    static constexpr LiteralLocation where = TARVCORE_LOCATION("UnhandledExceptionFilter()");
    const EXCEPTION_RECORD& fault = *exception.ExceptionRecord;
    const CONTEXT& context = *exception.ContextRecord;
    ErrorParams params = thread_state(thread, context, walk_frame_pointers(context));
    if (fault.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && fault.NumberParameters >= 2) {
        const auto* const accessed = reinterpret_cast<const void*>(fault.ExceptionInformation[1]);
        params.add("faultAddress", pointer_text(fault.ExceptionAddress))
            .add("accessKind", access_text(fault.ExceptionInformation[0]))
            .add("accessedAddress", pointer_text(accessed));
        return ErrorInfo::create(error::exception_fault_accessViolation,
                                 "Access violation at address {@faultAddress}: {@accessKind} "
                                 "address {@accessedAddress} by thread "
                                 "{@threadId}!" TARVCORE_THREAD_STATE,
                                 std::move(params), where);
    }
    const char* const name = fault_text(fault.ExceptionCode);
    const std::string number = stream_text(streamers::Hex(fault.ExceptionCode, true));
    return named_fault(std::move(params), name != nullptr ? name : number.c_str(),
                       fault.ExceptionAddress, where);
}

ErrorInfo::Ptr termination_record(const CONTEXT& context) {
    static constexpr LiteralLocation where = TARVCORE_LOCATION("std::terminate()");
    ErrorParams params = thread_state(GetCurrentThreadId(), context, walk_own_stack(context));
    const std::type_info* const type = abi::__cxa_current_exception_type();
    if (type == nullptr) {
        return named_fault(std::move(params), "Termination without an exception",
                           reinterpret_cast<const void*>(context.Eip), where);
    }
    params.add("cppObjectType", readable_type_name(*type));
    return ErrorInfo::create(error::exception_fault_cppException,
                             "C++ exception of type '{@cppObjectType}' thrown by thread "
                             "{@threadId}!" TARVCORE_THREAD_STATE,
                             std::move(params), where, current_record());
}

}  // namespace tarvcore::impl
