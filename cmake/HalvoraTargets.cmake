# SPDX-License-Identifier: Apache-2.0
# halvora_library, halvora_program: targets out of whole folders; halvora_own: our rules for a target.

# Our own code is compiled under these rules; other people's and generated code is not.
set(HALVORA_WARNINGS
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast
  # gcc 12 sees overlaps in std::string's operator+ that are not there, and only when it optimises.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${HALVORA_WERROR}>:-Werror>)

function(halvora_own target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF POSITION_INDEPENDENT_CODE ON)
  target_compile_options(${target} PRIVATE ${HALVORA_WARNINGS})
endfunction()

# The same for a target that has generated sources too, as Qt's have.
function(halvora_own_sources target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF POSITION_INDEPENDENT_CODE ON)
  get_target_property(folder ${target} SOURCE_DIR)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${folder}")
    cmake_path(IS_PREFIX PROJECT_BINARY_DIR "${source}" generated)
    if(NOT generated)
      set_property(SOURCE "${source}" TARGET_DIRECTORY ${target}
        APPEND PROPERTY COMPILE_OPTIONS ${HALVORA_WARNINGS})
    endif()
  endforeach()
endfunction()

# Sets `sources` and `headers` in the caller, from FILES (globs), FOLDERS and EXCLUDE.
function(halvora_collect)
  cmake_parse_arguments(arg "" "" "FILES;FOLDERS;EXCLUDE" ${ARGN})
  set(all)
  foreach(glob IN LISTS arg_FILES)
    file(GLOB found CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${glob}")
    list(APPEND all ${found})
  endforeach()
  foreach(folder IN LISTS arg_FOLDERS)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS
      "${PROJECT_SOURCE_DIR}/${folder}/*.h" "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
    list(APPEND all ${found})
  endforeach()
  foreach(path IN LISTS arg_EXCLUDE)
    list(FILTER all EXCLUDE REGEX "^${PROJECT_SOURCE_DIR}/${path}")
  endforeach()
  set(sources ${all})
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  set(headers ${all})
  list(FILTER headers INCLUDE REGEX "\\.h$")
  return(PROPAGATE sources headers)
endfunction()

# The headers are a public header set: `all_verify_interface_header_sets` compiles each one alone.
function(halvora_library target)
  cmake_parse_arguments(arg "" "" "FILES;FOLDERS;EXCLUDE;LINK;PRIVATE_LINK" ${ARGN})
  halvora_collect(FILES ${arg_FILES} FOLDERS ${arg_FOLDERS} EXCLUDE ${arg_EXCLUDE})
  if(sources)
    set(scope PUBLIC)
    add_library(${target} STATIC ${sources})
    halvora_own(${target})
    target_link_libraries(${target} PRIVATE ${arg_PRIVATE_LINK})
    halvora_precompile(${target})
  else()
    set(scope INTERFACE)
    add_library(${target} INTERFACE)
    target_compile_features(${target} INTERFACE cxx_std_20)
  endif()
  add_library(halvora::${target} ALIAS ${target})
  target_include_directories(${target} ${scope} "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${target} ${scope} ${arg_LINK})
  if(headers)
    target_sources(${target}
      ${scope} FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${headers})
  endif()
endfunction()

function(halvora_program target)
  cmake_parse_arguments(arg "" "" "FILES;FOLDERS;EXCLUDE;LINK" ${ARGN})
  halvora_collect(FILES ${arg_FILES} FOLDERS ${arg_FOLDERS} EXCLUDE ${arg_EXCLUDE})
  if(NOT sources)
    return()
  endif()
  add_executable(${target} ${sources})
  halvora_own(${target})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE ${arg_LINK})
endfunction()

# Parses the standard library and these headers once a target instead of once a source, where the
# build asks for it. Daily builds do not: there, each source must include what it uses.
function(halvora_precompile target)
  if(HALVORA_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <chrono> <functional> <map> <memory> <mutex> <optional> <span> <string>
      <string_view> <variant> <vector> ${ARGN})
  endif()
endfunction()
