#pragma once

/// How coordinates stand in a file.
enum coordinate_mode
{
    degrees_mode = 0, ///< decimal degrees
    xy_mode = 1,      ///< plane, x (northing) first
    minutes_mode = 2, ///< degrees and minutes
    seconds_mode = 3, ///< degrees, minutes and seconds
    yx_mode = 4,      ///< plane, y (easting) first
};

inline bool is_plane(int mode)
{
    return mode == xy_mode || mode == yx_mode;
}
