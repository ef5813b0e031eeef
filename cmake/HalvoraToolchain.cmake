# SPDX-License-Identifier: Apache-2.0
# How this build compiles and links. Only for our own builds: as a part of a host application the
# kit takes the host's choices.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

find_program(HALVORA_CCACHE ccache)
if(HALVORA_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${HALVORA_CCACHE}")
endif()

find_program(HALVORA_MOLD mold)
if(HALVORA_MOLD AND NOT CMAKE_CROSSCOMPILING)
  add_link_options(-fuse-ld=mold)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # It collects garbage in the middle of a source, though most need less memory than this: in kB.
  add_compile_options("SHELL:--param ggc-min-heapsize=400000")
endif()

if(HALVORA_SANITIZE)
  add_compile_options(
    -fsanitize=${HALVORA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${HALVORA_SANITIZE})
endif()
if(HALVORA_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # The list's name carries its content: neither ninja nor ccache looks into it.
  set(ignored "${PROJECT_SOURCE_DIR}/cmake/sanitizer-ignore.txt")
  file(SHA256 "${ignored}" content)
  configure_file("${ignored}" "${PROJECT_BINARY_DIR}/sanitizer-ignore-${content}.txt" COPYONLY)
  add_compile_options(
    "-fsanitize-ignorelist=${PROJECT_BINARY_DIR}/sanitizer-ignore-${content}.txt")
endif()

if(EMSCRIPTEN)
  # Debian's has a standard library that lacks some of C++20.
  add_compile_options("SHELL:-include ${PROJECT_SOURCE_DIR}/cmake/libcxx-13.h")
endif()

if(HALVORA_STATIC_PROGRAMS)
  add_link_options(-static)
endif()

if(HALVORA_LTO)
  include(CheckIPOSupported)
  check_ipo_supported(RESULT HALVORA_LTO_WORKS OUTPUT HALVORA_LTO_REASON LANGUAGES CXX)
  if(HALVORA_LTO_WORKS)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
  else()
    message(FATAL_ERROR "HALVORA_LTO needs a compiler and a linker that optimise at link time: configure "
      "with -DHALVORA_LTO=OFF. ${HALVORA_LTO_REASON}")
  endif()
endif()
