# Every test of the suite runs with TMPDIR set to the suite's own folder, between two tests of
# tests/check_leftovers.py: suite.start makes the folder, suite.no-leftovers runs after every other
# test (a fixture's clean-up waits for all the tests that require it, also under ctest -j) and
# fails when the folder is not empty or a process that carries it still runs.
#
# The folder is named after the build tree, so that suites of other builds on the machine, running
# at the same time, neither see nor disturb it. It is in $TMPDIR when that is set, else on /dev/shm
# where the configuring user may write there: the fuzz replays make and remove a root per input,
# which on a disk takes about 40 times as long (ext4 flushes a rewritten file when it is closed).
execute_process(COMMAND test -d /dev/shm -a -w /dev/shm RESULT_VARIABLE no_shm)
if(DEFINED ENV{TMPDIR} AND IS_DIRECTORY "$ENV{TMPDIR}")
    set(suite_base "$ENV{TMPDIR}")
elseif(no_shm EQUAL 0)
    set(suite_base /dev/shm)
else()
    set(suite_base /tmp)
endif()
string(MD5 build_hash "${PROJECT_BINARY_DIR}")
string(SUBSTRING "${build_hash}" 0 8 build_hash)
set(SYSCTRL_SUITE_TMPDIR "${suite_base}/sysctrl-suite.${build_hash}")
# For gtest_discover_tests(... PROPERTIES ${SYSCTRL_TEST_PROPERTIES}).
set(SYSCTRL_TEST_PROPERTIES FIXTURES_REQUIRED sysctrl-suite ENVIRONMENT TMPDIR=${SYSCTRL_SUITE_TMPDIR})

# Puts every test added so far in the calling directory into the suite. Call it at the end of each
# CMakeLists.txt that adds tests.
function(sysctrl_suite_tests)
    get_property(tests DIRECTORY PROPERTY TESTS)
    foreach(test IN LISTS tests)
        if(NOT test MATCHES "^suite\\.")
            set_property(TEST ${test} APPEND PROPERTY FIXTURES_REQUIRED sysctrl-suite)
            set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT TMPDIR=${SYSCTRL_SUITE_TMPDIR})
        endif()
    endforeach()
endfunction()
