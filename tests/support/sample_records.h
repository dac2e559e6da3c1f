#pragma once

#include "support/sample_lists.h"

/// Measurements that try what files do with them: all seven kinds, names that
/// are awkward in a text format, points in all four quarters of the earth and
/// none at all. Every field of a record has a value of its own, so that one put
/// in another's place shows.
///
///  row  kind  points  name
///   0   面积    4     a comma
///   1   距离    3     double quotes
///   2   航点    1     angle brackets and an ampersand
///   3   航线    2     the end of a CDATA section
///   4   航迹    3     blanks at both ends
///   5   放样    2     Chinese
///   6   自制    2     emoji
///   7   面积    3     empty
///   8   航点    1     single quotes; south-west
///   9   距离    0     no points
sample_lists sample_records();
