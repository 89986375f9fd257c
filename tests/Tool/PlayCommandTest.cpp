#include <sys/stat.h>
#include <tests/Tool/Fixtures.h>
#include <tests/support/Outcome.h>
#include <tool/Players.h>

#include <filesystem>

namespace orvo::tool {
namespace {

/// A folder in PATH with a program that takes a player's place.
class PlayCommand : public testing::Test {
 protected:
  PlayCommand() { std::filesystem::create_directory(folder_); }
  ~PlayCommand() override { std::filesystem::remove_all(folder_); }

  void makePlayer(const std::string& name, const std::string& script) {
    std::ofstream(folder_ + "/" + name) << "#!/bin/bash\ncd " << folder_ << "\n" << script;
    chmod((folder_ + "/" + name).c_str(), 0700);
  }
  /// `play` with the arguments, as a line of a script that stands in the folder.
  [[nodiscard]] ToolRun play(const std::string& arguments, const std::string& before = "",
                             const std::string& after = "") const {
    return runLine("cd " + folder_ + "; " + before + "PATH=:bin:" + folder_ +
                   ":/usr/bin $orvo --demo play " + arguments + after);
  }
  /// What a player has written there.
  [[nodiscard]] std::string noted(const std::string& name) const {
    std::ifstream stream(folder_ + "/" + name);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  const std::string folder_ = testing::TempDir() + "orvo-player-" + std::to_string(getpid());
};

TEST_F(PlayCommand, HandsTheAddressOverWhereNobodyElseLooks) {
  for (const Player& player : players()) {
    const std::string name(player.name);
    makePlayer(
        name,
        "tr '\\0' '\\n' </proc/$$/cmdline >arguments; tr '\\0' '\\n' </proc/$$/environ >vars\n"
        "grep SigIgn /proc/$$/status >signals\n"
        "ls /proc/$$/fd >descriptors\n"
        "cat /proc/self/fd/3 /proc/self/fd/3 >list; echo playing\n");
    const ToolRun run = play("welcome --player " + name);
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(run.output, "playing\n");
    EXPECT_EQ(run.error, "");
    std::string arguments = "/bin/bash\n" + folder_ + "/" + name + "\n";
    for (const std::string& argument : player.arguments) arguments += argument + "\n";
    EXPECT_EQ(noted("arguments"), arguments);
    EXPECT_EQ(noted("vars").find(kToken), std::string::npos);
    EXPECT_EQ(noted("descriptors"), "0\n1\n2\n255\n3\n") << "255 is bash's own";
    const std::string signals = noted("signals");
    const auto ignored = std::stoull(signals.substr(signals.find('\t')), nullptr, 16);
    EXPECT_EQ(ignored & 1U << (SIGPIPE - 1), 0U);
    const std::string list = noted("list");
    EXPECT_NE(list.find("/hls/welcome/" + std::string(kToken)), std::string::npos);
    EXPECT_EQ(list.substr(0, list.size() / 2), list.substr(list.size() / 2)) << "read twice";
  }
  EXPECT_EQ(players()[0].list("A\nB\x1b[m", "http://a/"),
            "#EXTM3U\n#EXTINF:-1,A B�[m\nhttp://a/\n");
  EXPECT_EQ(players()[2].list("", "http://a/'b"), "ffconcat version 1.0\nfile 'http://a/'\\''b'\n");
}

TEST_F(PlayCommand, SaysHowThePlayerEnded) {
  makePlayer("mpv", "echo \"$1\" >&2; exit 7");
  ToolRun run = play("welcome");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error, "--ytdl=no\norvo: mpv ended with status 7\n");
  makePlayer("mpv", "kill -USR1 $$");
  EXPECT_EQ(play("welcome").error, "orvo: mpv was ended by signal 10 (User defined signal 1)\n");
  makePlayer("mpv", "echo noise");
  run = play("welcome --json");
  EXPECT_EQ(run.output, "{\"player\":\"mpv\"}\n");
  EXPECT_EQ(run.error, "noise\n");
  makePlayer("mpv", "touch started");
  run = play("show-workbench");
  EXPECT_EQ(run.error,
            "orvo: this is a page: nothing that can be played, but orvo page show-workbench says "
            "what is on it\n");
  EXPECT_EQ(noted("started"), "");
}

TEST_F(PlayCommand, SaysWhatToInstallWithoutAskingTheService) {
  const std::string line = "PATH=/none:tool $orvo play welcome --api http://127.0.0.1:1/";
  ToolRun run = runLine(line);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.error,
            "orvo: there is no player in PATH (mpv, vlc, ffplay); install mpv or vlc or ffmpeg, or "
            "give what orvo stream prints to another player\n");
  run = runLine(line + " --player ffplay --json");
  EXPECT_NE(run.error.find("ffplay is not in PATH; install ffmpeg"), std::string::npos);
}

TEST_F(PlayCommand, EndsWithThePlayerWhenSignalled) {
  const std::string ended = "wait $!; echo $?; read pid <pid; kill -0 $pid 2>&- || echo no orphan";
  const auto begin = [&](const std::string& signal, int status) {
    makePlayer("mpv",
               "exec python3 -c 'import os, signal, sys\n"
               "signal.pthread_sigmask(signal.SIG_BLOCK, [signal." +
                   signal +
                   "])\n"
                   "open(\"pid\", \"w\").write(str(os.getpid()) + \"\\n\")\n"
                   "open(\"ready\", \"w\").write(\"\\n\")\n"
                   "signal.sigwait([signal." +
                   signal +
                   "])\n"
                   "sys.exit(" +
                   std::to_string(status) + ")'\n");
  };
  begin("SIGTERM", 0);
  const auto end = [&](const std::string& before, const std::string& target) {
    return play("welcome", "mkfifo ready 2>&-; " + before,
                " & read <ready; kill " + target + "$!; " + ended)
        .output;
  };
  EXPECT_EQ(end("", "-TERM "), "143\nno orphan\n");
  // As the terminal does it: to the player and the tool.
  begin("SIGINT", 4);
  EXPECT_EQ(end("set -m; ", "-INT -"), "130\nno orphan\n");
  begin("SIGINT", 0);
  EXPECT_EQ(end("set -m; ", "-INT -"), "0\nno orphan\n");
}

}  // namespace
}  // namespace orvo::tool
