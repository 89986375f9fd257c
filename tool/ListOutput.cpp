#include <tool/ListOutput.h>
#include <tool/Text.h>
#include <tool/Wording.h>

#include <algorithm>
#include <numeric>

namespace orvo::tool {

namespace {

/// The positions of the fields that the text names.
std::vector<std::size_t> positions(const std::string& text, Fields fields) {
  std::vector<std::size_t> positions;
  for (std::string_view rest = text; !text.empty();) {
    const std::string_view name = rest.substr(0, rest.find(','));
    const auto found = std::ranges::find(fields, name);
    if (found != fields.end()) {
      positions.push_back(static_cast<std::size_t>(found - fields.begin()));
    }
    if (name.size() == rest.size()) break;
    rest.remove_prefix(name.size() + 1);
  }
  return positions;
}

/// The text as a part of a line between tabs.
std::string tsvText(const std::string& text) {
  std::string line;
  for (const char letter : text) {
    constexpr std::string_view kMarks = "\t\n\r\\";
    const std::size_t mark = kMarks.find(letter);
    mark == std::string_view::npos ? line += letter : (line += '\\') += "tnr\\"[mark];
  }
  return line;
}

}  // namespace

void addListOptions(std::vector<Parameter>& options, WrittenList& written, Fields fields) {
  options.push_back({.name = "--format",
                     .description =
                         "How to print the list: drawn for people, as lines with tabs between the "
                         "fields, as one JSON document, or as one JSON document a line",
                     .values = anyOf({"table", "tsv", "json", "jsonl"}),
                     .target = &written.format,
                     .fallback = "table on a terminal, else tsv",
                     .excludes = {"--json"}});
  options.push_back(
      {.name = "--fields",
       .description = "Which fields to print, with commas between them",
       .values = {.name = "NAMES", .choices = {fields.begin(), fields.end()}, .ofSeveral = true},
       .target = &written.fields});
}

ListOutput::Format ListOutput::format(const Tool& tool, const WrittenList& written) {
  if (tool.options().json) return Format::json;
  if (!written.format) return standardOutput().isTerminal ? Format::table : Format::tsv;
  if (*written.format == "table") return Format::table;
  if (*written.format == "tsv") return Format::tsv;
  return *written.format == "json" ? Format::json : Format::jsonl;
}

/// Whoever wants a drawing in a pipe, with a terminal at hand, looks at it there.
Terminal ListOutput::terminal() {
  Terminal terminal = standardOutput();
  terminal.isPaged = !terminal.isTerminal && standardError().isTerminal;
  return terminal;
}

ListOutput::ListOutput(Tool& tool, const WrittenList& written, Fields fields)
    : tool_(tool),
      fields_(fields),
      format_(format(tool, written)),
      chosen_(positions(written.fields, fields)) {
  if (format_ == Format::json || format_ == Format::jsonl) tool.answerInJson();
}

std::vector<std::size_t> ListOutput::shown() const {
  if (!chosen_.empty()) return chosen_;
  std::vector<std::size_t> all(fields_.size());
  std::iota(all.begin(), all.end(), std::size_t{0});
  return all;
}

Json ListOutput::object(const Record& record) const {
  if (chosen_.empty()) return record.model();
  Json object = Json::object();
  for (const std::size_t field : chosen_) object.set(fields_[field], record.values[field]);
  return object;
}

void ListOutput::printLines(const Records& records) const {
  // On a terminal a stranger's text must not do more than be read.
  const bool isSeen = standardOutput().isTerminal;
  const std::vector<std::size_t> fields = shown();
  std::string text;
  for (const Record& record : records) {
    if (format_ == Format::jsonl) {
      text += object(record).text() + "\n";
      continue;
    }
    for (const std::size_t field : fields) {
      const std::string value = tsvText(record.values[field].plainText());
      text += (isSeen ? printable(value) : value) + "\t";
    }
    text.back() = '\n';
  }
  print(text);
}

void ListOutput::tellCut(const PagingMeta& part) const {
  const bool goesOn = part.limit > 0 && part.total - part.offset > part.limit;
  if (format_ != Format::tsv || !goesOn) return;
  printDiagnostic(styled(standardError(), Style::warning, "orvo:") + " these are " +
                  countText(part.limit) + " of " + countText(part.total) +
                  "; --all prints them all\n");
}

void ListOutput::drawTable(const Records& records) const {
  Screen screen(terminal());
  Table table;
  for (const std::size_t field : chosen_) {
    table.columns.push_back({.title = fields_[field], .least = 8});
  }
  for (const Record& record : records) {
    std::vector<Cell> cells;
    for (const std::size_t field : chosen_) cells.push_back({record.values[field].plainText()});
    table.rows.push_back(std::move(cells));
  }
  screen.table(table);
  print(screen.text());
}

int ListOutput::answer(const Records& records) const {
  if (format_ == Format::json) {
    return tool_.answer(Json::list(records, [&](const Record& record) { return object(record); }));
  }
  format_ == Format::table ? drawTable(records) : printLines(records);
  return 0;
}

}  // namespace orvo::tool
