#pragma once

#include "ledger.h"

#include <QList>
#include <QStringList>

#include <algorithm>

// Kinds of measurements, as the tables name them.

inline const QString way_line = QStringLiteral("航线");
inline const QString way_point = QStringLiteral("航点");
inline const QString track = QStringLiteral("航迹");
inline const QString staking_out = QStringLiteral("放样");

/// An instrument's memory, told by the instrument itself.
struct contents
{
    QStringList options;    ///< that make the instrument have it
    QList<mark> by_frames;  ///< as a binary read brings it
    QList<mark> by_text;    ///< as a read of short text records brings it
    QList<int> last_frames; ///< of each measurement in a binary read, which counts from 1

    /// Measurements that are whole when the read ends behind `frame`.
    [[nodiscard]] qsizetype whole_by(int frame) const
    {
        return std::count_if(last_frames.cbegin(), last_frames.cend(),
                             [frame](int last) { return last <= frame; });
    }
    [[nodiscard]] qsizetype size() const { return by_frames.size(); }
};

/// The memory of a simulated instrument with so many measurements of so many points.
/// Throws `step_failed` if the instrument does not tell of it.
contents contents_of(int measurements, int points);

/// What comes to the tables when `whole` measurements of a binary read arrive one by
/// one: each delivery brings all that the read began with and all before it.
ledger deliveries(const ledger& before, const contents& memory, qsizetype whole);
