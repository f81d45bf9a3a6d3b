#include "tarvcore/impl/dynamic_source_string_holder.h"

#include <cstring>
#include <new>
#include <utility>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/dynamic_source_string_holder.cpp#1 $");

namespace tarvcore::impl {

const DynamicSourceStringHolder* DynamicSourceStringHolder::create(
    const char* text, unsigned length, InterfacePtr<const StringTraceData> source) {
    void* block = operator new[](sizeof(DynamicSourceStringHolder) + length + 1);
    const auto* holder = new (block) DynamicSourceStringHolder(length, std::move(source));
    char* characters = const_cast<char*>(holder->text());
    std::memcpy(characters, text, length);
    characters[length] = '\0';
    return holder;
}

DynamicSourceStringHolder::DynamicSourceStringHolder(unsigned length,
                                                     InterfacePtr<const StringTraceData> source)
    : source_(std::move(source)), length_(length) {}

DynamicSourceStringHolder::~DynamicSourceStringHolder() = default;

std::string_view DynamicSourceStringHolder::query_trace_text() const {
    return {text(), length_};
}

InterfacePtr<const StringTraceData> DynamicSourceStringHolder::query_trace_data() const {
    if (source_) return source_;
    return {this, RefCountPtr<const RefCounted<AtomicRefCount>>(this)};
}

void DynamicSourceStringHolder::destroy() const {
    void* block = const_cast<DynamicSourceStringHolder*>(this);
    this->~DynamicSourceStringHolder();
    operator delete[](block);
}

}  // namespace tarvcore::impl
