# The pages about the interface. They do not depend on how the library is instrumented.

if(NOT QUASTEL_SANITIZE AND NOT QUASTEL_FUZZ AND NOT QUASTEL_COVERAGE)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  add_test(NAME reference
    COMMAND Python3::Interpreter -B ${CMAKE_CURRENT_LIST_DIR}/reference_test.py
      --root ${PROJECT_SOURCE_DIR} --doxyfile ${CMAKE_BINARY_DIR}/Doxyfile)
  set_tests_properties(reference PROPERTIES TIMEOUT 300)
endif()
