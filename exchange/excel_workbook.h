#pragma once

#include "exchange/excel_layout.h"

#include <QString>

#include <xlsxdocument.h>
#include <xlsxformat.h>
#include <xlsxworksheet.h>

#include <span>

/// A sheet that is being written, row by row.
struct excel_sheet
{
    QXlsx::Worksheet* sheet = nullptr;
    std::span<const excel_column> columns;
    int rows = 0; ///< written so far, the heads among them

    explicit operator bool() const { return sheet != nullptr; }
};

/// A workbook of measurements that is being written: its style, its sheets and
/// the file.
class excel_workbook
{
public:
    /// \a language and \a mode are those of the heads.
    excel_workbook(int language, int mode);

    /// Adds a sheet of the kind with these blocks and writes its head. The name is
    /// the kind's word with \a suffix behind it.
    excel_sheet add_sheet(const excel_kind& kind, bool with_summary, bool with_points,
                          const QString& suffix = {});

    /// Writes a cell of the row that the sheet stands at, by column from 0. An
    /// empty text leaves the cell out.
    void write(const excel_sheet& sheet, int column, const QString& text);

    /// Writes the file, whole or not at all, and tells the user if that fails.
    bool save(const QString& path);

private:
    int m_language;
    int m_mode;
    QXlsx::Document m_document;
    QXlsx::Format m_format;
    bool m_complete = true; ///< every cell had room in its sheet
};
