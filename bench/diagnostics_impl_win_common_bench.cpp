#include "tarvcore/diagnostics_impl_win_common.h"

#include "bench/support/row.h"
#include "bench/topics.h"
#include "tarvcore/diagnostic_trace.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/user_interface.h"
//
#include <windows.h>

namespace tarv_bench {
namespace {

using namespace tarvcore;

int WINAPI ignore(HWND, const wchar_t*, const wchar_t*, UINT) {
    return IDIGNORE;
}
SHORT WINAPI held(int) {
    return SHORT{-1};
}

const impl::UserInterfaceCalls ignores_always = {[](const char* name) -> void* {
    return *name == 'M' ? reinterpret_cast<void*>(ignore) : reinterpret_cast<void*>(held);
}};

bool fail() {
    return report_failed_debug_assert("file.cpp", 1, "f()", "a == b", nullptr);
}

void ignored(benchmark::State& state) {
    const auto* const system_calls = impl::user_interface_calls.exchange(&ignores_always);
    set_diagnostic_trace_handlers(
        nullptr, nullptr,
        [](const SourceLocation&, const SourceString&, const char*, unsigned) { return false; });
    require(fail(), "an ignored assertion");
    impl::user_interface_calls = nullptr;  // nobody is asked any more
    measure(state, [] { keep(fail()); });
    impl::user_interface_calls = system_calls;
    set_diagnostic_trace_handlers(nullptr, nullptr, nullptr);
}

void thrown(benchmark::State& state) {
    SetEnvironmentVariableW(L"ZOLT_ASSERT_THROW_ALWAYS", L"1");
    measure(state, [] {
        try {
            fail();
        } catch (const ErrorException& e) {
            keep(e);
        }
    });
    SetEnvironmentVariableW(L"ZOLT_ASSERT_THROW_ALWAYS", nullptr);
}

}  // namespace

void add_diagnostics_impl_win_common_rows() {
    add_row("assertion: ignored always, not traced", "5000 ns", {{"tarvcore", ignored}});
    add_row("assertion: raised", "", {{"tarvcore", thrown}});
}

}  // namespace tarv_bench
