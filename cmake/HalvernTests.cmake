# halvern_tests(<area> SOURCES <FooTest.cpp...> [HELPERS <sources...>] LIBRARIES <targets...> [LABELS <labels...>])
#
# One program per area, one CTest entry per source file: FooTest.cpp holds the test suite FooTest, which
# runs as <area>.FooTest. Programs that link Qt get the main of tests/support/QtMain.cpp.
find_package(GTest REQUIRED)

function(halvern_tests area)
    cmake_parse_arguments(T "" "TIMEOUT" "SOURCES;HELPERS;LIBRARIES;LABELS" ${ARGN})
    if(NOT T_TIMEOUT)
        set(T_TIMEOUT 300)
    endif()
    set(program test_${area})
    halvern_program(${program} ${T_SOURCES} ${T_HELPERS})
    target_link_libraries(${program} PRIVATE ${T_LIBRARIES} GTest::gtest GTest::gmock)
    target_compile_options(${program} PRIVATE -O1) # tests are compiled more often than they run
    foreach(source ${T_SOURCES})
        get_filename_component(suite ${source} NAME_WE)
        add_test(NAME ${area}.${suite} COMMAND ${program} --gtest_filter=${suite}.*:*/${suite}.*
                 WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
        # A mistyped string connection only prints this line.
        set_tests_properties(${area}.${suite} PROPERTIES
            LABELS "${area};${T_LABELS}"
            TIMEOUT ${T_TIMEOUT}
            FAIL_REGULAR_EXPRESSION "QObject::(dis)?connect: ")
    endforeach()
endfunction()
