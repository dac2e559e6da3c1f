#include "exchange/file_coordinates.h"

#include "coordinates/transforms.h"

namespace {

/// How coordinates that are computed are written.
QString twelve_decimals(double value)
{
    return QString::number(value, 'f', 12);
}

} // namespace

std::pair<QString, QString> degrees_of_plane(const file_coordinates& form, double first,
                                             double second)
{
    const plane_position plane = form.mode == xy_mode ? plane_position{first, second, 0.0}
                                                      : plane_position{second, first, 0.0};
    const geodetic_position position = plane_to_wgs84(plane, form.param, form.cz, form.dz, form.pl);
    return {twelve_decimals(position.l), twelve_decimals(position.b)};
}

std::pair<QString, QString> plane_of_degrees(file_coordinates& form, double longitude,
                                             double latitude, double altitude)
{
    geodetic_position position{latitude, longitude, altitude};
    const plane_position plane = wgs84_to_plane(position, form.param, form.cz, form.dz, form.pl);
    const QString x = twelve_decimals(plane.x);
    const QString y = twelve_decimals(plane.y);
    return form.mode == xy_mode ? std::pair{x, y} : std::pair{y, x};
}
