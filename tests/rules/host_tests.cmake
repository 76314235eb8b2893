quastel_host_test(rules_tests
  rules/cleaned_files.cpp
  rules/forbidden_files.cpp
  rules/full_machine_test.cpp
  rules/rule_documents_test.cpp
  rules/well_known_places.cpp
  scan/scan_fixture.cpp
)
target_compile_definitions(rules_tests PRIVATE QUASTEL_RULES_FOLDER="${PROJECT_SOURCE_DIR}/rules")
