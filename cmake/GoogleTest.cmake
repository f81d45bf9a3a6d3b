# gtest_main: GoogleTest for the target, from the source that its Debian package holds.
set(googletest /usr/src/googletest/googletest)
if(NOT EXISTS ${googletest})
    message(FATAL_ERROR "GoogleTest's source is missing: run scripts/setup.sh")
endif()
add_library(gtest_main STATIC ${googletest}/src/gtest-all.cc ${googletest}/src/gtest_main.cc)
target_include_directories(gtest_main SYSTEM PUBLIC ${googletest}/include PRIVATE ${googletest})
target_compile_options(gtest_main PRIVATE -w -g0)
