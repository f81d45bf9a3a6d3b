// The shared block behind a source string that owns its text.
#pragma once

#include <string_view>

#include "tarvcore/config.h"
#include "tarvcore/interface_ptr.h"
#include "tarvcore/ref_count.h"
#include "tarvcore/ref_count_ptr.h"
#include "tarvcore/string_trace_data.h"

namespace tarvcore::impl {

// A header directly followed by its characters and a terminating NUL, in one allocation.
class TARVCORE_API DynamicSourceStringHolder final : public RefCounted<AtomicRefCount>,
                                                     public StringTraceData {
public:
    // A new block without a reference, whose characters are to be filled in before it is shared;
    // the NUL stands.  Raises std::bad_alloc.
    static DynamicSourceStringHolder* create(unsigned length,
                                             InterfacePtr<const StringTraceData>&& source = {});

    // The block whose characters start at `text`.
    static const DynamicSourceStringHolder* from_text(const char* text) {
        return reinterpret_cast<const DynamicSourceStringHolder*>(text) - 1;
    }
    const char* text() const { return reinterpret_cast<const char*>(this + 1); }
    char* text() { return reinterpret_cast<char*>(this + 1); }

    std::string_view query_trace_text() const override;

    // The trace data that the text was made from, or this block's own.
    InterfacePtr<const StringTraceData> query_trace_data() const;

protected:
    void destroy() const override;

private:
    DynamicSourceStringHolder(unsigned length, InterfacePtr<const StringTraceData>&& source);
    ~DynamicSourceStringHolder() override;

    InterfacePtr<const StringTraceData> source_;
    unsigned length_;
};

}  // namespace tarvcore::impl
