# What `cmake --install` installs, and `cpack` packs: everything that a program needs which uses the
# library, for this compiler, wherever it is unpacked.
#
#   bin/                  the DLLs, the tool, and debug information beside them
#   include/, lib/        headers and import libraries, ours and ACE's
#   lib/cmake/tarvcore/   find_package(tarvcore); lib/pkgconfig/ is the same for pkg-config
#   share/                the manual; a first program
#   LICENSES/, NOTICE.md  what of this is whose, and on which terms
include(CMakePackageConfigHelpers)
set(templates ${PROJECT_SOURCE_DIR}/cmake/package)
set(generated ${PROJECT_BINARY_DIR}/package)

# Programs, libraries, and what debuggers read.
install(TARGETS tarvcore tarvmoduleregistry tarvcore_main EXPORT tarvcoreTargets)
install(TARGETS tarv)
install(FILES ${PROJECT_SOURCE_DIR}/docs/tarv.1 DESTINATION share/man/man1)
foreach(target tarvcore tarvmoduleregistry tarv)
    install(FILES $<TARGET_FILE_DIR:${target}>/$<TARGET_FILE_BASE_NAME:${target}>.debug
                  $<TARGET_FILE_DIR:${target}>/$<TARGET_FILE_BASE_NAME:${target}>.pdb
            DESTINATION bin)
endforeach()
install(FILES $<TARGET_FILE:tarvcore>-gdb.py DESTINATION bin)
install(FILES ${TARVCORE_COMPILER_RUNTIMES} ${TARVCORE_ACE_FOLDER}/bin/ACE.dll DESTINATION bin)
install(FILES ${TARVCORE_ACE_FOLDER}/lib/libACE.dll.a DESTINATION lib)

# Headers.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/tarvcore ${PROJECT_SOURCE_DIR}/tarvmoduleregistry
        DESTINATION include FILES_MATCHING PATTERN "*.h")
install(DIRECTORY ${TARVCORE_ACE_FOLDER}/include/ace DESTINATION include)

# What finds them.
set_target_properties(tarvcore_main PROPERTIES EXPORT_NAME main)
string(REGEX MATCH "^[0-9]+" compiler_major ${CMAKE_CXX_COMPILER_VERSION})
configure_package_config_file(${templates}/tarvcoreConfig.cmake.in ${generated}/tarvcoreConfig.cmake
    INSTALL_DESTINATION lib/cmake/tarvcore NO_CHECK_REQUIRED_COMPONENTS_MACRO)
# The architecture is our own check's business: its message says what to do.
write_basic_package_version_file(${generated}/tarvcoreConfigVersion.cmake
    COMPATIBILITY SameMinorVersion ARCH_INDEPENDENT)
install(FILES ${generated}/tarvcoreConfig.cmake ${generated}/tarvcoreConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/mingw-i686.cmake ${templates}/toolchain.cmake
        DESTINATION lib/cmake/tarvcore)
install(EXPORT tarvcoreTargets NAMESPACE tarvcore:: DESTINATION lib/cmake/tarvcore)
install(DIRECTORY ${TARVCORE_ACE_FOLDER}/lib/cmake/ACE DESTINATION lib/cmake)
foreach(name tarvcore tarvcore-main)
    configure_file(${templates}/${name}.pc.in ${generated}/${name}.pc @ONLY)
    install(FILES ${generated}/${name}.pc DESTINATION lib/pkgconfig)
endforeach()

# Where to begin.  The manual is there where scripts/manual.sh has made it.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/build/manual/html DESTINATION share/doc/tarvcore OPTIONAL)
install(FILES ${PROJECT_SOURCE_DIR}/examples/consumer/CMakeLists.txt
              ${PROJECT_SOURCE_DIR}/examples/consumer/consumer.cpp
        DESTINATION share/tarvcore/consumer)

# What is whose: the texts are those that the machine has beside what they are about.
set(gcc_terms /usr/share/doc/gcc-mingw-w64-base/copyright)
file(READ ${gcc_terms} text)
string(REGEX MATCH "GCC RUNTIME LIBRARY EXCEPTION.*requirements of the license of GCC\\.\n" text "${text}")
if(text STREQUAL "")
    message(FATAL_ERROR "${gcc_terms} does not have the exception for GCC's runtimes")
endif()
file(CONFIGURE OUTPUT ${generated}/GCC-exception-3.1.txt CONTENT "${text}" @ONLY)
function(tarvcore_install_terms file name)
    install(FILES ${file} DESTINATION LICENSES RENAME ${name}.txt)
endfunction()
tarvcore_install_terms(${PROJECT_SOURCE_DIR}/LICENSES/LicenseRef-Proprietary.txt LicenseRef-Proprietary)
tarvcore_install_terms(${TARVCORE_ACE_FOLDER}/share/doc/ACE/COPYING DOC)
tarvcore_install_terms(/usr/share/common-licenses/GPL-3 GPL-3.0-or-later)
tarvcore_install_terms(${generated}/GCC-exception-3.1.txt GCC-exception-3.1)
tarvcore_install_terms(/usr/share/doc/mingw-w64-common/copyright LicenseRef-mingw-w64)
tarvcore_install_terms(/usr/share/doc/libcli11-dev/copyright BSD-3-Clause)
tarvcore_install_terms(/usr/share/doc/nlohmann-json3-dev/copyright MIT)

# Sets OUT to the version of a Debian package.
function(tarvcore_package_version out package)
    execute_process(COMMAND dpkg-query -W -f "\${Version}" ${package}
                    OUTPUT_VARIABLE version COMMAND_ERROR_IS_FATAL ANY)
    set(${out} ${version} PARENT_SCOPE)
endfunction()
file(STRINGS ${TARVCORE_ACE_FOLDER}/include/ace/Version.h line REGEX "define ACE_VERSION ")
string(REGEX MATCH "[0-9.]+" ace_version "${line}")
tarvcore_package_version(gcc_version gcc-mingw-w64-i686-posix-runtime)
tarvcore_package_version(mingw_version mingw-w64-i686-dev)
tarvcore_package_version(cli11_version libcli11-dev)
tarvcore_package_version(json_version nlohmann-json3-dev)
foreach(name README.md NOTICE.md)
    configure_file(${templates}/${name}.in ${generated}/${name} @ONLY)
    install(FILES ${generated}/${name} DESTINATION .)
endforeach()
install(FILES ${templates}/dep5 DESTINATION .reuse)

# The same for programs that look for versions with known faults.
set(components)
function(tarvcore_component name version terms)
    string(REPLACE " " "-" id ${name})
    string(APPEND components "
PackageName: ${name}
SPDXID: SPDXRef-${id}
PackageVersion: ${version}
PackageDownloadLocation: NOASSERTION
FilesAnalyzed: false
PackageLicenseConcluded: ${terms}
PackageLicenseDeclared: ${terms}
PackageCopyrightText: NOASSERTION
Relationship: SPDXRef-DOCUMENT describes SPDXRef-${id}
")
    set(components "${components}" PARENT_SCOPE)
endfunction()
tarvcore_component(tarvcore ${PROJECT_VERSION} LicenseRef-Proprietary)
tarvcore_component(ACE ${ace_version} DOC)
tarvcore_component("GCC runtimes" ${gcc_version} "GPL-3.0-or-later WITH GCC-exception-3.1")
tarvcore_component(mingw-w64 ${mingw_version} LicenseRef-mingw-w64)
tarvcore_component(CLI11 ${cli11_version} BSD-3-Clause)
tarvcore_component(nlohmann-json ${json_version} MIT)
tarvcore_component("Doxygen scripts" NOASSERTION MIT)
file(CONFIGURE OUTPUT ${generated}/components.spdx CONTENT "${components}" @ONLY)

# The ZIP.
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME tarvcore)
set(CPACK_PACKAGE_FILE_NAME tarvcore-${PROJECT_VERSION}-w32)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/package)
set(CPACK_PRE_BUILD_SCRIPTS ${templates}/bill_of_materials.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${templates}/normalize.cmake)
set(CPACK_TARVCORE_COMPONENTS ${generated}/components.spdx)
set(CPACK_VERBATIM_VARIABLES TRUE)
include(CPack)
