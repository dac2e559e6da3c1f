#include "device/text_records.h"

#include <QDateTime>
#include <QDebug>

#include <algorithm>
#include <array>
#include <limits>
#include <span>

namespace text_records {

namespace {

/// Characters at the front of a record in which no point is looked for.
constexpr qsizetype head_cut = 50;
/// Last captured index of a head in the short form, and of a point line with an
/// altitude in the short and in the long form.
constexpr int short_groups = 6;
constexpr int short_point_groups = 6;
constexpr int long_point_groups = 11;

using text_field = QString measuringData::*;

/// A group of a long head that goes into a field, as it is or as a tenth of it
/// in whole numbers.
struct field_of_group
{
    int group;
    text_field field;
    bool tenth = false;
};

constexpr field_of_group long_area[] = {
    {2, &measuringData::areameter}, {3, &measuringData::distance, true},
    {7, &measuringData::timezone},  {10, &measuringData::id},
    {11, &measuringData::mode},     {12, &measuringData::md},
    {13, &measuringData::jd},       {14, &measuringData::hd},
    {15, &measuringData::slope},    {16, &measuringData::width},
    {17, &measuringData::price},    {18, &measuringData::totalprices},
};
constexpr field_of_group long_distance[] = {
    {2, &measuringData::distance, true},
    {3, &measuringData::areameter},
    {7, &measuringData::timezone},
    {10, &measuringData::id},
    {11, &measuringData::mode},
    {12, &measuringData::jd},
    {13, &measuringData::hd},
    {14, &measuringData::zj, true},
    {15, &measuringData::price},
    {16, &measuringData::totalprices},
};
constexpr field_of_group long_waypoint[] = {
    {7, &measuringData::timezone},
    {8, &measuringData::id},
};
constexpr field_of_group long_route[] = {
    {2, &measuringData::distance, true},
    {3, &measuringData::areameter},
    {7, &measuringData::timezone},
    {8, &measuringData::id},
    {9, &measuringData::jd},
};
constexpr field_of_group long_track[] = {
    {2, &measuringData::areameter}, {3, &measuringData::distance, true},
    {7, &measuringData::timezone},  {10, &measuringData::id},
    {11, &measuringData::jd},
};

/// What tells the kinds apart. Rows stand in the order of `kind`, which is also
/// the order in which the selector is tested.
struct kind_row
{
    QChar selector;
    QStringView method;
    int long_groups; ///< captured groups of a long head
    std::span<const field_of_group> long_fields;
    bool end_time;    ///< groups 8 and 9 of a long head are the end
    int short_area;   ///< group of the area in a short head, square metres; 0 for none
    int short_length; ///< group of the length in a short head, tenths of a metre; 0 for none
    bool area_in_mu;
};

constexpr std::array<kind_row, 6> kinds{{
    {u'm', u"面积", 18, long_area, true, 2, 3, true},
    {u'l', u"距离", 16, long_distance, true, 3, 2, false},
    // The long head has ten groups; eight stands and keeps it out.
    {u'p', u"航点", 8, long_waypoint, false, 0, 0, false},
    {u'e', u"航线", 9, long_route, false, 3, 2, false},
    {u'k', u"航迹", 11, long_track, true, 2, 3, false},
    {u'f', u"放样", 9, long_route, false, 0, 0, false},
}};

/// The record patterns of one kind.
struct record_patterns
{
    QRegularExpression short_form;
    QRegularExpression long_form;
};

const record_patterns& patterns_of(kind what)
{
    static const auto head = [](const char* letters, const char* rest) {
        return QRegularExpression(QStringLiteral(R"((?:\r\n)?n(\d+),%1;t(\d{8})(\d{4,6}),N(\d+)%2)")
                                      .arg(QLatin1String(letters), QLatin1String(rest)));
    };
    static const auto both = [](const char* letters, const char* rest) {
        return record_patterns{head(letters, ""), head(letters, rest)};
    };
    static const std::array<record_patterns, 6> all{{
        both(R"(m(\d+),l(\d+))",
             R"(,time(\d+),t(\d{8})(\d{4,6}),id(\d{8}),mode(\d+),md(\d+),jd(\d+),hd(\d+))"
             R"(,slope(\d+),width(\d+),price(\d+),total(\d+))"),
        both(R"(l(\d+),m(\d+))",
             R"(,time(\d+),t(\d{8})(\d{4,6}),id(\d{8}),mode(\d+),jd(\d+),hd(\d+),zj(\d+))"
             R"(,price(\d+),total(\d+))"),
        both(R"(p(\d+),p(\d+))", R"(,time(\d+),id(\d{8}),sd(\d+),h(\d+))"),
        both(R"(e(\d+),m(\d+))", R"(,time(\d+),id(\d{8}),jd(\d+))"),
        both(R"(k(\d+),l(\d+))", R"(,time(\d+),t(\d{8})(\d{4,6}),id(\d{8}),jd(\d+))"),
        {{}, head(R"(f(\d+),l(\d+))", R"(,time(\d+),id(\d{8}),jd(\d+))")}, // no short form
    }};
    return all[static_cast<std::size_t>(what)];
}

/// Groups 1 and 3 the signs, 2 and 4 longitude and latitude, 6 the altitude in
/// tenths of a metre.
const QRegularExpression& short_point()
{
    static const QRegularExpression pattern(
        QStringLiteral(R"re(([+-])?(\d+d\d+'\d+.\d+"),([+-])?(\d+d\d+'\d+.\d+")(,(\d+))?;)re"));
    return pattern;
}

/// As short_point; 7 accuracy factor in tenths, 8 speed, 9 heading, 10 date, 11 time.
const QRegularExpression& long_point()
{
    static const QRegularExpression pattern(
        QStringLiteral(R"re(([+-])?(\d+d\d+'\d+.\d+"),([+-])?(\d+d\d+'\d+.\d+")(,(\d+))?)re"
                       R"re(,hdop(\d+),speed(\d+),angle(\d+),t(\d{8})(\d{4,6});)re"));
    return pattern;
}

/// "yyyy-MM-dd HH:mm:ss" of a date "yyyyMMdd" and a time "HHmm" or "HHmmss";
/// nothing for a time of another length.
std::optional<QString> time_text(const QString& date, const QString& time)
{
    QString format;
    if (time.size() == 4)
        format = QStringLiteral("yyyyMMddHHmm");
    else if (time.size() == 6)
        format = QStringLiteral("yyyyMMddHHmmss");
    else
        return std::nullopt;
    const qint64 seconds = QDateTime::fromString(date + time, format).toSecsSinceEpoch();
    return QDateTime::fromSecsSinceEpoch(seconds).toString(u"yyyy-MM-dd HH:mm:ss");
}

void fill_short(measuringData& record, const kind_row& row, const QRegularExpressionMatch& match)
{
    const auto number = [&match](int group) {
        return static_cast<double>(match.captured(group).toLongLong());
    };
    const auto text = [](double value) { return QString::number(value, 'g', 6); };

    record.numpoint = QString::number(match.captured(1).toInt());
    record.numrecord = QString::number(match.captured(6).toInt());
    record.time = time_text(match.captured(4), match.captured(5)).value_or(record.time);
    record.name = match.captured(4) + match.captured(5);
    if (row.short_area != 0)
        record.areameter = text(number(row.short_area));
    if (row.area_in_mu)
        record.areamu = text(number(row.short_area) / 667.0);
    if (row.short_length != 0)
        record.distance = text(number(row.short_length) / 10.0);
}

void fill_long(measuringData& record, const kind_row& row, const QRegularExpressionMatch& match)
{
    record.numpoint = match.captured(1);
    record.time = time_text(match.captured(4), match.captured(5)).value_or(record.time);
    record.numrecord = match.captured(6);
    if (row.end_time)
        record.endtime = time_text(match.captured(8), match.captured(9)).value_or(record.endtime);
    for (const field_of_group& one : row.long_fields) {
        const QString digits = match.captured(one.group);
        record.*one.field = one.tenth ? QString::number(digits.toLongLong() / 10) : digits;
    }
}

double signed_degrees(const QRegularExpressionMatch& match, int sign_group)
{
    const double degrees = parse_dms(match.captured(sign_group + 1));
    return match.captured(sign_group) == u"-" ? -degrees : degrees;
}

/// Whole tenths of a metre; 0 for an empty text.
int altitude_tenths(const QString& digits)
{
    using limits = std::numeric_limits<int>;
    return static_cast<int>(
        std::clamp(digits.toDouble(), double{limits::min()}, double{limits::max()}));
}

point_msg point_of(const QRegularExpressionMatch& match)
{
    if (match.lastCapturedIndex() == short_point_groups) {
        const QString none = QStringLiteral("0");
        return {.hdop = none, .speed = none, .angle = none, .time = none, .status = none};
    }
    return {
        .hdop = QString::number(match.captured(7).toDouble() / 10.0, 'f', 1),
        .speed = match.captured(8),
        .angle = match.captured(9),
        .time = time_text(match.captured(10), match.captured(11)).value_or(QString()),
        .status = QStringLiteral("0"),
    };
}

/// Reads the point lines into `result`; false where one has no altitude in the
/// short form.
bool read_points(measurement& result, const QRegularExpression& pattern, const QString& text)
{
    QStringList plain;
    const QString rest = text.mid(head_cut);
    auto matches = pattern.globalMatch(rest);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        if (match.lastCapturedIndex() != short_point_groups &&
            match.lastCapturedIndex() != long_point_groups)
            return false;
        const QString longitude = QString::number(signed_degrees(match, 1), 'f', 12);
        const QString latitude = QString::number(signed_degrees(match, 3), 'f', 12);
        const QString altitude = QString::number(altitude_tenths(match.captured(6)) / 10.0, 'f', 1);
        plain << longitude << latitude;
        result.lines += longitude + u',' + latitude + u',' + altitude + u'\n';
        result.points += point_of(match);
    }
    result.plain = plain.join(u',');
    return true;
}

} // namespace

bool begins_as_record(const QString& text)
{
    const QString first = text.split(u',', Qt::SkipEmptyParts).value(0);
    return first.startsWith(u'n') || first.startsWith(u"\r\nn");
}

std::optional<recognised> recognise(const QString& text)
{
    const QStringList parts = text.split(u',', Qt::SkipEmptyParts);
    const QString second = parts.value(1);
    const auto row = std::find_if(kinds.begin(), kinds.end(), [&second](const kind_row& one) {
        return second.startsWith(one.selector);
    });
    if (row == kinds.end())
        return std::nullopt;
    const auto what = static_cast<kind>(row - kinds.begin());
    const record_patterns& patterns = patterns_of(what);
    const bool long_form = what == kind::staking || parts.value(4).startsWith(u't');
    if (long_form)
        return recognised{what, patterns.long_form, long_point()};
    return recognised{what, patterns.short_form, short_point()};
}

std::optional<measurement> read(kind what, const QRegularExpression& record_pattern,
                                const QRegularExpression& point_pattern, const QString& text)
{
    const kind_row& row = kinds[static_cast<std::size_t>(what)];
    const QRegularExpressionMatch match = record_pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const int groups = match.lastCapturedIndex();
    qDebug() << "Number of capture groups:" << groups;

    measurement result;
    if (groups == short_groups)
        fill_short(result.record, row, match);
    else if (groups == row.long_groups)
        fill_long(result.record, row, match);
    else
        return std::nullopt;
    result.record.method = row.method.toString();
    if (!read_points(result, point_pattern, text))
        return std::nullopt;
    return result;
}

double parse_dms(const QString& text)
{
    static const QRegularExpression separators(QStringLiteral("[d'\"]"));
    const QStringList parts = text.split(separators);
    return parts.value(0).toDouble() + parts.value(1).toDouble() / 60.0 +
           parts.value(2).toDouble() / 3600.0;
}

} // namespace text_records
