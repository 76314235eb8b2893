#include "scan/large_file_class.h"

#include <algorithm>
#include <array>
#include <span>

#include "base/ascii.h"

namespace quastel {
namespace {

constexpr std::int64_t kLargeFileLimit = 10'485'760;

// The entries that stand twice, and ".wnv", are part of the lists as programs know them.
constexpr std::array<TextView, 27> kArchives = {
    QS_TEXT(".zip"),  QS_TEXT(".z"),   QS_TEXT(".7z"),    QS_TEXT(".gz"),   QS_TEXT(".gzip"),
    QS_TEXT(".rar"),  QS_TEXT(".arj"), QS_TEXT(".lzh"),   QS_TEXT(".jar"),  QS_TEXT(".iso"),
    QS_TEXT(".cab"),  QS_TEXT(".xz"),  QS_TEXT(".txz"),   QS_TEXT(".lzma"), QS_TEXT(".tar"),
    QS_TEXT(".cpio"), QS_TEXT(".bz2"), QS_TEXT(".bzip2"), QS_TEXT(".tbz2"), QS_TEXT(".tbz"),
    QS_TEXT(".tgz"),  QS_TEXT(".tpz"), QS_TEXT(".taz"),   QS_TEXT(".cab"),  QS_TEXT(".lzh"),
    QS_TEXT(".ace"),  QS_TEXT(".uue")};
constexpr std::array<TextView, 25> kDocuments = {
    QS_TEXT(".doc"), QS_TEXT(".dot"), QS_TEXT(".docx"), QS_TEXT(".wps"),  QS_TEXT(".wpt"),
    QS_TEXT(".xls"), QS_TEXT(".xlt"), QS_TEXT(".xlsx"), QS_TEXT(".xlsm"), QS_TEXT(".et"),
    QS_TEXT(".ett"), QS_TEXT(".ppt"), QS_TEXT(".pot"),  QS_TEXT(".pps"),  QS_TEXT(".pptx"),
    QS_TEXT(".dps"), QS_TEXT(".dpt"), QS_TEXT(".pdf"),  QS_TEXT(".epub"), QS_TEXT(".mobi"),
    QS_TEXT(".ofd"), QS_TEXT(".opg"), QS_TEXT(".txt"),  QS_TEXT(".xml"),  QS_TEXT(".csv")};
constexpr std::array<TextView, 11> kImages = {QS_TEXT(".jpg"), QS_TEXT(".jpeg"), QS_TEXT(".png"),
                                              QS_TEXT(".gif"), QS_TEXT(".bmp"),  QS_TEXT(".tiff"),
                                              QS_TEXT(".psd"), QS_TEXT(".raw"),  QS_TEXT(".eps"),
                                              QS_TEXT(".svg"), QS_TEXT(".bmp")};
constexpr std::array<TextView, 35> kMedia = {
    QS_TEXT(".mp4"),  QS_TEXT(".m4v"),  QS_TEXT(".avi"), QS_TEXT(".mov"),  QS_TEXT(".qt"),
    QS_TEXT(".ts"),   QS_TEXT(".mkv"),  QS_TEXT(".asf"), QS_TEXT(".wnv"),  QS_TEXT(".wmv"),
    QS_TEXT(".rm"),   QS_TEXT(".rmvb"), QS_TEXT(".qsv"), QS_TEXT(".kux"),  QS_TEXT(".flv"),
    QS_TEXT(".navi"), QS_TEXT(".mpeg"), QS_TEXT(".swf"), QS_TEXT(".mpg"),  QS_TEXT(".mpe"),
    QS_TEXT(".vob"),  QS_TEXT(".3gp"),  QS_TEXT(".amr"), QS_TEXT(".mp3"),  QS_TEXT(".mp2"),
    QS_TEXT(".mp1"),  QS_TEXT(".wav"),  QS_TEXT(".aif"), QS_TEXT(".aiff"), QS_TEXT(".au"),
    QS_TEXT(".ra"),   QS_TEXT(".rm"),   QS_TEXT(".ram"), QS_TEXT(".mid"),  QS_TEXT(".rmi")};

TextView ExtensionOf(TextView path) {
  const TextView leaf = LeafOf(path);
  const std::size_t dot = leaf.rfind(Char{'.'});
  return dot == TextView::npos ? TextView() : leaf.substr(dot);
}

bool Holds(std::span<const TextView> extensions, TextView extension) {
  return std::any_of(extensions.begin(), extensions.end(), [extension](TextView candidate) {
    return EqualsFolded(candidate, extension);
  });
}

}  // namespace

bool IsLargeFile(std::int64_t size) {
  return size > kLargeFileLimit;
}

LargeFileCategory ClassifyLargeFile(TextView path) {
  const TextView extension = ExtensionOf(path);
  if (Holds(kArchives, extension)) {
    return LargeFileCategory::kArchives;
  }
  if (Holds(kDocuments, extension)) {
    return LargeFileCategory::kDocuments;
  }
  if (Holds(kImages, extension)) {
    return LargeFileCategory::kImages;
  }
  return Holds(kMedia, extension) ? LargeFileCategory::kMedia : LargeFileCategory::kOther;
}

TextView GroupWordOf(LargeFileCategory category) {
  static constexpr std::array<TextView, 5> kWords = {QS_TEXT("Archives"), QS_TEXT("Documents"),
                                                     QS_TEXT("Images"), QS_TEXT("Media files"),
                                                     QS_TEXT("Other")};
  return kWords[static_cast<std::size_t>(category)];
}

// The lower boundary is 500 MiB, not the 512 MiB of the size matcher: summaries and filters divide
// differently, and both are part of the interface.
const char* SummaryBucketOf(std::int64_t size) {
  constexpr std::int64_t kMediumAbove = 524'288'000;
  constexpr std::int64_t kHugeAbove = 1'073'741'824;
  if (size == kMediumAbove || size == kHugeAbove) {
    return "None";
  }
  if (size > kHugeAbove) {
    return "Huge";
  }
  return size > kMediumAbove ? "Medium" : "Small";
}

}  // namespace quastel
