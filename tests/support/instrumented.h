// How much of a long test a build does that watches every step of the code. It is several times as
// slow, and there for what the code does with its memory and its threads; how often the answers are
// right is for the plain build to say.

#ifndef QUASTEL_TESTS_SUPPORT_INSTRUMENTED_H_
#define QUASTEL_TESTS_SUPPORT_INSTRUMENTED_H_

namespace quastel::support {

#if defined(QUASTEL_INSTRUMENTED)
inline constexpr bool kInstrumented = true;
#else
inline constexpr bool kInstrumented = false;
#endif

// The second number where the build watches, the first one everywhere else.
template <typename T>
constexpr T Rounds(T plain, T instrumented) {
  return kInstrumented ? instrumented : plain;
}

// Whether the n-th of many alike is done: all of them, or one in `share` where the build watches.
constexpr bool IsDone(unsigned long long n, unsigned share) {
  return !kInstrumented || n % share == 0;
}

}  // namespace quastel::support

#endif  // QUASTEL_TESTS_SUPPORT_INSTRUMENTED_H_
