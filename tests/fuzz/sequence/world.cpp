#include "fuzz/sequence/world.h"

#include <iterator>
#include <string>

#include "platform/file.h"

namespace quastel::fuzz::sequence {
namespace {

using simulated::LinkKind;

// The last one is long enough that some of its files have extended-length paths.
const Text kFolders[] = {u"C:\\t",
                         u"C:\\t\\a",
                         u"C:\\t\\a\\b",
                         u"C:\\t\\Downloads",
                         u"C:\\t\\b",
                         u"D:\\m",
                         u"C:\\Windows",
                         u"C:\\Users\\u",
                         u"C:\\Users\\u\\AppData",
                         u"C:\\t\\a\\" + Text(236, u'L')};
const Text kNames[] = {u"f0", u"F1", u"x.log", u"pagefile.sys", u"film.mkv", u"f2"};

constexpr std::size_t kSizes[] = {0, 1, 100, 150, 151, 300, 5000};

// Few contents of each size, which differ early, in the middle or late.
std::string Content(Input& input) {
  std::string content(input.OneOf(kSizes), 'c');
  const std::size_t change = input.Below(4);
  if (!content.empty() && change > 0) {
    content[change == 1 ? 0 : change == 2 ? content.size() / 2 : content.size() - 1] = 'd';
  }
  return content;
}

}  // namespace

World::World() {
  machine_.AddDrive('D');
  machine_.AddFolder(u"C:\\t\\a\\b");
  machine_.AddFolder(u"C:\\t\\b");
  machine_.AddFolder(u"C:\\Windows");
  machine_.AddFolder(u"C:\\Users\\u\\AppData");
  machine_.AddFolder(u"D:\\m");
  // A walk may begin below a link, and nothing there can be removed.
  machine_.AddLink(LinkKind::kJunction, u"D:\\old", u"C:\\t");
  hindrances_[u"d:\\old"].link_target = u"c:\\t";
  machine_.AddFile(u"C:\\t\\f0", "one", {.last_write = NextTime()});
  machine_.AddFile(u"C:\\t\\a\\f0", "one", {.last_write = NextTime()});
  machine_.AddFile(u"C:\\t\\a\\b\\F1", std::string(300, 'c'), {.last_write = NextTime()});
  machine_.AddFile(u"D:\\m\\f2", std::string(300, 'c'), {.last_write = NextTime()});
  machine_.AddSizedFile(u"C:\\t\\film.mkv", kSizedFile + 1, 1, {.last_write = NextTime()});
}

Disk World::Look() {
  Disk disk(machine_, hindrances_, zone_minutes_);
  // What is gone hinders nobody any more.
  std::erase_if(hindrances_, [&](const auto& entry) { return disk.Find(entry.first) == nullptr; });
  return disk;
}

Text World::FilePath(Input& input) {
  const Text& folder = input.OneOf(kFolders);
  return folder + u"\\" + input.OneOf(kNames);
}

Text World::SomePath(Input& input) {
  Text path = input.OneIn(3) ? input.OneOf(kFolders) : FilePath(input);
  switch (input.Below(8)) {
    case 0:
      path[0] = u'c';
      break;
    case 1:
      for (Char& c : path) {
        c = c == u'\\' ? u'/' : c;
      }
      break;
    case 2:
      path = u"\\\\?\\" + path;
      break;
    case 3:
      path.insert(2, u"\\x\\..");
      break;
    default:
      break;
  }
  return path;
}

Text World::SomeFolder(Input& input) {
  static const Text kRoots[] = {
      u"C:\\t",       u"c:/T/",           u"C:\\t\\a",           u"C:\\",        u"D:\\m",
      u"t",           u"C:\\t\\a\\..\\b", u"C:\\missing",        u"C:\\t\\f0",   u"C:\\Users",
      u"C:\\Windows", u"\\\\?\\C:\\t",    u"C:\\t\\Downloads\\", u"C:\\t\\a\\b", u"D:\\",
      u"D:\\old\\a"};
  return input.OneOf(kRoots);
}

bool World::IsTouched(const Text& key) const {
  for (Text above = key; !above.empty(); above = ParentKeyOf(above)) {
    if (touched_.contains(above)) {
      return true;
    }
  }
  return false;
}

void World::Forget(const Text& key) {
  std::erase_if(hindrances_, [&](const auto& entry) {
    return entry.first == key || entry.first.starts_with(key + u"\\");
  });
}

void World::WriteRules(const std::string& document) {
  machine_.AddFile(kRulesPath, document, {.last_write = NextTime()});
  touched_.insert(KeyOf(kRulesPath));
  ++changes_;
}

void World::WriteFile(const Text& path, Input& input) {
  Forget(KeyOf(path));
  const simulated::FileOptions options = {.last_write = NextTime()};
  if (input.OneIn(4)) {
    // Two of the same size have other bytes from the start on.
    const std::uint64_t size = kSizedFile + input.Below(3);
    machine_.AddSizedFile(path, size, static_cast<std::uint32_t>(NextTime() / 10'000'000), options);
  } else {
    machine_.AddFile(path, Content(input), options);
  }
}

void World::ReplaceByLink(const Text& path, const Text& key, Input& input) {
  if (machine_.Exists(path)) {
    machine_.Remove(path);
  }
  Forget(key);
  switch (input.Below(4)) {
    case 0:
      machine_.AddLink(LinkKind::kJunction, path, u"C:\\t\\b");
      hindrances_[key].link_target = u"c:\\t\\b";
      break;
    case 1:
      machine_.AddLink(LinkKind::kFolderLink, path, u"D:\\m");
      hindrances_[key].link_target = u"d:\\m";
      break;
    case 2:
      machine_.AddLink(LinkKind::kFileLink, path, u"D:\\m\\f2");
      break;
    default:
      machine_.AddPlaceholder(path, 300);
      break;
  }
}

void World::ChangeFile(const Text& path, const Text& key, Input& input) {
  Hindrance& hindrance = hindrances_[key];
  switch (input.Below(6)) {
    case 0:
      machine_.SetLastWrite(path, NextTime());
      break;
    case 1: {
      const std::uint32_t share = input.OneIn(2) ? 0 : input.Byte() % 8u;
      machine_.Unlock(path);
      machine_.Lock(path, share);
      hindrance.lock_share = share;
      break;
    }
    case 2:
      machine_.Unlock(path);
      hindrance.lock_share.reset();
      break;
    case 3:
      hindrance.denial.opening = input.OneIn(2);
      hindrance.denial.deleting = input.OneIn(2);
      machine_.Deny(path, hindrance.denial);
      break;
    case 4:
      // The time stays; a file of this time has never been so large.
      if (machine_.Find(path)->size < kSizedFile) {
        machine_.SetContent(path, machine_.ContentOf(path).value() + 'g');
      }
      break;
    default:
      machine_.SetAttributes(
          path, input.OneIn(2) ? platform::kAttributeReadOnly : platform::kAttributeArchive);
      break;
  }
}

void World::Change(Input& input) {
  const std::size_t kind = input.Below(10);
  if (kind == 9) {
    machine_.AdvanceClock(input.Number(2));
    if (input.OneIn(8)) {
      ++changes_;
      zone_minutes_ = zone_minutes_ == 0 ? 60 : 0;
      machine_.SetTimeZoneOffset(zone_minutes_);
    }
    return;
  }
  ++changes_;
  const Text path = kind == 8 ? input.OneOf(kFolders) : FilePath(input);
  const Text key = KeyOf(path);
  const Disk disk = Look();
  // Only below real folders: where a link leads, another path of the tree is.
  for (Text above = ParentKeyOf(key); !above.empty(); above = ParentKeyOf(above)) {
    const Node* const node = disk.Find(above);
    if (node != nullptr && !node->IsRealFolder()) {
      return;
    }
    if (node == nullptr) {
      touched_.insert(above);  // it is made on the way
    }
  }
  const Node* const node = disk.Find(key);
  const bool is_file = node != nullptr && node->IsPlainFile();
  touched_.insert(key);
  if (kind == 8) {
    if (node != nullptr && node->IsRealFolder() && input.OneIn(2)) {
      Hindrance& hindrance = hindrances_[key];
      hindrance.denial.listing = input.OneIn(2);
      hindrance.denial.deleting = input.OneIn(2);
      machine_.Deny(path, hindrance.denial);
    } else if (input.OneIn(2)) {
      ReplaceByLink(path, key, input);
    } else if (node != nullptr) {
      machine_.Remove(path);
      Forget(key);
    } else {
      machine_.AddFolder(path);
    }
    return;
  }
  if (node != nullptr && node->is_folder && !node->is_link) {
    return;  // the names are for files
  }
  if (kind < 4 || node == nullptr) {
    WriteFile(path, input);
  } else if (kind == 4) {
    machine_.Remove(path);
    Forget(key);
  } else if (kind == 5) {
    ReplaceByLink(path, key, input);
  } else if (is_file) {
    ChangeFile(path, key, input);
  }
}

}  // namespace quastel::fuzz::sequence
