#include <fuzz/FuzzTarget.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// Runs a target over the files of the folders that are named, in place of the fuzzer.
int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int index = 1; index < argc; ++index) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[index])) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  for (const auto& file : files) {
    std::ifstream stream(file, std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(stream), {}};
    // Where a fault ends the program, the last line names the input.
    std::fprintf(stderr, "%s\n", file.filename().c_str());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  std::fprintf(stderr, "%zu inputs\n", files.size());
  return files.empty() ? 1 : 0;
}
