#pragma once

// What nearly every test needs: GoogleTest, the everyday part of the standard library, and a wait
// that says for what.

#include <gtest/gtest.h>
#include <tests/support/Signal.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace orvo {

using namespace std::chrono_literals;

}  // namespace orvo
