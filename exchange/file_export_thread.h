#pragma once

#include "coordinates/coordinate_system.h"
#include "core/records.h"
#include "exchange/export_record.h"

#include <QThread>

#include <functional>

class QFile;
class QStandardItemModel;
class QWebEngineView;
class graphic_widget;

/// Logs the parameters of an export's coordinate system at debug level.
void log_parameters(const model_param& param);

/// Writes ticked measurements to files, and pictures. It is a thread by type
/// only: its slots run in the main thread, where they may read the table's model
/// and open boxes.
class file_export_thread : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE(<QStandardItemModel>)
    Q_MOC_INCLUDE(<QWebEngineView>)
    Q_MOC_INCLUDE("presentation/graphic_widget.h")

public:
    using QThread::QThread;

    QList<exportRecord> export_list; ///< the ticked rows, rebuilt for every command
    QList<int> check_flags;          ///< the twelve choices for Excel
    QString system_name;             ///< name of the chosen coordinate system
    double cz = 0.0, dz = 0.0;       ///< semi-major and semi-minor axis of this command, metres
    double pl = 0.0;                 ///< flattening of this command
    int language = 0;                ///< 0 Chinese, other values English

    void kml_export(int mode, model_param m_ModelParam, QString file_path);
    void one_csv_export(int mode, model_param m_ModelParam, QString file_path);
    void more_csv_export(int mode, model_param m_ModelParam, QString file_path);
    void one_gpx_export(int mode, QString file_path);
    void more_gpx_export(int mode, QString file_path);
    void one_dxf_export(int mode, model_param m_ModelParam, QString file_path);
    void more_dxf_export(int mode, model_param m_ModelParam, QString file_path);
    void excel_export(int mode, model_param m_ModelParam, QString file_path);

    /// Rebuilds `export_list` from the rows of \a model that are ticked; a row is
    /// the same entry of the three lists. Without a tick, or without a model, it
    /// tells the user so and returns false.
    bool select_checked_rows(const QStandardItemModel* model,
                             const QList<measuringData>& Table_list,
                             const QStringList& Data_msg_altitude,
                             const QList<QList<point_msg>>& point_msg_all);

    /// What a format does with an open file: write everything, or one record.
    using merged_writer = std::function<void(QFile& file)>;
    using record_writer = std::function<void(QFile& file, const exportRecord& record)>;

    /// Replaces the file at \a path, has it written and shows \a done under
    /// \a title. If the file cannot be opened, a warning comes instead. Does
    /// nothing without a path.
    static void export_merged(const QString& path, const merged_writer& write, const QString& title,
                              const QString& done);
    /// Has each record of `export_list` written to record_file_path() in
    /// \a folder, adding to a file that is there, and shows \a done under
    /// \a title. A file that cannot be opened gets a warning, and the next one its
    /// turn. Does nothing without a folder.
    void export_each(const QString& folder, const QString& suffix, const record_writer& write,
                     const QString& title, const QString& done) const;
    /// Path of the file of record \a number, from 1, in \a folder:
    /// exported_data_1.csv and so on.
    static QString record_file_path(const QString& folder, const QString& suffix, qsizetype number);

    void picture_export(QWebEngineView* m_parentWebEngineView, graphic_widget* m_parentwidgetView,
                        int picture_flag, QString file_path);

public slots:
    void export_file(int cmd, int mode, double cz, double dz, double pl, model_param m_ModelParam,
                     QStandardItemModel* model, QList<measuringData> Table_list,
                     QStringList Data_msg_altitude, QString file_path,
                     QList<QList<point_msg>> point_msg_all);
    void export_file_check_flag(QList<int> flags, QString name);
    void setlanguage(int newValue);

protected:
    void run() override;
};
