# Tests of the command-line client: its text rules by themselves, and the program from end to end.

set(client_tests ${CMAKE_CURRENT_LIST_DIR})
quastel_windows_test(client_unit_tests
  ${client_tests}/byte_size_test.cpp
  ${client_tests}/category_words_test.cpp
  ${client_tests}/display_text_test.cpp
  ${client_tests}/duplicate_report_test.cpp
  ${client_tests}/duplicate_stage_test.cpp
  ${client_tests}/empty_folders_test.cpp
  ${client_tests}/hash_digits_test.cpp
  ${client_tests}/html_page_test.cpp
  ${client_tests}/json_test.cpp
  ${client_tests}/junk_report_test.cpp
  ${client_tests}/name_order_test.cpp
  ${client_tests}/nearest_word_test.cpp
  ${client_tests}/new_file_test.cpp
  ${client_tests}/path_text_test.cpp
  ${client_tests}/report_json_test.cpp
  ${client_tests}/rule_agreement_test.cpp
  ${client_tests}/rule_problem_test.cpp
  ${client_tests}/rule_warnings_test.cpp
  ${client_tests}/script_json_test.cpp
  ${client_tests}/text_test.cpp
  ${client_tests}/text_positions_test.cpp
  ${client_tests}/time_text_test.cpp
  ${client_tests}/wrap_help_test.cpp
)
target_compile_definitions(client_unit_tests PRIVATE
  QUASTEL_RULES_FOLDER="${PROJECT_SOURCE_DIR}/rules"
  QUASTEL_RULE_SEEDS="${PROJECT_SOURCE_DIR}/tests/fuzz/corpus/rule_document")
target_link_libraries(client_unit_tests PRIVATE quastel_client)
# Reading these headers is most of the work of compiling a small test: it is done once.
target_precompile_headers(client_unit_tests PRIVATE
  <gtest/gtest.h> <nlohmann/json.hpp> <algorithm> <optional> <string> <vector>)

if(CMAKE_CROSSCOMPILING)
  add_test(NAME client
    COMMAND ${client_tests}/run_tests.sh client_test.py $<TARGET_FILE:quastel>)
  add_test(NAME client_duplicates
    COMMAND ${client_tests}/run_tests.sh duplicates_test.py $<TARGET_FILE:quastel>)
  add_test(NAME client_clean
    COMMAND ${client_tests}/run_tests.sh clean_test.py $<TARGET_FILE:quastel>)
  add_test(NAME client_hash
    COMMAND ${client_tests}/run_tests.sh hash_test.py $<TARGET_FILE:quastel>)
  add_test(NAME client_junk
    COMMAND ${client_tests}/run_tests.sh junk_test.py $<TARGET_FILE:quastel>)
  add_test(NAME client_empty
    COMMAND ${client_tests}/run_tests.sh empty_test.py $<TARGET_FILE:quastel>)
  add_test(NAME client_rules
    COMMAND ${client_tests}/run_tests.sh rules_test.py $<TARGET_FILE:quastel>)
  # What --json writes, against docs/report.schema.json.
  add_test(NAME client_schema
    COMMAND ${client_tests}/run_tests.sh schema_test.py $<TARGET_FILE:quastel>)
  # The pages of each scan, which the tests in a browser show.
  set(client_pages ${CMAKE_BINARY_DIR}/html_pages)
  add_test(NAME client_html
    COMMAND ${CMAKE_COMMAND} -E env QUASTEL_HTML_PAGES=${client_pages}
      ${client_tests}/run_tests.sh html_test.py $<TARGET_FILE:quastel>)
  set_tests_properties(client_html PROPERTIES FIXTURES_SETUP html_pages)
  add_test(NAME html_page
    COMMAND ${PROJECT_SOURCE_DIR}/tests/html/run_tests.sh ${client_pages})
  set_tests_properties(html_page PROPERTIES FIXTURES_REQUIRED html_pages TIMEOUT 600)
  # The hashes against another implementation, over files of thousands of sizes.
  add_test(NAME client_hash_crosscheck
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/scripts/crosscheck_hashes.py
      --client $<TARGET_FILE:quastel>)
  set_tests_properties(client client_duplicates client_clean client_hash client_junk client_empty client_rules
    client_html client_schema
    client_hash_crosscheck
    PROPERTIES TIMEOUT 600 RESOURCE_LOCK wine)
endif()
