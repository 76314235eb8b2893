// What the sweeps of tests/faults run in this room: the exports that need no handle.

#include "faults/fault_scenario.h"
#include "frame/thread_buffer.h"
#include "support/text.h"

namespace quastel::faults {

namespace {

constexpr std::uint64_t kFileSize = 2 * 1'048'576 + 3;

// Long, so that its extended form needs memory.
const Text& LongFile() {
  static const Text* const file = new Text(support::NestedTo(300, u"C:\\long"));
  return *file;
}

void FurnishFile(SimulatedWindows& machine) {
  machine.AddSizedFile(LongFile(), kFileSize, 6);
}

void FurnishNothing(SimulatedWindows&) {}

// A text of ASCII in a buffer that nothing may touch unless the call succeeds.
class AsciiText : public Deed {
 public:
  std::vector<std::string> Findings() override {
    const std::string text = out_;
    return text == "?" ? std::vector<std::string>{} : std::vector<std::string>{text};
  }
  void CheckAfter(qs_status status) override { EXPECT_EQ(status == QS_OK, out_[0] != '?'); }

 protected:
  void Reset() {
    out_[0] = '?';
    out_[1] = 0;
  }

  char out_[1024] = {};
};

// A file that cannot be read fails the call.
class FileText : public AsciiText {
 public:
  bool Allows(qs_status status, bool) override { return status == QS_OK || status == QS_FAILED; }
};

class HashFile : public FileText {
 public:
  explicit HashFile(bool cancelable) : cancelable_(cancelable) {}

  qs_status Do() override {
    Reset();
    return cancelable_ ? qs_xxhash32_file_cancelable(LongFile().c_str(), out_, 1024, &cancel_)
                       : qs_xxhash32_file(LongFile().c_str(), out_, 1024);
  }
  void CheckAfter(qs_status status) override {
    AsciiText::CheckAfter(status);
    EXPECT_EQ(cancel_, 0u);
  }

 private:
  const bool cancelable_;
  std::uint32_t cancel_ = 0;
};

// As the first call of a thread, which has no read buffer yet.
class FirstHash : public HashFile {
 public:
  FirstHash() : HashFile(false) {}

  qs_status Do() override {
    ReleaseThreadBuffers();
    return HashFile::Do();
  }
};

class SampleFile : public FileText {
 public:
  qs_status Do() override {
    Reset();
    return qs_duplicate_sample_hex(LongFile().c_str(), static_cast<std::int64_t>(kFileSize), out_,
                                   1024);
  }
};

// The two keys: one is made of the other.
class GroupKey : public AsciiText {
 public:
  explicit GroupKey(bool with_hash) : with_hash_(with_hash) {}

  qs_status Do() override {
    Reset();
    needed_ = 77;
    return with_hash_ ? qs_duplicate_hash_group_key(kPart, "0123abcd", out_, 1024, &needed_)
                      : qs_duplicate_sample_group_key(123'456'789, kPart, out_, 1024, &needed_);
  }
  void CheckAfter(qs_status status) override {
    AsciiText::CheckAfter(status);
    EXPECT_EQ(status == QS_OK, needed_ != 77) << "a failure stores nothing";
  }

 private:
  static constexpr const char* kPart =
      "4096 a sample that is too long for a text to hold in itself";

  const bool with_hash_;
  std::uint64_t needed_ = 0;
};

// Yes or no: a no is always allowed.
class ScanInclude : public Deed {
 public:
  qs_status Do() override {
    answer_ =
        qs_duplicate_scan_include(u"C:\\Users\\u\\Documents\\h.pdf", 1, u"C:\\", u"C:\\Users\\u");
    return QS_OK;
  }
  std::vector<std::string> Findings() override {
    EXPECT_TRUE(answer_ == 0 || answer_ == 1);
    return answer_ == 1 ? std::vector<std::string>{"yes"} : std::vector<std::string>{};
  }

 private:
  std::int32_t answer_ = 0;
};

template <typename SomeDeed, auto... kArguments>
std::unique_ptr<Deed> Make(SimulatedWindows&) {
  return std::make_unique<SomeDeed>(kArguments...);
}

}  // namespace

const std::vector<Scenario>& AllScenarios() {
  static const std::vector<Scenario> kScenarios = {
      {"HashFile", FurnishFile, Make<HashFile, false>, 6, 1},
      {"HashFileCancelable", FurnishFile, Make<HashFile, true>, 6, 1},
      {"FirstHashOfAThread", FurnishFile, Make<FirstHash>, 8, 2},
      {"SampleFile", FurnishFile, Make<SampleFile>, 8, 2},
      {"SampleGroupKey", FurnishNothing, Make<GroupKey, false>, 0, 1},
      {"HashGroupKey", FurnishNothing, Make<GroupKey, true>, 0, 1},
      {"DuplicateScanInclude", FurnishNothing, Make<ScanInclude>, 4, 1, false},
  };
  return kScenarios;
}

}  // namespace quastel::faults
