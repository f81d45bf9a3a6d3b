# Run by cpack over the files that it is about to pack: writes tarvcore.spdx, which has every file of
# them, what it is under, and its checksum; and whose works are in them, with their versions.  Fails
# where a file's terms are not known.
set(files ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
execute_process(COMMAND reuse --root ${files} lint OUTPUT_VARIABLE report RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "cmake/package/dep5 does not have the terms of all files:\n${report}")
endif()
execute_process(COMMAND reuse --root ${files} spdx OUTPUT_VARIABLE bill COMMAND_ERROR_IS_FATAL ANY)
# When it was made and a random number would make every build another one.
string(TIMESTAMP created "%Y-%m-%dT%H:%M:%SZ" UTC)
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    set(created "1970-01-01T00:00:00Z")
endif()
string(REGEX REPLACE "\nCreated: [^\n]*" "\nCreated: ${created}" bill "${bill}")
string(REGEX REPLACE "(\nDocumentNamespace: [^\n]*/)[^\n]*" "\\1${CPACK_PACKAGE_FILE_NAME}" bill "${bill}")
file(READ ${CPACK_TARVCORE_COMPONENTS} components)
file(WRITE ${files}/tarvcore.spdx "${bill}" "${components}")
