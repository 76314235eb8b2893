// The full path of a file is that of its folder with the name behind it, unless the name is one
// that the system changes: what resolves a folder once for all of its files relies on it.

#include <gtest/gtest.h>

#include "contract/full_path.h"
#include "contract/machine.h"

namespace quastel::contract {
namespace {

TEST(FullPathContract, Of_a_file_is_that_of_its_folder_and_the_name) {
  const Machine machine;
  const Text folders[] = {
      QS_TEXT("C:\\"),
      QS_TEXT("C:\\Data\\"),
      QS_TEXT("C:/Data/"),
      QS_TEXT("C:\\Data\\\\"),
      QS_TEXT("C:\\a\\..\\b\\"),
      QS_TEXT("C:\\dots.\\"),
      QS_TEXT("C:\\a b \\"),
      QS_TEXT("some folder\\"),
      QS_TEXT(".\\"),
      QS_TEXT("..\\"),
      QS_TEXT("\\"),
      QS_TEXT("\\\\server\\share\\f\\"),
      QS_TEXT("\\\\server\\share\\"),
      QS_TEXT("\\\\?\\C:\\Data\\"),
      QS_TEXT("\\\\?\\C:\\D.\\"),
  };
  const Text names[] = {QS_TEXT("a"),
                        QS_TEXT("A.TXT"),
                        QS_TEXT(".hidden"),
                        QS_TEXT("a b"),
                        QS_TEXT(" a"),
                        QS_TEXT("a.b.c"),
                        QS_TEXT("..a"),
                        QS_TEXT("x~1"),
                        QS_TEXT("[]{}@`'!"),
                        Text(200, Char{'n'}),
                        Text(1, static_cast<Char>(0x416)),
                        Text(1, static_cast<Char>(0xD801))};
  for (const Text& folder : folders) {
    for (const Text& name : names) {
      EXPECT_EQ(FullPath(folder + name), FullPath(folder) + name);
    }
  }
}

}  // namespace
}  // namespace quastel::contract
