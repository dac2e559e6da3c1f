#pragma once

#include "coordinates/coordinate_system.h"

#include <QString>

#include <cstdint>

// Carries measured WGS-84 positions into the plane coordinates of a user's
// coordinate system and back. All angles are degrees and all lengths metres
// unless a line says otherwise; all work is in double precision. The constants
// are part of the behaviour, the odd ones too: each routine keeps its own, and
// forward and inverse are deliberately not exact inverses of each other.
//
// The routines are free functions joined by two process-wide variables, so they
// belong to one thread. Their debug lines go through the logging category
// "velmo.transforms", which is on by default and governs the two lines on
// standard output as well; QT_LOGGING_RULES="velmo.transforms=false" switches
// all of them off, and then none is formatted.
//
// No value is rejected: what cannot be computed comes back as NaN or infinity.

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

/// Sign of the longitude that BLH2XYZ() saw last, -1 below 0 and else 1. XYZ2BLH()
/// gets the longitude from an arc cosine, which has none, and takes this one.
extern std::int8_t longitude_sign;

/// The `type` of the record that wgs84_to_plane() got last. By4Param() only copies
/// when it is not 0.
extern std::uint8_t skip_four_param;

/// Carries a measured WGS-84 position into the plane of a coordinate system.
///
/// \a a, \a b and \a f are the axes (metres) and the flattening of the system.
/// A system whose `ellipsoid` is not 2 gets the change of datum, BLH2XYZ() on
/// WGS-84, By7Param(), XYZ2BLH() on its own axes, whatever its `type` is.
///
/// \a position.h comes back multiplied by ten, and that is also the height that
/// is shifted and returned: callers use the measured height. \a param is changed
/// for the length of the call; east, north and l0 are scaled and scaled back, each
/// rounded twice.
plane_position wgs84_to_plane(geodetic_position& position, model_param& param, double a, double b,
                              double f);

/// Carries a plane position of a coordinate system back to WGS-84: By4ParamInverse()
/// always, whatever `type` is, the projection's inverse, and the change of datum
/// for a system whose `ellipsoid` is not 2. Not the exact inverse of
/// wgs84_to_plane().
geodetic_position plane_to_wgs84(const plane_position& position, const model_param& param, double a,
                                 double b, double f);

/// Cartesian coordinates of a geodetic position on the ellipsoid (a, b), metres.
/// Any latitude, longitude and height. Leaves the sign of the longitude in
/// longitude_sign. Closed form, as in Hofmann-Wellenhof and Moritz, Physical
/// Geodesy, 5-6; a degree is 3.1415926535 / 180 radians here.
cartesian_position BLH2XYZ(const geodetic_position& position, double a, double b);

/// Geodetic position of Cartesian coordinates on the ellipsoid (a, b), metres; the
/// sign of the longitude is longitude_sign, left by the BLH2XYZ() just before.
///
/// The latitude is iterated from the direction of the point (Physical Geodesy, 5-6).
/// The loop looks at the last rise of the latitude only and ends when that is
/// below 1e-10 radians. So in the north the latitude is right to 4e-11 degrees, while
/// in the south, where the value falls, one pass is all: that leaves up to 8.4e-4
/// degrees (93 m, about 30 degrees south), and the height up to 284 m too high or
/// low. Where a rise of 1e-10 or more is followed by no other, which is so for most
/// points north of about 89.99 degrees, the values come round without end: the loop
/// stops when one recurs or is not a number. The latitude is as good there as
/// elsewhere in the north; the longitude loses its digits with the distance from the
/// axis and is NaN on it. With axes that are no ellipsoid (b above a, 0) the result
/// means nothing. The height is divided by the sine of the latitude and means nothing
/// within 1e-5 degrees of the equator; at Z of 0 it is 0 whatever the point.
geodetic_position XYZ2BLH(const cartesian_position& position, double a, double b);

/// Gauss projection, forward: the transverse Mercator series of Snyder, Map
/// Projections - A Working Manual (USGS 1395), 8-9 to 8-15 and 3-21, except that
/// the sixth-order term of x lacks its factor.
///
/// \a block is scaled as in wgs84_to_plane(): east and north times 10, l0 times
/// 10000. An l0 that is not on a standard meridian is moved to that of its zone, an
/// l0 below 1.5 with a zone width of 3 to zone 120 (360 degrees), a k0 of 0 means 1,
/// an east of 0 means 500000. Longitudes up to 0 count from 0 to 360. \a position.h
/// is handed through. The result is good to a millimetre within 2 degrees of the
/// meridian, to 2 mm at 3 degrees, 12 cm at 6 and 3 m at 10; from about 20 degrees
/// (170 m) on it means nothing, and nothing says so.
plane_position BL2XY(const model_param::projection_block& block, const geodetic_position& position,
                     double a, double f);

/// UTM projection, forward, from the same source with another fifth-order term of
/// y. Zone and meridian come from the point's own longitude, so l0 and method play
/// no part; a k0 of 0 means 0.9996, in single precision.
///
/// \a block is scaled as in wgs84_to_plane(). \a hemisphere is 1 north of the
/// equator, where \a north less 10000000 is added, and anything else south of it,
/// where the arc is taken from \a north: a UTM system is given a north of 10000000.
plane_position UTMBL2XY(const model_param::projection_block& block,
                        const geodetic_position& position, double a, double f,
                        std::uint8_t hemisphere);

/// A longitude (degrees) in -180 to 180, as subtracting or adding 360 again and again
/// gives it, to the last bit, but in one step. Subtracting is exact up to 2^56 degrees,
/// where it would take days; beyond, this is the exact remainder. From 2^53 degrees on
/// neighbouring doubles are whole degrees apart and the place in the circle means
/// nothing. An infinite longitude gives NaN.
double longitude_in_range(double longitude);

/// Gauss projection, inverse (Snyder, 8-17 to 8-25, 3-24 and 3-26), on the unscaled
/// block. The zone is taken from y, so l0 plays no part, and an east of 0 is 0 here.
///
/// The result means something where y without its millions is the easting, so within
/// 500 km of the meridian; beyond, y tells of another zone. Where the cosine of the
/// latitude is next to 0 or y is no easting at all, the longitude grows with the fifth
/// power of its distance, and longitude_in_range() brings it back to anywhere.
geodetic_position XY2BL(const model_param::projection_block& block, const plane_position& position,
                        double a, double f);

/// UTM projection, inverse (Snyder, as XY2BL()). Only k0 of the block is read, 0
/// meaning 0.9996 in single precision. x is cut to whole metres, and latitude and
/// longitude come back without their signs.
geodetic_position UTMXY2BL(const model_param::projection_block& block,
                           const plane_position& position, double a, double f);

/// Seven-parameter step: dx, dy, dz in metres, rx, ry, rz in arc-seconds turning the
/// coordinate frame, the scale k + 1. The linear form for small angles (Bursa and
/// Wolf).
cartesian_position By7Param(const seven_parameters& parameters, const cartesian_position& position);

/// Seven-parameter step back. Takes rx, ry, rz for degrees, not arc-seconds: back
/// and forth agree only where they are 0. The matrix of By7Param() inverted.
cartesian_position By7ParamInverse(const seven_parameters& parameters,
                                   const cartesian_position& position);

/// Four-parameter step in the plane: turned, scaled by k (the scale itself, 1
/// meaning none) and shifted by dx and dy (metres), leaving the zone number in the
/// millions of y. Copies if skip_four_param is not 0 or k is 0. An rt above 0
/// (arc-seconds) turns by 180 degrees more than it says, one below 0 by its
/// absolute value.
plane_position By4Param(const model_param::plane_parameters& parameters,
                        const plane_position& position);

/// Four-parameter step before the inverse projections, not the inverse of
/// By4Param(): k is the difference of scale here (0 meaning none), rt a plain small
/// factor and no angle, and skip_four_param is not looked at.
plane_position By4ParamInverse(const model_param::plane_parameters& parameters,
                               const plane_position& position);

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

/// Decimal degrees as degrees (two digits for a latitude, three for a longitude,
/// "-" ahead if negative) and minutes with four decimals, which may round up to
/// "60.0000".
dm_text degrees_to_dm(double degrees, bool is_latitude);

/// Decimal degrees as degrees (as in degrees_to_dm()), whole minutes, whole seconds
/// and two decimals, which may round up to ".00".
dms_text degrees_to_dms(double degrees, bool is_latitude);

/// Decimal degrees of a text such as 104°01.2345′, or -1.0 if it is none. Minutes
/// count upwards whatever the sign of the degrees.
double dm_to_degrees(const QString& text);

/// Decimal degrees of a text such as 104°01′23.45″, or -1.0 if it is none. Minutes
/// and seconds count upwards whatever the sign of the degrees.
double dms_to_degrees(const QString& text);

/// The flat record of a stored system. The axes and the flattening travel beside
/// it.
model_param flat_parameters(const CoordinateSystem& system);
