#include "device/data_to_device.h"
#include "device/serial_thread.h"
#include "support/box_watcher.h"
#include "support/instrument_process.h"
#include "support/log_capture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

const QString uploaded = "上传数据成功";

/// What a frame of an upload carries of a point: no speed, time, heading, accuracy
/// and status.
QJsonArray carried(const QJsonArray& points, bool whole_decimetres)
{
    QJsonArray all;
    for (const QJsonValue& point : points) {
        const int centimetres = point[2].toInt();
        all.append(
            QJsonArray{point[0], point[1],
                       whole_decimetres ? qMax(0, qRound(centimetres / 10.0)) * 10 : centimetres});
    }
    return all;
}

} // namespace

/// The simulated instrument, a program of its own on a pseudo-terminal: what is read
/// from it, sent back and read again is the same; and what it does wrong.
class test_upload_round_trip : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void packets();
    void texts_data();
    void texts();
    void a_stream_cut_anywhere();
    void a_stream_with_too_few_records();
    void uploads_end_as_expected_data();
    void uploads_end_as_expected();

private:
    void start(const QStringList& arguments);
    /// Reads the instrument to the last box, which must say `box`.
    void read(const QString& box);
    /// Sends the first `count` measurements back, to an instrument that answers the
    /// probe or not.
    void send_back(qsizetype count, bool answers = true);
    [[nodiscard]] QJsonArray received() const;

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<log_capture> log;
    std::unique_ptr<box_watcher> watcher;
    std::unique_ptr<instrument_process> instrument;
    std::unique_ptr<serial_thread> reader;
    std::unique_ptr<data_to_device> upload;
};

void test_upload_round_trip::init()
{
    qputenv("PATH", ""); // no adb in this test
    folder = std::make_unique<QTemporaryDir>();
    log = std::make_unique<log_capture>();
    watcher = std::make_unique<box_watcher>();
    instrument = std::make_unique<instrument_process>();
    reader = std::make_unique<serial_thread>();
    upload = std::make_unique<data_to_device>();
    upload->port = reader->port;
}

void test_upload_round_trip::cleanup()
{
    upload.reset();
    reader.reset();
    instrument.reset();
    watcher.reset();
    log.reset();
}

void test_upload_round_trip::start(const QStringList& arguments)
{
    QVERIFY(instrument->start(QStringList{"--pty", "--received", folder->filePath("received")} +
                              arguments));
    reader->available_ports = [this] {
        return QList<serial_thread::listed_port>{{instrument->serial_path(), "pts", "USB Serial"}};
    };
    reader->detect_ports();
    QCOMPARE(watcher->texts(), QStringList{"设备已连接"});
}

void test_upload_round_trip::read(const QString& box)
{
    // On a busy machine the instrument may miss the moment that it has; then one
    // reads again, as the box says.
    for (int attempt = 0; attempt < 5; ++attempt) {
        watcher->boxes.clear();
        QTimer::singleShot(0, reader.get(),
                           [this] { reader->recv_cmd_from_key(1, {}, {}, {}, {}); });
        QTRY_COMPARE_WITH_TIMEOUT(watcher->boxes.size(), 1, 60000);
        if (watcher->texts() != QStringList{"数据未读取成功，请再次点击"})
            break;
    }
    QCOMPARE(watcher->texts(), QStringList{box});
    QCOMPARE(reader->data_msg.size(), reader->table_list.size());
    QCOMPARE(reader->data_msg_altitude.size(), reader->table_list.size());
    QCOMPARE(reader->point_msg_all.size(), reader->table_list.size());
}

void test_upload_round_trip::send_back(qsizetype count, bool answers)
{
    QStandardItemModel model;
    for (qsizetype row = 0; row < count; ++row) {
        auto* const cell = new QStandardItem;
        cell->setData(true, Qt::EditRole);
        model.appendRow(cell);
    }
    // As above: an answer that misses its moment is none of the instrument's faults.
    for (int attempt = 0; attempt < 5; ++attempt) {
        log->clear();
        watcher->boxes.clear();
        bool returned = false;
        QTimer::singleShot(0, this, [&] {
            upload->import_data_to_device(&model, reader->table_list, reader->data_msg_altitude);
            returned = true;
        });
        QTRY_VERIFY_WITH_TIMEOUT(returned, 60000);
        if (!answers || !log->has("等待设备响应0x2e超时"))
            break;
    }
}

QJsonArray test_upload_round_trip::received() const
{
    QFile file(folder->filePath("received"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).array();
}

void test_upload_round_trip::packets()
{
    start({});
    read("数据读取成功");
    const qsizetype count = reader->table_list.size();
    QCOMPARE(count, 17);
    const QList<measuringData> first = reader->table_list;
    const QStringList plain = reader->data_msg;
    const QStringList lines = reader->data_msg_altitude;
    send_back(count);
    QCOMPARE(watcher->texts(), QStringList{uploaded});

    // The instrument has what it had, but for what no frame of an upload carries.
    const QJsonArray memory =
        QJsonDocument::fromJson(instrument_process::run({"--json"}).output).array();
    QTRY_COMPARE(received().size(), count);
    const QJsonArray list = received();
    for (int index = 0; index < count; ++index) {
        QJsonObject sent = memory[index].toObject();
        QJsonObject came = list[index].toObject();
        QCOMPARE(came.take("packets").toBool(), true);
        QCOMPARE(came.take("name").toString(), "");
        sent["points"] = carried(sent["points"].toArray(), false);
        for (const QJsonValue& point : came["points"].toArray()) {
            QCOMPARE(point.toArray().size(), 8);
            for (int part = 3; part < 7; ++part)
                QCOMPARE(point[part].toInt(), 0);
            QCOMPARE(point[7].toInt(), 255);
        }
        came["points"] = carried(came["points"].toArray(), false);
        QCOMPARE(came, sent);
    }

    // And so has the program when it reads again: the old ones and the new.
    read("数据读取成功");
    QCOMPARE(reader->table_list.size(), 2 * count);
    for (qsizetype index = 0; index < count; ++index) {
        measuringData again = reader->table_list[count + index];
        QCOMPARE(again.numrecord, QString::number(2 * count));
        again.numrecord = first[index].numrecord;
        QVERIFY(again == first[index]);
        QCOMPARE(reader->data_msg[count + index], plain[index]);
        QCOMPARE(reader->data_msg_altitude[count + index], lines[index]);
    }
}

void test_upload_round_trip::texts_data()
{
    QTest::addColumn<QString>("form");
    QTest::addColumn<QString>("baud");
    QTest::addColumn<int>("records"); // of 17, three of them waypoints
    QTest::newRow("short at 115200") << "short"
                                     << "115200" << 17;
    QTest::newRow("short at 9600") << "short"
                                   << "9600" << 17;
    QTest::newRow("long at 115200") << "long"
                                    << "115200" << 14;
    QTest::newRow("long at 9600") << "long"
                                  << "9600" << 14;
}

/// Older instruments: text in, Mode text out, text in again.
void test_upload_round_trip::texts()
{
    QFETCH(QString, form);
    QFETCH(QString, baud);
    QFETCH(int, records);
    start({"--text", form, "--baud", baud});
    read("数据读取完成");
    QCOMPARE(reader->port->baudRate(), baud.toInt());
    QCOMPARE(reader->table_list.size(), records);

    // Places are exactly those of the memory; an altitude has no sign.
    QMap<QString, QJsonObject> memory;
    for (const QJsonValue& one :
         QJsonDocument::fromJson(instrument_process::run({"--json"}).output).array())
        memory[one["start"].toString().replace('T', ' ')] = one.toObject();
    QSet<QString> methods;
    for (int index = 0; index < records; ++index) {
        const measuringData& record = reader->table_list[index];
        methods += record.method;
        const QJsonObject stored = memory[record.time];
        QVERIFY2(!stored.isEmpty(), qPrintable(record.time));
        QCOMPARE(record.numpoint.toInt(), stored["points"].toArray().size());
        QJsonArray points;
        for (const QString& line :
             reader->data_msg_altitude[index].split('\n', Qt::SkipEmptyParts)) {
            const QStringList parts = line.split(',');
            points.append(QJsonArray{qRound(parts[0].toDouble() * 1e7),
                                     qRound(parts[1].toDouble() * 1e7),
                                     qRound(parts[2].toDouble() * 100)});
        }
        QCOMPARE(points, carried(stored["points"].toArray(), true));
    }
    QCOMPARE(methods.size(), form == "short" ? 6 : 5);

    const QList<measuringData> first = reader->table_list;
    const QStringList lines = reader->data_msg_altitude;
    send_back(records, false);
    QCOMPARE(watcher->texts(), QStringList{uploaded});
    QVERIFY(log->has("legacy Mode will be sent"));
    QTRY_COMPARE_WITH_TIMEOUT(received().size(), records, 30000);
    const QJsonArray list = received();
    for (int index = 0; index < records; ++index) {
        QCOMPARE(list[index]["name"].toString(), first[index].name);
        QCOMPARE(list[index]["packets"].toBool(), false);
    }

    read("数据读取完成");
    // The instrument sends each twice now, and each is equal to what it was before:
    // equal records are taken once.
    QCOMPARE(reader->table_list.size(), records);
    for (int index = 0; index < records; ++index) {
        measuringData again = reader->table_list[index];
        QCOMPARE(again.numrecord.toInt(), 17 + records);
        again.numrecord = first[index].numrecord;
        QVERIFY(again == first[index]);
    }
    QCOMPARE(reader->data_msg_altitude, lines);
}

/// Records arrive in pieces of any size.
void test_upload_round_trip::a_stream_cut_anywhere()
{
    start({"--text", "long", "--measurements", "5", "--points", "3", "--fault", "split=1"});
    read("数据读取完成");
    QCOMPARE(reader->table_list.size(), 4); // the waypoint is dropped
    for (const QList<point_msg>& points : reader->point_msg_all)
        QCOMPARE(points.size(), 3);
}

void test_upload_round_trip::a_stream_with_too_few_records()
{
    start({"--text", "short", "--measurements", "5", "--fault", "silent-after=4"});
    read("数据读取完成");
    QVERIFY(reader->table_list.isEmpty());
}

void test_upload_round_trip::uploads_end_as_expected_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("box");
    QTest::addColumn<int>("kept");     // of two measurements with 60 points each
    QTest::addColumn<bool>("answers"); // the probe, in time
    const QString failed = "普通串口上传失败：";
    const QString refused = "设备拒绝命令0x%1，状态%2，可能是不支持该导入类型或数据格式错误";
    const auto row = [](const char* name, const QStringList& arguments, const QString& box,
                        int kept, bool answers = true) {
        QTest::newRow(name) << arguments << box << kept << answers;
    };
    row("none", {}, uploaded, 2);
    row("noise before the answers", {"--fault", "noise"}, uploaded, 2);
    // Their length field has no limit here: the answer to the probe is waited for
    // within a frame of 23,000 bytes.
    row("false headers before the answers", {"--fault", "noise-headers=7"}, uploaded, 0, false);
    row("answers in pieces", {"--fault", "split=3"}, uploaded, 2);
    row("late answers", {"--fault", "delay=400"}, uploaded, 2);
    row("a probe answered too late", {"--fault", "delay=1000@0"}, uploaded, 0, false);
    row("a probe refused", {"--fault", "upload-probe-status=7"}, uploaded, 0);
    row("a kind that is not known", {"--fault", "item-status@1"}, uploaded, 1);
    row("an item refused", {"--fault", "item-status=1@4"}, failed + refused.arg("31", "1"), 1);
    row("points refused", {"--fault", "points-status=200@3"}, failed + refused.arg("32", "200"), 0);
    row("points of a kind that is not known", {"--fault", "points-status=2@2"},
        failed + refused.arg("32", "2"), 0);
    row("no uploads", {"--uploads", "none"}, uploaded, 0, false);
    row("Mode text alone", {"--uploads", "mode-text"}, uploaded, 2, false);
    row("text out, packets in", {"--text", "short", "--uploads", "packets"}, uploaded, 2);
}

void test_upload_round_trip::uploads_end_as_expected()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, box);
    QFETCH(int, kept);
    QFETCH(bool, answers);
    start(QStringList{"--measurements", "2", "--points", "60"} + arguments);
    for (const char* const method : {"面积", "距离"}) {
        measuringData record;
        record.method = method;
        record.time = "2024-3-5 7:8:9";
        reader->table_list.append(record);
        reader->data_msg_altitude.append(QStringLiteral("126.65,45.75,141.60\n").repeated(60));
    }
    send_back(2, answers);
    QCOMPARE(watcher->texts(), QStringList{box});
    if (kept > 0)
        QTRY_COMPARE(received().size(), kept);
    else
        QVERIFY(received().isEmpty());
}

QTEST_MAIN(test_upload_round_trip)
#include "test_upload_round_trip.moc"
