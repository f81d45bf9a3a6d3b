#include "tarvcore/object_key_token.h"

#include <memory>
#include <ostream>
#include <sstream>

#include "tarvcore/impl/stream_text.h"
#include "tarvcore/streamers.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/object_key_token.cpp#1 $");

namespace tarvcore {
namespace impl {

// The token of the null key.
class NullObjectKeyToken final : public ObjectKeyToken, StringTraceData {
public:
    NullObjectKeyToken() : ObjectKeyToken(nullptr) {}

    InterfacePtr<const StringTraceData> query_trace_data() const override { return {this, this}; }

private:
    std::string_view query_trace_text() const override { return "<null>"; }
};

ObjectKeyTokenForPointerBase::~ObjectKeyTokenForPointerBase() {
    delete[] trace_text_.load(std::memory_order_relaxed);
}

// Threads that are here at once each make the text; the first one counts.
const char* ObjectKeyTokenForPointerBase::trace_string() const {
    const char* present = trace_text_.load(std::memory_order_acquire);
    if (present != nullptr) return present;
    const std::string text = stream_text(streamers::Pointer(key_value()));
    auto made = std::make_unique<char[]>(text.size() + 1);
    text.copy(made.get(), text.size());
    if (!trace_text_.compare_exchange_strong(present, made.get())) return present;
    return made.release();
}

InterfacePtr<const StringTraceData> ObjectKeyTokenForPointerBase::query_trace_data() const {
    return {this, this};
}

std::string_view ObjectKeyTokenForPointerBase::query_trace_text() const {
    return trace_string();
}

UniqueLabeledObjectKeyToken::~UniqueLabeledObjectKeyToken() = default;

InterfacePtr<const StringTraceData> UniqueLabeledObjectKeyToken::query_trace_data() const {
    return {this, this};
}

std::string_view UniqueLabeledObjectKeyToken::query_trace_text() const {
    return label_;
}

}  // namespace impl

ObjectKeyToken::~ObjectKeyToken() = default;

void ObjectKeyToken::write_trace(std::ostream& os) const {
    query_trace_data()->write_to_stream(os);
}

const RefCountPtr<const ObjectKeyToken>& ObjectKeyToken::default_token() {
    // Never destroyed: keys may outlive the library's static objects.
    static const auto& token = *new RefCountPtr<const ObjectKeyToken>(new impl::NullObjectKeyToken);
    return token;
}

}  // namespace tarvcore
