#pragma once

#include <OrvoAPI/Futures/detail/DerivedStates.h>

#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace orvo::detail {

/// Whether a stream is told at this path, or what belongs to one: a token is part of it, maybe that
/// of another session.
[[nodiscard]] inline bool isStreamPath(std::string_view path) {
  return path.ends_with("/playlist.m3u8") || path.ends_with("/playlist.json");
}

/// What the error says, without what was asked for.
[[nodiscard]] inline std::string descriptionAlone(const AnyError& error) {
  auto text = error.description();
  if (const auto* const context = error.context()) {
    const auto known = " (" + context->description() + ")";
    if (text.ends_with(known)) text.resize(text.size() - known.size());
  }
  return text;
}

/// What is asked for, in words.
struct Subject {
  std::string_view operation;
  std::string_view identifier = {};
  /// Whether its path tells the token, so that none of it may be shown.
  bool isSecret = false;

  /// The failure with what was asked for, and what else helps in words; it keeps what it has.
  [[nodiscard]] AnyError explain(const AnyError& error, std::string_view note = {}) const noexcept {
    if (note.empty() && error.context() != nullptr) note = error.context()->note;
    try {
      return error.withContext(
          {std::string(operation), std::string(identifier), std::string(note)});
    } catch (const std::bad_alloc&) {
      return error;
    }
  }
};

/// A transform of a future whose failures, and those that pass it, say what was asked for.
template <class F>
class Explained : public Explainer {
 public:
  Explained(const Subject& subject, F transform)
      : operation_(subject.operation),
        identifier_(subject.identifier),
        transform_(std::move(transform)) {}

  template <class T>
  auto operator()(const T& value) const {
    return transform_(value);
  }
  [[nodiscard]] AnyError explained(const AnyError& error) const noexcept {
    return Subject{operation_, identifier_}.explain(error);
  }

 private:
  std::string_view operation_;
  std::string identifier_;
  F transform_;
};

}  // namespace orvo::detail
