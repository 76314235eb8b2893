include(${CMAKE_CURRENT_LIST_DIR}/contract_tests.cmake)
quastel_host_test(contract_tests
  ${QUASTEL_CONTRACT_TESTS}
  contract/simulated_machine.cpp
)
