#pragma once

#include "core/records.h"

/// The four lists with plausible measurements of two points each, for tests.
struct sample_lists
{
    QList<measuringData> table_list;
    QStringList data_msg;
    QStringList data_msg_altitude;
    QList<QList<point_msg>> point_msg_all;

    /// One measurement for each of `methods`, named "m0", "m1" and so on.
    static sample_lists of_methods(const QStringList& methods);
    /// Areas of these names.
    static sample_lists named(const QStringList& names);
    /// One of each kind in the order of the tables, one "自制" and one of an
    /// unknown kind.
    static sample_lists one_of_each();
    /// Coordinate text of measurement `number`.
    static QString coordinates_of(int number);
};
