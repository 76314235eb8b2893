#include "fuzz/path_rules_check.h"

#include <algorithm>
#include <optional>

#include "fs/path_rules.h"
#include "fuzz/demand.h"
#include "fuzz/guarded_buffer.h"
#include "fuzz/input.h"
#include "fuzz/path_model.h"
#include "fuzz/text_protocol.h"
#include "platform/file_system.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::fuzz {
namespace {

void Furnish(simulated::SimulatedWindows& machine, std::size_t current_folder) {
  machine.AddDrive('D');
  machine.AddShare(u"\\\\srv\\s");
  machine.AddFolder(u"C:\\Work\\Here");
  machine.AddFolder(u"\\\\srv\\s\\Here");
  machine.AddFile(u"C:\\Work\\file.txt", "x");
  machine.AddLink(simulated::LinkKind::kJunction, u"C:\\Work\\link", u"C:\\Work\\Here");
  static const char16_t* const kFolders[] = {u"C:\\", u"C:\\Work\\Here", u"\\\\srv\\s\\Here",
                                             u"D:\\"};
  machine.SetCurrentFolder(kFolders[current_folder % 4]);
}

void CheckNormalize(const Text& path, PathRulesSeen& seen) {
  const Text expected = model::LongPath(path);
  const ExactText given(path);
  DemandText<Char>(expected, [&](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_normalize_path(given.get(), out, capacity, needed);
  });
  Demand(ToLongPath(path) == expected, "the long form inside is the one that is exported");
  Demand(ToLongPath(expected) == expected, "the long form of a long form is itself");
  Demand(path.size() >= 248 || expected == path, "a short path stays as it is spelled");
  Demand(path.size() < 248 || expected.substr(0, 4) == u"\\\\?\\", "a long path gets the prefix");
  seen.lengthened |= expected != path;
}

// The forms that the filters, the deletion and the scans work with.
void CheckForms(const Text& path, PathRulesSeen& seen) {
  Demand(ToComparablePath(path) == model::Comparable(path), "the comparable form");
  Demand(RootLength(path) == model::RootLength(path), "the length of the root");
  Demand(RootLength(path) <= path.size(), "a root is a part of its path");
  const std::optional<Text> parent = ParentDirectoryOf(path);
  Demand(parent == model::Parent(path), "the parent folder");
  seen.unresolvable |= !parent;
  const auto attributes = platform::QueryAttributes(model::LongPath(path).c_str());
  const bool real = attributes.ok() && platform::IsDirectory(attributes.value()) &&
                    !platform::IsReparsePoint(attributes.value());
  const ExactText given(path);
  Demand(qs_directory_exists(given.get()) == (real ? 1 : 0), "whether a folder can be entered");
  seen.directory |= real;
}

void CheckCombine(const Text& base, const Text& relative, PathRulesSeen& seen) {
  const Text expected = model::Combine(base, relative);
  const ExactText first(base);
  const ExactText second(relative);
  DemandText<Char>(expected, [&](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_path_combine(first.get(), second.get(), out, capacity, needed);
  });
  Demand(CombinePaths(base, relative) == expected, "combining inside is combining outside");
  Demand(JoinPath(base, relative) == model::Join(base, relative), "joining");
  Demand(expected.size() <= base.size() + relative.size() + 1, "one separator is put in at most");
  seen.absolute |= !relative.empty() && expected == relative && !base.empty();
}

void CheckContains(const Text& haystack, const Text& needle, PathRulesSeen& seen) {
  // A plain search for one long text in another takes the product of their lengths.
  constexpr std::size_t kMostComparisons = 2'000'000;
  if (haystack.size() * needle.size() > kMostComparisons) {
    return;
  }
  const bool expected = std::search(haystack.begin(), haystack.end(), needle.begin(),
                                    needle.end()) != haystack.end() ||
                        needle.empty();
  const ExactText first(haystack);
  const ExactText second(needle);
  Demand(qs_path_contains(first.get(), second.get()) == (expected ? 1 : 0), "containing");
  Demand(qs_path_contains(first.get(), first.get()) == 1, "a text contains itself");
  Demand(qs_path_contains(first.get(), nullptr) == 1, "nothing is in every text");
  seen.contained |= expected && !needle.empty();
}

void CheckSameDirectory(const Text& a, const Text& b, PathRulesSeen& seen) {
  const std::optional<Text> parent_of_a = model::Parent(a);
  const std::optional<Text> parent_of_b = model::Parent(b);
  const bool expected =
      parent_of_a && parent_of_b && model::Lowered(*parent_of_a) == model::Lowered(*parent_of_b);
  const ExactText first(a);
  const ExactText second(b);
  Demand(qs_is_in_same_directory(first.get(), second.get()) == (expected ? 1 : 0),
         "being in the same folder");
  Demand(qs_is_in_same_directory(second.get(), first.get()) == (expected ? 1 : 0),
         "being in the same folder the other way round");
  Demand(qs_is_in_same_directory(first.get(), first.get()) == (parent_of_a ? 1 : 0),
         "a path that can be resolved is in the same folder as itself");
  seen.same_directory |= expected;
}

void CheckUnder(const Text& path, const Text& prefix, PathRulesSeen& seen) {
  const bool expected = model::IsUnder(path, prefix);
  Demand(IsPathUnder(path, prefix) == expected, "lying under");
  Demand(IsPathUnder(path, path), "a path lies under itself");
  if (!prefix.empty()) {
    Demand(IsPathUnder(model::Join(prefix, path), prefix),
           "what is joined to a folder is under it");
  }
  seen.under |= expected && !prefix.empty();
}

void CheckNullPaths(const Text& path) {
  std::uint64_t needed = 77;
  GuardedBuffer<Char> buffer(8);
  Demand(
      qs_normalize_path(nullptr, buffer.data(), 8, &needed) == QS_INVALID_ARGUMENT &&
          qs_path_combine(nullptr, path.c_str(), buffer.data(), 8, &needed) ==
              QS_INVALID_ARGUMENT &&
          qs_path_combine(path.c_str(), nullptr, buffer.data(), 8, &needed) == QS_INVALID_ARGUMENT,
      "a path is required");
  Demand(needed == 77, "a null path stores nothing");
  buffer.DemandUntouched("a null path writes nothing");
  Demand(qs_path_contains(nullptr, path.c_str()) == 0 &&
             qs_is_in_same_directory(nullptr, path.c_str()) == 0 &&
             qs_is_in_same_directory(path.c_str(), nullptr) == 0 &&
             qs_directory_exists(nullptr) == 0,
         "a null path is nowhere");
}

}  // namespace

PathRulesSeen CheckPathRules(std::string_view bytes) {
  Input input(bytes);
  simulated::SimulatedWindows machine;
  Furnish(machine, input.Byte());
  const std::string before = machine.Describe();
  const Text a = input.TakeText();
  const Text b = input.TakeText();
  PathRulesSeen seen;
  for (const Text* path : {&a, &b}) {
    CheckNormalize(*path, seen);
    CheckForms(*path, seen);
    CheckNullPaths(*path);
  }
  CheckCombine(a, b, seen);
  CheckContains(a, b, seen);
  CheckSameDirectory(a, b, seen);
  CheckUnder(a, b, seen);
  Demand(machine.Describe() == before, "asking changes nothing on the disks");
  Demand(machine.open_handles() == 0, "asking leaves nothing open");
  return seen;
}

}  // namespace quastel::fuzz
