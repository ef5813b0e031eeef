// SPDX-License-Identifier: Apache-2.0
// Reads one JSON document of UTF-8 text from its first character to its last and reports it event
// by event: strictly by the grammar, nesting bounded, numbers of any length. Texts without escapes
// are handed over where they lie. Made for one document, on the stack; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "halvora/platform/json.h"

namespace halvora {

class JsonScanner {
 public:
  /// Arrays and objects may lie this deep in each other.
  static constexpr std::size_t kDeepestNesting = 512;

  JsonScanner(std::string_view text, JsonEvents& events);

  /// Once. False for a malformed document.
  bool scan();
  /// What is wrong with it.
  const char* reason() const { return reason_; }

 private:
  // Each reads what begins at `at` and answers with where it ends; null after a refusal. The
  // document's last character closes a container, so whatever stops there may be looked for without
  // minding the end; only texts go past it.
  using At = const char*;

  At container(At at, std::string_view name);
  At members(At at);
  At elements(At at);
  At value(At at, std::string_view name);
  At word(At at, std::string_view expected, std::string_view name, JsonScalar scalar);
  At number(At at, std::string_view name);
  At anyNumber(At at, std::string_view name);
  At digits(At at);
  At memberName(At at, std::string_view& result);
  At text(At at, std::string& storage, std::string_view& result);
  At otherText(At begin, At at, std::string& storage, std::string_view& result);
  At escape(At at, std::string& storage);
  At unicodeEscape(At at, std::string& storage);
  At hexUnit(At at, std::uint32_t& unit);
  At endOfPlainText(At at) const;
  At endOfBlanks(At at) const;
  bool isIndentation(At at) const;
  // Nearly always there is none.
  At skipBlanks(At at) const { return static_cast<std::uint8_t>(*at) > ' ' ? at : endOfBlanks(at); }
  std::string_view rest(At at) const { return {at, static_cast<std::size_t>(end_ - at)}; }
  void report(std::string_view name, const JsonScalar& scalar) {
    if (isWanted_) events_.scalar(name, scalar);
  }
  At refuse(const char* reason) {
    reason_ = reason;
    return nullptr;
  }

  JsonEvents& events_;
  At begin_;
  At end_;
  std::size_t depth_ = 0;
  bool isWanted_ = true;
  const char* reason_ = nullptr;
  std::string nameStorage_;
  std::string textStorage_;
};

}  // namespace halvora
