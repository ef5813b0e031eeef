# SPDX-License-Identifier: Apache-2.0
# Fuzz targets, and the soak. The targets are tests too; here they become programs of their own.
set(fuzz_parts)
set(fuzz_elsewhere tests/fuzz/libfuzzer_main.cpp tests/fuzz/many_main.cpp)
set(fuzz_libraries halvora_json halvora_virtual halvora_standard halvora_core
  halvora_rapidjson)
if(TARGET halvora_image)
  list(APPEND fuzz_parts HALVORA_FUZZ_PICTURES)
  list(APPEND fuzz_libraries halvora_image)
else()
  list(APPEND fuzz_elsewhere tests/fuzz/picture_fuzz.cpp)
endif()
if(TARGET halvora_ffmpeg)
  list(APPEND fuzz_parts HALVORA_FUZZ_VIDEO)
  list(APPEND fuzz_libraries halvora_ffmpeg)
else()
  list(APPEND fuzz_elsewhere tests/fuzz/outline_fuzz.cpp tests/fuzz/video_fuzz.cpp)
endif()
if(HALVORA_BUS_FOUND)
  list(APPEND fuzz_parts HALVORA_FUZZ_BUS)
  list(APPEND fuzz_libraries halvora_linux)
else()
  list(APPEND fuzz_elsewhere tests/fuzz/bus_fuzz.cpp)
endif()
if(HALVORA_YAML_FOUND)
  list(APPEND fuzz_parts HALVORA_FUZZ_YAML)
  list(APPEND fuzz_libraries PkgConfig::HALVORA_YAML)
  set(fuzz_yaml venue/show/yaml_document.cpp)
else()
  list(APPEND fuzz_elsewhere tests/fuzz/show_fuzz.cpp)
  set(fuzz_yaml venue/show/yaml_absent.cpp)
endif()
set_source_files_properties("${PROJECT_SOURCE_DIR}/tests/fuzz/fuzz_targets.cpp" PROPERTIES
  COMPILE_DEFINITIONS "${fuzz_parts}")
set_source_files_properties("${PROJECT_SOURCE_DIR}/tests/support/source_tree.cpp" PROPERTIES
  COMPILE_DEFINITIONS HALVORA_SOURCE_DIR="${PROJECT_SOURCE_DIR}" SKIP_PRECOMPILE_HEADERS ON)

function(halvora_fuzz_program target main)
  list(REMOVE_ITEM fuzz_elsewhere ${main})
  halvora_program(${target}
    FILES tests/support/engine_world.* tests/support/pixmap_decoder.* tests/support/source_tree.*
      tests/seats/plain_seat_map.* tests/seats/seat_map_lines.*
      # What they try of the command: the rest takes longer to compile than all the kit.
      venue/base/input_text.cpp venue/base/json_line.cpp venue/plan/csv_table.cpp
      venue/plan/free_squares.cpp venue/plan/seat_list.cpp venue/plan/seat_placing.cpp
      venue/show/cue_*.cpp venue/show/flash_meter.cpp venue/show/packet.cpp
      venue/show/scenario.cpp ${fuzz_yaml}
    FOLDERS tests/fuzz EXCLUDE ${fuzz_elsewhere} tests/fuzz/fuzz_targets_test.cpp
    LINK ${fuzz_libraries})
endfunction()

# Clang's fuzzer: the whole build is compiled with it and the sanitizers, so it is a build of its
# own, which `./fuzz` makes.
option(HALVORA_FUZZ "Build the fuzzer; needs clang" OFF)
if(HALVORA_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "HALVORA_FUZZ needs clang")
  endif()
  halvora_fuzz_program(halvora_fuzz tests/fuzz/libfuzzer_main.cpp)
  target_link_options(halvora_fuzz PRIVATE -fsanitize=fuzzer)
endif()

# The same targets without a fuzzer, for very many executions; optimised builds want it.
option(HALVORA_FUZZ_MANY "Build the fuzz targets without a fuzzer" OFF)
if(HALVORA_FUZZ_MANY)
  halvora_fuzz_program(halvora_fuzz_many tests/fuzz/many_main.cpp)
endif()

# It counts what is taken from the heap; a sanitizer has a heap of its own.
set(has_soak_test)
if(HALVORA_TESTS AND NOT HALVORA_TEST_SUITES AND NOT HALVORA_SANITIZE)
  set(has_soak_test TRUE)
endif()
if(has_soak_test OR HALVORA_FUZZ_MANY)
  halvora_program(halvora_soak
    FILES tests/support/engine_world.* tests/support/pixmap_decoder.* FOLDERS tests/soak
    LINK halvora_json halvora_virtual halvora_standard halvora_core)
endif()
if(has_soak_test)
  add_test(NAME soak COMMAND halvora_soak --phones 10 --hours 24)
  set_tests_properties(soak PROPERTIES TIMEOUT 600)
endif()
