# The interface as C sees it, and its changes. Included by windows.cmake, which sets `abi`.

if(NOT MSVC)
  add_test(NAME abi_interface
    COMMAND Python3::Interpreter ${abi}/check_interface.py --root ${PROJECT_SOURCE_DIR}
      --compiler ${CMAKE_C_COMPILER})
  add_test(NAME abi_interface_check_sees_changes
    COMMAND Python3::Interpreter ${abi}/check_interface_test.py
      ${PROJECT_SOURCE_DIR} ${CMAKE_C_COMPILER})
endif()

# Every function, called from C through the import library.
add_executable(every_export
  ${abi}/every_export/deletion_and_session.c
  ${abi}/every_export/expect.c
  ${abi}/every_export/hashes_and_rules.c
  ${abi}/every_export/main.c
  ${abi}/every_export/paths_and_filters.c
  ${abi}/every_export/product_scan.c
  ${abi}/every_export/scratch.c
)
target_link_libraries(every_export PRIVATE quastel_core)
target_compile_definitions(every_export PRIVATE
  QUASTEL_TEST_VERSION="${PROJECT_VERSION}" _WIN32_WINNT=0x0A00)
quastel_compile_options(every_export)
quastel_windows_link_options(every_export)
add_test(NAME every_export COMMAND every_export)
# Wine's Recycle Bin is a folder below this one; without it, that of the user.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/every_export_data)
set_tests_properties(every_export PROPERTIES
  TIMEOUT 600 RESOURCE_LOCK wine
  ENVIRONMENT XDG_DATA_HOME=${CMAKE_BINARY_DIR}/every_export_data)

add_test(NAME abi_every_export_is_called
  COMMAND Python3::Interpreter ${abi}/check_every_export.py --root ${PROJECT_SOURCE_DIR})
add_test(NAME abi_every_export_check_misses_nothing
  COMMAND Python3::Interpreter ${abi}/check_every_export_test.py)
