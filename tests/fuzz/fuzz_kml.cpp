// The passes of the KML reader, each alone and as an import chooses among them, and
// the writer with names that it did not choose.

#include "coordinates/transforms.h"
#include "exchange/kml.h"

#include <QBuffer>
#include <QXmlStreamReader>

#include <cstdint>
#include <cstdlib>

namespace {

void expect(bool what)
{
    if (!what)
        std::abort();
}

/// WGS 84, Gauss in zones of three degrees.
file_coordinates form_of(int mode)
{
    CoordinateSystem system;
    system.ellipsoid = 3;
    system.l0 = 105.0;
    return {mode, flat_parameters(system), 6378137.0, 6356752.314245179, 0.0033528106647474805};
}

void read_as(QByteArray bytes, int mode)
{
    const file_coordinates form = form_of(mode);
    QBuffer buffer(&bytes);
    const kml_reading reading = read_kml(buffer, form);
    expect(reading.records.isEmpty() == (reading.result == kml_failed));
    for (const exportRecord& record : reading.records) {
        expect(!record.coordinate_pairs.isEmpty());
        expect(record.coordinate_pairs.size() == record.altitudes.size());
        expect(!record.method.isEmpty() && record.method != QLatin1String("0"));
    }
    QList<exportRecord> records;
    parse_kml_own(buffer, form, records);
    parse_kml_placemarks(buffer, form, records);
    parse_kml_fallback(buffer, records);
}

void write_named(const QString& name)
{
    exportRecord record;
    record.method = QStringLiteral("航线");
    record.name = name;
    record.coordinates = name;
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly | QIODevice::Text);
    write_kml(buffer, {record, record}, 0);
    QXmlStreamReader xml(buffer.data());
    while (!xml.atEnd())
        xml.readNext();
    expect(!xml.hasError());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    // Degrees as they stand in one of three notations, and the plane in one of two.
    constexpr int degrees[] = {0, 2, 3};
    read_as(bytes, degrees[size % 3]);
    read_as(bytes, size % 2 == 0 ? 1 : 4);
    write_named(QString::fromUtf8(bytes));
    write_named(
        QString::fromUtf16(reinterpret_cast<const char16_t*>(bytes.constData()), bytes.size() / 2));
    return 0;
}
