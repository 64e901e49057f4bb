# velantor_add_test(<name> SOURCES <file>... LIBRARIES <target>... [LABELS ...])
#
# One test program per class. Every test owns its home: HOME and the XDG folders lie in a folder of
# the build tree that belongs to this test alone, and windows are drawn off screen.
function(velantor_add_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} Qt5::Test)
    target_compile_definitions(${name} PRIVATE
        VELANTOR_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        VELANTOR_BUNDLE_MEMBERS="${PROJECT_SOURCE_DIR}/resources/bundle")
    add_test(NAME ${name} COMMAND ${name})
    velantor_test_environment(${name})
    # Only what hangs meets this limit: with sanitizers, on a busy machine, a test that awaits many
    # of the uploader's time-outs takes several times its usual minute.
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 LABELS "${arg_LABELS}")
endfunction()

# Gives the test <name> a home of its own and an off-screen display. Its time is limited by ctest alone:
# QtTest would end a program after five minutes, and slow machines need more for the longest.
function(velantor_test_environment name)
    set(home ${PROJECT_BINARY_DIR}/homes/${name})
    file(MAKE_DIRECTORY ${home}/run)
    file(CHMOD ${home}/run PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    set_tests_properties(${name} PROPERTIES ENVIRONMENT
        "HOME=${home};XDG_DATA_HOME=${home}/data;XDG_CONFIG_HOME=${home}/config;XDG_RUNTIME_DIR=${home}/run;QT_QPA_PLATFORM=offscreen;QT_LOGGING_RULES=qt.qpa.*=false;ASAN_OPTIONS=detect_leaks=0;QTEST_FUNCTION_TIMEOUT=1200000")
endfunction()
