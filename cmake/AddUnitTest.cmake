# valtrona_add_unit_tests(<subsystem> UNITS <unit>... LIBS <targets>...
#                         [SOURCES <shared sources>...] [GUI])
#
# One GoogleTest executable per unit, built from tests/<subsystem>/<unit>_test.cpp
# (plus the shared sources) and named <subsystem>_<unit>_test. Each is
# registered with CTest under that name, runs on Qt's offscreen platform, and
# joins the `check` target. GUI links the widget test main, else the core one.
find_package(GTest REQUIRED)

if(NOT TARGET check)
    add_custom_target(check
        COMMAND ${CMAKE_CTEST_COMMAND} --output-on-failure
        WORKING_DIRECTORY ${CMAKE_BINARY_DIR}
        USES_TERMINAL)
endif()

function(valtrona_add_unit_tests subsystem)
    cmake_parse_arguments(ARG "GUI" "" "UNITS;LIBS;SOURCES" ${ARGN})
    if(ARG_GUI)
        set(test_main valtrona_test_main_gui Qt6::Test)
    else()
        set(test_main valtrona_test_main_core)
    endif()
    foreach(unit IN LISTS ARG_UNITS)
        set(name ${subsystem}_${unit}_test)
        add_executable(${name} ${unit}_test.cpp ${ARG_SOURCES})
        target_link_libraries(${name} PRIVATE
            valtrona_config valtrona_test_support GTest::gtest GTest::gmock ${ARG_LIBS} ${test_main})
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES
            TIMEOUT 300
            ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;VALTRONA_TEST_DATA=${PROJECT_SOURCE_DIR}/tests/data")
        add_dependencies(check ${name})
    endforeach()
endfunction()
