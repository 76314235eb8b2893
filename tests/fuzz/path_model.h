// The path rules a second time, written for clarity alone.

#ifndef QUASTEL_TESTS_FUZZ_PATH_MODEL_H_
#define QUASTEL_TESTS_FUZZ_PATH_MODEL_H_

#include <cstddef>
#include <optional>

#include "base/text.h"

namespace quastel::fuzz::model {

bool IsSlash(Char c);
Text Lowered(Text text);
bool Begins(const Text& text, const Text& start);  // without regard to case

// What the system makes of a path; nothing when it cannot resolve it.
std::optional<Text> FullPath(const Text& path);

Text LongPath(const Text& path);
Text Comparable(const Text& path);
std::optional<Text> Parent(const Text& path);
std::size_t RootLength(const Text& path);
bool IsUnder(const Text& path, Text prefix);
Text Join(const Text& base, const Text& name);
Text Combine(Text base, Text relative);
Text Leaf(const Text& path);

bool IsProtected(const Text& path, const Text& system_root, const Text& user_home);
bool IsIgnored(const Text& path);

}  // namespace quastel::fuzz::model

#endif  // QUASTEL_TESTS_FUZZ_PATH_MODEL_H_
