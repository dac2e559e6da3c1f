#include "device/adb_string_channel.h"
#include "device/data_to_device.h"
#include "device/frame.h"
#include "device/serial_thread.h"
#include "instrument_frames.h"
#include "scripted_instrument.h"
#include "support/asked_polls.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <memory>

#include <poll.h>

namespace {

using request = scripted_instrument::request;

const QByteArray upload_probe = QByteArray::fromHex("5A2EFD000004FFFFFFFF3C");
const QString succeeded = "上传数据成功";
const QString refusal = "设备拒绝命令0x%1，状态%2，可能是不支持该导入类型或数据格式错误";

std::uint8_t command_of(const QByteArray& frame)
{
    return frame::read_u8(frame, 1);
}

/// An instrument that answers each frame of an upload with status 0.
QByteArray accept(const request& asked)
{
    return asked.bytes.startsWith('Z') ? instrument_frames::reply(command_of(asked.bytes), 0)
                                       : QByteArray();
}

/// Text of `count` points.
QString lines_of(int count)
{
    QString lines;
    for (int index = 0; index < count; ++index)
        lines += QStringLiteral("126.%1,45.75,141.60\n").arg(index, 7, 10, QLatin1Char('0'));
    return lines;
}

measuringData record_of(const QString& method)
{
    measuringData record;
    record.method = method;
    record.time = "2024-3-5 7:8:9";
    record.mode = "1";
    record.name = "north";
    return record;
}

} // namespace

/// The upload: what the user sees, the protocol that is chosen, every frame, and
/// every way in which an instrument can fail. The instrument's end is scripted.
class test_data_to_device : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void starts_with_no_device();
    void names_of_slots();
    void no_model();
    void no_channel();
    void a_port_that_cannot_be_read();
    void a_socket_that_is_not_connected();
    void nothing_ticked();
    void ticked_beyond_the_lists();

    void frames_byte_for_byte();
    void points_in_blocks_data();
    void points_in_blocks();
    void the_sequence_wraps();
    void an_item_of_another_size_is_sent_all_the_same();
    void rows_that_cannot_be_sent_data();
    void rows_that_cannot_be_sent();
    void mode_text_when_the_probe_is_not_answered_data();
    void mode_text_when_the_probe_is_not_answered();
    void an_unsupported_item_is_skipped();
    void refusals_data();
    void refusals();
    void silence_data();
    void silence();
    void answers_in_any_form_data();
    void answers_in_any_form();
    void an_answer_that_comes_late();
    void a_stale_answer_does_not_count();
    void an_answer_before_the_probe_does_not_count();

    void the_android_channel();
    void no_channel_whatever_goes_out();
    void a_slow_android_instrument();
    void both_channels();
    void both_channels_with_different_protocols();
    void one_list_for_both_channels();
    void a_serial_failure_keeps_from_android();
    void a_channel_that_has_gone();

    void devices_that_are_not_there();
    void a_line_that_takes_nothing();
    void a_device_that_refuses_bytes();
    void the_length_of_a_text_that_is_logged();
    void a_cable_pulled_out_data();
    void a_cable_pulled_out();
    void a_socket_that_closes();

    void an_upload_during_a_binary_read();
    void an_upload_during_a_text_read();
    void an_upload_during_an_android_read();
    void a_read_during_an_upload();
    void a_read_that_a_box_lets_in();

private:
    void open_port(scripted_instrument::script answer);
    void open_socket(scripted_instrument::script answer);
    void add(const QString& method, const QString& lines, bool ticked = true);
    /// Runs an upload to its last box.
    void run_upload();
    /// Whether all boxes so far were of the kind and title of what the user did wrong.
    [[nodiscard]] bool only_warnings() const;
    [[nodiscard]] QList<QByteArray> serial_frames() const;
    [[nodiscard]] QList<QByteArray> android_frames() const;

    std::unique_ptr<log_capture> log;
    std::unique_ptr<box_watcher> watcher;
    std::unique_ptr<scripted_instrument> serial;
    std::unique_ptr<scripted_instrument> android;
    std::unique_ptr<AdbStringChannel> channel;
    std::unique_ptr<QSerialPort> port;
    std::unique_ptr<data_to_device> upload;
    QStandardItemModel model;
    QList<measuringData> table_list;
    QStringList lines;
};

void test_data_to_device::init()
{
    qputenv("PATH", ""); // no adb in this test
    log = std::make_unique<log_capture>();
    watcher = std::make_unique<box_watcher>();
    port = std::make_unique<QSerialPort>();
    upload = std::make_unique<data_to_device>();
    upload->port = port.get();
    model.clear();
    table_list.clear();
    lines.clear();
}

void test_data_to_device::cleanup()
{
    upload.reset();
    port.reset();
    channel.reset();
    serial.reset();
    android.reset();
    watcher.reset();
    log.reset();
}

void test_data_to_device::open_port(scripted_instrument::script answer)
{
    upload->port->close();
    serial = std::make_unique<scripted_instrument>(std::move(answer));
    upload->port->setPortName(serial->path());
    QVERIFY(upload->port->open(QIODevice::ReadWrite));
}

void test_data_to_device::open_socket(scripted_instrument::script answer)
{
    android =
        std::make_unique<scripted_instrument>(std::move(answer), scripted_instrument::line::tcp);
    channel = std::make_unique<AdbStringChannel>("127.0.0.1", android->tcp_port(), "emulator-5554",
                                                 "adb", nullptr);
    channel->socket = new QTcpSocket(channel.get());
    connect(channel->socket, &QTcpSocket::errorOccurred, channel.get(),
            &AdbStringChannel::onSocketError);
    channel->socket->connectToHost("127.0.0.1", android->tcp_port());
    QVERIFY(channel->socket->waitForConnected());
    upload->channel_in(channel.get());
}

void test_data_to_device::add(const QString& method, const QString& points, bool ticked)
{
    auto* const cell = new QStandardItem;
    cell->setData(ticked, Qt::EditRole);
    model.appendRow({cell, new QStandardItem(method)});
    table_list.append(record_of(method));
    lines.append(points);
}

void test_data_to_device::run_upload()
{
    bool returned = false;
    QTimer::singleShot(0, this, [this, &returned] {
        upload->import_data_to_device(&model, table_list, lines);
        returned = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(returned, 60000);
}

bool test_data_to_device::only_warnings() const
{
    return std::all_of(watcher->boxes.begin(), watcher->boxes.end(), [](const auto& box) {
        return box.icon == QMessageBox::Warning && box.title == "警告";
    });
}

QList<QByteArray> test_data_to_device::serial_frames() const
{
    QList<QByteArray> frames;
    for (const request& one : serial->requests())
        frames += one.bytes;
    return frames;
}

QList<QByteArray> test_data_to_device::android_frames() const
{
    QList<QByteArray> frames;
    for (const request& one : android->requests())
        frames += one.bytes;
    return frames;
}

// Checks before anything is sent.

void test_data_to_device::starts_with_no_device()
{
    const data_to_device fresh;
    QVERIFY(qobject_cast<const QThread*>(&fresh) != nullptr);
    QCOMPARE(fresh.port, nullptr);
    QVERIFY(fresh.channel.isNull());
}

void test_data_to_device::names_of_slots()
{
    const QMetaObject& meta = data_to_device::staticMetaObject;
    QByteArrayList signatures;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at) {
        QCOMPARE(meta.method(at).methodType(), QMetaMethod::Slot);
        signatures += meta.method(at).methodSignature();
    }
    QCOMPARE(signatures,
             (QByteArrayList{
                 "import_data_to_device(QStandardItemModel*,QList<measuringData>,QStringList)",
                 "channel_in(AdbStringChannel*)", "channel_out(AdbStringChannel*)"}));
}

void test_data_to_device::no_model()
{
    upload->import_data_to_device(nullptr, table_list, lines);
    QCOMPARE(watcher->boxes.size(), 1);
    QCOMPARE(watcher->boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher->boxes[0].title, "警告");
    QCOMPARE(watcher->boxes[0].text, "数据表为空");
}

void test_data_to_device::no_channel()
{
    run_upload(); // whether anything is ticked or not
    add("面积", lines_of(1));
    run_upload();
    QVERIFY(only_warnings());
    QCOMPARE(watcher->texts(), (QStringList{"串口未连接", "串口未连接"}));
    QVERIFY(log->has("[import] serial usable: false"));
    QVERIFY(log->has("[import] android usable: false"));
}

void test_data_to_device::a_port_that_cannot_be_read()
{
    open_port(accept);
    upload->port->close();
    QVERIFY(upload->port->open(QIODevice::WriteOnly));
    add("面积", lines_of(1));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{"串口未连接"});
    QVERIFY(log->has("[import] serial usable: false"));
    QVERIFY(serial->requests().isEmpty());
}

void test_data_to_device::a_socket_that_is_not_connected()
{
    open_socket(accept);
    channel->socket->disconnectFromHost();
    QTRY_COMPARE(channel->socket->state(), QTcpSocket::UnconnectedState);
    add("面积", lines_of(1));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{"串口未连接"});
    QVERIFY(log->has("[import] android usable: false"));
}

void test_data_to_device::nothing_ticked()
{
    open_port(accept);
    run_upload();
    add("面积", lines_of(1), false);
    run_upload();
    QCOMPARE(watcher->texts(), (QStringList{"未勾选数据", "未勾选数据"}));
    QVERIFY(only_warnings());
    QVERIFY(serial->requests().isEmpty());
}

void test_data_to_device::ticked_beyond_the_lists()
{
    open_port(accept);
    add("面积", lines_of(1));
    add("面积", lines_of(1));
    lines.removeLast();
    run_upload();
    lines.append(lines_of(1));
    table_list.removeLast();
    run_upload();
    QCOMPARE(watcher->texts(), (QStringList{"勾选数据超出缓存范围", "勾选数据超出缓存范围"}));
    QVERIFY(only_warnings());
    // A row beyond the lists that is not ticked does no harm.
    model.item(1, 0)->setData(false, Qt::EditRole);
    run_upload();
    QCOMPARE(watcher->texts().last(), succeeded);
}

// Frames.

void test_data_to_device::frames_byte_for_byte()
{
    open_port(accept);
    add("面积", "1,2,3\n", false);
    add("距离", "126.65,45.75,141.60\n-0.0000001,-0.0000002,-152.70\n");
    table_list[1].areameter = "1334";
    table_list[1].distance = "123.4";
    table_list[1].timezone = "11";
    table_list[1].width = "3.5";
    table_list[1].price = "12";
    table_list[1].hd = "2";
    run_upload();
    QCOMPARE(watcher->boxes[0].icon, QMessageBox::Information);
    QCOMPARE(watcher->boxes[0].title, "上传");
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    // The last bytes were computed with a bit-by-bit CRC-8/SMBUS elsewhere.
    const QList<QByteArray> expected{
        upload_probe,
        QByteArray::fromHex("5A31FD000024FFFFFFFF0000000200000536000004D2"
                            "01240305070809240305070809000109" // kind, times, records, zone
                            "10230C04"
                            "B3"),
        QByteArray::fromHex("5A32FD01002BFFFFFFFF"
                            "4B7D41A01B44E56000003750000000000000FF"
                            "FFFFFFFFFFFFFFFEFFFFC45A000000000000FF"
                            "10"
                            "06"),
    };
    QCOMPARE(serial_frames(), expected);

    const QStringList said{
        "[import] serial usable: true",
        "[import] android usable: false",
        "[import] selected records=1",
        "[import] probe packet protocol cmd=0x2e timeoutMs=800",
        "[import] packet protocol selected, device type: 0x07",
        "[import] send packet records=1 pointsPerFrame=51",
        "[import] packet record 1/1 method=1 oldMode=4 points=2",
        "[import] wait ack cmd=0x31 frameBytes=43 timeoutMs=15000",
        "[import] wait ack cmd=0x32 frameBytes=50 timeoutMs=15000",
        "[import] packet record 1/1 done",
    };
    qsizetype at = 0;
    for (const QString& line : said) {
        at = log->texts().indexOf(line, at);
        QVERIFY2(at >= 0, qPrintable(line));
    }
    QVERIFY(log->has("[import] ack ok cmd=0x31 elapsedMs="));
    QVERIFY(!log->texts()
                 .filter(QRegularExpression("ack ok cmd=0x32 elapsedMs=\\d+ status=0x00$"))
                 .isEmpty());
}

void test_data_to_device::points_in_blocks_data()
{
    QTest::addColumn<bool>("tcp");
    QTest::addColumn<int>("points");
    QTest::addColumn<QList<int>>("blocks");
    using blocks = QList<int>;
    QTest::newRow("51") << false << 51 << blocks{51};
    QTest::newRow("52") << false << 52 << blocks{51, 1};
    QTest::newRow("120") << false << 120 << blocks{51, 51, 18};
    QTest::newRow("tcp 120") << true << 120 << blocks{120};
    QTest::newRow("tcp 1000") << true << 1000 << blocks{1000};
    QTest::newRow("tcp 2001") << true << 2001 << blocks{1000, 1000, 1};
}

void test_data_to_device::points_in_blocks()
{
    QFETCH(bool, tcp);
    QFETCH(int, points);
    QFETCH(QList<int>, blocks);
    if (tcp)
        open_socket(accept);
    else
        open_port(accept);
    add("航迹", lines_of(points));
    add("航迹", lines_of(1));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{succeeded});

    const QList<QByteArray> frames = tcp ? android_frames() : serial_frames();
    QCOMPARE(frames.size(), 1 + 1 + blocks.size() + 2);
    QCOMPARE(frames[0], upload_probe);
    for (qsizetype index = 1; index < frames.size(); ++index) {
        QCOMPARE(int{frame::read_u8(frames[index], 3)}, static_cast<int>(index - 1));
        QCOMPARE(frame::crc8(frames[index]), 0); // a frame with its own CRC behind it
    }
    qsizetype first = 0;
    for (qsizetype index = 0; index < blocks.size(); ++index) {
        const QByteArray& frame = frames[2 + index];
        QCOMPARE(command_of(frame), frame::upload_points);
        QCOMPARE(frame.size(), 6 + 5 + 19 * blocks[index] + 1);
        QCOMPARE(int{frame::read_u16(frame, 4)}, 5 + 19 * blocks[index]);
        QCOMPARE(frame::read_u32(frame, 10), 1260000000U + static_cast<quint32>(first));
        first += blocks[index];
    }
    QCOMPARE(first, points);
}

void test_data_to_device::the_sequence_wraps()
{
    open_port(accept);
    for (int index = 0; index < 130; ++index)
        add("航点", lines_of(1));
    run_upload();
    const QList<QByteArray> frames = serial_frames();
    QCOMPARE(frames.size(), 261);
    for (qsizetype index = 1; index < frames.size(); ++index)
        QCOMPARE(int{frame::read_u8(frames[index], 3)}, static_cast<int>((index - 1) % 256));
    QCOMPARE(frame::read_u16(frames[1], 35), 130);
}

/// Nothing that builds items makes one; it is told and no reason to stop.
void test_data_to_device::an_item_of_another_size_is_sent_all_the_same()
{
    open_port(accept);
    data_to_device::UploadItem item;
    item.kind = 0;
    item.old_mode = "5";
    item.points = {{1, 2, 3}};
    QString error;
    QVERIFY(upload->send_packets(port.get(), {item}, 51, error));
    const QList<QByteArray> frames = serial_frames();
    QCOMPARE(frames.size(), 2);
    QCOMPARE(int{frame::read_u16(frames[0], 4)}, 24); // without both times
    const auto lines_logged = log->lines();
    const auto told = std::find_if(lines_logged.begin(), lines_logged.end(), [](const auto& one) {
        return one.text == "[import] item payload length mismatch: 24 expected: 36";
    });
    QVERIFY(told != lines_logged.end());
    QCOMPARE(told->type, QtWarningMsg);
}

void test_data_to_device::rows_that_cannot_be_sent_data()
{
    QTest::addColumn<bool>("packets");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("points");
    QTest::addColumn<QString>("text");
    QTest::newRow("kind") << true << "自制"
                          << "1,2,3"
                          << "第3条数据数据类型不支持";
    QTest::newRow("no points") << true << "面积"
                               << ""
                               << "第3条数据无点位数据";
    QTest::newRow("point") << true << "面积"
                           << "1,2,3\n1,2"
                           << "第3条数据第2个点格式错误";
    QTest::newRow("range") << true << "面积"
                           << "180.0000001,2,3"
                           << "第3条数据第1个点经纬度或高程超限";
    QTest::newRow("kind, Mode text") << false << "自制"
                                     << "1,2,3"
                                     << "第3条数据数据类型不支持";
    // Mode text takes all points as they are.
    QTest::newRow("no points, Mode text") << false << "面积"
                                          << "" << succeeded;
}

void test_data_to_device::rows_that_cannot_be_sent()
{
    QFETCH(bool, packets);
    QFETCH(QString, method);
    QFETCH(QString, points);
    QFETCH(QString, text);
    open_port(packets ? accept : scripted_instrument::script());
    add("面积", lines_of(1));
    add("自制", "", false);
    add(method, points);
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{text});
    if (text == succeeded)
        return;
    QCOMPARE(watcher->boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher->boxes[0].title, "警告");
    // The row before it was not sent either.
    QCOMPARE(serial_frames(), QList<QByteArray>{upload_probe});
}

void test_data_to_device::mode_text_when_the_probe_is_not_answered_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("at_least");
    QTest::addColumn<QString>("error");
    QTest::newRow("silence") << QByteArray() << 800 << "等待设备响应0x2e超时";
    QTest::newRow("refusal") << instrument_frames::reply(0x2E, 2) << 0 << refusal.arg("2e", "2");
    QTest::newRow("a reply to the read probe")
        << instrument_frames::reply(0x00, 0) << 800 << "等待设备响应0x2e超时";
}

void test_data_to_device::mode_text_when_the_probe_is_not_answered()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, at_least);
    QFETCH(QString, error);
    open_port([answer](const request& asked) {
        return asked.bytes == upload_probe ? answer : QByteArray();
    });
    add("面积", "126.65,45.75,141.60\n126.66,45.75,141.60\n");
    add("航点", "1,2,3\n");
    table_list[1].name = "北地"; // goes out as UTF-8
    QElapsedTimer elapsed;
    elapsed.start();
    forget_asked_polls();
    run_upload();
    QVERIFY(elapsed.elapsed() >= at_least);
    // 800 ms in waits of 50 ms.
    QVERIFY(at_least == 0 || asked_polls().contains(50));
    QVERIFY(asked_polls().count(50) <= 17);
    QVERIFY(std::ranges::max(asked_polls()) <= 1000); // of writes
    // Nothing is awaited: what was written counts as delivered.
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    const QString text = "Mode:5,A:0,D:0,n:0,T:20240305070809,N:north\r\n"
                         "126.65,45.75,141.60\r\n126.66,45.75,141.60;"
                         "Mode:1,A:0,D:0,n:0,T:20240305070809,N:北地\r\n1,2,3;";
    QTRY_COMPARE(serial_frames().mid(1).join(), text.toUtf8());
    QVERIFY(log->has("legacy Mode will be sent: \"" + error + '"'));
    QVERIFY(log->has(QStringLiteral("[import] legacy Mode text chars=%1").arg(text.size())));
    QVERIFY(log->has(QStringLiteral("[import] send legacy Mode text chars=%1").arg(text.size())));
    QVERIFY(log->has("[import] legacy Mode payload: Mode:5,A:0"));
}

// Answers.

void test_data_to_device::an_unsupported_item_is_skipped()
{
    int items = 0;
    open_port([&items](const request& asked) {
        const bool first = command_of(asked.bytes) == frame::upload_item && items++ == 0;
        return first ? instrument_frames::reply(0x31, 2) : accept(asked);
    });
    add("面积", lines_of(60));
    add("航点", lines_of(1));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    QByteArray commands;
    QByteArray sequence;
    for (const QByteArray& frame : serial_frames()) {
        commands += frame[1];
        sequence += frame[3];
    }
    QCOMPARE(commands.toHex(), QByteArray("2e313132"));
    QCOMPARE(sequence.toHex(), QByteArray("00000102")); // it counts nevertheless
    QVERIFY(log->has("[import] device rejected record 1/2 as unsupported type, skipped"));
    QVERIFY(!log->has("[import] packet record 1/2 done"));
    QVERIFY(log->has("[import] packet record 2/2 done"));
    QVERIFY(log->has("status=0x02 error=" + refusal.arg("31", "2")));
}

void test_data_to_device::refusals_data()
{
    QTest::addColumn<bool>("tcp");
    QTest::addColumn<int>("command");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("text");
    const QString by_serial = "普通串口上传失败：" + refusal;
    const QString by_android = "安卓设备上传失败：" + refusal;
    QTest::newRow("item") << false << 0x31 << 1 << by_serial.arg("31", "1");
    QTest::newRow("item 255") << false << 0x31 << 255 << by_serial.arg("31", "255");
    QTest::newRow("points") << false << 0x32 << 1 << by_serial.arg("32", "1");
    QTest::newRow("points 2") << false << 0x32 << 2 << by_serial.arg("32", "2");
    QTest::newRow("tcp item") << true << 0x31 << 16 << by_android.arg("31", "16");
    QTest::newRow("tcp points 2") << true << 0x32 << 2 << by_android.arg("32", "2");
}

void test_data_to_device::refusals()
{
    QFETCH(bool, tcp);
    QFETCH(int, command);
    QFETCH(int, status);
    QFETCH(QString, text);
    const auto script = [command, status](const request& asked) {
        const std::uint8_t asked_command = command_of(asked.bytes);
        return instrument_frames::reply(
            asked_command, asked_command == command ? static_cast<std::uint8_t>(status) : 0);
    };
    if (tcp)
        open_socket(script);
    else
        open_port(script);
    add("面积", lines_of(60));
    add("面积", lines_of(60));
    run_upload();
    QCOMPARE(watcher->boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher->boxes[0].title, "上传");
    QCOMPARE(watcher->texts(), QStringList{text});
    // It ends where it stands.
    const QList<QByteArray> frames = tcp ? android_frames() : serial_frames();
    QCOMPARE(int{command_of(frames.last())}, command);
    QCOMPARE(frames.size(), command == 0x31 ? 2 : 3);
}

void test_data_to_device::silence_data()
{
    QTest::addColumn<bool>("tcp");
    QTest::addColumn<int>("command");
    QTest::addColumn<QString>("text");
    QTest::newRow("item") << false << 0x31 << "普通串口上传失败：等待设备响应0x31超时";
    QTest::newRow("tcp points") << true << 0x32 << "安卓设备上传失败：等待设备响应0x32超时";
}

void test_data_to_device::silence()
{
    QFETCH(bool, tcp);
    QFETCH(int, command);
    QFETCH(QString, text);
    const auto script = [command](const request& asked) {
        return command_of(asked.bytes) == command ? QByteArray() : accept(asked);
    };
    if (tcp)
        open_socket(script);
    else
        open_port(script);
    add("面积", lines_of(3));
    QElapsedTimer elapsed;
    elapsed.start();
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{text});
    QVERIFY(elapsed.elapsed() >= 15000);
    QVERIFY(!log->texts().filter(QRegularExpression("ack failed .*status=0xff error=")).isEmpty());
    if (tcp) {
        // Silence is no fault of the connection.
        QCOMPARE(channel->socket->state(), QTcpSocket::ConnectedState);
        QVERIFY(!log->has("socket error"));
    }
}

void test_data_to_device::answers_in_any_form_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("behind");
    const QByteArray other = instrument_frames::reply(0x00, 1);
    QByteArray damaged = other;
    damaged[12] = static_cast<char>(damaged[12] ^ 0xFF);
    QTest::newRow("noise before") << QByteArray("noise\r\n") << QByteArray();
    QTest::newRow("another answer before") << other << QByteArray();
    QTest::newRow("a damaged answer before") << damaged << QByteArray();
    QTest::newRow("a measurement before")
        << frame::build_frame(0x2F, 0, QByteArray(36, '1')) << QByteArray();
    QTest::newRow("noise behind") << QByteArray() << QByteArray("noise Z noise");
}

void test_data_to_device::answers_in_any_form()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, behind);
    const auto script = [&](const request& asked) { return before + accept(asked) + behind; };
    open_port(script);
    open_socket(script);
    add("面积", lines_of(60));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    QCOMPARE(serial_frames().size(), 4);
    QCOMPARE(android_frames().size(), 3);
}

void test_data_to_device::an_answer_that_comes_late()
{
    open_port([](const request& asked) {
        if (command_of(asked.bytes) == frame::upload_item)
            std::this_thread::sleep_for(std::chrono::milliseconds(1200));
        return accept(asked);
    });
    add("面积", lines_of(1));
    QElapsedTimer elapsed;
    elapsed.start();
    run_upload();
    QVERIFY(elapsed.elapsed() >= 1200);
    QCOMPARE(watcher->texts(), QStringList{succeeded});
}

/// Neither one that the port holds nor one that the system does.
void test_data_to_device::a_stale_answer_does_not_count()
{
    open_port(
        [](const request& asked) { return instrument_frames::reply(command_of(asked.bytes), 9); });
    for (const bool in_the_port : {true, false}) {
        QVERIFY(serial->say(instrument_frames::reply(0x32, 0)));
        if (in_the_port) {
            QTRY_COMPARE(port->bytesAvailable(), 13);
        } else {
            pollfd line{port->handle(), POLLIN, 0};
            QCOMPARE(poll(&line, 1, 5000), 1);
        }
        QString error;
        std::uint8_t status = 0;
        const QByteArray frame = frame::build_frame(0x32, 0, QByteArray(24, '\0'));
        QVERIFY(!upload->send_and_wait_ack(port.get(), frame, 0x32, error, status));
        QCOMPARE(int{status}, 9);
    }
}

void test_data_to_device::an_answer_before_the_probe_does_not_count()
{
    open_port({});
    QVERIFY(serial->say(instrument_frames::reply(0x2E, 0)));
    add("面积", lines_of(1));
    run_upload();
    QVERIFY(log->has("legacy Mode will be sent"));
    QTRY_VERIFY(serial_frames().last().startsWith("Mode:5,"));
}

// Both channels.

void test_data_to_device::the_android_channel()
{
    open_socket(accept);
    add("面积", lines_of(3));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    QVERIFY(log->has("pointsPerFrame=1000"));
    upload->channel_out(channel.get());
    run_upload();
    QCOMPARE(watcher->texts().last(), "串口未连接");
}

void test_data_to_device::no_channel_whatever_goes_out()
{
    add("面积", lines_of(1));
    AdbStringChannel other("127.0.0.1", 1, "emulator-5556", "adb", nullptr);
    for (AdbStringChannel* const gone : {&other, static_cast<AdbStringChannel*>(nullptr)}) {
        open_socket(accept);
        QCOMPARE(upload->channel, channel.get());
        upload->channel_out(gone);
        QVERIFY(upload->channel.isNull());
        run_upload();
        QCOMPARE(watcher->texts().last(), "串口未连接");
        QVERIFY(android->requests().isEmpty());
    }
}

/// A wait in which nothing comes makes the socket say so with an error, which must
/// not cost the connection.
void test_data_to_device::a_slow_android_instrument()
{
    open_socket([](const request& asked) {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        return accept(asked);
    });
    add("面积", lines_of(3));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    QCOMPARE(android_frames().size(), 3);
    QVERIFY(!log->has("socket error"));
}

void test_data_to_device::both_channels()
{
    open_port(accept);
    open_socket(accept);
    add("面积", lines_of(120));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{succeeded}); // one box for both
    QCOMPARE(serial_frames().size(), 5);
    QCOMPARE(android_frames().size(), 3);
    QCOMPARE(android_frames()[1], serial_frames()[1]); // the sequence begins anew
}

void test_data_to_device::both_channels_with_different_protocols()
{
    open_port({}); // silent
    open_socket(accept);
    add("面积", "1,2,3\n");
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    QTRY_VERIFY(serial_frames().mid(1).join().startsWith("Mode:5,"));
    QCOMPARE(android_frames().size(), 3);

    // The text of the second does not hinder the first either.
    open_port(accept);
    open_socket({});
    run_upload();
    QCOMPARE(watcher->texts(), (QStringList{succeeded, succeeded}));
    QCOMPARE(serial_frames().size(), 3);
    QTRY_VERIFY(android_frames().mid(1).join().startsWith("Mode:5,"));
}

/// What the first channel has built goes out on the second as it is.
void test_data_to_device::one_list_for_both_channels()
{
    add("面积", "1,2,3\n");
    for (const bool packets : {true, false}) {
        const scripted_instrument::script script = packets ? accept : scripted_instrument::script();
        open_port(script);
        open_socket(script);
        run_upload();
        QCOMPARE(watcher->texts().last(), succeeded);
        QTRY_COMPARE(android_frames().join(), serial_frames().join());
    }
    // A row that cannot be sent is told once, before the second channel is asked.
    table_list[0].method = "自制";
    open_port(accept);
    open_socket(accept);
    run_upload();
    QCOMPARE(watcher->texts().size(), 3);
    QVERIFY(android->requests().isEmpty());
}

void test_data_to_device::a_serial_failure_keeps_from_android()
{
    open_port([](const request& asked) {
        return instrument_frames::reply(command_of(asked.bytes), asked.bytes[1] == '1' ? 3 : 0);
    });
    open_socket(accept);
    add("面积", lines_of(3));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{"普通串口上传失败：" + refusal.arg("31", "3")});
    QVERIFY(android->requests().isEmpty());
}

/// The channel is there when the upload begins and gone when its turn comes.
void test_data_to_device::a_channel_that_has_gone()
{
    open_port(accept);
    open_socket(accept);
    add("面积", lines_of(3));
    connect(port.get(), &QSerialPort::bytesWritten, port.get(), [this] { channel.reset(); });
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{"安卓设备Mode方式上传失败：通道未连接"});
}

// Devices that fail.

void test_data_to_device::devices_that_are_not_there()
{
    QString error;
    std::uint8_t type = 0;
    std::uint8_t status = 0;
    QSerialPort closed;
    for (QIODevice* const device :
         {static_cast<QIODevice*>(nullptr), static_cast<QIODevice*>(&closed)}) {
        error.clear();
        QVERIFY(!upload->write_all(device, "x", error));
        QCOMPARE(error, "通道未连接");
        error.clear();
        QVERIFY(!upload->write_all(device, "", error));
        QCOMPARE(error, "通道未连接");
        error.clear();
        QVERIFY(!upload->send_and_wait_ack(device, "x", 0x31, error, status));
        QCOMPARE(error, "通道未连接");
        QCOMPARE(status, 0xFF);
        QVERIFY(!upload->probe_packet_protocol(device));
        QVERIFY(!upload->wait_ack(device, 0x31, 10, error, type, status));
        QVERIFY(!upload->send_mode_text(device, "x", error));
    }
    open_port({});
    error.clear();
    QVERIFY(upload->write_all(upload->port, "", error));
    QVERIFY(error.isEmpty());
}

/// Nobody reads the other end: the text is more than the line holds.
void test_data_to_device::a_line_that_takes_nothing()
{
    // It outlives this function, in the instrument's thread.
    const auto go = std::make_shared<std::atomic<bool>>(false);
    open_port([go](const request&) {
        while (!*go)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return QByteArray();
    });
    add("面积", lines_of(20000));
    QElapsedTimer elapsed;
    elapsed.start();
    run_upload();
    *go = true;
    QVERIFY(elapsed.elapsed() >= 1700); // 800 ms for the probe and 1000 ms for the block
    QCOMPARE(watcher->boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher->boxes[0].title, "上传");
    QCOMPARE(watcher->texts(), QStringList{"Mode方式上传失败：通道写入超时"});
    QVERIFY(!log->has("legacy Mode payload")); // too long to be logged
}

void test_data_to_device::a_device_that_refuses_bytes()
{
    class deaf_device : public QIODevice
    {
        qint64 readData(char*, qint64) override { return 0; }
        qint64 writeData(const char*, qint64) override { return 0; }
    };
    deaf_device device;
    QVERIFY(device.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    QString error;
    QVERIFY(!upload->write_all(&device, "x", error));
    QCOMPARE(error, "通道写入失败");
    QVERIFY(!upload->probe_packet_protocol(&device));
    QVERIFY(log->has("[import] packet protocol probe write failed: \"通道写入失败\""));
}

void test_data_to_device::the_length_of_a_text_that_is_logged()
{
    open_port({});
    QString error;
    QVERIFY(upload->send_mode_text(upload->port, QString(4097, 'x'), error));
    QVERIFY(log->has("[import] send legacy Mode text chars=4097"));
    QVERIFY(!log->has("legacy Mode payload"));
    QVERIFY(upload->send_mode_text(upload->port, QString(4096, 'x'), error));
    QVERIFY(log->has("[import] legacy Mode payload: " + QString(4096, 'x')));
}

void test_data_to_device::a_cable_pulled_out_data()
{
    QTest::addColumn<int>("command");
    QTest::addColumn<bool>("back_again");
    QTest::addColumn<QString>("text");
    QTest::newRow("item") << 0x31 << false << "普通串口上传失败：通道未连接";
    QTest::newRow("points") << 0x32 << false << "普通串口上传失败：通道未连接";
    QTest::newRow("probe") << 0x2E << false << "Mode方式上传失败：通道未连接";
    // Another takes its place while the box is open, and gets the Mode text.
    QTest::newRow("probe, back again") << 0x2E << true << succeeded;
}

/// The loss is told by a box of serial_thread, in the middle of the upload's wait.
void test_data_to_device::a_cable_pulled_out()
{
    QFETCH(int, command);
    QFETCH(bool, back_again);
    QFETCH(QString, text);
    // Let go by its own thread, hence from outside.
    std::atomic<bool> pull = false;
    serial = std::make_unique<scripted_instrument>([&pull, command](const request& asked) {
        if (command_of(asked.bytes) == command) {
            pull = true;
            return QByteArray();
        }
        return accept(asked);
    });
    serial_thread reader;
    QList<serial_thread::listed_port> ports{{serial->path(), "pts", "USB"}};
    reader.available_ports = [&ports] { return ports; };
    upload->port = reader.port;
    QTRY_VERIFY_WITH_TIMEOUT(reader.port_connected, 10000);
    QTRY_COMPARE(watcher->texts(), QStringList{"设备已连接"});
    watcher->boxes.clear();
    ports.clear();
    std::unique_ptr<scripted_instrument> next;
    if (back_again) {
        reader.show_box = [&](QMessageBox::Icon, const QString&, const QString&) {
            if (next != nullptr)
                return;
            next = std::make_unique<scripted_instrument>();
            ports = {{next->path(), "pts", "USB"}};
            QVERIFY(QTest::qWaitFor([&reader] { return reader.port_connected; }));
        };
    }
    std::thread hand([&] {
        while (!pull)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(120));
        serial->vanish();
    });
    add("面积", lines_of(3));
    run_upload();
    hand.join();
    if (back_again)
        QCOMPARE(watcher->texts(), QStringList{text});
    else
        QCOMPARE(watcher->texts(), (QStringList{"设备连接有误", text}));
    upload->port = port.get();
}

void test_data_to_device::a_socket_that_closes()
{
    std::atomic<bool> pull = false;
    open_socket([&pull](const request& asked) {
        if (command_of(asked.bytes) == frame::upload_item) {
            pull = true;
            return QByteArray();
        }
        return accept(asked);
    });
    // As the owner of the channel does.
    connect(channel.get(), &AdbStringChannel::channelClosed, this, [this] {
        channel.release()->deleteLater();
        upload->channel_out(nullptr);
    });
    std::thread hand([&] {
        while (!pull)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        android->vanish();
    });
    add("面积", lines_of(3));
    QElapsedTimer elapsed;
    elapsed.start();
    run_upload();
    hand.join();
    QCOMPARE(watcher->texts(), QStringList{"安卓设备上传失败：通道未连接"});
    QVERIFY(elapsed.elapsed() < 15000);
    run_upload();
    QCOMPARE(watcher->texts().last(), "串口未连接");
}

// In the middle of a read.

/// The read takes the upload's answers for its own and fails; the upload falls back
/// on Mode text. The button is free again and the lists are in step.
void test_data_to_device::an_upload_during_a_binary_read()
{
    std::atomic<int> requests = 0;
    serial = std::make_unique<scripted_instrument>([&requests](const request& asked) {
        if (!asked.bytes.startsWith('Z'))
            return QByteArray();
        const std::uint8_t command = command_of(asked.bytes);
        if (command == frame::export_request)
            return ++requests == 1 ? frame::build_frame(0x2F, 0, instrument_frames::head{}.data())
                                   : QByteArray();
        return instrument_frames::reply(command, 0);
    });
    serial_thread reader;
    reader.available_ports = [] { return QList<serial_thread::listed_port>(); };
    reader.port->setPortName(serial->path());
    QVERIFY(reader.port->open(QIODevice::ReadWrite));
    upload->port = reader.port;
    QSignalSpy button(&reader, &serial_thread::button_control);
    QTimer::singleShot(0, &reader, [&reader] { reader.recv_cmd_from_key(1, {}, {}, {}, {}); });
    QTRY_COMPARE_WITH_TIMEOUT(reader.table_list.size(), 1, 10000); // its points are awaited

    add("面积", lines_of(3));
    run_upload();
    QCOMPARE(watcher->texts(), (QStringList{"数据读取失败，请重新读取", succeeded}));
    QVERIFY(serial_frames().contains(upload_probe));
    QTRY_VERIFY(serial_frames().last().startsWith("Mode:5,"));
    QCOMPARE(button.last()[0].toBool(), true);
    QVERIFY(!reader.export_active);
    QVERIFY(!reader.export_timer->isActive());
    // Nothing was delivered, and all four lists hold that.
    QVERIFY(reader.data_msg.isEmpty() && reader.data_msg_altitude.isEmpty() &&
            reader.point_msg_all.isEmpty());
    // The next upload is undisturbed.
    run_upload();
    QCOMPARE(watcher->texts().last(), succeeded);
    QCOMPARE(command_of(serial_frames().last()), frame::upload_points);
    upload->port = port.get();
}

void test_data_to_device::an_upload_during_a_text_read()
{
    serial = std::make_unique<scripted_instrument>([](const request& asked) {
        return asked.bytes.startsWith('~')
                   ? QByteArray("n1,m1334,l1235;t202403050708,N0002,                "
                                "1d0'0.0\",2d0'0.0\",3;!")
                   : QByteArray();
    });
    serial_thread reader;
    reader.available_ports = [] { return QList<serial_thread::listed_port>(); };
    reader.port->setPortName(serial->path());
    QVERIFY(reader.port->open(QIODevice::ReadWrite));
    upload->port = reader.port;
    QSignalSpy button(&reader, &serial_thread::button_control);
    add("面积", lines_of(3));
    // In the wait for the second record.
    connect(&reader, &serial_thread::read_data_set_progressbar, this, [&](int percent) {
        if (percent != 50)
            return;
        QTimer::singleShot(10, this,
                           [&] { upload->import_data_to_device(&model, table_list, lines); });
    });
    bool returned = false;
    QTimer::singleShot(0, &reader, [&] {
        reader.recv_cmd_from_key(1, {}, {}, {}, {});
        returned = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(returned, 20000);
    QCOMPARE(watcher->texts(), (QStringList{succeeded, "数据读取完成"}));
    QTRY_VERIFY(serial_frames().last().startsWith("Mode:5,"));
    QCOMPARE(button.last()[0].toBool(), true);
    QVERIFY(reader.table_list.isEmpty()); // one record of two
    upload->port = port.get();
}

/// Over TCP the read looks at what has come a moment later, and the upload is first:
/// it succeeds, and the read stays open, for that channel knows no time-out.
void test_data_to_device::an_upload_during_an_android_read()
{
    open_socket([](const request& asked) {
        const std::uint8_t command = command_of(asked.bytes);
        return command == frame::export_request ? QByteArray()
                                                : instrument_frames::reply(command, 0);
    });
    serial_thread reader;
    reader.available_ports = [] { return QList<serial_thread::listed_port>(); };
    reader.channel = channel.get();
    reader.android_connected = 1;
    QSignalSpy button(&reader, &serial_thread::button_control);
    QTimer::singleShot(0, &reader, [&reader] { reader.recv_cmd_from_key(1, {}, {}, {}, {}); });
    QTRY_COMPARE_WITH_TIMEOUT(android_frames().size(), 2, 10000); // probe and request

    add("面积", lines_of(3));
    run_upload();
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    QTest::qWait(300);
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    QCOMPARE(button.last()[0].toBool(), false);
    QVERIFY(reader.table_list.isEmpty());
    reader.channel = nullptr;
}

/// The window stands still: what is asked for meanwhile comes after the upload.
void test_data_to_device::a_read_during_an_upload()
{
    serial_thread reader;
    serial = std::make_unique<scripted_instrument>([&reader](const request& asked) {
        if (!asked.bytes.startsWith('Z'))
            return QByteArray();
        const std::uint8_t command = command_of(asked.bytes);
        if (command == frame::upload_item) {
            QMetaObject::invokeMethod(
                &reader, [&reader] { reader.recv_cmd_from_key(1, {}, {}, {}, {}); },
                Qt::QueuedConnection);
        }
        return instrument_frames::reply(command, 0); // to the export request: nothing stored
    });
    reader.available_ports = [] { return QList<serial_thread::listed_port>(); };
    reader.port->setPortName(serial->path());
    QVERIFY(reader.port->open(QIODevice::ReadWrite));
    upload->port = reader.port;
    add("面积", lines_of(60));
    run_upload();
    QTRY_COMPARE_WITH_TIMEOUT(watcher->texts(), (QStringList{succeeded, "数据读取成功"}), 10000);
    QByteArray commands;
    for (const QByteArray& frame : serial_frames())
        commands += frame.startsWith('Z') ? frame[1] : frame[0];
    QCOMPARE(commands.toHex(), QByteArray("2e313232"    // the upload, whole
                                          "7e7e002d")); // and then the read
    upload->port = port.get();
}

/// The one way in for a read: a box of someone else's in the middle of the upload's
/// wait. The read takes its turn, and the upload goes on where it was.
void test_data_to_device::a_read_that_a_box_lets_in()
{
    std::atomic<bool> pull = false;
    serial = std::make_unique<scripted_instrument>([&pull](const request&) {
        pull = true; // by the upload's probe
        return QByteArray();
    });
    scripted_instrument next([](const request& asked) {
        return asked.bytes.startsWith('Z') && command_of(asked.bytes) != frame::upload_probe
                   ? instrument_frames::reply(command_of(asked.bytes), 0)
                   : QByteArray();
    });
    serial_thread reader;
    QList<serial_thread::listed_port> ports{{serial->path(), "pts", "USB"}};
    reader.available_ports = [&ports] { return ports; };
    upload->port = reader.port;
    QTRY_VERIFY_WITH_TIMEOUT(reader.port_connected, 10000);
    QTRY_COMPARE(watcher->texts(), QStringList{"设备已连接"});
    watcher->boxes.clear();
    ports = {{next.path(), "pts", "USB"}};
    QSignalSpy button(&reader, &serial_thread::button_control);
    QStringList said;
    reader.show_box = [&](QMessageBox::Icon, const QString&, const QString& text) {
        said += text;
        if (said.size() > 1)
            return;
        QVERIFY(QTest::qWaitFor([&reader] { return reader.port_connected; }));
        reader.recv_cmd_from_key(1, {}, {}, {}, {});
    };
    std::thread hand([&] {
        while (!pull)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(120));
        serial->vanish();
    });
    add("面积", lines_of(3));
    run_upload();
    hand.join();
    QTRY_COMPARE(said, (QStringList{"设备连接有误", "设备已连接", "数据读取成功"}));
    QCOMPARE(button.last()[0].toBool(), true);
    QVERIFY(!reader.export_active);
    // No answer to the probe: the Mode text goes to whatever is connected now.
    QCOMPARE(watcher->texts(), QStringList{succeeded});
    QTRY_VERIFY(next.requests().constLast().bytes.startsWith("Mode:5,"));
    upload->port = port.get();
}

QTEST_MAIN(test_data_to_device)
#include "test_data_to_device.moc"
