quastel_host_test(junk_tests
  duplicate/open_record.cpp
  faults/allocation_faults.cpp
  fuzz/rule_document_check.cpp
  junk/empty_directory_test.cpp
  junk/expand_junk_path_test.cpp
  junk/junk_fixture.cpp
  junk/junk_scan_cancel_test.cpp
  junk/junk_scan_failures_test.cpp
  junk/junk_scan_links_test.cpp
  junk/junk_scan_model_test.cpp
  junk/junk_scan_progress_test.cpp
  junk/junk_scan_rows_test.cpp
  junk/junk_scan_rules_test.cpp
  junk/junk_scan_scaling_test.cpp
  junk/large_blocks.cpp
  junk/rule_document_depth_test.cpp
  junk/rule_document_encoding_test.cpp
  junk/rule_document_grammar_test.cpp
  junk/rule_document_reading_test.cpp
  junk/rule_document_seeds_test.cpp
  scan/scan_fixture.cpp
)
target_compile_definitions(junk_tests PRIVATE
  QUASTEL_FUZZ_CORPUS="${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus")

# The sharing of an open, which is not in the machine's record, and memory that no test should
# really take: duplicate/open_record.cpp and junk/large_blocks.cpp step in front of the calls. The
# long name is the mangled OpenFile of quastel::platform.
target_link_options(junk_tests PRIVATE
  LINKER:--wrap=_ZN7quastel8platform8OpenFileEPKDsjjNS0_11DispositionEj
  LINKER:--wrap=malloc
)

# A whole XML parser to compare with, where there is one.
find_package(EXPAT QUIET)
if(EXPAT_FOUND)
  target_sources(junk_tests PRIVATE junk/rule_document_expat_test.cpp)
  target_link_libraries(junk_tests PRIVATE EXPAT::EXPAT)
endif()

# The sweeps of tests/faults over what this room does.
quastel_host_test(junk_fault_tests
  faults/allocation_faults.cpp
  faults/fault_scenario.cpp
  faults/fault_sweep_test.cpp
  junk/fault_scenarios.cpp
  junk/junk_fixture.cpp
  scan/scan_fixture.cpp
  support/sweep_record.cpp
)
quastel_leaves_sweep_record(junk_fault_tests)

# The C++ half of the thread sanitizer's runtime insists on its own operator new. Linked as a C
# program there is only the other half, which sees the allocations of these tests through malloc.
if(QUASTEL_SANITIZE STREQUAL "thread" AND CMAKE_C_COMPILER_ID STREQUAL "Clang")
  foreach(target junk_tests junk_fault_tests)
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE C)
    target_link_libraries(${target} PRIVATE stdc++ m)
  endforeach()
endif()
