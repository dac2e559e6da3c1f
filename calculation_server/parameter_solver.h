#pragma once

#include <Eigen/Core>

#include <optional>
#include <vector>

namespace calculation {

/// One point in both frames: Earth-centred Cartesian coordinates, metres.
struct point_pair
{
    Eigen::Vector3d source;
    Eigen::Vector3d target;
};

/// Seven parameters that carry a source position (X, Y, Z) into the target frame:
///
///     X' = (1 + k) X + dx + rz Y - ry Z
///     Y' = (1 + k) Y + dy - rz X + rx Z
///     Z' = (1 + k) Z + dz + ry X - rx Y
///
/// Translations in metres, k without unit, rotations in arc-seconds; in the
/// formulas they stand in radians. This is the program's forward step: linear,
/// for small rotations, coordinate frame convention.
struct parameters
{
    double dx = 0.0, dy = 0.0, dz = 0.0;
    double rx = 0.0, ry = 0.0, rz = 0.0;
    double k = 0.0;
};

struct solution
{
    parameters found;
    double rms = 0.0; ///< what is left of the target coordinates, metres per coordinate
};

/// The parameters with the least sum of squared differences in the target frame.
/// Nothing when the points do not determine them: the points of a frame in one
/// place or in one line (within a millimetre, or a millionth of their extent),
/// or a scale that is not positive.
std::optional<solution> solve(const std::vector<point_pair>& pairs);

} // namespace calculation
