#include "tarvcore/impl/dynamic_source_string_holder.h"

#include <new>
#include <utility>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/dynamic_source_string_holder.cpp#1 $");

namespace tarvcore::impl {

DynamicSourceStringHolder* DynamicSourceStringHolder::create(
    unsigned length, InterfacePtr<const StringTraceData>&& source) {
    void* block = operator new[](sizeof(DynamicSourceStringHolder) + length + 1);
    auto* holder = new (block) DynamicSourceStringHolder(length, std::move(source));
    holder->text()[length] = '\0';
    return holder;
}

DynamicSourceStringHolder::DynamicSourceStringHolder(unsigned length,
                                                     InterfacePtr<const StringTraceData>&& source)
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
