# Compiler, linker and output settings of every target.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
include(GNUInstallDirs)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()
# Assertions stay on in RelWithDebInfo; Release leaves them out.
string(REGEX REPLACE "[-/]DNDEBUG" "" CMAKE_CXX_FLAGS_RELWITHDEBINFO "${CMAKE_CXX_FLAGS_RELWITHDEBINFO}")

# Programs and DLLs lie in one folder: that is where Windows looks for a DLL.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
if(NOT WIN32)
  set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR};$ORIGIN")
endif()

# Objects are shared between checkouts and survive a precompiled header only with these settings, so they are given
# here and not left to the environment.
find_program(ZELVAN_CCACHE ccache)
if(ZELVAN_CCACHE AND (NOT CMAKE_CXX_COMPILER_LAUNCHER OR CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache$"))
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
      CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${ZELVAN_CCACHE})
endif()

add_library(zelvan_settings INTERFACE)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  # Results of floating point must not depend on whether the compiler fuses operations.
  target_compile_options(zelvan_settings INTERFACE -ffp-contract=off)
  target_compile_options(zelvan_settings INTERFACE
    -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wundef -Wvla -Wfloat-conversion
    -Wextra-semi -Wno-missing-field-initializers)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(zelvan_settings INTERFACE -Wlogical-op -Wduplicated-cond -Wsuggest-override
      $<$<BOOL:${ZELVAN_PCH}>:-fpch-preprocess>)
  else()
    target_compile_options(zelvan_settings INTERFACE -Wsuggest-override)
  endif()
  if(ZELVAN_WERROR)
    target_compile_options(zelvan_settings INTERFACE -Werror)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # These look behind inlining and are wrong about the standard library at times: they warn, and do not stop.
      target_compile_options(zelvan_settings INTERFACE
        -Wno-error=array-bounds -Wno-error=stringop-overflow -Wno-error=stringop-overread -Wno-error=restrict
        -Wno-error=maybe-uninitialized)
    endif()
  endif()
endif()
if(MSVC)
  # Exported classes hold members of the standard library by design: host and engine use one compiler and runtime.
  target_compile_options(zelvan_settings INTERFACE
    /W4 /utf-8 /permissive- /Zc:__cplusplus /bigobj /wd4251 /wd4275)
endif()
if(WIN32)
  target_compile_definitions(zelvan_settings INTERFACE
    UNICODE _UNICODE WINVER=0x0A00 _WIN32_WINNT=0x0A00 NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

if(ZELVAN_SANITIZE)
  target_compile_options(zelvan_settings INTERFACE
    -fsanitize=${ZELVAN_SANITIZE} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_compile_definitions(zelvan_settings INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(zelvan_settings INTERFACE -fsanitize=${ZELVAN_SANITIZE})
endif()
if(ZELVAN_BUILD_FUZZ)
  target_compile_options(zelvan_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()

if(NOT WIN32 AND NOT APPLE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  find_program(ZELVAN_MOLD mold)
  if(ZELVAN_MOLD)
    target_link_options(zelvan_settings INTERFACE -fuse-ld=mold)
  endif()
endif()
