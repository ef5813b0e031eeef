# SPDX-License-Identifier: Apache-2.0
# Sets `library_versions`: the libraries that this build found, as the command tells of them.

# A header-only library says its version in a header of its own.
function(halvora_header_version name header)
  file(STRINGS "${header}" lines REGEX "^#define [A-Z0-9]+_(MAJOR_VERSION|MINOR_VERSION|PATCH_VERSION|VERSION_MAJOR|VERSION_MINOR|VERSION_PATCH) [0-9]+")
  list(TRANSFORM lines REPLACE "^#define [A-Z0-9_]+ ([0-9]+).*$" "\\1")
  list(JOIN lines "." version)
  list(APPEND library_versions "${name} ${version}")
  return(PROPAGATE library_versions)
endfunction()

set(library_versions)
halvora_header_version(CLI11 "${PROJECT_BINARY_DIR}/include/halvora_cli11/CLI/Version.hpp")
halvora_header_version(RapidJSON
  "${PROJECT_BINARY_DIR}/include/halvora_rapidjson/rapidjson/rapidjson.h")
if(HALVORA_PICTURES_FOUND)
  list(APPEND library_versions "libpng ${PNG_VERSION_STRING}")
  pkg_check_modules(HALVORA_TURBOJPEG_MODULE QUIET libturbojpeg)
  list(APPEND library_versions "libturbojpeg ${HALVORA_TURBOJPEG_MODULE_VERSION}")
endif()
if(HALVORA_FFMPEG_FOUND)
  foreach(module IN ITEMS libavformat libavcodec libavutil)
    list(APPEND library_versions "${module} ${HALVORA_FFMPEG_${module}_VERSION}")
  endforeach()
endif()
if(HALVORA_BUS_FOUND)
  list(APPEND library_versions "libsystemd ${HALVORA_SYSTEMD_VERSION}")
endif()
list(JOIN library_versions ", " library_versions)
