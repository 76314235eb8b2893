#include "fuzz/junk_path_check.h"

#include "fuzz/demand.h"
#include "fuzz/guarded_buffer.h"
#include "fuzz/input.h"
#include "fuzz/text_protocol.h"
#include "quastel_core.h"

namespace quastel::fuzz {
namespace {

// The texts may multiply; more than this is only slow.
constexpr std::size_t kMostUnits = 200'000;
constexpr std::size_t kMostUnitsOfText = 3'000;

// One unit at a time: a placeholder here is replaced, any other unit is copied.
Text Replaced(const Text& text, const Text& placeholder, const Text& value, std::size_t& count) {
  Text result;
  for (std::size_t i = 0; i < text.size();) {
    if (text.compare(i, placeholder.size(), placeholder) == 0) {
      result += value;
      i += placeholder.size();
      ++count;
    } else {
      result += text[i++];
    }
  }
  return result;
}

std::size_t Occurrences(const Text& text, const Text& placeholder) {
  std::size_t count = 0;
  (void)Replaced(text, placeholder, Text(), count);
  return count;
}

void CheckNulls(const Text& text) {
  const Char* const given = text.c_str();
  std::uint64_t needed = 77;
  GuardedBuffer<Char> buffer(8);
  Demand(qs_expand_junk_path(nullptr, given, given, buffer.data(), 8, &needed) ==
                 QS_INVALID_ARGUMENT &&
             qs_expand_junk_path(given, nullptr, given, buffer.data(), 8, &needed) ==
                 QS_INVALID_ARGUMENT &&
             qs_expand_junk_path(given, given, nullptr, buffer.data(), 8, &needed) ==
                 QS_INVALID_ARGUMENT,
         "all three texts are required");
  Demand(needed == 77, "a missing text stores nothing");
  buffer.DemandUntouched("a missing text writes nothing");
}

}  // namespace

JunkPathSeen CheckJunkPath(std::string_view bytes) {
  const Text home_place = u"{UserHome}";
  const Text root_place = u"{Root}";
  Input input(bytes);
  const Text rule_path = input.TakeText(kMostUnitsOfText);
  const Text home = input.TakeText(kMostUnitsOfText);
  const Text root = input.TakeText(kMostUnitsOfText);
  CheckNulls(rule_path);
  JunkPathSeen seen;
  if (rule_path.size() + Occurrences(rule_path, home_place) * home.size() > kMostUnits) {
    return seen;
  }
  const Text with_home = Replaced(rule_path, home_place, home, seen.homes);
  if (with_home.size() + Occurrences(with_home, root_place) * root.size() > kMostUnits) {
    return seen;
  }
  const Text expected = Replaced(with_home, root_place, root, seen.roots);
  const ExactText given_path(rule_path);
  const ExactText given_home(home);
  const ExactText given_root(root);
  DemandText<Char>(expected, [&](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_expand_junk_path(given_path.get(), given_home.get(), given_root.get(), out, capacity,
                               needed);
  });
  return seen;
}

}  // namespace quastel::fuzz
