#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <cstddef>
#include <span>
#include <vector>

// The one layout of the workbook, which the export, the import and the template
// share.

/// What a column holds.
enum class excel_field
{
    // of a measurement
    number,
    time_zone,
    time,
    end_time,
    id,
    mode,
    slope,
    area_unit,
    area,          ///< in the unit of area_unit
    square_metres, ///< the same area, square metres
    length_unit,
    straight, ///< straight-line distance
    length,   ///< in the unit of length_unit
    currency,
    price,
    total,
    points, ///< how many
    system, ///< name of the coordinate system
    unused, ///< a head without cells
            // of a point
    point_number,
    point_time,
    zone,
    first,
    second,
    altitude,
    hdop,
    speed,
    angle,
};

struct excel_column
{
    excel_field field;
    QStringView chinese;
    QStringView english;
};

/// The sheets of one kind of measurement.
struct excel_kind
{
    QStringView method;                 ///< the word in a record, and the Chinese name of the sheet
    QStringView english;                ///< the English name of the sheet
    std::span<const excel_column> full; ///< the summary and behind it the points
    std::size_t summary;                ///< how many columns are the summary's
    std::span<const excel_column> points; ///< the points alone
    bool one_row_each;                    ///< a measurement is one point: all stand in one sheet

    [[nodiscard]] QString sheet_name(int language) const;
    /// Index of the field in \a full, or -1.
    [[nodiscard]] int column_of(excel_field field) const;
    /// The columns of a sheet with these blocks.
    [[nodiscard]] std::span<const excel_column> columns(bool with_summary, bool with_points) const;
    /// The head of these columns. The coordinates are called by \a mode.
    [[nodiscard]] QStringList heads(bool with_summary, bool with_points, int language,
                                    int mode) const;
};

/// The six kinds in the order of the flags of an export.
extern const std::array<excel_kind, 6> excel_kinds;
