# header_checks: every public header compiles alone, and two units that include all of them link into
# one program.  Built on demand.
set(folder ${PROJECT_BINARY_DIR}/header-checks)
set(sources)
foreach(header IN LISTS TARVCORE_PUBLIC_HEADERS)
    string(REGEX REPLACE "[/.]" "_" name ${header})
    # Twice: it must bear that too.
    file(GENERATE OUTPUT ${folder}/${name}.cpp
         CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
    list(APPEND sources ${folder}/${name}.cpp)
endforeach()
add_library(headers_alone OBJECT EXCLUDE_FROM_ALL ${sources})
target_link_libraries(headers_alone PRIVATE tarvcore_options tarvcore::tarvcore)

set(all "#include \"tarvcore/tarvcore.h\"\n")
file(GENERATE OUTPUT ${folder}/unit_1.cpp CONTENT "${all}int main() {}\n")
# After the headers of Windows as they are without the macros that make them smaller; the sockets go
# first, as ACE has them.
set(windows "#undef NOMINMAX\n#undef WIN32_LEAN_AND_MEAN\n#include <winsock2.h>\n#include <windows.h>\n")
file(GENERATE OUTPUT ${folder}/unit_2.cpp CONTENT "${windows}${all}")
add_executable(headers_together EXCLUDE_FROM_ALL ${folder}/unit_1.cpp ${folder}/unit_2.cpp)
target_link_libraries(headers_together PRIVATE tarvcore_options tarvcore::tarvcore)
set_target_properties(headers_together PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${folder})

add_custom_target(header_checks DEPENDS headers_alone headers_together)
