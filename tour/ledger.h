#pragma once

#include "core/records.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <initializer_list>

/// What tells one measurement from another, wherever it came from.
struct mark
{
    QString name;
    QString method;
    qsizetype points = 0;
    size_t places = 0; ///< of all coordinates, in ten-millionths of a degree

    /// `numbers` are longitude, latitude, in turn, in ten-millionths of a degree.
    [[nodiscard]] static mark of(const QString& name, const QString& method,
                                 const QList<qint64>& numbers);

    bool operator==(const mark&) const = default;
};

size_t qHash(const mark& one, size_t seed = 0);

/// The four lists of the window.
struct held_lists
{
    QList<measuringData> table_list;
    QStringList data_msg;
    QStringList data_msg_altitude;
    QList<QList<point_msg>> point_msg_all;

    [[nodiscard]] mark mark_of(qsizetype row) const;
    /// Points of all measurements.
    [[nodiscard]] qint64 points() const;
    /// Where the lists do not belong together: what is wrong, else empty.
    [[nodiscard]] QString contradiction() const;
};

/// An account of the rows that the window must hold, kept beside the program. What
/// stands how often counts, not the order: a delivery of a read and an import may
/// come in either.
class ledger
{
public:
    void add(const mark& one, qint64 times = 1);
    void add(const ledger& other, qint64 times = 1);
    void clear() { m_rows.clear(); }

    [[nodiscard]] qint64 rows() const;
    /// How often it stands here.
    [[nodiscard]] qint64 of(const mark& one) const { return m_rows.value(one); }
    /// Where the lists differ from the account: what is lost or too many, else empty.
    [[nodiscard]] QString difference(const held_lists& held) const;

private:
    QHash<mark, qint64> m_rows;
};
