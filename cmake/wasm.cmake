# SPDX-License-Identifier: Apache-2.0
# WebAssembly with Debian's Emscripten; programs run under Node, on the files of the machine.
include("/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake")
set(CMAKE_CXX_FLAGS_INIT "-fexceptions")
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "-fexceptions -sNODERAWFS=1 -sALLOW_MEMORY_GROWTH=1 -sEXIT_RUNTIME=1")
