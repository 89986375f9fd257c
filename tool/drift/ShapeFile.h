#pragma once

#include <tool/drift/Shape.h>

#include <optional>
#include <string>

namespace orvo::tool {

/// The shapes as the file holds them.
[[nodiscard]] std::string shapesText(const Shapes& shapes);
/// Nothing when the text is something else.
[[nodiscard]] std::optional<Shapes> shapesIn(const std::string& text);

/// What the folder knows of a service. Throws `WrongUsage` when it holds nothing that `addShapes`
/// has written.
[[nodiscard]] Shapes readShapes(const std::string& folder);

/// Throws `WrongUsage` when there is a folder that is not empty, and was not written by
/// `addShapes`.
void refuseForeignFolder(const std::string& folder);

/// Adds the shapes to those that the folder knows, and makes it if need be. Whoever reads meanwhile
/// sees what was there before or what is there then. Throws `WrongUsage` when it cannot be written.
void addShapes(const std::string& folder, const Shapes& shapes);

}  // namespace orvo::tool
