# How every target of the project is compiled, and the form of the libraries
# that clients load.

# Strict warnings and the chosen sanitizers.
function(kiv_compile_options target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<BOOL:${KIV_WARNINGS_AS_ERRORS}>:-Werror>)
  if(KIV_SANITIZE)
    # gcc takes what a sanitizer adds for uses of uninitialised variables. Two
    # checks of clang's need a C++ runtime, which a client in C does not have.
    target_compile_options(${target} PRIVATE
      -fsanitize=${KIV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
      $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function,vptr>
      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PRIVATE -fsanitize=${KIV_SANITIZE})
  endif()
endfunction()

# A library that a client loads and unloads by hand. It exports the names in
# `exports` (a version script) and no other. A symbol of gcc's "unique" kind, or
# a weak one of libstdc++ that another library binds to, would keep it in memory
# after dlclose, so neither leaves the library.
function(kiv_loadable_library target exports)
  target_compile_definitions(${target} PRIVATE KIV_BUILDING_LIBRARY)
  kiv_no_unique_symbols(${target})
  if(WIN32)
    # Only what is declared for export leaves a DLL.
    set_target_properties(${target} PROPERTIES PREFIX "")
  else()
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports})
    target_link_options(${target} PRIVATE LINKER:--version-script=${exports})
    if(NOT KIV_SANITIZE)
      target_link_options(${target} PRIVATE LINKER:--no-undefined)
    endif()
  endif()
endfunction()

function(kiv_no_unique_symbols target)
  target_compile_options(${target} PRIVATE
    $<$<CXX_COMPILER_ID:GNU>:$<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>>)
endfunction()
