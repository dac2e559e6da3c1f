// Foreign and damaged KML and GPX files: what becomes of each, and that nothing
// crashes, hangs or reaches the tables when it should not. The files are made by
// corpus/make_xml_corpus.py; those in ../fuzz/found/ were found by the fuzzers.

#include "corpus_table.h"
#include "exchange/csv.h"
#include "exchange/file_import_thread.h"
#include "exchange/gpx.h"
#include "exchange/kml.h"
#include "support/box_watcher.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {

#ifdef VELMO_SANITIZED
// Everything is several times as slow.
constexpr qsizetype long_line = 20'000'000; // bytes
constexpr int many = 20'000;                // records
#else
constexpr qsizetype long_line = 200'000'000;
constexpr int many = 150'000;
#endif

QString folder(const char* name)
{
    return QStringLiteral(TEST_FILES) + QLatin1Char('/') + QLatin1String(name);
}

QStringList files(const char* name)
{
    return QDir(folder(name)).entryList(QDir::Files, QDir::Name);
}

qsizetype points_of(const QList<exportRecord>& records)
{
    qsizetype points = 0;
    for (const exportRecord& record : records)
        points += record.coordinate_pairs.size();
    return points;
}

/// Writes a file in pieces and imports it.
struct big_import
{
    explicit big_import(const QString& suffix) : file(directory.filePath("big." + suffix))
    {
        good = file.open(QIODevice::WriteOnly);
    }
    void write(const QByteArray& piece, qsizetype times = 1)
    {
        const QByteArray block = piece.repeated(std::min<qsizetype>(times, 1000));
        for (; times >= 1000; times -= 1000)
            good &= file.write(block) == block.size();
        for (; times > 0; --times)
            good &= file.write(piece) == piece.size();
    }
    /// The text of the box at the end.
    QString run()
    {
        file.close();
        const box_watcher watcher;
        importer.import_file(file.fileName(), 0, nullptr, 0);
        return good ? watcher.texts().join(u'|') : QStringLiteral("not written");
    }
    [[nodiscard]] qsizetype points() const
    {
        qsizetype all = 0;
        for (const QList<point_msg>& one : importer.point_msg_all)
            all += one.size();
        return all;
    }

    QTemporaryDir directory;
    QFile file;
    bool good = false;
    file_import_thread importer;
};

} // namespace

Q_DECLARE_METATYPE(kml_file)
Q_DECLARE_METATYPE(gpx_file)

class test_corpus : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void every_file_has_a_row();
    void kml_files_data();
    void kml_files();
    void gpx_files_data();
    void gpx_files();
    void nothing_of_a_failed_import_reaches_the_tables_data();
    void nothing_of_a_failed_import_reaches_the_tables();
    void long_line_of_tuples();
    void long_line_of_digits();
    void long_line_without_an_element();
    void long_line_in_a_description();
    void long_line_of_a_track();
    void deep_nesting();
    void many_placemarks();
    void every_reader_stands_every_file_data();
    void every_reader_stands_every_file();
};

void test_corpus::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
}

void test_corpus::every_file_has_a_row()
{
    QStringList rows;
    for (const kml_file& row : kml_corpus)
        rows += QString::fromUtf8(row.file);
    QCOMPARE(files("corpus/kml"), rows);
    rows.clear();
    for (const gpx_file& row : gpx_corpus)
        rows += QString::fromUtf8(row.file);
    QCOMPARE(files("corpus/gpx"), rows);
}

void test_corpus::kml_files_data()
{
    QTest::addColumn<kml_file>("row");
    for (const kml_file& row : kml_corpus)
        QTest::newRow(row.file) << row;
}

void test_corpus::kml_files()
{
    QFETCH(kml_file, row);
    QFile file(folder("corpus/kml/") + QString::fromUtf8(row.file));
    const kml_reading reading = read_kml(file, {});
    QCOMPARE(reading.result, row.result);
    QCOMPARE(reading.records.size(), row.records);
    QCOMPARE(points_of(reading.records), row.points);
    if (row.records > 0) {
        QCOMPARE(reading.records[0].name, QString::fromUtf8(row.name));
        QCOMPARE(reading.records[0].method, QString::fromUtf8(row.method));
    }
    file_import_thread importer;
    const box_watcher watcher;
    importer.import_file(file.fileName(), 0, nullptr, 0);
    QCOMPARE(importer.table_list.size(), row.records - row.twice);
    // In the other modes the points are others; here that nothing goes wrong.
    for (int mode = 1; mode < 5; ++mode) {
        const kml_reading other = read_kml(file, {.mode = mode, .param = {}});
        QCOMPARE(other.records.isEmpty(), other.result == kml_failed);
    }
}

void test_corpus::gpx_files_data()
{
    QTest::addColumn<gpx_file>("row");
    for (const gpx_file& row : gpx_corpus)
        QTest::newRow(row.file) << row;
}

void test_corpus::gpx_files()
{
    QFETCH(gpx_file, row);
    QFile file(folder("corpus/gpx/") + QString::fromUtf8(row.file));
    QList<exportRecord> records;
    QCOMPARE(parse_gpx(file, records), row.read);
    QCOMPARE(records.size(), row.records);
    QCOMPARE(points_of(records), row.points);
}

void test_corpus::nothing_of_a_failed_import_reaches_the_tables_data()
{
    QTest::addColumn<QString>("path");
    for (const char* name : {"corpus/kml", "corpus/gpx"}) {
        for (const QString& file : files(name))
            QTest::newRow(qPrintable(file)) << folder(name) + QLatin1Char('/') + file;
    }
}

void test_corpus::nothing_of_a_failed_import_reaches_the_tables()
{
    QFETCH(QString, path);
    const bool kml = path.endsWith(QLatin1String(".kml"));
    file_import_thread importer;
    const QSignalSpy handed_on(&importer, &file_import_thread::read_data_finished);
    const box_watcher watcher;
    importer.import_file(path, 0, nullptr, 0);
    QCOMPARE(watcher.boxes.size(), 1);
    const bool failed = watcher.boxes[0].text.endsWith(QStringLiteral("失败"));
    QCOMPARE(watcher.boxes[0].text,
             QStringLiteral("%1%2文件导入%3")
                 .arg(watcher.boxes[0].text.startsWith(QStringLiteral("自制")) ? "自制" : "",
                      kml ? "kml" : "gpx", failed ? "失败" : "成功"));
    QCOMPARE(handed_on.size(), kml || !failed ? 1 : 0);
    if (!handed_on.isEmpty()) {
        const auto records = handed_on[0][0].value<QList<measuringData>>();
        QCOMPARE(records.isEmpty(), failed);
        QCOMPARE(handed_on[0][1].toStringList().size(), records.size());
        QCOMPARE(handed_on[0][2].toStringList().size(), records.size());
        QCOMPARE(handed_on[0][3].value<QList<QList<point_msg>>>().size(), records.size());
    }
}

void test_corpus::long_line_of_tuples()
{
    const QByteArray tuple = "104.500001,30.250001,500.25 ";
    const qsizetype points = long_line / tuple.size();
    big_import big("kml");
    big.write("<kml><Placemark><description>d</description><LineString><coordinates>");
    big.write(tuple, points);
    big.write("</coordinates></LineString></Placemark></kml>");
    // On one line: the second pass finds no points, the last resort all of them.
    QCOMPARE(big.run(), "kml文件导入成功");
    QCOMPARE(big.points(), points);
    QVERIFY(big.importer.data_msg_altitude.value(0).endsWith(
        "104.500001,30.250001,500.25\n104.500001,30.250001,500.25\n"));
}

void test_corpus::long_line_of_digits()
{
    big_import big("kml");
    big.write("<kml><coordinates>");
    big.write("12345678", long_line / 8);
    big.write("</coordinates></kml>");
    QCOMPARE(big.run(), "kml文件导入失败");
}

void test_corpus::long_line_without_an_element()
{
    big_import big("kml");
    big.write("no element and no end ", long_line / 22);
    QCOMPARE(big.run(), "kml文件导入失败");
}

void test_corpus::long_line_in_a_description()
{
    big_import big("kml");
    big.write("<kml><Placemark><description><![CDATA[<h4>测量方式:航线</h4><h4>名字：");
    big.write("name ", long_line / 10);
    big.write("</h4>]]></description><LineString><coordinates>1,2\n3,4</coordinates></LineString>"
              "</Placemark></kml>");
    QCOMPARE(big.run(), "kml文件导入成功");
    QCOMPARE(big.importer.table_list.value(0).name.size(), long_line / 10 * 5 - 1);
}

void test_corpus::long_line_of_a_track()
{
    const qsizetype points = long_line / 100;
    big_import big("gpx");
    big.write("<gpx creator='Velmo'><trk><trkseg>");
    big.write("<trkpt lat='30.250001' lon='104.500001'><ele>500.25</ele></trkpt>", points);
    big.write("</trkseg></trk></gpx>");
    QCOMPARE(big.run(), "gpx文件导入成功");
    QCOMPARE(big.points(), points);
}

void test_corpus::deep_nesting()
{
    constexpr int depth = 300'000;
    for (const bool closed : {true, false}) {
        big_import big("kml");
        big.write("<kml>");
        big.write("<Folder>", depth);
        big.write("<Placemark><name>deep</name><description>d</description><Point><coordinates>1,2"
                  "</coordinates></Point></Placemark>");
        if (closed) {
            big.write("</Folder>", depth);
            big.write("</kml>");
        }
        // The Placemark is whole before the error at the end.
        QCOMPARE(big.run(), "自制kml文件导入成功");
        QCOMPARE(big.importer.table_list.value(0).name, "deep");
    }
    big_import gpx("gpx");
    gpx.write("<gpx creator='Velmo'>");
    gpx.write("<trk><trkseg><trkpt>", depth / 3);
    QCOMPARE(gpx.run(), "gpx文件导入失败");
}

void test_corpus::many_placemarks()
{
    // All with the same names and counts, told apart by their coordinates alone, and
    // each of them twice. By their hash it is seconds; to compare each with all before
    // it takes longer than the five minutes for which Qt Test lets a function run.
    big_import big("kml");
    big.write("<kml>");
    for (int i = 0; i < 2 * many; ++i)
        big.write("<Placemark><name>same</name><description>d</description><Point><coordinates>1." +
                  QByteArray::number(i % many) + ",2</coordinates></Point></Placemark>");
    big.write("</kml>");
    QCOMPARE(big.run(), "自制kml文件导入成功");
    QCOMPARE(big.importer.working_list.size(), 2 * many);
    QCOMPARE(big.importer.table_list.size(), many);
    QCOMPARE(big.importer.data_msg.size(), many);
    for (int i = 0; i < many; ++i)
        QCOMPARE(big.importer.data_msg[i], QStringLiteral("1.%1,2").arg(i));
}

void test_corpus::every_reader_stands_every_file_data()
{
    QTest::addColumn<QString>("path");
    for (const char* name : {"corpus/kml", "corpus/gpx", "corpus/csv", "../fuzz/found"}) {
        for (const QString& file : files(name))
            QTest::newRow(qPrintable(file)) << folder(name) + QLatin1Char('/') + file;
    }
}

void test_corpus::every_reader_stands_every_file()
{
    // What is made for one reader, or was found to trip it, the others have to stand
    // as well, and what they take of it is whole.
    QFETCH(QString, path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const csv_rows rows(file.readAll());
    file.close();
    file_import_thread importer;
    for (int mode = 0; mode < 5; ++mode) {
        const kml_reading kml = read_kml(file, {.mode = mode, .param = {}});
        QCOMPARE(kml.records.isEmpty(), kml.result == kml_failed);
        importer.import_file({}, mode, nullptr, 0); // empties the results
        if (!importer.take_csv_rows(rows))
            continue;
        QVERIFY(!importer.table_list.isEmpty());
        QCOMPARE(importer.data_msg.size(), importer.table_list.size());
        QCOMPARE(importer.data_msg_altitude.size(), importer.table_list.size());
        QCOMPARE(importer.point_msg_all.size(), importer.table_list.size());
        for (qsizetype at = 0; at < importer.table_list.size(); ++at)
            QCOMPARE(importer.data_msg_altitude[at].count(u'\n'),
                     importer.point_msg_all[at].size());
    }
    QList<exportRecord> records;
    const bool found = parse_kml_fallback(file, records);
    QCOMPARE(found, !records.isEmpty());
    const bool gpx = parse_gpx(file, records);
    QVERIFY(!gpx || path.endsWith(QLatin1String(".gpx")) || !path.contains("corpus"));
}

QTEST_MAIN(test_corpus)
#include "test_corpus.moc"
