#include "fuzz/sequence/walk_model.h"

#include <algorithm>

#include "fuzz/path_model.h"
#include "fuzz/sequence/world.h"

namespace quastel::fuzz::sequence {
namespace {

bool IsProtected(const Text& folder, const WalkRequest& request) {
  return request.protect && model::IsProtected(folder, kSystemRoot, kUserHome);
}

bool Fits(const Text& name, const Text& pattern) {
  if (pattern.empty() || pattern == u"*") {
    return true;
  }
  if (pattern == u"*.log") {
    return name.ends_with(u".log");
  }
  return model::Lowered(name) == model::Lowered(pattern);
}

void Walk(const Disk& disk, const Text& folder, const Node* node, const WalkRequest& request,
          std::vector<FoundFile>& found) {
  if (node == nullptr || IsProtected(folder, request) || node->hindrance.denial.listing) {
    return;
  }
  for (const Text& key : node->children) {
    const Node& child = *disk.Find(key);
    if (child.IsPlainFile() && Fits(child.name, request.pattern)) {
      found.push_back({model::LongPath(folder + u"\\" + child.name), child.name, key, child.size,
                       disk.TicksOf(child)});
    }
  }
  if (request.recursive) {
    for (auto key = node->children.rbegin(); key != node->children.rend(); ++key) {
      const Node& child = *disk.Find(*key);
      if (child.IsRealFolder()) {
        Walk(disk, model::LongPath(folder + u"\\" + child.name), &child, request, found);
      }
    }
  }
}

}  // namespace

std::vector<FoundFile> FilesOf(const Disk& disk, const WalkRequest& request) {
  std::vector<FoundFile> found;
  Walk(disk, model::LongPath(request.root), disk.WalkRoot(KeyOf(request.root)), request, found);
  return found;
}

std::vector<Text> FoldersOf(const Disk& disk, const Text& root) {
  std::vector<Text> folders;
  const Node* const node = disk.WalkRoot(KeyOf(root));
  if (node != nullptr && !node->hindrance.denial.listing) {
    for (const Text& key : node->children) {
      const Node& child = *disk.Find(key);
      if (child.IsRealFolder()) {
        folders.push_back(model::LongPath(root + u"\\" + child.name));
      }
    }
  }
  return folders;
}

std::vector<Text> OutermostRoots(const std::vector<Text>& roots) {
  std::vector<Text> sorted = roots;
  std::stable_sort(sorted.begin(), sorted.end(), [](const Text& a, const Text& b) {
    return model::Comparable(a).size() < model::Comparable(b).size();
  });
  std::vector<Text> kept;
  for (const Text& root : sorted) {
    const bool inside = std::any_of(kept.begin(), kept.end(), [&](const Text& outer) {
      return model::IsUnder(model::Comparable(root), model::Comparable(outer));
    });
    if (!inside) {
      kept.push_back(root);
    }
  }
  return kept;
}

}  // namespace quastel::fuzz::sequence
