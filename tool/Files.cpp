#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <tool/Files.h>
#include <tool/ValueCheck.h>
#include <tool/Wording.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <thread>

namespace orvo::tool {

namespace {

[[noreturn]] void refuse(const std::string& name, const std::string& reason) {
  throw WrongUsage(name + ": " + reason);
}
[[noreturn]] void refuse(const std::string& name) { refuse(name, std::strerror(errno)); }

/// Closes it at the end.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int number() const { return number_; }

 private:
  const int number_;
};

/// Keeps others who change files of the folder away until the descriptor is closed.
void lock(const Descriptor& folder, const std::string& path) {
  using namespace std::chrono_literals;
  const auto end = std::chrono::steady_clock::now() + 10s;
  while (flock(folder.number(), LOCK_EX | LOCK_NB) != 0) {
    // Some network file systems lock no folders: there, as before there were locks.
    if (errno != EWOULDBLOCK && errno != EINTR) return;
    if (std::chrono::steady_clock::now() >= end) {
      refuse(path, "another program has been changing it for 10 seconds");
    }
    std::this_thread::sleep_for(10ms);
  }
}

/// Where the symbolic link leads, also if there is nothing yet.
std::string followed(const std::string& path) {
  constexpr int kMostLinks = 40;
  std::filesystem::path place = path;
  for (int links = 0; links < kMostLinks; ++links) {
    std::error_code error;
    const auto target = std::filesystem::read_symlink(place, error);
    if (error) return place;
    place = place.parent_path() / target;
  }
  errno = ELOOP;
  refuse(path);
}

void replace(const std::string& path, const std::string& text) {
  // A name that nobody can have taken, or foreseen.
  std::string made = std::filesystem::path(path).replace_filename(".orvo-XXXXXX");
  const int file = mkostemp(made.data(), O_CLOEXEC);
  if (file < 0) refuse(path);
  const bool isWritten =
      write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
      fsync(file) == 0;
  const bool isDone = close(file) == 0 && isWritten && rename(made.c_str(), path.c_str()) == 0;
  if (isDone) return;
  const int reason = errno;
  unlink(made.c_str());
  errno = reason;
  refuse(path);
}

}  // namespace

std::string readDescriptor(int descriptor, const std::string& name, std::size_t most) {
  std::string content;
  std::array<char, 65536> buffer;
  while (true) {
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EAGAIN) {
      pollfd event{descriptor, POLLIN, 0};
      poll(&event, 1, -1);
    } else if (count < 0 && errno != EINTR) {
      refuse(name);
    }
    if (count < 0) continue;
    if (count == 0) return content;
    content.append(buffer.data(), static_cast<std::size_t>(count));
    if (content.size() > most) {
      refuse(name, "holds more than " + countText(static_cast<std::int64_t>(most)) + " bytes");
    }
  }
}

std::string readFile(const std::string& path, std::size_t most) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (file.number() < 0) refuse(path);
  return readDescriptor(file.number(), path, most);
}

std::optional<std::string> readRegularFile(const std::string& path, std::size_t most) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  if (file.number() < 0 && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;
  struct stat status {};
  if (file.number() < 0 || fstat(file.number(), &status) != 0) refuse(path);
  if (!S_ISREG(status.st_mode)) refuse(path, "is not a regular file");
  return readDescriptor(file.number(), path, most);
}

std::string requireRegularFile(const std::string& path, std::size_t most) {
  auto content = readRegularFile(path, most);
  if (!content) refuse(path, std::strerror(ENOENT));
  return *std::move(content);
}

void replaceFile(const std::string& path, const std::string& text) {
  requireReplaceable(path);
  replace(path, text);
}

void requireReplaceable(const std::string& path) {
  const std::filesystem::path place = path;
  const auto folder = place.has_parent_path() ? place.parent_path() : ".";
  struct stat status {};
  const bool isThere = lstat(path.c_str(), &status) == 0;
  if (!isThere && errno != ENOENT) refuse(path);
  if (isThere && S_ISLNK(status.st_mode)) refuse(path, "is a symbolic link");
  if (isThere && !S_ISREG(status.st_mode)) refuse(path, "is not a regular file");
  if (access(folder.c_str(), W_OK | X_OK) != 0) refuse(path);
  if (isThere && ((status.st_mode & S_IWUSR) == 0 || access(path.c_str(), W_OK) != 0)) {
    refuse(path, "is not writable");
  }
}

void rewriteFile(const std::string& path, std::size_t most,
                 const std::function<std::string(const std::optional<std::string>&)>& change) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), error);
  const std::string place = followed(path);
  const std::string folderPath = std::filesystem::path(place).parent_path();
  const Descriptor folder(open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.number() < 0) refuse(path);
  lock(folder, path);
  const auto content = readRegularFile(place, most);
  // The superuser, too, has asked for it to be left alone by taking the permission away.
  struct stat status {};
  const bool isThere = content && stat(place.c_str(), &status) == 0;
  if (isThere && ((status.st_mode & S_IWUSR) == 0 || access(place.c_str(), W_OK) != 0)) {
    refuse(path, "is not writable");
  }
  replace(place, change(content));
}

}  // namespace orvo::tool
