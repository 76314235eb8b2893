#ifndef QUASTEL_APPS_QUASTEL_HTML_PAGE_H_
#define QUASTEL_APPS_QUASTEL_HTML_PAGE_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "json.h"
#include "new_file.h"

namespace quastel::client {

// One row of the page's table: the path, and a list of what else is known.
struct PageRow {
  std::wstring path;
  Json cells;
};

// The self-contained page that a browser shows: the page of apps/quastel/html around one JSON
// object, which is a closer form of the report for programs. A row is a list, and names its folder
// by the place in a list of folders, so that a page of many rows stays small.
class HtmlPage {
 public:
  // Throws UserError when the file is there already or cannot be made.
  HtmlPage(const std::wstring& path, const std::string& command);

  void Member(std::string_view name, const Json& value);

  // `columns` names the cells behind the folder and the name.
  template <typename Make>
  void Rows(const std::vector<std::string>& columns, std::size_t count, Make make) {
    BeginRows(columns);
    for (std::size_t i = 0; i < count; ++i) {
      Row(i, make(i));
    }
    EndRows();
  }

  // The file is there from now on.
  void End();

 private:
  void Begin(std::string_view name);
  void BeginRows(const std::vector<std::string>& columns);
  void Row(std::size_t number, const PageRow& row);
  void EndRows();

  NewFile file_;
  bool first_ = true;
  std::vector<std::wstring> folders_;
  std::unordered_map<std::wstring, std::size_t> folder_places_;
  Json exact_ = Json::List();  // the rows whose path no JSON string can carry
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_HTML_PAGE_H_
