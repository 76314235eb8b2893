// The caller-buffer protocol, over every export of the path and filter family that returns text.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/text.h"

namespace quastel {
namespace {

constexpr std::uint64_t kUnset = 0xABABABABABABABAB;
constexpr Char kUntouched = 0x5A5A;

using TextExport = qs_status (*)(qs_char* out, std::uint64_t capacity, std::uint64_t* needed);

const qs_char* const kNoPaths[] = {nullptr};
const qs_char* const kPaths[] = {u"C:\\a\\b", u"C:\\a", u"c:\\A\\", u"C:\\ab"};

struct Case : support::NamedCase {
  TextExport call;
  const char* text;  // "|" stands for a NUL inside
};

const Case kCases[] = {
    {{"Normalize_path"},
     [](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
       return qs_normalize_path(u"C:\\a", out, capacity, needed);
     },
     "C:\\a"},
    {{"Normalize_path_to_an_empty_text"},
     [](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
       return qs_normalize_path(u"", out, capacity, needed);
     },
     ""},
    {{"Path_combine"},
     [](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
       return qs_path_combine(u"C:\\a/", u"b", out, capacity, needed);
     },
     "C:\\a\\b"},
    {{"Path_combine_with_an_absolute_part"},
     [](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
       return qs_path_combine(u"C:\\a", u"D:b", out, capacity, needed);
     },
     "D:b"},
    {{"Path_combine_to_an_empty_text"},
     [](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
       return qs_path_combine(u"", u"", out, capacity, needed);
     },
     ""},
    {{"Filter_dir"},
     [](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
       return qs_filter_dir(kPaths, 4, out, capacity, nullptr, needed);
     },
     "C:\\a|C:\\ab|"},
    {{"Filter_dir_of_nothing"},
     [](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
       return qs_filter_dir(kNoPaths, 0, out, capacity, nullptr, needed);
     },
     ""},
};

class TextExportTest : public ::testing::TestWithParam<Case> {
 protected:
  TextExportTest() : text_(support::Wide(GetParam().text)) {
    for (Char& c : text_) {
      c = c == Char{'|'} ? Char{} : c;
    }
  }

  std::uint64_t exact() const { return text_.size() + 1; }

  // Calls with this buffer and checks status, needed length and every unit of the buffer.
  void Check(bool has_buffer, std::uint64_t capacity, qs_status expected) {
    for (const bool wants_needed : {true, false}) {
      SCOPED_TRACE(std::string(has_buffer ? "a buffer" : "no buffer") + ", capacity " +
                   std::to_string(capacity) + (wants_needed ? "" : ", needed null"));
      std::vector<Char> buffer(text_.size() + 20, kUntouched);
      std::vector<Char> wanted = buffer;
      if (expected == QS_OK) {
        std::copy(text_.begin(), text_.end(), wanted.begin());
        wanted[text_.size()] = Char{};
      }
      std::uint64_t needed = kUnset;
      EXPECT_EQ(GetParam().call(has_buffer ? buffer.data() : nullptr, capacity,
                                wants_needed ? &needed : nullptr),
                expected);
      EXPECT_EQ(needed, wants_needed ? exact() : kUnset);
      EXPECT_EQ(buffer, wanted);
    }
  }

 private:
  simulated::SimulatedWindows windows_;
  Text text_;
};

TEST_P(TextExportTest, No_buffer_is_too_small_and_the_needed_capacity_is_reported) {
  Check(false, 0, QS_BUFFER_TOO_SMALL);
}

TEST_P(TextExportTest, No_buffer_is_too_small_whatever_its_capacity) {
  Check(false, exact(), QS_BUFFER_TOO_SMALL);
  Check(false, UINT64_MAX, QS_BUFFER_TOO_SMALL);
}

TEST_P(TextExportTest, A_buffer_without_capacity_is_too_small) {
  Check(true, 0, QS_BUFFER_TOO_SMALL);
}

TEST_P(TextExportTest, One_unit_short_is_too_small_and_the_buffer_stays_untouched) {
  Check(true, exact() - 1, QS_BUFFER_TOO_SMALL);
}

TEST_P(TextExportTest, The_exact_capacity_succeeds) {
  Check(true, exact(), QS_OK);
}

TEST_P(TextExportTest, A_large_capacity_is_written_no_further_than_the_terminator) {
  Check(true, exact() + 1, QS_OK);
  Check(true, UINT64_MAX, QS_OK);
}

INSTANTIATE_TEST_SUITE_P(TextExports, TextExportTest, ::testing::ValuesIn(kCases),
                         support::CaseName());

}  // namespace
}  // namespace quastel
