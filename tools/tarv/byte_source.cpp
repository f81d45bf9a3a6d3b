#include "tools/tarv/byte_source.h"

#include <windows.h>

#include "tarvcore/config.h"
#include "tarvcore/error_composer.h"
#include "tarvcore/to_string.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/byte_source.cpp#1 $");

namespace tarv {
namespace {

bool is_standard_input(const std::string& path) {
    return path == "-";
}

[[noreturn]] void throw_input_error(const std::string& path, DWORD why) {
    tarvcore::ErrorComposer("Cannot read {@file}")
        .param("file", is_standard_input(path) ? "standard input" : path)
        .throw_with_nested_winerror(tarvcore::ErrorCode("error.tarv.input", true),
                                    TARVCORE_LOCATION("tarv::ByteSource"), why, true);
}

}  // namespace

ByteSource::ByteSource(const std::string& path) : path_(path) {
    handle_ = is_standard_input(path)
                  ? GetStdHandle(STD_INPUT_HANDLE)
                  : CreateFileW(tarvcore::to_wstring(path).c_str(), GENERIC_READ,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (handle_ == INVALID_HANDLE_VALUE) throw_input_error(path_, GetLastError());
}

ByteSource::~ByteSource() {
    if (!is_standard_input(path_)) CloseHandle(handle_);
}

unsigned ByteSource::read_some(std::span<char> buffer) {
    DWORD count = 0;
    if (!ReadFile(handle_, buffer.data(), buffer.size(), &count, nullptr)) {
        const DWORD why = GetLastError();
        // How the end of a pipe shows.
        if (why != ERROR_BROKEN_PIPE) throw_input_error(path_, why);
    }
    return count;
}

unsigned ByteSource::read(std::span<char> buffer) {
    unsigned size = 0;
    while (size < buffer.size()) {
        const unsigned count = read_some(buffer.subspan(size));
        if (count == 0) break;
        size += count;
    }
    return size;
}

}  // namespace tarv
