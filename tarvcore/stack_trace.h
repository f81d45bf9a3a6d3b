// Which calls led to a place.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tarvcore/config.h"

namespace tarvcore {

// A call, by the address that it returns to.  Names are in UTF-8, and empty where they are not
// known: those of functions, files and lines come from debug information, which the platform's
// debugging-help library looks for beside the module (that has only the functions if it is a PDB of
// the GNU linker; under Wine it reads DWARF up to version 4, also split off).
struct StackFrame {
    const void* address = nullptr;  // that the call returns to
    std::string module;             // its file, without folder
    std::string function;           // C++ names are demangled
    unsigned long offset = 0;       // of the address: within the function, else within the module
    std::string file;               // of the source, as the compiler was given it
    unsigned long line = 0;         // 0 where it is not known
};

// The calls that led here, innermost first: the function that calls this one is the first.  At most
// 62.  Code without unwind information is followed as far as it keeps frame pointers.
TARVCORE_API std::vector<StackFrame> current_stack_trace();

// "ADDRESS MODULE!FUNCTION+OFFSET [FILE @ LINE]", as far as that is known.
TARVCORE_API std::ostream& operator<<(std::ostream& os, const StackFrame& frame);

}  // namespace tarvcore
