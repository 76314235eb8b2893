# Tests of what is built for Windows. A cross build runs them under Wine.

set(QUASTEL_GOOGLETEST "/usr/src/googletest" CACHE PATH "Sources of GoogleTest")
set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt OFF CACHE BOOL "" FORCE)
add_subdirectory(${QUASTEL_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)

find_package(Python3 REQUIRED COMPONENTS Interpreter)

# Tests are compiled often and run once.
set(QUASTEL_TEST_OPTIONS $<IF:$<BOOL:${MSVC}>,/Od,-O0>)
target_compile_options(gtest PRIVATE ${QUASTEL_TEST_OPTIONS})

# One executable, one process, one CTest entry.
function(quastel_windows_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE GTest::gtest_main)
  quastel_compile_options(${name})
  quastel_windows_link_options(${name})
  target_compile_options(${name} PRIVATE ${QUASTEL_TEST_OPTIONS})
  # Several sources as one take half of the time.
  set_target_properties(${name} PROPERTIES UNITY_BUILD ON)
  add_test(NAME ${name} COMMAND ${name})
  # Wine's server has one processor: two programs at a time would only wait for each other.
  set_tests_properties(${name} PROPERTIES TIMEOUT 600 RESOURCE_LOCK wine)
endfunction()

# The DLL as a caller sees it: through its import library and the public header.
if(CMAKE_CROSSCOMPILING)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_SOURCE_DIR}/dll/run_tests.sh)
endif()
quastel_windows_test(dll_tests
  dll/duplicate_scan_test.cpp
  dll/enumeration_test.cpp
  dll/filters_test.cpp
  dll/hash_test.cpp
  dll/junk_scan_test.cpp
  dll/large_file_scan_test.cpp
  dll/paths_test.cpp
  dll/product_clean_model_test.cpp
  dll/product_clean_test.cpp
  dll/real_tree.cpp
  dll/scan_handle.cpp
  dll/scan_threads_test.cpp
  dll/session_test.cpp
  dll/short_threads_test.cpp
  dll/version_test.cpp
)
target_link_libraries(dll_tests PRIVATE quastel_core)
target_compile_definitions(dll_tests PRIVATE QUASTEL_TEST_VERSION="${PROJECT_VERSION}")

if(CMAKE_CROSSCOMPILING)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/scripts/wine_run.sh)
endif()

# What the seam promises, on the system itself. The same sources run on the simulated Windows.
include(contract/contract_tests.cmake)
quastel_windows_test(contract_tests ${QUASTEL_CONTRACT_TESTS} contract/real_machine.cpp)
target_link_libraries(contract_tests PRIVATE quastel_win32)
target_include_directories(contract_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})

include(stress/windows_tests.cmake)

if(TARGET quastel)
  include(client/tests.cmake)
endif()

set(abi ${CMAKE_CURRENT_SOURCE_DIR}/abi)
if(NOT MSVC)
  add_test(NAME abi_header_windows
    COMMAND Python3::Interpreter ${abi}/check_header.py --root ${PROJECT_SOURCE_DIR}
      ${CMAKE_C_COMPILER} "clang --target=x86_64-w64-mingw32")
  add_test(NAME abi_headers_after_windows_h
    COMMAND Python3::Interpreter ${abi}/check_windows_headers.py --root ${PROJECT_SOURCE_DIR}
      --compiler ${CMAKE_CXX_COMPILER})
endif()
if(TARGET quastel)
  set(client_option --client $<TARGET_FILE:quastel>)
endif()
add_test(NAME abi_dll
  COMMAND Python3::Interpreter ${abi}/check_dll.py --root ${PROJECT_SOURCE_DIR}
    --dll $<TARGET_FILE:quastel_core> --version ${PROJECT_VERSION} ${client_option})

include(abi/interface_tests.cmake)
include(callers/tests.cmake)
include(docs/windows_tests.cmake)

if(MINGW)
  add_test(NAME hash_code_windows
    COMMAND Python3::Interpreter ${abi}/check_hash_code.py
      ${CMAKE_OBJDUMP} $<TARGET_OBJECTS:quastel_core> COMMAND_EXPAND_LISTS)
endif()

include(package/tests.cmake)
