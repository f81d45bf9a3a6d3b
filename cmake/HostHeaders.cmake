# tarvcore_host_headers(TARGET NAME...): lets TARGET include header-only libraries that Debian
# packages install in /usr/include.  That folder itself is no place for the cross compiler to look:
# it holds the host's C library too.  So the tree gets a folder of links to just these names.
function(tarvcore_host_headers target)
    set(folder ${PROJECT_BINARY_DIR}/host-headers)
    file(MAKE_DIRECTORY ${folder})
    foreach(name IN LISTS ARGN)
        if(NOT EXISTS /usr/include/${name})
            message(FATAL_ERROR "/usr/include/${name} is missing, which ${target} needs: "
                                "run scripts/setup.sh with the groups of scripts/packages.txt")
        endif()
        file(CREATE_LINK /usr/include/${name} ${folder}/${name} SYMBOLIC)
    endforeach()
    target_include_directories(${target} SYSTEM PRIVATE ${folder})
endfunction()
