// What keys share: the tokens behind them.
#pragma once

#include <atomic>
#include <iosfwd>
#include <string>
#include <string_view>

#include "tarvcore/config.h"
#include "tarvcore/interface_ptr.h"
#include "tarvcore/ref_count.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/string_trace_data.h"

namespace tarvcore {

// The identity of a key: an address that is never looked at, its key value.  Tokens with one key
// value stand for the same key.  Immutable, and shared between threads.
class TARVCORE_API ObjectKeyToken : public RefCounted<AtomicRefCount> {
public:
    const void* key_value() const { return key_value_; }

    // The text that stands for the key in traces; lives as long as the pointer.
    virtual InterfacePtr<const StringTraceData> query_trace_data() const = 0;
    void write_trace(std::ostream& os) const;

    // The one token of the null key: its key value is null, its trace text "<null>".
    static const RefCountPtr<const ObjectKeyToken>& default_token();
    static constexpr const void* default_key_value() { return nullptr; }

protected:
    // Takes its own address, which no other token has while it lives.
    ObjectKeyToken() : key_value_(this) {}
    explicit ObjectKeyToken(const void* key_value) : key_value_(key_value) {}
    ~ObjectKeyToken() override;

private:
    const void* key_value_;
};

namespace impl {

// A token whose trace text is made when it is first asked for: the key value, as "0x0040fe28".
class TARVCORE_API ObjectKeyTokenForPointerBase : public ObjectKeyToken, StringTraceData {
public:
    const char* trace_string() const;
    InterfacePtr<const StringTraceData> query_trace_data() const override;

protected:
    ObjectKeyTokenForPointerBase() = default;
    explicit ObjectKeyTokenForPointerBase(const void* key_value) : ObjectKeyToken(key_value) {}
    ~ObjectKeyTokenForPointerBase() override;

private:
    std::string_view query_trace_text() const override;

    mutable std::atomic<const char*> trace_text_ = nullptr;
};

class UniqueObjectKeyToken final : public ObjectKeyTokenForPointerBase {};

// Its trace text is the label.
class TARVCORE_API UniqueLabeledObjectKeyToken final : public ObjectKeyToken, StringTraceData {
public:
    explicit UniqueLabeledObjectKeyToken(std::string_view label) : label_(label) {}

    InterfacePtr<const StringTraceData> query_trace_data() const override;

private:
    ~UniqueLabeledObjectKeyToken() override;
    std::string_view query_trace_text() const override;

    std::string label_;
};

}  // namespace impl
}  // namespace tarvcore
