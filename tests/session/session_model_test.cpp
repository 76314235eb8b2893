// Random trees, scans, changes and cleans of one session, against the plainest possible model: a
// list of files and, for each clean, the files that it may delete.

#include <algorithm>
#include <map>
#include <optional>
#include <random>

#include "session/session_fixture.h"

namespace quastel::session_tests {
namespace {

constexpr unsigned kMachines = 250;
constexpr unsigned kRoundsOfEach = 12;
constexpr std::uint64_t kTime = FileOptions{}.last_write;

struct ModelFile {
  std::uint64_t size = 0;
  std::uint64_t time = kTime;
  bool removable = true;  // neither read-only nor denied
  bool is_link = false;
};

// The files of the machine by their paths.
using Model = std::map<Text, ModelFile>;

Text FolderOf(const Text& path) {
  return path.substr(0, path.rfind(Char{'\\'}));
}

// What the cleans of all machines did, so that the test can tell that it has met everything.
struct Tally {
  std::uint64_t deleted_files = 0;
  std::uint64_t refused_cleans = 0;
  std::uint64_t stopped_cleans = 0;
  std::uint64_t cancelled_cleans = 0;
  std::uint64_t whole_cleans = 0;
};

class ModelTest {
 public:
  ModelTest(unsigned seed, Tally& tally) : random_(seed), tally_(tally) {
    for (const TextView folder :
         {u"C:\\t", u"C:\\t\\a", u"C:\\t\\a\\b", u"C:\\t\\m", u"C:\\t\\z"}) {
      folders_.emplace_back(folder);
      machine_.AddFolder(folder);
    }
    for (int i = 0; i < 12; ++i) {
      AddSomeFile();
    }
    // What a junction leads to: the same names again, which no session may touch.
    for (const auto& [path, file] : files_) {
      machine_.AddSizedFile(u"C:\\precious" + path.substr(path.rfind(Char{'\\'})), file.size, 0,
                            {.last_write = file.time});
    }
  }

  void Run() {
    for (unsigned round = 0; round < kRoundsOfEach && !::testing::Test::HasFailure(); ++round) {
      SCOPED_TRACE(round);
      if (round == 0 || Below(4) == 0) {
        Scan();
      }
      for (std::size_t changes = Below(4); changes > 0; --changes) {
        Change();
      }
      Clean();
      CheckReport();
    }
  }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }

  void AddSomeFile() {
    const Text path = folders_[Below(folders_.size())] + u"\\" +
                      Text(1, static_cast<Char>('a' + Below(26))) + u".f";
    if (!IsReachable(path)) {
      return;
    }
    constexpr std::uint64_t kSizes[] = {0, 1, 2, kNotLarge, kLarge, 0x1'0000'0001};
    const ModelFile file = {kSizes[Below(6)], kTime + Below(3)};
    if (files_.contains(path)) {
      machine_.Remove(path);
    }
    machine_.AddSizedFile(path, file.size, 0, {.last_write = file.time});
    files_[path] = file;
  }

  bool IsReachable(const Text& path) const {
    return std::none_of(junctions_.begin(), junctions_.end(), [&](const Text& junction) {
      return path.compare(0, junction.size() + 1, junction + u"\\") == 0;
    });
  }

  // The files in the order of a walk: those of a folder by name, then its folders, the last first.
  void WalkFolder(const Text& folder, std::vector<Row>& rows, ScanBlock& block) const {
    for (const auto& [path, file] : files_) {
      if (FolderOf(path) == folder && !file.is_link) {
        ++block.files_visited;
        block.bytes_visited += file.size;
        if (mode_ != QS_SESSION_LARGE_FILES || file.size > kNotLarge) {
          rows.push_back(
              {path, path.substr(folder.size() + 1), file.size, file.time + kTicksAt1601, 0});
        }
      }
    }
    for (auto child = folders_.rbegin(); child != folders_.rend(); ++child) {
      if (FolderOf(*child) == folder && IsReachable(*child + u"\\")) {
        WalkFolder(*child, rows, block);
      }
    }
  }

  void Scan() {
    constexpr std::uint32_t kModes[] = {QS_SESSION_ALL_FILES, QS_SESSION_ALL_FILES,
                                        QS_SESSION_LARGE_FILES, QS_SESSION_INSPECT};
    mode_ = kModes[Below(4)];
    rows_.clear();
    ScanBlock block;
    WalkFolder(u"C:\\t", rows_, block);
    snapshots_.clear();
    for (const Row& row : rows_) {
      snapshots_.push_back(files_.at(row.path));
    }
    block.state = QS_STATE_DONE;
    block.row_count = rows_.size();
    ASSERT_EQ(session_.Scan(u"C:\\t", mode_), QS_OK);
    ASSERT_EQ(ScanOf(session_), block);
    CheckReport();
  }

  // Something that another program does to the tree.
  void Change() {
    if (files_.empty() || Below(5) == 0) {
      AddSomeFile();
      return;
    }
    auto at = files_.begin();
    std::advance(at, static_cast<std::ptrdiff_t>(Below(files_.size())));
    const Text path = at->first;
    ModelFile& file = at->second;
    if (file.is_link) {
      return;
    }
    switch (Below(9)) {
      case 0:
        file.size ^= 1;
        machine_.Remove(path);
        machine_.AddSizedFile(path, file.size, 0, {.last_write = file.time});
        file.removable = true;
        break;
      case 1:
        file.time ^= 1;
        machine_.SetLastWrite(path, file.time);
        break;
      case 2:
        machine_.Remove(path);
        files_.erase(at);
        break;
      case 3:
        machine_.SetAttributes(path, platform::kAttributeReadOnly);
        file.removable = false;
        break;
      case 4:
        machine_.Deny(path, {.deleting = true});
        file.removable = false;
        break;
      case 5:
        machine_.Remove(path);
        machine_.AddLink(LinkKind::kFileLink, path, u"C:\\precious\\a.f");
        file.is_link = true;
        break;
      case 6:
        // Gone and back as it was.
        machine_.Remove(path);
        machine_.AddSizedFile(path, file.size, 0, {.last_write = file.time});
        file.removable = true;
        break;
      case 7:
        machine_.SetContent(path, std::string(7, 'x'));
        file.size = 7;
        break;
      default:
        ExchangeAFolder();
    }
  }

  void ExchangeAFolder() {
    const Text folder = folders_[1 + Below(folders_.size() - 1)];
    if (!IsReachable(folder + u"\\") || Below(3) != 0) {
      return;
    }
    machine_.Remove(folder);
    machine_.AddLink(LinkKind::kJunction, folder, u"C:\\precious");
    junctions_.push_back(folder);
    for (auto file = files_.begin(); file != files_.end();) {
      file = IsReachable(file->first) ? std::next(file) : files_.erase(file);
    }
  }

  bool CanGo(std::uint64_t index) const {
    const auto file = files_.find(rows_[index].path);
    return file != files_.end() && file->second.size == snapshots_[index].size &&
           file->second.time == snapshots_[index].time && file->second.removable &&
           !file->second.is_link;
  }

  Ids Selection() {
    Ids ids = UpTo(rows_.size());
    std::shuffle(ids.begin(), ids.end(), random_);
    ids.resize(Below(ids.size() + 1));
    // One in eight is a mistake of the caller.
    const std::size_t at = Below(ids.size() + 1);
    const auto place = ids.begin() + static_cast<std::ptrdiff_t>(at);
    switch (Below(16)) {
      case 0:
        ids.insert(place, rows_.size() + Below(3));
        break;
      case 1:
        if (!ids.empty()) {
          const std::uint64_t again = ids[Below(ids.size())];
          ids.insert(place, again);
        }
        break;
      default:
        break;
    }
    return ids;
  }

  qs_status RefusalOf(const Ids& ids) const {
    if (mode_ == QS_SESSION_INSPECT) {
      return QS_UNSUPPORTED;
    }
    for (std::size_t i = 0; i < ids.size(); ++i) {
      if (ids[i] >= rows_.size()) {
        return QS_NOT_FOUND;
      }
      if (std::find(ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(i), ids[i]) !=
          ids.begin() + static_cast<std::ptrdiff_t>(i)) {
        return QS_INVALID_ARGUMENT;
      }
    }
    return QS_OK;
  }

  void Clean() {
    const Ids ids = Selection();
    const Lines disk = DiskOf(machine_);
    if (const qs_status refusal = RefusalOf(ids); refusal != QS_OK) {
      EXPECT_EQ(session_.Clean(ids), refusal);
      EXPECT_EQ(DiskOf(machine_), disk);
      EXPECT_EQ(CleanOf(session_), clean_);
      ++tally_.refused_cleans;
      return;
    }
    // A cancel comes inside the removal of one of the files, or not at all.
    const std::size_t cancel_at = Below(3) == 0 ? 1 + Below(ids.size() + 1) : 0;
    Lines gone;
    qs_status status = QS_OK;
    for (const std::uint64_t index : ids) {
      if (cancel_at != 0 && gone.size() == cancel_at) {
        break;
      }
      if (!CanGo(index)) {
        status = QS_FAILED;
        break;
      }
      gone.push_back(Utf8(rows_[index].path));
      files_.erase(rows_[index].path);
      rows_[index].deleted = 1;
    }
    if (status == QS_OK && cancel_at != 0 && gone.size() == cancel_at) {
      status = QS_CANCELLED;
    }
    clean_ = Ended(status, ids.size(), gone.size());

    std::size_t removed = 0;
    machine_.SetHook([&](const CallRecord& record) {
      // A call that will fail counts for nothing here: the cancel comes within a file that goes.
      if (record.call == Call::kRemoveFile && ++removed == cancel_at) {
        qs_session_cancel_clean(session_);
      }
    });
    EXPECT_EQ(session_.Clean(ids), status);
    machine_.SetHook(nullptr);
    std::sort(gone.begin(), gone.end());
    EXPECT_EQ(GoneSince(disk, machine_), gone);
    EXPECT_EQ(NewSince(disk, machine_), Lines{});
    EXPECT_EQ(CleanOf(session_), clean_);
    tally_.deleted_files += gone.size();
    tally_.stopped_cleans += status == QS_FAILED;
    tally_.cancelled_cleans += status == QS_CANCELLED;
    tally_.whole_cleans += status == QS_OK && !ids.empty();
  }

  void CheckReport() {
    ASSERT_EQ(ReadReport(session_), rows_);
    EXPECT_EQ(CleanOf(session_), clean_);
    EXPECT_EQ(machine_.open_handles(), 0u);
  }

  std::mt19937 random_;
  Tally& tally_;
  SimulatedWindows machine_;
  SessionHandle session_;
  std::vector<Text> folders_;
  std::vector<Text> junctions_;
  Model files_;
  std::uint32_t mode_ = QS_SESSION_ALL_FILES;
  std::vector<Row> rows_;
  std::vector<ModelFile> snapshots_;
  CleanBlock clean_;
};

TEST(SessionModel, Random_scans_changes_and_cleans_do_what_the_model_does) {
  Tally tally;
  for (unsigned seed = 1; seed <= kMachines && !::testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    ModelTest(seed, tally).Run();
  }
  // Of three thousand cleans.
  EXPECT_GT(tally.deleted_files, 1'000u);
  EXPECT_GT(tally.refused_cleans, 300u);
  EXPECT_GT(tally.stopped_cleans, 300u);
  EXPECT_GT(tally.cancelled_cleans, 50u);
  EXPECT_GT(tally.whole_cleans, 100u);
}

}  // namespace
}  // namespace quastel::session_tests
