// What the sweeps run in the rooms fs and scan.

#include "faults/fault_scenario.h"

#include <utility>

#include "faults/allocation_faults.h"
#include "scan/scan_fixture.h"
#include "support/text.h"

namespace quastel::faults {

namespace {

using support::Utf8;

Text LongFolder() {
  return u"C:\\data\\" + Text(120, Char{'f'}) + u"\\" + Text(119, Char{'g'}) + u"\\h";
}

// Folders in folders, links, long paths, large and small files, and what is protected. Spelled as
// the system spells it: a name that cannot be resolved is then still the same text.
void FurnishTree(SimulatedWindows& machine) {
  const std::uint64_t large = scan_tests::kLarge;
  machine.AddSizedFile(u"C:\\data\\a.zip", large);
  machine.AddSizedFile(u"C:\\data\\b.log", 10);
  machine.AddSizedFile(u"C:\\data\\m\\c.log", large + 1);
  machine.AddSizedFile(u"C:\\data\\m\\deep\\d.mkv", large + 2);
  machine.AddFolder(u"C:\\data\\n\\empty");
  machine.AddSizedFile(LongFolder() + u"\\e.log", large + 3);
  machine.AddLink(simulated::LinkKind::kJunction, u"C:\\data\\junction", u"C:\\other");
  machine.AddSizedFile(u"C:\\other\\f.jpg", large + 4);
  machine.AddSizedFile(u"C:\\Users\\u\\AppData\\g.log", large + 5);
  machine.AddSizedFile(u"C:\\Users\\u\\Documents\\h.pdf", large + 6);
}

std::string Line(const Char* path, std::uint64_t size, std::uint64_t last_write) {
  return Utf8(path) + ", " + std::to_string(size) + " bytes, " + std::to_string(last_write);
}

class EnumerateFiles : public Deed {
 public:
  EnumerateFiles(bool logs_only, bool protect)
      : pattern_(logs_only ? u"*.log" : u"*"), protect_(protect) {}

  qs_status Do() override {
    Forget();
    return qs_enumerate_files_ex(u"C:\\", pattern_, 1, protect_ ? 1 : 0, u"C:\\", u"C:\\Users\\u",
                                 Collect, this, nullptr);
  }
  std::vector<std::string> Findings() override { return findings_; }

 protected:
  static void Collect(void* user, const Char* path, std::uint64_t size, std::uint64_t last_write,
                      const Char* name) {
    AllocationFaultPause pause;
    static_cast<EnumerateFiles*>(user)->findings_.push_back(Line(path, size, last_write) + ", " +
                                                            Utf8(name));
  }

  void Forget() {
    AllocationFaultPause pause;
    findings_.clear();
  }

 private:
  const Char* const pattern_;
  const bool protect_;
  std::vector<std::string> findings_;
};

// The export without protection.
class EnumeratePlainFiles : public EnumerateFiles {
 public:
  EnumeratePlainFiles() : EnumerateFiles(false, false) {}

  qs_status Do() override {
    Forget();
    EnumerateFiles* const user = this;
    return qs_enumerate_files(u"C:\\data", nullptr, 1, Collect, user, nullptr);
  }
};

class EnumerateDirectories : public Deed {
 public:
  qs_status Do() override {
    {
      AllocationFaultPause pause;
      findings_.clear();
    }
    return qs_enumerate_directories(u"C:\\data", Collect, this, nullptr);
  }
  std::vector<std::string> Findings() override { return findings_; }

 private:
  static void Collect(void* user, const Char* path) {
    AllocationFaultPause pause;
    static_cast<EnumerateDirectories*>(user)->findings_.push_back(Utf8(path));
  }

  std::vector<std::string> findings_;
};

class LargeFileScan : public Deed {
 public:
  LargeFileScan()
      : request_(scan_tests::Request::ProtectedLargeFiles(
            {u"C:\\data\\m", u"C:\\data", u"C:\\other", u"C:\\Users"})) {}

  qs_status Do() override { return qs_product_scan_start(scan_, request_.Get()); }

  std::vector<std::string> Findings() override {
    std::vector<std::string> findings;
    std::uint64_t id = 0;
    for (scan_tests::Row& row : scan_tests::ReadReport(scan_)) {
      // The ids count what was found before.
      EXPECT_EQ(row.numbers.item_id, id++);
      row.numbers.item_id = 0;
      findings.push_back(::testing::PrintToString(row));
    }
    return findings;
  }

  void CheckAfter(qs_status status) override {
    const qs_product_scan_status polled = scan_tests::Poll(scan_);
    if (status == QS_FAILED && polled.state != QS_STATE_FAILED) {
      // A failure before the scan runs changes nothing.
      EXPECT_EQ(scan_tests::EverythingOf(scan_), before_);
    } else {
      EXPECT_EQ(polled.state, status == QS_OK          ? QS_STATE_DONE
                              : status == QS_CANCELLED ? QS_STATE_CANCELLED
                                                       : QS_STATE_FAILED);
      EXPECT_EQ(polled.status, status);
    }
    before_ = scan_tests::EverythingOf(scan_);
  }

 protected:
  scan_tests::ScanHandle scan_;

 private:
  scan_tests::Request request_;
  std::string before_ = scan_tests::EverythingOf(scan_);
};

// The same scan with a cancel when it opens its fourth folder.
class CancelledScan : public LargeFileScan {
 public:
  explicit CancelledScan(SimulatedWindows& machine) : machine_(machine) {
    EXPECT_EQ(Do(), QS_OK);
    CheckAfter(QS_OK);
    possible_ = Findings();
    machine.SetHook([this](const simulated::CallRecord& record) {
      if (record.call == simulated::Call::kFindFirstBasic && ++folders_ == 4) {
        qs_product_scan_cancel(scan_);
      }
    });
  }
  ~CancelledScan() override { machine_.SetHook(nullptr); }

  qs_status Do() override {
    folders_ = 0;
    return LargeFileScan::Do();
  }

  // A folder that cannot be listed lets the scan come further before it is cancelled.
  std::vector<std::string> Possible() override { return possible_; }

  // Whatever fails behind the cancel: it stays a cancelled scan.
  bool Allows(qs_status status, bool out_of_memory) override {
    return folders_ >= 4 ? status == QS_CANCELLED : LargeFileScan::Allows(status, out_of_memory);
  }

 private:
  SimulatedWindows& machine_;
  std::vector<std::string> possible_;
  int folders_ = 0;
};

class FilterDir : public Deed {
 public:
  qs_status Do() override {
    static const Char* const kPaths[] = {u"C:\\data\\m\\deep\\and\\far\\below", u"C:\\data",
                                         u"C:\\data\\m", u"C:\\Users\\u\\Documents", u"C:\\other"};
    kept_ = 99;
    needed_ = 99;
    status_ = qs_filter_dir(kPaths, 5, out_, 1024, &kept_, &needed_);
    return status_;
  }

  std::vector<std::string> Findings() override {
    std::vector<std::string> findings;
    if (status_ != QS_OK) {
      return findings;
    }
    const Char* at = out_;
    for (std::uint64_t i = 0; i < kept_; ++i) {
      findings.push_back(Utf8(at));
      at += TextView(at).size() + 1;
    }
    EXPECT_EQ(*at, 0);
    EXPECT_EQ(needed_, static_cast<std::uint64_t>(at - out_) + 1);
    return findings;
  }

 private:
  qs_status status_ = QS_OK;
  std::uint64_t kept_ = 0;
  std::uint64_t needed_ = 0;
  Char out_[1024];
};

// A text of the path exports; long enough to be resolved and to need memory.
class PathText : public Deed {
 public:
  explicit PathText(bool combine)
      : combine_(combine), path_(u"C:\\data\\" + Text(260, Char{'p'})) {}

  qs_status Do() override {
    out_[0] = Char{'?'};
    out_[1] = 0;
    return combine_ ? qs_path_combine(u"C:\\data\\", path_.c_str() + 8, out_, 1024, nullptr)
                    : qs_normalize_path(path_.c_str(), out_, 1024, nullptr);
  }
  std::vector<std::string> Findings() override {
    const std::string text = Utf8(out_);
    return text == "?" ? std::vector<std::string>{} : std::vector<std::string>{text};
  }
  void CheckAfter(qs_status status) override { EXPECT_EQ(status == QS_OK, out_[0] != Char{'?'}); }

 private:
  const bool combine_;
  const Text path_;
  Char out_[1024] = {};
};

// The exports that answer yes or no: a no is always allowed.
class Predicate : public Deed {
 public:
  explicit Predicate(std::int32_t (*ask)()) : ask_(ask) {}

  qs_status Do() override {
    answer_ = ask_();
    return QS_OK;
  }
  std::vector<std::string> Findings() override {
    EXPECT_TRUE(answer_ == 0 || answer_ == 1);
    return answer_ == 1 ? std::vector<std::string>{"yes"} : std::vector<std::string>{};
  }

 private:
  std::int32_t (*const ask_)();
  std::int32_t answer_ = 0;
};

template <auto kAsk>
std::unique_ptr<Deed> MakePredicate(SimulatedWindows&) {
  return std::make_unique<Predicate>(kAsk);
}

template <typename SomeDeed, auto... kArguments>
std::unique_ptr<Deed> Make(SimulatedWindows&) {
  return std::make_unique<SomeDeed>(kArguments...);
}

std::unique_ptr<Deed> MakeCancelledScan(SimulatedWindows& machine) {
  return std::make_unique<CancelledScan>(machine);
}

std::int32_t AskDirectoryExists() {
  static const Text kFolder = LongFolder();
  return qs_directory_exists(kFolder.c_str());
}
std::int32_t AskSameDirectory() {
  return qs_is_in_same_directory(u"C:\\data\\m\\one of two", u"C:\\data\\m\\two of two");
}
std::int32_t AskWhitelist() {
  return qs_is_in_whitelist(u"C:\\Users\\u\\AppData\\Local", u"C:\\", u"C:\\Users\\u");
}
std::int32_t AskLargeScanInclude() {
  return qs_large_scan_include(u"C:\\Users\\u\\Documents\\h.pdf",
                               static_cast<std::int64_t>(scan_tests::kLarge), 1, u"C:\\",
                               u"C:\\Users\\u");
}
std::int32_t AskMatchesDate() {
  const auto now = static_cast<std::int64_t>(scan_tests::kDefaultModified);
  return qs_matches_date(now - 1, now, 3);
}

}  // namespace

const std::vector<Scenario>& AllScenarios() {
  static const std::vector<Scenario> kScenarios = {
      {"EnumerateAllFiles", FurnishTree, Make<EnumerateFiles, false, false>, 60, 50},
      {"EnumerateLogFiles", FurnishTree, Make<EnumerateFiles, true, false>, 60, 50},
      {"EnumerateUnprotectedFiles", FurnishTree, Make<EnumerateFiles, false, true>, 60, 50},
      {"EnumeratePlainFiles", FurnishTree, Make<EnumeratePlainFiles>, 30, 20},
      {"EnumerateDirectories", FurnishTree, Make<EnumerateDirectories>, 8, 1},
      {"LargeFileScan", FurnishTree, Make<LargeFileScan>, 60, 50},
      {"CancelledScan", FurnishTree, MakeCancelledScan, 20, 20},
      {"FilterDir", FurnishTree, Make<FilterDir>, 10, 5},
      {"NormalizePath", FurnishTree, Make<PathText, false>, 1, 1},
      {"CombinePaths", FurnishTree, Make<PathText, true>, 0, 1},
      {"DirectoryExists", FurnishTree, MakePredicate<AskDirectoryExists>, 2, 1, false},
      {"SameDirectory", FurnishTree, MakePredicate<AskSameDirectory>, 4, 1, false},
      {"Whitelist", FurnishTree, MakePredicate<AskWhitelist>, 4, 1, false},
      {"MatchesDate", FurnishTree, MakePredicate<AskMatchesDate>, 2, 0, false},
      {"LargeScanInclude", FurnishTree, MakePredicate<AskLargeScanInclude>, 4, 1, false},
  };
  return kScenarios;
}

}  // namespace quastel::faults
