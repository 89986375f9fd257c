#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Model/Page.h>
#include <OrvoAPI/Model/Video.h>

#include <string>
#include <string_view>

/// Ready values for tests that need some, and the documents that they are read from, as a service
/// would answer with them. All is invented; the identifiers of the page, the video and the guide's
/// programmes fit one another, and each value may be changed before it is used.
///
///     const auto context = orvo::Context::make(orvo::fixtures::configuration(), api, resources,
///                                              session, network);
///     network->answer(0, 200, orvo::fixtures::kVideo);
namespace orvo::fixtures {

/// A session with the token "token".
extern const std::string_view kSession;
/// With two system views, "home" and "channels".
extern const std::string_view kConfiguration;
/// The page "home", with a shelf "films".
extern const std::string_view kPage;
/// The film "film", which can be played, runs for 90 minutes and stays fresh for five.
extern const std::string_view kVideo;
/// A channel's programmes of an hour each, the first of which begins at `start`: "programme-1" and
/// so on. The whole range in one part.
[[nodiscard]] std::string guideDocument(Date start, int programs = 6);

[[nodiscard]] Configuration configuration(Environment environment = Environment::staging);
[[nodiscard]] Page page();
[[nodiscard]] Video video();
[[nodiscard]] LinearProgramGuide guide(Date start, int programs = 6);

}  // namespace orvo::fixtures
