#include "tarvcore/source_string.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/source_string.cpp#1 $");

namespace tarvcore {

SourceString::SourceString(const char* text) {
    copy_dynamic(text, std::strlen(text));
}

SourceString::SourceString(const char* text, unsigned length) {
    copy_dynamic(text, length);
}

SourceString::SourceString(InterfacePtr<const StringTraceData> source) {
    const std::string_view text = source->query_trace_text();
    copy_dynamic(text.data(), text.size(), std::move(source));
}

InterfacePtr<const StringTraceData> SourceString::query_trace_data() const {
    if (is_reference()) return {};
    return impl::DynamicSourceStringHolder::from_text(text_)->query_trace_data();
}

std::ostream& operator<<(std::ostream& os, const SourceString& string) {
    if (string.is_reference()) return os.write(string.text(), string.size());
    impl::DynamicSourceStringHolder::from_text(string.text())
        ->query_trace_data()
        ->write_to_stream(os);
    return os;
}

unsigned SourceString::measure() const {
    const unsigned length = std::strlen(text_);
    __atomic_store_n(&length_, static_cast<int>(length), __ATOMIC_RELAXED);
    return length;
}

void SourceString::copy_dynamic(const char* text, unsigned length,
                                InterfacePtr<const StringTraceData>&& source) {
    if (char* characters = alloc_dynamic(length, std::move(source))) {
        std::memcpy(characters, text, length);
    }
}

char* SourceString::alloc_dynamic(unsigned length, InterfacePtr<const StringTraceData>&& source) {
    if (length > max_length) length_error();
    if (length == 0) return nullptr;  // minus zero could not be told from a reference's length
    RefCountPtr holder(impl::DynamicSourceStringHolder::create(length, std::move(source)));
    char* characters = holder.detach()->text();
    text_ = characters;
    length_ = -static_cast<int>(length);
    return characters;
}

void SourceString::length_error() {
    throw std::runtime_error("tarvcore::SourceString : excessive string length");
}

int SourceString::compare_text(const char* text, unsigned length) const {
    const unsigned own_length = size();
    const int order = std::memcmp(text_, text, std::min(own_length, length));
    if (order != 0) return order;
    return own_length < length ? -1 : own_length > length;
}

}  // namespace tarvcore
