// What other programs make of the KML and GPX that is written here: xmllint, GDAL
// and GPSBabel read the files, and the points come out where they are.

#include "exchange/gpx.h"
#include "exchange/kml.h"
#include "support/sample_records.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

#include <array>
#include <cmath>

namespace {

/// Longitude, latitude (degrees) and altitude (metres).
using point = std::array<double, 3>;

QList<exportRecord> sample_export()
{
    const sample_lists lists = sample_records();
    QList<exportRecord> records;
    for (qsizetype i = 0; i < lists.table_list.size(); ++i)
        records.append({lists.table_list[i], {}, {}, lists.data_msg_altitude[i], {}});
    return records;
}

QList<point> points_of(const exportRecord& record)
{
    QList<point> points;
    for (const gpx_point& texts : split_point_lines(record.coordinates))
        points.append({texts.lon.toDouble(), texts.lat.toDouble(), texts.ele.toDouble()});
    return points;
}

/// The points of the records of these kinds, one behind the other.
QList<point> points_of(const QList<exportRecord>& records, const QStringList& methods)
{
    QList<point> points;
    for (const exportRecord& record : records) {
        if (methods.contains(record.method))
            points += points_of(record);
    }
    return points;
}

/// What two positions of one point may differ in.
struct tolerance
{
    double degrees = 1e-9; // a tenth of a millimetre
    double metres = 1e-3;
};

bool close_to(const QList<point>& left, const QList<point>& right, const tolerance& within = {})
{
    const auto close = [&within](const point& a, const point& b) {
        return std::fabs(a[0] - b[0]) < within.degrees && std::fabs(a[1] - b[1]) < within.degrees &&
               std::fabs(a[2] - b[2]) < within.metres;
    };
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(), close);
}

/// Output of a program; a program that is not there or fails fails the test.
QByteArray run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForStarted() || !process.waitForFinished(120'000) ||
        process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        qWarning().noquote() << program << "failed:" << process.errorString()
                             << process.readAllStandardError();
        return {};
    }
    return process.readAllStandardOutput();
}

/// What GDAL reads of a layer of the file.
QJsonArray gdal_features(const QString& path, const QString& layer = {})
{
    QStringList arguments{"-f", "GeoJSON", "-lco", "COORDINATE_PRECISION=15", "/vsistdout/", path};
    if (!layer.isEmpty())
        arguments += layer;
    return QJsonDocument::fromJson(run("ogr2ogr", arguments)).object().value("features").toArray();
}

/// All positions of a geometry, in whatever arrays they are.
void append_positions(const QJsonArray& coordinates, QList<point>& points)
{
    if (!coordinates.isEmpty() && coordinates[0].isDouble()) {
        points.append({coordinates[0].toDouble(), coordinates[1].toDouble(),
                       coordinates.size() > 2 ? coordinates[2].toDouble() : 0.0});
        return;
    }
    for (const auto& inner : coordinates)
        append_positions(inner.toArray(), points);
}

QList<point> gdal_points(const QJsonObject& feature)
{
    QList<point> points;
    append_positions(feature.value("geometry").toObject().value("coordinates").toArray(), points);
    const QJsonValue altitude = feature.value("properties").toObject().value("ele");
    if (points.size() == 1 && altitude.isDouble())
        points[0][2] = altitude.toDouble();
    return points;
}

/// The points of a GPX document, by the element in which they are.
QHash<QString, QList<point>> gpx_points(const QByteArray& document)
{
    QXmlStreamReader xml(document);
    QHash<QString, QList<point>> points;
    QString element; // of the point at hand
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        const QXmlStreamAttributes attributes = xml.attributes();
        if (attributes.hasAttribute("lat")) {
            element = xml.name().toString();
            points[element].append(
                {attributes.value("lon").toDouble(), attributes.value("lat").toDouble(), 0.0});
        } else if (xml.name() == QLatin1String("ele"))
            points[element].last()[2] = xml.readElementText().toDouble();
    }
    return points;
}

/// The points that GPSBabel reads, by the element in which it writes them again.
QHash<QString, QList<point>> babel_points(const QString& format, const QString& path)
{
    return gpx_points(run("gpsbabel", {"-i", format, "-f", path, "-o", "gpx", "-F", "-"}));
}

/// The file as xmllint writes it again.
QByteArray linted(const QString& path)
{
    return run("xmllint", {"--nonet", "--encode", "UTF-8", path});
}

/// Texts of all elements of this name.
QStringList texts_of(const QByteArray& document, QLatin1String element)
{
    QXmlStreamReader xml(document);
    QStringList texts;
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == element)
            texts += xml.readElementText();
    }
    return texts;
}

/// The points that this program's reader found, one record behind the other.
QList<point> read_points(const QList<exportRecord>& records)
{
    QList<point> points;
    for (const exportRecord& record : records) {
        for (qsizetype k = 0; k < record.coordinate_pairs.size(); ++k)
            points.append({record.coordinate_pairs[k].first.toDouble(),
                           record.coordinate_pairs[k].second.toDouble(),
                           record.altitudes.value(k).toDouble()});
    }
    return points;
}

const QStringList points_alone{"航点"};
const QStringList routes{"航线", "距离"};
const QStringList tracks{"面积", "航迹"};

} // namespace

class test_peers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void xmllint_reads_both();
    void gdal_reads_kml();
    void gdal_reads_gpx();
    void babel_reads_kml();
    void babel_reads_gpx();
    void we_read_what_they_write();

private:
    QString write(const QString& name, const QList<exportRecord>& records);

    QTemporaryDir m_folder;
};

void test_peers::initTestCase()
{
    for (const char* program : {"xmllint", "ogr2ogr", "gpsbabel"})
        QVERIFY2(!QStandardPaths::findExecutable(program).isEmpty(), program);
}

QString test_peers::write(const QString& name, const QList<exportRecord>& records)
{
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return {};
    if (name.endsWith(QLatin1String(".kml")))
        write_kml(file, records, 0);
    else
        write_gpx_merged(file, records, 0);
    return file.fileName();
}

void test_peers::xmllint_reads_both()
{
    QList<exportRecord> records = sample_export();
    QStringList names;
    for (const exportRecord& record : records)
        names += record.name;
    // Characters that XML cannot hold are left out.
    for (const auto& [name, seen] :
         {std::pair{QStringLiteral("]]>]]>"), QStringLiteral("]]>]]>")},
          std::pair{QStringLiteral("a\x01\x02\x1f"), QStringLiteral("a")},
          std::pair{QString(QChar(0xd800)), QString()},
          std::pair{QStringLiteral("<![CDATA["), QStringLiteral("<![CDATA[")},
          std::pair{QStringLiteral("&#0;&lt;"), QStringLiteral("&#0;&lt;")},
          std::pair{QStringLiteral("--><!--"), QStringLiteral("--><!--")}}) {
        records.append(records[0]);
        records.last().name = name;
        names += seen;
    }
    QStringList figures; // the coordinates of KML
    QStringList gpx_names{"Sample GPX File"};
    for (qsizetype i = 0; i < records.size(); ++i) {
        if (!(points_alone + routes + tracks).contains(records[i].method))
            continue;
        figures += u'\n' + records[i].coordinates;
        gpx_names += {names[i], names[i]}; // of the element, and of our own part in it
    }

    const QByteArray kml = linted(write("a.kml", records));
    QCOMPARE(texts_of(kml, QLatin1String("name")), names);
    QCOMPARE(texts_of(kml, QLatin1String("coordinates")), figures);

    const QByteArray gpx = linted(write("a.gpx", records));
    QCOMPARE(texts_of(gpx, QLatin1String("name")), gpx_names);
    const QHash<QString, QList<point>> points = gpx_points(gpx);
    QVERIFY(close_to(points.value("wpt"), points_of(records, points_alone)));
    QVERIFY(close_to(points.value("rtept"), points_of(records, routes)));
    QVERIFY(close_to(points.value("trkpt"), points_of(records, tracks)));
}

void test_peers::gdal_reads_kml()
{
    const QList<exportRecord> records = sample_export();
    const QJsonArray features = gdal_features(write("b.kml", records));
    QCOMPARE(features.size(), records.size());
    const QHash<QString, QString> types{{"航点", "Point"},
                                        {"航线", "LineString"},
                                        {"距离", "LineString"},
                                        {"航迹", "LineString"},
                                        {"面积", "Polygon"},
                                        {"放样", ""},
                                        {"自制", ""}};
    for (qsizetype i = 0; i < records.size(); ++i) {
        const QJsonObject feature = features[i].toObject();
        const QJsonObject properties = feature.value("properties").toObject();
        QCOMPARE(properties.value("Name").toString(), records[i].name);
        QVERIFY(properties.value("description")
                    .toString()
                    .contains("<h4>名字：" + records[i].name + "</h4>"));
        const QString type = types.value(records[i].method);
        QCOMPARE(feature.value("geometry").toObject().value("type").toString(), type);
        QVERIFY(close_to(gdal_points(feature),
                         type.isEmpty() ? QList<point>() : points_of(records[i])));
    }
}

void test_peers::gdal_reads_gpx()
{
    const QList<exportRecord> records = sample_export();
    const QString path = write("b.gpx", records);
    const auto layer = [&path](const char* name) {
        QList<point> points;
        for (const auto& feature : gdal_features(path, QString::fromLatin1(name)))
            points += gdal_points(feature.toObject());
        return points;
    };
    QVERIFY(close_to(layer("waypoints"), points_of(records, points_alone)));
    QVERIFY(close_to(layer("route_points"), points_of(records, routes)));
    QVERIFY(close_to(layer("track_points"), points_of(records, tracks)));
    // The name is that of the record; the private part comes as its text.
    const QJsonObject first = gdal_features(path, "waypoints")[0].toObject();
    const QJsonObject properties = first.value("properties").toObject();
    QCOMPARE(properties.value("name").toString(), "<well> & gate");
    QVERIFY(properties.value("desc").toString().contains("2024-03-12 07:08:09"));
}

void test_peers::babel_reads_kml()
{
    QList<exportRecord> records = sample_export();
    // It takes no line without points, and we write one where there are none.
    records.removeIf([](const exportRecord& record) { return record.coordinates.isEmpty(); });
    const QHash<QString, QList<point>> points = babel_points("kml", write("c.kml", records));
    QVERIFY(close_to(points.value("wpt"), points_of(records, points_alone)));
    QVERIFY(close_to(points.value("trkpt"), points_of(records, routes + tracks)));
}

void test_peers::babel_reads_gpx()
{
    const QList<exportRecord> records = sample_export();
    const QHash<QString, QList<point>> points = babel_points("gpx", write("c.gpx", records));
    QVERIFY(close_to(points.value("wpt"), points_of(records, points_alone)));
    QVERIFY(close_to(points.value("rtept"), points_of(records, routes)));
    QVERIFY(close_to(points.value("trkpt"), points_of(records, tracks)));
}

void test_peers::we_read_what_they_write()
{
    QList<exportRecord> records = sample_export();
    records.removeIf([](const exportRecord& record) { return record.coordinates.isEmpty(); });
    const QString ours = write("d.kml", records);
    const QString gdal = m_folder.filePath("gdal.kml");
    const QString babel = m_folder.filePath("babel.kml");
    run("ogr2ogr", {"-f", "KML", gdal, ours});
    run("gpsbabel", {"-i", "kml", "-f", ours, "-o", "kml", "-F", babel});
    QFile gdal_file(gdal);
    const kml_reading of_gdal = read_kml(gdal_file, {});
    QVERIFY(
        close_to(read_points(of_gdal.records), points_of(records, points_alone + routes + tracks)));

    // GPSBabel puts the points that stand alone first, and writes each of a line as a
    // Placemark of its own before the line. It has six decimals, two of altitudes.
    QList<point> expected = points_of(records, points_alone);
    for (const exportRecord& record : records) {
        if ((routes + tracks).contains(record.method))
            expected += points_of(record) + points_of(record);
    }
    QFile babel_file(babel);
    const kml_reading of_babel = read_kml(babel_file, {});
    QVERIFY(close_to(read_points(of_babel.records), expected, {.degrees = 6e-7, .metres = 6e-3}));

    // Their GPX is not ours.
    const QString gpx = m_folder.filePath("babel.gpx");
    run("gpsbabel", {"-i", "kml", "-f", ours, "-o", "gpx", "-F", gpx});
    QFile file(gpx);
    QList<exportRecord> none;
    QVERIFY(!parse_gpx(file, none));
    QVERIFY(none.isEmpty());
}

QTEST_GUILESS_MAIN(test_peers)
#include "test_peers.moc"
