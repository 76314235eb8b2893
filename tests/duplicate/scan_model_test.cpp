// Random trees that change between scans, against a model: duplicates are files of equal content,
// and what a scan opens and remembers follows from what the scans before have learned.

#include <algorithm>
#include <initializer_list>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "duplicate/duplicate_fixture.h"
#include "support/instrumented.h"
#include "support/walk.h"

namespace quastel::duplicate_tests {
namespace {

constexpr std::uint64_t kLifetime = 2'592'000'000'000;
constexpr std::uint64_t kFirstWrite = 133'000'000'000'000'000;

// A content and the texts that belong to it, made once for all trees.
struct Content {
  std::string bytes;
  std::string head;    // what the first look gives
  std::string sample;  // complete
  std::string sample_key;
  std::string group_key;
  std::string hash;
};

Content ContentOf(std::string bytes) {
  Content content;
  content.head = bytes.size() <= 150 ? HexOf(bytes) : HeadOf(bytes);
  content.sample = SampleOf(bytes);
  content.sample_key = SampleKeyOf(bytes);
  content.group_key = GroupKeyOf(bytes);
  content.hash = HashOf(bytes);
  content.bytes = std::move(bytes);
  return content;
}

// Few sizes, and for each a few contents that differ early, late or in between.
std::vector<Content> MakeContents() {
  std::set<std::string> all;
  for (const std::size_t size :
       std::initializer_list<std::size_t>{0, 1, 60, 150, 151, 300, 4096, 4097, 8192, 8193, 9001}) {
    all.insert(std::string(size, '\0'));
    for (std::uint32_t seed = 0; seed < 2; ++seed) {
      const std::string base = Bytes(size, seed);
      all.insert(base);
      if (size > 0) {
        all.insert(ChangedAt(base, 0));
        all.insert(ChangedAt(base, size / 2));
        all.insert(ChangedAt(base, size - 1));
      }
    }
  }
  std::vector<Content> contents;
  std::set<std::string> keys;
  for (const std::string& bytes : all) {
    contents.push_back(ContentOf(bytes));
    EXPECT_TRUE(keys.insert(contents.back().group_key).second) << "two contents with one key";
  }
  return contents;
}

const std::vector<Content>& Contents() {
  static const std::vector<Content>* const contents = new std::vector<Content>(MakeContents());
  return *contents;
}

struct File {
  const Content* content = nullptr;
  std::uint64_t written = 0;

  std::size_t size() const { return content->bytes.size(); }
};

Text Folded(Text path) {
  for (Char& unit : path) {
    unit = unit >= u'A' && unit <= u'Z' ? static_cast<Char>(unit + 32) : unit;
  }
  return path;
}

struct Expected {
  std::vector<Row> rows;
  std::map<std::string, int> opens;
  std::uint64_t candidates = 0, sampled = 0, hashed = 0, small_groups = 0;
};

// What scans have learned, and what the next one will do.
class Model {
 public:
  Expected Scan(const std::vector<Text>& walk, const std::map<Text, File>& files,
                std::uint64_t now) {
    std::erase_if(cache_, [&](const auto& entry) {
      return entry.second.confirmed > now || now - entry.second.confirmed > kLifetime;
    });
    Expected expected;
    expected.candidates = walk.size();
    expected.rows = RowsOf(walk, files);

    std::map<std::size_t, int> of_size;
    for (const Text& path : walk) {
      ++of_size[files.at(path).size()];
    }
    // What is known of each file that another one shares its size with.
    std::map<Text, std::string> samples;
    for (const Text& path : walk) {
      const File& file = files.at(path);
      if (of_size[file.size()] < 2) {
        continue;
      }
      const CacheRecord* known = Known(path, file);
      samples[path] = known != nullptr ? known->sample : file.content->head;
      if (known == nullptr) {
        ++expected.opens[Utf8(path)];
      }
    }
    expected.sampled = samples.size();

    std::map<std::string, int> of_head;
    for (const auto& [path, sample] : samples) {
      ++of_head[files.at(path).content->head];
    }
    for (auto& [path, sample] : samples) {
      const File& file = files.at(path);
      if (file.size() > 150 && of_head[file.content->head] > 1 &&
          sample.find('|') == std::string::npos) {
        sample = file.content->sample;
        expected.opens[Utf8(path)] += file.size() > 4096;
      }
    }

    std::map<std::string, int> of_sample;
    for (const auto& [path, sample] : samples) {
      of_sample[files.at(path).content->sample_key] += sample == files.at(path).content->sample;
    }
    std::set<std::string> small_groups;
    for (const auto& [path, sample] : samples) {
      const File& file = files.at(path);
      CacheRecord record{.key = Folded(path),
                         .size = file.size(),
                         .last_write = file.written + kTicksAt1601,
                         .confirmed = now,
                         .sample = sample};
      if (of_sample[file.content->sample_key] > 1 && file.size() <= 150) {
        small_groups.insert(file.content->sample_key);
      } else if (of_sample[file.content->sample_key] > 1) {
        const CacheRecord* known = Known(path, file);
        expected.opens[Utf8(path)] += known == nullptr || known->hash.empty();
        ++expected.hashed;
        record.hash = file.content->hash;
      }
      cache_[record.key] = record;
    }
    expected.small_groups = small_groups.size();
    std::erase_if(expected.opens, [](const auto& opens) { return opens.second == 0; });
    return expected;
  }

  CacheRecords cache() const {
    CacheRecords records;
    for (const auto& [key, record] : cache_) {
      records.push_back(record);
    }
    return records;
  }

 private:
  const CacheRecord* Known(const Text& path, const File& file) const {
    const auto found = cache_.find(Folded(path));
    return found != cache_.end() && found->second.size == file.size() &&
                   found->second.last_write == file.written + kTicksAt1601
               ? &found->second
               : nullptr;
  }

  // Files of equal content, whatever was learned before.
  static std::vector<Row> RowsOf(const std::vector<Text>& walk, const std::map<Text, File>& files) {
    std::map<const Content*, std::vector<Text>> equal;
    for (const Text& path : walk) {
      equal[files.at(path).content].push_back(path);
    }
    std::vector<std::pair<const Content*, std::vector<Text>>> groups(equal.begin(), equal.end());
    std::erase_if(groups, [](const auto& group) { return group.second.size() < 2; });
    std::sort(groups.begin(), groups.end(), [](const auto& a, const auto& b) {
      const auto rank = [](const Content& content) {
        return std::tuple(content.bytes.size() > 150, content.sample_key, content.group_key);
      };
      return rank(*a.first) < rank(*b.first);
    });
    std::vector<Row> rows;
    for (std::size_t i = 0; i < groups.size(); ++i) {
      const auto& [content, paths] = groups[i];
      const Text title = paths[0].substr(paths[0].rfind(Char{'\\'}) + 1);
      for (const Text& path : paths) {
        rows.push_back(DuplicateRow(rows.size(), i + 1, path, title, content->group_key,
                                    content->bytes.size(), files.at(path).written + kTicksAt1601));
      }
    }
    return rows;
  }

  std::map<Text, CacheRecord> cache_;
};

// One machine and its model through a few scans.
class Life {
 public:
  explicit Life(std::uint32_t seed) : random_(seed) {
    machine_.AddDrive('D');
    machine_.AddFolder(u"C:\\data");
    machine_.AddFolder(u"D:\\more");
    machine_.SetProcessorCount(static_cast<std::uint32_t>(std::size_t{1} << Below(3)));
    // Trees of few contents have many duplicates, trees of all contents hardly any.
    const std::size_t contents = 3 + Below(20);
    for (std::size_t i = 0; i < contents; ++i) {
      palette_.push_back(&Contents()[Below(Contents().size())]);
    }
    for (std::size_t i = Below(16); i > 0; --i) {
      Write();
    }
  }

  void ScanAndCompare() {
    std::vector<Text> walk;
    for (const char16_t* root : {u"C:\\data", u"D:\\more"}) {
      const support::WalkResult found = support::RunWalk(support::FileWalk{.root = root});
      for (const std::string& path : found.paths()) {
        walk.push_back(Wide(path));
      }
    }
    ASSERT_EQ(walk.size(), files_.size());
    const Expected expected = model_.Scan(walk, files_, now_);
    machine_.ClearRecord();
    machine_.SetRecording(true);
    const Outcome scan = Scan(DuplicateRequest({u"C:\\data", u"D:\\more"}));
    machine_.SetRecording(false);
    EXPECT_EQ(scan.status, QS_OK);
    EXPECT_EQ(scan.rows, expected.rows);
    EXPECT_EQ(OpensOf(machine_), expected.opens);
    EXPECT_EQ(scan.performance.candidates, expected.candidates);
    EXPECT_EQ(scan.performance.sampled_items, expected.sampled);
    EXPECT_EQ(scan.performance.hashed_items, expected.hashed);
    EXPECT_EQ(scan.performance.unhashed_groups, expected.small_groups);
    EXPECT_EQ(CacheOf(machine_), model_.cache());
    groups += GroupsOf(scan.rows).size();
  }

  void Change() {
    for (std::size_t i = Below(5); i > 0; --i) {
      if (files_.empty() || Below(2) == 0) {
        Write();
        continue;
      }
      auto file = std::next(files_.begin(), static_cast<std::ptrdiff_t>(Below(files_.size())));
      if (Below(2) == 0) {
        machine_.SetLastWrite(file->first, file->second.written = NextWrite());
      } else {
        machine_.Remove(file->first);
        files_.erase(file);
      }
    }
    constexpr std::uint64_t kSteps[] = {0, 1000, 40ull * 3'600'000, 72ull * 3'600'000,
                                        72ull * 3'600'000 + 1};
    const std::uint64_t milliseconds = kSteps[Below(5)];
    machine_.AdvanceClock(milliseconds);
    now_ += milliseconds * 10'000;
  }

  std::size_t groups = 0;

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  std::uint64_t NextWrite() { return kFirstWrite + ++writes_; }

  // A new file, or another content for an old one.
  void Write() {
    constexpr const char16_t* kFolders[] = {u"C:\\data\\", u"C:\\data\\Sub\\", u"C:\\data\\t\\u\\",
                                            u"D:\\more\\", u"D:\\more\\Sub\\"};
    const Text path = kFolders[Below(5)] + Wide("File" + std::to_string(Below(8)));
    const File file = {palette_[Below(palette_.size())], NextWrite()};
    machine_.AddFile(path, file.content->bytes, {.last_write = file.written});
    files_[path] = file;
  }

  std::mt19937 random_;
  SimulatedWindows machine_;
  std::vector<const Content*> palette_;
  std::map<Text, File> files_;
  Model model_;
  std::uint64_t now_ = kClockAtFirst;
  std::uint64_t writes_ = 0;
};

TEST(DuplicateModel, Agrees_with_scan_after_scan_of_random_trees) {
  constexpr std::uint32_t kLives = support::Rounds(800, 200);
  constexpr int kScans = 4;
  std::size_t groups = 0;
  for (std::uint32_t seed = 0; seed < kLives; ++seed) {
    Life life(seed);
    for (int scan = 0; scan < kScans; ++scan) {
      SCOPED_TRACE("life " + std::to_string(seed) + ", scan " + std::to_string(scan));
      ASSERT_NO_FATAL_FAILURE(life.ScanAndCompare());
      if (::testing::Test::HasFailure()) {
        return;
      }
      life.Change();
    }
    groups += life.groups;
  }
  EXPECT_GT(groups, std::size_t{kLives} * kScans) << "trees without duplicates show little";
}

}  // namespace
}  // namespace quastel::duplicate_tests
