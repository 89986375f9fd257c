#pragma once

#include <optional>
#include <string>

namespace orvo::tool {

/// The file of authorities that SSL_CERT_FILE names; nothing when the system's are to be trusted.
[[nodiscard]] std::optional<std::string> trustedFile();

/// What keeps the file from being read, such as `SSL_CERT_FILE names x, which is no regular file`;
/// empty when nothing does. Reading such a file might never end.
[[nodiscard]] std::string faultOfTrustedFile(const std::string& file);

}  // namespace orvo::tool
