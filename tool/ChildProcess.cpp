#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <tool/ChildProcess.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace orvo::tool {

namespace {

bool isProgram(const std::string& path) {
  struct stat file {};
  return stat(path.c_str(), &file) == 0 && S_ISREG(file.st_mode) && access(path.c_str(), X_OK) == 0;
}

/// What the start of a program asks of the system.
class SpawnSettings {
 public:
  explicit SpawnSettings(const std::vector<int>& descriptors) {
    posix_spawn_file_actions_init(&actions_);
    int target = 0;
    for (const int descriptor : descriptors) {
      posix_spawn_file_actions_adddup2(&actions_, descriptor, target++);
    }
    posix_spawn_file_actions_addclosefrom_np(&actions_, target);
    posix_spawnattr_init(&attributes_);
    // The tool itself looks away from it; handlers of others do not outlive the start anyway.
    sigset_t changed;
    sigemptyset(&changed);
    sigaddset(&changed, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes_, &changed);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  [[nodiscard]] const posix_spawn_file_actions_t* actions() const { return &actions_; }
  [[nodiscard]] const posix_spawnattr_t* attributes() const { return &attributes_; }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

}  // namespace

std::optional<std::string> programNamed(std::string_view name) {
  const char* value = std::getenv("PATH");
  for (std::string_view rest = value != nullptr ? value : ""; !rest.empty();) {
    const std::string_view folder = rest.substr(0, rest.find(':'));
    rest.remove_prefix(std::min(rest.size(), folder.size() + 1));
    std::string path = std::string(folder) + "/" + std::string(name);
    if (path.starts_with('/') && isProgram(path)) return path;
  }
  return std::nullopt;
}

MemoryFile::MemoryFile(std::string_view bytes) : descriptor_(memfd_create("orvo", MFD_CLOEXEC)) {
  while (!bytes.empty() && descriptor_ >= 0) {
    const ssize_t written = write(descriptor_, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      const int error = errno;
      close(descriptor_);
      descriptor_ = -1;
      errno = error;
    }
  }
  if (descriptor_ >= 0) lseek(descriptor_, 0, SEEK_SET);
}

MemoryFile::~MemoryFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::optional<std::string> MemoryFile::bytes(std::size_t most) const {
  struct stat file {};
  if (fstat(descriptor_, &file) != 0 || file.st_size < 0) return std::nullopt;
  const auto size = static_cast<std::size_t>(file.st_size);
  if (size > most) return std::nullopt;
  std::string text(size, '\0');
  for (std::size_t at = 0; at < size;) {
    const ssize_t got = pread(descriptor_, &text[at], size - at, static_cast<off_t>(at));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return std::nullopt;
    at += static_cast<std::size_t>(got);
  }
  return text;
}

ChildProcess::ChildProcess(const std::string& path, const std::vector<std::string>& arguments,
                           const std::vector<int>& descriptors) {
  // Whoever started the tool with its children ignored would otherwise never learn how they ended.
  std::signal(SIGCHLD, SIG_DFL);
  std::vector<char*> words{const_cast<char*>(path.c_str())};
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  const SpawnSettings settings(descriptors);
  const int error = posix_spawn(&process_, path.c_str(), settings.actions(), settings.attributes(),
                                words.data(), environ);
  if (error == 0) return;
  process_ = -1;
  errno = error;
}

ChildProcess::~ChildProcess() {
  if (process_ <= 0) return;
  kill(process_, SIGKILL);
  wait();
}

std::optional<int> ChildProcess::wait(std::optional<std::chrono::milliseconds> longest) {
  if (longest) {
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, process_, 0));
    pollfd end{handle, POLLIN, 0};
    const int ready = poll(&end, 1, static_cast<int>(longest->count()));
    if (handle >= 0) close(handle);
    if (ready <= 0) return std::nullopt;
  }
  int status = 0;
  while (waitpid(process_, &status, 0) < 0) {
    if (errno != EINTR) return std::nullopt;
  }
  process_ = -1;
  return status;
}

}  // namespace orvo::tool
