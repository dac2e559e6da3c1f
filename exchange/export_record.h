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

    /// Texts that the pairs and altitudes of this record may point into: a file has
    /// millions of points, and memory for each of their numbers costs more than
    /// reading them. Pairs and altitudes must not outlive the record and its copies.
    QStringList kept_texts = {};
    /// A part of a kept text, as a string without memory of its own.
    static QString shared(QStringView kept_part)
    {
        return QString::fromRawData(kept_part.data(), kept_part.size());
    }
};
