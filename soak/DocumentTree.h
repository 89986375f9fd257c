#pragma once

#include <OrvoAPI/Parsing/JSONDataParser.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orvo::soak {

/// A JSON document that can be changed. A value.
class Tree {
 public:
  /// The numbers of the members and elements that lead to a value, each with its name.
  struct Step {
    std::size_t number;
    std::string name;
  };
  using Path = std::vector<Step>;

  Tree() = default;
  explicit Tree(const JSONValue& value) : kind_(value.kind()) {
    if (const auto object = value.object()) {
      for (const auto& [key, member] : *object) add(std::string(key), Tree(member));
    } else if (const auto array = value.array()) {
      for (const JSONValue& element : *array) add("", Tree(element));
    } else {
      text_ = value.text();
    }
  }

  /// As in a `DocumentLoss`.
  [[nodiscard]] static std::string pathText(const Path& path) {
    std::string text;
    for (const auto& [number, name] : path) {
      if (name.empty()) {
        text += "[" + std::to_string(number) + "]";
      } else {
        text += (text.empty() ? "" : ".") + name;
      }
    }
    return text;
  }

  [[nodiscard]] bool isScalar() const { return kind_ != Kind::array && kind_ != Kind::object; }
  [[nodiscard]] std::string text() const {
    if (isScalar()) return text_;
    std::string text(1, kind_ == Kind::array ? '[' : '{');
    for (std::size_t i = 0; i < children_.size(); ++i) {
      if (i > 0) text += ',';
      if (kind_ == Kind::object) text.append(1, '"').append(children_[i].first).append("\":");
      text += children_[i].second.text();
    }
    return text + (kind_ == Kind::array ? ']' : '}');
  }
  /// Of all members and elements.
  [[nodiscard]] std::vector<Path> places() const {
    std::vector<Path> all;
    for (std::size_t i = 0; i < children_.size(); ++i) {
      const Step step{i, children_[i].first};
      all.push_back({step});
      for (Path& path : children_[i].second.places()) {
        path.insert(path.begin(), step);
        all.push_back(std::move(path));
      }
    }
    return all;
  }
  /// The same without members and elements.
  [[nodiscard]] Tree emptied() const {
    Tree tree;
    tree.kind_ = kind_;
    return tree;
  }
  [[nodiscard]] const Tree* at(const Path& path) const {
    const Tree* tree = this;
    for (const Step& step : path) tree = &tree->children_[step.number].second;
    return tree;
  }

  // Each changes what is at the path; false when that cannot be.

  bool remove(const Path& path) {
    auto& siblings = parent(path).children_;
    siblings.erase(siblings.begin() + static_cast<std::ptrdiff_t>(path.back().number));
    return true;
  }
  bool rename(const Path& path) {
    auto& name = parent(path).children_[path.back().number].first;
    return !name.empty() && (name += "_new", true);
  }
  /// Into a value of another kind, one of some.
  bool retype(const Path& path, std::uint64_t random) {
    constexpr std::pair<Kind, const char*> kValues[] = {
        {Kind::null, "null"},         {Kind::boolean, "true"},       {Kind::number, "7"},
        {Kind::string, "\"button\""}, {Kind::array, "[\"button\"]"}, {Kind::object, "{\"id\":7}"}};
    const auto& [kind, text] = kValues[random % std::size(kValues)];
    Tree& tree = parent(path).children_[path.back().number].second;
    if (tree.kind_ == kind) return false;
    tree = Tree();
    tree.text_ = text;
    return true;
  }
  void replaceBy(const Path& path, const std::string& text) {
    Tree tree;
    tree.text_ = '"' + text + '"';
    parent(path).children_[path.back().number].second = std::move(tree);
  }
  bool empty(const Path& path) {
    Tree& tree = parent(path).children_[path.back().number].second;
    if (tree.isScalar() && (tree.kind_ != Kind::string || tree.text_ == "\"\"")) return false;
    if (!tree.isScalar() && tree.children_.empty()) return false;
    tree.children_.clear();
    tree.text_ = "\"\"";
    return true;
  }

 private:
  using Kind = JSONValue::Kind;

  void add(std::string name, Tree tree) {
    children_.emplace_back(std::move(name), std::move(tree));
  }
  Tree& parent(const Path& path) {
    Tree* tree = this;
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
      tree = &tree->children_[path[i].number].second;
    }
    return *tree;
  }

  Kind kind_ = Kind::null;
  std::string text_ = "null";
  std::vector<std::pair<std::string, Tree>> children_;
};

}  // namespace orvo::soak
