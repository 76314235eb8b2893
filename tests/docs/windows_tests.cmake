# The code and the commands in the documents, tried with what was built for Windows.

set(docs_tests ${CMAKE_CURRENT_LIST_DIR})

if(CMAKE_CROSSCOMPILING AND TARGET quastel)
  set(of_this_tree --root ${PROJECT_SOURCE_DIR} --build ${CMAKE_BINARY_DIR})
  add_test(NAME doc_snippets
    COMMAND ${docs_tests}/run_tests.sh snippets_test.py ${of_this_tree}
      --compiler ${CMAKE_C_COMPILER})
  add_test(NAME doc_commands
    COMMAND ${docs_tests}/run_tests.sh commands_test.py ${of_this_tree})
  set_tests_properties(doc_snippets doc_commands PROPERTIES TIMEOUT 600 RESOURCE_LOCK wine)
endif()
