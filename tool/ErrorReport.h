#pragma once

#include <OrvoAPI/Futures/AnyError.h>
#include <demo/Json.h>

#include <string>

namespace orvo::tool {

/// What to do with the value that an error holds. A session document holds a token.
enum class Secrets { hidden, shown };

/// `{"error": {"kind": …}}`; the keys are an interface: scripts read them.
[[nodiscard]] demo::Json errorJson(const AnyError& error, Secrets secrets = Secrets::hidden);

/// The error for people, on one line.
[[nodiscard]] std::string explanation(const AnyError& error);

}  // namespace orvo::tool
