# SPDX-License-Identifier: Apache-2.0
# Makes the source that holds the kit's texts, which are then there without a folder of files.
file(GLOB tables CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}/assets/kit"
  "${PROJECT_SOURCE_DIR}/assets/kit/strings/*.json")
set(rows)
foreach(table IN LISTS tables)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/assets/kit/${table}")
  # As bytes: a list's separators and brackets in a text would be CMake's own.
  file(READ "${PROJECT_SOURCE_DIR}/assets/kit/${table}" bytes HEX)
  string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${bytes}")
  string(REPEAT "...." 16 line)
  string(REGEX REPLACE "(${line})" "\\1\"\n     \"" bytes "${bytes}")
  string(APPEND rows "    {\"${table}\",\n     \"${bytes}\"},\n")
endforeach()
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/kit_tables.cpp" @ONLY CONTENT
"// Made from assets/kit/strings by the build.
#include \"adapters/standard/kit_tables.h\"

namespace halvora {

namespace {

constexpr KitTable kTables[] = {
@rows@};

}  // namespace

std::span<const KitTable> kitTables() { return kTables; }

}  // namespace halvora
")
