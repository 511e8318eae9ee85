# valtrona_add_unit_test(<name> SOURCES <files...> LIBS <targets...>)
#
# One GoogleTest executable per unit. It is registered with CTest under its
# own name, runs on Qt's offscreen platform, and joins the `check` target.
find_package(GTest REQUIRED)

if(NOT TARGET check)
    add_custom_target(check
        COMMAND ${CMAKE_CTEST_COMMAND} --output-on-failure
        WORKING_DIRECTORY ${CMAKE_BINARY_DIR}
        USES_TERMINAL)
endif()

function(valtrona_add_unit_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE
        valtrona_config valtrona_test_support GTest::gtest GTest::gmock ${ARG_LIBS})
    add_test(NAME ${name} COMMAND ${name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;VALTRONA_TEST_DATA=${PROJECT_SOURCE_DIR}/tests/data")
    add_dependencies(check ${name})
endfunction()
