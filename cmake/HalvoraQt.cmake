# SPDX-License-Identifier: Apache-2.0
# The Qt Quick face, the demo, the tests of both, and the benchmarks of the face.
find_package(Qt6 6.4 QUIET COMPONENTS Core Gui Network Qml Quick QuickControls2)
if(NOT Qt6_FOUND)
  message(FATAL_ERROR "HALVORA_QT needs Qt 6.4 (Debian: qt6-base-dev, qt6-declarative-dev): install "
    "it, or configure with -DHALVORA_QT=OFF")
endif()
if(NOT TARGET halvora_image OR NOT TARGET halvora_ffmpeg)
  message(FATAL_ERROR "HALVORA_QT needs readers of pictures and videos (Debian: libpng-dev, "
    "libturbojpeg0-dev, libjpeg62-turbo-dev, libavformat-dev, libavcodec-dev): install them, or "
    "configure with -DHALVORA_QT=OFF")
endif()
find_package(Qt6 6.4 QUIET OPTIONAL_COMPONENTS Multimedia)
qt_standard_project_setup()
# Nothing that Qt's tools read is made by the build: they need not wait for the libraries.
set(CMAKE_AUTOGEN_ORIGIN_DEPENDS OFF)
set(loading_qml)
if(NOT HALVORA_QML_AHEAD)
  set(loading_qml NO_CACHEGEN)
endif()

foreach(folder IN ITEMS faces/qt apps/console tests/faces/qt)
  if(folder MATCHES "^tests" AND NOT HALVORA_TESTS)
    continue()
  endif()
  if(EXISTS "${PROJECT_SOURCE_DIR}/${folder}/CMakeLists.txt")
    add_subdirectory("${PROJECT_SOURCE_DIR}/${folder}")
  endif()
endforeach()

if(TARGET halvora_qt)
  halvora_own_sources(halvora_qt)
  halvora_own_sources(halvora_qt_impl)
  halvora_library(halvora_qt_headers
    FILES faces/qt/*.h faces/qt/impl/*.h adapters/qt/*.h adapters/system/*.h
    LINK halvora_qt Qt6::Network)
endif()
if(TARGET halvora_demo)
  halvora_own_sources(halvora_demo)
  set_target_properties(halvora_demo PROPERTIES OUTPUT_NAME halvora-demo)
endif()
if(HALVORA_BENCH AND TARGET halvora_qt)
  halvora_program(halvora_window_bench
    FOLDERS bench/window LINK halvora_qt halvora_qtplugin halvora_virtual halvora_standard)
endif()
