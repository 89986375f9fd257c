#include <sys/prctl.h>
#include <sys/resource.h>
#include <tool/picture/Picture.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace {

using namespace orvo::picture;

/// What a broken decoder may take before it is ended.
void limitResources() {
  const auto limit = [](auto resource, rlim_t most) {
    const rlimit both{most, most};
    setrlimit(resource, &both);
  };
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_CPU, 10);
  limit(RLIMIT_FSIZE, rlim_t{32} << 20);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  limit(RLIMIT_AS, rlim_t{512} << 20);
#endif
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
}

std::string input() {
  std::string text;
  char buffer[65536];
  while (true) {
    const ssize_t got = read(STDIN_FILENO, buffer, sizeof(buffer));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return text;
    text.append(buffer, static_cast<std::size_t>(got));
  }
}

bool print(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

/// `orvo-picture detect` prints the style in which the terminal shows pictures. `orvo-picture draw
/// STYLE COLUMNS ROWS CELL_WIDTH CELL_HEIGHT` reads an image file and prints what shows it. Status
/// 1: what it prints says why it does not.
int main(int argc, char** argv) {
  limitResources();
  const std::string_view action = argc > 1 ? argv[1] : "";
  if (action == "detect") return print(detectedStyle()) ? 0 : 2;
  if (action != "draw" || argc != 7) return 2;
  const Canvas canvas{.style = argv[2],
                      .columns = std::atoi(argv[3]),
                      .rows = std::atoi(argv[4]),
                      .cellWidth = std::atoi(argv[5]),
                      .cellHeight = std::atoi(argv[6])};
  try {
    return print(drawn(input(), canvas)) ? 0 : 2;
  } catch (const Unfit& unfit) {
    print(unfit.what());
    return 1;
  }
}
