#include "ledger.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double wire_degree = 1e7;

QList<qint64> numbers_of(const QString& data_msg)
{
    QList<qint64> numbers;
    for (const QStringView text : QStringView(data_msg).split(u',', Qt::SkipEmptyParts))
        numbers.append(std::llround(text.toDouble() * wire_degree));
    return numbers;
}

QString text_of(const mark& one)
{
    return QStringLiteral("%1 \"%2\" of %3 points").arg(one.method, one.name).arg(one.points);
}

} // namespace

mark mark::of(const QString& name, const QString& method, const QList<qint64>& numbers)
{
    return {name, method, numbers.size() / 2, qHashRange(numbers.cbegin(), numbers.cend())};
}

size_t qHash(const mark& one, size_t seed)
{
    return qHashMulti(seed, one.name, one.method, one.points, one.places);
}

mark held_lists::mark_of(qsizetype row) const
{
    return mark::of(table_list[row].name, table_list[row].method, numbers_of(data_msg[row]));
}

qint64 held_lists::points() const
{
    qint64 all = 0;
    for (const QList<point_msg>& one : point_msg_all)
        all += one.size();
    return all;
}

QString held_lists::contradiction() const
{
    if (table_list.size() != data_msg.size() || table_list.size() != data_msg_altitude.size() ||
        table_list.size() != point_msg_all.size()) {
        return QStringLiteral("lists of %1, %2, %3 and %4 entries")
            .arg(table_list.size())
            .arg(data_msg.size())
            .arg(data_msg_altitude.size())
            .arg(point_msg_all.size());
    }
    for (qsizetype row = 0; row < table_list.size(); ++row) {
        // The pairs are counted by the marks: in a foreign file a comma may be anything.
        const qsizetype lines = data_msg_altitude[row].count(u'\n');
        if (lines != point_msg_all[row].size()) {
            return QStringLiteral("row %1, %2, has %3 lines and %4 points")
                .arg(row)
                .arg(table_list[row].name)
                .arg(lines)
                .arg(point_msg_all[row].size());
        }
    }
    return {};
}

void ledger::add(const mark& one, qint64 times)
{
    m_rows[one] += times;
}

void ledger::add(const ledger& other, qint64 times)
{
    for (auto row = other.m_rows.cbegin(); row != other.m_rows.cend(); ++row)
        add(row.key(), row.value() * times);
}

qint64 ledger::rows() const
{
    qint64 all = 0;
    for (const qint64 one : m_rows)
        all += one;
    return all;
}

QString ledger::difference(const held_lists& held) const
{
    QHash<mark, qint64> left = m_rows;
    for (qsizetype row = 0; row < held.table_list.size(); ++row)
        --left[held.mark_of(row)];
    constexpr int named = 4; // the rest would hide them
    QStringList lines;
    for (auto row = left.cbegin(); row != left.cend() && lines.size() < named; ++row) {
        if (row.value() != 0) {
            lines +=
                QStringLiteral("%1 %2 times %3")
                    .arg(text_of(row.key()))
                    .arg(std::abs(row.value()))
                    .arg(row.value() > 0 ? QStringLiteral("too few") : QStringLiteral("too many"));
        }
    }
    if (lines.isEmpty())
        return {};
    return QStringLiteral("%1 rows instead of %2: %3")
        .arg(held.table_list.size())
        .arg(rows())
        .arg(lines.join(QStringLiteral("; ")));
}
