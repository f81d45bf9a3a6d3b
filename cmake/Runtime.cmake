# Puts the DLLs that every program here needs beside the programs: the compiler's runtimes, which
# must be shared because exceptions cross the DLLs, and ACE.
#
#   TARVCORE_COMPILER_RUNTIMES   the compiler's
function(tarvcore_link_runtime file)
    get_filename_component(name ${file} NAME)
    file(CREATE_LINK ${file} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name} SYMBOLIC)
endfunction()

file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
set(TARVCORE_COMPILER_RUNTIMES)
foreach(name libgcc_s_dw2-1.dll libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
                    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE
                    COMMAND_ERROR_IS_FATAL ANY)
    if(NOT IS_ABSOLUTE ${file})
        message(FATAL_ERROR "The compiler's runtime ${name} is missing: run scripts/setup.sh")
    endif()
    tarvcore_link_runtime(${file})
    list(APPEND TARVCORE_COMPILER_RUNTIMES ${file})
endforeach()
get_target_property(file ACE::ACE LOCATION)
tarvcore_link_runtime(${file})
