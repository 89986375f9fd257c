#include <tool/ChildProcess.h>
#include <tool/Players.h>
#include <tool/Text.h>

namespace orvo::tool {

namespace {

/// The title is a stranger's text.
std::string m3u(std::string_view title, std::string_view address) {
  return "#EXTM3U\n#EXTINF:-1," + printable(title) + "\n" + std::string(address) + "\n";
}

/// What ffplay can read a list as.
std::string concatenation(std::string_view, std::string_view address) {
  std::string quoted;
  for (const char letter : address) {
    letter == '\'' ? quoted += "'\\''" : quoted += letter;
  }
  return "ffconcat version 1.0\nfile '" + quoted + "'\n";
}

}  // namespace

const std::vector<Player>& players() {
  // A path, not a bare descriptor: some open the list more than once. The address stays out of the
  // arguments of programs that they start, and out of what they print: of a stream that cannot be
  // opened most say nothing else, so that mpv and ffplay say nothing.
  static const std::string file = "/proc/self/fd/3";
  static const std::vector<Player> all{
      {.name = "mpv",
       .package = "mpv",
       .arguments = {"--ytdl=no", "--msg-level=all=no", "--playlist=" + file},
       .list = m3u},
      {.name = "vlc",
       .package = "vlc",
       .arguments = {"--quiet", "--no-one-instance", "--play-and-exit", file},
       .list = m3u},
      {.name = "ffplay",
       .package = "ffmpeg",
       .arguments = {"-hide_banner", "-loglevel", "quiet", "-autoexit", "-protocol_whitelist",
                     "file,http,https,httpproxy,tcp,tls,crypto", "-f", "concat", "-safe", "0", "-i",
                     file},
       .list = concatenation}};
  return all;
}

std::optional<FoundPlayer> findPlayer(const std::optional<std::string>& name) {
  for (const Player& player : players()) {
    if (name && player.name != *name) continue;
    if (auto path = programNamed(player.name)) return FoundPlayer{&player, *std::move(path)};
  }
  return std::nullopt;
}

}  // namespace orvo::tool
