#include <OrvoAPI/Context/Client.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <tool/Arguments.h>
#include <tool/Nearest.h>
#include <tool/Profiles.h>
#include <tool/ValueCheck.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace orvo::tool {

namespace {

constexpr std::string_view kSpaces = " \t\r";

std::string trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kSpaces);
  if (begin == std::string_view::npos) return "";
  return std::string(text.substr(begin, text.find_last_not_of(kSpaces) + 1 - begin));
}

/// Reads the file line by line.
class Reader {
 public:
  explicit Reader(std::string path) : path_(std::move(path)) {}

  Profiles read(std::istream& stream) {
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

[[noreturn]] void refuse(const std::string& path) {
  throw WrongUsage(path + ": " + std::strerror(errno));
}

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
  if (!path || access(path->c_str(), F_OK) != 0) return {};
  std::ifstream stream(*path);
  if (!stream) refuse(*path);
  auto profiles = Reader(*path).read(stream);
  if (stream.bad()) refuse(*path);
  return profiles;
}

void writeProfiles(const Profiles& profiles) {
  const auto path = profilesPath();
  if (!path) throw WrongUsage("no folder for profiles: neither XDG_CONFIG_HOME nor HOME is set");
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(*path).parent_path(), error);
  const std::string made = *path + "." + std::to_string(getpid());
  const int file =
      open(made.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
  if (file < 0) refuse(*path);
  const std::string text = fileText(profiles);
  const bool isWritten =
      write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
      fsync(file) == 0;
  // In one step: whoever reads it meanwhile sees the file before or the file after.
  const bool isDone = close(file) == 0 && isWritten && rename(made.c_str(), path->c_str()) == 0;
  if (isDone) return;
  const int reason = errno;
  unlink(made.c_str());
  errno = reason;
  refuse(*path);
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
