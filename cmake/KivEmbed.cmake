# Text files that the build puts into a program.
#
# kiv_embed_text(<target> <variable> <file>) generates the header
# embedded/<name of the file>.h, anew whenever the file changes. It holds the
# file's bytes as `inline constexpr std::string_view <variable>`; a namespace
# may stand in front of the variable. Sources of the target include it:
#
#   kiv_embed_text(saver_format kiv::format::kHeaderText format/header.c)
#
#   #include "embedded/header.c.h"
#
# The text stands in raw string literals, so it is refused if it holds a zero
# byte, a carriage return or the literals' end, which is )kiv_text".
#
# The target kiv_embedded_texts makes all such headers, for tools that read the
# sources without building them. The build runs this file as a script that
# writes one header.

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  cmake_minimum_required(VERSION 3.22)
endif()
set(kiv_embed_script ${CMAKE_CURRENT_LIST_FILE})

if(NOT CMAKE_SCRIPT_MODE_FILE AND NOT TARGET kiv_embedded_texts)
  add_custom_target(kiv_embedded_texts)
endif()

function(kiv_embed_text target variable file)
  get_filename_component(file ${file} ABSOLUTE)
  get_filename_component(name ${file} NAME)
  set(directory ${CMAKE_CURRENT_BINARY_DIR}/${target}_text)
  set(header ${directory}/embedded/${name}.h)
  add_custom_command(OUTPUT ${header}
    COMMAND ${CMAKE_COMMAND} -DTEXT=${file} -DVARIABLE=${variable}
      -DHEADER=${header} -P ${kiv_embed_script}
    DEPENDS ${file} ${kiv_embed_script}
    COMMENT "Embedding ${name}"
    VERBATIM)
  add_custom_target(${target}_${name} DEPENDS ${header})
  add_dependencies(kiv_embedded_texts ${target}_${name})
  add_dependencies(${target} ${target}_${name})
  target_include_directories(${target} PRIVATE ${directory})
endfunction()

# Appends `text` as literals to the variable `result`. Each ends with a line,
# lest it break a character in two, and has at most `most` bytes.
function(kiv_append_literals result most text)
  set(literals "${${result}}")
  while(NOT text STREQUAL "")
    string(SUBSTRING "${text}" 0 ${most} piece)
    string(LENGTH "${text}" length)
    if(length GREATER most)
      string(FIND "${piece}" "\n" end REVERSE)
      if(end EQUAL -1)
        message(FATAL_ERROR "${TEXT} has a line of more than ${most} bytes; "
          "make it shorter")
      endif()
      math(EXPR end "${end} + 1")
      string(SUBSTRING "${piece}" 0 ${end} piece)
    endif()
    string(LENGTH "${piece}" length)
    string(SUBSTRING "${text}" ${length} -1 text)
    string(APPEND literals "\n    R\"kiv_text(${piece})kiv_text\"")
  endwhile()
  set(${result} "${literals}" PARENT_SCOPE)
endfunction()

# A compiler for Windows takes 16 KB in one literal and 64 KB in a row of them.
function(kiv_write_embedded_text)
  file(SIZE ${TEXT} size)
  file(READ ${TEXT} text)
  string(LENGTH "${text}" length)
  string(FIND "${text}" "\r" return)
  string(FIND "${text}" ")kiv_text\"" end)
  if(NOT (length EQUAL size AND return EQUAL -1 AND end EQUAL -1))
    message(FATAL_ERROR "${TEXT} cannot be embedded: remove zero bytes, "
      "carriage returns and )kiv_text\" from it")
  endif()
  if(size GREATER 65000)
    message(FATAL_ERROR "${TEXT} cannot be embedded: it has ${size} bytes, "
      "and compilers take 65000; split it")
  endif()
  get_filename_component(name ${TEXT} NAME)
  string(REGEX MATCH "^((.*)::)?([^:]+)$" matched ${VARIABLE})
  set(namespace "${CMAKE_MATCH_2}")
  set(code "// Generated from ${name}, which is the place for changes.\n")
  string(APPEND code "#pragma once\n\n#include <string_view>\n\n")
  if(namespace)
    string(APPEND code "namespace ${namespace} {\n\n")
  endif()
  string(APPEND code "inline constexpr std::string_view ${CMAKE_MATCH_3}(")
  kiv_append_literals(code 16000 "${text}")
  string(APPEND code "\n    \"\", ${size});\n")
  if(namespace)
    string(APPEND code "\n}  // namespace ${namespace}\n")
  endif()
  file(WRITE ${HEADER} "${code}")
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  kiv_write_embedded_text()
endif()
