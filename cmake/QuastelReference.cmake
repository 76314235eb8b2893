# The target `reference`: pages about the interface, made from the header by Doxygen, in the build
# folder. It fails when something of the header lacks documentation. It is not part of the target `all`.

find_package(Python3 COMPONENTS Interpreter)
find_program(QUASTEL_DOXYGEN doxygen)
if(Python3_FOUND)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/Doxyfile.in ${CMAKE_BINARY_DIR}/Doxyfile @ONLY)
endif()
if(Python3_FOUND AND QUASTEL_DOXYGEN)
  add_custom_target(reference
    COMMAND ${QUASTEL_DOXYGEN} ${CMAKE_BINARY_DIR}/Doxyfile
    COMMENT "Making the pages about the interface: reference/index.html"
    VERBATIM)
endif()
