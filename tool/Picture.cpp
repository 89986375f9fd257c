#include <sys/ioctl.h>
#include <sys/wait.h>
#include <tool/ChildProcess.h>
#include <tool/OwnRequest.h>
#include <tool/Picture.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

namespace orvo::tool {

namespace {

/// Far more than an image of the size that is asked for has.
constexpr std::size_t kMostImageBytes = std::size_t{8} << 20;
constexpr std::size_t kMostPictureBytes = std::size_t{32} << 20;
constexpr std::chrono::seconds kLongestDrawing{15};

/// The program that draws; nothing when it is not installed.
std::optional<std::string> program() {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto path = (self.parent_path() / ORVO_PICTURE_PROGRAM).lexically_normal();
  if (error || access(path.c_str(), X_OK) != 0) return std::nullopt;
  return path.string();
}

/// What the program prints for the arguments and the input.
Result<std::string> asked(const std::vector<std::string>& arguments, std::string_view input) {
  const auto path = program();
  if (!path) return Failure{PictureError{"orvo-picture, which draws them, is not installed"}};
  const MemoryFile in(input);
  const MemoryFile out;
  const MemoryFile ignored;
  if (in.descriptor() < 0 || out.descriptor() < 0 || ignored.descriptor() < 0) {
    return Failure{PictureError{std::strerror(errno)}};
  }
  ChildProcess drawing(*path, arguments, {in.descriptor(), out.descriptor(), ignored.descriptor()});
  if (!drawing.isRunning()) return Failure{PictureError{*path + ": " + std::strerror(errno)}};
  const auto status = drawing.wait(kLongestDrawing);
  if (!status) return Failure{PictureError{"drawing it takes too long"}};
  auto text = out.bytes(kMostPictureBytes);
  if (WIFEXITED(*status) && WEXITSTATUS(*status) == 0 && text) return *std::move(text);
  if (WIFEXITED(*status) && WEXITSTATUS(*status) == 1 && text) {
    return Failure{PictureError{*std::move(text)}};
  }
  return Failure{PictureError{"it breaks what draws it"}};
}

/// The room for a picture above so many lines and a prompt.
std::vector<std::string> room(std::size_t linesBelow) {
  winsize size{};
  ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
  const int columns = static_cast<int>(standardOutput().columns);
  const int rows = size.ws_row > 0 ? size.ws_row : 24;
  // Terminals that show images say how large their characters are; the others get a guess.
  const bool isTold = size.ws_col > 0 && size.ws_xpixel >= size.ws_col && size.ws_ypixel >= rows;
  const int width = isTold ? size.ws_xpixel / size.ws_col : 8;
  const int height = isTold ? size.ws_ypixel / rows : 16;
  const int left = rows - static_cast<int>(std::min<std::size_t>(linesBelow, 1000)) - 2;
  return {std::to_string(std::min(columns, 200)),
          std::to_string(std::clamp(left, std::min(rows / 2, 12), 40)), std::to_string(width),
          std::to_string(height)};
}

/// While it lives, signals that would end the tool only interrupt what it waits for, and the
/// terminal cannot stop it. There is one at most.
class PictureGuard {
 public:
  PictureGuard() {
    struct sigaction action {};
    action.sa_handler = [](int signal) { signal_ = signal; };
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      sigaction(kSignals[i], nullptr, &before_[i]);
      if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGTSTP);
    pthread_sigmask(SIG_BLOCK, &stop, &mask_);
  }
  ~PictureGuard() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
  }
  PictureGuard(const PictureGuard&) = delete;
  PictureGuard& operator=(const PictureGuard&) = delete;

  /// The signal that came, or 0.
  [[nodiscard]] int signal() const { return signal_; }

 private:
  static constexpr std::array kSignals{SIGINT, SIGQUIT, SIGTERM, SIGHUP};
  static inline volatile sig_atomic_t signal_ = 0;

  std::array<struct sigaction, kSignals.size()> before_{};
  sigset_t mask_{};
};

/// Ends what a picture that was cut off has begun: the control string, for kitty's protocol also
/// the image, of which a part is still to come, or the colours.
std::string_view ending(const std::string& style) {
  if (style == "kitty") return "\x1b\\\x1b_Gm=0;\x1b\\\n";
  return style == "sixel" ? "\x1b\\\n" : "\x1b[0m\n";
}

}  // namespace

void addPictureOptions(std::vector<Parameter>& options, WrittenPictures& written) {
  options.push_back(
      {.name = "--images",
       .description =
           "How to draw images: by kitty's protocol, as sixels, or as blocks of colour; auto "
           "chooses by the terminal, and draws none in a pipe, with --json or without colours",
       .values = anyOf({"auto", "kitty", "sixel", "blocks", "none"}, "HOW"),
       .target = &written.images});
  options.push_back({.name = "--no-images",
                     .description = "The same as --images none",
                     .target = &written.none,
                     .excludes = {"--images"}});
}

Result<std::string> pictureStyle(const Tool& tool, const WrittenPictures& written) {
  if (written.none || written.images == "none" || tool.options().json) return std::string("none");
  if (written.images != "auto") {
    if (written.images != "blocks") return written.images;
    const auto detected = asked({"detect"}, "");
    return detected.map([](const std::string& style) {
      return std::string(style == "blocks-256" ? "blocks-256" : "blocks");
    });
  }
  const Terminal terminal = standardOutput();
  if (!terminal.isTerminal || !terminal.colour || !program()) return std::string("none");
  return asked({"detect"}, "");
}

Result<Picture> fetchPicture(Tool& tool, const URL& image, const std::string& style,
                             std::size_t linesBelow) {
  const URLRequest request{.url = image,
                           .timeoutInterval = std::chrono::seconds(10),
                           .totalTimeoutInterval = std::chrono::seconds(20)};
  const auto fetched =
      fetch(tool, *tool.network(kMostImageBytes), request, {"fetchImage"}, "fetching the image");
  if (const AnyError* error = fetched.error()) return Failure{*error};
  const int status = fetched.value()->response.statusCode;
  if (status != 200) {
    return Failure{PictureError{"its server answered with status " + std::to_string(status)}};
  }
  std::vector<std::string> arguments{"draw", style};
  std::ranges::move(room(linesBelow), std::back_inserter(arguments));
  auto text = asked(arguments, fetched.value()->body.view());
  if (const AnyError* error = text.error()) return Failure{*error};
  return Picture{style, *std::move(text.value())};
}

void print(const Picture& picture) {
  constexpr std::size_t kPart = 4096;
  int signal = 0;
  {
    const PictureGuard interruption;
    std::string_view rest = picture.text;
    while (!rest.empty() && interruption.signal() == 0) {
      const ssize_t written = write(STDOUT_FILENO, rest.data(), std::min(rest.size(), kPart));
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) break;
      rest.remove_prefix(static_cast<std::size_t>(written));
    }
    signal = interruption.signal();
    print(signal != 0 ? ending(picture.style) : std::string(rest) + "\n");
  }
  if (signal != 0) raise(signal);
}

}  // namespace orvo::tool
