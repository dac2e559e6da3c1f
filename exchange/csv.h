#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringView>

#include <span>

/// The rows of a CSV file: its lines that are not empty, each cut at every comma
/// with empty cells dropped. No cell is quoted or escaped. The cells look into
/// the file's text, which lives as long as the object.
class csv_rows
{
public:
    csv_rows() = default;
    /// \a bytes are UTF-8, or what their byte order mark says.
    explicit csv_rows(const QByteArray& bytes);

    [[nodiscard]] qsizetype size() const { return m_ends.size(); }
    [[nodiscard]] std::span<const QStringView> operator[](qsizetype row) const;
    /// A cell that is not there is empty.
    [[nodiscard]] QStringView cell(qsizetype row, std::size_t column) const;

private:
    QString m_text;
    QList<QStringView> m_cells; ///< of all rows, one row behind the other
    QList<qsizetype> m_ends;    ///< place behind the last cell of each row
};

/// Reads the file at \a path. If it cannot be opened, \a rows is left without
/// rows and the result is false.
bool read_csv_rows(const QString& path, csv_rows& rows);
