quastel_host_test(session_tests
  scan/scan_fixture.cpp
  session/session_clean_calls_test.cpp
  session/session_clean_cancel_test.cpp
  session/session_clean_guards_test.cpp
  session/session_clean_refusals_test.cpp
  session/session_clean_test.cpp
  session/session_fixture.cpp
  session/session_handle_test.cpp
  session/session_model_test.cpp
  session/session_records_test.cpp
  session/session_scan_cancel_test.cpp
  session/session_scan_test.cpp
  session/session_text_output_test.cpp
  session/session_threads_test.cpp
)

# The sweeps of tests/faults over what this room does, and those of its own.
quastel_host_test(session_fault_tests
  faults/allocation_faults.cpp
  faults/fault_scenario.cpp
  faults/fault_sweep_test.cpp
  faults/lock_faults.cpp
  scan/scan_fixture.cpp
  session/fault_scenarios.cpp
  session/session_clean_faults_test.cpp
  session/session_failures_test.cpp
  session/session_fixture.cpp
  support/sweep_record.cpp
)
quastel_leaves_sweep_record(session_fault_tests)
# faults/lock_faults.cpp steps in front of every mutex.
target_link_options(session_fault_tests PRIVATE LINKER:--wrap=pthread_mutex_lock)

# The C++ half of the thread sanitizer's runtime insists on its own operator new. Linked as a C
# program there is only the other half, which sees the allocations of these tests through malloc.
if(QUASTEL_SANITIZE STREQUAL "thread" AND CMAKE_C_COMPILER_ID STREQUAL "Clang")
  set_target_properties(session_fault_tests PROPERTIES LINKER_LANGUAGE C)
  target_link_libraries(session_fault_tests PRIVATE stdc++ m)
endif()
