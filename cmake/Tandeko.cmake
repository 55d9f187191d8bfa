# How every target of the project is built: the language level, the warnings, and one function per
# kind of target, so that the CMakeLists.txt of a folder is one line.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)

# GCC 12 sees overlapping copies in std::string's operator+ that are not there.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options(-Wno-restrict)
endif()

# Windows 10 is the oldest Windows served. Each program stands alone: no compiler's library lies beside it.
if(WIN32)
  add_compile_definitions(_WIN32_WINNT=0x0A00 WINVER=0x0A00 UNICODE _UNICODE)
  add_link_options(-static)
  add_compile_options(-Wno-stringop-overread)  # GCC 12, too: comparing texts reads no such lengths
endif()

# Where this machine's files are for programs that Wine runs: paths built into tests begin with it.
if(CMAKE_CROSSCOMPILING)
  set(TANDEKO_DRIVE "Z:")
endif()

option(TANDEKO_SANITIZE "Compile with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(TANDEKO_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

option(TANDEKO_FUZZ "Build the fuzzers (needs clang)" OFF)
if(TANDEKO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# tandeko_library(NAME [QT] [DEPENDS library ...]): a static library of all sources below this folder, but
# for main.cpp, which is a program's.
# With QT, moc and uic run over it.
function(tandeko_library name)
  cmake_parse_arguments(ARG "QT" "" "DEPENDS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS *.cpp *.h *.ui)
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  if(NOT sources)
    return()
  endif()
  add_library(${name} STATIC ${sources})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_compile_definitions(${name} PUBLIC TANDEKO_VERSION="${PROJECT_VERSION}")
  if(ARG_QT)
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON)
    # Ninja does not run moc and uic again for sources that the glob newly found.
    set(known "")
    if(EXISTS ${CMAKE_CURRENT_BINARY_DIR}/sources.txt)
      file(READ ${CMAKE_CURRENT_BINARY_DIR}/sources.txt known)
    endif()
    if(NOT known STREQUAL "${sources}")
      file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/sources.txt "${sources}")
      file(REMOVE ${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/timestamp)
    endif()
    target_link_libraries(${name} PUBLIC Qt6::Widgets)
    target_compile_definitions(${name} PUBLIC QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
  endif()
  foreach(dependency ${ARG_DEPENDS})
    if(TARGET ${dependency})
      target_link_libraries(${name} PUBLIC ${dependency})
    endif()
  endforeach()
endfunction()

# tandeko_tests(NAME [QT] DEPENDS library ...): one GoogleTest program of all sources in this folder.
# With QT the tests run inside an application on the offscreen platform (tests/support/gui_main.cpp).
function(tandeko_tests name)
  cmake_parse_arguments(ARG "QT" "" "DEPENDS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE TANDEKO_TEST_DATA="${TANDEKO_DRIVE}${CMAKE_SOURCE_DIR}/tests/data")
  if(ARG_QT)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_sources(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/support/gui_main.cpp)
    target_link_libraries(${name} PRIVATE Qt6::Test GTest::gmock)
    if(WIN32)
      qt_import_plugins(${name} INCLUDE Qt6::QOffscreenIntegrationPlugin)
    endif()
  else()
    target_link_libraries(${name} PRIVATE GTest::gmock GTest::gtest_main)
  endif()
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS})
  tandeko_register_tests(${name})
endfunction()

# Each test of a program is one of ctest's; under Wine, where a start costs more than most tests, each program.
function(tandeko_register_tests name)
  if(CMAKE_CROSSCOMPILING)
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name} PROPERTIES TIMEOUT 900)
  else()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
      PROPERTIES TIMEOUT 300 ENVIRONMENT "QT_QPA_PLATFORM=offscreen" LABELS ${name})
  endif()
endfunction()
