# Shared by all targets of the tree.

if(WIN32)
  set(CORVANE_PLATFORM windows)
else()
  set(CORVANE_PLATFORM linux)
endif()

add_library(corvane_options INTERFACE)
target_include_directories(corvane_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(corvane_options INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Werror)
target_compile_definitions(corvane_options INTERFACE QT_NO_KEYWORDS)
if(CORVANE_FUZZERS)
  target_compile_options(corvane_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# corvane_precompile(NAME LINK library... HEADERS header...)
#
# Precompiles outside headers once for all targets with "REUSE_FROM NAME", which need the same
# compiler options.
function(corvane_precompile name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK;HEADERS")
  set(nothing ${CMAKE_BINARY_DIR}/nothing.cpp)
  file(CONFIGURE OUTPUT ${nothing} CONTENT "")
  add_library(${name} OBJECT ${nothing})
  target_link_libraries(${name} PRIVATE corvane_options ${arg_LINK})
  target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
endfunction()

# The headers of Qt Core take longest. All layers but buffers/ use it.
set(CORVANE_SLOW_HEADERS
  <algorithm> <array> <chrono> <functional> <map> <memory> <optional> <span> <string> <vector>
  <QCoreApplication> <QDateTime> <QDir> <QJsonDocument> <QTemporaryDir> <QTimer>)
corvane_precompile(slow_headers LINK Qt6::Core HEADERS ${CORVANE_SLOW_HEADERS})

# corvane_library(NAME SOURCES file... LINK library...)
#
# Adds a layer of the program. LINK names every library of the tree whose headers the layer's files
# include. Only scripts/check-includes enforces this: the compiler finds all headers, and the linker
# all functions of the program's libraries.
function(corvane_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC corvane_options ${arg_LINK})
  if(arg_LINK)
    target_precompile_headers(${name} REUSE_FROM slow_headers)
  endif()
endfunction()

# corvane_write_link_lists(FOLDER FILE)
#
# Appends a line to the file for each target in the folder and below, for scripts/check-includes:
# name, type, folder, source files and linked libraries, separated by "|".
function(corvane_write_link_lists folder file)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target ${targets})
    set(line ${target})
    foreach(property TYPE SOURCE_DIR SOURCES LINK_LIBRARIES)
      get_property(value TARGET ${target} PROPERTY ${property})
      string(APPEND line "|${value}")
    endforeach()
    file(APPEND ${file} "${line}\n")
  endforeach()
  get_property(subfolders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(subfolder ${subfolders})
    corvane_write_link_lists(${subfolder} ${file})
  endforeach()
endfunction()
