#include "rules/well_known_places.h"

#include <string_view>

#include "rules/place_tables.h"
#include "support/text.h"

namespace quastel::rules_tests {
namespace {

// Beside what a pattern selects, and in nobody's list.
const Names kBystanders = {
    R"(Local\Microsoft\Windows\Explorer\ExplorerStartupLog.etl)",
    R"(Local\Microsoft\Windows\Explorer\thumbcache_96.db.bak)",
    R"(Local\Microsoft\Windows\WER\ERC\statecache.lock)",
    R"(Local\Microsoft\OneDrive\settings\Personal\global.ini)",
    R"(Local\Microsoft\Office\16.0\Licensing\license.xml)",
    R"(Local\NVIDIA\NvBackend\config.xml)",
    R"(Local\npm-cache\anonymous-cli-metrics.json)",
    R"(C:\Windows\Prefetch\Layout.ini)",
    R"(C:\Windows\Prefetch\ReadyBoot\Trace1.fx)",
    R"(C:\Windows\MEMORY.DMP)",
    R"(C:\pagefile.sys)",
};

}  // namespace

void FillMachine(simulated::SimulatedWindows& machine) {
  machine.AddDrive('D');
  const auto add = [&machine](std::string_view path) {
    machine.AddSizedFile(support::Wide(path), 100);
  };
  for (const CleanedFile& file : CleanedFiles()) {
    add(file.path);
  }
  for (const std::string& path : ForbiddenFiles()) {
    add(path);
  }
  for (const std::string_view path : kBystanders) {
    add(Expanded(path));
  }
  const auto link = [&machine](simulated::LinkKind kind, std::string_view path,
                               std::string_view target) {
    machine.AddLink(kind, support::Wide(Expanded(path)), support::Wide(Expanded(target)));
  };
  using enum simulated::LinkKind;
  link(kJunction, R"(Local\Temp\documents)", R"(Home\Documents)");
  link(kFolderLink, R"(Local\Temp\is-4F2K1.tmp\keys)", R"(Home\.ssh)");
  link(kFileLink, R"(Local\Temp\thesis.docx)", R"(Home\Documents\thesis.docx)");
  link(kJunction, R"(C:\Windows\Temp\sxs)", R"(C:\Windows\WinSxS)");
  link(kFolderLink, R"(Home\Downloads\pictures)", R"(Home\Pictures)");
  link(kJunction, R"(Local\Google\Chrome\User Data\Profile 2\Cache)", R"(Home\Documents)");
  link(kJunction, R"(Local\Google\Chrome\User Data\Profile 3)", R"(D:\backup)");
  machine.AddSizedFile(u"D:\\backup\\Cache\\f_000001", 100);
  link(kJunction, R"(Local\Packages\Linked_8wekyb3d8bbwe)", R"(D:\Temp)");
  machine.AddSizedFile(u"D:\\Temp\\TempState\\take 2.wav", 100);
}

}  // namespace quastel::rules_tests
