// A machine must carry a million files. This file counts what they take, in bytes of the heap.

#include <gtest/gtest.h>
#include <malloc.h>

#include "platform/search.h"
#include "simulated_windows/simulated_windows.h"

// There when a sanitizer has put its own heap in the place of the usual one.
extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();

namespace quastel::simulated {
namespace {

std::int64_t HeapBytes() {
  return static_cast<std::int64_t>(__sanitizer_get_current_allocated_bytes != nullptr
                                       ? __sanitizer_get_current_allocated_bytes()
                                       : mallinfo2().uordblks);
}

constexpr std::uint32_t kFolders = 1'000;
constexpr std::uint32_t kFilesEach = 1'000;
constexpr std::size_t kNameLength = 12;

Text Numbered(Char letter, std::uint32_t number) {
  Text name(kNameLength, Char{'0'});
  name[0] = letter;
  for (std::size_t i = name.size() - 1; number != 0; --i, number /= 10) {
    name[i] = static_cast<Char>('0' + number % 10);
  }
  return name;
}

std::uint64_t CountIn(const Text& folder) {
  std::uint64_t count = 0;
  platform::FindData entry{};
  const auto search = platform::FindFirst((folder + QS_TEXT("\\F*")).c_str(), entry);
  if (search.ok()) {
    do {
      ++count;
    } while (platform::FindNext(search.value(), entry) == platform::Error::kNone);
  }
  return count;
}

TEST(MillionFiles, A_file_takes_at_most_200_bytes_and_its_name) {
  SimulatedWindows windows;
  const std::int64_t before = HeapBytes();
  for (std::uint32_t d = 0; d < kFolders; ++d) {
    const Text folder = QS_TEXT("C:\\") + Numbered(Char{'D'}, d) + QS_TEXT("\\");
    for (std::uint32_t f = 0; f < kFilesEach; ++f) {
      windows.AddSizedFile(folder + Numbered(Char{'F'}, f), f);
    }
  }
  const std::int64_t taken = HeapBytes() - before;
  EXPECT_EQ(windows.node_count(), kFolders * (kFilesEach + 1));
  const std::int64_t for_each = taken / (kFolders * kFilesEach);
  EXPECT_GT(for_each, 50);  // the count sees the files at all
  EXPECT_LE(for_each, 200 + static_cast<std::int64_t>((kNameLength + 1) * sizeof(Char)));

  std::uint64_t listed = 0;
  for (std::uint32_t d = 0; d < kFolders; ++d) {
    listed += CountIn(QS_TEXT("C:\\") + Numbered(Char{'D'}, d));
  }
  EXPECT_EQ(listed, kFolders * kFilesEach);
}

TEST(MillionFiles, One_folder_takes_a_hundred_thousand_in_any_order) {
  SimulatedWindows windows;
  constexpr std::uint32_t kCount = 100'000;
  for (std::uint32_t f = 0; f < kCount; ++f) {
    // A step that has no divisor in common with the count visits every number once.
    windows.AddSizedFile(QS_TEXT("C:\\d\\") + Numbered(Char{'F'}, f * 7'919u % kCount), f);
  }
  EXPECT_EQ(CountIn(QS_TEXT("C:\\d")), kCount);
  EXPECT_EQ(windows.NamesIn(QS_TEXT("C:\\d"))[99], Numbered(Char{'F'}, 99));
}

}  // namespace
}  // namespace quastel::simulated
