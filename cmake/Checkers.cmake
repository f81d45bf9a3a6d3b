# For TARVCORE_CHECKED.  Compiles all code of this project with the address checker, the undefined
# behaviour checker and the standard library's assertions.
#
#   tarvcore_checkers   what a program links; its code is in tests/checked
target_compile_definitions(tarvcore_options INTERFACE TARVCORE_STATIC _GLIBCXX_ASSERTIONS)

# The shadow's offset is that of address_checker.cpp.  Tests of the shadow in line are fast but bloat
# the code: up to this number of accesses in a function.
target_compile_options(tarvcore_options INTERFACE
    -fno-omit-frame-pointer
    -fsanitize=kernel-address -fasan-shadow-offset=0x20000000
    -fsanitize-address-use-after-scope
    --param=asan-stack=1 --param=asan-globals=1 --param=asan-instrumentation-with-call-threshold=7000
    -fsanitize=undefined,float-cast-overflow -fno-sanitize=vptr)

set(folder ${PROJECT_SOURCE_DIR}/tests/checked)
add_library(tarvcore_checker_objects OBJECT
    ${folder}/address_checker.cpp ${folder}/report.cpp ${folder}/undefined_checker.cpp)
target_link_libraries(tarvcore_checker_objects PRIVATE tarvcore_warnings)
target_compile_options(tarvcore_checker_objects PRIVATE -fno-omit-frame-pointer -fno-builtin)

add_library(tarvcore_checkers INTERFACE)
target_sources(tarvcore_checkers INTERFACE $<TARGET_OBJECTS:tarvcore_checker_objects>)
# Redirection by the linker ends at a DLL's border, so these programs contain all that they use.
# They are not relocated, so that the addresses in a report are those of the file.
target_link_options(tarvcore_checkers INTERFACE -static LINKER:--disable-dynamicbase)
foreach(function malloc calloc realloc free memcpy memmove memset memcmp strlen
        _Unwind_RaiseException _Unwind_Resume_or_Rethrow)
    target_link_options(tarvcore_checkers INTERFACE LINKER:--wrap=${function})
endforeach()
