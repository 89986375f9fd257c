// Runs a command and prints the peak of its resident memory, in KB. Small, because the kernel also
// counts what this process itself was before the command replaced it.
//
// usage: peak COMMAND…

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

int main(int, char** argv) {
  const pid_t child = fork();
  if (child == 0) {
    // The command's own words do not belong between the rows.
    if (std::freopen("/dev/null", "w", stdout) != nullptr) execvp(argv[1], argv + 1);
    _exit(127);
  }
  int status = 1;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) < 0 || status != 0) return 1;
  std::printf("%ld\n", usage.ru_maxrss);
}
