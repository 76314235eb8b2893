// What the tables of files have in common.

#ifndef QUASTEL_TESTS_RULES_PLACE_TABLES_H_
#define QUASTEL_TESTS_RULES_PLACE_TABLES_H_

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quastel::rules_tests {

using Names = std::vector<std::string_view>;

// The tables begin their paths with one of these; all others are given in full.
inline std::string Expanded(std::string_view path) {
  static constexpr std::pair<std::string_view, std::string_view> kFolders[] = {
      {"Home\\", R"(C:\Users\demo\)"},
      {"Local\\", R"(C:\Users\demo\AppData\Local\)"},
      {"LocalLow\\", R"(C:\Users\demo\AppData\LocalLow\)"},
      {"Roaming\\", R"(C:\Users\demo\AppData\Roaming\)"},
  };
  for (const auto& [name, folder] : kFolders) {
    if (path.starts_with(name)) {
      return std::string(folder).append(path.substr(name.size()));
    }
  }
  return std::string(path);
}

inline const Names kChromiumFamily = {
    R"(Local\Google\Chrome\User Data\)", R"(Local\Microsoft\Edge\User Data\)",
    R"(Local\Vivaldi\User Data\)",       R"(Local\BraveSoftware\Brave-Browser\User Data\)",
    R"(Local\Chromium\User Data\)",
};
inline const Names kProfiles = {"Default\\", "Profile 1\\"};
inline const Names kFirefoxProfiles = {R"(Mozilla\Firefox\Profiles\k2x9v1ab.default\)",
                                       R"(Mozilla\Firefox\Profiles\7tq0zzpf.default-release\)"};
inline const Names kPackages = {R"(Local\Packages\Contoso.Notes_8wekyb3d8bbwe\)",
                                R"(Local\Packages\Fabrikam.Browser_h91ms92gdsmmt\)"};

// Each first with each second with each third.
inline void AppendEach(std::vector<std::string>& paths, const Names& firsts, const Names& seconds,
                       const Names& thirds, std::string_view root = {}) {
  for (const std::string_view first : firsts) {
    for (const std::string_view second : seconds) {
      for (const std::string_view third : thirds) {
        paths.push_back(Expanded(std::string(root).append(first).append(second).append(third)));
      }
    }
  }
}

}  // namespace quastel::rules_tests

#endif  // QUASTEL_TESTS_RULES_PLACE_TABLES_H_
