#ifndef QUASTEL_APPS_QUASTEL_JSON_H_
#define QUASTEL_APPS_QUASTEL_JSON_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace quastel::client {

// A JSON value that is put together to be written. It hides the JSON library from those who write,
// because its header takes long to compile.
class Json {
 public:
  // Null, until Set() makes it an object or Append() a list.
  Json();
  // NOLINTBEGIN(google-explicit-constructor): a value in its place reads best.
  Json(std::nullptr_t);
  Json(bool value);
  Json(int value);
  Json(std::int64_t value);
  Json(std::uint32_t value);
  Json(std::uint64_t value);
  Json(const char* utf8);
  Json(std::string utf8);
  template <typename Other>
  Json(const Other* other) = delete;  // would be taken for a bool
  // NOLINTEND(google-explicit-constructor)

  Json(const Json& other);
  Json(Json&& other) noexcept;
  Json& operator=(const Json& other);
  Json& operator=(Json&& other) noexcept;
  ~Json();

  template <typename... Values>
  static Json List(Values&&... values) {
    Json list = EmptyList();
    (list.Append(std::forward<Values>(values)), ...);
    return list;
  }

  // Members keep the order in which they were set first.
  void Set(const char* name, Json value);
  void Remove(const char* name);

  void Append(Json value);
  void AppendAllOf(const Json& list);

  std::string Text() const;          // in one line
  std::string IndentedText() const;  // by two spaces

 private:
  struct Tree;

  static Json EmptyList();

  std::unique_ptr<Tree> tree_;
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_JSON_H_
