// Where dump files go.
#pragma once

#include <atomic>

#include <windows.h>

#include "tarvcore/config.h"

namespace tarvcore::impl {

// The system calls behind a dump file's path, as Windows has them; lengths and sizes count
// characters, a length of 0 is a failure.
struct DumpPathCalls {
    void (*local_time)(SYSTEMTIME& time);
    // The value of ZOLT_TRACE_ROOT.
    unsigned long (*trace_root)(wchar_t* buffer, unsigned long size);
    unsigned long (*temporary_folder)(unsigned long size, wchar_t* buffer);
    unsigned long (*program)(wchar_t* buffer, unsigned long size);
    // Also true where the folder is there already.
    bool (*make_folder)(const wchar_t* path);
};

// The table in use; tests put one of their own in its place.
TARVCORE_API extern std::atomic<const DumpPathCalls*> dump_path_calls;

// A path as text of limited length; what does not fit is cut off, and remembered.
class DumpPath {
public:
    static constexpr unsigned capacity = 324;  // with the terminator

    // For that thread; see create_diagnostic_memory_dump.  Makes the folders.  A null name: the
    // program's.  False where the path does not fit.
    TARVCORE_API bool build(const wchar_t* name, unsigned long thread);

    const wchar_t* c_str() const { return text_; }
    unsigned length() const { return length_; }

private:
    bool start_in_trace_root(const SYSTEMTIME& time);
    bool start_in_temporary_folder();
    void append_program();
    void append_name(const wchar_t* name);
    void append(wchar_t character);
    void append(const wchar_t* begin, const wchar_t* end);
    void append_decimal(unsigned long number, unsigned min_digits);
    void append_hexadecimal(unsigned long number);
    void append_digits(unsigned long number, unsigned base, unsigned min_digits);
    // Makes the folder that the path is, and goes into it.
    bool enter();
    // Not of an empty one.
    bool ends_in_separator() const { return text_[length_ - 1] == L'\\'; }
    void clear();

    wchar_t text_[capacity] = L"";
    unsigned length_ = 0;
    bool is_cut_ = false;
};

}  // namespace tarvcore::impl
