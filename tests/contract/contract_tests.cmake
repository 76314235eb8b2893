# The sources of the contract tests without the machine: the host build adds the simulated one, the
# Windows build the real one.
set(QUASTEL_CONTRACT_TESTS
  contract/attributes_contract_test.cpp
  contract/clock_contract_test.cpp
  contract/file_contract_test.cpp
  contract/full_path_contract_test.cpp
  contract/full_path_of_files_contract_test.cpp
  contract/process_contract_test.cpp
  contract/removal_contract_test.cpp
  contract/rename_contract_test.cpp
  contract/search_contract_test.cpp
  contract/shell_contract_test.cpp
  contract/thread_contract_test.cpp
  contract/volume_contract_test.cpp
  contract/wildcard_contract_test.cpp
)
