# Installs the build into a folder of its own, builds a small project against it, and runs that
# beside the installed DLL.
#
# Takes BUILD, WORK, CONSUMER, GENERATOR, VERSION and, for a cross build, TOOLCHAIN and RUNNER.

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

file(COPY ${WORK}/build/consumer.exe DESTINATION ${WORK}/installed/bin)
execute_process(COMMAND ${RUNNER} ${WORK}/installed/bin/consumer.exe
  RESULT_VARIABLE result OUTPUT_VARIABLE text OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0 OR NOT text STREQUAL VERSION)
  message(FATAL_ERROR "the consumer answered ${result} and said \"${text}\"")
endif()
