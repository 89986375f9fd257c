#pragma once

// What all these programs do with the loop that each of them has.
#include <OrvoAPI/OrvoAPI.h>

#include <cstdio>
#include <string>

/// Opens a session with the service at arguments[1] and [2] and fetches a video for its title.
inline orvo::Future<std::string> filmTitle(char** arguments) {
  return orvo::ContextService::context(*orvo::URL::parse(arguments[1]),
                                       *orvo::URL::parse(arguments[2]), orvo::Client::appleTV)
      .flatMap([](const auto& context) { return context->fetchVideo("film-long-thaw"); })
      .map([](const auto& video) { return video->title; });
}

/// Prints the title, or why there is none. Returns the exit status.
inline int print(const orvo::Result<std::string>& title) {
  if (title.failed()) std::fprintf(stderr, "%s\n", title.error()->description().c_str());
  if (!title.failed()) std::puts(title.value()->c_str());
  return title.failed() ? 1 : 0;
}
