# ACE::ACE (the DLL) and ACE::ACE_static, from the cache that scripts/build-library.sh fills.
#
#   TARVCORE_ACE_FOLDER   where they are installed
execute_process(COMMAND ${PROJECT_SOURCE_DIR}/scripts/library-location.sh ace
                OUTPUT_VARIABLE TARVCORE_ACE_FOLDER OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
if(NOT EXISTS ${TARVCORE_ACE_FOLDER})
    message(FATAL_ERROR "ACE is not built for this target yet: run scripts/setup.sh")
endif()
# As the compiler names it in debug information.
file(REAL_PATH ${TARVCORE_ACE_FOLDER} TARVCORE_ACE_FOLDER)
foreach(name ACE ACE_static)
    unset(${name}_DIR CACHE)  # that of an earlier configuration of ACE
    find_package(${name} CONFIG REQUIRED
                 PATHS ${TARVCORE_ACE_FOLDER} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
endforeach()
