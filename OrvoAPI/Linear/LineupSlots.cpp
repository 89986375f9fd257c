#include <OrvoAPI/Linear/LineupSlots.h>

#include <algorithm>

namespace orvo {

bool operator==(const LineupSlots& lhs, const LineupSlots& rhs) {
  return std::ranges::equal(lhs, rhs);
}

}  // namespace orvo
