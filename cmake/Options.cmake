# How the code of this project is compiled:
#
#   tarvcore_warnings   the flags for all of it
#   tarvcore_options    the same, and what a tree's kind adds: the checkers, the counting of coverage
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

add_library(tarvcore_warnings INTERFACE)
target_include_directories(tarvcore_warnings INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_definitions(tarvcore_warnings INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
target_compile_options(tarvcore_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    -Wcast-align -Wconversion -Wduplicated-cond -Wformat=2 -Wlogical-op -Wnon-virtual-dtor
    -Woverloaded-virtual -Wshadow -Wundef)
# What Wine's debugging-help library can read; stack traces get their names from it.
target_compile_options(tarvcore_warnings INTERFACE $<$<CONFIG:RelWithDebInfo,Debug>:-gdwarf-4>)
# Where this tree and ACE lie gets into nothing that is delivered: the later of two that fit counts.
set(TARVCORE_PREFIX_MAPS
    ${PROJECT_SOURCE_DIR}=. ${PROJECT_BINARY_DIR}=./build ${TARVCORE_ACE_FOLDER}=./ace)
foreach(map IN LISTS TARVCORE_PREFIX_MAPS)
    target_compile_options(tarvcore_warnings INTERFACE
        $<$<CONFIG:RelWithDebInfo>:-ffile-prefix-map=${map}>)
endforeach()

add_library(tarvcore_options INTERFACE)
target_link_libraries(tarvcore_options INTERFACE tarvcore_warnings)
# The file's time of linking would make every build another one.
target_link_options(tarvcore_options INTERFACE LINKER:--no-insert-timestamp)
if(TARVCORE_CHECKED)
    include(Checkers)
endif()
if(TARVCORE_COVERAGE)
    include(Coverage)
endif()
