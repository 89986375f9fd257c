#pragma once

namespace orvo::detail {

/// Gives memory that was freed, and that the C library keeps for later, back to the system, where
/// the C library offers that. Takes some milliseconds.
void giveBackFreedMemory();

}  // namespace orvo::detail
