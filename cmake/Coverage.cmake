# For TARVCORE_COVERAGE.  Counts what of the code the tests reach.
#
#   tarvcore_count_to_the_end(MODULE)   counts what a DLL or program does after its end has begun, too

# What is expanded wherever it is called would count as one function that goes all ways everywhere.
target_compile_definitions(tarvcore_options INTERFACE always_inline=unused)
target_compile_options(tarvcore_options INTERFACE --coverage)
target_link_options(tarvcore_options INTERFACE --coverage)

add_library(tarvcore_counts_at_end OBJECT
    ${PROJECT_SOURCE_DIR}/tests/coverage/counts_at_end.cpp)
target_link_libraries(tarvcore_counts_at_end PRIVATE tarvcore_warnings)

function(tarvcore_count_to_the_end module)
    target_sources(${module} PRIVATE $<TARGET_OBJECTS:tarvcore_counts_at_end>)
    target_link_options(${module} PRIVATE
        LINKER:--wrap=__gcov_exit LINKER:--wrap=raise LINKER:--wrap=_imp__TerminateProcess@8)
endfunction()
