#include "tarvcore/error_code_constants.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/error_code_constants.cpp#1 $");

namespace tarvcore::error {

// The library, and text.
constinit const ErrorCode tarvcore("error.tarvcore", true);
constinit const ErrorCode tarvcore_string("error.tarvcore.string", true);
constinit const ErrorCode tarvcore_string_embeddedNul("error.tarvcore.string.embeddedNul", true);
constinit const ErrorCode tarvcore_string_utf8("error.tarvcore.string.utf8", true);
constinit const ErrorCode tarvcore_string_utf8_invalid("error.tarvcore.string.utf8.invalid", true);
constinit const ErrorCode tarvcore_string_utf8_overlong("error.tarvcore.string.utf8.overlong",
                                                        true);
constinit const ErrorCode tarvcore_string_utf8_partial("error.tarvcore.string.utf8.partial", true);
constinit const ErrorCode tarvcore_string_conversion("error.tarvcore.string.conversion", true);
constinit const ErrorCode tarvcore_string_extraction("error.tarvcore.string.extraction", true);

// Identifiers.
constinit const ErrorCode tarvcore_uuid("error.tarvcore.uuid", true);
constinit const ErrorCode tarvcore_uuid_parse("error.tarvcore.uuid.parse", true);

// Hardware.
constinit const ErrorCode tarvcore_hardware("error.tarvcore.hardware", true);
constinit const ErrorCode tarvcore_hardware_timeError("error.tarvcore.hardware.timeError", true);
constinit const ErrorCode tarvcore_hardware_priorityClass("error.tarvcore.hardware.priorityClass",
                                                          true);
constinit const ErrorCode tarvcore_hardware_threadPriority("error.tarvcore.hardware.threadPriority",
                                                           true);
constinit const ErrorCode tarvcore_hardware_threadAffinity("error.tarvcore.hardware.threadAffinity",
                                                           true);
constinit const ErrorCode tarvcore_hardware_invalidCpuId("error.tarvcore.hardware.invalidCpuId",
                                                         true);

// Casts.
constinit const ErrorCode tarvcore_cast("error.tarvcore.cast", true);
constinit const ErrorCode tarvcore_cast_negativeToUnsigned("error.tarvcore.cast.negativeToUnsigned",
                                                           true);
constinit const ErrorCode tarvcore_cast_valueTooBig("error.tarvcore.cast.valueTooBig", true);
constinit const ErrorCode tarvcore_cast_valueTooBig_signReversal(
    "error.tarvcore.cast.valueTooBig.signReversal", true);

// Futures, and clean-up at exit.
constinit const ErrorCode tarvcore_future("error.tarvcore.future", true);
constinit const ErrorCode tarvcore_future_nullError("error.tarvcore.future.nullError", true);
constinit const ErrorCode tarvcore_objectManager("error.tarvcore.objectManager", true);
constinit const ErrorCode tarvcore_objectManager_closed("error.tarvcore.objectManager.closed",
                                                        true);

// Binary-to-text transforms.
constinit const ErrorCode tarvcore_transforms("error.tarvcore.transforms", true);
constinit const ErrorCode tarvcore_transforms_base64("error.tarvcore.transforms.base64", true);
constinit const ErrorCode tarvcore_transforms_base64_invalid(
    "error.tarvcore.transforms.base64.invalid", true);
constinit const ErrorCode tarvcore_transforms_base64_truncated(
    "error.tarvcore.transforms.base64.truncated", true);
constinit const ErrorCode tarvcore_transforms_base64_padding(
    "error.tarvcore.transforms.base64.padding", true);
constinit const ErrorCode tarvcore_transforms_base32("error.tarvcore.transforms.base32", true);
constinit const ErrorCode tarvcore_transforms_base32_invalid(
    "error.tarvcore.transforms.base32.invalid", true);
constinit const ErrorCode tarvcore_transforms_base32_truncated(
    "error.tarvcore.transforms.base32.truncated", true);
constinit const ErrorCode tarvcore_transforms_base32_padding(
    "error.tarvcore.transforms.base32.padding", true);
constinit const ErrorCode tarvcore_transforms_hex("error.tarvcore.transforms.hex", true);
constinit const ErrorCode tarvcore_transforms_hex_invalid("error.tarvcore.transforms.hex.invalid",
                                                          true);
constinit const ErrorCode tarvcore_transforms_hex_truncated(
    "error.tarvcore.transforms.hex.truncated", true);

// Time.
constinit const ErrorCode tarvcore_absoluteTime("error.tarvcore.absoluteTime", true);
constinit const ErrorCode tarvcore_absoluteTime_range("error.tarvcore.absoluteTime.range", true);
constinit const ErrorCode tarvcore_absoluteTime_invalidUtcString(
    "error.tarvcore.absoluteTime.invalidUtcString", true);
constinit const ErrorCode tarvcore_relativeTime("error.tarvcore.relativeTime", true);
constinit const ErrorCode tarvcore_relativeTime_invalidTimeString(
    "error.tarvcore.relativeTime.invalidTimeString", true);
constinit const ErrorCode tarvcore_simpleDateTime("error.tarvcore.simpleDateTime", true);
constinit const ErrorCode tarvcore_simpleDateTime_invalidString(
    "error.tarvcore.simpleDateTime.invalidString", true);
constinit const ErrorCode tarvcore_simpleDateTime_timezoneOffset(
    "error.tarvcore.simpleDateTime.timezoneOffset", true);

// Results and tasks.
constinit const ErrorCode tarvcore_result("error.tarvcore.result", true);
constinit const ErrorCode tarvcore_result_notWaitable("error.tarvcore.result.notWaitable", true);
constinit const ErrorCode tarvcore_result_badParameter("error.tarvcore.result.badParameter", true);
constinit const ErrorCode tarvcore_result_notSignaled("error.tarvcore.result.notSignaled", true);
constinit const ErrorCode tarvcore_result_redundantSignal("error.tarvcore.result.redundantSignal",
                                                          true);
constinit const ErrorCode tarvcore_result_invalidAsyncSignalScope(
    "error.tarvcore.result.invalidAsyncSignalScope", true);
constinit const ErrorCode tarvcore_result_cancelled("error.tarvcore.result.cancelled", true);
constinit const ErrorCode tarvcore_result_cancelled_innerOperation(
    "error.tarvcore.result.cancelled.innerOperation", true);
constinit const ErrorCode tarvcore_result_invalidAsynchrony(
    "error.tarvcore.result.invalidAsynchrony", true);
constinit const ErrorCode tarvcore_task("error.tarvcore.task", true);
constinit const ErrorCode tarvcore_task_notExecuted("error.tarvcore.task.notExecuted", true);
constinit const ErrorCode tarvcore_task_redundantExecution("error.tarvcore.task.redundantExecution",
                                                           true);

// Exceptions.
constinit const ErrorCode exception("error.exception", true);
constinit const ErrorCode exception_badAlloc("error.exception.bad_alloc", true);
constinit const ErrorCode exception_badCast("error.exception.bad_cast", true);
constinit const ErrorCode exception_badCast_badLexicalCast(
    "error.exception.bad_cast.bad_lexical_cast", true);
constinit const ErrorCode exception_logicError("error.exception.logic_error", true);
constinit const ErrorCode exception_logicError_domainError(
    "error.exception.logic_error.domain_error", true);
constinit const ErrorCode exception_logicError_invalidArgument(
    "error.exception.logic_error.invalid_argument", true);
constinit const ErrorCode exception_logicError_lengthError(
    "error.exception.logic_error.length_error", true);
constinit const ErrorCode exception_logicError_outOfRange(
    "error.exception.logic_error.out_of_range", true);
constinit const ErrorCode exception_runtimeError("error.exception.runtime_error", true);
constinit const ErrorCode exception_runtimeError_rangeError(
    "error.exception.runtime_error.range_error", true);
constinit const ErrorCode exception_runtimeError_overflowError(
    "error.exception.runtime_error.overflow_error", true);
constinit const ErrorCode exception_runtimeError_underflowError(
    "error.exception.runtime_error.underflow_error", true);
constinit const ErrorCode exception_weakRefPromoteException(
    "error.exception.weakRefPromoteException", true);
constinit const ErrorCode exception_unknown("error.exception.unknown", true);
constinit const ErrorCode exception_fault("error.exception.fault", true);
constinit const ErrorCode exception_fault_accessViolation("error.exception.fault.accessViolation",
                                                          true);
constinit const ErrorCode exception_fault_cppException("error.exception.fault.cppException", true);
constinit const ErrorCode exception_assert("error.exception.assert", true);

// Operating system: one code per errno name, and the family of Windows error numbers.
constinit const ErrorCode errno_("error.errno", true);
constinit const ErrorCode errno_EPERM("error.errno.EPERM", true);
constinit const ErrorCode errno_ENOENT("error.errno.ENOENT", true);
constinit const ErrorCode errno_ESRCH("error.errno.ESRCH", true);
constinit const ErrorCode errno_EINTR("error.errno.EINTR", true);
constinit const ErrorCode errno_EIO("error.errno.EIO", true);
constinit const ErrorCode errno_ENXIO("error.errno.ENXIO", true);
constinit const ErrorCode errno_E2BIG("error.errno.E2BIG", true);
constinit const ErrorCode errno_ENOEXEC("error.errno.ENOEXEC", true);
constinit const ErrorCode errno_EBADF("error.errno.EBADF", true);
constinit const ErrorCode errno_ECHILD("error.errno.ECHILD", true);
constinit const ErrorCode errno_EAGAIN("error.errno.EAGAIN", true);
constinit const ErrorCode errno_ENOMEM("error.errno.ENOMEM", true);
constinit const ErrorCode errno_EACCES("error.errno.EACCES", true);
constinit const ErrorCode errno_EFAULT("error.errno.EFAULT", true);
constinit const ErrorCode errno_EBUSY("error.errno.EBUSY", true);
constinit const ErrorCode errno_EEXIST("error.errno.EEXIST", true);
constinit const ErrorCode errno_EXDEV("error.errno.EXDEV", true);
constinit const ErrorCode errno_ENODEV("error.errno.ENODEV", true);
constinit const ErrorCode errno_ENOTDIR("error.errno.ENOTDIR", true);
constinit const ErrorCode errno_EISDIR("error.errno.EISDIR", true);
constinit const ErrorCode errno_EINVAL("error.errno.EINVAL", true);
constinit const ErrorCode errno_ENFILE("error.errno.ENFILE", true);
constinit const ErrorCode errno_EMFILE("error.errno.EMFILE", true);
constinit const ErrorCode errno_ENOTTY("error.errno.ENOTTY", true);
constinit const ErrorCode errno_EFBIG("error.errno.EFBIG", true);
constinit const ErrorCode errno_ENOSPC("error.errno.ENOSPC", true);
constinit const ErrorCode errno_ESPIPE("error.errno.ESPIPE", true);
constinit const ErrorCode errno_EROFS("error.errno.EROFS", true);
constinit const ErrorCode errno_EMLINK("error.errno.EMLINK", true);
constinit const ErrorCode errno_EPIPE("error.errno.EPIPE", true);
constinit const ErrorCode errno_EDOM("error.errno.EDOM", true);
constinit const ErrorCode errno_ERANGE("error.errno.ERANGE", true);
constinit const ErrorCode errno_EDEADLK("error.errno.EDEADLK", true);
constinit const ErrorCode errno_ENAMETOOLONG("error.errno.ENAMETOOLONG", true);
constinit const ErrorCode errno_ENOLCK("error.errno.ENOLCK", true);
constinit const ErrorCode errno_ENOSYS("error.errno.ENOSYS", true);
constinit const ErrorCode errno_ENOTEMPTY("error.errno.ENOTEMPTY", true);
constinit const ErrorCode errno_EILSEQ("error.errno.EILSEQ", true);
constinit const ErrorCode errno_ETIME("error.errno.ETIME", true);
constinit const ErrorCode errno_EINPROGRESS("error.errno.EINPROGRESS", true);
constinit const ErrorCode errno_EALREADY("error.errno.EALREADY", true);
constinit const ErrorCode errno_ENOTSOCK("error.errno.ENOTSOCK", true);
constinit const ErrorCode errno_EDESTADDRREQ("error.errno.EDESTADDRREQ", true);
constinit const ErrorCode errno_EMSGSIZE("error.errno.EMSGSIZE", true);
constinit const ErrorCode errno_EPROTOTYPE("error.errno.EPROTOTYPE", true);
constinit const ErrorCode errno_ENOPROTOOPT("error.errno.ENOPROTOOPT", true);
constinit const ErrorCode errno_EPROTONOSUPPORT("error.errno.EPROTONOSUPPORT", true);
constinit const ErrorCode errno_ESOCKTNOSUPPORT("error.errno.ESOCKTNOSUPPORT", true);
constinit const ErrorCode errno_EOPNOTSUPP("error.errno.EOPNOTSUPP", true);
constinit const ErrorCode errno_EPFNOSUPPORT("error.errno.EPFNOSUPPORT", true);
constinit const ErrorCode errno_EAFNOSUPPORT("error.errno.EAFNOSUPPORT", true);
constinit const ErrorCode errno_EADDRINUSE("error.errno.EADDRINUSE", true);
constinit const ErrorCode errno_EADDRNOTAVAIL("error.errno.EADDRNOTAVAIL", true);
constinit const ErrorCode errno_ENETDOWN("error.errno.ENETDOWN", true);
constinit const ErrorCode errno_ENETUNREACH("error.errno.ENETUNREACH", true);
constinit const ErrorCode errno_ENETRESET("error.errno.ENETRESET", true);
constinit const ErrorCode errno_ECONNABORTED("error.errno.ECONNABORTED", true);
constinit const ErrorCode errno_ECONNRESET("error.errno.ECONNRESET", true);
constinit const ErrorCode errno_ENOBUFS("error.errno.ENOBUFS", true);
constinit const ErrorCode errno_EISCONN("error.errno.EISCONN", true);
constinit const ErrorCode errno_ENOTCONN("error.errno.ENOTCONN", true);
constinit const ErrorCode errno_ESHUTDOWN("error.errno.ESHUTDOWN", true);
constinit const ErrorCode errno_ETOOMANYREFS("error.errno.ETOOMANYREFS", true);
constinit const ErrorCode errno_ETIMEDOUT("error.errno.ETIMEDOUT", true);
constinit const ErrorCode errno_ECONNREFUSED("error.errno.ECONNREFUSED", true);
constinit const ErrorCode errno_ELOOP("error.errno.ELOOP", true);
constinit const ErrorCode errno_EHOSTDOWN("error.errno.EHOSTDOWN", true);
constinit const ErrorCode errno_EHOSTUNREACH("error.errno.EHOSTUNREACH", true);
constinit const ErrorCode errno_EUSERS("error.errno.EUSERS", true);
constinit const ErrorCode errno_EDQUOT("error.errno.EDQUOT", true);
constinit const ErrorCode errno_ESTALE("error.errno.ESTALE", true);
constinit const ErrorCode errno_EREMOTE("error.errno.EREMOTE", true);
constinit const ErrorCode errno_EPROCLIM("error.errno.EPROCLIM", true);
constinit const ErrorCode errno_ENOTBLK("error.errno.ENOTBLK", true);
constinit const ErrorCode errno_ETXTBSY("error.errno.ETXTBSY", true);
constinit const ErrorCode errno_EUCLEAN("error.errno.EUCLEAN", true);
constinit const ErrorCode os("error.os", true);
constinit const ErrorCode os_windows("error.os.windows", true);

}  // namespace tarvcore::error
