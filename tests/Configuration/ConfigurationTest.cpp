#include <OrvoAPI/Configuration/ColorPalette.h>
#include <OrvoAPI/Configuration/Configuration.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

const Document kConstants{{"hls_base_url", R"("https://hls.example/v3")"},
                          {"linear_stream_id", R"("stream")"},
                          {"up_next_hint_time", "5000"},
                          {"player_controls_timeout", "4000"},
                          {"discovery_reset_timeout", "3000"},
                          {"relaunch_resume_timeout", "2500"},
                          {"countdown_visibility_timeout", "1500"},
                          {"recently_watched", "true"},
                          {"started_minimum_percent", "0.9"},
                          {"started_minimum_time", "12000"},
                          {"watched_minimum_percent", "97.5"},
                          {"watched_minimum_time_left", "30000"},
                          {"share_string_template", R"("Watch %@")"},
                          {"search_top_results_limit", "6"},
                          {"playback_interruption_delay", "750"}};
const Document kLinks{{"imprint", R"("l:1")"}, {"about", R"("l:2")"},   {"privacy", R"("l:3")"},
                      {"terms", R"("l:4")"},   {"contact", R"("l:5")"}, {"feedback", R"("l:6")"}};
const Document kTV{{"label", R"("TV")"}, {"description", R"("On air")"}, {"icon", R"("i")"}};
/// Nothing but what is required.
const Document kSmallest = kConstants.with("nav", "{}")
                               .with("colors", "{}")
                               .with("links", kLinks.text())
                               .with("tv", kTV.text());

Result<Configuration> parse(const JSONObject& json) {
  return ConfigurationParser::parse(json, Environment::staging);
}
Configuration with(std::string_view key, std::string_view json) {
  return parse(kSmallest.with(key, json)).force();
}

TEST(ConfigurationParser, NeedsOnlyTheRequiredSections) {
  const Configuration configuration = parse(kSmallest).force();
  EXPECT_TRUE(configuration.systemViews.empty() && !configuration.displayAd);
  const auto& [app, device, end] = configuration.requirements;
  EXPECT_EQ(app.minBuild + app.message + device.minOsVersion + device.message, "0.1.00.1.0");
  EXPECT_FALSE(end.kill);
  const auto& [sessions, time, enabled, delay] = configuration.ratingPromptConfig;
  EXPECT_TRUE(sessions == 3 && time == 3600.0 && !enabled && delay == 25);
  const auto& [id, label, description, iconID] = configuration.linearStream;
  EXPECT_EQ(id + label + description + iconID, "streamTVOn airi");
  EXPECT_EQ(configuration.upcomingEvents.id, "playlists::ee9c13f1-9670-4ef5-975a-940461886100");
}

TEST(ConfigurationParser, ReportsTheSectionThatFails) {
  expectRequired("Configuration", kSmallest,
                 {"nav", "colors", "links", "linear_stream_id=constants", "tv=linear_stream"},
                 parse);
  const auto parseTV = [](const Document& tv) { return parse(kSmallest.with("tv", tv.text())); };
  expectRequired("Configuration", kTV,
                 {"label=linear_stream", "description=linear_stream", "icon=linear_stream"},
                 parseTV);
  EXPECT_EQ(failureOf(parse(kSmallest.with("nav", R"({"discover": {}, "x": 1})"))),
            "Configuration: nav");
}

TEST(ConfigurationParser, KeepsTheSystemViewsThatItKnows) {
  const auto views = with("nav", R"({"channels": {"label": "C", "id": "3"},
                                     "music": {"label": "M", "id": "4"},
                                     "calendar": {"label": "K", "id": 5},
                                     "discover": {"label": "D", "id": "1"}})")
                         .systemViews;
  ASSERT_EQ(views.size(), 2U);
  EXPECT_EQ(views[0].name + views[0].label + views[0].id + views[1].name, "discoverD1channels");
}

TEST(ConfigurationParser, ReplacesOptionalSectionsThatCannotBeRead) {
  for (const char* section : {"1", R"({"message": "M"})"}) {
    EXPECT_EQ(with("app_update", section).requirements.appVersion.minBuild, "0.1.0");
    EXPECT_EQ(with("device_update", section).requirements.osVersion.minOsVersion, "0.1.0");
    EXPECT_EQ(with("end_of_life", section).requirements.killSwitch.message, "");
    EXPECT_EQ(with("user_rating_prompt", section).ratingPromptConfig.repeatDelay, 25);
    EXPECT_FALSE(with("display_ads", section).displayAd);
    EXPECT_EQ(with("upcoming_events", section).upcomingEvents.label, "Live Events");
  }
}

TEST(ConfigurationParser, ReadsOptionalSections) {
  const auto [app, os, end] =
      parse(kSmallest.with("app_update", R"({"min_build": "2.1", "message": "A"})")
                .with("device_update", R"({"min_os_version": "9", "message": "B"})")
                .with("end_of_life", R"({"kill": true, "message": "C"})"))
          .force()
          .requirements;
  EXPECT_EQ(app.minBuild + app.message + os.minOsVersion + os.message + end.message, "2.1A9BC");
  const auto [sessions, time, enabled, delay] =
      with("user_rating_prompt",
           R"({"session_interval": 1, "long_session": 2.5, "enable": true, "repeat_delay": 4})")
          .ratingPromptConfig;
  EXPECT_TRUE(sessions == 1 && time == 2.5 && enabled && delay == 4 && end.kill);
  const auto ad = with("display_ads", R"({"url": "a:b", "nw": "n", "prof": "p"})").displayAd;
  EXPECT_EQ(ad->server.text() + ad->network + ad->profile, "a:bnp");
  const auto events = with("upcoming_events", R"({"id": "own", "label": 1})").upcomingEvents;
  EXPECT_EQ(events.id + events.label, "ownLive Events");
}

TEST(ConstantsParser, StoresMillisecondsAsSeconds) {
  const auto constants = ConstantsParser::parse(kConstants).force();
  EXPECT_EQ(constants.hlsBaseURL.text() + constants.linearStreamID + constants.shareStringTemplate,
            "https://hls.example/v3streamWatch %@");
  EXPECT_THAT((std::vector{constants.upNextHintTimeout, constants.playerControlsTimeout,
                           constants.discoveryResetTimeout, constants.relaunchResumeTimeout,
                           constants.countdownVisibilityTimeout, constants.startedMinimumTime,
                           constants.watchedMinimumTime, constants.playbackInterruptDelay}),
              testing::ElementsAre(5, 4, 3, 2.5, 1.5, 12, 30, 0.75));
  EXPECT_EQ(constants.startedMinimumPercent + constants.watchedMinimumPercent, 98.4);
  EXPECT_TRUE(constants.recentlyWatched && constants.searchTopResultsLimit == 6);
  EXPECT_EQ(constants.adCornerBugDelay, 15) << "in no document";
}

TEST(SectionParsers, NameTheirKeysInOrder) {
  expectRequired("Constants", kConstants,
                 {"hls_base_url", "linear_stream_id", "up_next_hint_time", "recently_watched",
                  "search_top_results_limit"},
                 ConstantsParser::parse);
  EXPECT_EQ(failureOf(ConstantsParser::parse(kConstants.with("search_top_results_limit", "1.5"))),
            "Constants: search_top_results_limit");
  expectRequired("Links", kLinks, {"imprint", "about", "privacy", "terms", "contact", "feedback"},
                 LinksParser::parse);
  EXPECT_EQ(failureOf(LinksParser::parse(kLinks.with("terms", R"("a b")"))), "Links: terms");
  // The delay has always been reported misspelt.
  const Document prompt{{"session_interval", "1"}, {"long_session", "2"}, {"enable", "false"}};
  expectRequired("RatingPromptConfig", prompt.with("repeat_delay", "4"),
                 {"session_interval", "long_session", "enable", "repeat_delay=repear_delay"},
                 RatingPromptConfigParser::parse);
  EXPECT_EQ(failureOf(AppVersionParser::parse(kTV)), "Requirements.AppVersion: min_build");
  EXPECT_EQ(failureOf(OSVersionParser::parse(kTV)), "Requirements.OSVersion: min_os_version");
  EXPECT_EQ(failureOf(KillSwitchParser::parse(kTV)), "Requirements.KillSwitch: kill");
  expectRequired("DisplayAd", {{"url", R"("u")"}, {"nw", R"("n")"}, {"prof", R"("p")"}},
                 {"url", "nw", "prof"}, DisplayAdParser::parse);
}

TEST(Color, IsMadeOfTwentyFourBits) {
  const Color color(0xAAFF8800);
  EXPECT_TRUE(color.red() == 1 && color.blue() == 0 && color.alpha() == 1);
  EXPECT_EQ(color.green(), 136 / 255.0);
  EXPECT_EQ(color, Color(0xFF8800));
}

TEST(Color, ReadsTheLongestRunOfHexadecimalDigits) {
  for (const char* text :
       {"AB", "#ab", "##aB###", "ABzz34", "  ab", "#0xAB", "FF0000AB", "ab#12"}) {
    EXPECT_EQ(Color::fromHexString(text), Color(0xAB)) << text;
  }
  EXPECT_EQ(Color::fromHexString("0x"), Color(0));
  EXPECT_EQ(Color::fromHexString("123456789"), Color(0xFFFFFF)) << "too great a number";
  for (const char* text : {"", "#", "####", "#zz0000", "-1", " ", "+1", "# "}) {
    EXPECT_EQ(Color::fromHexString(text), std::nullopt) << text;
  }
}

TEST(Color, WritesItsFractionsUnscaled) {
  EXPECT_EQ(Color(0xFF8800).toHex(), "#010000");
  EXPECT_EQ(Color(0xFEFFFF).toHex(), "#000101");
}

TEST(ColorPaletteParser, FallsBackEntryByEntry) {
  const auto palette = ColorPaletteParser::parse(object(R"({
      "ov_red": {"hex": "#zz0000", "transform": "br_5"},
      "ov_black": {"hex": "#123456"},
      "ov_orange": "#123456"})"));
  EXPECT_EQ(palette.red.transform, "br_5");
  EXPECT_EQ(palette.red.color, Color(0xDB0A40));
  EXPECT_EQ(palette.black.transform, "br_-86");
  EXPECT_EQ(palette.black.color, Color(0x121212));
  EXPECT_EQ(palette.orange.color, Color(0xF2940A));
}

TEST(ColorResourceParser, ReportsWhatIsMissing) {
  const Document document{{"hex", R"("red")"}, {"transform", R"("t")"}};
  const auto parse = [](const JSONObject& json) { return ColorResourceParser::parse(json, "#2"); };
  expectRequired("ColorResource", document, {"hex", "transform"}, parse);
  EXPECT_EQ(parse(document).force().color, Color(2));
  EXPECT_EQ(failureOf(ColorResourceParser::parse(document, "none")),
            "ColorResource: Unable to create color resource from json or fallback");
}

}  // namespace
}  // namespace orvo
