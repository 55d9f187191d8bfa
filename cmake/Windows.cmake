# What a Windows program carries besides its code: icon, version, manifest.

# tandeko_windows_program(TARGET "what the program is"): nothing happens on other systems.
function(tandeko_windows_program target description)
  if(NOT WIN32)
    return()
  endif()
  set(TANDEKO_TARGET ${target})
  set(TANDEKO_DESCRIPTION "${description}")
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/windows)
  configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/program.manifest.in ${folder}/program.manifest @ONLY)
  configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/program.rc.in ${folder}/program.rc @ONLY)
  tandeko_windows_icon(${folder}/program.ico)
  set_source_files_properties(${folder}/program.rc PROPERTIES
    OBJECT_DEPENDS "${folder}/program.manifest;${folder}/program.ico")
  target_sources(${target} PRIVATE ${folder}/program.rc)
  target_link_options(${target} PRIVATE -s)
endfunction()

# tandeko_windows_icon(FILE): the program's drawing in the sizes that Windows asks for.
function(tandeko_windows_icon file)
  find_program(RSVG_CONVERT rsvg-convert REQUIRED)
  find_program(ICOTOOL icotool REQUIRED)
  set(drawing ${CMAKE_SOURCE_DIR}/resources/tandeko.svg)
  set(commands)
  set(pictures)
  foreach(size 16 20 24 32 40 48 64 256)
    list(APPEND commands COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${file}.${size}.png ${drawing})
    if(size EQUAL 256)
      list(APPEND pictures --raw=${file}.${size}.png)
    else()
      list(APPEND pictures ${file}.${size}.png)
    endif()
  endforeach()
  add_custom_command(OUTPUT ${file} ${commands} COMMAND ${ICOTOOL} --create -o ${file} ${pictures}
    DEPENDS ${drawing} VERBATIM)
endfunction()
