#pragma once

#include "coordinates/coordinate_system.h"

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>

/// Keeps the user's coordinate systems: the list in memory, which holds from the
/// start on, and its copy on disk, `coordinate_system.json`, one member for each
/// system under its name.
///
/// The file is read once, by the constructor; a missing one is made with the four
/// built-in systems. A file that cannot be read or understood leaves the list empty
/// and stays as it is until the next change, which replaces it. So does one of more
/// than 64 MiB (some seventy thousand systems), which is not read. Every change
/// rewrites the whole file in place. Failures are logged and reported by `false`;
/// the words for the user are the callers'.
///
/// The file is sorted by name, so after a start the list is too, and an index into
/// it holds only for the list as it stands.
class JsonFileManager : public QObject
{
    Q_OBJECT

public:
    /// Opens `coordinate_system.json` in "C:/Velmo", or on another platform than
    /// Windows in the folder "Velmo" of the user's data (~/.local/share by default).
    explicit JsonFileManager(QObject* parent = nullptr);

    /// Makes the folder if need be, and reads the file or makes it with the built-in
    /// systems. Whether systems were loaded.
    bool initJsonFile(const QString& file_name);

    /// Replaces the list by what is in the file. Whether at least one system was
    /// loaded.
    bool readAllCoordinateSystems();

    /// The system of one member of the file. Nothing is rejected: a group that is
    /// missing or no object keeps the defaults, a value that is missing in a group or
    /// no number is 0.
    [[nodiscard]] CoordinateSystem parseCoordinateSystem(const QString& name,
                                                         const QJsonObject& json) const;
    [[nodiscard]] QJsonObject coordinateSystemToJson(const CoordinateSystem& system) const;

    /// The document with the four built-in systems.
    [[nodiscard]] QJsonObject createDefaultCoordinateSystems() const;

    /// The document, empty on any failure.
    [[nodiscard]] QJsonObject readJsonFile() const;
    /// Writes over what is there, without a second file: links stay, and a write that
    /// breaks off leaves a damaged file. Whether all of it was written.
    bool writeJsonFile(const QJsonObject& json) const;

    /// A copy of the system, with an empty name if there is none.
    [[nodiscard]] CoordinateSystem getCoordinateSystem(const QString& name) const;
    /// Refuses an empty name and one that exists.
    bool addCoordinateSystem(const CoordinateSystem& system);
    /// Replaces the system of the same name.
    bool updateCoordinateSystem(const CoordinateSystem& system);
    bool deleteCoordinateSystem(const QString& name);

    QList<CoordinateSystem> systems;
    QString file_path; ///< full path of the JSON file

private:
    [[nodiscard]] qsizetype indexOf(const QString& name) const;
    [[nodiscard]] bool rewrite() const;
};
