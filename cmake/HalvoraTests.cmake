# SPDX-License-Identifier: Apache-2.0
# GoogleTest is compiled here, from Debian's sources: it must share the compiler, the standard
# library and the sanitizers of the code under test.
set(HALVORA_GOOGLETEST "/usr/src/googletest" CACHE PATH "Source folder of GoogleTest")
if(NOT EXISTS "${HALVORA_GOOGLETEST}/CMakeLists.txt")
  message(FATAL_ERROR "No GoogleTest in ${HALVORA_GOOGLETEST}: install the Debian package "
    "googletest, set HALVORA_GOOGLETEST, or configure with -DHALVORA_TESTS=OFF")
endif()
set(INSTALL_GTEST OFF)
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
add_subdirectory("${HALVORA_GOOGLETEST}" "${PROJECT_BINARY_DIR}/googletest"
  EXCLUDE_FROM_ALL SYSTEM)
include(GoogleTest)

set(elsewhere tests/faces/ tests/apps/console/ tests/adapters/qt/ tests/adapters/system/ tests/bluez-vm/ tests/portable/ tests/failures/ tests/soak/ ${fuzz_elsewhere})
if(NOT TARGET halvora_image)
  list(APPEND elsewhere tests/adapters/image/)
endif()
if(NOT TARGET halvora_ffmpeg)
  list(APPEND elsewhere tests/adapters/ffmpeg/ tests/venue/plan/artwork_)
endif()
if(NOT TARGET halvora_c_media)
  list(APPEND elsewhere tests/bindings/media/)
endif()
if(NOT HALVORA_YAML_FOUND)
  list(APPEND elsewhere tests/venue/show/cue_ tests/venue/show/yaml_ tests/venue/live/
    tests/apps/halvora/show_ tests/apps/halvora/live_)
endif()
if(NOT TARGET halvora_nettle)
  list(APPEND elsewhere tests/adapters/nettle/ tests/apps/halvora/signed_packets_)
endif()
if(NOT HALVORA_LO_FOUND)
  list(APPEND elsewhere tests/venue/live/osc_)
endif()
if(NOT HALVORA_OLA_FOUND)
  list(APPEND elsewhere tests/venue/live/olad_ tests/venue/live/private_olad)
endif()
if(NOT HALVORA_BUS_FOUND)
  list(APPEND elsewhere
    tests/adapters/linux/services/ tests/adapters/linux/bus/ tests/venue/air/)
endif()
# Where processors differ: in the sign of a char, in fractions of floating point, in what becomes of a
# number that its type cannot hold, in the order of bytes and how they are aligned. The other folders
# ask the system (files, buses, threads, a terminal), have no arithmetic of their own, or simulate crowds
# on the machines of crews.
set(processor_matters
  engine              # packets and traces of the engine: bytes to numbers, numbers to milliseconds
  light               # levels, fades, chances, texts: fractions
  pixelmap            # places in frames, tables as bytes
  seats               # texts byte by byte, numbers in texts
  usage               # dates and counters
  platform            # texts and numbers of the defaults
  text                # numbers in texts
  adapters/json       # numbers, UTF-8
  adapters/standard/defaults_document adapters/standard/seeded_random
  adapters/virtual/virtual_video adapters/virtual/virtual_storage
  venue/show venue/plan
  apps/halvora/map apps/halvora/lut
  fuzz)               # every finding in the parsers
if(HALVORA_TEST_PROCESSOR)
  list(JOIN processor_matters "|" places)
  file(GLOB_RECURSE tests CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/*_test.cpp")
  foreach(test IN LISTS tests)
    cmake_path(RELATIVE_PATH test BASE_DIRECTORY "${PROJECT_SOURCE_DIR}")
    if(NOT test MATCHES "^tests/(${places})")
      list(APPEND elsewhere "${test}")
    endif()
  endforeach()
endif()
if(HALVORA_TEST_SUITES)
  list(APPEND elsewhere tests/fuzz/)
  file(GLOB_RECURSE tests CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/*_test.cpp")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${tests})
  foreach(test IN LISTS tests)
    file(STRINGS "${test}" wanted LIMIT_COUNT 1
      REGEX "^TEST(_F|_P)?\\([A-Za-z0-9_]*${HALVORA_TEST_SUITES}")
    if(NOT wanted)
      cmake_path(RELATIVE_PATH test BASE_DIRECTORY "${PROJECT_SOURCE_DIR}")
      list(APPEND elsewhere "${test}")
    endif()
  endforeach()
endif()
# The rules of the radio on Qt Bluetooth need no Qt.
halvora_program(halvora_tests FOLDERS tests EXCLUDE ${elsewhere}
  FILES adapters/qtbluetooth/qt_bluetooth_central.cpp
  LINK halvora_tool halvora_cface halvora_conformance
    $<TARGET_NAME_IF_EXISTS:halvora_cmedia_face> $<TARGET_NAME_IF_EXISTS:halvora_image>
    $<TARGET_NAME_IF_EXISTS:halvora_ffmpeg> $<TARGET_NAME_IF_EXISTS:halvora_nettle> halvora_json halvora_virtual
    halvora_standard halvora_core gmock_main)
if(TARGET halvora_tests)
  # Tests are compiled far longer than they run: only what they test is worth optimising.
  target_compile_options(halvora_tests PRIVATE $<$<CONFIG:Debug>:-O0>)
  halvora_unite_tests(halvora_tests)
  halvora_precompile(halvora_tests <gmock/gmock.h> <gtest/gtest.h>)
  if(HALVORA_TEST_SHARDS)
    math(EXPR last "${HALVORA_TEST_SHARDS} - 1")
    # Neighbours in a process are strangers, and the same ones every time.
    set(order "GTEST_SHUFFLE=1;GTEST_RANDOM_SEED=7")
    foreach(shard RANGE ${last})
      add_test(NAME halvora_tests/${shard} COMMAND halvora_tests)
      set_tests_properties(halvora_tests/${shard} PROPERTIES TIMEOUT 600
        ENVIRONMENT "GTEST_TOTAL_SHARDS=${HALVORA_TEST_SHARDS};GTEST_SHARD_INDEX=${shard};${order}")
    endforeach()
  else()
    gtest_discover_tests(halvora_tests NO_PRETTY_VALUES
      DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
  endif()
  # Its library goes before all others, which a sanitizer's wants for itself.
  find_program(HALVORA_UMOCKDEV umockdev-run)
  if(HALVORA_UMOCKDEV AND HALVORA_BUS_FOUND AND NOT CMAKE_CROSSCOMPILING AND NOT HALVORA_SANITIZE
      AND NOT HALVORA_TEST_SUITES)
    add_test(NAME kernel_lights
      COMMAND "${HALVORA_UMOCKDEV}"
        --device "${PROJECT_SOURCE_DIR}/tests/adapters/linux/services/phone_lights.umockdev"
        -- $<TARGET_FILE:halvora_tests> --gtest_filter=KernelLights.*)
    set_tests_properties(kernel_lights PROPERTIES TIMEOUT 120
      FAIL_REGULAR_EXPRESSION "SKIPPED;0 tests from 0 test suites ran")
  endif()
endif()

# Failure as a test has a heap and system calls of its own, and so a program of its own; sanitizers
# have theirs, and arm64's programs have no FFmpeg.
if(TARGET halvora_ffmpeg AND TARGET halvora_image AND NOT HALVORA_STATIC_PROGRAMS
    AND NOT HALVORA_SANITIZE AND NOT HALVORA_TEST_SUITES)
  halvora_program(halvora_failures
    FILES tests/failures/*.cpp tests/support/pixmap_decoder.cpp tests/support/source_tree.cpp
    LINK halvora_tool halvora_image halvora_ffmpeg halvora_json halvora_virtual halvora_standard
      halvora_core ${CMAKE_DL_LIBS})
  target_compile_options(halvora_failures PRIVATE $<$<CONFIG:Debug>:-O0>)
  foreach(shard RANGE 1)
    add_test(NAME halvora_failures/${shard} COMMAND halvora_failures --shard ${shard}/2)
    # A child that hangs is ended by its own bound; all of them take their time.
    set_tests_properties(halvora_failures/${shard} PROPERTIES TIMEOUT 14400)
  endforeach()
endif()

# The air of the emulated machine; tests/bluez-vm/run builds what it needs itself.
halvora_program(halvora_vm_controllers FILES tests/bluez-vm/controller*.cpp)
set_target_properties(halvora_vm_controllers PROPERTIES EXCLUDE_FROM_ALL ON)
if(TARGET halvora_qtbluetooth)
  halvora_program(halvora_vm_qt_listener FILES tests/bluez-vm/qt_listener.cpp adapters/qt/qt_run_loop.cpp
    LINK halvora_venue halvora_qtbluetooth)
  set_target_properties(halvora_vm_qt_listener PROPERTIES EXCLUDE_FROM_ALL ON)
endif()

# The C library as its users load it: by a program in C, and by Python, for which a sanitizer's library
# would come too late.
if(TARGET halvora_c AND NOT HALVORA_TEST_SUITES AND NOT HALVORA_TEST_PROCESSOR)
  enable_language(C)
  add_executable(halvora_c99_host tests/bindings/c/c99_host.c)
  set_target_properties(halvora_c99_host PROPERTIES C_STANDARD 99 C_EXTENSIONS OFF)
  target_compile_options(halvora_c99_host PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wstrict-prototypes -Werror)
  target_link_libraries(halvora_c99_host PRIVATE halvora_c)
  if(HALVORA_SANITIZE)
    # What the sanitizers need of C++ comes with its linker alone.
    set_target_properties(halvora_c99_host PROPERTIES LINKER_LANGUAGE CXX)
  endif()
  add_test(NAME c_interface/c99 COMMAND halvora_c99_host)
  if(TARGET halvora_c_media)
    add_executable(halvora_c99_seat tests/bindings/c/c99_seat.c)
    set_target_properties(halvora_c99_seat PROPERTIES C_STANDARD 99 C_EXTENSIONS OFF)
    target_compile_options(halvora_c99_seat PRIVATE
      -Wall -Wextra -Wpedantic -Wconversion -Wstrict-prototypes -Werror)
    target_link_libraries(halvora_c99_seat PRIVATE halvora_c_media halvora_c)
    if(HALVORA_SANITIZE)
      set_target_properties(halvora_c99_seat PROPERTIES LINKER_LANGUAGE CXX)
    endif()
    add_test(NAME c_interface/c99_seat
      COMMAND halvora_c99_seat "${PROJECT_SOURCE_DIR}/assets/demo")
  endif()
  find_package(Python3 QUIET COMPONENTS Interpreter)
  if(Python3_FOUND AND NOT HALVORA_SANITIZE)
    add_test(NAME c_interface/recorded_shows
      COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/tests/bindings/c/recorded_shows.py"
        $<TARGET_FILE:halvora_c> "${PROJECT_SOURCE_DIR}")
    add_test(NAME c_interface/python_phone
      COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/tests/bindings/c/python_phone.py"
        $<TARGET_FILE:halvora_c> "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/python-phone")
    set_tests_properties(c_interface/recorded_shows c_interface/python_phone
      PROPERTIES TIMEOUT 120)
    if(TARGET halvora_c_media)
      # The pictures of docs/modes.md are what the kit shows.
      add_test(NAME c_interface/mode_strips
        COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/scripts/make_mode_strips.py"
          $<TARGET_FILE:halvora_c> $<TARGET_FILE:halvora_c_media> --check)
      set_tests_properties(c_interface/mode_strips PROPERTIES TIMEOUT 120)
    endif()
    if(TARGET halvora_c_media AND TARGET halvora)
      add_test(NAME c_interface/pixel_map_show
        COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/tests/bindings/c/pixel_map_show.py"
          $<TARGET_FILE:halvora_c> $<TARGET_FILE:halvora_c_media> $<TARGET_FILE:halvora>
          "${PROJECT_SOURCE_DIR}")
      set_tests_properties(c_interface/pixel_map_show PROPERTIES TIMEOUT 120)
    endif()
  endif()
endif()
