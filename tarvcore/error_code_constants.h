// The library's own error codes.
#pragma once

#include "tarvcore/config.h"
#include "tarvcore/error_code.h"

// A constant's name is its text without "error.", the dots replaced by "_".  Two kinds deviate:
// "error.errno" itself is `errno_`, since the bare word is a macro, and the snake-case segments
// below "error.exception" are lowerCamelCase in the name (`exception_badAlloc` is
// "error.exception.bad_alloc").  All refer to literals and are usable during static initialisation.
namespace tarvcore::error {

// The library, and text.
TARVCORE_API extern const ErrorCode tarvcore;
TARVCORE_API extern const ErrorCode tarvcore_string;
TARVCORE_API extern const ErrorCode tarvcore_string_embeddedNul;
TARVCORE_API extern const ErrorCode tarvcore_string_utf8;
TARVCORE_API extern const ErrorCode tarvcore_string_utf8_invalid;
TARVCORE_API extern const ErrorCode tarvcore_string_utf8_overlong;
TARVCORE_API extern const ErrorCode tarvcore_string_utf8_partial;
TARVCORE_API extern const ErrorCode tarvcore_string_conversion;
TARVCORE_API extern const ErrorCode tarvcore_string_extraction;

// Identifiers.
TARVCORE_API extern const ErrorCode tarvcore_uuid;
TARVCORE_API extern const ErrorCode tarvcore_uuid_parse;

// Hardware.
TARVCORE_API extern const ErrorCode tarvcore_hardware;
TARVCORE_API extern const ErrorCode tarvcore_hardware_timeError;
TARVCORE_API extern const ErrorCode tarvcore_hardware_priorityClass;
TARVCORE_API extern const ErrorCode tarvcore_hardware_threadPriority;
TARVCORE_API extern const ErrorCode tarvcore_hardware_threadAffinity;
TARVCORE_API extern const ErrorCode tarvcore_hardware_invalidCpuId;

// Casts.
TARVCORE_API extern const ErrorCode tarvcore_cast;
TARVCORE_API extern const ErrorCode tarvcore_cast_negativeToUnsigned;
TARVCORE_API extern const ErrorCode tarvcore_cast_valueTooBig;
TARVCORE_API extern const ErrorCode tarvcore_cast_valueTooBig_signReversal;

// Futures, and clean-up at exit.
TARVCORE_API extern const ErrorCode tarvcore_future;
TARVCORE_API extern const ErrorCode tarvcore_future_nullError;
TARVCORE_API extern const ErrorCode tarvcore_objectManager;
TARVCORE_API extern const ErrorCode tarvcore_objectManager_closed;

// Binary-to-text transforms.
TARVCORE_API extern const ErrorCode tarvcore_transforms;
TARVCORE_API extern const ErrorCode tarvcore_transforms_base64;
TARVCORE_API extern const ErrorCode tarvcore_transforms_base64_invalid;
TARVCORE_API extern const ErrorCode tarvcore_transforms_base64_truncated;
TARVCORE_API extern const ErrorCode tarvcore_transforms_base64_padding;
TARVCORE_API extern const ErrorCode tarvcore_transforms_base32;
TARVCORE_API extern const ErrorCode tarvcore_transforms_base32_invalid;
TARVCORE_API extern const ErrorCode tarvcore_transforms_base32_truncated;
TARVCORE_API extern const ErrorCode tarvcore_transforms_base32_padding;
TARVCORE_API extern const ErrorCode tarvcore_transforms_hex;
TARVCORE_API extern const ErrorCode tarvcore_transforms_hex_invalid;
TARVCORE_API extern const ErrorCode tarvcore_transforms_hex_truncated;

// Time.
TARVCORE_API extern const ErrorCode tarvcore_absoluteTime;
TARVCORE_API extern const ErrorCode tarvcore_absoluteTime_range;
TARVCORE_API extern const ErrorCode tarvcore_absoluteTime_invalidUtcString;
TARVCORE_API extern const ErrorCode tarvcore_relativeTime;
TARVCORE_API extern const ErrorCode tarvcore_relativeTime_invalidTimeString;
TARVCORE_API extern const ErrorCode tarvcore_simpleDateTime;
TARVCORE_API extern const ErrorCode tarvcore_simpleDateTime_invalidString;
TARVCORE_API extern const ErrorCode tarvcore_simpleDateTime_timezoneOffset;

// Results and tasks.
TARVCORE_API extern const ErrorCode tarvcore_result;
TARVCORE_API extern const ErrorCode tarvcore_result_notWaitable;
TARVCORE_API extern const ErrorCode tarvcore_result_badParameter;
TARVCORE_API extern const ErrorCode tarvcore_result_notSignaled;
TARVCORE_API extern const ErrorCode tarvcore_result_redundantSignal;
TARVCORE_API extern const ErrorCode tarvcore_result_invalidAsyncSignalScope;
TARVCORE_API extern const ErrorCode tarvcore_result_cancelled;
TARVCORE_API extern const ErrorCode tarvcore_result_cancelled_innerOperation;
TARVCORE_API extern const ErrorCode tarvcore_result_invalidAsynchrony;
TARVCORE_API extern const ErrorCode tarvcore_task;
TARVCORE_API extern const ErrorCode tarvcore_task_notExecuted;
TARVCORE_API extern const ErrorCode tarvcore_task_redundantExecution;

// Exceptions.
TARVCORE_API extern const ErrorCode exception;
TARVCORE_API extern const ErrorCode exception_badAlloc;
TARVCORE_API extern const ErrorCode exception_badCast;
TARVCORE_API extern const ErrorCode exception_badCast_badLexicalCast;
TARVCORE_API extern const ErrorCode exception_logicError;
TARVCORE_API extern const ErrorCode exception_logicError_domainError;
TARVCORE_API extern const ErrorCode exception_logicError_invalidArgument;
TARVCORE_API extern const ErrorCode exception_logicError_lengthError;
TARVCORE_API extern const ErrorCode exception_logicError_outOfRange;
TARVCORE_API extern const ErrorCode exception_runtimeError;
TARVCORE_API extern const ErrorCode exception_runtimeError_rangeError;
TARVCORE_API extern const ErrorCode exception_runtimeError_overflowError;
TARVCORE_API extern const ErrorCode exception_runtimeError_underflowError;
TARVCORE_API extern const ErrorCode exception_weakRefPromoteException;
TARVCORE_API extern const ErrorCode exception_unknown;
TARVCORE_API extern const ErrorCode exception_fault;
TARVCORE_API extern const ErrorCode exception_fault_accessViolation;
TARVCORE_API extern const ErrorCode exception_fault_cppException;
TARVCORE_API extern const ErrorCode exception_assert;

// Operating system: one code per errno name, and the family of Windows error numbers.
TARVCORE_API extern const ErrorCode errno_;
TARVCORE_API extern const ErrorCode errno_EPERM;
TARVCORE_API extern const ErrorCode errno_ENOENT;
TARVCORE_API extern const ErrorCode errno_ESRCH;
TARVCORE_API extern const ErrorCode errno_EINTR;
TARVCORE_API extern const ErrorCode errno_EIO;
TARVCORE_API extern const ErrorCode errno_ENXIO;
TARVCORE_API extern const ErrorCode errno_E2BIG;
TARVCORE_API extern const ErrorCode errno_ENOEXEC;
TARVCORE_API extern const ErrorCode errno_EBADF;
TARVCORE_API extern const ErrorCode errno_ECHILD;
TARVCORE_API extern const ErrorCode errno_EAGAIN;
TARVCORE_API extern const ErrorCode errno_ENOMEM;
TARVCORE_API extern const ErrorCode errno_EACCES;
TARVCORE_API extern const ErrorCode errno_EFAULT;
TARVCORE_API extern const ErrorCode errno_EBUSY;
TARVCORE_API extern const ErrorCode errno_EEXIST;
TARVCORE_API extern const ErrorCode errno_EXDEV;
TARVCORE_API extern const ErrorCode errno_ENODEV;
TARVCORE_API extern const ErrorCode errno_ENOTDIR;
TARVCORE_API extern const ErrorCode errno_EISDIR;
TARVCORE_API extern const ErrorCode errno_EINVAL;
TARVCORE_API extern const ErrorCode errno_ENFILE;
TARVCORE_API extern const ErrorCode errno_EMFILE;
TARVCORE_API extern const ErrorCode errno_ENOTTY;
TARVCORE_API extern const ErrorCode errno_EFBIG;
TARVCORE_API extern const ErrorCode errno_ENOSPC;
TARVCORE_API extern const ErrorCode errno_ESPIPE;
TARVCORE_API extern const ErrorCode errno_EROFS;
TARVCORE_API extern const ErrorCode errno_EMLINK;
TARVCORE_API extern const ErrorCode errno_EPIPE;
TARVCORE_API extern const ErrorCode errno_EDOM;
TARVCORE_API extern const ErrorCode errno_ERANGE;
TARVCORE_API extern const ErrorCode errno_EDEADLK;
TARVCORE_API extern const ErrorCode errno_ENAMETOOLONG;
TARVCORE_API extern const ErrorCode errno_ENOLCK;
TARVCORE_API extern const ErrorCode errno_ENOSYS;
TARVCORE_API extern const ErrorCode errno_ENOTEMPTY;
TARVCORE_API extern const ErrorCode errno_EILSEQ;
TARVCORE_API extern const ErrorCode errno_ETIME;
TARVCORE_API extern const ErrorCode errno_EINPROGRESS;
TARVCORE_API extern const ErrorCode errno_EALREADY;
TARVCORE_API extern const ErrorCode errno_ENOTSOCK;
TARVCORE_API extern const ErrorCode errno_EDESTADDRREQ;
TARVCORE_API extern const ErrorCode errno_EMSGSIZE;
TARVCORE_API extern const ErrorCode errno_EPROTOTYPE;
TARVCORE_API extern const ErrorCode errno_ENOPROTOOPT;
TARVCORE_API extern const ErrorCode errno_EPROTONOSUPPORT;
TARVCORE_API extern const ErrorCode errno_ESOCKTNOSUPPORT;
TARVCORE_API extern const ErrorCode errno_EOPNOTSUPP;
TARVCORE_API extern const ErrorCode errno_EPFNOSUPPORT;
TARVCORE_API extern const ErrorCode errno_EAFNOSUPPORT;
TARVCORE_API extern const ErrorCode errno_EADDRINUSE;
TARVCORE_API extern const ErrorCode errno_EADDRNOTAVAIL;
TARVCORE_API extern const ErrorCode errno_ENETDOWN;
TARVCORE_API extern const ErrorCode errno_ENETUNREACH;
TARVCORE_API extern const ErrorCode errno_ENETRESET;
TARVCORE_API extern const ErrorCode errno_ECONNABORTED;
TARVCORE_API extern const ErrorCode errno_ECONNRESET;
TARVCORE_API extern const ErrorCode errno_ENOBUFS;
TARVCORE_API extern const ErrorCode errno_EISCONN;
TARVCORE_API extern const ErrorCode errno_ENOTCONN;
TARVCORE_API extern const ErrorCode errno_ESHUTDOWN;
TARVCORE_API extern const ErrorCode errno_ETOOMANYREFS;
TARVCORE_API extern const ErrorCode errno_ETIMEDOUT;
TARVCORE_API extern const ErrorCode errno_ECONNREFUSED;
TARVCORE_API extern const ErrorCode errno_ELOOP;
TARVCORE_API extern const ErrorCode errno_EHOSTDOWN;
TARVCORE_API extern const ErrorCode errno_EHOSTUNREACH;
TARVCORE_API extern const ErrorCode errno_EUSERS;
TARVCORE_API extern const ErrorCode errno_EDQUOT;
TARVCORE_API extern const ErrorCode errno_ESTALE;
TARVCORE_API extern const ErrorCode errno_EREMOTE;
TARVCORE_API extern const ErrorCode errno_EPROCLIM;
TARVCORE_API extern const ErrorCode errno_ENOTBLK;
TARVCORE_API extern const ErrorCode errno_ETXTBSY;
TARVCORE_API extern const ErrorCode errno_EUCLEAN;
TARVCORE_API extern const ErrorCode os;
TARVCORE_API extern const ErrorCode os_windows;

}  // namespace tarvcore::error
