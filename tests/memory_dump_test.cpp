// Faults to catch: a dump of nothing; a dump that claims to be of another thread; files left
// behind, or an output touched, where there is no dump; two threads in the library at once.

#include "tarvcore/memory_dump.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/dump_path.h"
#include "tests/support/scoped_calls.h"

namespace {

using namespace tarvcore;

std::string content_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string local_time() {
    SYSTEMTIME time;
    GetLocalTime(&time);
    char text[15];
    std::snprintf(text, sizeof text, "%04u%02u%02u%02u%02u%02u", time.wYear, time.wMonth, time.wDay,
                  time.wHour, time.wMinute, time.wSecond);
    return text;
}

// The beginning of a stream of a dump, as debuggers find it; nothing in a dump is aligned.
template <class T>
T stream_of(std::string& dump, ULONG type) {
    static const auto read = std::bit_cast<decltype(&MiniDumpReadDumpStream)>(
        GetProcAddress(LoadLibraryW(L"dbghelp.dll"), "MiniDumpReadDumpStream"));
    void* stream = nullptr;
    T value = {};
    EXPECT_TRUE(read(dump.data(), type, nullptr, &stream, nullptr) != 0) << type;
    if (stream != nullptr) std::memcpy(&value, stream, sizeof value);
    return value;
}

TEST(MemoryDump, TellsThreadsModulesAndTheCaller) {
    preinitialize_diagnostics_libraries();
    const std::string before = local_time();
    char path[600] = "";
    ASSERT_TRUE(create_diagnostic_memory_dump(diagnosticMemoryDumpSmall, "small", path, 600));
    const std::string name = std::filesystem::path(path).filename().string();
    ASSERT_TRUE(name.starts_with("small_")) << path;
    EXPECT_LE(before, name.substr(6, 14));
    EXPECT_LE(name.substr(6, 14), local_time());
    std::string dump = content_of(path);
    MINIDUMP_HEADER header;
    ASSERT_GE(dump.size(), sizeof header);
    std::memcpy(&header, dump.data(), sizeof header);
    EXPECT_EQ(header.Flags, ULONG64{MiniDumpNormal});
    EXPECT_GE(stream_of<ULONG32>(dump, ThreadListStream), 1u);
    EXPECT_EQ(stream_of<MINIDUMP_EXCEPTION_STREAM>(dump, ExceptionStream).ThreadId,
              GetCurrentThreadId());
    EXPECT_GE(stream_of<ULONG32>(dump, ModuleListStream), 2u);
    constexpr std::wstring_view program = L"diagnostics_test.exe";
    const auto* const bytes = reinterpret_cast<const char*>(program.data());
    EXPECT_NE(dump.find(std::string(bytes, 2 * program.size())), std::string::npos);
    EXPECT_TRUE(DeleteFileA(path) != 0);
}

// What the debugging-help library answers.
impl::DebugHelp help;

BOOL WINAPI fail_to_write(HANDLE, DWORD, HANDLE file, MINIDUMP_TYPE,
                          PMINIDUMP_EXCEPTION_INFORMATION, PMINIDUMP_USER_STREAM_INFORMATION,
                          PMINIDUMP_CALLBACK_INFORMATION) {
    DWORD written = 0;
    WriteFile(file, "MDMP", 4, &written, nullptr);
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

BOOL WINAPI write_nothing(HANDLE, DWORD, HANDLE, MINIDUMP_TYPE, PMINIDUMP_EXCEPTION_INFORMATION,
                          PMINIDUMP_USER_STREAM_INFORMATION, PMINIDUMP_CALLBACK_INFORMATION) {
    return TRUE;
}

BOOL WINAPI come_to_grief(HANDLE, DWORD, HANDLE, MINIDUMP_TYPE, PMINIDUMP_EXCEPTION_INFORMATION,
                          PMINIDUMP_USER_STREAM_INFORMATION, PMINIDUMP_CALLBACK_INFORMATION) {
    RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    return TRUE;
}

class MemoryDumpFailures : public testing::Test {
protected:
    MemoryDumpFailures() {
        help = impl::debug_help();
        calls_->load = []() -> const impl::DebugHelp& { return help; };
        paths_->program = [](wchar_t* buffer, unsigned long) -> unsigned long {
            std::wcscpy(buffer, L"failing.exe");
            return 11;
        };
        paths_->trace_root = [](wchar_t*, unsigned long) -> unsigned long { return 0; };
        std::filesystem::remove_all(folder_);  // of a run that has failed
        std::filesystem::create_directory(folder_);
        paths_->temporary_folder = [](unsigned long size, wchar_t* buffer) -> unsigned long {
            const std::size_t length = folder_.native().copy(buffer, size - 1);
            buffer[length] = L'\0';
            return length;
        };
    }
    ~MemoryDumpFailures() override { std::filesystem::remove_all(folder_); }

    // Whether a dump fails, and leaves nothing.
    static void expect_failure(const char* reason, unsigned path_size = 600,
                               const char* name = "") {
        char path[600] = "untouched";
        EXPECT_FALSE(
            create_diagnostic_memory_dump(diagnosticMemoryDumpSmall, name, path, path_size))
            << reason;
        EXPECT_STREQ(path, "untouched") << reason;
        EXPECT_TRUE(std::filesystem::is_empty(folder_)) << reason;
    }

    static inline const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / L"tarvcore_memory_dump_test";
    tarv_test::ScopedCalls<impl::DebugHelpCalls> calls_{impl::debug_help_calls};
    tarv_test::ScopedCalls<impl::DumpPathCalls> paths_{impl::dump_path_calls};
};

TEST_F(MemoryDumpFailures, LeaveNothing) {
    help.write_dump = write_nothing;
    char path[600];
    unsigned size = sizeof path;
    for (const char* room : {"ample", "what it takes"}) {
        ASSERT_TRUE(create_diagnostic_memory_dump(diagnosticMemoryDumpSmall, "x", path, size))
            << room;
        EXPECT_TRUE(DeleteFileA(path) != 0);
        size = std::strlen(path) + 1;
    }
    expect_failure("a path that does not fit", size - 1, "x");
    expect_failure("a name that does not fit", 600, std::string(400, 'x').c_str());
    {
        const impl::DebugHelpLock taken;
        expect_failure("a library in use");
    }
    help.write_dump = fail_to_write;
    expect_failure("a full disk");
    help.write_dump = come_to_grief;
    expect_failure("a fault in the library");
    help.write_dump = nullptr;
    expect_failure("no such function");
    help = {};
    expect_failure("no library");
    paths_->temporary_folder = [](unsigned long, wchar_t*) -> unsigned long { return 0; };
    expect_failure("no folder");
}

std::wstring path_of_dump;

// As another writer of the same path, or a reader, that minds nobody.
HANDLE open_again(DWORD access) {
    return CreateFileW(path_of_dump.c_str(), access,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

BOOL WINAPI write_while_others_try(HANDLE, DWORD, HANDLE file, MINIDUMP_TYPE,
                                   PMINIDUMP_EXCEPTION_INFORMATION,
                                   PMINIDUMP_USER_STREAM_INFORMATION,
                                   PMINIDUMP_CALLBACK_INFORMATION) {
    DWORD written = 0;
    WriteFile(file, "whole", 5, &written, nullptr);
    for (const DWORD access : {DWORD{GENERIC_READ}, DWORD{GENERIC_WRITE}, DWORD{DELETE}}) {
        EXPECT_EQ(open_again(access), INVALID_HANDLE_VALUE) << access;
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION}) << access;
    }
    return TRUE;
}

TEST_F(MemoryDumpFailures, AreThoseOfTheSecondWriterOfAPath) {
    paths_->local_time = [](SYSTEMTIME& time) { time = {2014, 7, 3, 16, 13, 23, 5, 0}; };
    impl::DumpPath expected;
    ASSERT_TRUE(expected.build(nullptr, GetCurrentThreadId()));
    path_of_dump = expected.c_str();
    help.write_dump = write_while_others_try;
    const auto dump = [](char* path) {
        return create_diagnostic_memory_dump(diagnosticMemoryDumpFull, "", path, 600);
    };
    char path[600] = "";
    EXPECT_TRUE(dump(path));
    EXPECT_EQ(content_of(path), "whole");
    HANDLE other = open_again(GENERIC_WRITE);  // the first is done
    char untouched[600] = "untouched";
    EXPECT_FALSE(dump(untouched));
    EXPECT_STREQ(untouched, "untouched");
    CloseHandle(other);
    EXPECT_EQ(content_of(path), "whole");
    EXPECT_TRUE(DeleteFileA(path) != 0);
}

TEST(DebugHelpLock, IsForOneAndNotRecursive) {
    const impl::DebugHelpLock lock;
    EXPECT_TRUE(lock.is_held());
    EXPECT_FALSE(impl::DebugHelpLock().is_held());
    EXPECT_FALSE(impl::DebugHelpLock().is_held()) << "given back by one that had it not";
}

}  // namespace
