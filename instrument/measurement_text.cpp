#include "instrument/measurement_text.h"

#include "instrument/land_geometry.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace instrument {

namespace {

const QString whole_time = QStringLiteral("yyyyMMddHHmmss");

/// What follows the number of points: a letter with a number, and the second one.
struct head_letters
{
    char first;
    char second;
    bool length_first; ///< otherwise the area
    bool has_end;      ///< the long form has the end and the instrument's settings
};

/// In the order of measurement_kind.
constexpr std::array<head_letters, 6> letters{{
    {'m', 'l', false, true},
    {'l', 'm', true, true},
    {'p', 'p', true, false},
    {'k', 'l', false, true},
    {'e', 'm', true, false},
    {'f', 'l', true, false},
}};

/// Mode bytes in the order of their codes, from 1.
constexpr std::array<std::uint8_t, 16> mode_codes{0x10, 0x14, 0x12, 0x13, 0x11, 0x15, 0x00, 0x01,
                                                  0x30, 0x31, 0x32, 0x33, 0x16, 0x20, 0x40, 0x41};
/// Currency bytes in the order of their codes, from 1.
constexpr std::array<std::uint8_t, 5> currency_codes{0, 4, 3, 2, 1};

template <typename Codes>
int code_of(const Codes& codes, std::uint8_t byte)
{
    const auto found = std::find(codes.begin(), codes.end(), byte);
    return found != codes.end() ? static_cast<int>(found - codes.begin()) + 1 : 0;
}

int or_zero(std::uint8_t byte)
{
    return byte == not_set ? 0 : byte;
}

int time_zone_code(std::uint8_t byte)
{
    return byte == not_set ? 0 : byte + 2;
}

QString digits(qint64 value, int width)
{
    return QStringLiteral("%1").arg(value, width, 10, QLatin1Char('0'));
}

/// Degrees, minutes and seconds, such as -104d3'12.5000".
QString degrees_text(std::int32_t wire)
{
    // 1e-7 degrees are 3.6 ten-thousandths of a second.
    const qint64 total = std::llround(std::abs(static_cast<double>(wire)) * 3.6);
    return QStringLiteral("%1%2d%3'%4.%5\"")
        .arg(wire < 0 ? QStringLiteral("-") : QString())
        .arg(total / 36'000'000)
        .arg(total / 600'000 % 60)
        .arg(total / 10'000 % 60)
        .arg(digits(total % 10'000, 4));
}

QString point_text(const stored_measurement& measured, const stored_point& point, text_form form)
{
    const int tenths = std::max(0, static_cast<int>(std::lround(point.altitude / 10.0)));
    QString line = QStringLiteral("%1,%2,%3")
                       .arg(degrees_text(point.longitude), degrees_text(point.latitude),
                            QString::number(tenths));
    if (form == text_form::long_record) {
        line += QStringLiteral(",hdop%1,speed%2,angle%3,t%4")
                    .arg(QString::number(point.hdop), QString::number(point.speed / 10),
                         QString::number(point.heading),
                         measured.start.addSecs(point.seconds).toString(whole_time));
    }
    return line + QStringLiteral(";\r\n");
}

/// The head that both forms have. Its numbers have at least the given widths.
QString common_head(const stored_measurement& measured, qsizetype total, int count_width,
                    int number_width)
{
    const head_letters& kind = letters[static_cast<std::size_t>(measured.kind)];
    const QString area = digits(measured.area, number_width);
    const QString length = digits(measured.length, number_width);
    return QStringLiteral("n%1,%2%3,%4%5;t%6,N%7")
        .arg(digits(measured.points.size(), count_width), QChar::fromLatin1(kind.first),
             kind.length_first ? length : area, QChar::fromLatin1(kind.second),
             kind.length_first ? area : length, measured.start.toString(whole_time),
             digits(total, 4));
}

/// What a long head has behind the common one.
QString long_rest(const stored_measurement& measured)
{
    const head_letters& kind = letters[static_cast<std::size_t>(measured.kind)];
    QString rest = QStringLiteral(",time%1").arg(time_zone_code(measured.time_zone));
    if (kind.has_end)
        rest += QStringLiteral(",t") + measured.end.toString(whole_time);
    rest += QStringLiteral(",id") + digits(measured.identity % 100'000'000, 8);

    const QString mode = QString::number(code_of(mode_codes, measured.mode));
    const QString currency = QString::number(code_of(currency_codes, measured.currency));
    const int price = or_zero(measured.price);
    switch (measured.kind) {
    case measurement_kind::area:
        rest += QStringLiteral(",mode%1,md1,jd1,hd%2,slope0,width%3,price%4,total%5")
                    .arg(mode, currency, QString::number(or_zero(measured.width) / 10),
                         QString::number(price),
                         QString::number(std::llround(measured.area / 667.0 * price)));
        break;
    case measurement_kind::distance: {
        const auto place = [](const stored_point& point) {
            return position{point.longitude / 1e7, point.latitude / 1e7};
        };
        const double straight = measured.points.isEmpty()
                                    ? 0.0
                                    : distance_between(place(measured.points.constFirst()),
                                                       place(measured.points.constLast()));
        rest += QStringLiteral(",mode%1,jd1,hd%2,zj%3,price%4,total%5")
                    .arg(mode, currency, QString::number(std::llround(straight * 10)),
                         QString::number(price),
                         QString::number(std::llround(measured.length / 10.0 * price)));
        break;
    }
    case measurement_kind::waypoint: rest += QStringLiteral(",sd0,h0"); break;
    default: rest += QStringLiteral(",jd1"); break;
    }
    return rest;
}

} // namespace

QByteArray record_text(const stored_measurement& measured, qsizetype total, text_form form)
{
    const bool is_long =
        form == text_form::long_record || measured.kind == measurement_kind::staking_out;
    const text_form used = is_long ? text_form::long_record : text_form::short_record;
    QString text = is_long ? common_head(measured, total, 1, 1) + long_rest(measured)
                           : common_head(measured, total, 5, 10);
    text += QStringLiteral(",\r\n");
    for (const stored_point& point : measured.points)
        text += point_text(measured, point, used);
    return (text + QLatin1Char('!')).toLatin1();
}

} // namespace instrument
