#pragma once

#include "instrument/memory.h"

#include <cstdint>

namespace instrument {

inline constexpr std::uint32_t usual_seed = 20240305;

/// The memory of an instrument that has been in use for a season: seventeen
/// measurements of all six kinds on farm land in Heilongjiang, Henan and
/// Xinjiang, among them areas of 40 and 1200 points and a track of 2500. Areas,
/// lengths, times, speeds and headings follow from the points. The same seed
/// gives the same memory.
[[nodiscard]] memory sample_memory(std::uint32_t seed = usual_seed);

/// A memory for load: `measurements` (1 to 65 535) of all kinds in turn, of
/// `points` (1 to 65 535) points each, waypoints of one.
[[nodiscard]] memory synthetic_memory(int measurements, int points,
                                      std::uint32_t seed = usual_seed);

} // namespace instrument
