#pragma once

#include "coordinates/coordinate_system.h"
#include "exchange/coordinate_mode.h"

#include <QString>

#include <utility>

/// What the coordinates of a file are taken to be.
struct file_coordinates
{
    int mode = degrees_mode; ///< a coordinate_mode
    model_param param;       ///< the system of plane coordinates
    double cz = 0.0;         ///< its semi-major axis, metres
    double dz = 0.0;         ///< its semi-minor axis, metres
    double pl = 0.0;         ///< its flattening
};

/// Longitude and latitude, decimal degrees with twelve decimals, of a plane
/// position (metres) whose numbers stand in a file in the order of the mode.
[[nodiscard]] std::pair<QString, QString> degrees_of_plane(const file_coordinates& form,
                                                           double first, double second);

/// The plane position (metres with twelve decimals, in the order of the mode) of a
/// longitude and latitude (decimal degrees) at an altitude (metres). The system is
/// scaled and scaled back on the way, see wgs84_to_plane().
[[nodiscard]] std::pair<QString, QString> plane_of_degrees(file_coordinates& form, double longitude,
                                                           double latitude, double altitude);
