#pragma once

#include "coordinates/coordinate_system.h"

#include <QString>

#include <utility>

/// What the coordinates of a file are taken to be.
struct file_coordinates
{
    int mode = 0;      ///< 0 degrees, 1 plane XY, 2 and 3 degrees with minutes, 4 plane YX
    model_param param; ///< the system of plane coordinates
    double cz = 0.0;   ///< its semi-major axis, metres
    double dz = 0.0;   ///< its semi-minor axis, metres
    double pl = 0.0;   ///< its flattening

    [[nodiscard]] bool is_plane() const { return mode == 1 || mode == 4; }
};

/// Longitude and latitude, decimal degrees with twelve decimals, of a plane
/// position (metres) whose numbers stand in a file in the order of the mode.
[[nodiscard]] std::pair<QString, QString> degrees_of_plane(const file_coordinates& form,
                                                           double first, double second);
