# Tests on the host: the library above the seam, linked with the simulated Windows.

find_package(Threads REQUIRED)

set(QUASTEL_GOOGLETEST "/usr/src/googletest" CACHE PATH "Sources of GoogleTest")
set(INSTALL_GTEST OFF)
add_subdirectory(${QUASTEL_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
if(QUASTEL_SANITIZE)
  foreach(lib gtest gtest_main gmock)
    target_compile_options(${lib} PRIVATE -fsanitize=${QUASTEL_SANITIZE})
  endforeach()
endif()

add_library(simulated_windows STATIC
  simulated_windows/call_names.cpp
  simulated_windows/clock_calls.cpp
  simulated_windows/disk.cpp
  simulated_windows/fault_plan.cpp
  simulated_windows/fiber_calls.cpp
  simulated_windows/file_calls.cpp
  simulated_windows/file_system_calls.cpp
  simulated_windows/ledger.cpp
  simulated_windows/names.cpp
  simulated_windows/node.cpp
  simulated_windows/paths.cpp
  simulated_windows/process_calls.cpp
  simulated_windows/search_calls.cpp
  simulated_windows/shell_calls.cpp
  simulated_windows/simulated_windows.cpp
  simulated_windows/state.cpp
  simulated_windows/thread_calls.cpp
  simulated_windows/tree.cpp
  simulated_windows/volume_calls.cpp
)
target_include_directories(simulated_windows PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(simulated_windows PUBLIC quastel_core_host Threads::Threads)
quastel_compile_options(simulated_windows)

# Compiling the tests takes far longer than running them. What they test keeps its optimisation.
set(QUASTEL_TEST_OPTIONS -O0 -g1)
target_compile_options(gtest PRIVATE ${QUASTEL_TEST_OPTIONS})

# Reading GoogleTest's header is half of the work of compiling a small test: it is done once.
add_library(test_prelude OBJECT support/prelude.cpp)
target_link_libraries(test_prelude PRIVATE simulated_windows GTest::gtest)
target_precompile_headers(test_prelude PRIVATE
  <gtest/gtest.h> <algorithm> <atomic> <functional> <optional> <string> <thread> <vector>)
quastel_compile_options(test_prelude)
target_compile_options(test_prelude PRIVATE ${QUASTEL_TEST_OPTIONS})

# support/instrumented.h says what follows from it.
if(QUASTEL_SANITIZE OR QUASTEL_COVERAGE)
  set(QUASTEL_TEST_DEFINITIONS QUASTEL_INSTRUMENTED)
endif()

# One executable for each room; its CTest entry runs all of its tests in one process.
function(quastel_host_test name)
  add_executable(${name} ${ARGN})
  # The library calls the seam and the seam is in the simulation: each needs the other.
  target_link_libraries(${name} PRIVATE
    simulated_windows quastel_core_host simulated_windows GTest::gtest_main)
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  quastel_compile_options(${name})
  target_compile_options(${name} PRIVATE ${QUASTEL_TEST_OPTIONS})
  target_compile_definitions(${name} PRIVATE ${QUASTEL_TEST_DEFINITIONS})
  target_precompile_headers(${name} REUSE_FROM test_prelude)
  if(name IN_LIST QUASTEL_TESTS_LEFT_OUT)
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
    return()
  endif()
  add_test(NAME ${name} COMMAND ${name} ${QUASTEL_TEST_FILTER})
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
endfunction()

# For a program whose fault sweeps leave a record. In the host tree, where the sweeps are whole, a
# test compares it with the table in docs/testing.md once all of these programs have passed.
function(quastel_leaves_sweep_record name)
  if(NOT QUASTEL_SANITIZE AND NOT QUASTEL_COVERAGE)
    set_tests_properties(${name} PROPERTIES
      ENVIRONMENT "QUASTEL_SWEEP_RECORD=${CMAKE_BINARY_DIR}/fault_sweeps/${name}.jsonl"
      FIXTURES_SETUP fault_sweeps)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/fault_sweeps)
  endif()
endfunction()

# What takes many seconds in an instrumented tree and would only repeat what the other trees say.
set(QUASTEL_TESTS_LEFT_OUT "")
set(QUASTEL_TEST_FILTER "")
if(QUASTEL_SANITIZE STREQUAL "thread")
  # Races are looked for where there are threads. Programs of one thread are not even built, unless
  # by name, and in the others hashing, which is done in the thread of the caller, is not swept. Of
  # the two sweeps that fail each call of a scan once, the one with several workers stays.
  set(QUASTEL_TESTS_LEFT_OUT
    base_tests
    clean_fault_tests
    fault_tests
    fuzz_tests
    junk_fault_tests
    rules_tests
    simulated_windows_tests
  )
  string(JOIN ":" QUASTEL_TEST_FILTER
    --gtest_filter=-*/Sweep.Survives_each_call_failing_once/*
    */AllocationSweep.*Hash*
    */SystemCallSweep.*Hash*
    *CleanScaling.*
    *Sweep.Leaves_the_old_or_the_new_cache_whole_*
    *Sweep.Survives_every_lack_of_memory_of_the_scan_thread*
    CacheDamage.*
    CacheFaults.*
    CacheRefresh.Adds_entries_up_to_200000_and_updates_those_it_has
    DeletionModel.*
    EmptyDirectoryExport.Of_a_very_deep_tree_needs_no_stack
    JunkScanScaling.*
    LargeCache.*
    PathRulesModel.*
    ProtectionModel.*
    RuleAgreement.*
    RuleDocument*
    XxHash32.*
  )
elseif(QUASTEL_SANITIZE)
  # How much memory, how many numbers: the same code as in the smaller tests beside them.
  string(JOIN ":" QUASTEL_TEST_FILTER
    --gtest_filter=-LargeCache.A_file_of_200_000_entries_*
    LargeCache.Of_250_000_entries_*
    LargeCache.The_limit_is_met_exactly
    MillionFiles.A_file_takes_at_most_200_bytes_and_its_name
    XxHash32.Four_gibibytes_of_zeros_and_five_more
  )
endif()

# Each room lists its own tests.
foreach(room base frame fs scan duplicate junk clean session rules simulated_windows contract faults fuzz abi stress docs)
  if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${room}/host_tests.cmake)
    include(${room}/host_tests.cmake)
  endif()
endforeach()
if(NOT QUASTEL_SANITIZE AND NOT QUASTEL_COVERAGE AND NOT QUASTEL_FUZZ)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  add_test(NAME fault_table COMMAND Python3::Interpreter
    ${PROJECT_SOURCE_DIR}/scripts/fault_table.py --check ${CMAKE_BINARY_DIR}/fault_sweeps)
  set_tests_properties(fault_table PROPERTIES FIXTURES_REQUIRED fault_sweeps)
  add_test(NAME fault_table_check_finds_breaches
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/fault_table_test.py)
endif()
if(QUASTEL_FUZZ)
  include(fuzz/fuzz.cmake)
endif()
