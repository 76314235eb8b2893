# Checks that read the tree and run nothing of the project. Each has a test that shows that it finds
# what it is there for.

if(QUASTEL_SANITIZE OR QUASTEL_FUZZ OR QUASTEL_COVERAGE OR MSVC)
  return()
endif()
find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(quastel_static_check name)
  add_test(NAME ${name} COMMAND Python3::Interpreter ${ARGN})
  # Two at a time of their own, and all sources in a fresh tree: what passed once is quick.
  set_tests_properties(${name} PROPERTIES TIMEOUT 3600 PROCESSORS 2)
endfunction()

# Each tree looks at what it alone compiles, with the commands that it compiles it by.
if(WIN32)
  quastel_static_check(clang_tidy ${CMAKE_CURRENT_LIST_DIR}/check_clang_tidy.py
    ${PROJECT_SOURCE_DIR} ${CMAKE_BINARY_DIR} src/platform/win32 apps/quastel)
else()
  quastel_static_check(clang_tidy ${CMAKE_CURRENT_LIST_DIR}/check_clang_tidy.py
    ${PROJECT_SOURCE_DIR} ${CMAKE_BINARY_DIR} src)
  quastel_static_check(cppcheck ${CMAKE_CURRENT_LIST_DIR}/check_cppcheck.py
    ${PROJECT_SOURCE_DIR} ${CMAKE_BINARY_DIR}/cppcheck)
  add_test(NAME cppcheck_check_finds_breaches
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_LIST_DIR}/check_cppcheck_test.py)
  add_test(NAME words
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_LIST_DIR}/check_words.py ${PROJECT_SOURCE_DIR})
  add_test(NAME words_check_finds_breaches
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_LIST_DIR}/check_words_test.py)
  # The faults themselves take the better part of an hour; what makes them is tried here.
  add_test(NAME mutation_check_finds_breaches
    COMMAND Python3::Interpreter ${CMAKE_CURRENT_LIST_DIR}/mutation_check_test.py)
endif()
# With another compiler only how the code is read is another.
if(WIN32)
  set(clang_tidy_test ClangTidy.test_code_is_read_as_the_named_compiler_reads_it)
endif()
add_test(NAME clang_tidy_check_finds_breaches
  COMMAND Python3::Interpreter ${CMAKE_CURRENT_LIST_DIR}/check_clang_tidy_test.py
    ${CMAKE_CXX_COMPILER} ${clang_tidy_test})
