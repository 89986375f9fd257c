#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Parsing/JSONValue.h>

namespace orvo {

/// The fixed pages of information about the service.
struct Links {
  URL imprint;
  URL about;
  URL privacy;
  URL terms;
  URL contact;
  URL feedback;
};

/// Reads the section "links". Stateless; may be called from any thread.
struct LinksParser {
  [[nodiscard]] static Result<Links> parse(const JSONObject& json);
};

}  // namespace orvo
