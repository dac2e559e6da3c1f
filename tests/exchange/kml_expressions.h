#pragma once

#include "exchange/export_record.h"

#include <QList>
#include <QRegularExpression>
#include <QString>

/// What the last resort of the KML reader looks for, as regular expressions, and a
/// reading that goes by them: right for texts that are small and not made to hurt.
/// find_kml_coordinates() must give the same.
namespace kml_expressions {

#define NAME_PREFIX R"((?:[A-Za-z_][A-Za-z0-9_.-]*:)?)"
#define NUMBER R"(([+-]?(?:\d+(?:\.\d*)?|\.\d+)(?:[eE][+-]?\d+)?))"

/// The text of a block in group 1 or, for a track, 2.
inline const QRegularExpression& block()
{
    static const QRegularExpression expression(
        QStringLiteral("(?:<\\s*" NAME_PREFIX R"(coordinates\b[^>]*>([\s\S]*?)<\s*/\s*)" NAME_PREFIX
                       R"(coordinates\s*>|<\s*)" NAME_PREFIX
                       R"(Track\b[^>]*>([\s\S]*?)<\s*/\s*)" NAME_PREFIX R"(Track\s*>))"),
        QRegularExpression::CaseInsensitiveOption);
    return expression;
}

inline const QRegularExpression& tuple()
{
    static const QRegularExpression expression(
        QStringLiteral(NUMBER R"(\s*,\s*)" NUMBER R"((?:\s*,\s*)" NUMBER ")?"));
    return expression;
}

inline const QRegularExpression& track_point()
{
    static const QRegularExpression expression(
        QStringLiteral("<\\s*" NAME_PREFIX R"(coord\b[^>]*>\s*)" NUMBER R"(\s+)" NUMBER
                       R"(\s+)" NUMBER R"(\s*<\s*/\s*)" NAME_PREFIX R"(coord\s*>)"),
        QRegularExpression::CaseInsensitiveOption);
    return expression;
}

#undef NAME_PREFIX
#undef NUMBER

inline QList<exportRecord> find(const QString& text)
{
    QList<exportRecord> records;
    for (const QRegularExpressionMatch& found : block().globalMatch(text)) {
        const bool tuples = found.capturedStart(1) >= 0;
        exportRecord record;
        for (const QRegularExpressionMatch& point :
             (tuples ? tuple() : track_point()).globalMatch(found.captured(tuples ? 1 : 2))) {
            bool good[3] = {false, false, true};
            const double a = point.captured(1).toDouble(&good[0]);
            const double b = point.captured(2).toDouble(&good[1]);
            if (!point.captured(3).isEmpty())
                (void)point.captured(3).toDouble(&good[2]);
            if (!good[0] || !good[1] || !good[2] || a < -180 || a > 180 || b < -90 || b > 90)
                continue;
            record.coordinate_pairs.emplaceBack(point.captured(1), point.captured(2));
            record.altitudes.append(point.captured(3).isEmpty() ? QStringLiteral("0")
                                                                : point.captured(3));
        }
        const qsizetype points = record.coordinate_pairs.size();
        if (points == 0)
            continue;
        record.numpoint = QString::number(points);
        record.method = points == 1 ? QStringLiteral("航点") : QStringLiteral("航线");
        records.append(record);
    }
    return records;
}

/// Whether two readings are the same.
inline bool same(const QList<exportRecord>& left, const QList<exportRecord>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const exportRecord& a, const exportRecord& b) {
                          return static_cast<const measuringData&>(a) == b &&
                                 a.coordinate_pairs == b.coordinate_pairs &&
                                 a.altitudes == b.altitudes;
                      });
}

} // namespace kml_expressions
