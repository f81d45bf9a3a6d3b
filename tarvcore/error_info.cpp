#include "tarvcore/error_info.h"

#include <charconv>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tarvcore/error_exception.h"
#include "tarvcore/impl/host_name.h"
#include "tarvcore/impl/string_hash.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/error_info.cpp#1 $");

namespace tarvcore {
namespace {

int sign(int order) {
    return (order > 0) - (order < 0);
}

std::uint32_t hash_of(const SourceString& text) {
    return impl::ascii_string_hash(text.as_string_view());
}

// The whole text as a number with the prefixes of C; 0 where it is none.
long parse_native_code(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    } else if (text.starts_with('0')) {
        base = 8;
    }

    unsigned long magnitude = 0;
    const auto [stop, failure] =
        std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
    if (failure != std::errc() || stop != text.data() + text.size()) return 0;
    if (negative && magnitude > 0x80000000) return 0;
    return static_cast<long>(negative ? 0 - magnitude : magnitude);
}

}  // namespace

ErrorInfo::ErrorInfo(const ErrorCode& code, TransferSource<SourceString> message,
                     TransferSource<ErrorParams> params, const SourceLocation& location,
                     TransferSource<Ptr> nested)
    : code_(code),
      message_(message),
      params_(params),
      location_(location),
      nested_(nested),
      hostname_(impl::process_host_name()) {}

ErrorInfo::ErrorInfo(const ErrorCode& code, TransferSource<SourceString> message,
                     TransferSource<ErrorParams> params, const SourceLocation& location,
                     TransferSource<Ptr> nested, TransferSource<SourceString> hostname)
    : code_(code),
      message_(message),
      params_(params),
      location_(location),
      nested_(nested),
      hostname_(hostname) {}

ErrorInfo::ErrorInfo(TransferSource<ErrorCode> code, TransferSource<SourceString> message,
                     TransferSource<ErrorParams> params, TransferSource<SourceLocation> location,
                     TransferSource<Ptr> nested, TransferSource<SourceString> hostname)
    : code_(code),
      message_(message),
      params_(params),
      location_(location),
      nested_(nested),
      hostname_(hostname) {}

// Takes a chain of causes apart record by record: left to the members' destructors, a long one
// would overflow the stack.
ErrorInfo::~ErrorInfo() {
    const ErrorInfo* record = nested_.detach();
    while (record != nullptr && record->drop_ref()) {
        const ErrorInfo* next = const_cast<ErrorInfo*>(record)->nested_.detach();
        record->destroy();
        record = next;
    }
}

const ErrorInfo* impl::create_literal_record(const ErrorCode& code, const char* message,
                                             const LiteralLocation& location,
                                             const ErrorInfo* nested) {
    return ErrorInfo::create(code, message, ErrorParams(), location, ErrorInfo::Ptr(nested, false))
        .detach();
}

ErrorInfo::Ptr ErrorInfo::create(const ErrorCode& code, MessageTemplate message,
                                 const SourceLocation& location, Ptr nested) {
    return create(code, std::move(message), ErrorParams(), location, std::move(nested));
}

ErrorInfo::Ptr ErrorInfo::create(const ErrorCode& code, MessageTemplate message, ErrorParams params,
                                 const SourceLocation& location, Ptr nested) {
    return new ErrorInfo(code, message.text.transfer(), params.transfer(), location,
                         nested.transfer());
}

ErrorInfo::Ptr ErrorInfo::create(const ErrorCode& code, MessageTemplate message, ErrorParams params,
                                 const SourceLocation& location, Ptr nested,
                                 SourceString hostname) {
    return new ErrorInfo(code, message.text.transfer(), params.transfer(), location,
                         nested.transfer(), hostname.transfer());
}

ErrorInfo::Ptr ErrorInfo::create(TransferSource<ErrorCode> code,
                                 TransferSource<SourceString> message,
                                 TransferSource<ErrorParams> params,
                                 TransferSource<SourceLocation> location,
                                 TransferSource<Ptr> nested,
                                 TransferSource<SourceString> hostname) {
    return new ErrorInfo(code, message, params, location, nested, hostname);
}

template <class... Pattern>
const ErrorInfo* ErrorInfo::find_matching(const Pattern&... pattern) const {
    const ErrorInfo* record = this;
    while (record != nullptr && !record->code_.matches(pattern...))
        record = record->nested_.get();
    return record;
}

bool ErrorInfo::any_matches(const char* code) const {
    return find_matching(code) != nullptr;
}
bool ErrorInfo::any_matches(const char* code, unsigned length) const {
    return find_matching(code, length) != nullptr;
}
bool ErrorInfo::any_matches(const ErrorCode& code) const {
    return find_matching(code) != nullptr;
}
bool ErrorInfo::any_matches(const SourceString& code) const {
    return find_matching(code) != nullptr;
}

ErrorInfo::Ptr ErrorInfo::first_matching(const char* code) const {
    return find_matching(code);
}
ErrorInfo::Ptr ErrorInfo::first_matching(const char* code, unsigned length) const {
    return find_matching(code, length);
}
ErrorInfo::Ptr ErrorInfo::first_matching(const ErrorCode& code) const {
    return find_matching(code);
}
ErrorInfo::Ptr ErrorInfo::first_matching(const SourceString& code) const {
    return find_matching(code);
}

long ErrorInfo::native_code() const {
    for (const std::string_view name : {"nativeCode", "errno", "winErrorCode"}) {
        const auto pair = params_.find(name.data(), name.size());
        if (pair == params_.end()) continue;
        if (pair->value.find('\0') != std::string::npos) impl::raise_embedded_nul_error();
        return parse_native_code(pair->value);
    }
    return 0;
}

int ErrorInfo::compare_own_parts(const ErrorInfo& other) const {
    if (const int order = code_.compare(other.code_)) return order;
    if (const int order = message_.compare(other.message_)) return order;
    if (const int order = params_.compare(other.params_)) return order;
    if (const int order = location_.compare(other.location_)) return order;
    return hostname_.compare(other.hostname_);
}

int ErrorInfo::compare(const ErrorInfo& other) const {
    const ErrorInfo* a = this;
    const ErrorInfo* b = &other;
    while (a != b) {
        if (a == nullptr || b == nullptr) return a == nullptr ? -1 : 1;
        if (const int order = a->compare_own_parts(*b)) return sign(order);
        a = a->nested_.get();
        b = b->nested_.get();
    }
    return 0;
}

bool ErrorInfo::operator==(const ErrorInfo& other) const {
    const ErrorInfo* a = this;
    const ErrorInfo* b = &other;
    while (a != b && a->nested_) {
        if (b->nested_.is_null()) return false;
        a = a->nested_.get();
        b = b->nested_.get();
    }
    if (a == b) return true;
    return b->nested_.is_null() && a->params_ == b->params_ && a->location_ == b->location_ &&
           a->code_ == b->code_ && a->message_ == b->message_ && a->hostname_ == b->hostname_;
}

std::uint32_t ErrorInfo::hash_own_parts() const {
    std::uint32_t hash = 0;
    hash = impl::combine_hash(hash, hash_of(code_.as_source_string()));
    hash = impl::combine_hash(hash, hash_of(message_));
    hash = impl::combine_hash(hash, params_.hash());
    hash = impl::combine_hash(
        hash, location_.line() ^ hash_of(location_.function()) ^ hash_of(location_.file_id()));
    return impl::combine_hash(hash, hash_of(hostname_));
}

std::uint32_t ErrorInfo::hash() const {
    // A record's hash ends with its cause's, so the chain is gone through from its far end.
    std::vector<const ErrorInfo*> chain;
    for (const ErrorInfo* record = this; record != nullptr; record = record->nested_.get()) {
        chain.push_back(record);
    }
    std::uint32_t hash = 0;
    for (auto record = chain.rbegin(); record != chain.rend(); ++record) {
        hash = impl::combine_hash((*record)->hash_own_parts(), hash);
    }
    return hash;
}

}  // namespace tarvcore
