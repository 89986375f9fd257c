#include <OrvoAPI/Parsing/DocumentLoss.h>
#include <tests/Context/StubbedContext.h>

#include <thread>

namespace orvo {
namespace {

std::string text(const DocumentLoss& loss) {
  return loss.document + " " + loss.identifier + ": " + loss.path + " " +
         std::string(caseName(loss.reason)) + " " + loss.lost + " " + std::to_string(loss.count);
}

std::string collection(const std::string& items) {
  return R"({"id": "c", "type": "generic", "label": "L", "short_label": "S", "item_type": "videos",
             "meta": {"total": 1, "limit": 1, "offset": 0}, "items": [)" +
         items + "]}";
}

std::vector<DocumentLoss> lossesOf(const std::string& body) {
  const LossWatch watch;
  EXPECT_FALSE(ItemCollectionParser::parse(object(body)).failed());
  return watch.losses("ItemCollection");
}

TEST(DocumentLoss, IsToldOnceBeforeTheReportAndNotForValuesFromTheCache) {
  StubbedContext stubbed;
  const auto reportQueue = std::make_shared<ManualQueue>();
  std::vector<std::string> told;
  const auto context = makeContext(
      stubbed.session, stubbed.network,
      {.onReport = [&](const RequestReport& report) { told.emplace_back(report.operation); },
       .onLoss =
           [&](const DocumentLoss& loss) {
             told.push_back(text(loss));
             throw std::runtime_error("an observer's");
           },
       .reportQueue = reportQueue});
  // All that comes up to the next report.
  const auto next = [&] {
    told.clear();
    while (told.empty() || !told.back().starts_with("fetch")) {
      if (!reportQueue->waitForJob(kPatience) || !reportQueue->runOne()) break;
    }
    return told;
  };
  using Told = std::vector<std::string>;

  const auto fetched = context->fetchItemCollection("c");
  stubbed.answer(200, collection(R"({"type": "video", "id": "v", "short_description": "S"},
                                    {"type": "page", "id": "p", "title": "T", "share_url": 7})"));
  EXPECT_EQ(fetched.wait(kPatience).force()->items.size(), 1U) << "the observer changes nothing";
  EXPECT_EQ(next(), (Told{"ItemCollection c: items[0].title missing items[0] 1",
                          "ItemCollection c: items[1].share_url wrongType items[1].share_url 1",
                          "fetchItemCollection"}));
  const auto hit = context->fetchItemCollection("c");
  EXPECT_EQ(next(), Told{"fetchItemCollection"});
  const auto torn = context->fetchItemCollection("torn");
  stubbed.answer(200, collection(R"({"type": "clip"}, "x")"));
  EXPECT_EQ(next(), (Told{"ItemCollection torn: items[1] wrongType  1", "fetchItemCollection"}));
  const auto secret = context->fetchPage("p?" + kToken);
  stubbed.answer(200, R"({"id": "p", "title": "T", "status": null})");
  EXPECT_EQ(next(), (Told{"Page ***: status null status 1", "fetchPage"}));
}

TEST(DocumentLoss, TellsAHundredOfADocumentOneByOneAndTheWorstOfThem) {
  std::string items;
  for (int i = 0; i < 80; ++i) {
    items += R"({"type": "page", "id": "p", "title": "T", "resources": ["new"]},)";
  }
  for (int i = 0; i < 70; ++i) items += R"({"type": "page", "id": "p"},)";
  items.pop_back();
  const auto losses = lossesOf(collection(items));
  ASSERT_EQ(losses.size(), LossWatch::kMost + 1);
  const auto dropped =
      std::ranges::count(losses, DocumentLoss::Reason::missing, &DocumentLoss::reason);
  EXPECT_EQ(dropped, 70);
  EXPECT_EQ(text(losses[99]), "ItemCollection : items[149].title missing items[149] 1");
  EXPECT_EQ(text(losses[100]), "ItemCollection :  further  50");
}

TEST(DocumentLoss, IsNoticedOnTheThreadOfTheInnermostWatch) {
  const auto page = [] {
    return PageParser::parse(object(R"({"id": "p", "title": "T", "status": 7})"));
  };
  const LossWatch outer;
  {
    const LossWatch inner;
    EXPECT_FALSE(page().failed());
    EXPECT_EQ(inner.losses("Page").size(), 1U);
  }
  std::thread([&] { EXPECT_FALSE(page().failed()); }).join();
  EXPECT_TRUE(outer.losses("Page").empty());
  EXPECT_FALSE(page().failed());
  EXPECT_EQ(outer.losses("Page").size(), 1U);
  (void)object("{}");
  EXPECT_TRUE(outer.losses("Page").empty()) << "that was of another document";
}

}  // namespace
}  // namespace orvo
