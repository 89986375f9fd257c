#include <OrvoAPI/Context/Client.h>
#include <tool/Arguments.h>
#include <tool/Files.h>
#include <tool/Nearest.h>
#include <tool/Profiles.h>
#include <tool/ValueCheck.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace orvo::tool {

namespace {

constexpr std::string_view kSpaces = " \t\r";
constexpr std::size_t kLargestFile = std::size_t{1} << 20;

std::string trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kSpaces);
  if (begin == std::string_view::npos) return "";
  return std::string(text.substr(begin, text.find_last_not_of(kSpaces) + 1 - begin));
}

/// Reads the file line by line.
class Reader {
 public:
  explicit Reader(std::string path) : path_(std::move(path)) {}

  Profiles read(const std::string& content) {
    std::istringstream stream(content);
    for (std::string line; std::getline(stream, line);) {
      ++line_;
      const std::string text = trimmed(line);
      if (text.empty() || text[0] == '#') continue;
      text[0] == '[' ? begin(text) : set(text);
    }
    const auto lacksAPI = [](const Profile& profile) { return profile.api.empty(); };
    const auto found = std::ranges::find_if(profiles_.all, lacksAPI);
    if (found != profiles_.all.end()) refuse("[" + found->name + "] has no api");
    const bool isKnown =
        std::ranges::find(profiles_.all, profiles_.used, &Profile::name) != profiles_.all.end();
    if (!profiles_.used.empty() && !isKnown) {
      refuse("there is no profile \"" + profiles_.used + "\" to use");
    }
    return std::move(profiles_);
  }

 private:
  [[noreturn]] void refuse(const std::string& complaint) const {
    throw WrongUsage(path_ + ":" + std::to_string(line_) + ": " + complaint);
  }
  void check(const Values& values, const std::string& text) const {
    const std::string wrong = complaint(values, text);
    if (!wrong.empty()) refuse(wrong);
  }
  void begin(const std::string& text) {
    if (text.back() != ']') refuse("a profile begins with a line like [name]");
    const std::string name = trimmed(std::string_view(text).substr(1, text.size() - 2));
    check(profileNames(), name);
    if (std::ranges::find(profiles_.all, name, &Profile::name) != profiles_.all.end()) {
      refuse("there is a profile [" + name + "] already");
    }
    profiles_.all.push_back({.name = name});
  }
  void set(const std::string& text) {
    const std::size_t equals = text.find('=');
    const std::string key = trimmed(std::string_view(text).substr(0, equals));
    const std::string value =
        equals == std::string::npos ? "" : trimmed(std::string_view(text).substr(equals + 1));
    Profile* const profile = profiles_.all.empty() ? nullptr : &profiles_.all.back();
    if (profile == nullptr && key == "use") {
      profiles_.used = value;
    } else if (profile != nullptr && (key == "api" || key == "resources")) {
      check(baseURLs(), value);
      (key == "api" ? profile->api : profile->resources) = value;
    } else if (profile != nullptr && key == "client") {
      check(clientNames(), value);
      profile->client = value;
    } else {
      refuse("\"" + key + "\" means nothing here");
    }
  }

  const std::string path_;
  Profiles profiles_;
  int line_ = 0;
};

std::string fileText(const Profiles& profiles) {
  std::string text = "# Services that orvo knows by name: see orvo help profile.\n";
  const auto line = [&](const char* key, const std::string& value) {
    if (!value.empty()) text.append(key).append(" = ").append(value).append("\n");
  };
  line("use", profiles.used);
  for (const Profile& profile : profiles.all) {
    text += "\n[" + profile.name + "]\n";
    line("api", profile.api);
    line("resources", profile.resources);
    line("client", profile.client);
  }
  return text;
}

}  // namespace

const Profile& Profiles::named(const std::string& name) const {
  const auto found = std::ranges::find(all, name, &Profile::name);
  if (found != all.end()) return *found;
  std::vector<std::string> names;
  for (const Profile& profile : all) names.push_back(profile.name);
  throw WrongUsage("there is no profile \"" + name + "\"" + didYouMean(nearest(name, names)));
}

std::optional<std::string> profilesPath() {
  const auto folder = [](const char* name) {
    const char* value = std::getenv(name);
    // One that is not absolute does not count.
    return std::string(value != nullptr && *value == '/' ? value : "");
  };
  const std::string configuration = folder("XDG_CONFIG_HOME"), home = folder("HOME");
  if (!configuration.empty()) return configuration + "/orvo/profiles";
  if (!home.empty()) return home + "/.config/orvo/profiles";
  return std::nullopt;
}

Profiles readProfiles() {
  const auto path = profilesPath();
  const auto content = path ? readRegularFile(*path, kLargestFile) : std::nullopt;
  return content ? Reader(*path).read(*content) : Profiles{};
}

Profiles changeProfiles(const std::function<void(Profiles&)>& change) {
  const auto path = profilesPath();
  if (!path) throw WrongUsage("no folder for profiles: neither XDG_CONFIG_HOME nor HOME is set");
  Profiles profiles;
  rewriteFile(*path, kLargestFile, [&](const std::optional<std::string>& content) {
    if (content) profiles = Reader(*path).read(*content);
    change(profiles);
    return fileText(profiles);
  });
  return profiles;
}

Values profileNames() {
  const auto isName = [](const std::string& text) {
    const char* const letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
    return !text.empty() && text.size() <= 64 && text[0] != '-' && text != "none" &&
           text.find_first_not_of(letters) == std::string::npos;
  };
  return {.name = "NAME",
          .accepts = isName,
          .wanted = "a name of letters, digits, \"-\", \"_\" and \".\", other than \"none\""};
}

std::vector<std::string> knownProfiles() {
  std::vector<std::string> names;
  try {
    for (const Profile& profile : readProfiles().all) names.push_back(profile.name);
  } catch (const WrongUsage&) {
    names.clear();
  }
  return names;
}

Values clientNames() { return anyOf(caseNames<Client>()); }

}  // namespace orvo::tool
