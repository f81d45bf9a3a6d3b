# cmake -P: what the build says of itself gets into the module's information, and nothing that would
# spoil it.  Faults to catch: XML broken by a value; a source of values that is not asked, or in the
# wrong order; a value that another run or machine would not have.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/../cmake/ModuleInfo.cmake)

# The attempts below that must fail, each in a process of its own.
if(DEFINED OUT)
    tarvcore_module_info_block(${OUT})
    return()
endif()

set(out ${CMAKE_CURRENT_BINARY_DIR}/module_info_values.cpp)

function(expect_items expected)
    tarvcore_module_info_block(${out})
    file(READ ${out} text)
    string(REGEX REPLACE ".*(    <Item name=\"ZOLTBuildMachine.*)  </FileInfo>.*" "\\1" text "${text}")
    string(REGEX REPLACE "    <Item name=\"ZOLTBuild([A-Za-z]+)\">([^\n]*)</Item>\n" "\\1: \\2\n"
           text "${text}")
    if(NOT text STREQUAL expected)
        message(FATAL_ERROR "The items are\n${text}instead of\n${expected}")
    endif()
endfunction()

foreach(name MACHINE NAME CHANGELIST NUM TIMESTAMP)
    unset(ENV{TARV_BUILD_${name}})
endforeach()
unset(ENV{SOURCE_DATE_EPOCH})
expect_items([[
Machine: unknown
Name: local
Changelist: 0
Num: 0
Timestamp: 1970-01-01 00:00
]])

set(ENV{TARV_BUILD_MACHINE} "a & b &amp; <c>")
set(ENV{TARV_BUILD_NAME} [[)" 'd'; \n\ @NAME@ ${NAME}]])
set(ENV{TARV_BUILD_CHANGELIST} "not this one")
set(TARV_BUILD_CHANGELIST 1234 CACHE STRING "" FORCE)
set(ENV{SOURCE_DATE_EPOCH} 1405516980)
expect_items([[
Machine: a &amp; b &amp;amp; &lt;c&gt;
Name: )&quot; &apos;d&apos;; \n\ @NAME@ ${NAME}
Changelist: 1234
Num: 0
Timestamp: 2014-07-16 13:23
]])

# Not ASCII; would make a line of its own; not the shape of a time.
foreach(bad "NAME=ü" "NUM=1\n2" "TIMESTAMP=2014-07-16T15:00")
    execute_process(COMMAND ${CMAKE_COMMAND} -E env "TARV_BUILD_${bad}"
                            ${CMAKE_COMMAND} -D OUT=${out} -P ${CMAKE_CURRENT_LIST_FILE}
                    RESULT_VARIABLE status ERROR_VARIABLE errors)
    if(status EQUAL 0 OR NOT errors MATCHES "TARV_BUILD_[A-Z]+ cannot be")
        message(FATAL_ERROR "\"${bad}\" is taken, or refused without a word: ${errors}")
    endif()
endforeach()
