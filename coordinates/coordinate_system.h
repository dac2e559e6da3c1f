#pragma once

#include <QMetaType>
#include <QString>

#include <cstdint>

/// Axes of the ellipsoid that measured positions are on, metres.
inline constexpr double wgs84_a = 6378137.0;
inline constexpr double wgs84_b = 6356752.314245179;

/// Seven-parameter (Helmert) set: translations in metres, rotations in
/// arc-seconds, k the scale difference to which 1 is added in use.
struct seven_parameters
{
    double dx = 0.0, dy = 0.0, dz = 0.0;
    double rx = 0.0, ry = 0.0, rz = 0.0;
    double k = 0.0;
};

/// Four-parameter set of the plane as it is stored: shifts in metres, scale,
/// rotation in arc-seconds.
struct four_parameters
{
    double dx = 0.0, dy = 0.0;
    double k = 0.0;
    double rt = 0.0;
};

/// One stored coordinate system.
struct CoordinateSystem
{
    QString name;           ///< unique, compared case-sensitively
    double changzhou = 0.0; ///< semi-major axis, metres
    double duanzhou = 0.0;  ///< semi-minor axis, metres
    double pianlv = 0.0;    ///< flattening
    int type = 0;           ///< 0 four-parameter, 1 seven-parameter, 2 default parameters
    int ellipsoid = 0;      ///< 0 BEIJING1954, 1 XIAN1980, 2 WGS1984, 3 CGCS2000
    int utm_mode = 1;       ///< 1 Gauss, 2 UTM
    int method = 3;         ///< zone width, degrees: 3 or 6
    double k0 = 1.0;        ///< scale on the central meridian
    double east = 500000.0; ///< false easting, metres
    double north = 0.0;     ///< false northing, metres
    double tall = 0.0;      ///< projection height, metres; stored and shown only
    double l0 = 0.0;        ///< central meridian, decimal degrees
    seven_parameters param7;
    four_parameters param4;
};

/// The flat record that rides on export and import signals, filled from a
/// CoordinateSystem. `l0` and `k0` are narrowed to 32 bits by design, and here
/// the four parameters stand rotation before scale.
struct model_param
{
    std::uint8_t type = 0;
    std::uint8_t ellipsoid = 0;
    std::uint8_t reserved_record = 0; ///< only printed
    /// What the projection routines receive.
    struct projection_block
    {
        std::uint8_t utm_mode = 0;
        std::uint8_t reserved_mode = 0; ///< only printed
        std::uint8_t method = 0;
        std::int32_t reserved_zone = 0;   ///< only printed
        std::uint8_t reserved_method = 0; ///< only printed
        float l0 = 0.0F;                  ///< central meridian, degrees
        float k0 = 0.0F;
        double east = 0.0;
        double north = 0.0;
        double tall = 0.0;
    } projection;
    seven_parameters param7;
    struct plane_parameters
    {
        double dx = 0.0, dy = 0.0;
        double rt = 0.0;
        double k = 0.0;
    } param4;
};
Q_DECLARE_METATYPE(model_param)
