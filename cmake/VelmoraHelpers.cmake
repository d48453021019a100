# velmora_add_test(NAME sources... LIBS libs...)
# One CTest entry per test class. Each test gets its own home, data and config
# folders so that parallel runs never share preferences or logs, runs on the
# offscreen platform, in UTC, with a fixed locale.
function(velmora_add_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE Qt6::Test ${ARG_LIBS})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/support)
    set(home ${CMAKE_BINARY_DIR}/test-homes/${name})
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;TZ=UTC;LANG=C.UTF-8;LC_ALL=C.UTF-8;HOME=${home};XDG_DATA_HOME=${home}/data;XDG_CONFIG_HOME=${home}/config;XDG_RUNTIME_DIR=${home}/run;VELMORA_CONFIG_SERVER="
        FIXTURES_REQUIRED "")
    add_custom_command(TARGET ${name} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E make_directory ${home}/run
        COMMAND chmod 700 ${home}/run)
endfunction()
