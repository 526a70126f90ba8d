# What keeps KivSaver.dll small. It brings the C++ runtime along, of which it
# needs little.

# Optimises a target for size, across its sources and those it links.
function(kiv_optimise_for_size target)
  if(NOT MINGW OR NOT CMAKE_BUILD_TYPE STREQUAL MinSizeRel)
    return()
  endif()
  set(flags -Os -flto)
  target_compile_options(${target} PRIVATE ${flags})
  # In one partition: gcc 12 fails to optimise several for size.
  target_link_options(${target} PUBLIC ${flags} -flto-partition=none)
endfunction()

# Drops what a library does not use. The linker's own script keeps every
# function that has unwind data, which is every function; here those of some
# large objects of the runtime stay only if they are called. The objects catch
# nothing by type, so their unwind data needs nothing else to be kept.
function(kiv_drop_unused target)
  if(NOT MINGW)
    return()
  endif()
  execute_process(COMMAND ${CMAKE_LINKER} --verbose
    OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE ".*\n======+\n(.*)\n======+\n.*" "\\1" script "${text}")
  string(JOIN " " droppable *floating_to_chars.o *string-inst.o *stdexcept.o
    *system_error.o *functexcept.o *random.o)
  foreach(section pdata xdata)
    string(REPLACE "KEEP(*(.${section}*))"
      "KEEP(*(EXCLUDE_FILE(${droppable}) .${section}*)) *(.${section}*)"
      changed "${script}")
    if(changed STREQUAL script)
      message(WARNING "The linker's script has another form; "
        "${target} will be larger")
      return()
    endif()
    set(script "${changed}")
  endforeach()
  set(path ${CMAKE_CURRENT_BINARY_DIR}/${target}.ld)
  file(CONFIGURE OUTPUT ${path} CONTENT "${script}" @ONLY)
  target_link_options(${target} PRIVATE
    LINKER:--gc-sections LINKER:--script=${path})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${path})
endfunction()
