// How the checkers tell what they found.
#pragma once

namespace checked {

// The exit status of a process that a checker has ended.
constexpr unsigned kExitStatus = 99;

// Writes the text, the calls that led here and the command that shows their lines on standard
// error, and ends the process.
[[noreturn, gnu::noinline]] void report(const char* text);

}  // namespace checked
