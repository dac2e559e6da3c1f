#pragma once

#include "coordinates/coordinate_system.h"

#include <QString>

/// Geodetic position: latitude and longitude in decimal degrees, height in
/// metres.
struct geodetic_position
{
    double b = 0.0, l = 0.0, h = 0.0;
};

/// Earth-centred Cartesian position, metres.
struct cartesian_position
{
    double x = 0.0, y = 0.0, z = 0.0;
};

/// Plane position, metres: x the northing, y the easting with the zone number in
/// its millions, h the height.
struct plane_position
{
    double x = 0.0, y = 0.0, h = 0.0;
};

/// Carries a measured WGS-84 position into the plane of a coordinate system.
/// \a a, \a b and \a f are the axes (metres) and the flattening of the system.
/// The caller's \a position.h comes back multiplied by ten.
plane_position wgs84_to_plane(geodetic_position& position, model_param& param, double a, double b,
                              double f);

/// Carries a plane position of a coordinate system back to WGS-84. Not the exact
/// inverse of wgs84_to_plane().
geodetic_position plane_to_wgs84(const plane_position& position, const model_param& param, double a,
                                 double b, double f);

/// Cartesian coordinates of a geodetic position on the ellipsoid (a, b), metres.
/// Leaves the sign of the longitude for XYZ2BLH().
cartesian_position BLH2XYZ(const geodetic_position& position, double a, double b);

/// Degrees and minutes as text, as in "104" and "01.2345".
struct dm_text
{
    QString degrees, minutes;
};

/// Degrees, minutes, seconds and the fraction of a second (with its point, or
/// empty) as text.
struct dms_text
{
    QString degrees, minutes, seconds, fraction;
};

dm_text degrees_to_dm(double degrees, bool is_latitude);
dms_text degrees_to_dms(double degrees, bool is_latitude);

/// Decimal degrees of a text such as 104°01.2345′, or -1.0 if it is none.
double dm_to_degrees(const QString& text);

/// Decimal degrees of a text such as 104°01′23.45″, or -1.0 if it is none.
double dms_to_degrees(const QString& text);

/// The flat record of a stored system. The axes and the flattening travel beside
/// it.
model_param flat_parameters(const CoordinateSystem& system);
