#include <tool/Screen.h>
#include <tool/Text.h>

#include <algorithm>

namespace orvo::tool {

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;
constexpr std::size_t kFieldName = 16;
/// Longer lines are hard to read.
constexpr std::size_t kWidestParagraph = 96;

/// Cells are not padded to the width of a text beyond this, where no terminal is that wide: with
/// many rows that would be gigabytes of spaces.
constexpr std::size_t kWidestColumn = 200;

/// The width that marks a column as left out.
constexpr std::size_t kLeftOut = std::string::npos;

/// What a table takes whose columns have these widths; an empty one takes its gap nevertheless.
std::size_t totalWidth(const std::vector<std::size_t>& widths) {
  std::size_t total = 0;
  for (const std::size_t width : widths) {
    if (width != kLeftOut) total += (total == 0 ? kIndent : kGap) + width;
  }
  return total;
}

/// Leaves optional columns out until the rest fits when everything gives way that can.
void leaveOut(const std::vector<Column>& columns, std::vector<std::size_t>& widths,
              std::size_t room) {
  const auto narrowest = [&] {
    std::vector<std::size_t> result = widths;
    for (std::size_t index = 0; index < columns.size(); ++index) {
      if (columns[index].least > 0 && result[index] != kLeftOut) {
        result[index] = std::min(result[index], columns[index].least);
      }
    }
    return totalWidth(result);
  };
  while (narrowest() > room) {
    std::size_t next = columns.size();
    for (std::size_t index = 0; index < columns.size(); ++index) {
      if (columns[index].optional == 0 || widths[index] == kLeftOut) continue;
      if (next == columns.size() || columns[index].optional > columns[next].optional) next = index;
    }
    if (next == columns.size()) return;
    widths[next] = kLeftOut;
  }
}

/// Takes columns from the widest of those that give way until the table fits.
void shrink(const std::vector<Column>& columns, std::vector<std::size_t>& widths,
            std::size_t room) {
  while (totalWidth(widths) > room) {
    std::size_t widest = columns.size();
    for (std::size_t index = 0; index < columns.size(); ++index) {
      const std::size_t least = columns[index].least;
      if (least == 0 || widths[index] == kLeftOut || widths[index] <= least) continue;
      if (widest == columns.size() || widths[index] > widths[widest]) widest = index;
    }
    if (widest == columns.size()) return;
    --widths[widest];
  }
}

}  // namespace

void Screen::title(std::string_view text, std::string_view aside) {
  const std::string right = printable(aside);
  const std::size_t used = displayWidth(right);
  const std::size_t room = columns() > used + kGap ? columns() - used - kGap : columns();
  const std::string left = terminal_.isFitted() ? cut(printable(text), room) : printable(text);
  text_ += in(Style::strong, left);
  if (!right.empty()) {
    const std::size_t width = displayWidth(left);
    text_.append(columns() > width + used ? columns() - width - used : kGap, ' ');
    text_ += in(Style::faint, right);
  }
  text_ += '\n';
}

void Screen::paragraph(std::string_view text, Style style) {
  for (const std::string& part : wrapped(printable(text), std::min(columns(), kWidestParagraph))) {
    line(in(style, part));
  }
}

void Screen::heading(std::string_view text, std::string_view aside) {
  text_ += '\n' + in(Style::accent, printable(text));
  if (!aside.empty()) text_ += in(Style::faint, "  " + printable(aside));
  text_ += '\n';
}

void Screen::field(std::string_view name, std::string_view value, Style style) {
  if (value.empty()) return;
  const std::size_t nameWidth = std::max(kFieldName, displayWidth(name));
  const std::size_t margin = kIndent + nameWidth + kGap;
  std::string head = std::string(kIndent, ' ') + in(Style::faint, padded(name, nameWidth)) +
                     std::string(kGap, ' ');
  const std::string text = printable(value);
  // An address is copied as a whole.
  const bool oneWord = text.find(' ') == std::string::npos;
  const bool fits = !terminal_.isFitted() || oneWord || columns() < 2 * margin;
  for (const std::string& part : fits ? std::vector{text} : wrapped(text, columns() - margin)) {
    line(head + in(style, part));
    head.assign(margin, ' ');
  }
}

std::vector<std::size_t> Screen::widths(const Table& table) const {
  const std::size_t widest = std::max(kWidestColumn, columns());
  std::vector<std::size_t> result;
  for (const Column& column : table.columns) result.push_back(displayWidth(column.title));
  for (const auto& cells : table.rows) {
    for (std::size_t index = 0; index < cells.size(); ++index) {
      const std::size_t width = displayWidth(printable(cells[index].text));
      result[index] = std::max(result[index], std::min(width, widest));
    }
  }
  // What is not shown on a terminal is read by programs or saved: nothing is cut off then.
  if (!terminal_.isFitted()) return result;
  leaveOut(table.columns, result, columns());
  shrink(table.columns, result, columns());
  return result;
}

void Screen::row(const std::vector<Column>& columns, const std::vector<std::size_t>& widths,
                 const std::vector<Cell>& cells) {
  std::string out;
  std::size_t gap = kIndent;
  for (std::size_t index = 0; index < cells.size(); ++index) {
    if (widths[index] == kLeftOut) continue;
    const std::string text = printable(cells[index].text);
    const bool givesWay = terminal_.isFitted() && columns[index].least > 0;
    const std::string shown = givesWay ? cut(text, widths[index]) : text;
    const std::size_t rest = widths[index] - std::min(widths[index], displayWidth(shown));
    out.append(gap + (columns[index].right ? rest : 0), ' ');
    out += in(cells[index].style, shown);
    gap = kGap + (columns[index].right ? 0 : rest);
  }
  line(out.substr(0, out.find_last_not_of(' ') + 1));
}

void Screen::table(const Table& table) {
  if (table.rows.empty()) return;
  const std::vector<std::size_t> columnWidths = widths(table);
  std::vector<Cell> titles;
  for (const Column& column : table.columns) titles.push_back({column.title, Style::faint});
  const bool titled = std::any_of(titles.begin(), titles.end(),
                                  [](const Cell& cell) { return !cell.text.empty(); });
  if (titled) row(table.columns, columnWidths, titles);
  for (const auto& cells : table.rows) row(table.columns, columnWidths, cells);
}

void Screen::tables(const std::vector<Column>& columns, const std::vector<Section>& sections) {
  Table all{.columns = columns};
  for (const Section& section : sections) {
    all.rows.insert(all.rows.end(), section.rows.begin(), section.rows.end());
  }
  const std::vector<std::size_t> columnWidths = widths(all);
  for (const Section& section : sections) {
    heading(section.heading);
    for (const auto& cells : section.rows) row(columns, columnWidths, cells);
  }
}

}  // namespace orvo::tool
