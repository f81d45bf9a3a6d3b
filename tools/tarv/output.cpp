#include "tools/tarv/output.h"

#include <windows.h>

#include "tarvcore/config.h"
#include "tarvcore/error_exception.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/output.cpp#1 $");

namespace tarv {

Output Output::standard_output() {
    return Output(GetStdHandle(STD_OUTPUT_HANDLE));
}

Output Output::standard_error() {
    return Output(GetStdHandle(STD_ERROR_HANDLE));
}

void Output::flush() {
    // Emptied first: what could not be written is not tried again.
    const std::string bytes = std::exchange(buffer_, std::string());
    for (unsigned done = 0; done < bytes.size();) {
        DWORD written = 0;
        if (!WriteFile(handle_, bytes.data() + done, bytes.size() - done, &written, nullptr)) {
            tarvcore::throw_with_nested_winerror(
                tarvcore::ErrorCode("error.tarv.output", true), "Cannot write the output",
                TARVCORE_LOCATION("tarv::Output::flush()"), GetLastError(), true);
        }
        done += written;
    }
}

}  // namespace tarv
