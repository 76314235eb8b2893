# Warnings, hardening and instrumentation, the same for every target of the project.

function(quastel_compile_options target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /WX /permissive- /utf-8)
  else()
    # GCC 12 sees overlapping copies in std::string's own operator+, where there are none.
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
      $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>
      $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wthread-safety>)
  endif()
  if(QUASTEL_SANITIZE)
    target_compile_options(${target} PRIVATE
      -O1 $<IF:$<CXX_COMPILER_ID:Clang>,-gline-tables-only,-g1> -fno-omit-frame-pointer
      -fsanitize=${QUASTEL_SANITIZE} -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${QUASTEL_SANITIZE})
  endif()
  if(QUASTEL_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link,address,undefined)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
  if(QUASTEL_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -O0)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()
