#include <tool/TrustedFile.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>

namespace orvo::tool {

std::optional<std::string> trustedFile() {
  const char* const file = std::getenv("SSL_CERT_FILE");
  if (file == nullptr || *file == '\0') return std::nullopt;
  return file;
}

std::string faultOfTrustedFile(const std::string& file) {
  constexpr std::uintmax_t kLargest = std::uintmax_t{64} << 20;
  const std::string name = "SSL_CERT_FILE names " + file;
  std::error_code error;
  if (!std::filesystem::exists(file, error)) return name + ", which is not there";
  if (!std::filesystem::is_regular_file(file, error)) return name + ", which is no regular file";
  const bool isLarge = std::filesystem::file_size(file, error) > kLargest || error;
  return isLarge ? name + ", which is too large for certificates" : "";
}

}  // namespace orvo::tool
