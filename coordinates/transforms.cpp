#include "coordinates/transforms.h"

#include <QLoggingCategory>

#include <cmath>
#include <cstdio>

std::int8_t longitude_sign = 1;
std::uint8_t skip_four_param = 0;

namespace {

Q_LOGGING_CATEGORY(transforms_log, "velmo.transforms")

// Each routine has the one constant of its own: they differ in the tenth digit.
constexpr double radians_first = 0.017453292519444445; // 3.1415926535 / 180
constexpr double radians_second = 0.017453292519943;
constexpr double pi_short = 3.1415926535;
constexpr double degrees_per_radian = 57.29577951308232;
constexpr double radians_per_second = 4.84813681095679e-06;

constexpr double zone_factor = 1000000.0; // the zone number stands in the millions of y

/// The whole part of any value. What does not fit into 64 bits is a multiple of
/// 2048, so that its low byte, the most that is used of such a value, is 0.
std::int64_t truncated(double value)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    return std::fabs(value) < limit ? static_cast<std::int64_t>(value) : 0;
}

double low_byte(double value)
{
    return static_cast<double>(truncated(value) & 0xFF);
}

/// A line to standard output. Formatted by Qt: the decimal point does not follow
/// the locale.
template <typename... Values>
void print(const char* format, Values... values)
{
    if (transforms_log().isDebugEnabled())
        std::fputs(QString::asprintf(format, values...).toUtf8().constData(), stdout);
}

/// What both forward projections share.
struct forward_series
{
    forward_series(double phi, double a, double f)
    {
        const double e2 = (2.0 - f) * f;
        ep2 = e2 / (1.0 - e2);
        const double sine = std::sin(phi);
        cosine = std::cos(phi);
        tangent = std::tan(phi);
        t = tangent * tangent;
        c = ep2 * cosine * cosine;
        n = a / std::sqrt(1.0 - e2 * sine * sine);

        const double e4 = e2 * e2;
        const double e6 = e4 * e2;
        const double m0 = 1.0 - e2 * 0.25 - 3.0 * e4 * 0.015625 - 5.0 * e6 * 0.00390625;
        const double m2 = 3.0 * e4 * 0.03125 + 3.0 * e2 * 0.125 + 45.0 * e6 * 0.0009765625;
        const double m4 = 15.0 * e4 * 0.00390625 + 45.0 * e6 * 0.0009765625;
        const double m6 = 35.0 * e6 / 3072.0;
        arc = a * (m0 * phi - m2 * std::sin(2.0 * phi) + m4 * std::sin(4.0 * phi) -
                   m6 * std::sin(6.0 * phi));
    }

    /// The northing from the equator, before scale; the last term without the
    /// factor tan(phi) N.
    [[nodiscard]] double northing(double angle) const
    {
        const double a2 = angle * angle;
        const double a4 = a2 * a2;
        return arc + tangent * n * ((5.0 - t + 9.0 * c + 4.0 * c * c) * a4 / 24.0 + a2 / 2.0) +
               (61.0 - 58.0 * t + t * t + 270.0 * c - 330.0 * t * c) * (a4 * a2) / 720.0;
    }

    /// The easting from the meridian, before scale and N. The factor of the
    /// fifth-order term is the projection's own.
    [[nodiscard]] double easting(double angle, double fifth) const
    {
        const double a3 = angle * angle * angle;
        return fifth * (a3 * angle * angle) / 120.0 + (1.0 - t + c) * a3 / 6.0 + angle;
    }

    double ep2, cosine, tangent, t, c, n, arc;
};

/// What both inverse projections share: everything at the footpoint latitude of
/// the given arc (metres from the equator, before scale).
struct inverse_series
{
    inverse_series(double scaled_arc, double k, double a, double f)
    {
        const double e2 = (2.0 - f) * f;
        const double e4 = e2 * e2;
        const double e1 = f / (2.0 - f);
        const double e1_2 = e1 * e1;
        const double e1_3 = e1_2 * e1;
        const double e1_4 = e1_2 * e1_2;
        const double mu =
            scaled_arc / k / ((1.0 - e2 / 4.0 - 3.0 * e4 / 64.0 - 5.0 * (e4 * e2) / 256.0) * a);
        phi = mu + std::sin(2.0 * mu) * (3.0 * e1 / 2.0 - 27.0 * e1_3 / 32.0) +
              std::sin(4.0 * mu) * (21.0 * e1_2 / 16.0 - 55.0 * e1_4 / 32.0) +
              std::sin(6.0 * mu) * (151.0 * e1_3 / 96.0) +
              std::sin(8.0 * mu) * (1097.0 * e1_4 / 512.0);
        const double sine = std::sin(phi);
        cosine = std::cos(phi);
        tangent = std::tan(phi);
        t = tangent * tangent;
        ep2 = e2 / (1.0 - e2);
        c = ep2 * (cosine * cosine);
        const double w = 1.0 - e2 * (sine * sine);
        n = a / std::sqrt(w);
        r = (1.0 - e2) * a / std::sqrt(w * w * w);
    }

    /// Latitude in degrees at the distance d from the meridian, over N and scale.
    [[nodiscard]] double latitude(double d, double fourth, double sixth) const
    {
        const double d2 = d * d;
        const double d4 = d2 * d2;
        return (phi -
                tangent * n / r * (d2 / 2.0 - fourth * d4 / 24.0 + sixth * (d4 * d2) / 720.0)) *
               degrees_per_radian;
    }

    /// Longitude in degrees.
    [[nodiscard]] double longitude(double d, double fifth, double meridian) const
    {
        const double d3 = d * d * d;
        return ((fifth * (d3 * d * d) / 120.0 + d - (2.0 * t + 1.0 + c) * d3 / 6.0) / cosine +
                meridian * radians_second) *
               degrees_per_radian;
    }

    double phi, cosine, tangent, t, ep2, c, n, r;
};

double scale_or(float k0, double otherwise)
{
    return k0 == 0.0F ? otherwise : static_cast<double>(k0);
}

/// The scale of UTM, in single precision as k0 is.
double utm_scale(float k0)
{
    return static_cast<double>(k0 == 0.0F ? 0.9996F : k0);
}

/// The latitude of XYZ2BLH() is the arc tangent of a numerator over p, which each
/// pass computes anew. This is the numerator after the passes that can be made
/// without an angle: with sine and cosine of the last latitude written as sides of
/// its triangle, a pass is one root and one quotient. A numerator counts only where
/// both roads must end on the same double: the part that is added to z is known to
/// 20 units of 2^-53 (10 for the road with angles, given functions right to the last
/// place, 6 for this one, 4 for a numerator before that was off by two places), and
/// the sum must round alike at both ends of a wider span. Passes whose rise is near
/// the limit of 1e-10 radians are left to XYZ2BLH(), and all are for what is no
/// place on or about an earth.
double certain_numerator(double z, double p, double a, double e2, double ep2, double c)
{
    if (!(e2 > 0.0 && e2 < 0.01 && a > 1e6 && p * p + z * z > a * a / 4.0))
        return z;
    constexpr double doubt = 24.0 * 0x1p-53;
    const double scale = e2 * c;
    const double axis = (1.0 + ep2) * (p * p);
    double certain = z;
    double last = z;
    for (;;) {
        const double added = scale * last / std::sqrt(axis + last * last);
        const double least = z + (added - added * doubt);
        const double most = z + (added + added * doubt);
        if (!((least - last) * p > 2e-10 * (p * p + last * last)))
            return certain;
        if (least == most)
            certain = least;
        last = least;
    }
}

} // namespace

plane_position wgs84_to_plane(geodetic_position& position, model_param& param, double a, double b,
                              double f)
{
    model_param::projection_block& block = param.projection;
    block.east *= 10.0;
    block.north *= 10.0;
    block.l0 *= 10000.0F;
    position.h *= 10.0;
    qCDebug(transforms_log, "b:%lf,l:%lf,h:%lf\r\n\r\n", position.b, position.l, position.h);
    qCDebug(transforms_log, "model_param:%d,%d,%d,%d,%d,%d,%d,%d,%f,%f,%lf,%lf,%lf\r\n\r\n",
            param.type, param.ellipsoid, param.reserved_record, block.utm_mode, block.reserved_mode,
            block.method, block.reserved_zone, block.reserved_method, static_cast<double>(block.l0),
            static_cast<double>(block.k0), block.east, block.north, block.tall);

    const std::uint8_t hemisphere = position.b < 0.0 ? 2 : 1;
    skip_four_param = param.type;
    const geodetic_position local =
        param.ellipsoid == 2
            ? position
            : XYZ2BLH(By7Param(param.param7, BLH2XYZ(position, wgs84_a, wgs84_b)), a, b);
    const plane_position projected =
        block.utm_mode == 1 ? BL2XY(block, local, a, f) : UTMBL2XY(block, local, a, f, hemisphere);
    const plane_position result = By4Param(param.param4, projected);

    block.east /= 10.0;
    block.north /= 10.0;
    block.l0 /= 10000.0F;
    return result;
}

geodetic_position plane_to_wgs84(const plane_position& position, const model_param& param, double a,
                                 double b, double f)
{
    const plane_position plane = By4ParamInverse(param.param4, position);
    const geodetic_position local = param.projection.utm_mode == 1
                                        ? XY2BL(param.projection, plane, a, f)
                                        : UTMXY2BL(param.projection, plane, a, f);
    if (param.ellipsoid == 2)
        return local;
    return XYZ2BLH(By7ParamInverse(param.param7, BLH2XYZ(local, a, b)), wgs84_a, wgs84_b);
}

cartesian_position BLH2XYZ(const geodetic_position& position, double a, double b)
{
    const double e = std::sqrt(a * a - b * b) / a;
    longitude_sign = position.l < 0.0 ? -1 : 1;
    const double latitude = position.b * radians_first;
    const double longitude = position.l * radians_first;
    const double sine = std::sin(latitude);
    const double cosine = std::cos(latitude);
    const double e2 = e * e;
    const double n = a / std::sqrt(1.0 - sine * sine * e2);
    const double radius = n + position.h;
    const cartesian_position result{std::cos(longitude) * cosine * radius,
                                    cosine * radius * std::sin(longitude),
                                    ((1.0 - e2) * n + position.h) * sine};
    qCDebug(transforms_log, "BLH2XYZ:xyz->X=%f,xyz->Y=%f\r\n\r\n", result.x, result.y);
    return result;
}

geodetic_position XYZ2BLH(const cartesian_position& position, double a, double b)
{
    const double a2 = a * a;
    const double b2 = b * b;
    const double e2 = (a2 - b2) / a2;
    const double ep2 = (a2 - b2) / b2;
    const double c = a2 / b;
    const double p = std::sqrt(position.x * position.x + position.y * position.y);
    const double longitude = longitude_sign * std::acos(position.x / p);

    // Only a rise renews the difference, so a value that comes back closes a circle
    // that has no end. Comparing with a value kept for twice as many passes each
    // time finds every circle (Brent 1980).
    const double numerator = certain_numerator(position.z, p, a, e2, ep2, c);
    double latitude = std::atan(numerator / p);
    double difference = numerator == position.z ? 0.0 : 1.0; // what was skipped are rises
    double kept = latitude;
    std::uint64_t keep_at = 1;
    std::uint64_t pass = 0;
    do {
        const double before = latitude;
        const double cosine = std::cos(before);
        const double n = c / std::sqrt(1.0 + ep2 * (cosine * cosine));
        latitude = std::atan((std::sin(before) * n * e2 + position.z) / p);
        if (before - latitude < 0.0)
            difference = latitude - before;
        if (latitude == kept || std::isnan(latitude))
            break;
        if (++pass == keep_at) {
            kept = latitude;
            keep_at *= 2;
        }
    } while (difference >= 1e-10);

    const double cosine = std::cos(latitude);
    const double n = c / std::sqrt(1.0 + ep2 * (cosine * cosine));
    const double height = position.z / std::sin(latitude) - (1.0 - e2) * n;
    return {latitude * 180.0 / pi_short, longitude * 180.0 / pi_short,
            std::isnan(height) ? 0.0 : height};
}

plane_position BL2XY(const model_param::projection_block& block, const geodetic_position& position,
                     double a, double f)
{
    const double k = scale_or(block.k0, 1.0);
    const double l = static_cast<double>(block.l0 / 10000.0F);
    const double false_north = block.north / 10.0 + 0.0;
    const double false_east = (block.east == 0.0 ? 0.0 : block.east - 5000000.0) / 10.0 + 500000.0;

    double zone = 120.0;
    if (block.method == 6)
        zone = static_cast<double>(truncated(l / 6.0 + 1.0));
    else if (!(l < 1.5))
        zone = static_cast<double>(truncated((l - 1.5) / 3.0 + 1.0));
    const double meridian = block.method == 6 ? 6.0 * zone - 3.0 : 3.0 * zone;

    const double longitude = position.l > 0.0 ? position.l : position.l + 360.0;
    const forward_series s(position.b * radians_second, a, f);
    const double angle = s.cosine * (longitude * radians_second - meridian * radians_second);
    const double fifth = 5.0 - 18.0 * s.t + s.t * s.t + 14.0 * s.c - 58.0 * s.t * s.c;

    if (block.method == 6 && zone > 60.0)
        zone -= 60.0;
    const plane_position result{
        s.northing(angle) * k + false_north,
        zone * zone_factor + (s.easting(angle, fifth) * k * s.n + false_east), position.h};
    qCDebug(transforms_log, "BL2XY  : B:%0.9f, L:%0.9f, H:%0.9f => x:%0.9f, y:%0.9f, h:%0.9f\r\n",
            position.b, position.l, position.h, result.x, result.y, result.h);
    return result;
}

plane_position UTMBL2XY(const model_param::projection_block& block,
                        const geodetic_position& position, double a, double f,
                        std::uint8_t hemisphere)
{
    const double k = utm_scale(block.k0);
    const double zone = std::floor((position.l + 180.0) / 6.0) + 1.0;
    const double meridian = 6.0 * zone - 183.0;
    const bool north = hemisphere == 1;

    const double phi = position.b * radians_second;
    const forward_series s(north ? phi : -phi, a, f);
    const double angle = s.cosine * ((position.l - meridian) * radians_second);
    const double fifth = 5.0 - 18.0 * s.t + s.t * s.t + 72.0 * s.c - 58.0 * s.ep2 * s.ep2;

    const double arc = s.northing(angle) * k;
    const plane_position result{
        north ? (block.north - 100000000.0) / 10.0 + arc : block.north / 10.0 - arc,
        block.east / 10.0 + s.easting(angle, fifth) * k * s.n + zone * zone_factor, position.h};
    qCDebug(transforms_log, "UTMBL2XY:xy->X=%f,xy->Y=%f,xy->H=%f\r\n\r\n", result.x, result.y,
            result.h);
    return result;
}

double longitude_in_range(double longitude)
{
    if (std::fabs(longitude) <= 180.0)
        return longitude;
    const double rest = std::fmod(longitude, 360.0);
    if (rest > 180.0)
        return rest - 360.0;
    return rest < -180.0 ? rest + 360.0 : rest + 0.0; // -360 comes to 0 and not to -0
}

geodetic_position XY2BL(const model_param::projection_block& block, const plane_position& position,
                        double a, double f)
{
    const std::int64_t zone_number = truncated(std::fabs(position.y)) / 1000000;
    const auto zone = static_cast<double>(zone_number);
    const double meridian = block.method == 6 ? 6.0 * zone - 3.0 : 3.0 * zone;
    const double k = scale_or(block.k0, 1.0);
    const inverse_series s(position.x - block.north - 0.0, k, a, f);

    const double d =
        (position.y - (block.east - 500000.0) - zone * zone_factor - 500000.0) / (s.n * k);
    const double fourth = 3.0 * s.t + 5.0 + s.c - 9.0 * s.c * s.t;
    const double sixth = 45.0 * s.t * s.t + 90.0 * s.t + 61.0;
    const double fifth = 28.0 * s.t + 5.0 + 6.0 * s.c + 8.0 * s.t * s.c + 24.0 * s.t * s.t;
    return {s.latitude(d, fourth, sixth), longitude_in_range(s.longitude(d, fifth, meridian)),
            position.h};
}

geodetic_position UTMXY2BL(const model_param::projection_block& block,
                           const plane_position& position, double a, double f)
{
    constexpr std::int64_t southern_north = 10000000; // metres
    const double zone = low_byte(position.y / zone_factor);
    const double k = utm_scale(block.k0);
    const std::int64_t x = truncated(position.x);
    const std::int64_t arc =
        x % southern_north - ((x / southern_north & 0xFF) != 0 ? southern_north : 0);
    const inverse_series s(static_cast<double>(arc), k, a, f);

    const double d = (position.y - (zone * zone_factor + 500000.0)) / (k * s.n);
    const double fourth = 3.0 * s.t + 5.0 + 10.0 * s.c - 4.0 * s.c * s.c - 9.0 * s.ep2;
    const double sixth =
        61.0 + 90.0 * s.t + 298.0 * s.c + 45.0 * s.t * s.t - 252.0 * s.ep2 - 3.0 * s.c * s.c;
    const double fifth =
        5.0 - 2.0 * s.c + 28.0 * s.t - 3.0 * s.c * s.c + 8.0 * s.ep2 + 24.0 * s.t * s.t;
    return {std::fabs(s.latitude(d, fourth, sixth)),
            std::fabs(s.longitude(d, fifth, 6.0 * zone - 183.0)), position.h};
}

cartesian_position By7Param(const seven_parameters& parameters, const cartesian_position& position)
{
    const auto& [x, y, z] = position;
    const double s = parameters.k + 1.0;
    const double rx = parameters.rx * radians_per_second;
    const double ry = parameters.ry * radians_per_second;
    const double rz = parameters.rz * radians_per_second;
    const cartesian_position result{s * x + parameters.dx + rz * y - ry * z,
                                    parameters.dy - rz * x + s * y + rx * z,
                                    ry * x + parameters.dz - rx * y + s * z};
    qCDebug(transforms_log, "By7Param: X:%0.9f, Y:%0.9f, Z:%0.9f => X:%0.9f, Y:%0.9f, Z:%0.9f\r\n",
            x, y, z, result.x, result.y, result.z);
    return result;
}

cartesian_position By7ParamInverse(const seven_parameters& parameters,
                                   const cartesian_position& position)
{
    const double u = parameters.rx * radians_second;
    const double w = parameters.ry * radians_second;
    const double t = parameters.rz * radians_second;
    const double s = parameters.k + 1.0;
    const double x = (position.x - parameters.dx) / s;
    const double y = (position.y - parameters.dy) / s;
    const double z = (position.z - parameters.dz) / s;

    const double g = t * t + 1.0;
    const double d = 1.0 / (2.0 * w * w * t * t + u * u + w * w + t * t + 1.0);
    const double p = u * u * t;
    const double q = w * w * t;
    const double m = w * u;
    const double n = w * u * t * t;
    const cartesian_position result{((p + m + n + q) * d - t) / g * y +
                                        ((p * t - w * w) * d + 1.0) / g * x + (t * u + w) * d * z,
                                    ((n - p - q + m) * d + t) / g * x +
                                        ((q * t - u * u) * d + 1.0) / g * y + (t * w - u) * d * z,
                                    (t * w + u) * d * y + (t * u - w) * d * x + g * d * z};
    print("By7Param: X:%0.9f, Y:%0.9f, Z:%0.9f <= X:%0.9f, Y:%0.9f, Z:%0.9f\r\n", result.x,
          result.y, result.z, position.x, position.y, position.z);
    return result;
}

plane_position By4Param(const model_param::plane_parameters& parameters,
                        const plane_position& position)
{
    plane_position result = position;
    if (skip_four_param == 0) {
        const double zone = position.y > zone_factor
                                ? static_cast<double>(truncated(position.y / zone_factor))
                                : 0.0;
        const double y = position.y - zone * zone_factor;
        const double seconds = parameters.rt > 0.0 ? parameters.rt + 648000.0 : -parameters.rt;
        const double angle = seconds / 3600.0 * pi_short / 180.0;
        const double sine = std::sin(angle);
        const double cosine = std::cos(angle);
        if (parameters.k == 0.0) {
            result.y = y;
        } else {
            result.x = (position.x * cosine - y * sine) * parameters.k + parameters.dx;
            result.y = (position.x * sine + y * cosine) * parameters.k + parameters.dy;
        }
        if (zone > 0.0)
            result.y =
                result.y >= 0.0 ? result.y + zone * zone_factor : zone * zone_factor - result.y;
    }
    qCDebug(transforms_log, "By4Param: x:%0.9f, y:%0.9f, h:%0.9f => x:%0.9f, y:%0.9f, h:%0.9f\r\n",
            position.x, position.y, position.h, result.x, result.y, result.h);
    return result;
}

plane_position By4ParamInverse(const model_param::plane_parameters& parameters,
                               const plane_position& position)
{
    const auto& [dx, dy, rt, k] = parameters;
    const double zone = low_byte(position.y / zone_factor);
    const double x = position.x;
    const double y = position.y - zone * zone_factor;
    const double s = k + 1.0;
    plane_position result{0.0, 0.0, position.h};
    if (rt == 0.0) {
        result.x = (x - dx) / s;
        result.y = (y - dy) / s;
    } else {
        result.y = (y - rt * x - dy + rt * dx) / (rt * rt * s + s);
        result.x = (result.y * rt * s + x - dx) / s;
    }
    result.y += zone * zone_factor;
    print("By4Param: x:%0.9f, y:%0.9f, h:%0.9f <= x:%0.9f, y:%0.9f, h:%0.9f\r\n", result.x,
          result.y, result.h, position.x, position.y, position.h);
    return result;
}

namespace {

QString padded(std::int64_t value, int width)
{
    return QString::number(value).rightJustified(width, u'0');
}

QString degrees_text(double degrees, bool is_latitude)
{
    const QString digits = padded(truncated(std::fabs(degrees)), is_latitude ? 2 : 3);
    return degrees < 0.0 ? u'-' + digits : digits;
}

/// The minutes of the value, with their fraction.
double minutes_of(double degrees)
{
    const double size = std::fabs(degrees);
    return (size - static_cast<double>(truncated(size))) * 60.0;
}

/// The numbers ahead of the given signs, each counting a sixtieth of the one before,
/// or -1.0 if a sign or a number is missing.
double sum_of_sixtieths(const QString& text, QStringView signs)
{
    double sum = 0.0;
    double unit = 1.0;
    qsizetype begin = 0;
    for (const QChar sign : signs) {
        const qsizetype end = text.indexOf(sign);
        bool ok = false;
        const double value = end < begin ? 0.0 : text.mid(begin, end - begin).toDouble(&ok);
        if (!ok)
            return -1.0;
        sum += value / unit;
        unit *= 60.0;
        begin = end + 1;
    }
    return sum;
}

} // namespace

dm_text degrees_to_dm(double degrees, bool is_latitude)
{
    return {degrees_text(degrees, is_latitude),
            QStringLiteral("%1").arg(minutes_of(degrees), 7, 'f', 4, u'0')};
}

dms_text degrees_to_dms(double degrees, bool is_latitude)
{
    const double minutes = minutes_of(degrees);
    const std::int64_t whole_minutes = truncated(minutes);
    const double seconds = (minutes - static_cast<double>(whole_minutes)) * 60.0;
    const std::int64_t whole_seconds = truncated(seconds);
    const double fraction = seconds - static_cast<double>(whole_seconds);
    const dms_text result{degrees_text(degrees, is_latitude), padded(whole_minutes, 2),
                          padded(whole_seconds, 2),
                          fraction > 0.0 ? QString::number(fraction, 'f', 2).sliced(1) : QString()};
    qCDebug(transforms_log) << "~~~~~~~~~~" << result.degrees << result.minutes << result.seconds
                            << result.fraction;
    return result;
}

double dm_to_degrees(const QString& text)
{
    return sum_of_sixtieths(text, u"°′");
}

double dms_to_degrees(const QString& text)
{
    return sum_of_sixtieths(text, u"°′″");
}

model_param flat_parameters(const CoordinateSystem& system)
{
    model_param param;
    param.type = static_cast<std::uint8_t>(system.type);
    param.ellipsoid = static_cast<std::uint8_t>(system.ellipsoid);
    param.projection.utm_mode = static_cast<std::uint8_t>(system.utm_mode);
    param.projection.method = static_cast<std::uint8_t>(system.method);
    param.projection.l0 = static_cast<float>(system.l0);
    param.projection.k0 = static_cast<float>(system.k0);
    param.projection.east = system.east;
    param.projection.north = system.north;
    param.projection.tall = system.tall;
    param.param7 = system.param7;
    param.param4 = {system.param4.dx, system.param4.dy, system.param4.rt, system.param4.k};
    return param;
}
