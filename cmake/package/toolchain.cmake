# The toolchain file of programs that use this package: the compiler that it is for, and itself as a
# place where find_package looks.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-i686.cmake)
get_filename_component(package ${CMAKE_CURRENT_LIST_DIR}/../../.. ABSOLUTE)
list(APPEND CMAKE_FIND_ROOT_PATH ${package})
