# Eight handles at once, from many threads. A program of its own and no GoogleTest: it runs for as
# long as it is told to.
add_executable(handles_stress
  stress/handles_stress.cpp
  stress/stressed_folder.cpp
  stress/stressed_handle.cpp
  stress/stressed_product_scan.cpp
  stress/stressed_product_scan_observer.cpp
  stress/stressed_session.cpp
)
target_link_libraries(handles_stress PRIVATE
  simulated_windows quastel_core_host simulated_windows)
target_include_directories(handles_stress PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
quastel_compile_options(handles_stress)

# Where races are found it takes its time; elsewhere it shows that the answers are right.
if(QUASTEL_SANITIZE STREQUAL "thread")
  set(stress_seconds 10)
else()
  set(stress_seconds 3)
endif()
add_test(NAME handles_stress COMMAND handles_stress ${stress_seconds})
set_tests_properties(handles_stress PROPERTIES TIMEOUT 600)
