#include "instrument/mode_text_receiver.h"

#include <QRegularExpression>
#include <QTimeZone>

#include <cmath>
#include <optional>

namespace instrument {

namespace {

const QByteArray head_begin = QByteArrayLiteral("Mode:");
const QByteArray line_end = QByteArrayLiteral("\r\n");

/// Kinds in the order of their numbers in Mode text, from 1.
constexpr measurement_kind kinds[] = {
    measurement_kind::waypoint, measurement_kind::route, measurement_kind::track,
    measurement_kind::distance, measurement_kind::area,  measurement_kind::staking_out,
};

std::optional<stored_point> read_point(const QString& line)
{
    const QStringList parts = line.split(QLatin1Char(','));
    if (parts.size() != 3)
        return std::nullopt;
    const auto scaled = [&parts](int part, double scale) {
        return static_cast<std::int32_t>(std::lround(parts[part].toDouble() * scale));
    };
    return stored_point{
        .longitude = scaled(0, 1e7), .latitude = scaled(1, 1e7), .altitude = scaled(2, 100)};
}

std::optional<received_measurement> read_measurement(const QString& head, const QString& lines)
{
    static const QRegularExpression pattern(
        QStringLiteral("^Mode:([1-6]),A:([^,]*),D:([^,]*),n:[^,]*,T:([0-9]*),N:(.*)$"));
    const QRegularExpressionMatch match = pattern.match(head);
    if (!match.hasMatch())
        return std::nullopt;
    received_measurement one{.measured = {}, .name = match.captured(5), .by_packets = false};
    stored_measurement& measured = one.measured;
    measured.identity = own_identity;
    measured.kind = kinds[match.capturedView(1).toInt() - 1];
    // A host writes a large area as 1.23457e+06.
    measured.area = static_cast<std::uint32_t>(std::llround(match.captured(2).toDouble()));
    measured.length = static_cast<std::uint32_t>(std::llround(match.captured(3).toDouble() * 10));
    measured.start = QDateTime::fromString(match.captured(4), u"yyyyMMddHHmmss");
    if (!measured.start.isValid())
        measured.start = QDateTime(QDate(2000, 1, 1), QTime(0, 0));
    measured.start.setTimeZone(QTimeZone::utc());
    measured.end = measured.start;
    for (const QString& line : lines.split(QStringLiteral("\r\n"))) {
        if (const std::optional<stored_point> point = read_point(line))
            measured.points.append(*point);
    }
    return one;
}

} // namespace

mode_text_receiver::mode_text_receiver(storage& where) : m_where(where) {}

QList<chunk> mode_text_receiver::receive(QByteArrayView bytes)
{
    m_buffer.append(bytes.data(), bytes.size());
    for (;;) {
        const qsizetype begin = m_buffer.indexOf(head_begin);
        if (begin < 0) {
            // The beginning of a head may have come.
            m_buffer = m_buffer.last(qMin(m_buffer.size(), head_begin.size() - 1));
            return {};
        }
        m_buffer.remove(0, begin);
        // A name may hold what ends a measurement.
        const qsizetype head_end = m_buffer.indexOf(line_end);
        if (head_end < 0)
            return {};
        const qsizetype lines = head_end + line_end.size();
        const qsizetype mark = m_buffer.indexOf(';', lines);
        const qsizetype next = m_buffer.indexOf(head_begin, lines);
        if (mark < 0 && next < 0)
            return {};
        const bool marked = mark >= 0 && (next < 0 || mark < next);
        const qsizetype end = marked ? mark : next;
        const auto one = read_measurement(QString::fromUtf8(m_buffer.first(head_end)),
                                          QString::fromUtf8(m_buffer.sliced(lines, end - lines)));
        if (one)
            m_where.take(*one);
        m_buffer.remove(0, marked ? end + 1 : end);
    }
}

} // namespace instrument
