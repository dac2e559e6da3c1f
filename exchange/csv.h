#pragma once

#include "exchange/export_record.h"
#include "exchange/file_coordinates.h"

#include <QByteArray>
#include <QIODevice>
#include <QList>
#include <QString>
#include <QStringView>

#include <optional>
#include <span>

// CSV, apart from dialogs and message boxes: the one text format whose coordinates
// may be other than degrees. No cell is quoted or escaped.

/// Writes a block for each record and closes the device. Headers are Chinese where
/// \a language is 0, else English. The place of the unit price holds `hd`.
void write_csv_merged(QIODevice& device, const QList<exportRecord>& records,
                      const file_coordinates& form, int language);

/// Writes the block of a file with one record: eleven cells under twelve headings, the
/// area in mu in the place of the 667 in plane coordinates, and a point line fewer
/// unless they are decimal degrees. That is how these files are known.
void write_csv_single(QIODevice& device, const exportRecord& record, const file_coordinates& form,
                      int language);

/// The rows of a CSV file: its lines that are not empty, each cut at every comma
/// with empty cells dropped. The cells look into the file's text, which lives as
/// long as the object.
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

/// A record of a CSV file. Its points are rows of three cells or more.
struct csv_record
{
    measuringData values;
    qsizetype first = 0; ///< row of its first point
    qsizetype end = 0;   ///< row behind its last point
};

/// The forms of a file, told by its first cell.
enum class csv_form
{
    blocks,  ///< the merged form: headers, record and points, again and again
    single,  ///< the same once, without numbering; of other programs
    summary, ///< a row of labels with values, and degrees whatever is chosen; of others
};

struct csv_reading
{
    csv_form form;
    QList<csv_record> records;
};

/// The records in the rows of a file. Nothing if the form is unknown or a row is too
/// short.
[[nodiscard]] std::optional<csv_reading> find_csv_records(const csv_rows& rows);

/// The text by which a record is told from those before it: as many of its points as
/// it promises, as they stand in the file. Nothing if it has fewer: such a record is
/// like no other.
[[nodiscard]] std::optional<QString> csv_promised_lines(const csv_rows& rows,
                                                        const csv_record& record);

/// The points of a record, degrees.
struct csv_points
{
    QString data;  ///< the plain pairs
    QString lines; ///< the lines with altitudes
};

/// The points of a record whose cells are what \a form says. Nothing if one cannot be
/// read; a mode that is none gives no points.
[[nodiscard]] std::optional<csv_points>
read_csv_points(const csv_rows& rows, const csv_record& record, const file_coordinates& form);
