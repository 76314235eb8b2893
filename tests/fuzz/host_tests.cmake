include(fuzz/call_sequences.cmake)
quastel_host_test(fuzz_tests
  ${call_sequences_check}
  fuzz/call_sequences_seeds_test.cpp
  fuzz/filters_check.cpp
  fuzz/hash_cache_check.cpp
  fuzz/hash_cache_model.cpp
  fuzz/hash_cache_seeds_test.cpp
  fuzz/junk_path_check.cpp
  fuzz/path_rules_check.cpp
  fuzz/path_seeds_test.cpp
  support/cache_entries.cpp
)
target_compile_definitions(fuzz_tests PRIVATE
  QUASTEL_FUZZ_CORPUS="${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus")
