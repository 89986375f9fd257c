#pragma once

#include <tool/Output.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::tool {

struct Cell {
  std::string text;
  Style style = Style::plain;
};

struct Column {
  std::string title{};
  bool right = false;
  /// The width down to which it gives way when the table is wider than the terminal; 0: it does
  /// not.
  std::size_t least = 0;
  /// Left out when the terminal is too narrow: the highest goes first, 0 never.
  int optional = 0;
};

struct Table {
  std::vector<Column> columns;
  std::vector<std::vector<Cell>> rows{};
};

/// Some rows of a table under a heading of their own.
struct Section {
  std::string heading;
  std::vector<std::vector<Cell>> rows{};
};

/// A text for people that grows from top to bottom, laid out for the terminal's width. Texts that
/// come from the service are made printable here. Used by one thread.
class Screen {
 public:
  explicit Screen(Terminal terminal) : terminal_(terminal) {}

  [[nodiscard]] const Terminal& terminal() const { return terminal_; }
  [[nodiscard]] std::size_t columns() const { return terminal_.columns; }

  /// A headline with something at the right edge.
  void title(std::string_view text, std::string_view aside = "");
  /// A paragraph, broken into lines; nothing for an empty one.
  void paragraph(std::string_view text, Style style = Style::plain);
  /// The heading of a section, with an empty line before it.
  void heading(std::string_view text, std::string_view aside = "");
  /// A name with its value; nothing when the value is empty. An address is never broken.
  void field(std::string_view name, std::string_view value, Style style = Style::plain);
  /// Columns of equal width; titles only when there are some, and nothing without rows.
  void table(const Table& table);
  /// Tables without titles, each under its heading, whose columns are those of `columns` and line
  /// up.
  void tables(const std::vector<Column>& columns, const std::vector<Section>& sections);
  void blank() { text_ += '\n'; }
  /// A line that is laid out already.
  void line(std::string_view text) { text_.append(text).append("\n"); }

  [[nodiscard]] std::string in(Style style, std::string_view text) const {
    return styled(terminal_, style, text);
  }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  /// How wide each column is; and which has no room and stands below the others, if one does.
  struct Layout {
    std::vector<std::size_t> widths;
    std::size_t folded = std::string::npos;
  };
  [[nodiscard]] Layout layout(const Table& table) const;
  void row(const std::vector<Column>& columns, const Layout& layout,
           const std::vector<Cell>& cells);

  Terminal terminal_;
  std::string text_;
};

}  // namespace orvo::tool
