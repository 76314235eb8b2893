# Programs that run for long; the tests run them for a short while, and scripts/long_run.sh and
# scripts/kill_test.sh for as long as it takes.

# Optimised, unlike the tests: what they look at after each round would take ten times as long.
function(quastel_windows_stress name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE quastel_core)
  quastel_compile_options(${name})
  quastel_windows_link_options(${name})
endfunction()

quastel_windows_stress(long_run
  dll/real_tree.cpp
  stress/changing_tree.cpp
  stress/long_run.cpp
  stress/process_meters.cpp
  stress/real_scan.cpp
)
add_test(NAME long_run COMMAND long_run 32 300 16)

quastel_windows_stress(kill_test
  dll/real_tree.cpp
  stress/cache_file.cpp
  stress/changing_tree.cpp
  stress/kill_test.cpp
  stress/real_scan.cpp
)
if(MINGW)
  target_link_options(kill_test PRIVATE -municode)
endif()
add_test(NAME kill_test COMMAND kill_test 8 120 1)

set_tests_properties(long_run kill_test PROPERTIES TIMEOUT 600 RESOURCE_LOCK wine)
