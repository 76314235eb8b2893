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

quastel_fuzz_target(rule_document
  fuzz/rule_document_check.cpp
  fuzz/rule_document_fuzz.cpp
)
