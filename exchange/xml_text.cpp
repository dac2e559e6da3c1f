#include "exchange/xml_text.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace {

constexpr bool is_plain(char16_t unit)
{
    return (unit >= 0x20 && unit < 0xd800) || (unit > 0xdfff && unit < 0xfffe) || unit == u'\t' ||
           unit == u'\n' || unit == u'\r';
}

} // namespace

QString xml_text(const QString& text)
{
    const auto* units = reinterpret_cast<const char16_t*>(text.utf16());
    if (std::all_of(units, units + text.size(), is_plain))
        return text;
    QString kept;
    kept.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (is_plain(text[i].unicode()))
            kept.append(text[i]);
        else if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            kept.append(text[i]).append(text[i + 1]);
            ++i;
        }
    }
    return kept;
}

bool next_element_within(QXmlStreamReader& xml, QLatin1String name)
{
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement())
            return true;
        if (xml.isEndElement() && xml.name() == name)
            return false;
    }
    return false;
}
