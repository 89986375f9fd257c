#pragma once

#include <cstddef>
#include <string_view>

namespace orvo::detail {

/// How many commas, colons and opening brackets a document has, those within strings too: about as
/// many as it holds values.
[[nodiscard]] std::size_t countMarks(std::string_view document);

}  // namespace orvo::detail
