#include "exchange/file_coordinates.h"

#include "coordinates/transforms.h"

std::pair<QString, QString> degrees_of_plane(const file_coordinates& form, double first,
                                             double second)
{
    const plane_position plane =
        form.mode == 1 ? plane_position{first, second, 0.0} : plane_position{second, first, 0.0};
    const geodetic_position position = plane_to_wgs84(plane, form.param, form.cz, form.dz, form.pl);
    return {QString::number(position.l, 'f', 12), QString::number(position.b, 'f', 12)};
}
