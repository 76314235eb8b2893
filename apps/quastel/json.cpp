#include "json.h"

#include <nlohmann/json.hpp>

namespace quastel::client {

// Keeps members in their order.
struct Json::Tree {
  explicit Tree(nlohmann::ordered_json value) : root(std::move(value)) {}

  nlohmann::ordered_json root;
};

Json::Json() : Json(nullptr) {}
Json::Json(std::nullptr_t) : tree_(std::make_unique<Tree>(nullptr)) {}
Json::Json(bool value) : tree_(std::make_unique<Tree>(value)) {}
Json::Json(int value) : tree_(std::make_unique<Tree>(value)) {}
Json::Json(std::int64_t value) : tree_(std::make_unique<Tree>(value)) {}
Json::Json(std::uint32_t value) : tree_(std::make_unique<Tree>(value)) {}
Json::Json(std::uint64_t value) : tree_(std::make_unique<Tree>(value)) {}
Json::Json(const char* utf8) : tree_(std::make_unique<Tree>(utf8)) {}
Json::Json(std::string utf8) : tree_(std::make_unique<Tree>(std::move(utf8))) {}

Json::Json(const Json& other) : tree_(std::make_unique<Tree>(*other.tree_)) {}
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(const Json& other) {
  *this = Json(other);
  return *this;
}
Json& Json::operator=(Json&& other) noexcept = default;
Json::~Json() = default;

void Json::Set(const char* name, Json value) {
  tree_->root[name] = std::move(value.tree_->root);
}

void Json::Remove(const char* name) {
  tree_->root.erase(name);
}

void Json::Append(Json value) {
  tree_->root.push_back(std::move(value.tree_->root));
}

void Json::AppendAllOf(const Json& list) {
  tree_->root.insert(tree_->root.end(), list.tree_->root.begin(), list.tree_->root.end());
}

std::string Json::Text() const {
  return tree_->root.dump();
}

std::string Json::IndentedText() const {
  return tree_->root.dump(2);
}

Json Json::EmptyList() {
  Json list;
  list.tree_->root = nlohmann::ordered_json::array();
  return list;
}

}  // namespace quastel::client
