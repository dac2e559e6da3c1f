#pragma once

#include <QByteArray>
#include <QString>

/// A workbook as QXlsx reads it well, made of what a file holds.
struct excel_package
{
    QByteArray bytes;      ///< empty: the file is no workbook, damaged or too large
    bool date1904 = false; ///< whether dates count from 1904
    qint64 cells = 0;      ///< of all sheets: as many QXlsx is to find
};

/// Reads the workbook at \a path and lays its parts out as QXlsx writes them
/// itself, since QXlsx 1.4.4
/// - finds no part that a relation names by an absolute path, as openpyxl does,
///   or by any other than its own relation types,
/// - knows a date only where a style says that its number format is in use, which
///   LibreOffice does not say,
/// - takes every file that says anything about 1904 to count from it,
/// - reads of a damaged part what stands before the damage and says nothing,
/// - takes the last of several runs in a cell for the whole,
/// - takes a date that is written as such, and not as a number, for 0,
/// - puts a cell without a sound place anywhere, and
/// - ends the process on sheets of types of their own.
///
/// Only a regular file is opened, and no more of it taken than a million points
/// need. A part that is damaged and a cell in runs, with a written date or without
/// a sound place make the file unreadable. Damage within a sheet shows when QXlsx
/// finds fewer cells than \c cells.
excel_package read_excel_package(const QString& path);
