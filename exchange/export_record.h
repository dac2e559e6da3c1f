#pragma once

#include "core/records.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

/// Working record of export and of the file importers: a measurement with its
/// geometry.
struct exportRecord : measuringData
{
    QList<std::pair<QString, QString>> coordinate_pairs; ///< filled by importers only
    QStringList altitudes; ///< filled by importers only, in step with the pairs
    QString coordinates;   ///< lines of "longitude,latitude,altitude", each closed by a feed
    QList<point_msg> points;
};
