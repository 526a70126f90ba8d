# The rest of an installation beside the libraries and programs, which the folders
# that make them install: headers, the CMake package, pkg-config's files, the replay
# project and the documents. docs/installing.md says what is where.
include(CMakePackageConfigHelpers)

set(KIV_REPLAY_FOLDER ${CMAKE_INSTALL_DATADIR}/kiv-saver/replay)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/KivSaver)

set_target_properties(kiv_headers PROPERTIES EXPORT_NAME headers)
install(TARGETS kiv_headers EXPORT KivSaverTargets)
install(EXPORT KivSaverTargets NAMESPACE KivSaver::
  DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/KivSaverConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/KivSaverConfig.cmake
  INSTALL_DESTINATION ${package_folder}
  PATH_VARS KIV_REPLAY_FOLDER)
write_basic_package_version_file(
  ${CMAKE_CURRENT_BINARY_DIR}/KivSaverConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/KivSaverConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/KivSaverConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)

# A .pc file finds its prefix from where it lies, so that the prefix can move,
# except where the folders are absolute.
function(kiv_install_pkg_config name)
  set(folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  set(KIV_PREFIX ${CMAKE_INSTALL_PREFIX})
  if(NOT IS_ABSOLUTE ${folder})
    file(RELATIVE_PATH up /${folder} /)
    string(REGEX REPLACE "/$" "" KIV_PREFIX "\${pcfiledir}/${up}")
  endif()
  cmake_path(APPEND KIV_INCLUDE_FOLDER "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
  cmake_path(APPEND KIV_LIBRARY_FOLDER "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
  if(CMAKE_DL_LIBS)
    set(KIV_DL_FLAG -l${CMAKE_DL_LIBS})
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in
    ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc
    DESTINATION ${folder} COMPONENT development)
endfunction()
kiv_install_pkg_config(kiv-saver)
if(NOT WIN32)
  kiv_install_pkg_config(kiv-recording)
endif()

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kiv
  COMPONENT development)
install(DIRECTORY replay/ DESTINATION ${KIV_REPLAY_FOLDER})
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR})

if(KIV_BUILD_TOOLS AND NOT WIN32)
  set(completions tools/completions)
  install(FILES ${completions}/kiv-recording.bash RENAME kiv-recording
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  # zsh looks into the first below /usr/local, Debian's into the second below /usr.
  foreach(folder site-functions vendor-completions)
    install(FILES ${completions}/_kiv-recording
      DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${folder})
  endforeach()
  install(FILES ${completions}/kiv-recording.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
