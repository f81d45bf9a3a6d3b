#include "tarvcore/os_error.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <utility>

#include "tarvcore/error_code.h"
#include "tarvcore/error_code_constants.h"
#include "tarvcore/error_info.h"
#include "tarvcore/impl/errno_table.h"
#include "tarvcore/impl/system_message.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/os_error.cpp#1 $");

namespace tarvcore {
namespace {

// The values are part of error records, and the compiler's names for them must mean the same.
static_assert(EINVAL == 22 && EAGAIN == 11 && ETIME == 137 && ENAMETOOLONG == 38 && EILSEQ == 42);

constexpr int would_block = 10035;  // the number that sockets have for EAGAIN

struct WinerrorRow {
    unsigned short first;
    unsigned short last;
    short value;
};

constexpr short same_number = -1;

// Sorted by code.  Codes between the rows correspond to nothing.
constexpr WinerrorRow winerror_rows[] = {
    {1, 1, EINVAL},
    {2, 3, ENOENT},
    {4, 4, EMFILE},
    {5, 5, EACCES},
    {6, 6, EBADF},
    {7, 9, ENOMEM},
    {10, 10, E2BIG},
    {11, 11, ENOEXEC},
    {12, 13, EINVAL},
    {14, 14, ENOMEM},
    {15, 15, ENOENT},
    {16, 16, EACCES},
    {17, 17, EXDEV},
    {18, 18, ENOENT},
    {19, 19, EROFS},
    {20, 20, ENOENT},
    {21, 21, EAGAIN},
    {22, 22, EINVAL},
    {23, 23, EILSEQ},
    {24, 24, E2BIG},
    {25, 25, EINVAL},
    {27, 27, EINVAL},
    {28, 28, EAGAIN},
    {29, 30, EPERM},
    {32, 33, EPERM},
    {36, 36, EMFILE},
    {39, 39, ENOSPC},
    {53, 53, ENOENT},
    {65, 65, EACCES},
    {67, 67, ENOENT},
    {80, 80, EEXIST},
    {82, 83, EACCES},
    {87, 87, EINVAL},
    {89, 89, EAGAIN},
    {108, 108, EBUSY},
    {109, 109, EPIPE},
    {112, 112, ENOSPC},
    {114, 114, EBADF},
    {121, 121, ETIME},
    {128, 129, ECHILD},
    {130, 130, EBADF},
    {131, 131, EINVAL},
    {132, 132, ESPIPE},
    {145, 145, ENOTEMPTY},
    {158, 158, ENOENT},
    {161, 161, ENOENT},
    {164, 164, EAGAIN},
    {167, 167, EPERM},
    {170, 170, EBUSY},
    {183, 183, EEXIST},
    {188, 202, ENOEXEC},
    {206, 206, ENOENT},
    {215, 215, EAGAIN},
    {1816, 1816, ENOMEM},
    {10013, 10013, EACCES},
    {10035, 10035, EAGAIN},
    {10036, 10062, same_number},
    {10063, 10063, ENAMETOOLONG},
    {10064, 10065, same_number},
    {10067, 10071, same_number},
};

static_assert(std::is_sorted(std::begin(winerror_rows), std::end(winerror_rows),
                             [](const WinerrorRow& a, const WinerrorRow& b) {
                                 return a.last < b.first;
                             }));

int without_would_block(int value) {
    return value == would_block ? EAGAIN : value;
}

SourceString dynamic_copy(const std::string& text) {
    return SourceString(text.data(), text.size());
}

// The library's own message of an errno value or the system's for that number; empty: neither.
SourceString known_message(int value) {
    if (const impl::ErrnoRow* row = impl::find_errno_row(value)) {
        return SourceString(row->message, true);
    }
    return dynamic_copy(impl::system_message(static_cast<unsigned long>(value)));
}

template <class Number>
ErrorCode numbered_code(const ErrorCode& family, Number number) {
    ErrorCode code(family);
    code.append_segment(std::to_string(number).c_str());
    return code;
}

}  // namespace

ErrorCode ErrorCode::from_errno(long value) {
    const impl::ErrnoRow* row = impl::find_errno_row(value);
    return row ? *row->code : numbered_code(error::errno_, value);
}

ErrorCode ErrorCode::from_errno() {
    return from_errno(errno);
}

ErrorInfo::Ptr ErrorInfo::from_errno(const SourceLocation& location, int value) {
    return from_errno(location, nullptr, value);
}

ErrorInfo::Ptr ErrorInfo::from_errno(const SourceLocation& location, Ptr nested, int value) {
    value = without_would_block(value);
    SourceString message = known_message(value);
    if (message.empty()) message = SourceString("Unknown error (errno={@errno})", true);
    return create(ErrorCode::from_errno(value), std::move(message),
                  ErrorParams().add("errno", value), location, std::move(nested));
}

ErrorInfo::Ptr ErrorInfo::from_winerror_nomap(const SourceLocation& location, Ptr nested,
                                              unsigned long code) {
    return create(numbered_code(error::os_windows, code), dynamic_copy(impl::system_message(code)),
                  ErrorParams().add("winErrorCode", code), location, std::move(nested));
}

ErrorInfo::Ptr ErrorInfo::from_winerror(const SourceLocation& location, Ptr nested,
                                        unsigned long code, bool keep_windows_record) {
    const int value = errno_from_winerror(code);
    if (value == 0 || keep_windows_record) {
        nested = from_winerror_nomap(location, std::move(nested), code);
    }
    return from_errno(location, std::move(nested), value != 0 ? value : EINVAL);
}

ErrorInfo::Ptr ErrorInfo::from_winerror(const SourceLocation& location, unsigned long code,
                                        bool keep_windows_record) {
    return from_winerror(location, nullptr, code, keep_windows_record);
}

ErrorInfo::Ptr ErrorInfo::create_with_nested_errno(const ErrorCode& code, MessageTemplate message,
                                                   const SourceLocation& location, int value) {
    return create(code, std::move(message), location, from_errno(location, value));
}

ErrorInfo::Ptr ErrorInfo::create_with_nested_errno(const ErrorCode& code, MessageTemplate message,
                                                   ErrorParams params,
                                                   const SourceLocation& location, int value) {
    return create(code, std::move(message), std::move(params), location,
                  from_errno(location, value));
}

SourceString errno_message(int value) {
    value = without_would_block(value);
    SourceString message = known_message(value);
    if (!message.empty()) return message;
    char unknown[40];
    std::snprintf(unknown, sizeof unknown, "Unknown error (errno=%d)", value);
    return SourceString(unknown);
}

int errno_from_winerror(unsigned long code) noexcept {
    const auto* row = std::lower_bound(
        std::begin(winerror_rows), std::end(winerror_rows), code,
        [](const WinerrorRow& r, unsigned long wanted) { return r.last < wanted; });
    if (row == std::end(winerror_rows) || code < row->first) return 0;
    return row->value == same_number ? static_cast<int>(code) : row->value;
}

int set_errno(int value) noexcept {
    value = without_would_block(value);
    _doserrno = 0;
    return errno = value;
}

int set_errno_from_winerror(unsigned long code) noexcept {
    const int value = errno_from_winerror(code);
    _doserrno = code;
    return errno = value != 0 ? value : EINVAL;
}

}  // namespace tarvcore
