# tarvcore_options: how all code of this project is compiled.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

add_library(tarvcore_options INTERFACE)
target_include_directories(tarvcore_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_definitions(tarvcore_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
target_compile_options(tarvcore_options INTERFACE
    -Wall -Wextra -Wpedantic -Werror
    -Wcast-align -Wconversion -Wduplicated-cond -Wformat=2 -Wlogical-op -Wnon-virtual-dtor
    -Woverloaded-virtual -Wshadow -Wundef)

if(TARVCORE_COVERAGE)
    target_compile_options(tarvcore_options INTERFACE --coverage)
    target_link_options(tarvcore_options INTERFACE --coverage)
endif()
