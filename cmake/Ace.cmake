# ACE::ACE (the DLL) and ACE::ACE_static, from the cache that scripts/build-library.sh fills.
execute_process(COMMAND ${PROJECT_SOURCE_DIR}/scripts/library-location.sh ace
                OUTPUT_VARIABLE ace_location OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
if(NOT EXISTS ${ace_location})
    message(FATAL_ERROR "ACE is not built for this target yet: run scripts/setup.sh")
endif()
find_package(ACE CONFIG REQUIRED PATHS ${ace_location} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
