// Faults to catch: a root that is used as it was written; a folder that cannot be made, or a path
// that does not fit, taken all the same; digits that are missing in front.

#include "tarvcore/impl/dump_path.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/scoped_calls.h"

namespace {

using namespace tarvcore;
using impl::DumpPath;

// What the system answers, and the folders that it was asked for.
std::wstring root;
std::wstring temporary;
std::wstring program;
std::wstring forbidden_folder;
std::vector<std::wstring> folders;

unsigned long put(const std::wstring& text, wchar_t* buffer, unsigned long size) {
    if (text.size() >= size) return text.size() + 1;
    text.copy(buffer, text.size());
    buffer[text.size()] = L'\0';
    return text.size();
}

class DumpPathTest : public testing::Test {
protected:
    DumpPathTest() : make_real_folder_(calls_->make_folder) {
        root = L"D:/traces";
        temporary = L"C:\\temp\\";
        program = L"C:\\server\\server.exe";
        forbidden_folder = L"?";
        folders.clear();
        calls_->local_time = [](SYSTEMTIME& time) { time = {2014, 7, 3, 16, 13, 23, 5, 999}; };
        calls_->trace_root = [](wchar_t* buffer, unsigned long size) {
            return put(root, buffer, size);
        };
        calls_->temporary_folder = [](unsigned long size, wchar_t* buffer) {
            return put(temporary, buffer, size);
        };
        calls_->program = [](wchar_t* buffer, unsigned long size) {
            return std::min(put(program, buffer, size), size);
        };
        calls_->make_folder = [](const wchar_t* path) {
            folders.push_back(path);
            return path != forbidden_folder;
        };
    }

    static std::wstring built(const wchar_t* name = nullptr) {
        DumpPath path;
        return path.build(name, 0x1A2C) ? path.c_str() : L"does not fit";
    }

    const std::wstring process_ = std::to_wstring(GetCurrentProcessId());
    const std::wstring end_ = L"_20140716132305_" + process_ + L"_1a2c.dmp";
    tarv_test::ScopedCalls<impl::DumpPathCalls> calls_{impl::dump_path_calls};
    bool (*const make_real_folder_)(const wchar_t* path);
};

TEST_F(DumpPathTest, LiesInTheFolderOfTheDay) {
    EXPECT_EQ(built(), L"D:\\traces\\2014-07-16\\server" + end_);
    EXPECT_EQ(folders, (std::vector<std::wstring>{L"D:\\traces\\", L"D:\\traces\\2014-07-16\\"}));
    root = L"D:\\a/b\\";
    EXPECT_EQ(built(), L"D:\\a\\b\\2014-07-16\\server" + end_);
}

TEST_F(DumpPathTest, FallsBackToTheFolderForTemporaryFiles) {
    const std::wstring fallen_back = L"C:\\temp\\server" + end_;
    for (const wchar_t* folder : {L"D:\\traces\\", L"D:\\traces\\2014-07-16\\"}) {
        forbidden_folder = folder;
        EXPECT_EQ(built(), fallen_back) << folder;
    }
    forbidden_folder = L"?";
    // 323 characters and their terminator would fit, but not the folder of the day behind them.
    for (const std::size_t length : {0u, 323u, 324u, 5000u}) {
        root.assign(length, L'x');
        EXPECT_EQ(built(), fallen_back) << length;
    }
    temporary = L"C:\\temp";
    EXPECT_EQ(built(), fallen_back);
    for (const std::size_t length : {0u, 324u}) {
        temporary.assign(length, L'x');
        EXPECT_EQ(built(), L"does not fit") << length;
    }
}

TEST_F(DumpPathTest, TakesFoldersThatAreThere) {
    wchar_t temporary_folder[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary_folder);
    const std::wstring folder = std::wstring(temporary_folder) + L"tarvcore_dump_path_test";
    const std::wstring file = folder + L"\\file";
    EXPECT_TRUE(make_real_folder_(folder.c_str()));
    EXPECT_TRUE(make_real_folder_(folder.c_str()));
    EXPECT_TRUE(make_real_folder_(L"C:\\"));
    EXPECT_FALSE(make_real_folder_((folder + L"\\none\\below").c_str()));
    CloseHandle(CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    EXPECT_FALSE(make_real_folder_(file.c_str()));
    EXPECT_TRUE(DeleteFileW(file.c_str()) && RemoveDirectoryW(folder.c_str()));
}

TEST_F(DumpPathTest, NamesTheProgram) {
    const struct {
        std::wstring program;
        std::wstring name;
    } rows[] = {
        {L"C:\\a.b\\no_dot", L"no_dot"},
        {L"C:\\a\\two.dots.exe", L"two.dots"},
        {L"alone.exe", L"alone"},
        {L"", L"dump"},
        {L"C:\\" + std::wstring(400, L'y') + L".exe", L"dump"},
    };
    for (const auto& row : rows) {
        program = row.program;
        EXPECT_EQ(built(), L"D:\\traces\\2014-07-16\\" + row.name + end_);
    }
    EXPECT_EQ(built(L"a/b:\"c\"\x1F\xE9"), L"D:\\traces\\2014-07-16\\a_b__c__\xE9" + end_);
}

TEST_F(DumpPathTest, FitsOrIsNone) {
    const std::wstring fixed = L"D:\\\\2014-07-16\\server" + end_;
    for (const std::size_t excess : {0u, 1u}) {
        root = L"D:\\" + std::wstring(DumpPath::capacity - 1 - fixed.size() + excess, L'x');
        EXPECT_EQ(built().size(), excess == 0 ? DumpPath::capacity - 1 : 12) << excess;
    }
}

}  // namespace
