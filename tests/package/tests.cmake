# What an installed or unpacked copy gives to others.

set(package_tests ${CMAKE_CURRENT_LIST_DIR})
set(package_toolchain)
if(CMAKE_TOOLCHAIN_FILE)
  set(package_toolchain -DTOOLCHAIN=${CMAKE_TOOLCHAIN_FILE})
endif()
add_test(NAME package_consumer
  COMMAND ${CMAKE_COMMAND}
    -DBUILD=${CMAKE_BINARY_DIR} -DWORK=${CMAKE_BINARY_DIR}/package_consumer
    -DCONSUMER=${package_tests}/consumer -DGENERATOR=${CMAKE_GENERATOR}
    -DRUNNER=${CMAKE_CROSSCOMPILING_EMULATOR} -DVERSION=${PROJECT_VERSION}
    -DCOMPILER=${CMAKE_C_COMPILER}
    ${package_toolchain} -P ${package_tests}/check_package.cmake)
set_tests_properties(package_consumer PROPERTIES RESOURCE_LOCK wine)

if(CMAKE_CROSSCOMPILING AND TARGET quastel)
  add_test(NAME package_archive
    COMMAND ${package_tests}/run_archive_test.sh ${CMAKE_BINARY_DIR} ${PROJECT_VERSION})
  set_tests_properties(package_archive PROPERTIES RESOURCE_LOCK wine TIMEOUT 600)
  add_test(NAME package_reproducible
    COMMAND Python3::Interpreter ${package_tests}/reproducible_test.py
      ${PROJECT_SOURCE_DIR} ${CMAKE_BINARY_DIR})
  set_tests_properties(package_reproducible PROPERTIES TIMEOUT 900)
endif()
