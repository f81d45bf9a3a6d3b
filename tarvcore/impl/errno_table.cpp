#include "tarvcore/impl/errno_table.h"

#include <algorithm>
#include <iterator>

#include "tarvcore/error_code_constants.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/errno_table.cpp#1 $");

namespace tarvcore::impl {
namespace {

constinit const ErrorCode no_error;

// Sorted by value.  Sockets report Windows socket numbers in errno.  No value leads to ENOTBLK,
// ETXTBSY and EUCLEAN.
constexpr ErrnoRow rows[] = {
    {0, &no_error, "No Error"},
    {1, &error::errno_EPERM,
     "Operation not permitted (an attempt was made to perform an operation limited to processes "
     "with appropriate privileges or to the owner of a resource)"},
    {2, &error::errno_ENOENT, "No such file, directory, or resource"},
    {3, &error::errno_ESRCH, "No such process"},
    {4, &error::errno_EINTR, "Interrupted system call"},
    {5, &error::errno_EIO, "Input/output error"},
    {6, &error::errno_ENXIO, "No such device or address"},
    {7, &error::errno_E2BIG, "Argument list too long"},
    {8, &error::errno_ENOEXEC, "Exec format error"},
    {9, &error::errno_EBADF, "Bad file descriptor"},
    {10, &error::errno_ECHILD, "No child processes"},
    {11, &error::errno_EAGAIN,
     "Resource temporarily unavailable or a non-blocking operation could not be completed "
     "immediately"},
    {12, &error::errno_ENOMEM, "Not enough space"},
    {13, &error::errno_EACCES,
     "Permission denied (an attempt was made to access a file or resource in a way forbidden by "
     "its access permissions)"},
    {14, &error::errno_EFAULT, "Bad address"},
    {16, &error::errno_EBUSY, "Device or resource busy "},
    {17, &error::errno_EEXIST, "File exists"},
    {18, &error::errno_EXDEV, "Improper link (cross-device link)"},
    {19, &error::errno_ENODEV, "No such device"},
    {20, &error::errno_ENOTDIR, "Not a directory"},
    {21, &error::errno_EISDIR, "Is a directory"},
    {22, &error::errno_EINVAL, "Invalid argument"},
    {23, &error::errno_ENFILE, "Too many open files in system"},
    {24, &error::errno_EMFILE, "Too many open files"},
    {25, &error::errno_ENOTTY, "Inappropriate I/O control operation"},
    {27, &error::errno_EFBIG, "File too large"},
    {28, &error::errno_ENOSPC, "No space left on device"},
    {29, &error::errno_ESPIPE,
     "Attempt to seek in device that does not support seeking (such as a pipe)"},
    {30, &error::errno_EROFS, "Read-only file system"},
    {31, &error::errno_EMLINK, "Too many links"},
    {32, &error::errno_EPIPE, "Broken pipe"},
    {33, &error::errno_EDOM, "Math argument out of domain of func"},
    {34, &error::errno_ERANGE, "Math result not representable (out of range)"},
    {36, &error::errno_EDEADLK, "Resource deadlock would occur"},
    {38, &error::errno_ENAMETOOLONG, "Name component or (file) name was too long"},
    {39, &error::errno_ENOLCK, "No record locks available"},
    {40, &error::errno_ENOSYS, "Function not implemented"},
    {41, &error::errno_ENOTEMPTY, "Directory not empty"},
    {42, &error::errno_EILSEQ, "Illegal byte sequence"},
    {137, &error::errno_ETIME,
     "The request was not completed in the allotted time; a timeout occurred"},
    {10035, &error::errno_EAGAIN,
     "Resource temporarily unavailable or a non-blocking operation could not be completed "
     "immediately"},
    {10036, &error::errno_EINPROGRESS, "A blocking operation is currently executing"},
    {10037, &error::errno_EALREADY,
     "An operation was attempted on a non-blocking socket that already had an operation in "
     "progress"},
    {10038, &error::errno_ENOTSOCK, "An operation was attempted on something that is not a socket"},
    {10039, &error::errno_EDESTADDRREQ,
     "A required address was omitted from an operation on a socket"},
    {10040, &error::errno_EMSGSIZE,
     "A message sent on a datagram socket was larger than the internal message buffer or some "
     "other network limit, or the buffer used to receive a datagram into was smaller than the "
     "datagram itself"},
    {10041, &error::errno_EPROTOTYPE,
     "A protocol was specified in the socket function call that does not support the semantics of "
     "the socket type requested"},
    {10042, &error::errno_ENOPROTOOPT,
     "An unknown, invalid, or unsupported option or level was specified in a getsockopt or "
     "setsockopt call"},
    {10043, &error::errno_EPROTONOSUPPORT,
     "The requested protocol has not been configured into the system, or no implementation for it "
     "exists"},
    {10044, &error::errno_ESOCKTNOSUPPORT,
     "The support for the specified socket type does not exist in this address family"},
    {10045, &error::errno_EOPNOTSUPP,
     "The attempted operation is not supported for the type of object referenced"},
    {10046, &error::errno_EPFNOSUPPORT,
     "The protocol family has not been configured into the system or no implementation for it "
     "exists"},
    {10047, &error::errno_EAFNOSUPPORT,
     "An address incompatible with the requested protocol was used"},
    {10048, &error::errno_EADDRINUSE,
     "Only one usage of each socket address (protocol/network address/port) is normally permitted"},
    {10049, &error::errno_EADDRNOTAVAIL, "The requested address is not valid in its context"},
    {10050, &error::errno_ENETDOWN, "A socket operation encountered a dead network"},
    {10051, &error::errno_ENETUNREACH,
     "A socket operation was attempted to an unreachable network"},
    {10052, &error::errno_ENETRESET,
     "The connection has been broken due to keep-alive activity detecting a failure while the "
     "operation was in progress"},
    {10053, &error::errno_ECONNABORTED,
     "An established connection was aborted by the software in your host machine"},
    {10054, &error::errno_ECONNRESET,
     "An existing connection was forcibly closed by the remote host"},
    {10055, &error::errno_ENOBUFS,
     "An operation on a socket could not be performed because the system lacked sufficient buffer "
     "space or because a queue was full"},
    {10056, &error::errno_EISCONN, "A connect request was made on an already connected socket"},
    {10057, &error::errno_ENOTCONN,
     "A request to send or receive data was disallowed because the socket is not connected and "
     "(when sending on a datagram socket using a sendto call) no address was supplied"},
    {10058, &error::errno_ESHUTDOWN,
     "Operation disallowed or cancelled because component has already been shut down"},
    {10059, &error::errno_ETOOMANYREFS, "Too many references to some kernel object"},
    {10060, &error::errno_ETIMEDOUT,
     "A connection attempt failed because the connected party did not properly respond after a "
     "period of time, or established connection failed because connected host has failed to "
     "respond"},
    {10061, &error::errno_ECONNREFUSED,
     "No connection could be made because the target machine actively refused it"},
    {10062, &error::errno_ELOOP, "Cannot translate name"},
    {10064, &error::errno_EHOSTDOWN,
     "A socket operation failed because the destination host was down"},
    {10065, &error::errno_EHOSTUNREACH, "A socket operation was attempted to an unreachable host"},
    {10067, &error::errno_EPROCLIM,
     "Exceeded maximum number of applications using device concurrently"},
    {10068, &error::errno_EUSERS, "Ran out of quota"},
    {10069, &error::errno_EDQUOT, "Ran out of disk quota"},
    {10070, &error::errno_ESTALE, "File handle reference is no longer available"},
    {10071, &error::errno_EREMOTE, "Item is not available locally"},
};

static_assert(std::is_sorted(std::begin(rows), std::end(rows),
                             [](const ErrnoRow& a, const ErrnoRow& b) {
                                 return a.value < b.value;
                             }));

}  // namespace

const ErrnoRow* find_errno_row(long value) {
    const auto* row = std::lower_bound(std::begin(rows), std::end(rows), value,
                                       [](const ErrnoRow& r, long v) { return r.value < v; });
    return row != std::end(rows) && row->value == value ? row : nullptr;
}

}  // namespace tarvcore::impl
