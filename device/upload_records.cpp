#include "device/upload_records.h"

#include "core/code_tables.h"
#include "device/frame.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace upload_records {

namespace {

/// A byte for which the record has no value.
constexpr std::uint8_t not_set = 255;
/// Sent where the instrument's frames have an identity and unread bytes.
constexpr QByteArrayView no_identity = "\xFF\xFF\xFF\xFF";
constexpr qsizetype time_digits = 14;

struct old_mode_row
{
    QStringView method;
    QStringView number;
};

constexpr std::array<old_mode_row, 6> old_modes{{
    {u"航点", u"1"},
    {u"航线", u"2"},
    {u"航迹", u"3"},
    {u"距离", u"4"},
    {u"面积", u"5"},
    {u"放样", u"6"},
}};

QString unknown_kind()
{
    return QStringLiteral("数据类型不支持");
}

/// The digits of a time, 14 or another number of characters.
QString digits_of_time(const QString& text)
{
    QString digits = normalize_time_text(text);
    if (!digits.isEmpty())
        return digits;
    static const QRegularExpression no_digits(QStringLiteral("[^0-9]"));
    digits = text;
    digits.remove(no_digits);
    if (digits.size() == 12)
        digits += u"00";
    return digits.left(time_digits);
}

bool is_digit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

std::uint8_t timezone_byte(const QString& code)
{
    const int number = code.toInt();
    return number >= 2 && number <= 27 ? static_cast<std::uint8_t>(number - 2) : not_set;
}

/// `value` where a byte can hold it beside 0 and 255, else not_set.
std::uint8_t set_byte_or_none(double value)
{
    return value >= 1 && value <= 254 ? static_cast<std::uint8_t>(value) : not_set;
}

template <typename Number>
void append(QByteArray& bytes, Number value)
{
    const Number big = qToBigEndian(value);
    bytes.append(reinterpret_cast<const char*>(&big), sizeof big);
}

} // namespace

QString method_to_old_mode(const QString& method)
{
    const auto row =
        std::find_if(old_modes.begin(), old_modes.end(),
                     [&method](const old_mode_row& one) { return one.method == method; });
    return row != old_modes.end() ? row->number.toString() : QString();
}

QString normalize_time_text(const QString& text)
{
    static const QRegularExpression separators(QStringLiteral("[- :.]"));
    QString slashed = text;
    slashed.replace(separators, QStringLiteral("/"));
    const QStringList parts = slashed.split(u'/', Qt::SkipEmptyParts);
    if (parts.size() != 6)
        return {};
    QString joined = parts[0];
    for (qsizetype index = 1; index < parts.size(); ++index)
        joined += parts[index].rightJustified(2, u'0');
    return joined;
}

bool time_to_bcd(const QString& text, QByteArray& bytes, QString& digits)
{
    const QString found = digits_of_time(text);
    if (found.size() != time_digits || !std::all_of(found.begin(), found.end(), is_digit))
        return false;
    const auto number = [&found](qsizetype at, qsizetype size) {
        return found.mid(at, size).toInt();
    };
    const int year = number(0, 4);
    const std::array rest{number(4, 2), number(6, 2), number(8, 2), number(10, 2), number(12, 2)};
    if (year < 2000 || year > 2099 || !QDate::isValid(year, rest[0], rest[1]) ||
        !QTime::isValid(rest[2], rest[3], rest[4]))
        return false;
    digits = found;
    bytes = QByteArray::fromHex(found.mid(2).toLatin1());
    return true;
}

bool text_to_u32(const QString& text, double scale, std::uint32_t& out)
{
    const QString trimmed = text.trimmed();
    bool good = true;
    const double value = trimmed.isEmpty() ? 0.0 : trimmed.toDouble(&good) * scale;
    // "nan" is read as a number and is in no range.
    if (!good || !(value >= 0 && value <= 4294967295.0))
        return false;
    // Half up; the value is not negative.
    out = static_cast<std::uint32_t>(value + 0.5); // NOLINT(bugprone-incorrect-roundings)
    return true;
}

bool text_to_i32(const QString& text, double scale, double lower, double upper, std::int32_t& out)
{
    bool good = false;
    const double value = text.trimmed().toDouble(&good);
    if (!good || !(value >= lower && value <= upper))
        return false;
    const double scaled = std::round(value * scale);
    using limits = std::numeric_limits<std::int32_t>;
    if (!(scaled >= limits::min() && scaled <= limits::max()))
        return false;
    out = static_cast<std::int32_t>(scaled);
    return true;
}

bool parse_upload_points(const QString& lines, QList<UploadPoint>& out, QString& error)
{
    QList<UploadPoint> points;
    for (const QString& whole : lines.split(u'\n')) {
        QString line = whole.trimmed();
        if (line.endsWith(u';'))
            line = line.chopped(1).trimmed();
        if (line.isEmpty())
            continue;
        const QString number = QString::number(points.size() + 1);
        const QStringList parts = line.split(u',');
        if (parts.size() != 3) {
            error = QStringLiteral("第%1个点格式错误").arg(number);
            return false;
        }
        UploadPoint point{};
        if (!text_to_i32(parts[0], 1e7, -180.0, 180.0, point.longitude) ||
            !text_to_i32(parts[1], 1e7, -90.0, 90.0, point.latitude) ||
            !text_to_i32(parts[2], 100.0, -21474836.0, 21474836.0, point.altitude)) {
            error = QStringLiteral("第%1个点经纬度或高程超限").arg(number);
            return false;
        }
        points.append(point);
    }
    if (points.isEmpty()) {
        error = QStringLiteral("无点位数据");
        return false;
    }
    out = points;
    return true;
}

bool build_upload_item(const measuringData& record, const QString& lines, UploadItem& out,
                       QString& error)
{
    UploadItem item;
    item.kind = method_to_kind(record.method);
    item.old_mode = method_to_old_mode(record.method);
    if (item.kind == not_set) {
        error = unknown_kind();
        return false;
    }
    if (!text_to_u32(record.areameter, 1.0, item.area)) {
        error = QStringLiteral("面积字段格式错误");
        return false;
    }
    if (!text_to_u32(record.distance, 10.0, item.length)) {
        error = QStringLiteral("距离字段格式错误");
        return false;
    }
    if (!time_to_bcd(record.time, item.start_bcd, item.start_digits)) {
        error = QStringLiteral("开始时间格式错误");
        return false;
    }
    QString end_digits;
    if (!time_to_bcd(record.endtime, item.end_bcd, end_digits))
        item.end_bcd = item.start_bcd;
    item.timezone = timezone_byte(record.timezone);
    item.mode = static_cast<std::uint8_t>(mode_code_to_device(record.mode));
    item.width = set_byte_or_none(std::round(record.width.toDouble() * 10));
    item.price = set_byte_or_none(record.price.toInt());
    item.currency = currency_code_to_device(record.hd);
    if (!parse_upload_points(lines, item.points, error))
        return false;
    out = item;
    return true;
}

QByteArray item_data(const UploadItem& item, qsizetype records)
{
    QByteArray data = no_identity.toByteArray();
    append(data, static_cast<std::uint32_t>(item.points.size()));
    append(data, item.area);
    append(data, item.length);
    append(data, item.kind);
    data += item.start_bcd;
    data += item.end_bcd;
    append(data, static_cast<std::uint16_t>(records));
    append(data, item.timezone);
    append(data, item.mode);
    append(data, item.width);
    append(data, item.price);
    append(data, item.currency);
    return data;
}

QByteArray points_data(const UploadItem& item, qsizetype first, qsizetype count)
{
    QByteArray data = no_identity.toByteArray();
    for (const UploadPoint& point : item.points.sliced(first, count)) {
        append(data, point.longitude);
        append(data, point.latitude);
        append(data, point.altitude);
        data.append(6, '\0');  // speed, seconds, heading, accuracy factor
        append(data, not_set); // status unknown
    }
    append(data, item.mode);
    return data;
}

bool append_mode_text(QString& text, const measuringData& record, const QString& lines,
                      QString& error)
{
    const QString old_mode = method_to_old_mode(record.method);
    if (old_mode.isEmpty()) {
        error = unknown_kind();
        return false;
    }
    QStringList points;
    for (const QString& line : lines.split(u'\n')) {
        const QStringList parts = line.split(u',');
        if (parts.size() == 3)
            points.append(parts[0].trimmed() + u',' + parts[1].trimmed() + u',' +
                          parts[2].trimmed());
    }
    text += QStringLiteral("Mode:%1,A:%2,D:%3,n:%4,T:%5,N:%6\r\n")
                .arg(old_mode, record.areameter, record.distance, record.numpoint,
                     normalize_time_text(record.time), record.name);
    text += points.join(u"\r\n");
    if (!points.isEmpty())
        text += u';';
    return true;
}

bool take_acknowledgement(QByteArray& buffer, std::uint8_t command, acknowledgement& out)
{
    // A cursor walks over what is dropped; the buffer itself is cut once.
    const QByteArrayView bytes(buffer);
    bool found = false;
    qsizetype start = bytes.indexOf(frame::header);
    while (start >= 0 && !found) {
        const QByteArrayView rest = bytes.sliced(start);
        if (rest.size() < frame::overhead)
            break;
        const qsizetype covered = frame::header_size + frame::read_u16(rest, 4);
        if (rest.size() <= covered)
            break;
        found = frame::crc8(rest.first(covered)) == frame::read_u8(rest, covered) &&
                frame::read_u8(rest, 1) == frame::reply && covered >= frame::header_size + 6 &&
                frame::read_u8(rest, 10) == command;
        if (found)
            out = {.device_type = frame::read_u8(rest, 2), .status = frame::read_u8(rest, 11)};
        start += covered + 1;
        if (!found)
            start = bytes.indexOf(frame::header, start);
    }
    if (start < 0)
        buffer.clear();
    else
        buffer.remove(0, start);
    return found;
}

} // namespace upload_records
