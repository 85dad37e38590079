# What every target of the tree shares.

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

# corvane_library(NAME SOURCES file... LINK library...)
#
# One layer of the program. LINK names everything that the layer may use: a
# header of a layer that is not linked compiles, but its functions do not link.
function(corvane_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC corvane_options ${arg_LINK})
endfunction()
