#include "help_examples.h"

#include <array>
#include <utility>

namespace quastel::client {
namespace {

constexpr const char* kExitCodes =
    "\nExit codes: 0 done, 1 error, 2 usage, 3 done but some rows failed, 5 cancelled.";

// Command -> what stands below "Examples:". The first of each is the plainest.
constexpr std::array<std::pair<std::string_view, const char*>, 11> kExamples = {{
    {"quastel",
     "  quastel large D:\\ --top 20\n"
     "  quastel large C:\\Users --json > large.json\n"
     "  quastel large C:\\Users --html large.html\n"
     "  quastel duplicates D:\\photos E:\\photos --min-size 1M\n"
     "  quastel junk --category \"Temporary files\" --top 20\n"
     "  quastel junk --html junk.html\n"
     "  quastel empty C:\\Users\n"
     "  quastel duplicates D:\\photos --clean --recycle --keep oldest --dry-run\n"
     "  quastel clean --from large.json --permanent\n"},
    {"large",
     "  quastel large D:\\ --top 20\n"
     "  quastel large C:\\Users --sort modified --html large.html\n"
     "  quastel large C:\\Users --json > large.json\n"
     "  quastel large D:\\old --clean --recycle --dry-run\n"},
    {"duplicates",
     "  quastel duplicates D:\\photos E:\\photos --min-size 1M\n"
     "  quastel duplicates D:\\ --sort count --html duplicates.html\n"
     "  quastel duplicates D:\\photos --clean --recycle --keep oldest --dry-run\n"
     "  quastel duplicates D:\\ --clean --recycle --keep-under D:\\photos\n"},
    {"junk",
     "  quastel junk\n"
     "  quastel junk --category \"Temporary files\" --top 20\n"
     "  quastel junk --rules own.xml --html junk.html\n"
     "  quastel junk --category Logs --clean --permanent --dry-run\n"},
    {"empty",
     "  quastel empty C:\\Users\n"
     "  quastel empty D:\\ E:\\ --top 50 --html empty.html\n"
     "  quastel empty D:\\ --json > empty.json\n"},
    {"list",
     "  quastel list D:\\photos\n"
     "  quastel list D:\\ --large --html list.html\n"
     "  quastel list D:\\old --clean 0,3 --permanent\n"},
    {"clean",
     "  quastel clean --from large.json --recycle --dry-run\n"
     "  quastel clean --from large.json --permanent\n"
     "  quastel clean --from duplicates.json --recycle --keep newest\n"
     "  quastel clean --from junk.json --permanent --yes --json > cleaned.json\n"},
    {"hash",
     "  quastel hash film.mkv\n"
     "  quastel hash D:\\a.iso D:\\b.iso --standard\n"
     "  quastel hash D:\\a.iso --json > hashes.json\n"},
    {"rules",
     "  quastel rules check own.xml\n"
     "  quastel rules check own.xml --json > check.json\n"},
    {"check",
     "  quastel rules check own.xml\n"
     "  quastel rules check own.xml --user-home D:\\Users\\demo --system-root D:\\\n"
     "  quastel rules check own.xml --json > check.json\n"},
    {"version",
     "  quastel version\n"
     "  quastel version --json\n"},
}};

}  // namespace

std::string HelpFooter(std::string_view command) {
  for (const auto& [name, examples] : kExamples) {
    if (command == name) {
      return std::string("Examples:\n").append(examples).append(kExitCodes);
    }
  }
  return {};
}

}  // namespace quastel::client
