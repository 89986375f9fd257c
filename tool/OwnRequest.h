#pragma once

#include <OrvoAPI/HTTP/URLRequest.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <tool/Tool.h>

#include <string>
#include <string_view>

namespace orvo::tool {

/// What a request is for that the tool makes itself, without a fetch of the library's.
struct OwnRequest {
  /// As errors and reports name it; of static storage.
  std::string_view operation;
  std::string identifier{};
  /// As reports may show it; the URL's when it is empty.
  std::string path{};
};

/// Waits for the answer, while a line says `label`, and tells whoever observes the run. A failure
/// says what was asked for.
[[nodiscard]] Result<HTTPResult> fetch(Tool& tool, NetworkDataProvider& network,
                                       const URLRequest& request, const OwnRequest& own,
                                       const std::string& label);

/// What stands for a text that tells a token.
inline constexpr std::string_view kHiddenText = "***";

}  // namespace orvo::tool
