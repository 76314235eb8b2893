# Installs the build into a folder of its own, builds a small project against it, by CMake's package
# and by pkg-config, and runs both beside the installed DLL.
#
# Takes BUILD, WORK, CONSUMER, GENERATOR, VERSION, COMPILER and, for a cross build, TOOLCHAIN and RUNNER.

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
  if(NOT result EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "${command}\n${text}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/installed)
foreach(name bin/quastel_core.dll include/quastel_core.h
        lib/cmake/quastel_core/quastel_core-config.cmake)
  if(NOT EXISTS ${WORK}/installed/${name})
    message(FATAL_ERROR "the installation lacks ${name}")
  endif()
endforeach()

set(toolchain)
if(TOOLCHAIN)
  # The installed copy lies outside of the compiler's own root, where a cross build looks.
  set(toolchain -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=NEVER)
endif()
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK}/build -G ${GENERATOR} ${toolchain}
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH=${WORK}/installed)
run(${CMAKE_COMMAND} --build ${WORK}/build)


# As an author's own makefile does it. Nothing of this machine may help.
set(ENV{PKG_CONFIG_LIBDIR} ${WORK}/installed/lib/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")
execute_process(COMMAND pkg-config --modversion quastel_core
  RESULT_VARIABLE result OUTPUT_VARIABLE text OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0 OR NOT text STREQUAL VERSION)
  message(FATAL_ERROR "pkg-config answered ${result} and said \"${text}\"")
endif()
execute_process(COMMAND pkg-config --cflags --libs quastel_core
  RESULT_VARIABLE result OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${COMPILER} ${CONSUMER}/consumer.c ${flags} -o ${WORK}/consumer_by_pkg_config.exe)

file(COPY ${WORK}/build/consumer.exe ${WORK}/consumer_by_pkg_config.exe
  DESTINATION ${WORK}/installed/bin)
foreach(program consumer consumer_by_pkg_config)
  execute_process(COMMAND ${RUNNER} ${WORK}/installed/bin/${program}.exe
    RESULT_VARIABLE result OUTPUT_VARIABLE text OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT result EQUAL 0 OR NOT text STREQUAL VERSION)
    message(FATAL_ERROR "${program} answered ${result} and said \"${text}\"")
  endif()
endforeach()
