# Puts the page of a folder together and compiles it into a target: html_pieces.h of the client has
# what comes out.
#
# embed_page(TARGET FOLDER): FOLDER holds report.html, and what its @marks@ stand for. As a script
# (cmake -DFOLDER=... -DOUT=FILE.cpp -P embed_page.cmake) it writes the source.

cmake_policy(VERSION 3.21)

set(embed_page_script ${CMAKE_CURRENT_LIST_FILE})

# In the order in which the page runs them: each may use what stands before it.
set(embed_page_scripts format report folders selection header treemap table filters page)

function(embed_page target folder)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/html_pieces.cpp)
  get_filename_component(folder ${folder} ABSOLUTE)
  set(inputs ${folder}/report.html ${folder}/report.css ${folder}/vendor/d3-hierarchy.min.js
    ${folder}/vendor/d3-hierarchy.LICENSE)
  foreach(name IN LISTS embed_page_scripts)
    list(APPEND inputs ${folder}/${name}.js)
  endforeach()
  add_custom_command(OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -DFOLDER=${folder} -DOUT=${source} -P ${embed_page_script}
    DEPENDS ${inputs} ${embed_page_script}
    COMMENT "Embedding the page of ${folder}"
    VERBATIM)
  target_sources(${target} PRIVATE ${source})
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
endfunction()

# A browser counts one line end for each, whatever the tree was checked out with.
function(read_text file out)
  file(READ ${file} text)
  string(REPLACE "\r\n" "\n" text "${text}")
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

# 'sha256-...' of a text, as a content security policy names what may run.
function(policy_hash text out)
  string(SHA256 digest "${text}")
  set(letters "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
  # 66 digits are 44 letters, of which the last one is padding.
  set(digits "${digest}00")
  set(base64 "")
  foreach(i RANGE 0 63 3)
    string(SUBSTRING ${digits} ${i} 3 three)
    math(EXPR high "0x${three} / 64")
    math(EXPR low "0x${three} % 64")
    string(SUBSTRING ${letters} ${high} 1 first)
    string(SUBSTRING ${letters} ${low} 1 second)
    string(APPEND base64 ${first}${second})
  endforeach()
  string(SUBSTRING ${base64} 0 43 base64)
  set(${out} "'sha256-${base64}='" PARENT_SCOPE)
endfunction()

# Compilers limit the length of a string literal, but not of an array.
function(array_source name text out)
  string(HEX "${text}" bytes)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
  string(REPEAT "....." 20 line)
  string(REGEX REPLACE "(${line})" "\\1\n" bytes "${bytes}")
  set(${out} "constexpr unsigned char ${name}[] = {\n${bytes}};\n" PARENT_SCOPE)
endfunction()

if(NOT CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  return()
endif()

read_text(${FOLDER}/report.html page)
read_text(${FOLDER}/report.css style)
read_text(${FOLDER}/vendor/d3-hierarchy.min.js library)
read_text(${FOLDER}/vendor/d3-hierarchy.LICENSE library_license)
set(script "\"use strict\";\n")
foreach(name IN LISTS embed_page_scripts)
  read_text(${FOLDER}/${name}.js part)
  string(APPEND script "${part}")
endforeach()
foreach(name style library script)
  policy_hash("${${name}}" ${name}_hash)
endforeach()
foreach(name style_hash library_hash script_hash library_license style library script)
  string(REPLACE "@${name}@" "${${name}}" page "${page}")
endforeach()
string(FIND "${page}" "@report@" mark)
if(mark EQUAL -1)
  message(FATAL_ERROR "${FOLDER}/report.html has no place for the report")
endif()
math(EXPR after "${mark} + 8")
string(SUBSTRING "${page}" 0 ${mark} before_text)
string(SUBSTRING "${page}" ${after} -1 after_text)
array_source(kBefore "${before_text}" before_array)
array_source(kAfter "${after_text}" after_array)
file(WRITE ${OUT} "// Made of apps/quastel/html by cmake/embed_page.cmake.
#include \"html_pieces.h\"

namespace quastel::client {
namespace {

${before_array}
${after_array}
}  // namespace

std::string_view PageBeforeReport() {
  return {reinterpret_cast<const char*>(kBefore), sizeof kBefore};
}

std::string_view PageAfterReport() {
  return {reinterpret_cast<const char*>(kAfter), sizeof kAfter};
}

}  // namespace quastel::client
")
