// SPDX-License-Identifier: Apache-2.0
// Which version of the kit these headers belong to, and what all of them share: the namespace that
// carries the major version, so that two versions in one process are two sets of names, and the
// mark of what a shared library shows.
#pragma once

#define HALVORA_VERSION_MAJOR 0  ///< Another one breaks who was built with this one.
#define HALVORA_VERSION_MINOR 1  ///< A higher one has more, and all that was there.
#define HALVORA_VERSION_PATCH 0  ///< A higher one has faults mended.
/// All three as a text, for who compiles with these headers.
#define HALVORA_VERSION "0.1.0"

/// Stands at what a shared library shows; only static ones are built for Windows.
#if defined(_WIN32)
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
