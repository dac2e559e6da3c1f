// The last resort of the KML reader, against the regular expressions that say what
// it finds. They take long on some texts, so the inputs are short.

#include "exchange/kml.h"
#include "exchange/kml_expressions.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data),
                          static_cast<qsizetype>(std::min<std::size_t>(size, 2000)));
    if (!kml_expressions::same(find_kml_coordinates(text), kml_expressions::find(text)))
        std::abort();
    // A block, so that the search for points is reached without luck.
    for (const char* name : {"coordinates", "Track"}) {
        const QString block = QStringLiteral("<%1>%2</%1>").arg(QLatin1String(name), text);
        if (!kml_expressions::same(find_kml_coordinates(block), kml_expressions::find(block)))
            std::abort();
    }
    return 0;
}
