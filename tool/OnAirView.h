#pragma once

#include <OrvoAPI/Linear/LinearProgramGuideMonitor.h>
#include <tool/Screen.h>

#include <cstddef>
#include <optional>
#include <string>

namespace orvo::tool {

/// What is on the linear channel, for people: a picture that is redrawn in place where the terminal
/// can do that, else a line for each update. Used by one thread.
class OnAirView {
 public:
  explicit OnAirView(std::string channel) : channel_(std::move(channel)) {}

  void show(const GuideUpdate& update);
  /// Draws the picture for the present.
  void draw();
  /// Whether there is a picture that changes with time.
  [[nodiscard]] bool moves() const { return update_ && standardOutput().redraws; }
  /// Leaves the picture as it is: something else will be written below it.
  void leave() { lines_ = 0; }

 private:
  const std::string channel_;
  std::optional<GuideUpdate> update_;
  std::size_t lines_ = 0;  // of the picture that is to be drawn over
};

/// The update in a line, and as a picture.
[[nodiscard]] std::string onAirLine(const GuideUpdate& update, Date now);
void drawOnAir(Screen& screen, const std::string& channel, const GuideUpdate& update, Date now);

}  // namespace orvo::tool
