# SPDX-License-Identifier: Apache-2.0
# halvora_library, halvora_program: targets out of whole folders; halvora_own: our rules for a target.

# Our own code is compiled under these rules; other people's and generated code is not.
set(HALVORA_WARNINGS
  -Wall -Wextra -Wpedantic $<$<NOT:$<BOOL:${HALVORA_UNITY}>>:-Wshadow> -Wconversion -Wsign-conversion
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
  if(HALVORA_UNITY)
    # A source that has options of its own is compiled on its own.
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON)
    return()
  endif()
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
    string(REGEX REPLACE "([][+.*?()^$|\\])" "\\\\\\1" literal "${PROJECT_SOURCE_DIR}/${path}")
    list(FILTER all EXCLUDE REGEX "^${literal}")
  endforeach()
  set(sources ${all})
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  set(headers ${all})
  list(FILTER headers INCLUDE REGEX "\\.h$")
  return(PROPAGATE sources headers)
endfunction()

# The headers are a public header set: `all_verify_interface_header_sets` compiles each one alone.
# FLAGS are compiler flags that the other libraries do not have. COMPONENT is the name under which a
# library is installed; one without is only ever a part of our own programs.
function(halvora_library target)
  cmake_parse_arguments(arg "" "COMPONENT" "FILES;FOLDERS;EXCLUDE;LINK;PRIVATE_LINK;FLAGS" ${ARGN})
  halvora_collect(FILES ${arg_FILES} FOLDERS ${arg_FOLDERS} EXCLUDE ${arg_EXCLUDE})
  if(sources)
    set(scope PUBLIC)
    set(kind STATIC)
    if(arg_COMPONENT)
      # Shared, where the build asks for that.
      set(kind)
    endif()
    add_library(${target} ${kind} ${sources})
    halvora_own(${target})
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${HALVORA_UNITY})
    target_link_libraries(${target} PRIVATE ${arg_PRIVATE_LINK})
    target_compile_options(${target} PRIVATE ${arg_FLAGS})
    if(target STREQUAL halvora_core OR arg_FLAGS OR BUILD_SHARED_LIBS)
      halvora_precompile(${target})
    else()
      halvora_precompiled_in(${target} halvora_core)
    endif()
  else()
    set(scope INTERFACE)
    add_library(${target} INTERFACE)
    target_compile_features(${target} INTERFACE cxx_std_20)
  endif()
  add_library(halvora::${target} ALIAS ${target})
  target_include_directories(${target} ${scope}
    "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR};${PROJECT_SOURCE_DIR}/include>")
  target_link_libraries(${target} ${scope} ${arg_LINK})
  if(arg_COMPONENT)
    halvora_component(${target} ${arg_COMPONENT})
    # What is installed has no set of headers of its own: most of these are not.
    add_library(${target}_headers INTERFACE)
    target_link_libraries(${target}_headers INTERFACE ${target})
    string(APPEND target _headers)
    set(scope INTERFACE)
  endif()
  if(headers)
    target_sources(${target}
      ${scope} FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${headers})
  endif()
endfunction()

# What makes a library of the kit a component: its names outside, and where hosts find its headers.
# HALVORA_COMPONENTS lists all of them, HALVORA_TARGET_OF_… their targets.
function(halvora_component target component)
  add_library(Halvora::${component} ALIAS ${target})
  target_include_directories(${target} INTERFACE "$<INSTALL_INTERFACE:${HALVORA_INSTALL_INCLUDE}>")
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${component} DEFINE_SYMBOL ""
    VERSION "${PROJECT_VERSION}" SOVERSION "${HALVORA_ABI}")
  set_property(GLOBAL APPEND PROPERTY HALVORA_COMPONENTS ${component})
  set_property(GLOBAL PROPERTY HALVORA_TARGET_OF_${component} ${target})
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

# Where the build asks for it, sources are compiled many at a time, those apart whose local names
# clash: that tests share no such name is not worth anybody's care. Libraries are compiled together as
# they come, as a host may do.
function(halvora_unite_tests target)
  if(NOT HALVORA_UNITY)
    return()
  endif()
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  execute_process(
    COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/scripts/unity_groups.py" 14 ${sources}
    OUTPUT_VARIABLE groups OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${sources}
    "${PROJECT_SOURCE_DIR}/scripts/unity_groups.py")
  string(REPLACE "\n" ";" groups "${groups}")
  foreach(group IN LISTS groups)
    string(REPLACE "|" ";" files "${group}")
    list(GET files 0 first)
    cmake_path(GET first STEM name)
    set_source_files_properties(${files} PROPERTIES UNITY_GROUP ${name})
  endforeach()
endfunction()

# Where the build asks for it, the headers that nearly every source includes are parsed once a target,
# and these after them. Each source still includes what it uses: `./test headers lint` compile without.
set(HALVORA_SHARED_HEADERS
  <algorithm> <array> <atomic> <chrono> <cmath> <cstdio> <filesystem> <fstream> <functional> <map>
  <memory> <mutex> <optional> <span> <sstream> <string> <string_view> <utility> <variant> <vector>)
function(halvora_precompile target)
  if(HALVORA_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${HALVORA_SHARED_HEADERS} ${ARGN})
  endif()
endfunction()

# The same with what another target has parsed, whose flags must be the same.
function(halvora_precompiled_in target other)
  if(HALVORA_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${other})
  endif()
endfunction()

# The part of Qt that a face and its tests include.
function(halvora_precompile_qt target)
  # With it gcc defines a macro less, so all who share these headers need it, generated sources too.
  target_compile_options(${target} PRIVATE -Wpedantic)
  halvora_precompile(${target} <QGuiApplication> <QImage> <QQmlEngine> <QQuickItem> <QQuickWindow>
    ${ARGN})
endfunction()

# The same, parsed once for all who need nothing beside it. A target of its own parses it: gcc takes
# these headers for any source that defines more than they were parsed with, but not less.
function(halvora_precompiled_qt target)
  if(NOT HALVORA_PRECOMPILE)
    return()
  endif()
  if(NOT TARGET halvora_qt_parsed)
    file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/qt_parsed.cpp" CONTENT "// Only its headers count.\n")
    add_library(halvora_qt_parsed OBJECT "${PROJECT_BINARY_DIR}/qt_parsed.cpp")
    halvora_own(halvora_qt_parsed)
    set_target_properties(halvora_qt_parsed PROPERTIES AUTOMOC OFF)
    target_link_libraries(halvora_qt_parsed PRIVATE Qt6::Core Qt6::Gui Qt6::Qml Qt6::Quick)
    halvora_precompile_qt(halvora_qt_parsed)
  endif()
  target_compile_options(${target} PRIVATE -Wpedantic)
  halvora_precompiled_in(${target} halvora_qt_parsed)
endfunction()
