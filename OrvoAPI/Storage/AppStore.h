#pragma once

#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/Page.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/Video.h>
#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Storage/Store.h>

#include <memory>

namespace orvo {

/// The answers that a `Context` has cached. Thread-safe. Owns its stores, which begin empty.
///
/// The bounds are numbers of answers, chosen so that a full set of stores stays in the order of 10
/// MB: an app returns to a few pages and many videos, while a lineup or a part of the guide can
/// take a megabyte by itself.
class AppStore {
 public:
  explicit AppStore(const std::shared_ptr<const Clock>& clock = Clock::system());

  Store<Page> systemViews;
  Store<ItemCollection> collections;
  Store<Playlist> playlists;
  Store<Page> pages;
  Store<Video> videos;
  Store<Lineup> lineups;
  Store<ContentItem> items;
  Store<LinearProgramGuide> guide;

  /// Empties all stores and returns the memory to the system, for when memory is low.
  void removeAll();
};

}  // namespace orvo
