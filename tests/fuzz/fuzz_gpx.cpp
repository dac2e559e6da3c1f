// The GPX reader, and the writer with texts that it did not choose.

#include "exchange/gpx.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

namespace {

/// What is written can be read, whatever the texts are.
void write_named(const QString& text)
{
    QList<exportRecord> records;
    for (const char16_t* method : {u"航点", u"航线", u"面积"}) {
        exportRecord record;
        record.method = QStringView(method).toString();
        record.name = text;
        record.coordinates = text;
        records.append(record);
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly | QIODevice::Text);
    write_gpx_merged(buffer, records, 0);
    buffer.close();
    QList<exportRecord> again;
    if (!parse_gpx(buffer, again) || again.size() != records.size())
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QBuffer buffer(&bytes);
    QList<exportRecord> records;
    (void)parse_gpx(buffer, records);
    // Behind the root element that only our own files have.
    QByteArray inside = "<gpx creator=\"Velmo\">" + bytes + "</gpx>";
    QBuffer own(&inside);
    (void)parse_gpx(own, records);
    write_named(QString::fromUtf8(bytes));
    write_named(
        QString::fromUtf16(reinterpret_cast<const char16_t*>(bytes.constData()), bytes.size() / 2));
    return 0;
}
