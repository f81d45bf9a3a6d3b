# tarvcore_split_debug(TARGET): puts the debug information of a program or DLL beside it, for two
# kinds of debuggers.
#
#   NAME.debug   DWARF, to which the file has a debug link
#   NAME.pdb     the names of functions, as the linker has them
function(tarvcore_split_debug target)
    # The trees for checks and coverage keep it where it is.
    if(NOT CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo")
        return()
    endif()
    get_target_property(name ${target} RUNTIME_OUTPUT_NAME)
    if(NOT name)
        set(name ${target})
    endif()
    target_link_options(${target} PRIVATE LINKER:--pdb=)
    # Each of these writes the time into the file, and no two builds would be alike.
    set(without_time ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0)
    add_custom_command(TARGET ${target} POST_BUILD
        # The linker leaves it where it was called.
        COMMAND ${CMAKE_COMMAND} -E rename ${PROJECT_BINARY_DIR}/${name}.pdb ${name}.pdb
        COMMAND ${PROJECT_SOURCE_DIR}/scripts/normalize_pdb.py ${name}.pdb ${TARVCORE_PREFIX_MAPS}
        COMMAND ${without_time} ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE_NAME:${target}>
                ${name}.debug
        COMMAND ${without_time} ${CMAKE_STRIP} --strip-debug $<TARGET_FILE_NAME:${target}>
        COMMAND ${without_time} ${CMAKE_OBJCOPY} --add-gnu-debuglink=${name}.debug
                $<TARGET_FILE_NAME:${target}>
        WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
        VERBATIM)
endfunction()
