#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>

namespace orvo {

/// An action button offered with a video or page.
struct AppAction {
  /// What the button does.
  enum class Kind { play, playlist, view, tv };

  /// What the action is about.
  std::string id;
  /// The button's text.
  std::string label;
  Kind kind = Kind::play;
  /// The name of the icon to show.
  std::string icon;
};

template <>
inline constexpr EnumCase enumCases<AppAction::Kind>[] = {{"play"}, {"playlist"}, {"view"}, {"tv"}};

/// Reads a button. Stateless; may be called from any thread.
struct AppActionParser {
  [[nodiscard]] static Result<AppAction> parse(const JSONObject& json);
};

}  // namespace orvo
