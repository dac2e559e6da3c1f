#pragma once

#include <QList>

namespace instrument {

/// A place in decimal degrees on WGS-84, east and north positive.
struct position
{
    double longitude = 0;
    double latitude = 0;
};

/// A step in metres on the ground.
struct offset
{
    double east = 0;
    double north = 0;
};

// All of these take the ellipsoid's radii at the middle latitude. For places
// within 10 km of each other and below 80 degrees of latitude the error stays
// below one part in 100 000, far below what such an instrument measures.

/// The place that lies `step` away from `origin`.
[[nodiscard]] position moved(position origin, offset step);

/// The step that leads from one place to another.
[[nodiscard]] offset step_between(position from, position to);

/// Distance in metres.
[[nodiscard]] double distance_between(position from, position to);

/// Length in metres of the line through the places in their order; `closed`
/// adds the way from the last back to the first.
[[nodiscard]] double line_length(const QList<position>& line, bool closed);

/// Area in square metres inside the closed line, whichever way round it goes.
/// Fewer than three places give 0.
[[nodiscard]] double ring_area(const QList<position>& ring);

/// Heading from one place to another in whole degrees, 0 to 359, clockwise
/// from north; 0 for equal places.
[[nodiscard]] int heading_between(position from, position to);

} // namespace instrument
