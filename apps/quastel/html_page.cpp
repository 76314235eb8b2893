#include "html_page.h"

#include <quastel_core.h>

#include "html_pieces.h"
#include "json_writer.h"
#include "path_text.h"
#include "script_json.h"
#include "text.h"

namespace quastel::client {
namespace {

// Raised when the scripts of the page cannot read the object of an older one.
constexpr int kPageVersion = 1;

}  // namespace

HtmlPage::HtmlPage(const std::wstring& path, const std::string& command) : file_(path) {
  file_.Write(PageBeforeReport());
  file_.Write("{");
  Member("page_version", kPageVersion);
  Member("client_version", QUASTEL_CLIENT_VERSION);
  Member("library_version", qs_version());
  Member("command", command);
}

void HtmlPage::Member(std::string_view name, const Json& value) {
  Begin(name);
  file_.Write(JsonForScript(value));
}

void HtmlPage::End() {
  file_.Write("\n}\n");
  file_.Write(PageAfterReport());
  file_.Keep();
}

void HtmlPage::Begin(std::string_view name) {
  file_.Write(std::string(first_ ? "\n\"" : ",\n\"").append(name).append("\":"));
  first_ = false;
}

void HtmlPage::BeginRows(const std::vector<std::string>& columns) {
  Json names = Json::List("folder", "name");
  for (const std::string& column : columns) {
    names.Append(column);
  }
  Member("columns", names);
  Begin("rows");
  file_.Write("[");
}

void HtmlPage::Row(std::size_t number, const PageRow& row) {
  // For people: the prefix of a long path is not part of its name.
  const std::wstring path = WithoutExtendedPrefix(row.path);
  const std::wstring folder = FolderOf(path);
  const auto [entry, is_new] = folder_places_.try_emplace(folder, folders_.size());
  if (is_new) {
    folders_.push_back(folder);
  }
  Json cells = Json::List(entry->second, ToUtf8(path.substr(path.find_last_of(L"\\/") + 1)));
  cells.AppendAllOf(row.cells);
  file_.Write(number == 0 ? "\n" : ",\n");
  file_.Write(JsonForScript(cells));
  if (!IsWellFormed(row.path)) {
    exact_.Append(Json::List(number, CodeUnits(row.path)));
  }
}

void HtmlPage::EndRows() {
  file_.Write("]");
  Member("folders", JsonStrings(folders_));
  Member("exact", exact_);
}

}  // namespace quastel::client
