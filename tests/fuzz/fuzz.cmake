# Fuzz targets, in a build with QUASTEL_FUZZ (clang). Each has its seeds in corpus/NAME; the
# ordinary tests replay them.

function(quastel_fuzz_target name)
  add_executable(${name}_fuzz ${ARGN})
  # The library calls the seam and the seam is in the simulation: each needs the other.
  target_link_libraries(${name}_fuzz PRIVATE
    simulated_windows quastel_core_host simulated_windows)
  target_include_directories(${name}_fuzz PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  quastel_compile_options(${name}_fuzz)
  target_link_options(${name}_fuzz PRIVATE -fsanitize=fuzzer)
endfunction()

include(fuzz/call_sequences.cmake)
quastel_fuzz_target(call_sequences
  ${call_sequences_check}
  fuzz/call_sequences_fuzz.cpp
)
quastel_fuzz_target(filters
  fuzz/filters_check.cpp
  fuzz/filters_fuzz.cpp
  fuzz/path_model.cpp
)
quastel_fuzz_target(hash_cache
  fuzz/hash_cache_check.cpp
  fuzz/hash_cache_fuzz.cpp
  fuzz/hash_cache_model.cpp
  support/cache_entries.cpp
)
quastel_fuzz_target(junk_path
  fuzz/junk_path_check.cpp
  fuzz/junk_path_fuzz.cpp
)
quastel_fuzz_target(path_rules
  fuzz/path_model.cpp
  fuzz/path_rules_check.cpp
  fuzz/path_rules_fuzz.cpp
)
quastel_fuzz_target(rule_document
  fuzz/rule_document_check.cpp
  fuzz/rule_document_fuzz.cpp
)

# The model is larger than the library: what the fuzzer learns from is to be the library's way alone.
target_compile_options(call_sequences_fuzz PRIVATE -fno-sanitize=fuzzer-no-link)
