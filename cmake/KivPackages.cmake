# The packages that CPack makes: three for Debian, an archive for other systems.
# The script tools/package.sh calls it.
set(CPACK_PACKAGE_NAME kiv-saver)
set(CPACK_PACKAGE_VENDOR "the Saver's developers")
set(CPACK_PACKAGE_CONTACT "the Saver's developers <root@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "Records and replays calls of the Kiv inference API")
set(CPACK_PACKAGE_DESCRIPTION
  "Programs load the library in place of a backend, and it writes each of\
 their calls as C statements. The command kiv-recording examines and replays\
 what was recorded.")
set(CPACK_PACKAGE_FILE_NAME
  kiv-saver-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library tools development)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR DEB TGZ)
endif()

# Debian's names: that of the library ends with what programs ask for.
set(library libkiv-saver${PROJECT_VERSION_MAJOR})
set(same_version "(= ${PROJECT_VERSION})")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kiv-saver-tools)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkiv-saver-dev)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library} ${same_version}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${library} ${same_version}, kiv-saver-tools ${same_version}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
  "libKivSaver, which records a program's calls.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "The command kiv-recording, the project that compiles recordings, and the\
 backends that print and compute calls.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Headers, the reader of recordings, and files for CMake and pkg-config.")
include(CPack)
