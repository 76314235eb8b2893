#include "clean/random_world.h"

#include <string>

namespace quastel::clean_tests {

Text FolderOf(const Text& path) {
  return path.substr(0, path.rfind(u'\\'));
}

Maker::Maker(World& world, Random& random, std::uint32_t kind)
    : world_(world), random_(random), kind_(kind) {}

void Maker::Furnish() {
  world_.machine.AddDrive('D');
  world_.machine.AddFolder(kTree);
  Fill(u"C:\\o", 1);
  Fill(Text(kTree), 0);
  world_.machine.AddFile(
      kRulesPath, FolderRules(random_.OneIn(3) ? Paths{u"C:\\t", u"C:\\t\\a", u"C:\\t\\Downloads"}
                                               : Paths{Text(kTree)}));
}

Request Maker::ScanRequest() const {
  switch (kind_) {
    case QS_SCAN_KIND_JUNK_RULES:
      return JunkRequest();
    case QS_SCAN_KIND_DUPLICATES:
      return DuplicateRequest({Text(kTree)});
    default:
      return Request::LargeFiles({Text(kTree)});
  }
}

void Maker::Change() {
  SimulatedWindows& machine = world_.machine;
  const std::uint32_t way = random_.Below(14);
  const bool is_about_folder = way < 3;
  const Paths files = is_about_folder ? Paths{} : Below(kTree, false);
  const Paths folders = is_about_folder ? Below(kTree, true) : Paths{};
  if (files.empty() && folders.empty()) {
    return;
  }
  switch (way) {
    case 0: {  // a folder becomes a link to a place with the same names
      const Text folder = random_.OneOf(folders);
      Forget(folder);
      machine.Remove(folder);
      machine.AddLink(SomeFolderLink(), folder, random_.OneIn(2) ? u"C:\\o" : u"C:\\t");
      break;
    }
    case 1: {
      const Text folder = random_.OneOf(folders);
      if (random_.OneIn(2)) {
        Forget(folder);
        machine.Remove(folder);
      } else {
        Deny(folder);
      }
      break;
    }
    case 2:
      AddFile(random_.OneOf(folders) + u"\\new" + Wide(std::to_string(++new_files_)), true);
      break;
    case 3:
      Remove(random_.OneOf(files));
      break;
    case 4: {
      const Text file = random_.OneOf(files);
      Remove(file);
      machine.AddFolder(file);
      break;
    }
    case 5: {
      const Text file = random_.OneOf(files);
      Remove(file);
      machine.AddLink(random_.OneIn(2) ? LinkKind::kFileLink : SomeFolderLink(), file, u"C:\\o\\a");
      break;
    }
    case 6:
      machine.SetLastWrite(random_.OneOf(files), kDefaultLastWrite + random_.Below(3) - 1);
      break;
    case 7: {
      const Text file = random_.OneOf(files);
      const std::uint64_t size = machine.Find(file)->size;
      Remove(file);
      machine.AddSizedFile(file, size + random_.Below(3), 5);
      break;
    }
    case 8:
      machine.SetAttributes(random_.OneOf(files), random_.OneIn(2) ? platform::kAttributeReadOnly
                                                                   : platform::kAttributeHidden);
      break;
    case 9:
    case 10: {
      const Text file = random_.OneOf(files);
      machine.Lock(file);
      world_.locked.insert(file);
      break;
    }
    case 11:
      Deny(random_.OneOf(files));
      break;
    default:
      break;
  }
}

void Maker::Calm() {
  for (const Text& file : world_.locked) {
    world_.machine.Unlock(file);
  }
  for (const auto& [path, denial] : world_.denied) {
    world_.machine.Deny(path, Denial{});
  }
  world_.locked.clear();
  world_.denied.clear();
}

void Maker::ForgetWhatIsGone() {
  std::erase_if(world_.locked, [&](const Text& path) { return !world_.machine.Exists(path); });
  std::erase_if(world_.denied,
                [&](const auto& entry) { return !world_.machine.Exists(entry.first); });
}

Paths Maker::Below(TextView folder, bool folders) const {
  Paths found;
  for (const Text& name : world_.machine.NamesIn(folder)) {
    const Text path = Text(folder) + u"\\" + name;
    const auto facts = world_.machine.Find(path);
    if (!facts || platform::IsReparsePoint(facts->attributes)) {
      continue;
    }
    if (facts->is_folder == folders) {
      found.push_back(path);
    }
    if (facts->is_folder) {
      const Paths deeper = Below(path, folders);
      found.insert(found.end(), deeper.begin(), deeper.end());
    }
  }
  return found;
}

LinkKind Maker::SomeFolderLink() {
  return random_.OneIn(2) ? LinkKind::kJunction : LinkKind::kFolderLink;
}

void Maker::AddFile(const Text& path, bool plain) {
  const std::uint32_t content = random_.Below(3);
  FileOptions options;
  if (!plain && random_.OneIn(8)) {
    options.attributes = random_.OneIn(2) ? platform::kAttributeReadOnly
                                          : platform::kAttributeHidden | platform::kAttributeSystem;
  }
  if (kind_ == QS_SCAN_KIND_LARGE_FILES) {
    world_.machine.AddSizedFile(path, kLarge - random_.OneIn(4) + random_.Below(2), content,
                                options);
  } else {
    world_.machine.AddFile(
        path, std::string(content == 0 ? 0 : 7, static_cast<char>('a' + content)), options);
  }
}

void Maker::Fill(const Text& folder, int depth) {
  for (const TextView name : {u"a", u"B", u"Downloads", u"d", u"long-name", u"e"}) {
    const Text path = folder + u"\\" + Text(name);
    const std::uint32_t what = random_.Below(12);
    if (what < 4) {
      AddFile(path, false);
    } else if (what < 8 && depth < 2) {
      world_.machine.AddFolder(path);
      Fill(path, depth + 1);
    } else if (what == 8) {
      world_.machine.AddLink(SomeFolderLink(), path, u"C:\\o");
    } else if (what == 9 && random_.OneIn(2)) {
      world_.machine.AddLink(LinkKind::kFileLink, path, u"C:\\o\\a");
    } else if (what == 10 && random_.OneIn(2)) {
      world_.machine.AddPlaceholder(path, 7);
    }
  }
}

void Maker::Deny(const Text& path) {
  Denial denial;
  switch (random_.Below(3)) {
    case 0:
      denial.deleting = true;
      break;
    case 1:
      denial.querying = true;
      break;
    default:
      denial.listing = true;
      break;
  }
  world_.machine.Deny(path, denial);
  world_.denied[path] = denial;
}

void Maker::Remove(const Text& path) {
  Forget(path);
  world_.machine.Remove(path);
}

void Maker::Forget(const Text& path) {
  const auto is_gone = [&](const Text& other) {
    return other == path || other.starts_with(path + u"\\");
  };
  std::erase_if(world_.locked, is_gone);
  std::erase_if(world_.denied, [&](const auto& entry) { return is_gone(entry.first); });
}

}  // namespace quastel::clean_tests
