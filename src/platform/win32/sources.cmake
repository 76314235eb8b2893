# The Windows build of the library: the backend over the system itself, and the DLL.

include(QuastelWindowsLink)
enable_language(RC)

# A library of its own, so that the contract tests run on the very code that the DLL contains.
add_library(quastel_win32 STATIC
  platform/win32/clock.cpp
  platform/win32/file.cpp
  platform/win32/file_system.cpp
  platform/win32/mirrored_constants.cpp
  platform/win32/process.cpp
  platform/win32/search.cpp
  platform/win32/shell.cpp
  platform/win32/thread.cpp
  platform/win32/volume.cpp
)
target_include_directories(quastel_win32 PUBLIC
  ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
# Windows 10 and later.
target_compile_definitions(quastel_win32 PRIVATE _WIN32_WINNT=0x0A00 WINVER=0x0A00)
target_link_libraries(quastel_win32 PUBLIC ole32 shell32 uuid)
quastel_compile_options(quastel_win32)

# What the DLL exports.
set(def_file ${CMAKE_CURRENT_SOURCE_DIR}/frame/quastel_core.def)

configure_file(frame/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/version.rc @ONLY)

add_library(quastel_core SHARED
  ${QUASTEL_SOURCES} ${def_file} ${CMAKE_CURRENT_BINARY_DIR}/version.rc)
set_target_properties(quastel_core PROPERTIES LINK_DEPENDS ${def_file})
if(MINGW)
  # quastel_core.dll with libquastel_core.dll.a: the names that both tool families look for.
  set_target_properties(quastel_core PROPERTIES PREFIX "")
endif()
target_compile_definitions(quastel_core PRIVATE QUASTEL_CORE_BUILDING)
target_include_directories(quastel_core
  PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}
  PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:include>)
target_link_libraries(quastel_core PRIVATE $<BUILD_INTERFACE:quastel_win32>)
quastel_compile_options(quastel_core)
quastel_windows_link_options(quastel_core)
foreach(target quastel_core quastel_win32)
  if(MSVC)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:/GR-> /EHsc)
    set_target_properties(${target} PROPERTIES
      MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
  else()
    # Release would be -O3: larger for no measured gain.
    target_compile_options(${target} PRIVATE
      $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>
      $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Release>>:-O2>)
  endif()
endforeach()
