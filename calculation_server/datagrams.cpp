#include "calculation_server/datagrams.h"

#include <QList>

#include <cmath>

namespace calculation {

namespace {

constexpr double farthest = 1e9; // metres

/// Reads the coordinates one after the other.
class coordinate_reader
{
public:
    explicit coordinate_reader(const QList<QByteArray>& fields, qsizetype first)
        : m_fields(fields), m_next(first)
    {
    }

    /// A point of the next three fields; NaN for what is no coordinate.
    Eigen::Vector3d point()
    {
        const double x = number();
        const double y = number();
        const double z = number();
        return {x, y, z};
    }

private:
    double number()
    {
        bool good = false;
        const double value = m_fields[m_next++].trimmed().toDouble(&good);
        return good && std::abs(value) <= farthest ? value : std::nan("");
    }

    const QList<QByteArray>& m_fields;
    qsizetype m_next;
};

bool is_refusal(const QByteArray& datagram)
{
    return datagram.startsWith('!');
}

QByteArray refusal(const QString& reason)
{
    return '!' + reason.toUtf8() + '*';
}

QByteArray text(const parameters& found)
{
    // The rotations turn about the centre of the Earth, 6.4e6 m away: a tenth of a
    // nano-arc-second and 1e-15 of scale are some nanometres there.
    constexpr int decimals_of_metres = 6;
    constexpr int decimals_of_arc_seconds = 10;
    constexpr int decimals_of_scale = 15;
    const auto fixed = [](double value, int decimals) {
        return QByteArray::number(value, 'f', decimals);
    };
    const QByteArrayList fields{
        fixed(found.dx, decimals_of_metres),      fixed(found.dy, decimals_of_metres),
        fixed(found.dz, decimals_of_metres),      fixed(found.rx, decimals_of_arc_seconds),
        fixed(found.ry, decimals_of_arc_seconds), fixed(found.rz, decimals_of_arc_seconds),
        fixed(found.k, decimals_of_scale)};
    return '$' + fields.join(',') + '*';
}

} // namespace

std::optional<std::vector<point_pair>> parse_request(const QByteArray& datagram, QString& error)
{
    const auto refuse = [&error](const QString& reason) {
        error = reason;
        return std::nullopt;
    };
    const QList<QByteArray> fields = datagram.split(',');
    bool good =
        fields.size() >= 3 && fields.constFirst().startsWith('$') && fields.constLast() == "*";
    if (!good)
        return refuse(QStringLiteral("not a request: from $ and port to a last field of *"));
    fields.constFirst().sliced(1).toUShort(&good);
    if (!good)
        return refuse(QStringLiteral("no port behind the $"));
    const uint count = fields[1].toUInt(&good);
    if (!good)
        return refuse(QStringLiteral("the count is no number"));
    if (count < least_pairs)
        return refuse(QStringLiteral("at least %1 pairs are needed").arg(least_pairs));
    constexpr qint64 around = 3; // port, count, end
    const qint64 expected = around + 6 * qint64(count);
    if (fields.size() != expected)
        return refuse(QStringLiteral("%1 pairs make %2 fields and not %3")
                          .arg(count)
                          .arg(expected)
                          .arg(fields.size()));

    std::vector<point_pair> pairs(count);
    coordinate_reader read(fields, 2);
    for (point_pair& one : pairs)
        one.source = read.point();
    for (point_pair& one : pairs)
        one.target = read.point();
    for (size_t i = 0; i < pairs.size(); ++i) {
        if (pairs[i].source.hasNaN() || pairs[i].target.hasNaN())
            return refuse(QStringLiteral("pair %1 has a coordinate that is none").arg(i + 1));
    }
    return pairs;
}

QByteArray answer(const QByteArray& datagram, QString& summary)
{
    if (is_refusal(datagram)) {
        summary = QStringLiteral("a refusal, not answered");
        return {};
    }
    const auto refuse = [&summary](const QString& reason) {
        summary = QStringLiteral("refused: ") + reason;
        return refusal(reason);
    };
    QString error;
    const std::optional<std::vector<point_pair>> pairs = parse_request(datagram, error);
    if (!pairs)
        return refuse(error);
    const std::optional<solution> solved = solve(*pairs);
    if (!solved)
        return refuse(QStringLiteral("the points do not determine seven parameters: they lie in "
                                     "one place or one line or are mirrored"));
    summary = QStringLiteral("%1 pairs, %2 m left per coordinate")
                  .arg(pairs->size())
                  .arg(solved->rms, 0, 'f', 4);
    return text(solved->found);
}

} // namespace calculation
