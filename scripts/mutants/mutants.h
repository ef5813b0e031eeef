// SPDX-License-Identifier: Apache-2.0
// What scripts/mutate.py writes into a copy of a source: every mutant of the file beside the code
// as it is, chosen when the program runs. So one compilation serves all mutants of a file.
#pragma once

#include <type_traits>
#include <utility>

extern "C" {
/// The mutant that is in force; 0: none.
extern int halvoraMutant;
/// A byte a mutant, which is set where its place was reached.
extern unsigned char* halvoraReached;
}

namespace halvora_mutants {

/// Where it is in the object file, the mutant cannot be: its types do not allow it.
template <int Number>
__attribute__((noinline)) void cannotBe() {
  asm volatile("");  // An optimiser would see that it does nothing.
}

inline bool isInForce(int number) {
  halvoraReached[number] = 1;
  return halvoraMutant == number;
}

/// What the compiler computes is never mutated here; such places are found unreached.
template <int Number>
constexpr bool on() {
  return !std::is_constant_evaluated() && isInForce(Number);
}

template <int Number, class T>
constexpr bool flipped(T&& value) {
  return static_cast<bool>(std::forward<T>(value)) != on<Number>();
}

template <int Number, class T>
constexpr decltype(auto) returned(T&& value) {
  if constexpr (std::is_same_v<std::remove_cvref_t<T>, bool>) {
    return static_cast<bool>(value) != on<Number>();
  } else {
    if (!std::is_constant_evaluated()) cannotBe<Number>();
    return std::forward<T>(value);
  }
}

template <int Number, class T>
constexpr T number(T value) {
  return on<Number>() ? static_cast<T>(value + 1) : value;
}

template <int Number, class T>
constexpr T negated(T value) {
  if constexpr (requires { static_cast<T>(-value); }) {
    if (on<Number>()) return static_cast<T>(-value);
  } else {
    if (!std::is_constant_evaluated()) cannotBe<Number>();
  }
  return value;
}

template <int Number, class Other, class T>
constexpr auto& swapped(Other& other, T& value) {
  if constexpr (std::is_same_v<Other, T>) {
    return on<Number>() ? other : value;
  } else if constexpr (std::is_same_v<std::remove_const_t<Other>, std::remove_const_t<T>>) {
    return on<Number>() ? std::as_const(other) : std::as_const(value);
  } else {
    if (!std::is_constant_evaluated()) cannotBe<Number>();
    return value;
  }
}

enum class Op {
  less,
  lessEqual,
  greater,
  greaterEqual,
  equal,
  unequal,
  add,
  subtract,
  times,
  over
};

template <Op kOp>
struct Apply;

// clang-format off
#define HALVORA_APPLY(NAME, SIGN)                                                            \
  template <>                                                                                \
  struct Apply<Op::NAME> {                                                                   \
    template <class A, class B>                                                              \
    static constexpr auto to(A&& a, B&& b)                                                   \
        -> decltype(std::forward<A>(a) SIGN std::forward<B>(b)) {                            \
      return std::forward<A>(a) SIGN std::forward<B>(b);                                     \
    }                                                                                        \
  }
HALVORA_APPLY(less, <);
HALVORA_APPLY(lessEqual, <=);
HALVORA_APPLY(greater, >);
HALVORA_APPLY(greaterEqual, >=);
HALVORA_APPLY(equal, ==);
HALVORA_APPLY(unequal, !=);
HALVORA_APPLY(add, +);
HALVORA_APPLY(subtract, -);
HALVORA_APPLY(times, *);
HALVORA_APPLY(over, /);
#undef HALVORA_APPLY
// clang-format on

/// Stands between two operators of one rank: `a < b` becomes `a < Infix > b`, and binds as before.
template <int Number, Op kIs, Op kMutated>
struct Infix {};

template <class A, int Number, Op kIs, Op kMutated>
struct Left {
  A&& value;
};

template <class A, int Number, Op kIs, Op kMutated, class B>
constexpr auto apply(Left<A, Number, kIs, kMutated> left, B&& right) {
  using Result = decltype(Apply<kIs>::to(std::forward<A>(left.value), std::forward<B>(right)));
  if constexpr (requires {
                  static_cast<Result>(
                      Apply<kMutated>::to(std::forward<A>(left.value), std::forward<B>(right)));
                }) {
    if (on<Number>()) {
      return static_cast<Result>(
          Apply<kMutated>::to(std::forward<A>(left.value), std::forward<B>(right)));
    }
  } else {
    if (!std::is_constant_evaluated()) cannotBe<Number>();
  }
  return Apply<kIs>::to(std::forward<A>(left.value), std::forward<B>(right));
}

// clang-format off
#define HALVORA_INFIX(LEFT, RIGHT)                                                           \
  template <class A, int Number, Op kIs, Op kMutated>                                        \
  constexpr Left<A, Number, kIs, kMutated> operator LEFT(                                     \
      A&& a, Infix<Number, kIs, kMutated>) {                                                  \
    return {std::forward<A>(a)};                                                             \
  }                                                                                          \
  template <class A, int Number, Op kIs, Op kMutated, class B>                               \
  constexpr auto operator RIGHT(Left<A, Number, kIs, kMutated> left, B&& right) {            \
    return apply(std::move(left), std::forward<B>(right));                                   \
  }
HALVORA_INFIX(<, >)
HALVORA_INFIX(==, ==)
HALVORA_INFIX(+, +)
HALVORA_INFIX(*, *)
#undef HALVORA_INFIX
// clang-format on

}  // namespace halvora_mutants
