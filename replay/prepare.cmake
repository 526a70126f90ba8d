# cmake -P prepare.cmake SETTINGS
#
# Makes the program for the compiler, unless the one that is there is as new as
# the recording and the command that makes it.
cmake_minimum_required(VERSION 3.22)
include(${CMAKE_ARGV3})

if(NOT ("${model_file}" IS_NEWER_THAN "${program}" OR
        "${kiv_recording}" IS_NEWER_THAN "${program}" OR
        "${CMAKE_ARGV3}" IS_NEWER_THAN "${program}"))
  return()
endif()
message("Reading ${model_file}")
file(REMOVE "${program}")
execute_process(
  COMMAND ${emulator} "${kiv_recording}" prepare "${model_file}"
    -o "${program}" --facts "${facts}"
  RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "No program was made of the recording (${status})")
endif()
