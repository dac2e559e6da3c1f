#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// A sheet as openpyxl reads it.
struct read_sheet
{
    QString name;
    QList<QStringList> rows; ///< every cell as text, empty ones too
    QStringList types;       ///< of the cells, "s" for text
    QStringList fonts;       ///< name and size
    double height = 0;       ///< of the first row, points
    QList<double> widths;    ///< of the columns, characters
};

using read_book = QList<read_sheet>;

/// Runs one of the scripts beside the tests; false if it fails.
bool run_script(const QString& script, const QStringList& arguments, QByteArray* output = nullptr);

/// The workbooks by their paths, as openpyxl reads them.
QMap<QString, read_book> read_with_openpyxl(const QStringList& paths);

/// The heads of a sheet that has both blocks, at a mode of degrees. \a kind is
/// the Chinese word.
QStringList full_heads(const QString& kind, int language);
/// How many of them are the summary's.
int summary_columns(const QString& kind);
/// The heads of a sheet without a summary.
QStringList point_heads(const QString& kind, int language);
/// The same heads in a plane mode.
QStringList plane_heads(QStringList heads);

/// The kinds in the order of the flags, and their sheet names.
extern const QStringList kinds;
extern const QStringList english_kinds;
