#include <tool/Screen.h>
#include <tool/Text.h>

#include <algorithm>
#include <numeric>

namespace orvo::tool {

namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;
constexpr std::size_t kFieldName = 16;
/// Longer lines are hard to read.
constexpr std::size_t kWidestParagraph = 96;
constexpr std::size_t kNarrowestColumn = 10;

std::size_t sum(const std::vector<std::size_t>& numbers) {
  return std::accumulate(numbers.begin(), numbers.end(), std::size_t{0});
}

}  // namespace

void Screen::title(std::string_view text, std::string_view aside) {
  const std::string right = printable(aside);
  const std::size_t used = displayWidth(right);
  const std::size_t room = columns() > used + kGap ? columns() - used - kGap : columns();
  const std::string left = cut(printable(text), room);
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
  text_.append(kIndent, ' ');
  text_ += in(Style::faint, padded(name, std::max(kFieldName, displayWidth(name))));
  text_.append(kGap, ' ');
  line(in(style, printable(value)));
}

std::vector<std::size_t> Screen::widths(const Table& table) const {
  std::vector<std::size_t> result;
  for (const Column& column : table.columns) result.push_back(displayWidth(column.title));
  for (const auto& cells : table.rows) {
    for (std::size_t index = 0; index < cells.size(); ++index) {
      result[index] = std::max(result[index], displayWidth(printable(cells[index].text)));
    }
  }
  // What is not shown on a terminal is read by programs or saved: nothing is cut off there.
  if (!terminal_.isTerminal) return result;
  const std::size_t room = columns() - kIndent - kGap * (result.size() - 1);
  while (sum(result) > room) {
    std::size_t widest = result.size();
    for (std::size_t index = 0; index < result.size(); ++index) {
      if (!table.columns[index].shrinks || result[index] <= kNarrowestColumn) continue;
      if (widest == result.size() || result[index] > result[widest]) widest = index;
    }
    if (widest == result.size()) break;
    --result[widest];
  }
  return result;
}

void Screen::row(const Table& table, const std::vector<std::size_t>& widths,
                 const std::vector<Cell>& cells) {
  std::string out(kIndent, ' ');
  std::size_t last = cells.size();
  while (last > 0 && cells[last - 1].text.empty()) --last;
  for (std::size_t index = 0; index < last; ++index) {
    const std::string text = printable(cells[index].text);
    std::string shown;
    if (table.columns[index].right) {
      shown = paddedLeft(text, widths[index]);
    } else {
      shown = index + 1 == last ? cut(text, widths[index]) : padded(text, widths[index]);
    }
    if (index > 0) out.append(kGap, ' ');
    out += in(cells[index].style, shown);
  }
  line(out);
}

void Screen::table(const Table& table) {
  if (table.rows.empty()) return;
  const std::vector<std::size_t> columnWidths = widths(table);
  std::vector<Cell> titles;
  for (const Column& column : table.columns) titles.push_back({column.title, Style::faint});
  const bool titled = std::any_of(titles.begin(), titles.end(),
                                  [](const Cell& cell) { return !cell.text.empty(); });
  if (titled) row(table, columnWidths, titles);
  for (const auto& cells : table.rows) row(table, columnWidths, cells);
}

}  // namespace orvo::tool
