# SPDX-License-Identifier: Apache-2.0
# Fuzz targets: the whole build is compiled with clang's fuzzer and the sanitizers, so it is a build
# of its own; see fuzz/README.md.
option(HALVORA_FUZZ "Build the fuzz targets; needs clang" OFF)
if(NOT HALVORA_FUZZ)
  return()
endif()
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "HALVORA_FUZZ needs clang")
endif()

set(sanitizers address,undefined)
set(ignored "-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitizer-ignore.txt")
foreach(library IN ITEMS halvora_core halvora_standard halvora_virtual halvora_json halvora_image
    halvora_ffmpeg)
  if(TARGET ${library})
    target_compile_options(${library} PRIVATE
      -fsanitize=fuzzer-no-link,${sanitizers} ${ignored} -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
  endif()
endforeach()

function(halvora_fuzz target)
  halvora_program(${target} FILES fuzz/${target}.cpp LINK ${ARGN})
  target_compile_options(${target} PRIVATE
    -fsanitize=fuzzer,${sanitizers} ${ignored} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(${target} PRIVATE -fsanitize=fuzzer,${sanitizers})
endfunction()

halvora_fuzz(gobo_names_fuzz halvora_core halvora_virtual)
halvora_fuzz(seat_map_fuzz halvora_core halvora_json halvora_rapidjson)
target_sources(seat_map_fuzz PRIVATE tests/seats/plain_seat_map.cpp tests/seats/seat_map_lines.cpp)
if(TARGET halvora_image)
  halvora_fuzz(picture_decoder_fuzz halvora_core halvora_image)
endif()
if(TARGET halvora_ffmpeg)
  halvora_fuzz(mp4_outline_fuzz halvora_core halvora_ffmpeg)
endif()
