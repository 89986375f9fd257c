#include <sys/wait.h>
#include <tool/Arguments.h>
#include <tool/ChildProcess.h>
#include <tool/Commands.h>
#include <tool/Players.h>
#include <tool/Text.h>
#include <tool/Wording.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace orvo::tool {

namespace {

struct WrittenPlay {
  std::string id{};
  std::optional<std::string> player{};
};

/// Why there is nothing to see.
struct PlayError {
  std::string text;
  [[nodiscard]] std::string description() const { return text; }
};

/// While it lives, signals that would end the tool are noted, so that it outlives the player. The
/// terminal sends its own to both; those that are meant for the tool alone are passed on. There is
/// one at most.
class PlayerGuard {
 public:
  PlayerGuard() {
    struct sigaction action {};
    action.sa_handler = [](int signal) {
      signal_ = signal;
      if (signal != SIGINT && signal != SIGQUIT && player_ > 0) kill(player_, signal);
    };
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      sigaction(kSignals[i], nullptr, &before_[i]);
      if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
  }
  ~PlayerGuard() {
    player_ = 0;
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  }
  PlayerGuard(const PlayerGuard&) = delete;
  PlayerGuard& operator=(const PlayerGuard&) = delete;

  void watch(pid_t player) {
    player_ = player;
    const int early = signal_;
    if (early == SIGTERM || early == SIGHUP) kill(player, early);
  }
  /// The last one that came, or 0.
  [[nodiscard]] int signal() const { return signal_; }

 private:
  static constexpr std::array kSignals{SIGINT, SIGQUIT, SIGTERM, SIGHUP};
  static inline std::atomic<pid_t> player_ = 0;
  static inline std::atomic<int> signal_ = 0;
  static_assert(std::atomic<pid_t>::is_always_lock_free);

  std::array<struct sigaction, kSignals.size()> before_{};
};

std::string missing(const std::optional<std::string>& name) {
  std::vector<std::string> names;
  std::string packages;
  for (const Player& player : players()) {
    if (name && player.name != *name) continue;
    names.emplace_back(player.name);
    packages += (packages.empty() ? "" : " or ") + std::string(player.package);
  }
  return (name ? *name + " is not in PATH" : "there is no player in PATH (" + joined(names) + ")") +
         "; install " + packages + ", or give what orvo stream prints to another player";
}

/// How it went; nothing when all was well.
std::optional<std::string> complaint(const FoundPlayer& found, std::optional<int> status) {
  const std::string name(found.player->name);
  if (!status) return name + " was lost sight of";
  if (WIFSIGNALED(*status)) {
    return name + " was ended by signal " + std::to_string(WTERMSIG(*status)) + " (" +
           strsignal(WTERMSIG(*status)) + ")";
  }
  if (WEXITSTATUS(*status) == 0) return std::nullopt;
  return name + " ended with status " + std::to_string(WEXITSTATUS(*status));
}

/// Plays it to its end. Returns how it went.
std::optional<std::string> play(const FoundPlayer& found, const Video& video, const URL& stream,
                                int output) {
  const MemoryFile list(found.player->list(video.title, stream.text()));
  if (list.descriptor() < 0) return std::string("no memory for a list: ") + std::strerror(errno);
  std::optional<int> status;
  int signal = 0;
  {
    PlayerGuard guard;
    ChildProcess player(found.path, found.player->arguments,
                        {STDIN_FILENO, output, STDERR_FILENO, list.descriptor()});
    if (!player.isRunning()) return found.path + ": " + std::strerror(errno);
    guard.watch(player.identifier());
    status = player.wait();
    signal = guard.signal();
  }
  const auto wrong = complaint(found, status);
  // Whoever interrupts the player knows why it ended.
  if (signal != 0 && (wrong || signal != SIGINT)) raise(signal);
  return wrong;
}

/// The video of that identifier. A page is refused: it would read as a video, but there is no
/// stream.
Result<Video> fetchVideo(Tool& tool, const Context& context, const std::string& id) {
  const auto item = tool.wait(context.fetchContentItem(id), "fetching the video");
  if (const AnyError* error = item.error()) return Failure{*error};
  if (const Video* video = (*item.value())->video()) return *video;
  return Failure{PlayError{"this is a page: nothing that can be played, but orvo page " + id +
                           " says what is on it"}};
}

int runPlay(Tool& tool, const WrittenPlay& written) {
  const auto found = findPlayer(written.player);
  if (!found) return tool.fail(PlayError{missing(written.player)});
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  const auto video = fetchVideo(tool, **context.value(), written.id);
  if (const AnyError* error = video.error()) return tool.fail(*error);
  const bool json = tool.options().json;
  if (video.value()->playbackStatus != Video::PlaybackStatus::available && !json) {
    printDiagnostic("orvo: the service says that it is not available now (" +
                    printable(video.value()->status.label) + "); trying nevertheless\n");
  }
  // With JSON, what the player prints must not stand before the document.
  const auto wrong = play(*found, *video.value(), (*context.value())->videoURL(written.id),
                          json ? STDERR_FILENO : STDOUT_FILENO);
  if (wrong) return tool.fail(PlayError{*wrong});
  return json ? tool.answer(Json::object({{"player", std::string(found->player->name)}})) : 0;
}

}  // namespace

void addPlayCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenPlay>();
  std::vector<std::string> names;
  for (const Player& player : players()) names.emplace_back(player.name);
  commands.push_back(
      {.name = "play",
       .description = "Play a video with a player that is installed",
       .details =
           "The player gets the stream's address through a descriptor: the address holds a token, "
           "and arguments can be seen by every user of the device. The tool ends with the player, "
           "and with status 1 when the player does not end with 0.",
       .arguments = {identifier(written->id, "The video's identifier", Listed::videos)},
       .options = {{.name = "--player",
                    .description = "The player",
                    .values = anyOf(names),
                    .target = &written->player,
                    .fallback = "the first of them that is in PATH"}},
       .examples = {"orvo --demo play welcome", "orvo --demo play welcome --player mpv"},
       .synonyms = {"watch", "open"},
       .needsNetwork = true,
       .run = [written](Tool& tool) { return runPlay(tool, *written); }});
}

}  // namespace orvo::tool
