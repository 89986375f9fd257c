#include <OrvoAPI/Testing/Fixtures.h>
#include <tests/Context/StubbedContext.h>

namespace orvo {
namespace {

TEST(Fixtures, AreWhatAServiceAnswersAndFitOneAnother) {
  StubbedContext stubbed;
  const auto context = Context::make(fixtures::configuration(), url("https://api.example/v3/"),
                                     url("https://img.example/"), stubbed.session, stubbed.network);
  const auto views = context->systemViews();
  ASSERT_EQ(views.size(), 2U);
  const auto home = views[0].fetch();
  stubbed.answer(200, fixtures::kPage);
  const auto page = valueOf(home);
  EXPECT_EQ(*page, fixtures::page());
  ASSERT_EQ(page->appActions.size(), 1U);
  EXPECT_EQ(page->id, views[0].id);
  const auto fetched = context->fetchVideo("film");
  stubbed.answer(200, fixtures::kVideo);
  const auto video = valueOf(fetched);
  EXPECT_EQ(*video, fixtures::video());
  EXPECT_EQ(video->playbackStatus, Video::PlaybackStatus::available);
  EXPECT_EQ(video->duration, 5400);
  EXPECT_EQ(video->ttl(), 300);
  EXPECT_FALSE(page->imageResources.empty() || video->imageResources.empty());
  EXPECT_EQ(SessionParser::parse(object(fixtures::kSession)).force().token, "token");
}

TEST(Fixtures, HaveAGuideThatIsOnAirWhenItIsAskedFor) {
  const Date start(1'493'632'800'000);
  const auto guide = fixtures::guide(start);
  ASSERT_EQ(guide.items.size(), 6U);
  EXPECT_EQ(guide.items[0].startTime, start);
  EXPECT_EQ(guide.items[5].id, "programme-6");
  EXPECT_EQ(guide.items[5].endTime, guide.endDate);
  EXPECT_EQ(fixtures::guide(start, 0).items.size(), 0U);
}

}  // namespace
}  // namespace orvo
