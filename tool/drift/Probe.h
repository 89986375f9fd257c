#pragma once

#include <tool/drift/Shape.h>

#include <set>
#include <string>

namespace orvo::tool {

/// Finds out which members of documents of one kind the library takes into account: those that make
/// a difference when they are of another type. Used by one thread.
class Probe {
 public:
  /// `kind` is one of `parseKinds`.
  explicit Probe(std::string kind) : kind_(std::move(kind)) {}

  /// Marks the places of the shape that the document has and no earlier one had.
  void examine(const JSONValue& document, Shape& shape);

 private:
  std::string kind_;
  std::set<std::string> examined_{};
};

}  // namespace orvo::tool
