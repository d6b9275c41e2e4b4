# Levels: a folder sees folders of its own level and below. Each level has an include root in the build tree that
# holds links to just those folders, and a target gets the root of its level and no other.
#   0 ZvCore    1 + Zelvan    2 + Modules    3 + Apps

set(ZELVAN_LEVEL_FOLDERS ZvCore Zelvan Modules Apps)

foreach(_level RANGE 3)
  set(_root ${PROJECT_BINARY_DIR}/levels/${_level})
  file(MAKE_DIRECTORY ${_root})
  foreach(_below RANGE ${_level})
    list(GET ZELVAN_LEVEL_FOLDERS ${_below} _folder)
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${_folder} ${_root}/${_folder} SYMBOLIC COPY_ON_ERROR)
  endforeach()
endforeach()
# Tests, benchmarks and fuzz targets also reach what they share: #include "Tests/Support/....h".
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/levels/tests/Tests)
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/Tests/Support ${PROJECT_BINARY_DIR}/levels/tests/Tests/Support
     SYMBOLIC COPY_ON_ERROR)

# How a program of this build names a file of this machine: Wine shows the root folder as drive Z.
if(CMAKE_CROSSCOMPILING AND WIN32)
  set(ZELVAN_ROOT_DRIVE "Z:")
endif()

set(ZELVAN_PCH_HEADERS
  <algorithm> <array> <cmath> <cstdint> <cstring> <filesystem> <functional> <map> <memory> <optional> <span>
  <string> <string_view> <unordered_map> <utility> <vector>)

# Sources below FOLDER, new files included without a change here.
function(zelvan_sources OUT FOLDER)
  file(GLOB_RECURSE _found CONFIGURE_DEPENDS ${FOLDER}/*.cpp ${FOLDER}/*.h)
  set(_sources ${_found})
  list(FILTER _sources INCLUDE REGEX "\\.cpp$")
  if(_sources)
    set(${OUT} ${_found} PARENT_SCOPE)
  else()
    set(${OUT} "" PARENT_SCOPE)
  endif()
endfunction()

# What each target of the project has: the settings and the include root of its level.
function(zelvan_setup TARGET LEVEL)
  target_link_libraries(${TARGET} PRIVATE $<BUILD_INTERFACE:zelvan_settings>)
  target_include_directories(${TARGET} PRIVATE ${PROJECT_BINARY_DIR}/levels/${LEVEL})
endfunction()

function(zelvan_precompile TARGET)
  if(ZELVAN_PCH)
    target_precompile_headers(${TARGET} PRIVATE ${ZELVAN_PCH_HEADERS} ${ARGN})
  endif()
endfunction()

# A module of level 2: a static library made of FOLDER when that holds sources.
function(zelvan_module TARGET FOLDER)
  cmake_parse_arguments(ARG "" "" "LIBRARIES" ${ARGN})
  zelvan_sources(_sources ${CMAKE_CURRENT_SOURCE_DIR}/${FOLDER})
  if(NOT _sources)
    return()
  endif()
  add_library(${TARGET} STATIC ${_sources})
  zelvan_setup(${TARGET} 2)
  target_link_libraries(${TARGET} PUBLIC zelvan PRIVATE zelvan_fmt ${ARG_LIBRARIES})
endfunction()

# Links whichever of the named modules were built; the code knows them by ZELVAN_HAVE_<MODULE>.
function(zelvan_use_modules TARGET)
  foreach(_module ${ARGN})
    if(TARGET zelvan_${_module})
      string(TOUPPER ${_module} _upper)
      target_link_libraries(${TARGET} PRIVATE zelvan_${_module})
      target_compile_definitions(${TARGET} PRIVATE ZELVAN_HAVE_${_upper})
    endif()
  endforeach()
endfunction()
