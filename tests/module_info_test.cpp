// Faults to catch: a block that cannot be found in the module's file, or is laid out in another
// way; a version resource that says something else; a second copy that goes unnoticed, is let pass,
// or is stopped where the environment allows it; a module that leaves its name behind.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>
#include <vector>

#include "tarvcore/impl/module_registration.h"
#include "tarvmoduleregistry/module_registry.h"
#include "tests/support/child_process.h"
//
#include <windows.h>

namespace {

constexpr char switch_name[] = "ZOLT_MODULEREGISTRY_DONT_FAIL_ON_DUPLICATES";

// The file of the module that contains the library.
std::wstring module_path() {
    wchar_t path[1024];
    return {path, GetModuleFileNameW(GetModuleHandleW(L"tarvcore-w32r-2-1.dll"), path, 1024)};
}

// As a program finds it that knows the marker line only.
std::string text_in_file() {
    // Put together here: this file could be the module's.
    const std::string marker =
        "***ZOLT*MODULE*INFO*" + std::string("F70397B5E6FEBE4447157E5A") + "1C9D5E64***\n";
    std::FILE* file = _wfopen(module_path().c_str(), L"rb");
    std::string bytes;
    char buffer[1 << 16];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file))
        bytes.append(buffer, count);
    std::fclose(file);
    const std::size_t start = bytes.find(marker);
    if (start == std::string::npos) return "no marker";
    return bytes.c_str() + start + marker.size();
}

std::string registered_text() {
    tarvmoduleregistry::ModuleInfo info;
    EXPECT_TRUE(tarvmoduleregistry::query_module_info("tarvcore", &info));
    return info.text;
}

// What is said of a second copy, and that copy's information.
std::string report(const std::string& text) {
    return "ModuleRegistry: Module tarvcore is already loaded into this process!\n"
           "This is typically caused by a version or debug/release mismatch between libraries "
           "referenced by this process.\n"
           "Data of module that was already registered:\n" +
           text + "\nData of new module that conflicts:\n" + text + "\n\nAborting...\n";
}

TEST(ModuleInfo, IsInTheFileAndRegistered) {
    const std::string text = text_in_file();
    EXPECT_EQ(registered_text(), text);
    const std::regex layout(
        R"(<ModuleInfo name="tarvcore" type="dll" tool="vc" build="release" arch="x86">
  <FileInfo>
    <Item name="CompanyName">Varnholt, Inc\.</Item>
    <Item name="FileVersion">2\.1\.0\.16</Item>
    <Item name="InternalName">tarvcore</Item>
    <Item name="OriginalFilename">tarvcore-w32r-2-1\.dll</Item>
    <Item name="LegalCopyright">[^<\n]+</Item>
    <Item name="ZOLTBuildMachine">[^<\n]+</Item>
    <Item name="ZOLTBuildName">[^<\n]+</Item>
    <Item name="ZOLTBuildChangelist">[^<\n]+</Item>
    <Item name="ZOLTBuildNum">[^<\n]+</Item>
    <Item name="ZOLTBuildTimestamp">\d{4}-\d\d-\d\d \d\d:\d\d</Item>
  </FileInfo>
</ModuleInfo>
)");
    EXPECT_TRUE(std::regex_match(text, layout)) << text;
}

#if !defined(TARVCORE_STATIC)
// Where Windows' own tools look.
TEST(ModuleInfo, IsInTheVersionResource) {
    const std::wstring path = module_path();
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), nullptr);
    std::vector<char> resource(size);
    ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, size, resource.data()));
    const auto query = [&](const std::wstring& name) {
        void* value = nullptr;
        UINT length;
        EXPECT_TRUE(VerQueryValueW(resource.data(), name.c_str(), &value, &length));
        return value;
    };

    const std::string text = text_in_file();
    const std::regex item("<Item name=\"(\\w+)\">(.*)</Item>");
    int count = 0;
    for (std::sregex_iterator i(text.begin(), text.end(), item), end; i != end; ++i, ++count) {
        const std::string name = (*i)[1], value = (*i)[2];
        const auto* found = static_cast<const wchar_t*>(
            query(L"\\StringFileInfo\\040904b0\\" + std::wstring(name.begin(), name.end())));
        ASSERT_NE(found, nullptr) << name;
        EXPECT_EQ(found, std::wstring(value.begin(), value.end())) << name;
    }
    EXPECT_EQ(count, 10);

    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(query(L"\\"));
    ASSERT_NE(fixed, nullptr);
    EXPECT_EQ(fixed->dwFileVersionMS, DWORD{MAKELONG(1, 2)});
    EXPECT_EQ(fixed->dwFileVersionLS, DWORD{MAKELONG(16, 0)});
}
#endif

// The switch is read and followed in this process, where the name is taken.
TEST(ModuleInfo, StopsWhereASwitchIsMissingOnly) {
    static int stops;
    const struct {
        int (*variable)(const char*, char**);
        int stops;
    } rows[] = {
        {[](const char*, char**) { return 0; }, 1},
        {[](const char*, char** copy) { return *copy = static_cast<char*>(std::calloc(1, 1)), 0; },
         0},
        {[](const char*, char**) { return ENOMEM; }, 0},
    };
    for (const auto& row : rows) {
        stops = 0;
        testing::internal::CaptureStderr();
        tarvcore::impl::register_module({row.variable, [] { ++stops; }});
        EXPECT_EQ(testing::internal::GetCapturedStderr(), report(registered_text()));
        EXPECT_EQ(stops, row.stops) << &row - rows;
    }
}

#if !defined(TARVCORE_STATIC)
// Real copies in a process of their own: see module_info_child.cpp.
TEST(ModuleInfo, TellsASecondCopyFromASecondLoad) {
    const std::wstring path = module_path() + L".module_info.dll";
    ASSERT_TRUE(CopyFileW(module_path().c_str(), path.c_str(), false));
    const std::string told = report(text_in_file());
    const struct {
        const wchar_t* way;
        const char* value;  // of the switch
        unsigned long status;
        const char* output;
        std::string errors;
    } rows[] = {
        {L"both", nullptr, 0x80000003, "", told},
        {L"both", "", 0, "loaded, registered\nremoved\n", told},
        {L"both", "0", 0, "loaded, registered\nremoved\n", told},
        {L"one after the other", nullptr, 0, "loaded, registered\nremoved\n", ""},
    };
    for (const auto& row : rows) {
        SetEnvironmentVariableA(switch_name, row.value);
        const auto outcome = tarv_test::run_program(L"module_info_child.exe", {row.way});
        EXPECT_EQ(outcome.status, row.status) << &row - rows;
        EXPECT_EQ(outcome.output, row.output) << &row - rows;
        EXPECT_EQ(outcome.errors, row.errors) << &row - rows;
    }
    SetEnvironmentVariableA(switch_name, nullptr);
    DeleteFileW(path.c_str());
}

TEST(ModuleInfo, IsRemovedAtTheEndWhateverOtherThreadsWereAt) {
    for (int round = 0; round < 5; ++round) {
        const auto outcome = tarv_test::run_program(L"module_info_child.exe", {L"busy"});
        EXPECT_EQ(outcome.status, 0u);
        EXPECT_EQ(outcome.errors, "");
    }
}
#endif

}  // namespace
