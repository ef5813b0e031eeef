// SPDX-License-Identifier: Apache-2.0
// What C++20 has and the standard library of Debian's Emscripten has not yet, as far as the kit
// uses it. Included before all else in that build, and in no other.
#pragma once

#ifdef _LIBCPP_VERSION
#error "this comes first"
#endif
#include <algorithm>
#include <charconv>
#include <compare>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>

#if _LIBCPP_VERSION >= 15000
#error "this library has them: the build can do without this header"
#endif

namespace std {  // NOLINT(cert-dcl58-cpp)

// The fewest digits that read back as the same number. In the C locale, which such a program is in.
inline to_chars_result to_chars(char* first, char* last, double value, chars_format /*format*/) {
  char text[40];
  int length = 0;
  for (int digits = 0; digits <= 17; ++digits) {
    length = snprintf(text, sizeof text, "%.*e", digits, value);
    if (strtod(text, nullptr) == value) break;
  }
  if (length > last - first) return {last, errc::value_too_large};
  memcpy(first, text, static_cast<size_t>(length));
  return {first + length, errc{}};
}

inline to_chars_result to_chars(char* first, char* last, double value, chars_format /*format*/,
                                int precision) {
  const int length = snprintf(first, static_cast<size_t>(last - first), "%.*f", precision, value);
  if (length < 0 || length >= last - first) return {last, errc::value_too_large};
  return {first + length, errc{}};
}

constexpr bool is_neq(partial_ordering ordering) { return ordering != 0; }

namespace ranges {

template <class Range, class Output>
void copy(Range&& range, Output output) {
  std::copy(std::begin(range), std::end(range), output);
}
template <class Range, class Value, class Projection = identity>
auto find(Range&& range, const Value& value, Projection projection = {}) {
  return std::find_if(std::begin(range), std::end(range), [&](const auto& element) {
    return std::invoke(projection, element) == value;
  });
}
template <class Range, class Test>
auto find_if(Range&& range, Test test) {
  return std::find_if(std::begin(range), std::end(range), test);
}
template <class Range, class Test>
bool any_of(Range&& range, Test test) {
  return std::any_of(std::begin(range), std::end(range), test);
}
template <class Range, class Test>
bool none_of(Range&& range, Test test) {
  return std::none_of(std::begin(range), std::end(range), test);
}
template <class One, class Other>
bool equal(const One& one, const Other& other) {
  return std::equal(std::begin(one), std::end(one), std::begin(other), std::end(other));
}
template <class Range, class Old, class New>
void replace(Range& range, const Old& old, const New& value) {
  for (auto& element : range) {
    if (element == old) element = value;
  }
}

}  // namespace ranges

}  // namespace std
