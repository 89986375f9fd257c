// What a process has that the library must leave as it is.
#pragma once

#include <signal.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <locale>
#include <map>
#include <string>

namespace orvo::soak {

inline std::string signalsIn(const sigset_t& set) {
  std::string numbers;
  for (int signal = 1; signal < NSIG; ++signal) {
    if (sigismember(&set, signal) == 1) numbers += std::to_string(signal) + " ";
  }
  return numbers;
}

/// What the library must leave alone, by name.
inline std::map<std::string, std::string> surroundings() {
  std::map<std::string, std::string> all{
      {"the locale", std::setlocale(LC_ALL, nullptr)},
      {"the decimal point", std::localeconv()->decimal_point},
      {"the locale of streams",
       {1, std::use_facet<std::numpunct<char>>(std::locale()).decimal_point()}},
      {"the zone", std::string(tzname[0]) + " " + tzname[1] + " " + std::to_string(timezone)},
      {"the folder", std::filesystem::current_path()}};
  for (char** variable = environ; *variable != nullptr; ++variable) {
    all["the environment"].append(*variable).append("\n");
  }
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0) continue;
    // The two kinds of handlers share their place.
    all["signal " + std::to_string(signal)] =
        std::to_string(reinterpret_cast<std::uintptr_t>(action.sa_handler)) + " " +
        std::to_string(action.sa_flags) + " " + signalsIn(action.sa_mask);
  }
  sigset_t blocked{};
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  all["blocked signals"] = signalsIn(blocked);
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  all["the limit of descriptors"] = std::to_string(files.rlim_cur);
  return all;
}

struct CommaNumbers final : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

/// A locale that writes 1000.5 as "1.000,5": C's made here, C++'s by hand.
/// Returns what is missing for that, or nothing.
inline std::string enterCommaLocale() {
  const std::string folder =
      std::filesystem::temp_directory_path() / ("orvo-app-locales-" + std::to_string(getpid()));
  const std::string make = "mkdir -p " + folder + " && localedef -i de_DE -f UTF-8 " + folder +
                           "/de_DE.UTF-8 2>/dev/null";
  if (std::system(make.c_str()) != 0) return "needs localedef and its sources (locales)";
  setenv("LOCPATH", folder.c_str(), 1);
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) return "no locale with a comma";
  std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
  std::filesystem::remove_all(folder);
  return std::strtod("1,5", nullptr) == 1.5 ? "" : "the locale has no comma";
}

}  // namespace orvo::soak
