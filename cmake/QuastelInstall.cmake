# What `cmake --install` lays out: bin, lib, include, share/quastel/rules, share/doc/quastel, the CMake
# package quastel_core with its target quastel_core::quastel_core, and quastel_core.pc for pkg-config.
# The target `package` puts the same into quastel-VERSION-windows-x64.zip, with its SHA-256 beside it.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(quastel_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quastel_core)

install(TARGETS quastel_core EXPORT quastel_core_targets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET quastel)
  install(TARGETS quastel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(FILES ${PROJECT_SOURCE_DIR}/include/quastel_core.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

if(EXISTS ${PROJECT_SOURCE_DIR}/rules)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/rules/ DESTINATION ${CMAKE_INSTALL_DATADIR}/quastel/rules)
endif()
# Named apart from the project's name, which would give share/doc/quastel_core.
set(quastel_doc_dir ${CMAKE_INSTALL_DATADIR}/doc/quastel)
# As in the sources, so that the documents find each other.
foreach(folder docs examples bindings)
  if(EXISTS ${PROJECT_SOURCE_DIR}/${folder})
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/${folder} DESTINATION ${quastel_doc_dir}
      PATTERN node_modules EXCLUDE)
  endif()
endforeach()
foreach(text README.md LICENSE THIRD_PARTY.md CHANGELOG.md)
  if(EXISTS ${PROJECT_SOURCE_DIR}/${text})
    install(FILES ${PROJECT_SOURCE_DIR}/${text} DESTINATION ${quastel_doc_dir})
  endif()
endforeach()

install(EXPORT quastel_core_targets
  NAMESPACE quastel_core::
  DESTINATION ${quastel_package_dir})
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/quastel_core-config.cmake.in
  ${CMAKE_BINARY_DIR}/package/quastel_core-config.cmake
  INSTALL_DESTINATION ${quastel_package_dir})
write_basic_package_version_file(
  ${CMAKE_BINARY_DIR}/package/quastel_core-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_BINARY_DIR}/package/quastel_core-config.cmake
  ${CMAKE_BINARY_DIR}/package/quastel_core-config-version.cmake
  DESTINATION ${quastel_package_dir})

configure_file(
  ${CMAKE_CURRENT_LIST_DIR}/quastel_core.pc.in
  ${CMAKE_BINARY_DIR}/package/quastel_core.pc
  @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/package/quastel_core.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME quastel)
set(CPACK_PACKAGE_FILE_NAME quastel-${PROJECT_VERSION}-windows-x64)
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR})
include(CPack)
