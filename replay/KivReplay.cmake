# Programs that make the calls of recordings.
#
#   find_package(KivSaver REQUIRED)
#   kiv_add_replay(session RECORDING saver_output BACKEND KivSaver::Tracer)
#   add_test(NAME session COMMAND session -l verbose)
#
# kiv_add_replay(<target> RECORDING <directory> BACKEND <library>
#                [MODEL_FILE <name>] [KIV_RECORDING <program>]
#                [INCLUDE_DIR <directory>])
#
# adds the executable <target>. RECORDING may name the C file, too; MODEL_FILE
# is needed where the directory has several. BACKEND is a path or a target.
# Relative paths are below the current source directory. Without KIV_RECORDING
# and INCLUDE_DIR, program and headers are those of the package KivSaver. The
# project must have the language C.
#
# Paths may hold any character: they reach the launcher and the command that
# prepares the program through files, never through the build tool's own text.

include_guard(GLOBAL)
include(CheckCCompilerFlag)

function(kiv_replay_check_arguments)
  if(NOT CMAKE_C_COMPILER_LOADED)
    message(FATAL_ERROR "kiv_add_replay: recordings are C programs; "
      "add C to the languages of project()")
  elseif("${ARG_RECORDING}" STREQUAL "")
    message(FATAL_ERROR "Name the recording's directory with RECORDING")
  elseif(NOT EXISTS "${ARG_RECORDING}")
    message(FATAL_ERROR "RECORDING: there is no directory ${ARG_RECORDING}")
  elseif("${ARG_BACKEND}" STREQUAL "")
    message(FATAL_ERROR "Name the backend's library with BACKEND")
  elseif(NOT TARGET "${ARG_BACKEND}" AND
         (NOT EXISTS "${ARG_BACKEND}" OR IS_DIRECTORY "${ARG_BACKEND}"))
    message(FATAL_ERROR "BACKEND: there is no file ${ARG_BACKEND}")
  elseif(NOT ARG_INCLUDE_DIR)
    message(FATAL_ERROR "The Kiv API's headers were not found; "
      "name their directory with KIV_INCLUDE_DIR")
  elseif("${ARG_KIV_RECORDING}" STREQUAL "")
    message(FATAL_ERROR "The program kiv-recording was not found; "
      "name it with KIV_RECORDING")
  endif()
endfunction()

# Sets `result` to the path of the recording's C file.
function(kiv_replay_model_file result recording name)
  if(NOT IS_DIRECTORY "${recording}")
    set(${result} "${recording}" PARENT_SCOPE)
    return()
  elseif("${name}" STREQUAL "" AND EXISTS "${recording}/saver_output.c")
    set(name saver_output.c)
  elseif("${name}" STREQUAL "")
    kiv_replay_c_files(files "${recording}")
    list(LENGTH files count)
    if(count GREATER 1)
      list(JOIN files ", " names)
      message(FATAL_ERROR "${recording} holds several C files (${names}); "
        "choose one with MODEL_FILE")
    endif()
    set(name "${files}")
  endif()
  if("${name}" STREQUAL "" OR NOT EXISTS "${recording}/${name}")
    message(FATAL_ERROR "${recording} holds no model file ${name}")
  endif()
  set(${result} "${recording}/${name}" PARENT_SCOPE)
endfunction()

# The names of the C files in a directory, whose path is no pattern.
function(kiv_replay_c_files result directory)
  string(REGEX REPLACE "([][*?])" "[\\1]" pattern "${directory}")
  file(GLOB files "${pattern}/*.c")
  list(TRANSFORM files REPLACE ".*/" "")
  set(${result} "${files}" PARENT_SCOPE)
endfunction()

# All calls are one function, which takes gcc 170 bytes for each byte of text.
function(kiv_replay_warn_of_large_file path)
  file(SIZE "${path}" size)
  if(CMAKE_C_COMPILER_ID STREQUAL GNU AND size GREATER 30000000)
    message(WARNING "gcc may need more memory than there is for a recording "
      "of ${size} bytes; with -DCMAKE_C_COMPILER=clang it is about half, and "
      "kiv-recording replay needs no compiler")
  endif()
endfunction()

# Sets `result` to the text as a C literal.
function(kiv_replay_literal result text)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  set(${result} "\"${text}\"" PARENT_SCOPE)
endfunction()

# Writes a file unless it has that text already, lest it be compiled again.
function(kiv_replay_write path text)
  if(EXISTS ${path})
    file(READ ${path} before)
  endif()
  if(NOT "${before}" STREQUAL "${text}")
    file(WRITE ${path} "${text}")
  endif()
endfunction()

# The paths that the launcher opens. A target's file is known once all is configured.
function(kiv_replay_write_paths path recording backend)
  kiv_replay_literal(recording "${recording}")
  if(TARGET "${backend}")
    file(GENERATE OUTPUT ${path} CONTENT "#define RECORDING_DIRECTORY ${recording}
#define BACKEND_LIBRARY \"$<TARGET_FILE:${backend}>\"
")
    return()
  endif()
  kiv_replay_literal(backend "${backend}")
  kiv_replay_write(${path} "#define RECORDING_DIRECTORY ${recording}
#define BACKEND_LIBRARY ${backend}
")
endfunction()

# Makes the program anew when the recording has changed. A bracket holds any
# text but its own end.
function(kiv_replay_prepare target directory model_file kiv_recording)
  set(program ${directory}/recorded_program.c)
  set(facts ${directory}/program_facts.h)
  set(emulator "")
  if(CMAKE_CROSSCOMPILING AND kiv_recording MATCHES "\\.exe$")
    set(emulator "${CMAKE_CROSSCOMPILING_EMULATOR}")
  endif()
  set(settings "")
  foreach(setting model_file kiv_recording emulator program facts)
    string(APPEND settings "set(${setting} [======[${${setting}}]======])\n")
  endforeach()
  kiv_replay_write(${directory}/settings.cmake "${settings}")
  add_custom_target(${target}_program
    COMMAND ${CMAKE_COMMAND} -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/prepare.cmake
      ${directory}/settings.cmake
    BYPRODUCTS ${program} ${facts}
    VERBATIM)
endfunction()

# Reaches static arrays of more than 2 GiB. Programs for Windows have no room
# for so much.
function(kiv_replay_model_option result)
  set(${result} "" PARENT_SCOPE)
  if(NOT WIN32)
    check_c_compiler_flag(-mcmodel=medium KIV_HAS_MEDIUM_MODEL)
    if(KIV_HAS_MEDIUM_MODEL)
      set(${result} -mcmodel=medium PARENT_SCOPE)
    endif()
  endif()
endfunction()

# Sets the arguments that were left out to what is installed with this file.
macro(kiv_replay_find_companions)
  if(NOT ARG_KIV_RECORDING AND TARGET KivSaver::kiv-recording)
    get_target_property(ARG_KIV_RECORDING KivSaver::kiv-recording LOCATION)
  endif()
  if(NOT ARG_INCLUDE_DIR AND TARGET KivSaver::headers)
    get_target_property(ARG_INCLUDE_DIR
      KivSaver::headers INTERFACE_INCLUDE_DIRECTORIES)
  endif()
endmacro()

function(kiv_replay_make_absolute)
  foreach(argument IN ITEMS ${ARGV})
    if(NOT "${${argument}}" STREQUAL "" AND NOT IS_ABSOLUTE "${${argument}}"
       AND NOT TARGET "${${argument}}")
      set(${argument} "${CMAKE_CURRENT_SOURCE_DIR}/${${argument}}" PARENT_SCOPE)
    endif()
  endforeach()
endfunction()

function(kiv_add_replay target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG ""
    "RECORDING;BACKEND;MODEL_FILE;KIV_RECORDING;INCLUDE_DIR" "")
  if(DEFINED ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR
      "kiv_add_replay does not know ${ARG_UNPARSED_ARGUMENTS}")
  endif()
  kiv_replay_make_absolute(ARG_RECORDING ARG_BACKEND ARG_KIV_RECORDING)
  kiv_replay_find_companions()
  kiv_replay_check_arguments()
  kiv_replay_model_file(model_file "${ARG_RECORDING}" "${ARG_MODEL_FILE}")
  kiv_replay_warn_of_large_file("${model_file}")
  find_package(Threads REQUIRED)

  set(directory ${CMAKE_CURRENT_BINARY_DIR}/${target}_program)
  string(REGEX REPLACE "/[^/]*$" "" recording "${model_file}")
  kiv_replay_write_paths(${directory}/paths.h "${recording}" "${ARG_BACKEND}")
  kiv_replay_prepare(${target} ${directory} "${model_file}"
    "${ARG_KIV_RECORDING}")
  kiv_replay_add_launcher(${target} ${directory} "${ARG_INCLUDE_DIR}")
  if(TARGET "${ARG_BACKEND}")
    add_dependencies(${target} ${ARG_BACKEND})
  endif()
endfunction()

# Optimising one function of 100,000 statements takes hours. Recordings may hold
# arrays without elements, which are an extension of C.
function(kiv_replay_add_launcher target directory include_dir)
  set(program ${directory}/recorded_program.c)
  set(system posix)
  if(WIN32)
    set(system windows)
  endif()
  kiv_replay_model_option(model_option)
  add_executable(${target} ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/launch.c
    ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/launch_${system}.c ${program})
  add_dependencies(${target} ${target}_program)
  set_source_files_properties(${program} PROPERTIES
    GENERATED ON
    COMPILE_OPTIONS "$<IF:$<C_COMPILER_ID:MSVC>,/Od,-O0>;${model_option}"
    COMPILE_DEFINITIONS main=recordedMain)
  set_target_properties(${target} PROPERTIES
    C_STANDARD 11 C_STANDARD_REQUIRED ON C_EXTENSIONS ON)
  if(MSVC)
    target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
  endif()
  target_include_directories(${target} PRIVATE ${directory})
  target_include_directories(${target} SYSTEM PRIVATE "${include_dir}")
  target_link_libraries(${target} PRIVATE Threads::Threads ${CMAKE_DL_LIBS})
endfunction()
