# Renders resources/tandeko.svg and icons/*.svg and packs them, with Qt's Polish texts, into
# one resource file, so that the program needs no further Qt module and no file beside it.

find_program(RSVG_CONVERT rsvg-convert)
if(NOT RSVG_CONVERT)
  message(FATAL_ERROR "rsvg-convert is missing (package librsvg2-bin)")
endif()
find_file(QTBASE_PL qtbase_pl.qm PATHS ${QT6_INSTALL_PREFIX}/share/qt6/translations /usr/share/qt6/translations
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
if(NOT QTBASE_PL)
  message(FATAL_ERROR "qtbase_pl.qm is missing (package qt6-translations-l10n)")
endif()

# tandeko_resources(TARGET): adds the resource "tandeko" to the library.
function(tandeko_resources target)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/resources)
  file(MAKE_DIRECTORY ${folder}/icons)
  file(GLOB drawings CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/icons/*.svg)
  list(APPEND drawings ${CMAKE_SOURCE_DIR}/resources/tandeko.svg)
  set(pictures)
  set(entries "")
  foreach(drawing ${drawings})
    get_filename_component(name ${drawing} NAME_WE)
    set(outputs)
    set(commands)
    set(sizes 16 24 32 48)
    if(name STREQUAL tandeko)  # the program's own, which task bars and switchers show larger
      list(APPEND sizes 64 128 256)
    endif()
    foreach(size ${sizes})
      set(picture icons/${name}-${size}.png)
      list(APPEND outputs ${folder}/${picture})
      list(APPEND commands COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${folder}/${picture} ${drawing})
      string(APPEND entries "<file>${picture}</file>\n")
    endforeach()
    add_custom_command(OUTPUT ${outputs} ${commands} DEPENDS ${drawing} VERBATIM)
    list(APPEND pictures ${outputs})
  endforeach()
  string(APPEND entries "<file alias=\"translations/qtbase_pl.qm\">${QTBASE_PL}</file>\n")
  file(CONFIGURE OUTPUT ${folder}/tandeko.qrc CONTENT "<RCC><qresource>\n${entries}</qresource></RCC>\n")
  add_custom_command(OUTPUT ${folder}/qrc_tandeko.cpp
    COMMAND Qt6::rcc --no-zstd --name tandeko -o ${folder}/qrc_tandeko.cpp ${folder}/tandeko.qrc
    DEPENDS ${pictures} ${folder}/tandeko.qrc VERBATIM)
  target_sources(${target} PRIVATE ${folder}/qrc_tandeko.cpp)
endfunction()
