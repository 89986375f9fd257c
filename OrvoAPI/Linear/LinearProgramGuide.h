#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Linear/LinearProgram.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <OrvoAPI/Storage/Cacheable.h>

#include <vector>

namespace orvo {

/// The schedule of the linear channel for a range of time; one part of it. A value.
struct LinearProgramGuide {
  /// Sorts `items` by start; equal starts keep their order.
  LinearProgramGuide(std::vector<LinearProgram> items, PagingMeta meta, Date start, Date end);

  /// The range that was asked for; programmes may extend beyond it.
  Date startDate;
  Date endDate;
  /// By start, ascending.
  std::vector<LinearProgram> items;
  PagingMeta meta;

  [[nodiscard]] double ttl() const { return DefaultCacheableTTL; }
};

/// Reads a part of the guide. Stateless; may be called from any thread.
struct LinearProgramGuideParser {
  /// `start` and `end`: the range that was asked for. A programme that cannot be read is left out,
  /// with a line on the console.
  [[nodiscard]] static Result<LinearProgramGuide> parse(const JSONObject& json, Date start,
                                                        Date end);
};

}  // namespace orvo
