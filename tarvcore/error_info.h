// The record of one error.
#pragma once

#include <compare>
#include <cstdint>
#include <exception>
#include <iosfwd>

#include "tarvcore/config.h"
#include "tarvcore/error_code.h"
#include "tarvcore/error_params.h"
#include "tarvcore/message_template.h"
#include "tarvcore/ref_count.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/source_location.h"
#include "tarvcore/source_string.h"
#include "tarvcore/transfer.h"

namespace tarvcore {

class ErrorInfo;

namespace impl {

// A record of literals, with a reference that the caller owns.  Takes over the one to the cause.
TARVCORE_API const ErrorInfo* create_literal_record(const ErrorCode& code, const char* message,
                                                    const LiteralLocation& location,
                                                    const ErrorInfo* nested = nullptr);

}  // namespace impl

// What went wrong: code, message template, parameters, where it was raised, on which host, and the
// error that caused it, if any.  Made once, never changed, shared by every RefCountPtr and thread
// that has it; a null RefCountPtr<const ErrorInfo> means that there is no error.
//
// The causes form a chain of any length: creating, comparing, hashing, tracing and destroying one
// takes no stack in proportion.
//
//     auto error = ErrorInfo::create(my::error::name, "Bad name \"{@name}\"",
//                                    ErrorParams().add("name", name), TARVCORE_LOCATION("f()"));
//     if (error->matches("error.my")) std::cerr << error;
class TARVCORE_API ErrorInfo : public RefCounted<AtomicRefCount> {
public:
    using Ptr = RefCountPtr<const ErrorInfo>;

    // New records.  All share this process's host name unless one is given.  Raise std::bad_alloc.
    // A message that is a `const char*` is a literal, and kept as it is: any other text is to come
    // as a SourceString or, better, as a parameter.  With literals only, the frame that raises has
    // nothing to destroy.
    TARVCORE_INLINE static Ptr create(const ErrorCode& code, const char* message,
                                      const LiteralLocation& location, Ptr nested = {}) {
        return Ptr(impl::create_literal_record(code, message, location, nested.detach()), false);
    }
    static Ptr create(const ErrorCode& code, MessageTemplate message,
                      const SourceLocation& location, Ptr nested = {});
    static Ptr create(const ErrorCode& code, MessageTemplate message, ErrorParams params,
                      const SourceLocation& location, Ptr nested = {});
    static Ptr create(const ErrorCode& code, MessageTemplate message, ErrorParams params,
                      const SourceLocation& location, Ptr nested, SourceString hostname);
    static Ptr create(TransferSource<ErrorCode> code, TransferSource<SourceString> message,
                      TransferSource<ErrorParams> params, TransferSource<SourceLocation> location,
                      TransferSource<Ptr> nested, TransferSource<SourceString> hostname);

    // The record that an ErrorException carries.  Any other exception: a new record with the code
    // of its most derived standard class below error::exception, and its `what()` as message.
    static Ptr from_exception(const std::exception& e, const SourceLocation& where);

    // For a `catch (...)` block: the record of an exception of unknown type, with the processor's
    // registers, the return addresses and the top of the stack at the place of the call, and the
    // process and thread, as parameters.
    static Ptr from_anonymous_exception(const SourceLocation& where);

    // The record of an errno value: code and message by its name, parameter "errno".  10035 (a
    // socket operation would block) counts as EAGAIN.  A value without a name has the system's
    // message for the number.
    static Ptr from_errno(const SourceLocation& location, int value);
    static Ptr from_errno(const SourceLocation& location, Ptr nested, int value);

    // The record of a Windows error number: "error.os.windows.NUMBER", the system's message,
    // parameter "winErrorCode".
    static Ptr from_winerror_nomap(const SourceLocation& location, Ptr nested, unsigned long code);

    // The errno record that a Windows error number corresponds to.  With `keep_windows_record`, and
    // always where nothing corresponds and the result is EINVAL, the Windows record is its nested
    // one and has `nested` below it.
    static Ptr from_winerror(const SourceLocation& location, Ptr nested, unsigned long code,
                             bool keep_windows_record);
    static Ptr from_winerror(const SourceLocation& location, unsigned long code,
                             bool keep_windows_record);

    // A record whose nested one is that of the errno value.
    static Ptr create_with_nested_errno(const ErrorCode& code, MessageTemplate message,
                                        const SourceLocation& location, int value);
    static Ptr create_with_nested_errno(const ErrorCode& code, MessageTemplate message,
                                        ErrorParams params, const SourceLocation& location,
                                        int value);

    const ErrorCode& code() const { return code_; }
    const SourceString& message() const { return message_; }
    const ErrorParams& params() const { return params_; }
    const SourceLocation& location() const { return location_; }
    const Ptr& nested() const { return nested_; }
    const SourceString& hostname() const { return hostname_; }

    // The message with the parameters put in; with a limit, values cut to that many bytes.
    SourceString expanded_message() const { return params_.expanded_message(message_); }
    SourceString expanded_message(unsigned limit) const {
        return params_.expanded_message_with_limit(message_, limit);
    }

    // Whether this record's own code belongs to a family; see ErrorCode::matches.
    bool matches(const char* code) const { return code_.matches(code); }
    bool matches(const char* code, unsigned length) const { return code_.matches(code, length); }
    bool matches(const ErrorCode& code) const { return code_.matches(code); }
    bool matches(const SourceString& code) const { return code_.matches(code); }

    // Whether this record or any cause below it belongs to a family.
    bool any_matches(const char* code) const;
    bool any_matches(const char* code, unsigned length) const;
    bool any_matches(const ErrorCode& code) const;
    bool any_matches(const SourceString& code) const;

    // The outermost record of this one and its causes that belongs to a family; null: none does.
    Ptr first_matching(const char* code) const;
    Ptr first_matching(const char* code, unsigned length) const;
    Ptr first_matching(const ErrorCode& code) const;
    Ptr first_matching(const SourceString& code) const;

    // The operating system's number: the first parameter present of "nativeCode", "errno" and
    // "winErrorCode", as a decimal, hexadecimal ("0x") or octal ("0") number.  Unsigned numbers of
    // 32 bits come as the signed number of the same bits.  0 where there is no such parameter or it
    // is not entirely such a number; a NUL within it raises "error.tarvcore.string.embeddedNul".
    long native_code() const;

    // Negative, zero or positive: by code, message, parameters, location, host name, and then
    // cause; none orders before any.
    int compare(const ErrorInfo& other) const;
    friend std::strong_ordering operator<=>(const ErrorInfo& a, const ErrorInfo& b) {
        return a.compare(b) <=> 0;
    }

    // A record with a cause equals another one with a cause when the causes are equal, whatever
    // else the two hold: users compare what happened at the bottom, not by which way it came up.
    // Without causes, all parts are compared; chains of different lengths are never equal.  So `==`
    // and `compare` answer different questions; this is meant.
    bool operator==(const ErrorInfo& other) const;

    // Of all parts and causes: it goes with `compare`, not with `==`, under which records of one
    // cause are equal.
    std::uint32_t hash() const;

    // The record as lines of text, each begun by a line feed and two blanks for every level; the
    // causes follow, each a level deeper.
    virtual void write_trace(std::ostream& os, unsigned indent_level) const;

    // Streams a record at an indentation of its own.
    struct Trace {
        Ptr record;             // not null
        unsigned indent_level;  // two blanks each
    };

protected:
    // For derived records.
    ErrorInfo(const ErrorCode& code, TransferSource<SourceString> message,
              TransferSource<ErrorParams> params, const SourceLocation& location,
              TransferSource<Ptr> nested);
    ErrorInfo(const ErrorCode& code, TransferSource<SourceString> message,
              TransferSource<ErrorParams> params, const SourceLocation& location,
              TransferSource<Ptr> nested, TransferSource<SourceString> hostname);
    ErrorInfo(TransferSource<ErrorCode> code, TransferSource<SourceString> message,
              TransferSource<ErrorParams> params, TransferSource<SourceLocation> location,
              TransferSource<Ptr> nested, TransferSource<SourceString> hostname);

    ~ErrorInfo() override;

private:
    // -1, 0 or 1 without a look at the causes.
    int compare_own_parts(const ErrorInfo& other) const;
    std::uint32_t hash_own_parts() const;
    void write_own_trace(std::ostream& os, unsigned indent_level) const;
    // The first record of the chain whose code matches; null: none.
    template <class... Pattern>
    const ErrorInfo* find_matching(const Pattern&... pattern) const;

    ErrorCode code_;
    SourceString message_;
    ErrorParams params_;
    SourceLocation location_;
    Ptr nested_;
    SourceString hostname_;
};

// "##NULL##" for a null pointer.
TARVCORE_API std::ostream& operator<<(std::ostream& os, const ErrorInfo::Ptr& record);
TARVCORE_API std::ostream& operator<<(std::ostream& os, const ErrorInfo::Trace& trace);

}  // namespace tarvcore
