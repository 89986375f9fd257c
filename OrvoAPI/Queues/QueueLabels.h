#pragma once

#include <string_view>

namespace orvo {

/// The prefix of the labels of the queues that guard the library's own state.
inline constexpr std::string_view ServiceDomainPrefix = "tv.orvo.api";

/// The prefix of the labels of the futures' queues.
inline constexpr std::string_view FutureQueueLabelPrefix = "tv.orvo.api.futures.";

}  // namespace orvo
