# Checks of the header and of the house. They do not depend on how the library is instrumented.

if(NOT QUASTEL_SANITIZE AND NOT QUASTEL_FUZZ AND NOT QUASTEL_COVERAGE)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  add_test(NAME abi_header_host
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/abi/check_header.py
      --root ${PROJECT_SOURCE_DIR} gcc clang)
  add_test(NAME hash_code
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_SOURCE_DIR}/abi/check_hash_code.py
      ${CMAKE_OBJDUMP} $<TARGET_OBJECTS:quastel_core_host> COMMAND_EXPAND_LISTS)
  add_test(NAME layering
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/check_layering.py
      ${PROJECT_SOURCE_DIR})
  add_test(NAME layering_check_finds_breaches
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/check_layering_test.py)
endif()
