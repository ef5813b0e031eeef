// SPDX-License-Identifier: Apache-2.0
// Which version of the kit these headers belong to, and what all of them share: the namespace that
// carries the major version, so that two versions in one process are two sets of names, and the
// mark of what a shared library shows.
#pragma once

#define HALVORA_VERSION_MAJOR 0
#define HALVORA_VERSION_MINOR 1
#define HALVORA_VERSION_PATCH 0
#define HALVORA_VERSION "0.1.0"

#if defined(_WIN32)
// Only static libraries are built for Windows.
#define HALVORA_PUBLIC
#else
#define HALVORA_PUBLIC [[gnu::visibility("default")]]
#endif

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Of the library that is there at run time, "major.minor.patch": a shared one may be newer than
/// these headers. Any thread.
const char* versionOfLibrary() noexcept;

}  // namespace v0
}  // namespace halvora
