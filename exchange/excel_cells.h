#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// What the cells of a workbook refer to.
struct excel_references
{
    QStringList strings;     ///< the shared strings
    QList<bool> date_styles; ///< of each cell style whether its numbers are dates
    bool date1904 = false;   ///< whether dates count from 1904
};

/// The texts of a sheet as a person sees them, by row and column from 0.
class sheet_texts
{
public:
    /// Whether every formula was computed.
    [[nodiscard]] bool is_valid() const { return m_valid; }
    /// Rows up to the last that holds anything.
    [[nodiscard]] qsizetype rows() const { return m_rows.isEmpty() ? 0 : m_rows.size() - 1; }

    [[nodiscard]] QString text(qsizetype row, int column) const;
    /// The texts of a row up to its last.
    [[nodiscard]] QStringList row(qsizetype row) const;

private:
    friend std::optional<sheet_texts>
    read_sheet_texts(const QByteArray& xml, const excel_references& references, qint64& room);

    struct placed_text
    {
        int row, column;
        QString text;
    };

    QList<placed_text> m_texts; ///< row by row
    QList<qsizetype> m_rows;    ///< of each row its first text, and the end
    bool m_valid = true;
};

/// Reads the part of a sheet. Takes its rows and cells from \a room. Nothing if it
/// is damaged, has more than there is room for, two cells in one place, a cell
/// without a sound place, one that names no shared string or a date that is written
/// as such and not as a number.
std::optional<sheet_texts> read_sheet_texts(const QByteArray& xml,
                                            const excel_references& references, qint64& room);

/// Reads the part of the shared strings, without readings above the line. Takes its
/// elements from \a room. Nothing if it is damaged or has more than there is room for.
std::optional<QStringList> read_shared_strings(const QByteArray& xml, qint64& room);
