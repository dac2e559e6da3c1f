#pragma once

#include "instrument/memory.h"

#include <QByteArray>

namespace instrument {

/// The two forms of a text record. A staking-out has the long one alone.
enum class text_form
{
    short_record,
    long_record,
};

/// A measurement as a text record with its closing "!". `total` counts the records
/// of the download and is sent in four digits, so that it must stay below 10 000.
///
/// A head of the short form is filled up with zeros, so that the points begin
/// behind its first 50 characters, where hosts begin to look for them. Altitudes
/// have no sign and go out as 0 where they are negative. Seconds of arc have four
/// decimals, which tell all coordinates of the memory apart. The long form carries
/// codes, where the memory has bytes, and "0" for what is not set.
[[nodiscard]] QByteArray record_text(const stored_measurement& measured, qsizetype total,
                                     text_form form);

} // namespace instrument
