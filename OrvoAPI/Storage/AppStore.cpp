#include <OrvoAPI/Platform/FreedMemoryInternal.h>
#include <OrvoAPI/Storage/AppStore.h>

namespace orvo {

AppStore::AppStore(const std::shared_ptr<const Clock>& clock)
    : systemViews(16, clock),
      collections(32, clock),
      playlists(32, clock),
      pages(64, clock),
      videos(256, clock),
      lineups(8, clock),
      items(256, clock),
      guide(16, clock) {}

void AppStore::removeAll() {
  systemViews.removeAll();
  collections.removeAll();
  playlists.removeAll();
  pages.removeAll();
  videos.removeAll();
  lineups.removeAll();
  items.removeAll();
  guide.removeAll();
  detail::giveBackFreedMemory();
}

}  // namespace orvo
