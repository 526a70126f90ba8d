# GTest::gtest and its like: the system's, or for another system than this one
# built from the sources that Debian's package googletest brings.
include(GoogleTest)

# Makes each test of a program one of CTest's; properties of tests may follow.
# With QUICK they are part of `./test.sh quick`. An emulator takes long to start
# for the first time.
add_custom_target(kiv_quick_tests)
function(kiv_google_tests target)
  cmake_parse_arguments(ARG "QUICK" "" "PROPERTIES" ${ARGN})
  target_link_libraries(${target} PRIVATE GTest::gtest_main)
  kiv_compile_options(${target})
  if(ARG_QUICK)
    add_dependencies(kiv_quick_tests ${target})
    list(APPEND ARG_PROPERTIES LABELS quick)
  endif()
  if(ARG_PROPERTIES)
    list(PREPEND ARG_PROPERTIES PROPERTIES)
  endif()
  gtest_discover_tests(${target} DISCOVERY_TIMEOUT 120 ${ARG_PROPERTIES})
endfunction()

if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest REQUIRED)
  return()
endif()

set(sources /usr/src/googletest)
if(NOT EXISTS ${sources}/CMakeLists.txt)
  message(FATAL_ERROR "There is no ${sources}; install Debian's googletest")
endif()
set(INSTALL_GTEST OFF)
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
add_subdirectory(${sources} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
foreach(library gtest gtest_main gmock gmock_main)
  if(NOT TARGET GTest::${library})
    add_library(GTest::${library} ALIAS ${library})
  endif()
endforeach()
# Their headers are not ours to warn of.
foreach(library gtest gmock)
  get_target_property(directories ${library} INTERFACE_INCLUDE_DIRECTORIES)
  set_target_properties(${library} PROPERTIES
    INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${directories}")
endforeach()
