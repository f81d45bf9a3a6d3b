// Compiler and platform facts that every other file relies on.
#pragma once

#include <climits>

// What cannot be compiled ends here, with what to do: errors further on would not tell.
#if __cplusplus < 202002L
#error tarvcore needs C++20: compile with -std=c++20
#include <-std=c++20>
#elif !defined(__i386__)
#error tarvcore is a 32-bit library: compile with i686-w64-mingw32-g++-posix
#include <i686-w64-mingw32-g++-posix>
#elif !defined(_GLIBCXX_HAS_GTHREADS)
#error tarvcore needs POSIX threads: compile with i686-w64-mingw32-g++-posix
#include <i686-w64-mingw32-g++-posix>
#endif

// Marks what the library exports.  The library itself is compiled with TARVCORE_BUILD; a program
// that contains the library's objects instead of linking the DLL defines TARVCORE_STATIC.
#if defined(TARVCORE_STATIC)
#define TARVCORE_API
#elif defined(TARVCORE_BUILD)
#define TARVCORE_API __declspec(dllexport)
#else
#define TARVCORE_API __declspec(dllimport)
#endif

// Failure paths are kept out of line and away from the code that runs when nothing fails.
#define TARVCORE_COLD [[gnu::cold, gnu::noinline]]

// Accessors that a program calls in its hot loops: expanded even where the optimiser's size budget
// would rather not.
#define TARVCORE_INLINE [[gnu::always_inline]] inline

// A type whose objects may be looked at through a layout-compatible other type.
#define TARVCORE_MAY_ALIAS [[gnu::may_alias]]

// The identification line of a source file: a keyword, the file's path below "//" and its revision.
// Once per source file; `source_file_id` then goes into every SourceLocation made there.
#define TARVCORE_SOURCE_FILE(line)                           \
    namespace {                                              \
    [[maybe_unused]] constexpr char source_file_id[] = line; \
    }

static_assert(CHAR_BIT == 8 && static_cast<char>(-1) < 0, "char is a signed byte");
static_assert(sizeof(int) == 4 && sizeof(long) == 4 && sizeof(void*) == 4, "32-bit x86");
static_assert(sizeof(long long) == 8 && alignof(long long) == 8, "Windows alignment rules");
static_assert(sizeof(wchar_t) == 2, "wide text is UTF-16");
