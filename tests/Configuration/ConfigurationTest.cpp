#include <OrvoAPI/Configuration/Configuration.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

/// The constants, each another number, and nothing else.
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
const Document kLinks{
    {"imprint", R"("https://l.example/1")"}, {"about", R"("https://l.example/2")"},
    {"privacy", R"("https://l.example/3")"}, {"terms", R"("https://l.example/4")"},
    {"contact", R"("mailto:a@l.example")"},  {"feedback", R"("feedback")"}};
const Document kTV{{"label", R"("TV")"}, {"description", R"("On air")"}, {"icon", R"("tv-icon")"}};
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
  EXPECT_TRUE(configuration.systemViews.empty());
  EXPECT_EQ(configuration.constants.searchTopResultsLimit, 6);
  EXPECT_EQ(configuration.colorPalette.red.transform, "rd_72,gr_-92,bl_-50");
  EXPECT_EQ(configuration.links.contact.text(), "mailto:a@l.example");
  EXPECT_EQ(configuration.requirements.appVersion.minBuild, "0.1.0");
  EXPECT_EQ(configuration.requirements.appVersion.message, "");
  EXPECT_EQ(configuration.requirements.osVersion.minOsVersion, "0.1.0");
  EXPECT_FALSE(configuration.requirements.killSwitch.kill);
  EXPECT_EQ(configuration.ratingPromptConfig.sessionCountThreshold, 3);
  EXPECT_EQ(configuration.ratingPromptConfig.activeSessionTimeThreshold, 3600.0);
  EXPECT_FALSE(configuration.ratingPromptConfig.enabled);
  EXPECT_EQ(configuration.ratingPromptConfig.repeatDelay, 25);
  EXPECT_FALSE(configuration.displayAd);
  EXPECT_EQ(configuration.linearStream.id, "stream");
  EXPECT_EQ(configuration.linearStream.label + configuration.linearStream.description +
                configuration.linearStream.iconID,
            "TVOn airtv-icon");
  EXPECT_EQ(configuration.upcomingEvents.label, "Live Events");
  EXPECT_EQ(configuration.upcomingEvents.id, "playlists::ee9c13f1-9670-4ef5-975a-940461886100");
  EXPECT_EQ(configuration.environment, Environment::staging);
}

TEST(ConfigurationParser, ReportsTheSectionThatFails) {
  EXPECT_EQ(requirements(kSmallest,
                         {"nav", "colors", "links", "hls_base_url", "linear_stream_id",
                          "playback_interruption_delay", "tv"},
                         parse),
            "nav -> Configuration: nav\n"
            "colors -> Configuration: colors\n"
            "links -> Configuration: links\n"
            "hls_base_url -> Configuration: constants\n"
            "linear_stream_id -> Configuration: constants\n"
            "playback_interruption_delay -> Configuration: constants\n"
            "tv -> Configuration: linear_stream\n");
  EXPECT_EQ(requirements(kTV, {"label", "description", "icon"},
                         [](const Document& tv) { return parse(kSmallest.with("tv", tv.text())); }),
            "label -> Configuration: linear_stream\n"
            "description -> Configuration: linear_stream\n"
            "icon -> Configuration: linear_stream\n");
  EXPECT_EQ(failureOf(parse(kSmallest.with("nav", R"({"discover": {}, "x": 1})"))),
            "Configuration: nav");
  EXPECT_EQ(failureOf(parse(kSmallest.with("links", "{}").with("tv", "1"))),
            "Configuration: links");
}

TEST(ConfigurationParser, KeepsTheSystemViewsThatItKnows) {
  const auto views = with("nav", R"({"channels": {"label": "C", "id": "3"},
                                     "music": {"label": "M", "id": "4"},
                                     "calendar": {"label": "K", "id": 5},
                                     "discover": {"label": "D", "id": "1"}})")
                         .systemViews;
  ASSERT_EQ(views.size(), 2U);
  EXPECT_EQ(views[0].name + views[0].label + views[0].id, "discoverD1");
  EXPECT_EQ(views[1].name + views[1].label + views[1].id, "channelsC3");
}

TEST(ConfigurationParser, ReplacesOptionalSectionsThatCannotBeRead) {
  for (const char* section : {"1", "{}", R"({"message": "M"})"}) {
    EXPECT_EQ(with("app_update", section).requirements.appVersion.minBuild, "0.1.0");
    EXPECT_EQ(with("app_update", section).requirements.appVersion.message, "");
    EXPECT_EQ(with("device_update", section).requirements.osVersion.minOsVersion, "0.1.0");
    EXPECT_EQ(with("end_of_life", section).requirements.killSwitch.message, "");
    EXPECT_EQ(with("user_rating_prompt", section).ratingPromptConfig.repeatDelay, 25);
    EXPECT_FALSE(with("display_ads", section).displayAd);
    EXPECT_EQ(with("upcoming_events", section).upcomingEvents.label, "Live Events");
  }
}

TEST(ConfigurationParser, ReadsOptionalSections) {
  const auto app = with("app_update", R"({"min_build": "2.1", "message": "Update"})");
  EXPECT_EQ(app.requirements.appVersion.minBuild + app.requirements.appVersion.message,
            "2.1Update");
  const auto device = with("device_update", R"({"min_os_version": "9", "message": "Old"})");
  EXPECT_EQ(device.requirements.osVersion.minOsVersion + device.requirements.osVersion.message,
            "9Old");
  const auto end = with("end_of_life", R"({"kill": true, "message": "Bye"})");
  EXPECT_TRUE(end.requirements.killSwitch.kill);
  EXPECT_EQ(end.requirements.killSwitch.message, "Bye");
  const auto rating = with("user_rating_prompt", R"({"session_interval": 1, "long_session": 2.5,
                                                    "enable": true, "repeat_delay": 4})")
                          .ratingPromptConfig;
  EXPECT_EQ(rating.sessionCountThreshold, 1);
  EXPECT_EQ(rating.activeSessionTimeThreshold, 2.5);
  EXPECT_TRUE(rating.enabled);
  EXPECT_EQ(rating.repeatDelay, 4);
  const auto ads = with("display_ads", R"({"url": "https://ads", "nw": "n", "prof": "p"})");
  EXPECT_EQ(ads.displayAd->server.text() + ads.displayAd->network + ads.displayAd->profile,
            "https://adsnp");
  const auto events = with("upcoming_events", R"({"id": "own", "label": 1})").upcomingEvents;
  EXPECT_EQ(events.id + events.label, "ownLive Events");
}

TEST(ConstantsParser, StoresMillisecondsAsSeconds) {
  const Constants constants =
      ConstantsParser::parse(kConstants.with("ad_corner_bug_delay", "1000")).force();
  EXPECT_EQ(constants.hlsBaseURL.text(), "https://hls.example/v3");
  EXPECT_EQ(constants.linearStreamID, "stream");
  EXPECT_EQ(constants.upNextHintTimeout, 5);
  EXPECT_EQ(constants.playerControlsTimeout, 4);
  EXPECT_EQ(constants.discoveryResetTimeout, 3);
  EXPECT_EQ(constants.relaunchResumeTimeout, 2.5);
  EXPECT_EQ(constants.countdownVisibilityTimeout, 1.5);
  EXPECT_TRUE(constants.recentlyWatched);
  EXPECT_EQ(constants.startedMinimumPercent, 0.9);
  EXPECT_EQ(constants.startedMinimumTime, 12);
  EXPECT_EQ(constants.watchedMinimumPercent, 97.5);
  EXPECT_EQ(constants.watchedMinimumTime, 30);
  EXPECT_EQ(constants.shareStringTemplate, "Watch %@");
  EXPECT_EQ(constants.playbackInterruptDelay, 0.75);
  EXPECT_EQ(constants.adCornerBugDelay, 15) << "the document cannot set it";
}

TEST(ConstantsParser, RequiresEveryMemberInOrder) {
  // Taken away from the last one on: the first of those that are missing is the one reported.
  Document rest = kConstants;
  for (const char* key :
       {"playback_interruption_delay", "search_top_results_limit", "share_string_template",
        "watched_minimum_time_left", "watched_minimum_percent", "started_minimum_time",
        "started_minimum_percent", "recently_watched", "countdown_visibility_timeout",
        "relaunch_resume_timeout", "discovery_reset_timeout", "player_controls_timeout",
        "up_next_hint_time", "linear_stream_id", "hls_base_url"}) {
    rest = rest.without(key);
    EXPECT_EQ(failureOf(ConstantsParser::parse(rest)), std::string("Constants: ") + key);
  }
  EXPECT_EQ(failureOf(ConstantsParser::parse(kConstants.with("hls_base_url", R"("a b")"))),
            "Constants: hls_base_url");
  EXPECT_EQ(failureOf(ConstantsParser::parse(kConstants.with("search_top_results_limit", "1.5"))),
            "Constants: search_top_results_limit");
}

TEST(SectionParsers, NameTheirKeys) {
  EXPECT_EQ(requirements(kLinks, {"imprint", "about", "privacy", "terms", "contact", "feedback"},
                         LinksParser::parse),
            "imprint -> Links: imprint\nabout -> Links: about\nprivacy -> Links: privacy\n"
            "terms -> Links: terms\ncontact -> Links: contact\nfeedback -> Links: feedback\n");
  EXPECT_EQ(failureOf(LinksParser::parse(kLinks.with("terms", R"("a b")"))), "Links: terms");
  EXPECT_EQ(requirements({{"min_build", R"("1")"}, {"message", R"("m")"}}, {"min_build", "message"},
                         AppVersionParser::parse),
            "min_build -> Requirements.AppVersion: min_build\n"
            "message -> Requirements.AppVersion: message\n");
  EXPECT_EQ(requirements({{"min_os_version", R"("1")"}, {"message", R"("m")"}},
                         {"min_os_version", "message"}, OSVersionParser::parse),
            "min_os_version -> Requirements.OSVersion: min_os_version\n"
            "message -> Requirements.OSVersion: message\n");
  EXPECT_EQ(requirements({{"kill", "true"}, {"message", R"("m")"}}, {"kill", "message"},
                         KillSwitchParser::parse),
            "kill -> Requirements.KillSwitch: kill\n"
            "message -> Requirements.KillSwitch: message\n");
  EXPECT_EQ(requirements({{"url", R"("u")"}, {"nw", R"("n")"}, {"prof", R"("p")"}},
                         {"url", "nw", "prof"}, DisplayAdParser::parse),
            "url -> DisplayAd: url\nnw -> DisplayAd: nw\nprof -> DisplayAd: prof\n");
}

TEST(RatingPromptConfigParser, ReportsTheDelayMisspelt) {
  const Document rating{
      {"session_interval", "1"}, {"long_session", "2"}, {"enable", "false"}, {"repeat_delay", "4"}};
  EXPECT_EQ(requirements(rating, {"session_interval", "long_session", "enable", "repeat_delay"},
                         RatingPromptConfigParser::parse),
            "session_interval -> RatingPromptConfig: session_interval\n"
            "long_session -> RatingPromptConfig: long_session\n"
            "enable -> RatingPromptConfig: enable\n"
            "repeat_delay -> RatingPromptConfig: repear_delay\n");
  EXPECT_EQ(failureOf(RatingPromptConfigParser::parse(rating.with("repeat_delay", "0.5"))),
            "RatingPromptConfig: repear_delay");
}

}  // namespace
}  // namespace orvo
