// What the sweeps run in this room; linked with them in the place of the list
// of the other rooms.

#include <set>

#include "faults/fault_scenario.h"
#include "junk/junk_fixture.h"

namespace quastel::faults {

namespace {

using junk_tests::Category;
using junk_tests::InRoot;
using junk_tests::JunkRequest;
using junk_tests::kRulesPath;
using junk_tests::Request;
using junk_tests::Row;
using support::Utf8;

const Text& LongFolder() {
  static const Text* const folder = new Text(support::NestedTo(252, u"C:\\long"));
  return *folder;
}

// Every element of the vocabulary, long names that need memory, and `last` at
// the end.
std::string Rules(const std::string& last) {
  const std::string long_name(60, 'n');
  return std::string(junk_tests::kUtf8Mark) + "<?xml version='1.0'?>" +
         InRoot(Category("The first category of the document",
                         "<Folder Path='{UserHome}\\Temporary files of the user'/>" +
                             Category("A category within another",
                                      "<FolderList StartPath='{Root}data' "
                                      "EndPath='Cache &amp; "
                                      "more' "
                                      "ContainsPath='data'/><Other><Folder/></Other>") +
                             "<Folder Path='{Root}empty'/><Folder Path='" + Utf8(LongFolder()) +
                             "' DisplayName='" + long_name + "'/>") +
                Category(junk_tests::kDownloads,
                         "<ChildrenList StartPath='{Root}data'/><Folder "
                         "Path='{Root}data' "
                         "Pattern='*.log'/>" +
                             last));
}

void Furnish(SimulatedWindows& machine, const std::string& last) {
  machine.AddFile(kRulesPath, Rules(last));
  machine.AddSizedFile(u"C:\\Users\\u\\Temporary files of the user\\a.tmp", 10);
  machine.AddSizedFile(u"C:\\Users\\u\\Temporary files of the user\\sub\\b.tmp", 11);
  machine.AddSizedFile(u"C:\\data\\1\\Cache & more\\c.log", 12);
  machine.AddSizedFile(u"C:\\data\\2\\Cache & more\\deep\\d", 13);
  machine.AddFolder(u"C:\\data\\3");
  machine.AddSizedFile(u"C:\\data\\loose.log", 14);
  machine.AddFolder(u"C:\\empty");
  machine.AddSizedFile(LongFolder() + u"\\e", 15);
  machine.AddLink(simulated::LinkKind::kJunction, u"C:\\data\\junction", u"C:\\precious");
  machine.AddSizedFile(u"C:\\precious\\f.log", 16);
}

void FurnishGood(SimulatedWindows& machine) {
  Furnish(machine, "");
}

void FurnishBad(SimulatedWindows& machine) {
  Furnish(machine, "<ChildrenList/>");
}

class JunkScan : public Deed {
 public:
  explicit JunkScan(SimulatedWindows& machine, qs_status usual = QS_OK)
      : machine_(machine), request_(JunkRequest()), usual_(usual) {}

  qs_status Do() override { return qs_product_scan_start(scan_, request_.Get()); }

  // Without the ids, which count what was found before; they are checked on
  // their own.
  std::vector<std::string> Findings() override {
    std::vector<std::string> findings;
    std::uint64_t item = 0;
    std::set<std::uint64_t> groups = {0};
    for (Row& row : scan_tests::ReadReport(scan_)) {
      EXPECT_EQ(groups.count(row.parent_group_id), 1u) << "the group around it has a header";
      if (row.numbers.kind == QS_ROW_GROUP) {
        EXPECT_EQ(row.numbers.item_id, QS_NO_ITEM_ID);
        EXPECT_TRUE(groups.insert(row.numbers.group_id).second) << "a group has one header";
      } else {
        EXPECT_EQ(row.numbers.item_id, item++);
        EXPECT_NE(row.numbers.group_id, 0u);
        EXPECT_EQ(groups.count(row.numbers.group_id), 1u) << "a header stands before its files";
      }
      row.numbers.item_id = 0;
      row.numbers.group_id = 0;
      row.parent_group_id = 0;
      findings.push_back(::testing::PrintToString(row));
    }
    return findings;
  }

  void CheckAfter(qs_status status) override {
    const qs_product_scan_status polled = scan_tests::Poll(scan_);
    if (status == QS_FAILED && polled.status != QS_FAILED) {
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

  // The document, the one file that is opened, may not be readable, or not be there.
  bool Allows(qs_status status, bool) override {
    return status == usual_ || status == QS_FAILED ||
           (status == QS_NOT_FOUND && machine_.first_fault() == simulated::Call::kOpenFile);
  }

 protected:
  SimulatedWindows& machine_;
  scan_tests::ScanHandle scan_;

 private:
  Request request_;
  const qs_status usual_;
  std::string before_ = scan_tests::EverythingOf(scan_);
};

// The same scan with a cancel when it opens its fourth folder.
class CancelledScan : public JunkScan {
 public:
  explicit CancelledScan(SimulatedWindows& machine) : JunkScan(machine) {
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
    return JunkScan::Do();
  }

  // A folder that cannot be listed lets the scan come further before it is
  // cancelled.
  std::vector<std::string> Possible() override { return possible_; }

  // Whatever fails behind the cancel: it stays a cancelled scan.
  bool Allows(qs_status status, bool out_of_memory) override {
    return folders_ >= 4 ? status == QS_CANCELLED : JunkScan::Allows(status, out_of_memory);
  }

 private:
  std::vector<std::string> possible_;
  int folders_ = 0;
};

class ExpandPath : public Deed {
 public:
  qs_status Do() override {
    out_[0] = Char{'?'};
    out_[1] = 0;
    needed_ = 77;
    return qs_expand_junk_path(u"{UserHome}\\{Root}\\AppData\\Local\\Temp", u"C:\\Users\\{Root}\\u",
                               u"D:\\some\\folder\\as\\root", out_, 1024, &needed_);
  }
  std::vector<std::string> Findings() override {
    const std::string text = Utf8(out_);
    return text == "?" ? std::vector<std::string>{} : std::vector<std::string>{text};
  }
  void CheckAfter(qs_status status) override {
    EXPECT_EQ(status == QS_OK, out_[0] != Char{'?'});
    EXPECT_EQ(status == QS_OK, needed_ != 77) << "a failure stores nothing";
  }

 private:
  Char out_[1024] = {};
  std::uint64_t needed_ = 0;
};

// Yes or no: a no is always allowed.
class EmptyFolder : public Deed {
 public:
  qs_status Do() override {
    answer_ = qs_empty_directory_eligible(path_.c_str());
    return QS_OK;
  }
  std::vector<std::string> Findings() override {
    EXPECT_TRUE(answer_ == 0 || answer_ == 1);
    return answer_ == 1 ? std::vector<std::string>{"yes"} : std::vector<std::string>{};
  }

 private:
  const Text path_ = LongFolder();
  std::int32_t answer_ = 0;
};

void FurnishEmpty(SimulatedWindows& machine) {
  machine.AddFolder(LongFolder() + u"\\1\\a folder with a long name");
  machine.AddFolder(LongFolder() + u"\\2\\another folder with a long name");
}

template <typename SomeDeed>
std::unique_ptr<Deed> Make(SimulatedWindows&) {
  return std::make_unique<SomeDeed>();
}

template <qs_status kUsual>
std::unique_ptr<Deed> MakeScan(SimulatedWindows& machine) {
  return std::make_unique<JunkScan>(machine, kUsual);
}

std::unique_ptr<Deed> MakeCancelledScan(SimulatedWindows& machine) {
  return std::make_unique<CancelledScan>(machine);
}

}  // namespace

const std::vector<Scenario>& AllScenarios() {
  static const std::vector<Scenario> kScenarios = {
      {"JunkScan", FurnishGood, MakeScan<QS_OK>, 90, 150},
      {"JunkScanWithABadRule", FurnishBad, MakeScan<QS_INVALID_ARGUMENT>, 90, 150},
      {"CancelledJunkScan", FurnishGood, MakeCancelledScan, 20, 60},
      {"ExpandJunkPath", FurnishGood, Make<ExpandPath>, 0, 2},
      {"EmptyDirectory", FurnishEmpty, Make<EmptyFolder>, 10, 5, false},
  };
  return kScenarios;
}

}  // namespace quastel::faults
