// What the shipped documents have to find.

#include "rules/place_tables.h"
#include "rules/well_known_places.h"

namespace quastel::rules_tests {
namespace {

struct CategoryPlaces {
  const char* document;
  const char* category;
  Names paths;
};

const CategoryPlaces kCleaned[] = {
    {kStandard,
     "TemporaryFiles",
     {R"(Local\Temp\setup.tmp)", R"(Local\Temp\is-4F2K1.tmp\deep\er\_setup64.tmp)",
      R"(C:\Windows\Temp\MpSigStub.log)", R"(C:\Windows\Temp\vmware\install.tmp)"}},
    {kStandard,
     "ThumbnailsAndIcons",
     {R"(Local\Microsoft\Windows\Explorer\thumbcache_96.db)",
      R"(Local\Microsoft\Windows\Explorer\thumbcache_idx.db)",
      R"(Local\Microsoft\Windows\Explorer\iconcache_32.db)"}},
    {kStandard,
     "CrashDumpsAndErrorReports",
     {R"(Local\CrashDumps\editor.exe.4711.dmp)",
      R"(Local\Microsoft\Windows\WER\ReportArchive\AppCrash_editor\Report.wer)",
      R"(Local\Microsoft\Windows\WER\ReportQueue\AppHang_editor\Report.wer)",
      R"(C:\ProgramData\Microsoft\Windows\WER\ReportArchive\Kernel_0\Report.wer)",
      R"(C:\ProgramData\Microsoft\Windows\WER\ReportQueue\NonCritical_x\Report.wer)",
      R"(C:\ProgramData\Microsoft\Windows\WER\Temp\WER1A2B.tmp.xml)"}},
    {kStandard,
     "ShaderCaches",
     {R"(Local\D3DSCache\a1b2c3\F4EB2D6C.val)", R"(Local\NVIDIA\DXCache\0a1b.nvph)",
      R"(Local\NVIDIA\GLCache\8c7d\0a1b.bin)", R"(Local\NVIDIA Corporation\NV_Cache\3e4f.toc)",
      R"(LocalLow\NVIDIA\DXCache\5a6b.bin)", R"(Local\AMD\DxCache\0.parc)",
      R"(Local\AMD\DxcCache\1.parc)", R"(Local\AMD\VkCache\2.parc)", R"(Local\AMD\GLCache\3.parc)",
      R"(LocalLow\Intel\ShaderCache\4.bin)"}},
    {kStandard,
     "InternetCache",
     {R"(Local\Microsoft\Windows\INetCache\IE\ABCD1234\logo[1].png)",
      R"(Local\Microsoft\Windows\INetCache\Low\IE\XYZ98765\page[1].htm)"}},
    {kStandard,
     "DesktopApplicationCaches",
     {R"(Roaming\discord\Cache\Cache_Data\f_000001)", R"(Roaming\discord\Code Cache\js\0a1b_0)",
      R"(Roaming\discord\GPUCache\data_0)", R"(Roaming\Slack\Cache\Cache_Data\f_000001)",
      R"(Roaming\Slack\Code Cache\js\0a1b_0)", R"(Roaming\Slack\GPUCache\data_0)",
      R"(Roaming\Code\Cache\Cache_Data\f_000001)", R"(Roaming\Code\Code Cache\js\0a1b_0)",
      R"(Roaming\Code\GPUCache\data_0)", R"(Roaming\Code\CachedData\c0ffee\main.code)",
      R"(Roaming\Code\logs\20260101T090000\main.log)"}},
    {kStandard, "OfficeTelemetry", {R"(Local\Microsoft\Office\OTele\winword.exe.db)"}},
    {kStandard,
     "Logs",
     {R"(Local\Microsoft\OneDrive\logs\Personal\SyncEngine-2026-01-01.odl)",
      R"(C:\Windows\Logs\CBS\CbsPersist_20260101090000.cab)"}},
    {kStandard,
     "Downloads",
     {R"(Home\Downloads\setup.exe)", R"(Home\Downloads\photos\summer\1.jpg)",
      R"(Home\Downloads\photos\2.jpg)"}},
    {kExtended,
     "UpdateDownloads",
     {R"(C:\Windows\SoftwareDistribution\Download\c0ffee\update.cab)"}},
    {kExtended,
     "DeliveryOptimizationCache",
     {R"(C:\Windows\ServiceProfiles\NetworkService\AppData\Local\Microsoft\Windows\DeliveryOptimization\Cache\a1b2\content.bin)"}},
    {kExtended,
     "KernelDumps",
     {R"(C:\Windows\Minidump\010126-9000-01.dmp)",
      R"(C:\Windows\LiveKernelReports\WATCHDOG\WATCHDOG-20260101-0900.dmp)"}},
    {kExtended,
     "SetupLogs",
     {R"(C:\Windows\Panther\setupact.log)", R"(C:\Windows\Panther\UnattendGC\diagerr.xml)",
      R"(C:\Windows\Logs\CBS\CBS.log)", R"(C:\Windows\Logs\CBS\CbsPersist_20260101090000.cab)",
      R"(C:\Windows\Logs\DISM\dism.log)"}},
    {kExtended, "Prefetch", {R"(C:\Windows\Prefetch\EDITOR.EXE-1A2B3C4D.pf)"}},
    {kExtended,
     "DeveloperPackageCaches",
     {R"(Local\npm-cache\_cacache\content-v2\sha512\0a\1b\2c)", R"(Local\pip\Cache\http\0\a\1b2c)",
      R"(Local\NuGet\v3-cache\a1b2$ps\list.dat)",
      R"(Home\.gradle\caches\modules-2\files-2.1\some.jar)",
      R"(Home\.cargo\registry\cache\index-1a2b\serde-1.0.0.crate)"}},
    {kExtended,
     "PreviousWindows",
     {R"(C:\Windows.old\Windows\explorer.exe)", R"(C:\Windows.old\Users\demo\ntuser.dat)"}},
};

// Below each profile of a Chromium browser.
const Names kChromiumCaches = {
    R"(Cache\Cache_Data\f_000001)", R"(Code Cache\js\0a1b_0)",     R"(GPUCache\data_0)",
    R"(DawnCache\data_0)",          R"(DawnGraphiteCache\data_0)", R"(DawnWebGPUCache\data_0)",
};
// Below the folder that holds the profiles.
const Names kSharedChromiumCaches = {R"(ShaderCache\data_1)", R"(GrShaderCache\data_1)"};
const Names kFirefoxCaches = {R"(cache2\entries\0A1B2C)", R"(startupCache\startupCache.8.little)",
                              R"(thumbnails\0a1b2c.png)"};
const Names kPackageCaches = {R"(TempState\draft.tmp)", R"(AC\Temp\0a1b.tmp)",
                              R"(AC\INetCache\ABCD1234\logo[1].png)"};

std::vector<CleanedFile> MakeCleanedFiles() {
  std::vector<CleanedFile> files;
  for (const CategoryPlaces& places : kCleaned) {
    for (const std::string_view path : places.paths) {
      files.push_back({places.document, places.category, Expanded(path)});
    }
  }
  const auto append = [&files](const char* category, const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
      files.push_back({kStandard, category, path});
    }
  };
  std::vector<std::string> browsers;
  AppendEach(browsers, kChromiumFamily, kProfiles, kChromiumCaches);
  AppendEach(browsers, kChromiumFamily, {""}, kSharedChromiumCaches);
  AppendEach(browsers, kFirefoxProfiles, {""}, kFirefoxCaches, "Local\\");
  append("BrowserCaches", browsers);
  std::vector<std::string> packages;
  AppendEach(packages, kPackages, {""}, kPackageCaches);
  append("StoreApplications", packages);
  return files;
}

}  // namespace

const std::vector<CleanedFile>& CleanedFiles() {
  static const std::vector<CleanedFile> files = MakeCleanedFiles();
  return files;
}

}  // namespace quastel::rules_tests
