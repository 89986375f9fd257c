#include <tool/Completion.h>

#include <algorithm>
#include <cstddef>

namespace orvo::tool {

namespace {

/// What the words that are complete say about the one that is not.
struct Place {
  const Command* command = nullptr;
  /// Of the command.
  std::size_t arguments = 0;
  /// The option whose value is being typed.
  const Parameter* option = nullptr;
};

const Parameter* find(const std::vector<Parameter>& options, const std::string& name) {
  const auto found = std::ranges::find(options, name, &Parameter::name);
  return found != options.end() ? &*found : nullptr;
}

Place placeBehind(const CommandTable& table, const std::vector<std::string>& words) {
  Place place;
  for (std::size_t i = 1; i + 1 < words.size(); ++i) {
    const std::string& word = words[i];
    if (place.option != nullptr) {
      place.option = nullptr;
    } else if (word.starts_with("-")) {
      const Parameter* option = find(table.globalOptions, word);
      if (option == nullptr && place.command != nullptr)
        option = find(place.command->options, word);
      const bool takesValue = option != nullptr && !std::holds_alternative<bool*>(option->target);
      place.option = takesValue ? option : nullptr;
    } else if (place.command != nullptr) {
      ++place.arguments;
    } else {
      const auto named = std::ranges::find(table.commands, word, &Command::name);
      if (named != table.commands.end()) place.command = &*named;
    }
  }
  return place;
}

/// Collects what begins as the word does.
class Candidates {
 public:
  explicit Candidates(std::string word) : word_(std::move(word)) {}

  void add(const std::string& candidate, const std::string& description = "") {
    if (!candidate.starts_with(word_)) return;
    text_ += candidate + (description.empty() ? "" : "\t" + description) + "\n";
  }
  void add(const std::vector<Parameter>& options) {
    for (const Parameter& option : options) add(option.name, option.description);
  }
  void add(const Values& values) {
    for (const std::string& choice : values.choices) add(choice);
    if (!values.suggestions) return;
    for (const std::string& suggestion : values.suggestions()) add(suggestion);
  }

  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  const std::string word_;
  std::string text_;
};

}  // namespace

std::string completions(const CommandTable& table, const std::vector<std::string>& words) {
  const std::string word = words.empty() ? "" : words.back();
  const Place place = placeBehind(table, words);
  Candidates candidates(word);
  if (place.option != nullptr) {
    candidates.add(place.option->values);
  } else if (word.starts_with("-")) {
    if (place.command != nullptr) candidates.add(place.command->options);
    candidates.add(table.globalOptions);
    for (const Note& option : parserOptions()) {
      candidates.add(option.name.substr(option.name.find("--")), option.text);
    }
  } else if (place.command == nullptr) {
    for (const Command& command : table.commands) candidates.add(command.name, command.description);
  } else if (place.arguments < place.command->arguments.size()) {
    candidates.add(place.command->arguments[place.arguments].values);
  }
  return candidates.text();
}

}  // namespace orvo::tool
