// The files of a scan, kept in pieces and given back whole.

#include "duplicate/candidate_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "duplicate/machine.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::CandidateIndex;
using duplicate::CandidateList;
using duplicate::CandidatePath;

struct File {
  Text path;
  Text name;
};

void ExpectSame(const std::vector<File>& files) {
  CandidateList list;
  for (std::size_t i = 0; i < files.size(); ++i) {
    list.Add(files[i].path, files[i].name, 10 + i, 20 + i);
  }
  ASSERT_EQ(list.size(), files.size());
  for (CandidateIndex i = 0; i < files.size(); ++i) {
    SCOPED_TRACE(Utf8(files[i].path));
    Text path = u"left over from before";
    list.GetPath(i, path);
    EXPECT_EQ(path, files[i].path);
    EXPECT_EQ(Text(CandidatePath(list, i).c_str()), files[i].path);
    Text name = u"left over from before";
    list.GetName(i, name);
    EXPECT_EQ(name, files[i].name);
    Text leaf(list.LeafLengthOf(i), u'?');
    list.CopyLeaf(i, leaf.data());
    EXPECT_EQ(Text(list.FolderOf(i)) + leaf, files[i].path);
    EXPECT_EQ(list[i].size, 10 + i);
    EXPECT_EQ(list[i].last_write, 20 + i);
  }
}

TEST(CandidateList, Gives_back_what_was_added_in_its_order) {
  ExpectSame({{u"C:\\d\\a", u"a"},
              {u"C:\\d\\b.txt", u"b.txt"},
              {u"C:\\d\\e\\a", u"a"},
              {u"C:\\d\\a2", u"a2"},
              {u"C:\\data\\\\x", u"x"},
              {u"x", u"x"},
              {u"\\\\server\\share\\long name .txt", u"long name .txt"}});
}

TEST(CandidateList, Keeps_a_name_that_is_not_the_last_component) {
  ExpectSame({{u"C:\\d\\a", u"a"},
              {u"\\\\?\\C:\\d\\name", u"name."},
              {u"\\\\?\\C:\\d\\b", u"b"},
              {u"\\\\?\\C:\\d\\other", u"other  "}});
}

TEST(CandidateList, Gives_back_names_of_every_alphabet) {
  ExpectSame({{u"C:\\d\\\u00ff", u"\u00ff"},
              {u"C:\\d\\\u0100", u"\u0100"},
              {u"C:\\\u0416\\a\u0416b", u"a\u0416b"},
              {u"C:\\d\\\xd801", u"\xd801"},
              {u"C:\\d\\odd", u"odd\U00010401."}});
}

TEST(CandidateList, Gives_back_paths_of_every_length) {
  std::vector<File> files;
  for (const std::size_t length : {4u, 246u, 247u, 248u, 249u, 260u, 5'000u}) {
    const Text name = support::Repeated(length - 3, u'n');
    files.push_back({u"C:\\" + name, name});
  }
  ExpectSame(files);
}

TEST(CandidateList, Keeps_a_folder_once_for_the_files_that_follow_each_other) {
  CandidateList list;
  for (int i = 0; i < 1000; ++i) {
    list.Add(Text(u"C:\\data\\f") + support::Wide(std::to_string(i)),
             u"f" + support::Wide(std::to_string(i)), 1, 1);
  }
  EXPECT_EQ(list.FolderOf(0).data(), list.FolderOf(999).data());
}

}  // namespace
}  // namespace quastel::duplicate_tests
