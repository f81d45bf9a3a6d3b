// What people see when something goes wrong: real reports, of failures made on purpose.
#include <CLI/CLI.hpp>

#include <cstdlib>
#include <memory>
#include <string>

#include "tarvcore/config.h"
#include "tarvcore/diagnostics_impl_win_common.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/terminate_handler.h"
#include "tools/tarv/families.h"
//
#include <windows.h>

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/demo_verbs.cpp#1 $");

namespace tarv {
namespace {

class AssertVerb : public Verb {
public:
    AssertVerb()
        : Verb({"assert", "", "A failed assertion, as an exception or as a message box",
                "The exception is what ZOLT_ASSERT_THROW_ALWAYS asks for, where nobody sits to\n"
                "answer. The box needs a display, and waits for an answer.\n",
                "$ tarv demo assert\n"
                "The program catches:\n"
                "\u2026\n"}) {}

    bool has_json() const override { return false; }

    void add_options(CLI::App& app) override { app.add_flag("--box", asks_, "Show the box"); }

    bool run(const Request&, Output& output, Output&) override {
        SetEnvironmentVariableW(L"ZOLT_ASSERT_THROW_ALWAYS", asks_ ? nullptr : L"1");
        constexpr unsigned line = __LINE__ + 2;
        try {
            const bool goes_on = tarvcore::report_failed_debug_assert(
                "tools/tarv/demo_verbs.cpp", line, "tarv::AssertVerb::run()", "2 + 2 == 5",
                "A demonstration.");
            output.write(goes_on ? "The program goes on.\n" : "The program stops in a debugger.\n");
        } catch (const tarvcore::ErrorException& e) {
            output.write("The program catches:\n" + std::string(e.what()) + '\n');
        }
        return true;
    }

private:
    bool asks_ = false;
};

class CrashVerb : public Verb {
public:
    CrashVerb()
        : Verb({"crash", "", "A crash, its report and its memory dump",
                "The dump goes below the folder ZOLT_TRACE_ROOT, or to the one for temporary\n"
                "files. The exit status is 3, that of aborted programs.\n",
                "$ tarv demo crash\n"
                "Writing to address 0x10.  The report follows on standard error, and takes a few\n"
                "\u2026\n"
                "2> \u2026\n"
                "[3]\n"}) {}

    bool has_json() const override { return false; }

    bool run(const Request&, Output& output, Output&) override {
        output.write(
            "Writing to address 0x10.  The report follows on standard error, and takes a few\n"
            "seconds.  A debugger reads the dump that it names:\n"
            "\n"
            "    lldb --core FILE          then: bt\n"
            "    windbg -z FILE            then: .ecxr; k\n");
        output.flush();
        const tarvcore::ScopedDiagnosticSignalHandler handler;
        crash();
        return true;
    }

private:
    [[gnu::noinline]] static void crash() {
        int* volatile const nowhere = reinterpret_cast<int*>(0x10);
        *nowhere = 1;
    }
};

}  // namespace

Verbs demo_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<AssertVerb>());
    verbs.push_back(std::make_unique<CrashVerb>());
    return verbs;
}

}  // namespace tarv
