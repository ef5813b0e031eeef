// SPDX-License-Identifier: Apache-2.0
// What JSON is written into. RapidJSON's own memory writes through null where there is none left;
// this one throws std::bad_alloc.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

#include <rapidjson/encodings.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace halvora {

struct ThrowingHeap {
  static constexpr bool kNeedFree = true;

  void* Malloc(std::size_t size) { return Realloc(nullptr, 0, size); }
  void* Realloc(void* memory, std::size_t /*oldSize*/, std::size_t size) {
    if (size == 0) {
      Free(memory);
      return nullptr;
    }
    void* const more = std::realloc(memory, size);
    if (more == nullptr) throw std::bad_alloc();
    return more;
  }
  static void Free(void* memory) { std::free(memory); }
};

using JsonBuffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, ThrowingHeap>;
using JsonWriter =
    rapidjson::Writer<JsonBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingHeap>;
using PrettyJsonWriter =
    rapidjson::PrettyWriter<JsonBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingHeap>;

}  // namespace halvora
