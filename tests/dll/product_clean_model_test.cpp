// Random trees of real files, random changes after the scan and random selections: what was
// selected and is unchanged is gone afterwards, and everything else is as it was.

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "quastel_core.h"
#include "real_tree.h"
#include "scan_handle.h"

namespace quastel::dll_test {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kRounds = 70;

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  unsigned Below(unsigned end) {
    return std::uniform_int_distribution<unsigned>(0, end - 1)(engine_);
  }
  bool OneIn(unsigned n) { return Below(n) == 0; }
  template <typename Items>
  auto& OneOf(Items& items) {
    return items[Below(static_cast<unsigned>(items.size()))];
  }
  template <typename Items>
  void Shuffle(Items& items) {
    std::shuffle(items.begin(), items.end(), engine_);
  }

 private:
  std::mt19937 engine_;
};

// What is seen of a file or folder from outside.
struct Entry {
  bool is_folder = false;
  std::uint64_t size = 0;
  fs::file_time_type written;  // of files: the system changes those of folders
  std::string beginning;       // enough to tell the contents apart

  friend bool operator==(const Entry&, const Entry&) = default;
};
using Disk = std::map<std::wstring, Entry>;  // by full path

Entry Look(const fs::directory_entry& found) {
  Entry entry;
  entry.is_folder = found.is_directory();
  if (!entry.is_folder) {
    entry.size = found.file_size();
    entry.written = found.last_write_time();
    entry.beginning.resize(16);
    std::ifstream file(found.path(), std::ios::binary);
    file.read(entry.beginning.data(), 16);
    entry.beginning.resize(static_cast<std::size_t>(file.gcount()));
  }
  return entry;
}

Disk DiskBelow(const std::wstring& root) {
  Disk disk;
  if (fs::exists(root)) {
    for (const fs::directory_entry& found : fs::recursive_directory_iterator(root)) {
      disk[found.path().wstring()] = Look(found);
    }
  }
  return disk;
}

std::wstring FolderOf(const std::wstring& path) {
  return path.substr(0, path.rfind(L'\\'));
}
std::wstring LeafOf(const std::wstring& path) {
  return path.substr(path.rfind(L'\\') + 1);
}

// Another program's handle that lets nobody in.
class ExclusiveHandle {
 public:
  explicit ExclusiveHandle(const std::wstring& path)
      : handle_(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
    EXPECT_NE(INVALID_HANDLE_VALUE, handle_);
  }
  ~ExclusiveHandle() { CloseHandle(handle_); }
  ExclusiveHandle(const ExclusiveHandle&) = delete;
  ExclusiveHandle& operator=(const ExclusiveHandle&) = delete;

 private:
  HANDLE handle_;
};

class World {
 public:
  World(unsigned kind, unsigned seed) : random(seed), kind_(kind) {
    root = tree_.Path(L"t");
    tree_.AddFolder(L"t");
    for (int n = 4 + static_cast<int>(random.Below(8)); n > 0; --n) {
      AddFile(SomePlace() + L"f" + std::to_wstring(n));
    }
    tree_.AddFolder(L"t\\" + SomePlace() + L"empty");
    tree_.AddFile(L"rules.xml", RulesText());
  }
  ~World() {
    locks.clear();
    for (const std::wstring& path : read_only) {
      SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
  }
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  qs_status Scan(qs_product_scan* scan) const {
    const std::wstring rules = tree_.Path(L"rules.xml");
    const qs_char* const roots[] = {root.c_str()};
    qs_product_scan_request request{};
    request.size = sizeof(request);
    request.kind = kind_;
    request.roots = roots;
    request.root_count = 1;
    if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
      request.user_home = tree_.root().c_str();
      request.system_root = tree_.root().c_str();
      request.rules_path = rules.c_str();
    }
    return qs_product_scan_start(scan, &request);
  }

  void Change() {
    std::vector<std::wstring> files;
    for (const auto& [path, entry] : DiskBelow(root)) {
      if (!entry.is_folder && locks.count(path) == 0 && read_only.count(path) == 0) {
        files.push_back(path);
      }
    }
    if (files.empty()) {
      return;
    }
    const std::wstring file = random.OneOf(files);
    switch (random.Below(7)) {
      case 0:
        fs::remove(file);
        break;
      case 1:
        fs::remove(file);
        fs::create_directory(file);
        break;
      case 2:
        fs::last_write_time(file, fs::last_write_time(file) - std::chrono::seconds(3));
        break;
      case 3: {
        // The time stays, the size does not.
        const fs::file_time_type time = fs::last_write_time(file);
        fs::resize_file(file, fs::file_size(file) + 1);
        fs::last_write_time(file, time);
        break;
      }
      case 4:
        EXPECT_NE(0, SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY));
        read_only.insert(file);
        break;
      case 5:
        locks[file] = std::make_unique<ExclusiveHandle>(file);
        break;
      default:
        tree_.AddFile(FolderOf(file).substr(tree_.root().size() + 1) + L"\\new", "new");
        break;
    }
  }

  void Calm() {
    locks.clear();
    for (const std::wstring& path : read_only) {
      EXPECT_NE(0, SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL));
    }
    read_only.clear();
  }

  Random random;
  std::wstring root;
  std::map<std::wstring, std::unique_ptr<ExclusiveHandle>> locks;
  std::set<std::wstring> read_only;

 private:
  std::wstring SomePlace() {
    static const wchar_t* const kFolders[] = {L"a\\", L"b\\", L"Downloads\\", L"deep\\"};
    std::wstring place;
    while (random.Below(5) < 3 && place.size() < 40) {
      place += kFolders[random.Below(4)];
    }
    return place;
  }

  void AddFile(const std::wstring& name) {
    const std::wstring path = L"t\\" + name;
    tree_.AddFile(path, std::string(7, static_cast<char>('a' + random.Below(3))));
    if (kind_ == QS_SCAN_KIND_LARGE_FILES) {
      fs::resize_file(tree_.Path(path), kLarge - random.Below(2));
    }
  }

  std::string RulesText() const {
    return "<Root><Category DisplayName=\"c\"><Folder Path=\"{UserHome}\\t\"/></Category></Root>";
  }

  const unsigned kind_;
  RealTree tree_;
};

struct Expected {
  qs_status status = QS_OK;
  std::vector<std::uint64_t> deleted;
  std::uint64_t failed = 0;
  Disk disk;
};

Expected Predict(const World& world, const Disk& scanned, Disk now,
                 std::vector<const ReportedRow*> work, unsigned kind) {
  Expected expected;
  if (kind == QS_SCAN_KIND_JUNK_RULES) {
    std::stable_sort(work.begin(), work.end(), [](const ReportedRow* a, const ReportedRow* b) {
      return a->path.size() > b->path.size();
    });
  }
  for (const ReportedRow* row : work) {
    const auto found = now.find(row->path);
    const bool goes = found != now.end() && !found->second.is_folder &&
                      found->second.size == scanned.at(row->path).size &&
                      found->second.written == scanned.at(row->path).written &&
                      world.read_only.count(row->path) == 0 && world.locks.count(row->path) == 0;
    if (!goes) {
      ++expected.failed;
      continue;
    }
    expected.deleted.push_back(row->numbers.item_id);
    now.erase(found);
    const std::wstring folder = FolderOf(row->path);
    const bool is_empty = std::none_of(now.begin(), now.end(), [&](const auto& entry) {
      return entry.first.compare(0, folder.size() + 1, folder + L'\\') == 0;
    });
    if (kind == QS_SCAN_KIND_JUNK_RULES && is_empty && LeafOf(folder) != L"Downloads") {
      now.erase(folder);
    }
  }
  expected.status = expected.deleted.empty() && expected.failed > 0 ? QS_FAILED : QS_OK;
  std::sort(expected.deleted.begin(), expected.deleted.end());
  expected.disk = std::move(now);
  return expected;
}

struct Tally {
  std::uint64_t deleted = 0;
  std::uint64_t failed = 0;
  std::uint64_t refused = 0;
};

class ProductCleanModel : public ::testing::TestWithParam<std::uint32_t> {
 protected:
  // What may be read although a lock lets nobody in: such files are looked at without it.
  static Disk LookAround(World& world) {
    std::vector<std::wstring> locked;
    for (const auto& [path, lock] : world.locks) {
      locked.push_back(path);
    }
    world.locks.clear();
    Disk disk = DiskBelow(world.root);
    for (const std::wstring& path : locked) {
      world.locks[path] = std::make_unique<ExclusiveHandle>(path);
    }
    return disk;
  }

  static void CleanOnce(World& world, qs_product_scan* scan, const Disk& scanned, unsigned kind,
                        Tally& tally) {
    const std::vector<ReportedRow> rows = ReadRows(scan);
    std::vector<const ReportedRow*> work;
    std::map<std::uint64_t, std::pair<int, int>> sets;
    const unsigned share = 1 + world.random.Below(4);
    const bool spares = kind == QS_SCAN_KIND_DUPLICATES && !world.random.OneIn(4);
    for (const ReportedRow& row : rows) {
      if (row.numbers.kind == QS_ROW_GROUP || row.numbers.deleted != 0) {
        continue;
      }
      const bool spared = sets[row.numbers.group_id].first++ == 0 && spares;
      if (!spared && world.random.Below(4) < share) {
        work.push_back(&row);
        ++sets[row.numbers.group_id].second;
      }
    }
    world.random.Shuffle(work);
    std::vector<std::uint64_t> ids;
    for (const ReportedRow* row : work) {
      ids.push_back(row->numbers.item_id);
    }
    const bool takes_set = kind == QS_SCAN_KIND_DUPLICATES &&
                           std::any_of(sets.begin(), sets.end(), [](const auto& set) {
                             return set.second.first == set.second.second;
                           });
    const Disk before = LookAround(world);
    const Expected expected = Predict(world, scanned, before, work, kind);

    const qs_status status = qs_product_scan_start_clean(scan, ids.data(), ids.size());
    const Disk after = LookAround(world);
    if (takes_set) {
      ASSERT_EQ(QS_INVALID_ARGUMENT, status);
      ASSERT_TRUE(after == before);
      ++tally.refused;
      return;
    }
    ASSERT_EQ(expected.status, status);
    ASSERT_TRUE(after == expected.disk);
    qs_product_clean_detail detail{};
    detail.size = sizeof(detail);
    ASSERT_EQ(QS_OK, qs_product_scan_poll_clean_detailed(scan, &detail));
    EXPECT_EQ(status == QS_OK ? QS_STATE_DONE : QS_STATE_FAILED, detail.state);
    EXPECT_EQ(ids.size(), detail.requested);
    EXPECT_EQ(ids.size(), detail.processed);
    ASSERT_EQ(expected.deleted.size(), detail.deleted);
    EXPECT_EQ(expected.failed, detail.failed);
    std::uint64_t bytes = 0;
    std::vector<std::uint64_t> marks;
    const std::vector<ReportedRow> rows_after = ReadRows(scan);
    for (std::size_t i = 0; i < rows_after.size(); ++i) {
      if (rows_after[i].numbers.deleted != 0 && rows[i].numbers.deleted == 0) {
        marks.push_back(rows_after[i].numbers.item_id);
        bytes += static_cast<std::uint64_t>(rows_after[i].numbers.size);
      }
    }
    EXPECT_EQ(expected.deleted, marks);
    EXPECT_EQ(bytes, detail.bytes_freed);
    tally.deleted += detail.deleted;
    tally.failed += detail.failed;
  }
};

TEST_P(ProductCleanModel, Of_real_files_those_that_were_selected_and_unchanged_are_gone) {
  const std::uint32_t kind = GetParam();
  Tally tally;
  for (unsigned seed = 1; seed <= kRounds; ++seed) {
    SCOPED_TRACE(seed);
    World world(kind, seed * 4 + kind);
    const ScanHandle scan;
    ASSERT_EQ(QS_OK, world.Scan(scan.get()));
    const Disk scanned = DiskBelow(world.root);
    for (unsigned n = world.random.Below(6); n > 0; --n) {
      world.Change();
    }
    CleanOnce(world, scan.get(), scanned, kind, tally);
    if (HasFatalFailure()) {
      return;
    }
    world.Calm();
    CleanOnce(world, scan.get(), scanned, kind, tally);
    if (HasFatalFailure()) {
      return;
    }
  }
  std::cout << "[  tally   ] " << tally.deleted << " deleted, " << tally.failed << " failed, "
            << tally.refused << " refused" << std::endl;
  EXPECT_GT(tally.deleted, kRounds);
  EXPECT_GT(tally.failed, kRounds / 4);
  EXPECT_EQ(kind == QS_SCAN_KIND_DUPLICATES, tally.refused > 0);
}

INSTANTIATE_TEST_SUITE_P(Of, ProductCleanModel,
                         ::testing::Values(QS_SCAN_KIND_JUNK_RULES, QS_SCAN_KIND_LARGE_FILES,
                                           QS_SCAN_KIND_DUPLICATES));

}  // namespace
}  // namespace quastel::dll_test
