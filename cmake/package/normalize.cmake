# Run by cpack over the ZIP that it has made: order, owners and times of the files in it become those
# of every other build, the times SOURCE_DATE_EPOCH or the earliest that a ZIP can have.
set(time 0)
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    set(time $ENV{SOURCE_DATE_EPOCH})
endif()
set(ENV{TZ} UTC)
foreach(file IN LISTS CPACK_PACKAGE_FILES)
    execute_process(COMMAND strip-nondeterminism --type zip --timestamp ${time} ${file}
                    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
