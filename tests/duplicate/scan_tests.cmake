set(duplicate_sources_of_both
  duplicate/duplicate_fixture.cpp
  faults/allocation_faults.cpp
  scan/scan_fixture.cpp
)

quastel_host_test(duplicate_scan_tests
  duplicate/open_record.cpp
  duplicate/scan_access_test.cpp
  duplicate/scan_cache_faults_test.cpp
  duplicate/scan_cache_refresh_test.cpp
  duplicate/scan_cache_test.cpp
  duplicate/scan_cancel_test.cpp
  duplicate/scan_drop_out_test.cpp
  duplicate/scan_model_test.cpp
  duplicate/scan_performance_test.cpp
  duplicate/scan_progress_test.cpp
  duplicate/scan_report_test.cpp
  duplicate/scan_roots_test.cpp
  duplicate/scan_threads_test.cpp
  duplicate/scan_workers_test.cpp
  duplicate/storage_kind_test.cpp
  duplicate/worker_pool_test.cpp
  ${duplicate_sources_of_both}
)

# The sharing and the flags of an open are not in the machine's record: duplicate/open_record.cpp
# steps in front of quastel::platform::OpenFile, which this is the mangled name of.
target_link_options(duplicate_scan_tests PRIVATE
  LINKER:--wrap=_ZN7quastel8platform8OpenFileEPKDsjjNS0_11DispositionEj)

# Its own sweeps over the scan, and those of tests/faults over the other exports of this room.
quastel_host_test(duplicate_fault_tests
  duplicate/fault_scenarios.cpp
  duplicate/fault_sweep_test.cpp
  faults/fault_scenario.cpp
  faults/fault_sweep_test.cpp
  support/sweep_record.cpp
  ${duplicate_sources_of_both}
)
quastel_leaves_sweep_record(duplicate_fault_tests)

# The C++ half of the thread sanitizer's runtime insists on its own operator new. Linked as a C
# program there is only the other half, which sees the allocations of these tests through malloc.
if(QUASTEL_SANITIZE STREQUAL "thread" AND CMAKE_C_COMPILER_ID STREQUAL "Clang")
  foreach(target duplicate_scan_tests duplicate_fault_tests)
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE C)
    target_link_libraries(${target} PRIVATE stdc++ m)
  endforeach()
endif()
