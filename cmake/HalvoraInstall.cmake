# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` puts where: the libraries of the kit as components of one CMake package, a
# pkg-config module each, the headers that a host may include, and the programs that were built.
include(CMakePackageConfigHelpers)

# What a component shows of its adapter: patterns of headers, and which of them it keeps to itself.
set(headers_of_Core "include/halvora/*.h" "include/halvora/platform/*.h")
set(headers_of_Standard "adapters/standard/*.h")
set(headers_of_Json "adapters/json/*.h")
set(headers_of_Image adapters/image/picture_decoder.h adapters/image/png_writer.h)
set(headers_of_Ffmpeg adapters/ffmpeg/ffmpeg_movies.h adapters/ffmpeg/ffmpeg_videos.h)
set(headers_of_Nettle "adapters/nettle/*.h")
set(headers_of_Linux "adapters/linux/*.h" "adapters/linux/bluetooth/*.h")
if(HALVORA_BUS_FOUND)
  list(APPEND headers_of_Linux "adapters/linux/bus/*.h" "adapters/linux/services/*.h")
endif()
set(headers_of_QtBluetooth "adapters/qtbluetooth/*.h")
set(headers_of_Virtual "adapters/virtual/*.h")
set(headers_of_Qt "faces/qt/*.h" "adapters/qt/*.h" "adapters/system/*.h")
set(headers_of_C bindings/c/halvora.h)
set(headers_of_Conformance "conformance/*.h")
set(inside "/(file_names|bluez_errors|bus_dictionary)\\.h$")

# What a component needs besides other components: modules of pkg-config, and libraries without one.
# What is shown is in its headers too, so who links a shared library needs that and nothing else.
set(modules_of_Image "libpng libturbojpeg libjpeg")
set(modules_of_Ffmpeg "libavformat libavcodec libavutil")
set(modules_of_Nettle "nettle")
set(shown_modules_of_Qt "Qt6Quick Qt6Network")
if(HALVORA_BUS_FOUND)
  set(shown_modules_of_Linux libsystemd)
endif()
set(libraries_of_Standard "-pthread")
set(libraries_of_Conformance "-pthread")

set(package "${CMAKE_INSTALL_LIBDIR}/cmake/Halvora-${PROJECT_VERSION_MAJOR}")

# Sets `needed`: the components that this one is linked with.
function(halvora_needed component target components)
  set(needed)
  get_target_property(links ${target} LINK_LIBRARIES)
  foreach(other IN LISTS components)
    get_property(others_target GLOBAL PROPERTY HALVORA_TARGET_OF_${other})
    if(others_target IN_LIST links)
      list(APPEND needed ${other})
    endif()
  endforeach()
  return(PROPAGATE needed)
endfunction()

# A module of pkg-config. Shared libraries know themselves what they need.
function(halvora_module component target needed)
  string(TOLOWER "${component}" name)
  set(requires)
  foreach(other IN LISTS needed)
    string(TOLOWER "${other}" other)
    list(APPEND requires "halvora-${other} = ${PROJECT_VERSION}")
  endforeach()
  list(APPEND requires ${shown_modules_of_${component}})
  set(libraries "-L\${libdir} -l${target}")
  if(NOT BUILD_SHARED_LIBS)
    list(APPEND requires ${modules_of_${component}})
    string(APPEND libraries " ${libraries_of_${component}}")
  endif()
  list(JOIN requires ", " requires)
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR
    BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE libdir)
  set(up "/../..")
  string(REGEX REPLACE "[^/]+" ".." back "${libdir}")
  file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/install/halvora-${name}.pc" @ONLY CONTENT
"prefix=\${pcfiledir}/../@back@
libdir=\${prefix}/@libdir@
includedir=\${prefix}/@HALVORA_INSTALL_INCLUDE@

Name: halvora-@name@
Description: Phones of an audience as the pixels of one light show: @component@
Version: @PROJECT_VERSION@
Requires: @requires@
Libs: @libraries@
Cflags: -I\${includedir}
")
  install(FILES "${PROJECT_BINARY_DIR}/install/halvora-${name}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
endfunction()

function(halvora_install_component component target needed)
  install(TARGETS ${target} EXPORT Halvora${component}
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime
      NAMELINK_COMPONENT development
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
    OBJECTS DESTINATION "${CMAKE_INSTALL_LIBDIR}/halvora-objects" COMPONENT development)
  install(EXPORT Halvora${component} NAMESPACE Halvora:: FILE HalvoraTargets-${component}.cmake
    DESTINATION "${package}" COMPONENT development)
  foreach(pattern IN LISTS headers_of_${component})
    file(GLOB found CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/${pattern}")
    list(FILTER found EXCLUDE REGEX "${inside}")
    foreach(header IN LISTS found)
      cmake_path(GET header PARENT_PATH folder)
      string(REGEX REPLACE "^include/|^bindings/c$" "" folder "${folder}")
      install(FILES "${PROJECT_SOURCE_DIR}/${header}"
        DESTINATION "${HALVORA_INSTALL_INCLUDE}/${folder}" COMPONENT development)
    endforeach()
  endforeach()
  halvora_module(${component} ${target} "${needed}")
endfunction()

get_property(components GLOBAL PROPERTY HALVORA_COMPONENTS)
set(component_table)
foreach(component IN LISTS components)
  get_property(target GLOBAL PROPERTY HALVORA_TARGET_OF_${component})
  halvora_needed(${component} ${target} "${components}")
  halvora_install_component(${component} ${target} "${needed}")
  string(APPEND component_table "set(_halvora_needs_${component} ${needed})\n")
endforeach()

configure_package_config_file(cmake/HalvoraConfig.cmake.in
  "${PROJECT_BINARY_DIR}/install/HalvoraConfig.cmake"
  INSTALL_DESTINATION "${package}" NO_SET_AND_CHECK_MACRO)
set(compatible SameMajorVersion)
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatible SameMinorVersion)
endif()
write_basic_package_version_file("${PROJECT_BINARY_DIR}/install/HalvoraConfigVersion.cmake"
  COMPATIBILITY ${compatible})
install(FILES "${PROJECT_BINARY_DIR}/install/HalvoraConfig.cmake"
    "${PROJECT_BINARY_DIR}/install/HalvoraConfigVersion.cmake"
  DESTINATION "${package}" COMPONENT development)

install(FILES LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
if(TARGET halvora)
  install(TARGETS halvora RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
endif()
if(TARGET halvora_demo)
  install(TARGETS halvora_demo RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT console)
  install(DIRECTORY assets/demo/ DESTINATION "${CMAKE_INSTALL_DATADIR}/halvora/demo"
    COMPONENT console)
endif()
