#pragma once

#include <QLatin1String>
#include <QString>

class QXmlStreamReader;

/// The text without the characters that XML 1.0 cannot hold (control characters,
/// halves of surrogate pairs, U+FFFE and U+FFFF), which would end the document.
/// They come from names in binary or foreign files.
[[nodiscard]] QString xml_text(const QString& text);

/// What \\s of a regular expression takes for white space.
constexpr bool is_blank(char16_t unit)
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

/// Advances to the next start element within the element `name`. False at its end,
/// at an error and at the end of the input; the reader's atEnd() tells the last two.
[[nodiscard]] bool next_element_within(QXmlStreamReader& xml, QLatin1String name);
