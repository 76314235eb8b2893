# Cleaning spans the three scan kinds: its tests stand in a room of their own.
quastel_host_test(clean_tests
  clean/clean_cancel_test.cpp
  clean/clean_duplicates_test.cpp
  clean/clean_fixture.cpp
  clean/clean_folders_test.cpp
  clean/clean_lifecycle_test.cpp
  clean/clean_model_test.cpp
  clean/clean_order_test.cpp
  clean/clean_outcome_test.cpp
  clean/clean_prediction.cpp
  clean/clean_races_test.cpp
  clean/clean_records_test.cpp
  clean/clean_request_test.cpp
  clean/clean_scaling_test.cpp
  clean/clean_threads_test.cpp
  clean/random_world.cpp
  scan/scan_fixture.cpp
)

quastel_host_test(clean_fault_tests
  clean/clean_fault_test.cpp
  clean/clean_fixture.cpp
  clean/clean_lock_faults_test.cpp
  clean/clean_recycle_fault_test.cpp
  clean/fault_world.cpp
  faults/allocation_faults.cpp
  faults/lock_faults.cpp
  scan/scan_fixture.cpp
  support/sweep_record.cpp
)
quastel_leaves_sweep_record(clean_fault_tests)
# faults/lock_faults.cpp steps in front of every mutex.
target_link_options(clean_fault_tests PRIVATE LINKER:--wrap=pthread_mutex_lock)

# The C++ half of the thread sanitizer's runtime insists on its own operator new. Linked as a C
# program there is only the other half, which sees the allocations of these tests through malloc.
if(QUASTEL_SANITIZE STREQUAL "thread" AND CMAKE_C_COMPILER_ID STREQUAL "Clang")
  set_target_properties(clean_fault_tests PROPERTIES LINKER_LANGUAGE C)
  target_link_libraries(clean_fault_tests PRIVATE stdc++ m)
endif()
