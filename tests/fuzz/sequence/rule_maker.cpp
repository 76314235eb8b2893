#include "fuzz/sequence/rule_maker.h"

namespace quastel::fuzz::sequence {
namespace {

using junk::RuleNode;

constexpr const Char* kDownloads = u"Page_JunkFiles_Report_Category_Downloads";

void Add(RuleNode& node, const Char* name, const Char* value) {
  node.attributes.push_back({name, value});
}

const Char* SomePath(Input& input) {
  static const Char* const kPaths[] = {
      u"C:\\t",       u"{Root}t\\a", u"{UserHome}",       u"C:\\t\\a\\b",         u"C:\\t\\f0",
      u"C:\\missing", u"c:/t/",      u"C:\\t\\Downloads", u"{UserHome}\\AppData", u"D:\\m"};
  return input.OneOf(kPaths);
}

RuleNode SomeRule(Input& input, int depth) {
  static const Char* const kEnds[] = {u"a", u"b", u"Downloads", u"f0", u"a\\b", u"", u"D:\\m"};
  static const Char* const kTexts[] = {u"", u"C:\\t\\a", u"\\B", u"Downloads"};
  static const Char* const kPatterns[] = {u"*", u"*.log", u"", u"f0"};
  static const Char* const kNames[] = {u"n", u"", u"m"};
  const bool broken = input.OneIn(24);
  RuleNode node;
  switch (input.Below(depth < 3 ? 6 : 4)) {
    case 0:
      node.name = u"Folder";
      Add(node, broken ? u"path" : u"Path", SomePath(input));
      if (input.OneIn(3)) {
        Add(node, u"Pattern", input.OneOf(kPatterns));
      }
      if (input.OneIn(2)) {
        Add(node, u"DisplayName", input.OneOf(kNames));
      }
      break;
    case 1:
      node.name = u"FolderList";
      Add(node, u"StartPath", SomePath(input));
      Add(node, broken ? u"Path" : u"EndPath", input.OneOf(kEnds));
      if (input.OneIn(2)) {
        Add(node, u"ContainsPath", input.OneOf(kTexts));
      }
      if (input.OneIn(2)) {
        Add(node, u"DisplayName", input.OneOf(kNames));
      }
      break;
    case 2:
      node.name = u"ChildrenList";
      Add(node, u"StartPath", broken ? u"" : SomePath(input));
      break;
    case 3:
      node.name = u"Other";
      Add(node, u"Path", u"C:\\t");
      break;
    default:
      node.name = u"Category";
      Add(node, u"DisplayName", broken ? u"" : u"inner");
      for (std::size_t n = input.Below(3); n > 0; --n) {
        node.children.push_back(SomeRule(input, depth + 1));
      }
      break;
  }
  return node;
}

void Write(const RuleNode& node, std::string& out) {
  const auto put = [&out](const Text& text) { out.append(text.begin(), text.end()); };
  out += '<';
  put(node.name);
  for (const junk::RuleAttribute& attribute : node.attributes) {
    out += ' ';
    put(attribute.name);
    out += "=\"";
    put(attribute.value);
    out += '"';
  }
  out += '>';
  for (const RuleNode& child : node.children) {
    Write(child, out);
  }
  out += "</";
  put(node.name);
  out += '>';
}

}  // namespace

RuleNode SomeDocument(Input& input) {
  RuleNode root{input.OneIn(20) ? u"root" : u"Root", {}, {}};
  for (std::size_t n = 1 + input.Below(3); n > 0; --n) {
    RuleNode category{u"Category", {}, {}};
    Add(category, u"DisplayName", input.OneIn(3) ? kDownloads : u"outer");
    for (std::size_t rules = input.Below(4); rules > 0; --rules) {
      category.children.push_back(SomeRule(input, 1));
    }
    root.children.push_back(std::move(category));
  }
  return root;
}

std::string Written(const RuleNode& root) {
  std::string document;
  Write(root, document);
  return document;
}

}  // namespace quastel::fuzz::sequence
