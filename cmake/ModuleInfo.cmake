# What files say of their build.
#
#   tarvcore_module_info_block(OUT)              writes the source OUT with the module's information
#   tarvcore_version_info(TARGET KIND ABOUT)     gives a program (KIND is VFT_APP) or DLL (VFT_DLL) a
#                                                version resource, which says the same
#
# The build's values are those of the cache variables TARV_BUILD_..., else of the environment variables
# of the same names; the time is also that of SOURCE_DATE_EPOCH, in UTC.  All others are neutral, so
# that two builds of one commit say the same, wherever they are made.
set(module_info_template ${CMAKE_CURRENT_LIST_DIR}/../tarvcore/module_info_block.cpp.in)
set(version_info_template ${CMAKE_CURRENT_LIST_DIR}/version_info.rc.in)

set(TARVCORE_MAKER "Varnholt, Inc.")
set(TARVCORE_COPYRIGHT "Copyright (C) ${TARVCORE_MAKER} All rights reserved.")

# Sets OUT to a value.
function(tarvcore_build_value out default shape)
    set(name TARV_BUILD_${out})
    set(${name} "" CACHE STRING "For the module's information (default: ${default})")
    set(value "${${name}}")
    if(value STREQUAL "")
        set(value "$ENV{${name}}")
    endif()
    if(value STREQUAL "")
        set(value "${default}")
    endif()
    if(NOT value MATCHES "^(${shape})$")
        message(FATAL_ERROR "${name} cannot be \"${value}\": it must match ${shape}")
    endif()
    set(${out} "${value}" PARENT_SCOPE)
endfunction()

# Sets MACHINE, NAME, CHANGELIST, NUM and TIMESTAMP.
macro(tarvcore_build_values)
    set(printable "[ -~]+")
    set(day "[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]")
    set(hour "[0-9][0-9]:[0-9][0-9]")
    set(time "1970-01-01 00:00")
    if(DEFINED ENV{SOURCE_DATE_EPOCH})
        string(TIMESTAMP time "%Y-%m-%d %H:%M" UTC)
    endif()
    tarvcore_build_value(MACHINE "unknown" "${printable}")
    tarvcore_build_value(NAME "local" "${printable}")
    tarvcore_build_value(CHANGELIST "0" "${printable}")
    tarvcore_build_value(NUM "0" "${printable}")
    tarvcore_build_value(TIMESTAMP "${time}" "${day} ${hour}")
endmacro()

function(tarvcore_module_info_block out)
    tarvcore_build_values()
    # As XML has it between an element's tags.
    foreach(name MACHINE NAME CHANGELIST NUM TIMESTAMP)
        string(REPLACE "&" "&amp;" ${name} "${${name}}")
        string(REPLACE "<" "&lt;" ${name} "${${name}}")
        string(REPLACE ">" "&gt;" ${name} "${${name}}")
        string(REPLACE "\"" "&quot;" ${name} "${${name}}")
        string(REPLACE "'" "&apos;" ${name} "${${name}}")
    endforeach()
    configure_file(${module_info_template} ${out} @ONLY)
endfunction()

function(tarvcore_version_info target kind about)
    # The checkers' tree has no DLL, and would have more than one resource in a program.
    if(TARVCORE_CHECKED)
        return()
    endif()
    tarvcore_build_values()
    # As a resource script has it between quotation marks.
    foreach(name MACHINE NAME CHANGELIST NUM TIMESTAMP)
        string(REPLACE "\\" "\\\\" ${name} "${${name}}")
        string(REPLACE "\"" "\"\"" ${name} "${${name}}")
    endforeach()
    string(REPLACE "." "," numbers ${PROJECT_VERSION})
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
    get_target_property(file ${target} RUNTIME_OUTPUT_NAME)
    if(NOT file)
        set(file ${target})
    endif()
    if(kind STREQUAL "VFT_DLL")
        string(APPEND file .dll)
    else()
        string(APPEND file .exe)
    endif()
    configure_file(${version_info_template} ${script} @ONLY)
    # By itself: the compiler's options are none for resources.
    add_library(${target}_version OBJECT ${script})
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_version>)
endfunction()
