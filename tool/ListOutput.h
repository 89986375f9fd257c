#pragma once

#include <OrvoAPI/Model/PagingMeta.h>
#include <tool/CommandTable.h>
#include <tool/Records.h>
#include <tool/Tool.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvo::tool {

/// How the command line wants a list to be printed.
struct WrittenList {
  std::optional<std::string> format{};
  std::string fields{};
};

/// Adds `--format` and `--fields`.
void addListOptions(std::vector<Parameter>& options, WrittenList& written, Fields fields);

/// Prints a list as a drawing for people, as lines of fields, or as JSON. Used by one thread.
class ListOutput {
 public:
  /// With JSON the tool's errors become JSON, too.
  ListOutput(Tool& tool, const WrittenList& written, Fields fields);

  /// Whether it is printed record by record, so that parts can be printed as they come.
  [[nodiscard]] bool isOfLines() const {
    return format_ == Format::tsv || format_ == Format::jsonl;
  }
  void printLines(const Records& records) const;
  /// Says that the list goes on, where its lines would not show it.
  void tellCut(const PagingMeta& part) const;

  /// Prints a list: its `whole()` as JSON, or what `draw(Screen&)` draws, unless single fields or
  /// lines are wanted. Returns the exit status.
  template <class List, class Draw>
  int answer(const List& list, Draw draw) const {
    if (format_ == Format::json && chosen_.empty()) return tool_.answer(toJson(list));
    if (format_ != Format::table || !chosen_.empty()) return answer(recordsOf(list));
    Screen screen(terminal());
    draw(screen);
    print(screen.text());
    return 0;
  }

 private:
  enum class Format { table, tsv, json, jsonl };

  [[nodiscard]] static Terminal terminal();
  [[nodiscard]] static Format format(const Tool& tool, const WrittenList& written);
  int answer(const Records& records) const;
  [[nodiscard]] Json object(const Record& record) const;
  void drawTable(const Records& records) const;
  /// The positions of the fields that are printed.
  [[nodiscard]] std::vector<std::size_t> shown() const;

  Tool& tool_;
  const Fields fields_;
  const Format format_;
  /// The positions of the fields that were asked for; none when nothing was said.
  std::vector<std::size_t> chosen_;
};

}  // namespace orvo::tool
