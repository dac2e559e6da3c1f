#include "exchange/excel_template.h"

#include "core/code_tables.h"
#include "exchange/coordinate_mode.h"
#include "exchange/excel_workbook.h"
#include "exchange/message_boxes.h"

namespace {

using enum excel_field;

constexpr int example_points = 3;

/// A value near \a degree that no other point of the workbook has: examples that
/// are equal would count as one.
QString example_coordinate(double degree, int place)
{
    return QString::number(degree + 0.00011311 + 0.0001 * place, 'f', 8);
}

/// The cell of an example's summary.
QString example_summary(const excel_kind& kind, excel_field field, int number, int language)
{
    const QString common_mode = kind.method == u"距离" ? QStringLiteral("9") : QStringLiteral("1");
    switch (field) {
    case excel_field::number: return QString::number(number);
    case time_zone: return QStringLiteral("UTC+08:00");
    case time: return QStringLiteral("2025/1/15  9:30:00");
    case end_time: return QStringLiteral("2025/1/15  10:30:00");
    case id: return QStringLiteral("00000000");
    case excel_field::mode: return mode_code_to_text(common_mode, language);
    case area_unit: return QStringLiteral("MU");
    case length_unit: return QStringLiteral("Meter");
    case currency: return QStringLiteral("Yuan");
    case points: return QString::number(example_points);
    case excel_field::system: return QStringLiteral("WGS - 84");
    case unused: return {};
    default: return QStringLiteral("0");
    }
}

/// The cell of an example's point; \a place counts the points of the workbook.
QString example_point(excel_field field, int number, int place)
{
    switch (field) {
    case point_number: return QString::number(number);
    case point_time: return QStringLiteral("2025/1/15  9:30:00");
    case first: return example_coordinate(103.965, place);
    case second: return example_coordinate(30.965, place);
    default: return QStringLiteral("0");
    }
}

} // namespace

void save_excel_template(const QString& path, int language)
{
    excel_workbook workbook(language, degrees_mode);
    int place = 0;
    for (const excel_kind& kind : excel_kinds) {
        excel_sheet sheet = workbook.add_sheet(kind, true, true);
        // Two measurements of three points each, or three of one.
        const int rows = kind.one_row_each ? example_points : 2 * example_points;
        const int points_each = kind.one_row_each ? 1 : example_points;
        for (int row = 0; row < rows; ++row, ++sheet.rows, ++place) {
            const int point = row % points_each;
            for (std::size_t at = 0; at < sheet.columns.size(); ++at) {
                const excel_field field = sheet.columns[at].field;
                QString text;
                if (field >= point_number)
                    text = example_point(field, point + 1, place);
                else if (point == 0)
                    text = example_summary(kind, field, row / points_each + 1, language);
                workbook.write(sheet, static_cast<int>(at), text);
            }
        }
    }
    if (!workbook.save(path))
        return;
    show_information(QStringLiteral("Excel"),
                     language == 0 ? QStringLiteral("Excel文件模版已下载")
                                   : QStringLiteral("Excel file template has been downloaded"));
}
