#pragma once

#include <OrvoAPI/Base/Shared.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Model/Page.h>
#include <OrvoAPI/Model/Playlist.h>

#include <functional>
#include <string>

namespace orvo {

/// A fetch for later: each call performs it and returns its future. It keeps its context alive. May
/// be called from any thread.
template <class T>
using Capability = std::function<Future<T>()>;

/// A system view as the configuration names it, with the fetch of its page.
struct SystemView {
  /// "discover", "calendar" or "channels".
  std::string name;
  std::string label;
  std::string id;
  Capability<Shared<Page>> fetch;
};

/// The upcoming live events: a playlist with the label that the configuration gives it.
struct UpcomingEvents {
  std::string label;
  Capability<Shared<Playlist>> fetch;
};

}  // namespace orvo
