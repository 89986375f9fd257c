#include <tool/Completion.h>
#include <tool/ValueCheck.h>

#include <algorithm>
#include <cstddef>

namespace orvo::tool {

namespace {

const Parameter* find(const std::vector<Parameter>& options, const std::string& name) {
  const auto found = std::ranges::find(options, name, &Parameter::name);
  return found != options.end() ? &*found : nullptr;
}

bool takesValue(const Parameter* option) {
  return option != nullptr && !std::holds_alternative<bool*>(option->target);
}

/// What the words that are complete say about the one that is not.
class Place {
 public:
  explicit Place(const CommandTable& table) : table_(table) {}

  void pass(const std::string& word) {
    if (option != nullptr) {
      keep(*option, word);
      option = nullptr;
    } else if (word == "--" && !onlyArguments) {
      onlyArguments = true;
    } else if (word.starts_with("-") && !onlyArguments) {
      const std::size_t equals = word.find('=');
      const Parameter* named = optionNamed(word.substr(0, equals));
      if (named == nullptr) return;
      if (equals != std::string::npos) {
        keep(*named, word.substr(equals + 1));
      } else if (takesValue(named)) {
        option = named;
      } else {
        keep(*named, "");
      }
    } else if (command != nullptr) {
      ++arguments;
    } else {
      const auto named = std::ranges::find(table_.commands, word, &Command::name);
      if (named != table_.commands.end()) command = &*named;
    }
  }
  [[nodiscard]] const Parameter* optionNamed(const std::string& name) const {
    const Parameter* own = command != nullptr ? find(command->options, name) : nullptr;
    return own != nullptr ? own : find(table_.globalOptions, name);
  }

  const Command* command = nullptr;
  /// Of the command.
  std::size_t arguments = 0;
  /// The option whose value is being typed.
  const Parameter* option = nullptr;
  bool onlyArguments = false;

 private:
  void keep(const Parameter& parameter, const std::string& value) const {
    const bool isGlobal = find(table_.globalOptions, parameter.name) == &parameter;
    if (isGlobal && complaint(parameter.values, value).empty()) store(parameter.target, value);
  }

  const CommandTable& table_;
};

/// Collects what begins as the word does.
class Candidates {
 public:
  /// Each candidate for what stands behind `kept` is offered with that in front.
  explicit Candidates(const std::string& word, std::size_t kept = 0)
      : kept_(word.substr(0, kept)), word_(word.substr(kept)) {}

  void add(const std::string& candidate, const std::string& description = "") {
    if (!candidate.starts_with(word_)) return;
    text_ += kept_ + candidate + (description.empty() ? "" : "\t" + description) + "\n";
  }
  void add(const std::vector<Note>& notes) {
    for (const Note& note : notes) add(note.name, note.text);
  }
  void add(const std::vector<Parameter>& options) {
    for (const Parameter& option : options) add(option.name, option.description);
  }
  void add(const Values& values, const std::function<std::vector<Note>(Listed)>& identifiers) {
    for (const std::string& choice : values.choices) add(choice);
    if (values.suggestions) {
      for (const std::string& suggestion : values.suggestions()) add(suggestion);
    }
    if (values.identifiers != Listed::nothing) {
      for (const Note& note : identifiers(values.identifiers)) {
        if (!note.name.starts_with('-')) add(note.name, note.text);  // it would be an option
      }
    }
    if (values.isFile) text_ += ":files\n";
  }

  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  const std::string kept_;
  const std::string word_;
  std::string text_;
};

/// Where the part of a value begins that is being typed: of several, the last.
std::size_t typedFrom(const std::string& word, std::size_t value, const Values& values) {
  const std::size_t comma = values.ofSeveral ? word.rfind(',') : std::string::npos;
  return comma == std::string::npos ? value : comma + 1;
}

}  // namespace

std::string completions(const CommandTable& table, const std::vector<std::string>& words,
                        const std::function<std::vector<Note>(Listed)>& identifiers) {
  const std::string word = words.empty() ? "" : words.back();
  Place place(table);
  for (std::size_t i = 1; i + 1 < words.size(); ++i) place.pass(words[i]);
  const Parameter* option = place.option;
  std::size_t value = 0;
  const bool isOption = word.starts_with("-") && !place.onlyArguments && option == nullptr;
  if (isOption && word.find('=') != std::string::npos) {
    value = word.find('=') + 1;
    option = place.optionNamed(word.substr(0, value - 1));
    if (!takesValue(option)) return "";
  }
  if (option != nullptr) {
    Candidates candidates(word, typedFrom(word, value, option->values));
    candidates.add(option->values, identifiers);
    return candidates.text();
  }
  Candidates candidates(word);
  if (isOption) {
    if (place.command != nullptr) candidates.add(place.command->options);
    candidates.add(table.globalOptions);
    for (const Note& each : parserOptions()) {
      candidates.add(each.name.substr(each.name.find("--")), each.text);
    }
  } else if (place.command == nullptr) {
    for (const Command& command : table.commands) candidates.add(command.name, command.description);
  } else if (place.arguments < place.command->arguments.size()) {
    candidates.add(place.command->arguments[place.arguments].values, identifiers);
  }
  return candidates.text();
}

}  // namespace orvo::tool
