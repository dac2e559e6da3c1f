#include "instrument/land_geometry.h"

#include <cmath>
#include <numbers>

namespace instrument {

namespace {

constexpr double semi_major_axis = 6378137.0; // metres, WGS-84
constexpr double flattening = 1.0 / 298.257223563;
constexpr double eccentricity_squared = flattening * (2.0 - flattening);
constexpr double radians_in_degree = std::numbers::pi / 180.0;

/// Metres on the ground in one degree at a latitude.
struct degree_lengths
{
    double east;
    double north;
};

degree_lengths degree_lengths_at(double latitude)
{
    const double sine = std::sin(latitude * radians_in_degree);
    const double root = std::sqrt(1.0 - eccentricity_squared * sine * sine);
    const double prime_vertical = semi_major_axis / root;
    const double meridian = semi_major_axis * (1.0 - eccentricity_squared) / (root * root * root);
    return {prime_vertical * std::cos(latitude * radians_in_degree) * radians_in_degree,
            meridian * radians_in_degree};
}

} // namespace

position moved(position origin, offset step)
{
    const double rough = origin.latitude + step.north / degree_lengths_at(origin.latitude).north;
    const degree_lengths middle = degree_lengths_at((origin.latitude + rough) / 2);
    return {origin.longitude + step.east / middle.east,
            origin.latitude + step.north / middle.north};
}

offset step_between(position from, position to)
{
    const degree_lengths middle = degree_lengths_at((from.latitude + to.latitude) / 2);
    return {(to.longitude - from.longitude) * middle.east,
            (to.latitude - from.latitude) * middle.north};
}

double distance_between(position from, position to)
{
    const offset step = step_between(from, to);
    return std::hypot(step.east, step.north);
}

double line_length(const QList<position>& line, bool closed)
{
    double length = 0;
    for (qsizetype i = 1; i < line.size(); ++i)
        length += distance_between(line[i - 1], line[i]);
    if (closed && line.size() > 2)
        length += distance_between(line.constLast(), line.constFirst());
    return length;
}

double ring_area(const QList<position>& ring)
{
    if (ring.size() < 3)
        return 0;
    // East taken at each place's own latitude makes this plane true to area.
    const position origin = ring.constFirst();
    QList<offset> plane;
    plane.reserve(ring.size());
    for (const position& place : ring) {
        plane.append({(place.longitude - origin.longitude) * degree_lengths_at(place.latitude).east,
                      step_between(origin, place).north});
    }
    double doubled = 0;
    for (qsizetype i = 0; i < plane.size(); ++i) {
        const offset& here = plane[i];
        const offset& next = plane[(i + 1) % plane.size()];
        doubled += here.east * next.north - next.east * here.north;
    }
    return std::abs(doubled) / 2;
}

int heading_between(position from, position to)
{
    const offset step = step_between(from, to);
    const double degrees = std::atan2(step.east, step.north) / radians_in_degree;
    return (static_cast<int>(std::lround(degrees)) + 360) % 360;
}

} // namespace instrument
