#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>

namespace orvo {

/// Where display ads come from.
struct DisplayAd {
  URL server;
  std::string network;
  std::string profile;
};

/// Reads the section "display_ads". Stateless; may be called from any thread.
struct DisplayAdParser {
  [[nodiscard]] static Result<DisplayAd> parse(const JSONObject& json);
};

}  // namespace orvo
