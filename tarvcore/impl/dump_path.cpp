#include "tarvcore/impl/dump_path.h"

#include <algorithm>
#include <cwchar>
#include <iterator>

TARVCORE_SOURCE_FILE("$Id: //tarvcore/impl/dump_path.cpp#1 $");

// Nothing here allocates: a process that dumps itself may have no memory left.
namespace tarvcore::impl {
namespace {

constexpr DumpPathCalls system_calls = {
    [](SYSTEMTIME& time) { GetLocalTime(&time); },
    [](wchar_t* buffer, unsigned long size) {
        return GetEnvironmentVariableW(L"ZOLT_TRACE_ROOT", buffer, size);
    },
    [](unsigned long size, wchar_t* buffer) { return GetTempPathW(size, buffer); },
    [](wchar_t* buffer, unsigned long size) { return GetModuleFileNameW(nullptr, buffer, size); },
    [](const wchar_t* path) {
        if (CreateDirectoryW(path, nullptr) != 0) return true;
        // Errors do not tell: that of a drive's root is another one.
        const DWORD attributes = GetFileAttributesW(path);
        return attributes != INVALID_FILE_ATTRIBUTES &&
               (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    },
};

bool is_allowed_in_file_names(wchar_t character) {
    return character >= L' ' && std::wcschr(L"<>:\"/\\|?*", character) == nullptr;
}

}  // namespace

constinit std::atomic<const DumpPathCalls*> dump_path_calls = &system_calls;

bool DumpPath::build(const wchar_t* name, unsigned long thread) {
    SYSTEMTIME time = {};
    dump_path_calls.load()->local_time(time);
    if (!start_in_trace_root(time) && !start_in_temporary_folder()) return false;

    if (name != nullptr) {
        append_name(name);
    } else {
        append_program();
    }
    append(L'_');
    append_decimal(time.wYear, 4);
    for (const WORD field : {time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond})
        append_decimal(field, 2);
    append(L'_');
    append_decimal(GetCurrentProcessId(), 1);
    append(L'_');
    append_hexadecimal(thread);
    for (const wchar_t character : {L'.', L'd', L'm', L'p'})
        append(character);
    return !is_cut_;
}

bool DumpPath::start_in_trace_root(const SYSTEMTIME& time) {
    clear();
    length_ = dump_path_calls.load()->trace_root(text_, capacity);
    if (length_ == 0 || length_ >= capacity) return false;
    std::replace(text_, text_ + length_, L'/', L'\\');
    if (!enter()) return false;
    append_decimal(time.wYear, 4);
    append(L'-');
    append_decimal(time.wMonth, 2);
    append(L'-');
    append_decimal(time.wDay, 2);
    return enter();
}

bool DumpPath::start_in_temporary_folder() {
    clear();
    length_ = dump_path_calls.load()->temporary_folder(capacity, text_);
    if (length_ == 0 || length_ >= capacity) return false;
    if (!ends_in_separator()) append(L'\\');
    return true;
}

void DumpPath::append_program() {
    wchar_t path[MAX_PATH];
    const unsigned long length = dump_path_calls.load()->program(path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return append_name(L"dump");
    const wchar_t* const end = path + length;
    const auto reversed = [](const wchar_t* at) { return std::make_reverse_iterator(at); };
    const wchar_t* const name = std::find(reversed(end), reversed(path), L'\\').base();
    const auto dot = std::find(reversed(end), reversed(name), L'.');
    append(name, dot == reversed(name) ? end : dot.base() - 1);
}

void DumpPath::append_name(const wchar_t* name) {
    for (; *name != L'\0'; ++name)
        append(is_allowed_in_file_names(*name) ? *name : L'_');
}

void DumpPath::append(wchar_t character) {
    if (length_ + 1 >= capacity) {
        is_cut_ = true;
        return;
    }
    text_[length_++] = character;
    text_[length_] = L'\0';
}

void DumpPath::append(const wchar_t* begin, const wchar_t* end) {
    std::for_each(begin, end, [this](wchar_t character) { append(character); });
}

void DumpPath::append_decimal(unsigned long number, unsigned min_digits) {
    append_digits(number, 10, min_digits);
}

void DumpPath::append_hexadecimal(unsigned long number) {
    append_digits(number, 16, 1);
}

void DumpPath::append_digits(unsigned long number, unsigned base, unsigned min_digits) {
    wchar_t digits[10];
    wchar_t* const end = std::end(digits);
    wchar_t* begin = end;
    while (number != 0 || begin > end - min_digits) {
        *--begin = L"0123456789abcdef"[number % base];
        number /= base;
    }
    append(begin, end);
}

bool DumpPath::enter() {
    if (!ends_in_separator()) append(L'\\');
    return !is_cut_ && dump_path_calls.load()->make_folder(text_);
}

void DumpPath::clear() {
    text_[length_ = 0] = L'\0';
    is_cut_ = false;
}

}  // namespace tarvcore::impl
