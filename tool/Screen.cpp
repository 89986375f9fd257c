#include <tool/Screen.h>
#include <tool/Text.h>

#include <algorithm>

namespace orvo::tool {

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;
constexpr std::size_t kFieldName = 16;
/// How far what has no room in its line is indented on the next.
constexpr std::size_t kFold = 4;
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

/// Takes columns from the widest of those that give way until the table fits, or each has its least
/// width, or `narrowest` if that is less.
void shrink(const std::vector<Column>& columns, std::vector<std::size_t>& widths, std::size_t room,
            std::size_t narrowest = kWidestColumn) {
  while (totalWidth(widths) > room) {
    std::size_t widest = columns.size();
    for (std::size_t index = 0; index < columns.size(); ++index) {
      const std::size_t least = std::min(columns[index].least, narrowest);
      if (least == 0 || widths[index] == kLeftOut || widths[index] <= least) continue;
      if (widest == columns.size() || widths[index] > widths[widest]) widest = index;
    }
    if (widest == columns.size()) return;
    --widths[widest];
  }
}

}  // namespace

void Screen::title(std::string_view text, std::string_view aside) {
  constexpr std::size_t kNarrowest = 8;
  const std::string right = printable(aside);
  const std::size_t wanted = std::min(displayWidth(printable(text)), kNarrowest);
  if (terminal_.isFitted() && wanted + kGap + displayWidth(right) > columns()) {
    line(in(Style::strong, cut(printable(text), columns())));
    return paragraph(aside, Style::faint);
  }
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
  const auto parts = [&](std::size_t indent) {
    // An address is copied as a whole.
    const bool isWhole = !terminal_.isFitted() || text.find(' ') == std::string::npos;
    return isWhole ? std::vector{text} : wrapped(text, columns() - indent);
  };
  if (terminal_.isFitted() && columns() < std::min(2 * margin, margin + displayWidth(text))) {
    if (!name.empty()) line(std::string(kIndent, ' ') + in(Style::faint, name));
    for (const std::string& part : parts(kFold)) {
      line(std::string(kFold, ' ') + in(style, part));
    }
    return;
  }
  for (const std::string& part : parts(margin)) {
    line(head + in(style, part));
    head.assign(margin, ' ');
  }
}

Screen::Layout Screen::layout(const Table& table) const {
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
  if (!terminal_.isFitted()) return {std::move(result)};
  leaveOut(table.columns, result, columns());
  Layout layout{result};
  shrink(table.columns, layout.widths, columns());
  constexpr std::size_t kNarrow = 12, kNarrowest = 8;
  shrink(table.columns, layout.widths, columns(), kNarrow);
  if (totalWidth(layout.widths) <= columns()) return layout;
  // What comes last goes below.
  layout.widths = std::move(result);
  for (std::size_t index = layout.widths.size(); index-- > 1;) {
    if (layout.widths[index] == kLeftOut || layout.widths[index] == 0) continue;
    layout.folded = index;
    layout.widths[index] = kLeftOut;
    break;
  }
  shrink(table.columns, layout.widths, columns(), kNarrowest);
  return layout;
}

void Screen::row(const std::vector<Column>& columns, const Layout& layout,
                 const std::vector<Cell>& cells) {
  const auto& widths = layout.widths;
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
  if (layout.folded >= cells.size() || cells[layout.folded].text.empty()) return;
  const auto& [below, style] = cells[layout.folded];
  const bool isCut = columns[layout.folded].least > 0;
  const std::string shown =
      isCut ? cut(printable(below), this->columns() - kFold) : printable(below);
  line(std::string(kFold, ' ') + in(style, shown));
}

void Screen::table(const Table& table) {
  if (table.rows.empty()) return;
  const Layout found = layout(table);
  std::vector<Cell> titles;
  for (const Column& column : table.columns) titles.push_back({column.title, Style::faint});
  if (found.folded < titles.size()) titles[found.folded].text.clear();
  const bool titled = std::any_of(titles.begin(), titles.end(),
                                  [](const Cell& cell) { return !cell.text.empty(); });
  if (titled) row(table.columns, found, titles);
  for (const auto& cells : table.rows) row(table.columns, found, cells);
}

void Screen::tables(const std::vector<Column>& columns, const std::vector<Section>& sections) {
  Table all{.columns = columns};
  for (const Section& section : sections) {
    all.rows.insert(all.rows.end(), section.rows.begin(), section.rows.end());
  }
  const Layout found = layout(all);
  for (const Section& section : sections) {
    heading(section.heading);
    for (const auto& cells : section.rows) row(columns, found, cells);
  }
}

}  // namespace orvo::tool
