// What no document may find.

#include "rules/place_tables.h"
#include "rules/well_known_places.h"

namespace quastel::rules_tests {
namespace {

const Names kForbidden = {
    // What Windows needs to install, repair and run itself
    R"(C:\Windows\Installer\1a2b3c.msi)",
    R"(C:\Windows\Installer\$PatchCache$\Managed\00004109\16.0\FILE.DLL)",
    R"(C:\Windows\WinSxS\amd64_foo_31bf3856ad364e35_10.0.1_none_0a1b\foo.dll)",
    R"(C:\Windows\WinSxS\Backup\foo.dll)",
    R"(C:\Windows\WinSxS\Temp\PendingDeletes\foo.dll)",
    R"(C:\Windows\System32\kernel32.dll)",
    R"(C:\Windows\System32\config\SYSTEM)",
    R"(C:\Windows\System32\DriverStore\FileRepository\foo.inf_amd64_0a1b\foo.sys)",
    R"(C:\Windows\System32\DriverStore\Temp\foo.inf)",
    R"(C:\Windows\System32\winevt\Logs\System.evtx)",
    R"(C:\Windows\System32\LogFiles\WMI\trace.etl)",
    R"(C:\Windows\System32\spool\PRINTERS\00002.SPL)",
    R"(C:\Windows\SysWOW64\kernel32.dll)",
    R"(C:\Windows\SoftwareDistribution\DataStore\DataStore.edb)",
    R"(C:\ProgramData\Package Cache\{0A1B2C3D}\setup.exe)",
    R"(C:\Program Files\Editor\editor.exe)",
    R"(C:\Program Files\Editor\Cache\data.bin)",
    R"(C:\Program Files (x86)\Player\player.exe)",
    R"(C:\Program Files\WindowsApps\Contoso.Notes_1.0\notes.exe)",
    R"(C:\Boot\BCD)",
    R"(C:\EFI\Microsoft\Boot\bootmgfw.efi)",
    R"(C:\Recovery\WindowsRE\Winre.wim)",
    R"(C:\System Volume Information\tracking.log)",
    R"(C:\bootmgr)",
    R"(C:\$Recycle.Bin\S-1-5-21-1-2-3-1001\$RA1B2C3.docx)",
    R"(C:\$Recycle.Bin\S-1-5-21-1-2-3-1001\$IA1B2C3.docx)",
    // Folders in the root of a drive whose names look like junk and that
    // somebody put there
    R"(C:\Temp\thesis.docx)",
    R"(C:\tmp\database.mdf)",
    R"(C:\backup\2025.zip)",
    R"(D:\Temp\recording.wav)",
    R"(D:\tmp\build.log)",
    R"(D:\backup\system.vhdx)",
    // Security software
    R"(C:\ProgramData\Microsoft\Windows Defender\Quarantine\Entries\{0A1B})",
    R"(C:\ProgramData\Microsoft\Windows Defender\Scans\mpcache.bin)",
    R"(C:\ProgramData\Malwarebytes\MBAMService\Quarantine\0a1b.quar)",
    R"(C:\ProgramData\AVAST Software\Avast\chest\index.xml)",
    R"(C:\ProgramData\Symantec\Quarantine\0a1b.vbn)",
    // Keys and credentials of Windows
    R"(Roaming\Microsoft\Protect\S-1-5-21-1-2-3-1001\0a1b2c3d)",
    R"(Roaming\Microsoft\Credentials\0A1B2C3D)",
    R"(Roaming\Microsoft\Crypto\RSA\S-1-5-21-1-2-3-1001\0a1b2c3d)",
    R"(Roaming\Microsoft\SystemCertificates\My\Certificates\0A1B)",
    R"(Roaming\Microsoft\Vault\0A1B\Policy.vpol)",
    R"(Local\Microsoft\Credentials\0A1B2C3D)",
    R"(Local\Microsoft\Vault\4BF4C442\Policy.vpol)",
    R"(C:\ProgramData\Microsoft\Crypto\RSA\MachineKeys\0a1b2c3d)",
    R"(C:\ProgramData\Microsoft\Vault\AC658CB4\Policy.vpol)",
    R"(Home\NTUSER.DAT)",
    R"(Local\Microsoft\Windows\UsrClass.dat)",
    // Office
    R"(Roaming\Microsoft\Templates\Normal.dotm)",
    R"(Roaming\Microsoft\Word\AutoRecovery save of thesis.asd)",
    R"(Local\Microsoft\Office\UnsavedFiles\thesis.asd)",
    R"(Local\Microsoft\Office\16.0\OfficeFileCache\0\FSD-0A1B.FSD)",
    R"(Local\Microsoft\Office\OfficeFileCache\CentralTable.accdb)",
    // Mail
    R"(Local\Microsoft\Outlook\demo@example.com.ost)",
    R"(Local\Microsoft\Outlook\RoamCache\Stream_Autocomplete_0.dat)",
    R"(Local\Microsoft\Windows\INetCache\Content.Outlook\ABCD1234\contract.docx)",
    R"(Local\Comms\UnistoreDB\store.vol)",
    R"(Local\Microsoft\Windows Live Mail\Inbox\1.eml)",
    R"(Roaming\Microsoft\Outlook\Outlook.srs)",
    R"(Roaming\Thunderbird\Profiles\k2x9v1ab.default\Mail\Local Folders\Inbox)",
    R"(Roaming\Thunderbird\Profiles\k2x9v1ab.default\key4.db)",
    R"(Local\Thunderbird\Profiles\k2x9v1ab.default\cache2\entries\0A1B2C)",
    R"(Home\Documents\Outlook Files\archive.pst)",
    // What the user made, on this machine and in the cloud
    R"(Home\Documents\thesis.docx)",
    R"(Home\Documents\Temp\notes.txt)",
    R"(Home\Pictures\1.jpg)",
    R"(Home\Music\1.mp3)",
    R"(Home\Videos\1.mp4)",
    R"(Home\Desktop\todo.txt)",
    R"(Home\Contacts\ann.contact)",
    R"(Home\Favorites\news.url)",
    R"(Home\Links\Desktop.lnk)",
    R"(Home\Saved Games\slot1.sav)",
    R"(Home\Searches\everything.search-ms)",
    R"(Home\3D Objects\cube.3mf)",
    R"(Home\OneDrive\Documents\thesis.docx)",
    R"(Home\OneDrive\Downloads\setup.exe)",
    R"(Home\OneDrive - Contoso\Shared\plan.xlsx)",
    R"(Home\Dropbox\photos\1.jpg)",
    R"(Home\Dropbox\.dropbox.cache\0a1b)",
    R"(Home\Google Drive\My Drive\sheet.gsheet)",
    R"(Home\iCloudDrive\Pages\letter.pages)",
    R"(C:\Users\Public\Documents\shared.docx)",
    R"(C:\Users\other\Downloads\setup.exe)",
    R"(C:\Users\other\AppData\Local\Temp\setup.tmp)",
    // Keys in folders that begin with a dot
    R"(Home\.ssh\id_ed25519)",
    R"(Home\.ssh\known_hosts)",
    R"(Home\.gnupg\private-keys-v1.d\0A1B.key)",
    R"(Home\.gnupg\pubring.kbx)",
    R"(Home\.aws\credentials)",
    R"(Home\.kube\config)",
    R"(Home\.cargo\credentials.toml)",
    R"(Home\.gradle\gradle.properties)",
    // Applications
    R"(Roaming\discord\Local Storage\leveldb\000003.log)",
    R"(Roaming\discord\Local State)",
    R"(Roaming\discord\Service Worker\CacheStorage\0a1b\index)",
    R"(Roaming\discord\IndexedDB\https_discord.com_0.indexeddb.leveldb\000003.log)",
    R"(Roaming\Slack\Network\Cookies)",
    R"(Roaming\Slack\IndexedDB\https_app.slack.com_0.indexeddb.leveldb\000003.log)",
    R"(Roaming\Slack\Service Worker\CacheStorage\0a1b\index)",
    R"(Roaming\Slack\Local Storage\leveldb\000003.log)",
    R"(Roaming\Code\User\settings.json)",
    R"(Roaming\Code\Backups\0a1b\untitled\1)",
    R"(Roaming\Code\Local Storage\leveldb\000003.log)",
    R"(Roaming\Code\User\workspaceStorage\0a1b\state.vscdb)",
};

// Below each profile of a Chromium browser.
const Names kChromiumTreasures = {
    "Login Data",
    "Login Data For Account",
    "Cookies",
    R"(Network\Cookies)",
    "Web Data",
    "History",
    "Preferences",
    "Secure Preferences",
    "Bookmarks",
    "Bookmarks.bak",
    R"(Sessions\Session_13350000000000000)",
    R"(Sessions\Tabs_13350000000000000)",
    R"(Service Worker\CacheStorage\0a1b\2c3d\index)",
    R"(Service Worker\ScriptCache\index)",
    R"(Service Worker\Database\000003.log)",
    R"(IndexedDB\https_mail.example.com_0.indexeddb.leveldb\000003.log)",
    R"(Local Storage\leveldb\000003.log)",
    R"(Session Storage\000003.log)",
    R"(Extensions\0a1b\1.0_0\manifest.json)",
    R"(Local Extension Settings\0a1b\000003.log)",
    R"(databases\Databases.db)",
    R"(File System\000\p\00\00000000)",
    R"(Platform Notifications\000003.log)",
    R"(ClientCertificates\LOG)",
    "Trusted Vault",
};
const Names kFirefoxTreasures = {
    "logins.json",
    "key4.db",
    "cert9.db",
    "cookies.sqlite",
    "places.sqlite",
    "prefs.js",
    "formhistory.sqlite",
    R"(bookmarkbackups\bookmarks-2026-01-01.jsonlz4)",
    R"(sessionstore-backups\recovery.jsonlz4)",
    R"(storage\default\https+++mail.example.com\idb\1.sqlite)",
    R"(storage\default\https+++mail.example.com\cache\caches.sqlite)",
    "webappsstore.sqlite",
};
const Names kPackageTreasures = {
    R"(LocalCache\Local\Fabrikam\User Data\Default\Login Data)",
    R"(LocalCache\Roaming\profile.db)",
    R"(LocalState\notes.sqlite)",
    R"(LocalState\Cache\0a1b.bin)",
    R"(RoamingState\settings.json)",
    R"(Settings\settings.dat)",
    R"(AC\INetCookies\0a1b.cookie)",
    R"(AC\Microsoft\Crypto\TokenBindingKeys\Keys\0a1b)",
};

std::vector<std::string> MakeForbiddenFiles() {
  std::vector<std::string> files;
  AppendEach(files, kForbidden, {""}, {""});
  AppendEach(files, kChromiumFamily, kProfiles, kChromiumTreasures);
  AppendEach(files, kChromiumFamily, {""}, {"Local State", "Last Version"});
  AppendEach(files, kFirefoxProfiles, {""}, kFirefoxTreasures, "Roaming\\");
  AppendEach(files, kPackages, {""}, kPackageTreasures);
  return files;
}

}  // namespace

const std::vector<std::string>& ForbiddenFiles() {
  static const std::vector<std::string> files = MakeForbiddenFiles();
  return files;
}

}  // namespace quastel::rules_tests
