#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Model/ImageResource.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <optional>
#include <string>

namespace orvo {

/// A programme of the linear channel.
struct LinearProgram {
  /// Whether a programme can be played now.
  enum class PlaybackStatus { available, unavailable };

  std::string id;
  std::string title;
  std::optional<std::string> subheading = {};
  std::optional<std::string> shortDescription = {};
  PlaybackStatus playbackStatus = PlaybackStatus::unavailable;
  ImageResources imageResources = {};
  /// Scheduled start and end.
  Date startTime = {};
  Date endTime = {};
  /// In seconds as the server sends it (not in milliseconds, as elsewhere); it need not agree with
  /// the times.
  std::optional<double> duration = {};

  friend bool operator==(const LinearProgram&, const LinearProgram&) = default;
};

template <>
inline constexpr EnumCase enumCases<LinearProgram::PlaybackStatus>[] = {{"available", {}},
                                                                        {"unavailable", {}}};

/// Reads a programme. Stateless; may be called from any thread.
struct LinearProgramParser {
  [[nodiscard]] static Result<LinearProgram> parse(const JSONObject& json);
};

}  // namespace orvo
