#include "calculation_server/parameter_solver.h"

#include <Eigen/Eigenvalues>
#include <Eigen/QR>

#include <algorithm>
#include <cmath>

namespace calculation {

namespace {

// The program's own value: its forward step must undo what is divided here.
constexpr double radians_per_arc_second = 4.84813681095679e-06;

using points = Eigen::Matrix3Xd;

points side(const std::vector<point_pair>& pairs, Eigen::Vector3d point_pair::*which)
{
    points all(3, static_cast<Eigen::Index>(pairs.size()));
    for (Eigen::Index i = 0; i < all.cols(); ++i)
        all.col(i) = pairs[static_cast<size_t>(i)].*which;
    return all;
}

/// Whether points around their centre spread in two directions at least.
bool spreads(const points& centred)
{
    constexpr double least = 1e-3; // metres; coordinates come in tenths of a millimetre
    constexpr double least_of_extent = 1e-6;
    const Eigen::Matrix3d covariance =
        centred * centred.transpose() / static_cast<double>(centred.cols());
    // In rising order: the last belongs to the direction of the line.
    const Eigen::Vector3d variance =
        Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(covariance, Eigen::EigenvaluesOnly)
            .eigenvalues()
            .cwiseMax(0.0);
    const double across = std::sqrt(variance[0] + variance[1]);
    return across > std::max(least, least_of_extent * std::sqrt(variance[2]));
}

} // namespace

std::optional<solution> solve(const std::vector<point_pair>& pairs)
{
    if (pairs.empty())
        return std::nullopt;
    const points source = side(pairs, &point_pair::source);
    const points target = side(pairs, &point_pair::target);
    const Eigen::Vector3d source_centre = source.rowwise().mean();
    const Eigen::Vector3d target_centre = target.rowwise().mean();
    points from = source.colwise() - source_centre;
    points to = target.colwise() - target_centre;
    if (!spreads(from) || !spreads(to))
        return std::nullopt;

    // Around the centres the translation falls out, and in units of the extent
    // scale and rotations are of one size: the system is well conditioned however
    // small the field and however far the centre of the Earth.
    const double extent = from.norm();
    from /= extent;
    to /= extent;
    Eigen::MatrixX4d design(3 * from.cols(), 4); // k, rx, ry, rz
    Eigen::VectorXd difference(3 * from.cols());
    for (Eigen::Index i = 0; i < from.cols(); ++i) {
        const double x = from(0, i);
        const double y = from(1, i);
        const double z = from(2, i);
        design.row(3 * i) << x, 0.0, -z, y;
        design.row(3 * i + 1) << y, z, 0.0, -x;
        design.row(3 * i + 2) << z, -y, x, 0.0;
        difference.segment<3>(3 * i) = to.col(i) - from.col(i);
    }
    const Eigen::Vector4d found = design.colPivHouseholderQr().solve(difference);
    const double k = found[0];
    if (!found.allFinite() || 1.0 + k <= 0.0)
        return std::nullopt;

    Eigen::Matrix3d carry;
    carry << 1.0 + k, found[3], -found[2], //
        -found[3], 1.0 + k, found[1],      //
        found[2], -found[1], 1.0 + k;
    const Eigen::Vector3d shift = target_centre - carry * source_centre;
    const Eigen::Vector3d rotation = found.tail<3>() / radians_per_arc_second;
    const double rms = (design * found - difference).norm() * extent /
                       std::sqrt(static_cast<double>(difference.size()));
    return solution{{shift[0], shift[1], shift[2], rotation[0], rotation[1], rotation[2], k}, rms};
}

} // namespace calculation
