#pragma once

#include "exchange/excel_cells.h"

#include <QByteArray>
#include <QHash>
#include <QString>

/// A workbook: its outline, as QXlsx reads it well, and the texts of its sheets.
struct excel_package
{
    QByteArray bytes; ///< the outline; empty: the file is no workbook, damaged or too large
    QHash<QString, sheet_texts> sheets; ///< by the path that a sheet has in the outline
};

/// Reads the workbook at \a path. Its sheets' names and kinds are left to QXlsx, in
/// a package without cells that is laid out as QXlsx writes it itself, since QXlsx
/// 1.4.4
/// - finds no part that a relation names by an absolute path, as openpyxl does,
///   or by any other than its own relation types,
/// - knows a date only where a style says that its number format is in use, which
///   LibreOffice does not say,
/// - reads of a damaged part what stands before the damage and says nothing, and
/// - ends the process on sheets of types of their own.
///
/// Only a regular file is opened, and no more of it taken than a million points
/// need. A part that is damaged makes the file unreadable.
excel_package read_excel_package(const QString& path);
