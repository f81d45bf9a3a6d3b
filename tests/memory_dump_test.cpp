// Faults to catch: a dump of nothing; a dump that claims to be of another thread; files left
// behind, or an output touched, where there is no dump; two threads in the library at once.

#include "tarvcore/memory_dump.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "tarvcore/impl/debug_help.h"
#include "tarvcore/impl/dump_path.h"
#include "tests/support/scoped_calls.h"

namespace {

using namespace tarvcore;

// A dump file's streams by their numbers.
class DumpFile {
public:
    explicit DumpFile(const char* path) {
        std::ifstream file(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
        const auto header = at<MINIDUMP_HEADER>(0);
        EXPECT_EQ(bytes_.substr(0, 4), "MDMP");
        for (unsigned i = 0; i < header.NumberOfStreams; ++i) {
            const auto entry =
                at<MINIDUMP_DIRECTORY>(header.StreamDirectoryRva + i * sizeof(MINIDUMP_DIRECTORY));
            streams_[entry.StreamType] = entry.Location.Rva;
        }
    }

    // Nothing in a dump is aligned.
    template <class T>
    T at(std::size_t offset) const {
        T value = {};
        EXPECT_LE(offset + sizeof value, bytes_.size());
        if (offset + sizeof value <= bytes_.size())
            std::memcpy(&value, bytes_.data() + offset, sizeof value);
        return value;
    }
    std::size_t stream(unsigned type) const {
        EXPECT_TRUE(streams_.contains(type)) << type;
        return streams_.at(type);
    }
    std::string text(std::size_t offset) const {
        std::string text;
        const auto size = at<ULONG32>(offset);  // in bytes
        for (std::size_t i = 0; i < size; i += sizeof(WCHAR))
            text += static_cast<char>(at<WCHAR>(offset + sizeof size + i));
        return text;
    }

private:
    std::string bytes_;
    std::map<unsigned, std::size_t> streams_;
};

TEST(MemoryDump, TellsThreadsModulesAndTheCaller) {
    preinitialize_diagnostics_libraries();
    char path[600] = "";
    ASSERT_TRUE(create_diagnostic_memory_dump(diagnosticMemoryDumpSmall, "small", path, 600));
    {
        const DumpFile dump(path);
        EXPECT_GE(dump.at<ULONG32>(dump.stream(ThreadListStream)), 1u);
        EXPECT_EQ(dump.at<MINIDUMP_EXCEPTION_STREAM>(dump.stream(ExceptionStream)).ThreadId,
                  GetCurrentThreadId());
        EXPECT_EQ(
            dump.at<MINIDUMP_SYSTEM_INFO>(dump.stream(SystemInfoStream)).ProcessorArchitecture,
            PROCESSOR_ARCHITECTURE_INTEL);
        const std::size_t modules = dump.stream(ModuleListStream);
        const auto count = dump.at<ULONG32>(modules);
        bool has_test = false;
        for (std::size_t i = 0; i < count; ++i) {
            const auto module =
                dump.at<MINIDUMP_MODULE>(modules + sizeof count + i * sizeof(MINIDUMP_MODULE));
            has_test |= dump.text(module.ModuleNameRva).ends_with("diagnostics_test.exe");
        }
        EXPECT_TRUE(has_test);
    }
    EXPECT_NE(std::string(path).find("\\small_"), std::string::npos) << path;
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
    }

    // Whether a dump fails, and leaves nothing.
    static void expect_failure(const char* reason, unsigned path_size = 600) {
        char path[600] = "untouched";
        EXPECT_FALSE(
            create_diagnostic_memory_dump(diagnosticMemoryDumpSmall, nullptr, path, path_size))
            << reason;
        EXPECT_STREQ(path, "untouched") << reason;
        wchar_t pattern[MAX_PATH];
        GetTempPathW(MAX_PATH, pattern);
        std::wcscat(pattern, L"failing_*");
        WIN32_FIND_DATAW found;
        EXPECT_EQ(FindFirstFileW(pattern, &found), INVALID_HANDLE_VALUE) << reason;
    }

    tarv_test::ScopedCalls<impl::DebugHelpCalls> calls_{impl::debug_help_calls};
    tarv_test::ScopedCalls<impl::DumpPathCalls> paths_{impl::dump_path_calls};
};

TEST_F(MemoryDumpFailures, LeaveNothing) {
    expect_failure("a path that does not fit", 10);
    help.write_dump = fail_to_write;
    expect_failure("a full disk");
    help.write_dump = nullptr;
    expect_failure("no such function");
    help = {};
    expect_failure("no library");
    paths_->temporary_folder = [](unsigned long, wchar_t*) -> unsigned long { return 0; };
    expect_failure("no folder");
}

// As another process would write a dump of its own to the same path.
HANDLE open_again(const std::wstring& path) {
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::wstring path_of_dump;

BOOL WINAPI write_while_another_tries(HANDLE, DWORD, HANDLE file, MINIDUMP_TYPE,
                                      PMINIDUMP_EXCEPTION_INFORMATION,
                                      PMINIDUMP_USER_STREAM_INFORMATION,
                                      PMINIDUMP_CALLBACK_INFORMATION) {
    DWORD written = 0;
    WriteFile(file, "whole", 5, &written, nullptr);
    EXPECT_EQ(open_again(path_of_dump), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    return TRUE;
}

TEST_F(MemoryDumpFailures, AreThoseOfTheSecondWriterOfAPath) {
    paths_->local_time = [](SYSTEMTIME& time) { time = {2014, 7, 3, 16, 13, 23, 5, 0}; };
    impl::DumpPath expected;
    ASSERT_TRUE(expected.build(nullptr, GetCurrentThreadId()));
    path_of_dump = expected.c_str();
    help.write_dump = write_while_another_tries;
    const auto dump = [](char* path) {
        return create_diagnostic_memory_dump(diagnosticMemoryDumpFull, nullptr, path, 600);
    };
    char path[600] = "";
    EXPECT_TRUE(dump(path));
    HANDLE other = open_again(path_of_dump);  // the first is done
    char untouched[600] = "untouched";
    EXPECT_FALSE(dump(untouched));
    EXPECT_STREQ(untouched, "untouched");
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(other, "other", 5, &written, nullptr) != 0);
    CloseHandle(other);
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "other");
    file.close();
    EXPECT_TRUE(DeleteFileA(path) != 0);
}

TEST(DebugHelpLock, IsForOneAndNotRecursive) {
    const impl::DebugHelpLock lock;
    EXPECT_TRUE(lock.is_held());
    {
        const impl::DebugHelpLock inner;
        EXPECT_FALSE(inner.is_held());
    }
    EXPECT_TRUE(lock.is_held());
}

}  // namespace
