#pragma once

#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/Page.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/Video.h>
#include <tool/Screen.h>

#include <cstdint>
#include <string>
#include <vector>

namespace orvo::tool {

/// How people see videos, pages, and lists of them.

void draw(Screen& screen, const Video& video);
void draw(Screen& screen, const Page& page);
void draw(Screen& screen, const ContentItem& item);
void draw(Screen& screen, const ItemCollection& collection);
void draw(Screen& screen, const Playlist& playlist);

/// A table of items, numbered from the given position on.
void drawItems(Screen& screen, const std::vector<ContentItem>& items, std::int64_t offset);
void drawItems(Screen& screen, const std::vector<Video>& videos, std::int64_t offset);

/// `306 items, 20 shown from 21 on`
[[nodiscard]] std::string extentText(const PagingMeta& meta, std::size_t shown);

}  // namespace orvo::tool
