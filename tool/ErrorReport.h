#pragma once

#include <OrvoAPI/Futures/AnyError.h>
#include <demo/Json.h>

#include <string>

namespace orvo::tool {

/// What to do with the value that an error holds. A session document holds a token.
enum class Secrets { hidden, shown };

/// `{"error": {"kind": …}}`, and beside it, when that is known, what was asked for:
/// `"subject": {"operation": …, "identifier": …}`. The keys are an interface: scripts read them.
[[nodiscard]] demo::Json errorJson(const AnyError& error, Secrets secrets = Secrets::hidden);
/// The inner object alone: `{"kind": …}`.
[[nodiscard]] demo::Json errorValue(const AnyError& error);

/// The error for people, on one line.
[[nodiscard]] std::string explanation(const AnyError& error);

/// What was asked for, such as `fetchVideo film`; without the identifier when the error's
/// explanation names it. Empty when that is not known.
[[nodiscard]] std::string subject(const AnyError& error);

}  // namespace orvo::tool
