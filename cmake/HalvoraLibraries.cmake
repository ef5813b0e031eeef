# SPDX-License-Identifier: Apache-2.0
# Header-only libraries of the system. They are reached through links in the build folder, so that a
# cross build sees them and nothing else of the build machine's headers.
function(halvora_header_library target folder header package)
  find_path(${target}_PARENT "${folder}/${header}"
    PATHS /usr/include /usr/local/include NO_CMAKE_FIND_ROOT_PATH)
  if(NOT ${target}_PARENT)
    message(FATAL_ERROR "${folder}/${header} not found: install the Debian package ${package}")
  endif()
  set(include "${PROJECT_BINARY_DIR}/include/${target}")
  file(MAKE_DIRECTORY "${include}")
  file(CREATE_LINK "${${target}_PARENT}/${folder}" "${include}/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE "${include}")
endfunction()

if(HALVORA_TOOLS OR HALVORA_PORTABLE)
  halvora_header_library(halvora_rapidjson rapidjson document.h rapidjson-dev)
endif()
if(HALVORA_TOOLS)
  halvora_header_library(halvora_cli11 CLI CLI.hpp libcli11-dev)
endif()

# The picture libraries are linked, so a cross build goes without them.
find_package(PNG QUIET)
find_package(JPEG QUIET)
find_path(HALVORA_TURBOJPEG_INCLUDE turbojpeg.h)
find_library(HALVORA_TURBOJPEG turbojpeg)
if(PNG_FOUND AND JPEG_FOUND AND HALVORA_TURBOJPEG_INCLUDE AND HALVORA_TURBOJPEG)
  set(HALVORA_PICTURES_FOUND TRUE)
else()
  set(HALVORA_PICTURES_FOUND FALSE)
  message(STATUS "libpng or libjpeg-turbo not found: no picture decoder")
endif()

# So are the libraries that read and decode video files.
find_package(PkgConfig QUIET)
if(PKG_CONFIG_FOUND AND NOT CMAKE_CROSSCOMPILING)
  pkg_check_modules(HALVORA_AV QUIET IMPORTED_TARGET libavformat libavcodec libavutil)
endif()
if(TARGET PkgConfig::HALVORA_AV)
  set(HALVORA_FFMPEG_FOUND TRUE)
else()
  set(HALVORA_FFMPEG_FOUND FALSE)
  message(STATUS "FFmpeg's libraries not found: no video decoder, no halvora command")
endif()

# The one that has the cipher of show keys.
if(PKG_CONFIG_FOUND AND NOT CMAKE_CROSSCOMPILING)
  pkg_check_modules(HALVORA_NETTLE QUIET IMPORTED_TARGET nettle)
endif()
if(NOT TARGET PkgConfig::HALVORA_NETTLE)
  message(STATUS "nettle not found: no show keys")
endif()

# And the one that speaks D-Bus.
if(PKG_CONFIG_FOUND AND NOT CMAKE_CROSSCOMPILING)
  pkg_check_modules(HALVORA_SYSTEMD QUIET IMPORTED_TARGET libsystemd)
endif()
if(TARGET PkgConfig::HALVORA_SYSTEMD)
  set(HALVORA_BUS_FOUND TRUE)
else()
  set(HALVORA_BUS_FOUND FALSE)
  message(STATUS "libsystemd not found: no Bluetooth")
endif()

# And the one that reads YAML, in which people write shows.
if(PKG_CONFIG_FOUND AND NOT CMAKE_CROSSCOMPILING)
  pkg_check_modules(HALVORA_YAML QUIET IMPORTED_TARGET yaml-0.1)
endif()
if(TARGET PkgConfig::HALVORA_YAML)
  set(HALVORA_YAML_FOUND TRUE)
else()
  set(HALVORA_YAML_FOUND FALSE)
  message(STATUS "libyaml not found: no shows are read")
endif()

# And the one that reads Open Sound Control, by which desks play shows.
if(PKG_CONFIG_FOUND AND NOT CMAKE_CROSSCOMPILING)
  pkg_check_modules(HALVORA_LO QUIET IMPORTED_TARGET liblo)
endif()
if(TARGET PkgConfig::HALVORA_LO)
  set(HALVORA_LO_FOUND TRUE)
else()
  set(HALVORA_LO_FOUND FALSE)
  message(STATUS "liblo not found: no OSC")
endif()

# And the client of the daemon that speaks with lighting desks. It is C++ of the system's own
# standard library, which not every build here uses.
if(PKG_CONFIG_FOUND AND NOT CMAKE_CROSSCOMPILING)
  pkg_check_modules(HALVORA_OLA QUIET IMPORTED_TARGET libola)
endif()
set(HALVORA_OLA_FOUND FALSE)
if(TARGET PkgConfig::HALVORA_OLA)
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_LIBRARIES PkgConfig::HALVORA_OLA)
  check_cxx_source_compiles("
    #include <memory>
    #include <ola/client/OlaClient.h>
    #include <ola/network/SocketAddress.h>
    int main() { return ola::network::IPV4Address::Loopback().ToString().empty() ? 1 : 0; }"
    HALVORA_OLA_WORKS)
  unset(CMAKE_REQUIRED_LIBRARIES)
  if(HALVORA_OLA_WORKS)
    set(HALVORA_OLA_FOUND TRUE)
  endif()
endif()
if(NOT HALVORA_OLA_FOUND)
  message(STATUS "OLA's client not found: no lighting desks")
endif()
