#pragma once

#include "coordinates/coordinate_system.h"

#include <QList>
#include <QObject>
#include <QString>

/// Keeps the user's coordinate systems. For now only the list in memory: the
/// file behind it is not there yet, so nothing is read and nothing is written.
class JsonFileManager : public QObject
{
    Q_OBJECT

public:
    explicit JsonFileManager(QObject* parent = nullptr);

    QList<CoordinateSystem> systems;
    QString file_path; ///< full path of the JSON file; empty as long as there is none
};
