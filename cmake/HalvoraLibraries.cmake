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

# A library of the system that the kit can do without, and what it then lacks. AUTO takes it where it
# is there; whoever asks for it and has it not is told so. Each is linked, so a cross build goes
# without them all.
function(halvora_optional name)
  set(${name} AUTO CACHE STRING "Whether to build with it: AUTO where it is there, ON, OFF")
  set_property(CACHE ${name} PROPERTY STRINGS AUTO ON OFF)
endfunction()

function(halvora_decide name found packages without)
  set(${name}_FOUND ${found} PARENT_SCOPE)
  if(found)
    return()
  endif()
  if(${name} AND NOT ${name} STREQUAL "AUTO")
    message(FATAL_ERROR "${name} needs what is not found here (Debian: ${packages}): install it, or "
      "configure with -D${name}=OFF, which means: ${without}")
  endif()
  message(STATUS "${name} is off or not found (Debian: ${packages}): ${without}")
endfunction()

# halvora_modules(NAME PACKAGES WITHOUT MODULE…): one by pkg-config, as PkgConfig::NAME. Sets
# NAME_FOUND.
find_package(PkgConfig QUIET)
function(halvora_modules name packages without)
  halvora_optional(${name})
  set(found FALSE)
  if(${name} AND PKG_CONFIG_FOUND AND NOT CMAKE_CROSSCOMPILING)
    pkg_check_modules(${name} QUIET IMPORTED_TARGET ${ARGN})
    if(TARGET PkgConfig::${name})
      set(found TRUE)
    endif()
  endif()
  halvora_decide(${name} ${found} "${packages}" "${without}")
  return(PROPAGATE ${name}_FOUND)
endfunction()

halvora_optional(HALVORA_PICTURES)
set(found FALSE)
if(HALVORA_PICTURES)
  find_package(PNG QUIET)
  find_package(JPEG QUIET)
  find_path(HALVORA_TURBOJPEG_INCLUDE turbojpeg.h)
  find_library(HALVORA_TURBOJPEG turbojpeg)
  if(PNG_FOUND AND JPEG_FOUND AND HALVORA_TURBOJPEG_INCLUDE AND HALVORA_TURBOJPEG)
    set(found TRUE)
  endif()
endif()
halvora_decide(HALVORA_PICTURES ${found}
  "libpng-dev libturbojpeg0-dev libjpeg62-turbo-dev" "no picture decoder, no halvora command")

halvora_modules(HALVORA_FFMPEG "libavformat-dev libavcodec-dev libavutil-dev"
  "no video decoder, no halvora command" libavformat libavcodec libavutil)
halvora_modules(HALVORA_NETTLE nettle-dev "no show keys" nettle)
halvora_modules(HALVORA_SYSTEMD libsystemd-dev "no Bluetooth" libsystemd)
halvora_modules(HALVORA_YAML libyaml-dev "no shows are read" yaml-0.1)
halvora_modules(HALVORA_LO liblo-dev "no OSC" liblo)
halvora_modules(HALVORA_OLA libola-dev "no lighting desks" libola)
set(HALVORA_BUS_FOUND ${HALVORA_SYSTEMD_FOUND})

# The client of the daemon that speaks with lighting desks is C++ of the system's own standard
# library, which not every build here uses.
if(HALVORA_OLA_FOUND)
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_LIBRARIES PkgConfig::HALVORA_OLA)
  check_cxx_source_compiles("
    #include <memory>
    #include <ola/client/OlaClient.h>
    #include <ola/network/SocketAddress.h>
    int main() { return ola::network::IPV4Address::Loopback().ToString().empty() ? 1 : 0; }"
    HALVORA_OLA_WORKS)
  unset(CMAKE_REQUIRED_LIBRARIES)
  if(NOT HALVORA_OLA_WORKS)
    halvora_decide(HALVORA_OLA FALSE "libola-dev, with the system's standard library"
      "no lighting desks")
  endif()
endif()
