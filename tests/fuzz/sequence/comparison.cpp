#include "fuzz/sequence/comparison.h"

#include <cstdio>

#include "fuzz/demand.h"
#include "support/text.h"

namespace quastel::fuzz::sequence {
namespace {

// Says which path it is about when the rule is broken.
void DemandOf(const Text& key, bool holds, const char* rule) {
  if (!holds) {
    std::fprintf(stderr, "at %s\n", support::Utf8(key).c_str());
  }
  Demand(holds, rule);
}

// Below here the cache is kept, wherever a link puts it.
bool IsOfCache(const Text& key) {
  return (key + u"\\").find(u"\\local\\") != Text::npos;
}

// And these are made for it when they are missing.
bool IsAboveCache(const Text& key) {
  return Text(kCacheFolder).starts_with(key + u"\\") || key.ends_with(u"\\appdata");
}

}  // namespace

void DemandDisk(World& world, const Disk& expected, bool cache_written,
                const std::set<Text>& uncertain) {
  const Disk now = world.Look();
  const auto is_excused = [&](const Text& key) {
    return world.IsTouched(key) || uncertain.contains(key) || (cache_written && IsOfCache(key));
  };
  for (const auto& [key, node] : expected.nodes()) {
    const Node* const left = now.Find(key);
    if (is_excused(key)) {
      continue;
    }
    DemandOf(key, left != nullptr, "nothing disappears that was not named");
    DemandOf(key, left->LooksLike(node), "nothing is changed");
  }
  for (const auto& [key, node] : now.nodes()) {
    DemandOf(
        key,
        is_excused(key) || expected.Find(key) != nullptr || (cache_written && IsAboveCache(key)),
        "nothing is made, and what is to go is gone");
  }
}

}  // namespace quastel::fuzz::sequence
