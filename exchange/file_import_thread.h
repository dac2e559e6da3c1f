#pragma once

#include "coordinates/coordinate_system.h"
#include "core/records.h"
#include "exchange/export_record.h"

#include <QMultiHash>
#include <QThread>

#include <optional>

class JsonFileManager;
class csv_rows;
struct csv_record;
struct file_coordinates;

/// Reads measurements from files. It is a thread by type only: its slots run in
/// the main thread, which waits for an import.
class file_import_thread : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE("coordinates/json_file_manager.h")

public:
    using QThread::QThread;

    int language = 0; ///< 0 Chinese, other values English

    double cz = 0.0, dz = 0.0;             ///< semi-major and semi-minor axis, metres
    double pl = 0.0;                       ///< flattening
    model_param m_ModelParam;              ///< the chosen system, flattened
    int mode = 0;                          ///< what the file's coordinates are taken to be
    QList<exportRecord> working_list;      ///< what a reader found, in file order
    QList<measuringData> table_list;       ///< result
    QStringList data_msg;                  ///< result
    QStringList data_msg_altitude;         ///< result
    QList<QList<point_msg>> point_msg_all; ///< result

    void import_kml(const QString& path);
    void import_csv(const QString& path);
    void import_gpx(const QString& path);
    void import_dxf(const QString& path);
    void import_excel(const QString& path);

    /// What the formats do differently when they hand on what they read.
    struct tail_options
    {
        bool drop_duplicates = true; ///< records of one file that are equal come once
        bool take_areamu = true;     ///< otherwise `areamu` stays "0"
    };
    /// Appends the working list to the four results, in its order. The `hd` of a
    /// working record becomes the `price` of the result; what files do not carry
    /// stays "0".
    void append_to_results(tail_options options);

    /// Whether the results hold a record of the same name, distance, count, area
    /// and coordinate lines.
    [[nodiscard]] bool in_results(const measuringData& record, const QString& lines);
    /// Gives the last record of `table_list` its entries in the other three
    /// results: \a data the plain pairs, \a lines the lines with altitudes,
    /// \a points the number of points.
    void append_geometry(const QString& data, const QString& lines, qsizetype points);

    /// Fills the results from the rows of a CSV file, whose form shows in its first
    /// cell. Returns the words of success, none if it is the form of one record and
    /// the results hold that record already; nothing if the form is unknown, a row
    /// is too short or a coordinate cannot be read.
    std::optional<QString> take_csv_rows(const csv_rows& rows);

    /// A date and time such as 2024/3/5T7:08:09.123 as "2024-03-05 07:08:09"; any
    /// other text unchanged.
    static QString normalize_datetime(const QString& text);

signals:
    void read_data_finished(QList<measuringData> table_list, QStringList data_msg,
                            QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all);

public slots:
    void import_file(QString path, int mode, JsonFileManager* js, int sys_index);
    void setlanguage(int newValue);

protected:
    void run() override;

private:
    /// Takes a record and its points, whose cells are what \a form says, into the
    /// results, unless an equal one is there. False if a cell cannot be read.
    bool take_csv_record(const csv_rows& rows, const csv_record& record,
                         const file_coordinates& form);

    /// Where in the results a record may be found again, by the hash of what
    /// in_results() compares; of those that it was asked for so far.
    QMultiHash<size_t, qsizetype> m_known;
    /// Points of files are all alike: records with equally many share one list.
    QHash<qsizetype, QList<point_msg>> m_file_points;
};
