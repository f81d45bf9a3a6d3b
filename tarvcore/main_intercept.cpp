#include "tarvcore/main_intercept.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <exception>
#include <string>
#include <vector>

#include "tarvcore/diagnostics_impl.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/impl/trace_line.h"
#include "tarvcore/impl/unicode_kernels.h"
#include "tarvcore/memory_dump.h"
#include "tarvcore/terminate_handler.h"

TARVCORE_SOURCE_FILE("$Id: //tarvcore/main_intercept.cpp#1 $");

namespace tarvcore {
namespace {

constexpr LiteralLocation where = TARVCORE_LOCATION("tarvcore::intercept_main()");

void trace_escaped(const char* text) {
    impl::write_diagnostic_trace(where, "Exception left the main function: {}",
                                 impl::TraceTexts().add(text));
}

}  // namespace

int intercept_main(int (*program_main)(int argc, char** argv), int argc,
                   const wchar_t* const* argv) {
    const ScopedDiagnosticSignalHandler handler;
    preinitialize_diagnostics_libraries();
    try {
        std::vector<std::string> arguments(static_cast<std::size_t>(argc));
        std::transform(argv, argv + argc, arguments.begin(), [](const wchar_t* argument) {
            return impl::utf16_to_utf8_replacing(argument, std::wcslen(argument), '?');
        });
        std::vector<char*> pointers(arguments.size() + 1);  // and the null pointer at the end
        std::transform(arguments.begin(), arguments.end(), pointers.begin(),
                       [](std::string& argument) { return argument.data(); });
        return program_main(argc, pointers.data());
    } catch (const ErrorException& error) {
        trace_escaped(error.what());
    } catch (const std::exception& error) {
        trace_escaped(error.what());
    } catch (...) {
        create_dump_and_trace_anonymous_exception(where);
    }
    return EXIT_FAILURE;
}

}  // namespace tarvcore
