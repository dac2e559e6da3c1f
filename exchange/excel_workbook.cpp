#include "exchange/excel_workbook.h"

#include "exchange/message_boxes.h"

#include <QBuffer>
#include <QDebug>
#include <QSaveFile>

namespace {

constexpr double head_height = 30.0;  // points
constexpr double column_width = 20.0; // characters

} // namespace

excel_workbook::excel_workbook(int language, int mode) : m_language(language), m_mode(mode)
{
    m_format.setFontName(QStringLiteral("Noto Sans"));
    m_format.setFontSize(15);
}

excel_sheet excel_workbook::add_sheet(const excel_kind& kind, bool with_summary, bool with_points,
                                      const QString& suffix)
{
    m_document.addSheet(kind.sheet_name(m_language) + suffix);
    excel_sheet added{m_document.currentWorksheet(), kind.columns(with_summary, with_points)};
    const QStringList heads = kind.heads(with_summary, with_points, m_language, m_mode);
    for (int column = 0; column < heads.size(); ++column)
        write(added, column, heads[column]);
    added.sheet->setRowHeight(1, 1, head_height);
    added.sheet->setColumnWidth(1, static_cast<int>(heads.size()), column_width);
    added.rows = 1;
    return added;
}

void excel_workbook::write(const excel_sheet& sheet, int column, const QString& text)
{
    // As a string, whatever it looks like: a name may begin with "=".
    if (!text.isEmpty() && !sheet.sheet->writeString(sheet.rows + 1, column + 1, text, m_format))
        m_complete = false;
}

bool excel_workbook::save(const QString& path)
{
    m_document.currentWorksheet(); // a workbook has at least one sheet
    QBuffer bytes;
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    if (m_complete && bytes.open(QIODevice::WriteOnly) && m_document.saveAs(&bytes) &&
        file.open(QIODevice::WriteOnly) && file.write(bytes.data()) == bytes.data().size() &&
        file.flush() && file.commit())
        return true;
    qDebug() << "Failed to save file: " << path;
    show_warning(QStringLiteral("Warning"), QStringLiteral("Failed to save file"));
    return false;
}
