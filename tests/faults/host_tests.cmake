quastel_host_test(fault_tests
  faults/allocation_faults.cpp
  faults/allocation_faults_test.cpp
  faults/create_sweep_test.cpp
  faults/deletion_sweep_test.cpp
  faults/fault_scenario.cpp
  faults/fault_scenarios.cpp
  faults/fault_sweep_test.cpp
  faults/nothing_to_fail_test.cpp
  scan/scan_fixture.cpp
  support/sweep_record.cpp
)
quastel_leaves_sweep_record(fault_tests)

# The C++ half of the thread sanitizer's runtime insists on its own operator new. Linked as a C
# program there is only the other half, which sees the allocations of these tests through malloc.
if(QUASTEL_SANITIZE STREQUAL "thread" AND CMAKE_C_COMPILER_ID STREQUAL "Clang")
  set_target_properties(fault_tests PROPERTIES LINKER_LANGUAGE C)
  target_link_libraries(fault_tests PRIVATE stdc++ m)
endif()
