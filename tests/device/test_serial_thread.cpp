#include "device/adb_string_channel.h"
#include "device/serial_thread.h"
#include "instrument_frames.h"
#include "scripted_instrument.h"
#include "support/asked_polls.h"
#include "support/asked_waits.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"

#include <QApplication>
#include <QMetaMethod>
#include <QPointer>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>

#include <sys/ioctl.h>
#include <termios.h>

using instrument_frames::head;
using instrument_frames::points;
using instrument_frames::reply;
using request = scripted_instrument::request;

namespace {

const QByteArray text_command = "~\r\n";
const QByteArray probe = QByteArray::fromHex("5A00FD000004FFFFFFFFE1");
/// The export request with the token of instrument_frames.
const QByteArray export_request = QByteArray::fromHex("5A2DFD000004010203048A");

/// A short area record as an old instrument sends it.
const QByteArray text_record = "n0001,m1334,l1234;t202403050708,N0001,"
                               "              "
                               "104d3'12.5\",30d30'0.0\",123;!";

/// An instrument of the frame protocol that answers the probe with `answer` and
/// each export request with the next of `frames`.
scripted_instrument::script binary_script(QList<QByteArray> frames,
                                          QByteArray answer = reply(0x00, 0))
{
    return [frames, answer](const request& asked) mutable -> QByteArray {
        if (asked.bytes == probe)
            return answer;
        if (asked.bytes == export_request && !frames.isEmpty())
            return frames.takeFirst();
        return {};
    };
}

QList<QByteArray> one_measurement()
{
    return {head{}.frame(), points({{}, {}}), reply(0x2D, 0)};
}

/// Pieces of good and damaged frames, of noise and of all that looks like either.
QByteArray random_bytes(QRandomGenerator& random)
{
    const auto below = [&random](int limit) { return static_cast<int>(random.bounded(limit)); };
    QByteArray bytes;
    switch (below(6)) {
    case 0: bytes = head{.points = static_cast<quint32>(below(3))}.frame(); break;
    case 1: bytes = points({{}}); break;
    case 2: bytes = "Zn0001,m1!~\r\n"; break;
    case 3: bytes = QByteArray::fromHex("5A300700049F"); break;
    default:
        bytes.resize(below(40));
        for (char& byte : bytes)
            byte = static_cast<char>(below(256));
        return bytes;
    }
    if (below(2) == 0)
        bytes[below(static_cast<int>(bytes.size()))] = static_cast<char>(below(256));
    return below(3) == 0 ? bytes.left(below(static_cast<int>(bytes.size()))) : bytes;
}

QStringList of_kind(const QStringList& events, const QString& kind)
{
    return events.filter(QRegularExpression("^" + kind));
}

/// How many slots hear of bytes that `device` has received.
int listeners(const QIODevice& device)
{
    struct opened : QIODevice
    {
        using QIODevice::receivers;
    };
    return (device.*&opened::receivers)(SIGNAL(readyRead()));
}

/// What the next calls of tcflush fail with, 0 for none, and what the last was to drop.
std::atomic<int> flush_error = 0;
std::atomic<int> flushed = -1;

const QString no_answer = "box 2 警告 数据未读取成功，请再次点击";
const QString read_failed = "box 2 数据读取 数据读取失败，请重新读取";
const QString read_succeeded = "box 1 数据读取 数据读取成功";

} // namespace

/// Stands before the C library's, for the errors that no pseudo-terminal brings forth.
extern "C" int tcflush(int descriptor, int queue) noexcept
{
    flushed = queue;
    if (flush_error == 0)
        return ioctl(descriptor, TCFLSH, queue);
    errno = flush_error;
    return -1;
}

/// The serial port and both ways of reading, against a pseudo-terminal and a
/// socket with a scripted instrument at the other end.
class test_serial_thread : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void names_stand_in_their_order();
    void starts_with_everything_at_rest();
    void detection_begins_after_two_seconds();
    void a_usb_port_is_opened();
    void other_descriptions_are_never_opened_data();
    void other_descriptions_are_never_opened();
    void a_port_that_fails_gives_way_to_the_next();
    void the_first_of_two_ports_is_opened();
    void the_scan_sets_the_rate_and_leaves_the_flow_control();
    void an_open_port_is_kept();
    void a_port_that_closes_quietly_is_noticed_without_a_box();
    void a_port_that_vanishes_is_noticed_with_a_box();
    void serial_errors_data();
    void serial_errors();
    void closing_a_closed_port_does_nothing();
    void baud_toggles_data();
    void baud_toggles();

    void received_bytes_are_logged();
    void frames_are_sent_through_their_text();
    void frames_for_the_socket_are_cut();
    void commands_replace_the_lists();
    void without_a_channel();
    void a_port_open_for_writing_only();
    void text_at_the_first_try();
    void line_end_before_the_first_record();
    void a_line_end_alone_is_no_answer();
    void text_at_the_other_rate();
    void first_answer_that_is_no_record();
    void second_answer_counts_whatever_it_is();
    void silence();
    void bad_probe_replies_data();
    void bad_probe_replies();
    void good_probe_replies_data();
    void good_probe_replies();
    void a_probe_begins_with_everything_at_rest();
    void device_type_and_sequence_are_not_read();
    void an_answered_probe_waits_no_longer();
    void an_export_to_its_end();
    void an_export_in_pieces();
    void a_second_read_is_like_the_first();
    void frames_that_end_an_export_data();
    void frames_that_end_an_export();
    void a_damaged_frame_is_searched_through();
    void one_retry();
    void a_good_frame_brings_the_retry_back();
    void timeouts_in_their_own_time();
    void a_timeout_without_an_export();
    void port_gone_during_an_export();
    void port_gone_during_the_text_wait();
    void what_was_delivered_stays();
    void a_babbling_instrument_fills_no_memory();
    void an_idle_port_fills_no_memory();
    void a_port_that_vanishes_behind_a_full_buffer();
    void a_text_download_without_end();
    void a_text_download_is_held_up_by_a_box();
    void quitting_in_the_middle_of_a_read();
    void too_few_text_records();
    void an_error_of_the_port_is_logged_before_a_read();
    void states_of_the_port_before_a_read_data();
    void states_of_the_port_before_a_read();
    void a_write_that_takes_too_long();
    void the_log_of_a_timeout_is_short();
    void random_bytes_during_an_export();

    void android_read_to_its_end();
    void android_takes_any_answer_with_a_header_data();
    void android_takes_any_answer_with_a_header();
    void android_probe_waits_its_whole_time();
    void android_bytes_are_read_after_a_pause();
    void android_silence_leaves_the_read_open();
    void a_read_anew_listens_once();
    void android_unexpected_frames_data();
    void android_unexpected_frames();
    void android_channel_lost_during_a_read();
    void android_device_detached_during_the_wait();
    void android_device_detached();
    void android_follows_a_text_download();
    void android_babble_fills_no_memory();
    void android_cable_pulled_while_the_end_box_is_open();
    void android_channel_lost_before_its_bytes_are_read();
    void android_does_not_follow_a_binary_read_data();
    void android_does_not_follow_a_binary_read();
    void android_socket_unconnected_at_a_request();
    void android_random_bytes_during_an_export();
    void android_bytes_behind_the_end_data();
    void android_bytes_behind_the_end();

private:
    void start(scripted_instrument::script script = {});
    void start_android(std::function<QByteArray(const QByteArray&)> script);
    /// Runs command 1 from the event loop, as the window does, until it is over.
    void read();
    [[nodiscard]] serial_thread::listed_port listed(const QString& description) const;

    std::unique_ptr<scripted_instrument> instrument;
    std::unique_ptr<serial_thread> reader;
    std::unique_ptr<box_watcher> watcher;
    std::unique_ptr<log_capture> log;
    std::unique_ptr<QTcpServer> server;
    QPointer<QTcpSocket> android; ///< the instrument's end
    QList<QByteArray> android_requests;
    QList<serial_thread::listed_port> ports;
    QStringList events; ///< signals and boxes in their order
};

void test_serial_thread::initTestCase()
{
    qputenv("PATH", ""); // no adb in this test
}

void test_serial_thread::init()
{
    ports.clear();
    flush_error = 0;
    android_requests.clear();
    log = std::make_unique<log_capture>();
    reader = std::make_unique<serial_thread>();
    reader->available_ports = [this] { return ports; };
    const auto note = [this](const QString& name, int value) {
        events += QStringLiteral("%1 %2").arg(name).arg(value);
    };
    connect(reader.get(), &serial_thread::button_control, this,
            [note](bool on) { note("button", on); });
    connect(reader.get(), &serial_thread::read_data_set_progressbar, this,
            [note](int percent) { note("progress", percent); });
    connect(reader.get(), &serial_thread::LED_control, this, [note](bool on) { note("LED", on); });
    connect(reader.get(), &serial_thread::LED_2_control, this,
            [note](bool on) { note("LED2", on); });
    connect(reader.get(), &serial_thread::adbchannel_out, this,
            [note](AdbStringChannel* gone) { note("out", gone != nullptr); });
    connect(reader.get(), &serial_thread::read_data_finished, this,
            [note](const QList<measuringData>& list) {
                note("finished", static_cast<int>(list.size()));
            });
    watcher = std::make_unique<box_watcher>();
    watcher->look = [this](QMessageBox* box) {
        events +=
            QStringLiteral("box %1 %2 %3").arg(box->icon()).arg(box->windowTitle(), box->text());
    };
    events.clear();
}

void test_serial_thread::cleanup()
{
    reader.reset();
    server.reset();
    instrument.reset();
    watcher.reset();
    log.reset();
}

serial_thread::listed_port test_serial_thread::listed(const QString& description) const
{
    return {instrument->path(), "pts", description};
}

void test_serial_thread::start(scripted_instrument::script script)
{
    instrument = std::make_unique<scripted_instrument>(std::move(script));
    ports = {listed("USB Serial")};
    reader->detect_ports();
    QVERIFY(reader->port->isOpen());
    QCOMPARE(instrument->baud(), 115200);
    events.clear();
    log->clear();
}

void test_serial_thread::start_android(std::function<QByteArray(const QByteArray&)> script)
{
    server = std::make_unique<QTcpServer>();
    QVERIFY(server->listen(QHostAddress::LocalHost));
    connect(server.get(), &QTcpServer::newConnection, this, [this, script] {
        android = server->nextPendingConnection();
        connect(android, &QTcpSocket::readyRead, this, [this, script] {
            while (android->bytesAvailable() >= 11) {
                android_requests += android->read(11);
                android->write(script(android_requests.last()));
            }
        });
    });
    reader->channel = new AdbStringChannel("127.0.0.1", server->serverPort(), "emulator-5554",
                                           "adb", reader.get());
    auto* const socket = new QTcpSocket(reader->channel);
    reader->channel->socket = socket;
    connect(socket, &QTcpSocket::errorOccurred, reader->channel, &AdbStringChannel::onSocketError);
    socket->connectToHost("127.0.0.1", server->serverPort());
    QVERIFY(socket->waitForConnected());
    QTRY_VERIFY(android != nullptr);
    reader->android_connected = 1;
    events.clear();
    log->clear();
}

void test_serial_thread::read()
{
    bool returned = false;
    QTimer::singleShot(0, this, [this, &returned] {
        reader->recv_cmd_from_key(1, {}, {}, {}, {});
        returned = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(returned, 10000);
}

void test_serial_thread::names_stand_in_their_order()
{
    QStringList signals_declared;
    QStringList slots_declared;
    const QMetaObject& meta = serial_thread::staticMetaObject;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at) {
        (meta.method(at).methodType() == QMetaMethod::Signal ? signals_declared : slots_declared) +=
            meta.method(at).name();
    }
    // Nobody emits onStringSend.
    QCOMPARE(signals_declared, (QStringList{"read_data_finished", "read_data_set_progressbar",
                                            "LED_control", "LED_2_control", "button_control",
                                            "onStringSend", "adbchannel_in", "adbchannel_out"}));
    QCOMPARE(slots_declared,
             (QStringList{"new_recive_data_from_device", "new_recive_data_from_android_device",
                          "recv_cmd_from_key", "onDeviceAttached", "onDeviceDetached",
                          "serial_export_timeout"}));
}

void test_serial_thread::starts_with_everything_at_rest()
{
    QVERIFY(reader->port->parent() == nullptr);
    QVERIFY(!reader->port->isOpen());
    QVERIFY(!reader->port_connected);
    QCOMPARE(reader->android_connected, 0);
    QVERIFY(reader->channel == nullptr);
    QVERIFY(reader->export_timer->isSingleShot());
    QVERIFY(!reader->detect_timer->isActive());
    QVERIFY(!reader->adb_manager.poll_timer.isActive());

    // The thread only says who it was.
    reader->start();
    QVERIFY(reader->QThread::wait(5000));
    QVERIFY(log->has("serial thread ID:"));
    QCOMPARE(reader->thread(), QThread::currentThread());
}

void test_serial_thread::detection_begins_after_two_seconds()
{
    asked_single_shots().clear();
    const serial_thread another;
    QCOMPARE(asked_single_shots(), QList<int>{2000});

    instrument = std::make_unique<scripted_instrument>();
    ports = {listed("USB Serial")};
    QElapsedTimer elapsed;
    elapsed.start();
    // Nobody hears the port's errors until then.
    emit reader->port->errorOccurred(QSerialPort::WriteError);
    QTRY_VERIFY(log->texts().contains("执行串口检测"));
    QVERIFY(elapsed.elapsed() >= 1500);
    const QString error = "An unexpected serial port error occurred:  WriteError";
    QVERIFY(!log->texts().contains(error));
    emit reader->port->errorOccurred(QSerialPort::WriteError);
    QVERIFY(log->texts().contains(error));
    QVERIFY(!reader->port_connected);
    QCOMPARE(reader->detect_timer->interval(), 1000);
    QVERIFY(!reader->detect_timer->isSingleShot());
    QTRY_VERIFY(reader->port_connected);
    QVERIFY(elapsed.elapsed() >= 2500);
}

void test_serial_thread::a_usb_port_is_opened()
{
    instrument = std::make_unique<scripted_instrument>();
    ports = {listed("USB Serial")};
    reader->detect_ports();
    QVERIFY(reader->port_connected);
    QVERIFY(reader->port->isOpen());
    QCOMPARE(reader->port->openMode(), QIODevice::ReadWrite);
    QCOMPARE(reader->port->dataBits(), QSerialPort::Data8);
    QCOMPARE(reader->port->stopBits(), QSerialPort::OneStop);
    QCOMPARE(reader->port->parity(), QSerialPort::NoParity);
    QCOMPARE(instrument->baud(), 115200);
    QCOMPARE(events, (QStringList{"LED 1", "box 1 串口 设备已连接"}));
    QVERIFY(log->texts().contains("Connected to port:  \"pts\""));
}

void test_serial_thread::other_descriptions_are_never_opened_data()
{
    QTest::addColumn<QString>("description");
    QTest::newRow("bluetooth") << "Standard Serial over Bluetooth link";
    QTest::newRow("lower case") << "usb Serial";
    QTest::newRow("blank before") << " USB Serial";
    QTest::newRow("further on") << "Prolific USB-to-Serial";
    QTest::newRow("two letters") << "US";
    QTest::newRow("none") << "";
}

void test_serial_thread::other_descriptions_are_never_opened()
{
    QFETCH(QString, description);
    instrument = std::make_unique<scripted_instrument>();
    ports = {listed(description)};
    reader->detect_ports();
    QVERIFY(!reader->port->isOpen());
    QVERIFY(events.isEmpty());
    QVERIFY(!log->has("open port"));
    QVERIFY(reader->port->portName().isEmpty());
}

void test_serial_thread::a_port_that_fails_gives_way_to_the_next()
{
    instrument = std::make_unique<scripted_instrument>();
    ports = {{"/dev/no_such_port", "no_such_port", "USB"}, listed("USB")};
    reader->detect_ports();
    QVERIFY(log->texts().contains("Failed to open port:  \"no_such_port\""));
    QVERIFY(reader->port_connected);
    QCOMPARE(events, (QStringList{"LED 1", "box 1 串口 设备已连接"}));
}

void test_serial_thread::the_first_of_two_ports_is_opened()
{
    instrument = std::make_unique<scripted_instrument>();
    const scripted_instrument second;
    ports = {listed("USB Serial"), {second.path(), "second", "USB Serial"}};
    reader->detect_ports();
    QVERIFY(instrument->path().endsWith(reader->port->portName()));
    QCOMPARE(events, (QStringList{"LED 1", "box 1 串口 设备已连接"}));
    QVERIFY(!log->has("second"));
}

void test_serial_thread::the_scan_sets_the_rate_and_leaves_the_flow_control()
{
    start();
    reader->toggle_baud(); // as a read leaves it
    QCOMPARE(instrument->baud(), 9600);
    QVERIFY(reader->port->setFlowControl(QSerialPort::SoftwareControl));
    reader->port->close();
    reader->detect_ports(); // notices that
    QVERIFY(!reader->port_connected);
    reader->detect_ports();
    QVERIFY(reader->port_connected);
    QCOMPARE(instrument->baud(), 115200);
    QCOMPARE(reader->port->flowControl(), QSerialPort::SoftwareControl);
}

void test_serial_thread::an_open_port_is_kept()
{
    start();
    const scripted_instrument other;
    ports.prepend({other.path(), "other", "USB"});
    reader->detect_ports();
    QVERIFY(events.isEmpty());
    QVERIFY(instrument->path().endsWith(reader->port->portName()));
}

void test_serial_thread::a_port_that_closes_quietly_is_noticed_without_a_box()
{
    start();
    ports.clear();
    reader->port->close();
    reader->detect_ports();
    QVERIFY(!reader->port_connected);
    QVERIFY(events.isEmpty());
    QCOMPARE(log->texts(), QStringList{"Disconnected from previously connected port."});
    // And found again.
    ports = {listed("USB Serial")};
    reader->detect_ports();
    QVERIFY(reader->port_connected);
}

void test_serial_thread::a_port_that_vanishes_is_noticed_with_a_box()
{
    start();
    ports.clear();
    QTRY_VERIFY(log->texts().contains("执行串口检测"));
    reader->text_buffer = "n0";
    instrument->vanish();
    QTRY_COMPARE(events, (QStringList{"LED 0", "box 1 串口 设备连接有误"}));
    QTRY_VERIFY(log->texts().contains("Serial port closed."));
    QVERIFY(!reader->port->isOpen());
    QVERIFY(!reader->port_connected);
    QVERIFY(reader->text_buffer.isEmpty());
    // Another takes its place at the next look.
    instrument = std::make_unique<scripted_instrument>();
    ports = {listed("USB Serial")};
    QTRY_VERIFY(reader->port_connected);
}

void test_serial_thread::serial_errors_data()
{
    QTest::addColumn<QSerialPort::SerialPortError>("error");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<bool>("closes");

    const auto other = [](const char* name) {
        return QStringList{QStringLiteral("An unexpected serial port error occurred:  ") + name};
    };
    QTest::newRow("none") << QSerialPort::NoError << QStringList() << false;
    QTest::newRow("time-out") << QSerialPort::TimeoutError << QStringList() << false;
    QTest::newRow("permission") << QSerialPort::PermissionError
                                << QStringList{"PermissionError", "Serial port closed."} << true;
    QTest::newRow("resource") << QSerialPort::ResourceError
                              << QStringList{"ResourceError", "Serial port closed."} << true;
    QTest::newRow("not found") << QSerialPort::DeviceNotFoundError << other("DeviceNotFoundError")
                               << false;
    QTest::newRow("read") << QSerialPort::ReadError << other("ReadError") << false;
    QTest::newRow("open") << QSerialPort::OpenError << other("OpenError") << false;
    QTest::newRow("not open") << QSerialPort::NotOpenError << other("NotOpenError") << false;
    QTest::newRow("unsupported") << QSerialPort::UnsupportedOperationError
                                 << other("UnsupportedOperationError") << false;
    QTest::newRow("write") << QSerialPort::WriteError << other("WriteError") << false;
    QTest::newRow("unknown") << QSerialPort::UnknownError << other("UnknownError") << false;
}

void test_serial_thread::serial_errors()
{
    QFETCH(QSerialPort::SerialPortError, error);
    QFETCH(QStringList, lines);
    QFETCH(bool, closes);

    start();
    reader->handle_serial_error(error);
    QStringList said = log->texts();
    said.removeAll("This plugin does not support propagateSizeHints()"); // of the platform
    QCOMPARE(said, lines);
    QCOMPARE(reader->port->isOpen(), !closes);
    QCOMPARE(reader->port_connected, !closes);
    QCOMPARE(events, closes ? (QStringList{"LED 0", "box 1 串口 设备连接有误"}) : QStringList());
}

void test_serial_thread::closing_a_closed_port_does_nothing()
{
    reader->text_buffer = "n0";
    reader->close_serial();
    QVERIFY(events.isEmpty());
    QCOMPARE(reader->text_buffer, "n0");
}

void test_serial_thread::baud_toggles_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::addColumn<QString>("line");
    QTest::newRow("115200") << 115200 << 9600 << "切换为Baud9600";
    QTest::newRow("9600") << 9600 << 115200 << "切换为Baud115200";
    QTest::newRow("another") << 57600 << 57600 << "Unexpected current baud rate. Skipping toggle.";
}

void test_serial_thread::baud_toggles()
{
    QFETCH(int, before);
    QFETCH(int, after);
    QFETCH(QString, line);

    start();
    QVERIFY(reader->port->setBaudRate(before));
    reader->toggle_baud();
    QCOMPARE(reader->port->baudRate(), after);
    QCOMPARE(log->texts(), QStringList{line});
    if (after != 57600)
        QCOMPARE(instrument->baud(), after);
}

void test_serial_thread::received_bytes_are_logged()
{
    log->clear();
    reader->log_rx(QByteArray::fromHex("5a00fd0aFF"));
    reader->log_rx("~");
    reader->log_rx({});
    QCOMPARE(log->texts(),
             (QStringList{"SERIAL_RX LEN=5 HEX=5A 00 FD 0A FF", "SERIAL_RX LEN=1 HEX=7E"}));
    QCOMPARE(log->lines().first().type, QtDebugMsg);
}

void test_serial_thread::frames_are_sent_through_their_text()
{
    start();
    reader->send_hex("7E 0D 0A", false, {});
    QTRY_COMPARE(instrument->requests(), (QList<request>{{text_command, 115200}}));
    QVERIFY(log->texts().contains("发送数据到 \"" + reader->port->portName() +
                                  "\" 长度: 3 内容: \"7E 0D 0A\""));

    log->clear();
    reader->send_hex(" ", false, probe);
    reader->send_hex("", false, probe);
    QVERIFY(log->texts().isEmpty());
    reader->send_hex("~~", false, probe);
    QCOMPARE(log->texts(), QStringList{"[Worker] 无效的十六进制字符串: \"~~\""});
    QCOMPARE(log->lines().first().type, QtWarningMsg);

    log->clear();
    reader->send_hex("7E 0D 0A", true, text_command); // no channel
    reader->port->close();
    reader->send_hex("7E 0D 0A", false, text_command);
    QVERIFY(log->texts().isEmpty());
    QCOMPARE(instrument->requests().size(), 1);
}

/// What is written to the socket are the first bytes of the frame and not its text.
void test_serial_thread::frames_for_the_socket_are_cut()
{
    start_android([](const QByteArray&) { return QByteArray(); });
    reader->send_hex("7E 0D", true, probe + "tail");
    QVERIFY(log->has("长度: 2 内容: \"7E 0D\""));
    reader->send_hex("7E 0D", true, export_request);
    QTRY_COMPARE(android_requests, (QList<QByteArray>{probe, export_request}));
    // A channel that does not open takes nothing.
    reader->channel->close();
    log->clear();
    reader->send_hex("7E 0D", true, probe);
    QVERIFY(!log->has("发送数据到"));
}

void test_serial_thread::commands_replace_the_lists()
{
    start();
    for (const int command : {0, 2, -1}) {
        reader->text_buffer = "n0";
        reader->recv_cmd_from_key(command, {measuringData{}}, {"1,2"}, {"1,2,3\n"},
                                  {{point_msg{}}});
        QCOMPARE(reader->table_list.size(), 1);
        QCOMPARE(reader->data_msg, QStringList{"1,2"});
        QCOMPARE(reader->data_msg_altitude, QStringList{"1,2,3\n"});
        QCOMPARE(reader->point_msg_all.size(), 1);
        QVERIFY(reader->text_buffer.isEmpty());
    }
    reader->recv_cmd_from_key(0, {}, {}, {}, {});
    QVERIFY(reader->table_list.isEmpty());
    QVERIFY(events.isEmpty());
    QVERIFY(instrument->requests().isEmpty());
}

void test_serial_thread::without_a_channel()
{
    read();
    QCOMPARE(events, QStringList{"box 2 警告 串口未连接"});
}

void test_serial_thread::a_port_open_for_writing_only()
{
    instrument = std::make_unique<scripted_instrument>();
    reader->port->setPortName(instrument->path());
    QVERIFY(reader->port->open(QIODevice::WriteOnly));
    read();
    QCOMPARE(events, QStringList{"box 2 警告 串口未连接"});
    QVERIFY(instrument->requests().isEmpty());
}

void test_serial_thread::text_at_the_first_try()
{
    start([](const request&) { return text_record; });
    read();
    QCOMPARE(events, (QStringList{"button 0", "progress 0", "progress 100", "finished 1",
                                  "progress 100", "box 1 数据读取 数据读取完成", "button 1"}));
    QCOMPARE(instrument->requests(), (QList<request>{{text_command, 115200}}));
    QCOMPARE(instrument->baud(), 115200);
    QCOMPARE(reader->table_list.first().areameter, "1334");
    const QStringList lines = log->texts();
    QVERIFY(lines.contains("串口无错误"));
    QVERIFY(lines.contains("发送数据： ~"));
    QVERIFY(lines.contains(QString::number(text_record.size())));
    QVERIFY(log->has("接收数据： \"n0001,m1334"));
    QVERIFY(log->has("SERIAL_RX LEN="));
}

void test_serial_thread::line_end_before_the_first_record()
{
    start([](const request&) { return "\r\n" + text_record; });
    read();
    QCOMPARE(instrument->requests().size(), 1);
    QVERIFY(log->texts().contains(QString::number(text_record.size())));
    QCOMPARE(reader->table_list.size(), 1);
}

void test_serial_thread::a_line_end_alone_is_no_answer()
{
    start([](const request& asked) {
        return asked.baud == 115200 ? QByteArray("\r\n") : text_record;
    });
    read();
    QVERIFY(log->texts().contains("0"));
    QCOMPARE(instrument->requests(),
             (QList<request>{{text_command, 115200}, {text_command, 9600}}));
    QCOMPARE(reader->table_list.size(), 1);
}

void test_serial_thread::text_at_the_other_rate()
{
    start([](const request& asked) { return asked.baud == 9600 ? text_record : QByteArray(); });
    read();
    QCOMPARE(instrument->requests(),
             (QList<request>{{text_command, 115200}, {text_command, 9600}}));
    QCOMPARE(instrument->baud(), 9600);
    QCOMPARE(reader->table_list.size(), 1);
    // The next read begins at the rate that worked.
    read();
    QCOMPARE(instrument->requests().size(), 3);
    QCOMPARE(instrument->requests().last(), (request{text_command, 9600}));
}

void test_serial_thread::first_answer_that_is_no_record()
{
    // What the first try brought is forgotten, however much it looked like one.
    start([](const request& asked) {
        return asked.baud == 115200 ? "x" + text_record : text_record;
    });
    read();
    QCOMPARE(instrument->requests().size(), 2);
    QCOMPARE(instrument->baud(), 9600);
    QCOMPARE(reader->table_list.size(), 1);
    QVERIFY(reader->text_buffer.isEmpty());
}

void test_serial_thread::second_answer_counts_whatever_it_is()
{
    start([](const request&) { return "hello"; });
    read();
    QCOMPARE(events, (QStringList{"button 0", "progress 0", "finished 0", "progress 100",
                                  "box 1 数据读取 数据读取完成", "button 1"}));
    QVERIFY(log->texts().contains("The character 'N' was not found in the string."));
    QCOMPARE(instrument->requests().size(), 2);
}

void test_serial_thread::silence()
{
    start();
    QElapsedTimer elapsed;
    elapsed.start();
    asked_single_shots().clear();
    forget_asked_polls();
    read();
    QVERIFY(elapsed.elapsed() >= 2000); // 500 ms twice, then 1000 ms
    // 0 is this test's own, which starts the read.
    QCOMPARE(asked_single_shots(), (QList<int>{0, 500, 500}));
    QCOMPARE(std::ranges::max(asked_polls()), 1000); // of writes, and of the last wait
    QCOMPARE(events, (QStringList{"button 0", "progress 0", "progress 0", "progress 0", no_answer,
                                  "button 1"}));
    QCOMPARE(instrument->requests(),
             (QList<request>{{text_command, 115200}, {text_command, 9600}, {probe, 115200}}));
    QVERIFY(log->texts().contains("读取到数据       长度: 0"));
    QVERIFY(!reader->export_active);
}

void test_serial_thread::bad_probe_replies_data()
{
    QTest::addColumn<QByteArray>("answer");
    const QByteArray token = instrument_frames::token();
    QByteArray damaged = reply(0, 0);
    damaged[7] = 'x';
    QTest::newRow("status 1") << reply(0, 1);
    QTest::newRow("another command answered") << reply(0x2D, 0);
    QTest::newRow("damaged") << damaged;
    QTest::newRow("one byte short") << frame::build_frame(0, 0, token + '\0');
    QTest::newRow("another command") << frame::build_frame(1, 0, token + QByteArray(2, '\0'));
    QTest::newRow("only the first frame counts") << reply(0, 1) + reply(0, 0);
}

void test_serial_thread::bad_probe_replies()
{
    QFETCH(QByteArray, answer);
    start(binary_script(one_measurement(), answer));
    read();
    QCOMPARE(of_kind(events, "box"), QStringList{no_answer});
    QCOMPARE(events.last(), "button 1");
    QCOMPARE(instrument->requests().size(), 3);
    QVERIFY(!reader->export_timer->isActive());
}

void test_serial_thread::good_probe_replies_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("plain") << reply(0, 0);
    QTest::newRow("noise before") << "noiseZ" + reply(0, 0);
    QTest::newRow("longer") << frame::build_frame(
        0, 0, instrument_frames::token() + QByteArray(2, '\0') + "further");
    QTest::newRow("any type and sequence")
        << frame::build_frame(0, 0xA5, instrument_frames::token() + QByteArray(2, '\0'), 0x5A);
}

void test_serial_thread::good_probe_replies()
{
    QFETCH(QByteArray, answer);
    start(binary_script({reply(0x2D, 0)}, answer));
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(reader->device_token, instrument_frames::token());
}

/// What an earlier read has left open does not get into the next one.
void test_serial_thread::a_probe_begins_with_everything_at_rest()
{
    const auto silent = std::make_shared<std::atomic<bool>>(false);
    start([silent](const request& asked) {
        return asked.bytes == probe && !*silent ? reply(0x00, 0) : QByteArray();
    });
    read();
    QVERIFY(reader->export_active);
    QVERIFY(instrument->say(head{}.frame().left(20)));
    QTRY_COMPARE(reader->serial_rx_buffer.size(), 20);
    reader->retry_count = 1;
    QCOMPARE(listeners(*reader->port), 1);

    *silent = true;
    QCOMPARE(reader->serial_probe(), 1);
    QVERIFY(!reader->export_active);
    QVERIFY(!reader->export_timer->isActive());
    QCOMPARE(reader->retry_count, 0);
    QVERIFY(reader->serial_rx_buffer.isEmpty());
    QCOMPARE(listeners(*reader->port), 0);
}

/// Of the instrument's frames, offsets 2 and 3.
void test_serial_thread::device_type_and_sequence_are_not_read()
{
    QList<QByteArray> frames = one_measurement();
    for (QByteArray& frame : frames) {
        frame[2] = '\x5A';
        frame[3] = '\xA5';
        frame.back() = static_cast<char>(frame::crc8(QByteArrayView(frame).chopped(1)));
    }
    start(binary_script(frames));
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(reader->point_msg_all.size(), 1);
}

void test_serial_thread::an_answered_probe_waits_no_longer()
{
    struct times
    {
        QElapsedTimer since_probe;
        std::atomic<qint64> passed = -1;
    };
    const auto time = std::make_shared<times>(); // the instrument outlives this function
    start([time](const request& asked) {
        if (asked.bytes == probe)
            time->since_probe.start();
        else if (asked.bytes == export_request)
            time->passed = time->since_probe.elapsed();
        return asked.bytes == probe            ? reply(0x00, 0)
               : asked.bytes == export_request ? reply(0x2D, 0)
                                               : QByteArray();
    });
    // A busy machine may hold one read up, but not each of a few.
    for (int tries = 0; tries < 5 && (time->passed < 0 || time->passed >= 900); ++tries) {
        events.clear();
        read();
        QTRY_VERIFY(events.contains(read_succeeded));
    }
    QVERIFY2(time->passed < 900, qPrintable(QString::number(time->passed)));
}

void test_serial_thread::an_export_to_its_end()
{
    start(binary_script({head{.records = 2}.frame(), points({{}}), points({{}}),
                         head{.points = 1, .kind = 2, .records = 2}.frame(), points({{}}),
                         reply(0x2D, 0)}));
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(events, (QStringList{"button 0", "progress 0", "progress 0", "finished 1",
                                  "progress 50", "finished 2", "progress 100", "button 1",
                                  "progress 100", read_succeeded}));
    QList<request> expected{{text_command, 115200}, {text_command, 9600}, {probe, 115200}};
    for (int count = 0; count < 6; ++count)
        expected.append({export_request, 115200});
    QCOMPARE(instrument->requests(), expected);
    QCOMPARE(reader->table_list.size(), 2);
    QCOMPARE(reader->table_list[1].method, "航点");
    QCOMPARE(reader->data_msg.size(), 2);
    QCOMPARE(reader->record_count, 0);
    QVERIFY(!reader->export_active);
    QVERIFY(!reader->export_timer->isActive());
    QVERIFY(reader->serial_rx_buffer.isEmpty());
    const QStringList lines = log->texts();
    QVERIFY(lines.contains("读取到数据       长度: 13"));
    QVERIFY(lines.contains("serial protocol frame, command: 47 length: 43"));
    QVERIFY(lines.contains("serial protocol frame, command: 48 length: 31"));
    QVERIFY(lines.contains("serial protocol frame, command: 0 length: 13"));

    // Nothing listens to the port any more.
    const qsizetype count = events.size();
    QCOMPARE(listeners(*reader->port), 0);
    QVERIFY(instrument->say(reply(0x2D, 0)));
    QTRY_COMPARE(reader->port->bytesAvailable(), 13);
    QCOMPARE(events.size(), count);
}

void test_serial_thread::an_export_in_pieces()
{
    // The instrument's bytes one by one, with noise between the frames.
    const auto frames = one_measurement();
    start(binary_script({}));
    read();
    qsizetype asked = 4;
    for (const QByteArray& frame : frames) {
        QTRY_COMPARE(instrument->requests().size(), asked);
        ++asked;
        QVERIFY(instrument->say("..."));
        for (const char byte : frame) {
            QVERIFY(instrument->say(QByteArray(1, byte)));
            QCoreApplication::processEvents();
        }
    }
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(reader->point_msg_all.size(), 1);
}

void test_serial_thread::a_second_read_is_like_the_first()
{
    start(binary_script(one_measurement() + one_measurement()));
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    const QStringList first = events;
    events.clear();
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(events, first);
    QCOMPARE(instrument->requests().size(), 12);
}

void test_serial_thread::frames_that_end_an_export_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("box");
    const QString bad_frame = "box 2 数据读取 数据读取失败";
    QTest::newRow("nothing more") << reply(0x2D, 0) << read_succeeded;
    QTest::newRow("status 1") << reply(0x2D, 1) << read_failed;
    QTest::newRow("reply to another command") << reply(0x00, 0) << read_failed;
    QTest::newRow("short reply") << frame::build_frame(0, 0, instrument_frames::token() + '\x2D')
                                 << read_failed;
    QTest::newRow("unknown command") << frame::build_frame(0x33, 0, "what?") << read_failed;
    QTest::newRow("bad head") << head{.kind = 6}.frame() << bad_frame;
    QTest::newRow("points without a head") << points({{}}) << bad_frame;
    // What comes behind the end is not looked at.
    QTest::newRow("frames behind the end") << reply(0x2D, 0) + head{}.frame() << read_succeeded;
    QTest::newRow("frames behind a bad one")
        << head{.kind = 6}.frame() + reply(0x2D, 0) << bad_frame;
}

void test_serial_thread::frames_that_end_an_export()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, box);
    start(binary_script({frame}));
    // Who hears of the end may begin anew.
    bool at_rest = false;
    connect(reader.get(), &serial_thread::button_control, this, [this, &at_rest] {
        at_rest = !reader->export_active && !reader->export_timer->isActive() &&
                  reader->serial_rx_buffer.isEmpty() && listeners(*reader->port) == 0;
    });
    read();
    QTRY_COMPARE(events.last(), box);
    QVERIFY(at_rest);
    QCOMPARE(events.mid(3),
             (QStringList{"button 1", box == read_succeeded ? "progress 100" : "progress 0", box}));
    QVERIFY(reader->serial_rx_buffer.isEmpty());
    QVERIFY(!reader->export_timer->isActive());
}

void test_serial_thread::a_damaged_frame_is_searched_through()
{
    QByteArray damaged = head{}.frame();
    damaged[20] = static_cast<char>(damaged[20] ^ 1);
    start(binary_script({damaged + head{.points = 0}.frame(), reply(0x2D, 0)}));
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(reader->table_list.first().numpoint, "0");
    QVERIFY(log->texts().contains("serial protocol CRC error, length: 43"));
}

void test_serial_thread::one_retry()
{
    start(binary_script({}));
    read();
    QVERIFY(reader->export_active);
    QVERIFY(reader->export_timer->isActive());
    QCOMPARE(reader->export_timer->interval(), 5000);
    QVERIFY(instrument->say(head{}.frame().left(20)));
    QTRY_COMPARE(reader->serial_rx_buffer.size(), 20);

    log->clear();
    reader->serial_export_timeout();
    QTRY_COMPARE(instrument->requests().size(), 5);
    QCOMPARE(instrument->requests().last(), (request{export_request, 115200}));
    QCOMPARE(reader->retry_count, 1);
    QCOMPARE(log->texts().first(), "serial export timeout, retry: 0 buffer size: 20");
    QCOMPARE(log->lines().first().type, QtWarningMsg);
    QVERIFY(log->texts()[1].startsWith("SERIAL_RX LEN=20 HEX=5A 2F 07 00 00 24"));
    QVERIFY(reader->export_timer->isActive());

    reader->export_timer->start(0);
    QTRY_COMPARE(events.last(), "box 2 数据读取 数据读取超时，请重新读取");
    QCOMPARE(events.mid(3).first(), "button 1");
    QVERIFY(log->has("serial export timeout, retry: 1 buffer size: 20"));
    QCOMPARE(instrument->requests().size(), 5);
    QCOMPARE(reader->retry_count, 0);
    QVERIFY(reader->serial_rx_buffer.isEmpty());
}

void test_serial_thread::a_good_frame_brings_the_retry_back()
{
    start(binary_script({{}, head{}.frame(), {}, points({{}, {}}), reply(0x2D, 0)}));
    read();
    reader->serial_export_timeout();
    QTRY_COMPARE(reader->table_list.size(), 1);
    QCOMPARE(reader->retry_count, 0);
    reader->serial_export_timeout();
    QTRY_COMPARE(events.last(), read_succeeded);
}

void test_serial_thread::timeouts_in_their_own_time()
{
    start(binary_script({}));
    read();
    QElapsedTimer elapsed;
    elapsed.start();
    QTRY_COMPARE_WITH_TIMEOUT(events.last(), "box 2 数据读取 数据读取超时，请重新读取", 15000);
    QVERIFY(elapsed.elapsed() >= 9000);
    QCOMPARE(instrument->requests().size(), 5);
}

void test_serial_thread::a_timeout_without_an_export()
{
    reader->serial_export_timeout();
    QVERIFY(events.isEmpty());
    QCOMPARE(reader->retry_count, 0);
}

void test_serial_thread::port_gone_during_an_export()
{
    start(binary_script({head{}.frame()}));
    read();
    QTRY_COMPARE(reader->table_list.size(), 1);
    ports.clear();
    events.clear();
    instrument->vanish();
    QTRY_COMPARE(events, (QStringList{"LED 0", "box 1 串口 设备连接有误"}));
    // The read itself ends when its next request finds no port.
    QVERIFY(reader->export_active);
    reader->export_timer->start(0);
    QTRY_COMPARE(events.last(), read_failed);
    QCOMPARE(events.mid(2), (QStringList{"button 1", "progress 0", read_failed}));
    QVERIFY(!reader->export_active);
}

void test_serial_thread::port_gone_during_the_text_wait()
{
    start();
    ports.clear();
    QTRY_VERIFY(log->texts().contains("执行串口检测"));
    QTimer::singleShot(100, this, [this] { instrument->vanish(); });
    read();
    QCOMPARE(of_kind(events, "box"), (QStringList{"box 1 串口 设备连接有误", no_answer}));
    QCOMPARE(events.last(), "button 1");
}

void test_serial_thread::what_was_delivered_stays()
{
    start(binary_script({head{.points = 1, .records = 2}.frame(), points({{}}),
                         head{.points = 5, .records = 2}.frame(), reply(0x2D, 1)}));
    read();
    QTRY_COMPARE(events.last(), read_failed);
    QCOMPARE(of_kind(events, "finished"), QStringList{"finished 1"});
    // The head without points is in this list alone, and the next command brings
    // another.
    QCOMPARE(reader->table_list.size(), 2);
    QCOMPARE(reader->data_msg.size(), 1);
}

void test_serial_thread::a_babbling_instrument_fills_no_memory()
{
    start(binary_script({}));
    read();
    const QByteArray babble = QByteArray("Zzzzzz~").repeated(150) + QByteArray::fromHex("5A000000");
    for (int count = 0; count < 300; ++count) {
        QVERIFY(instrument->say(babble));
        QCoreApplication::processEvents();
        QVERIFY(reader->serial_rx_buffer.size() < frame::length_limit + frame::overhead);
    }
    QVERIFY(reader->export_active);
}

void test_serial_thread::an_idle_port_fills_no_memory()
{
    start(binary_script(one_measurement()));
    const QByteArray block(2000, 'n');
    qint64 said = 0;
    while (said < 3'000'000 && instrument->say(block)) {
        said += block.size();
        QCoreApplication::processEvents();
    }
    QVERIFY(reader->port->bytesAvailable() <= 1 << 20);
    QVERIFY(said > 1 << 20);
    // A read begins with an empty port that listens again.
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(instrument->requests().size(), 6);
}

void test_serial_thread::a_port_that_vanishes_behind_a_full_buffer()
{
    start();
    QTRY_VERIFY(log->texts().contains("执行串口检测"));
    const QByteArray block(2000, 'n');
    while (instrument->say(block))
        QCoreApplication::processEvents();
    QCOMPARE(reader->port->bytesAvailable(), 1 << 20);
    ports.clear();
    instrument->vanish();
    QTRY_COMPARE(events, (QStringList{"LED 0", "box 1 串口 设备连接有误"}));
    QVERIFY(!reader->port->isOpen());
    QVERIFY(!reader->port_connected);
    QVERIFY(log->texts().contains("ResourceError"));
}

void test_serial_thread::a_text_download_without_end()
{
    start([](const request&) { return "n0001,m1,l1;t202403050708,N9999,"; });
    reader->text_limit = 100'000;
    // Babble without pause, with marks and without, until the read has given up.
    QTimer talk;
    connect(&talk, &QTimer::timeout, this,
            [this] { instrument->say(QByteArray("abcdefgN0009").repeated(50) + '!'); });
    talk.start(5);
    bool returned = false;
    QTimer::singleShot(0, this, [this, &returned] {
        reader->recv_cmd_from_key(1, {}, {}, {}, {});
        returned = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(returned, 20000);
    talk.stop();
    const QString given_up = "text download given up, bytes received: ";
    const QStringList told = log->texts().filter(given_up);
    QCOMPARE(told.size(), 1);
    // By how much it is beyond the limit is up to the machine.
    QVERIFY(told[0].mid(given_up.size()).toLongLong() > reader->text_limit);
    QVERIFY(reader->text_buffer.isEmpty());
    QCOMPARE(of_kind(events, "box"), QStringList{"box 1 数据读取 数据读取完成"});
    QCOMPARE(events.last(), "button 1");
    QCOMPARE(reader->port->readBufferSize(), 1 << 20);
}

void test_serial_thread::a_text_download_is_held_up_by_a_box()
{
    // More than the idle port would hold arrives while a box is open.
    start([](const request&) {
        return "n0001,m1334,l1234;t202403050708,N0002,              104d3'12.5\",30d30'0.0\",123;!";
    });
    qint64 said = 0;
    const auto note = watcher->look;
    bool held = false;
    watcher->look = [&](QMessageBox* box) {
        note(box);
        if (std::exchange(held, true))
            return;
        const QByteArray block(2000, ' ');
        while (said < 2'000'000 && instrument->say(block)) {
            said += block.size();
            QCoreApplication::processEvents();
        }
        QVERIFY(instrument->say("!"));
    };
    connect(reader.get(), &serial_thread::read_data_set_progressbar, this, [this](int percent) {
        if (percent == 50) // in the middle of the download
            QTimer::singleShot(0, this,
                               [] { QMessageBox::information(nullptr, "another", "box"); });
    });
    read();
    QCOMPARE(said, 2'000'000);
    // On a busy machine the last of it may come a wait later.
    QStringList progress = of_kind(events, "progress");
    progress.removeDuplicates();
    QCOMPARE(progress, (QStringList{"progress 0", "progress 50", "progress 100"}));
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(reader->port->readBufferSize(), 1 << 20);
}

void test_serial_thread::quitting_in_the_middle_of_a_read()
{
    start();
    // All nested waits and boxes give way at once; the read runs to its end.
    bool returned = false;
    QTimer::singleShot(0, this, [this, &returned] {
        reader->recv_cmd_from_key(1, {}, {}, {}, {});
        returned = true;
    });
    QTimer::singleShot(100, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    QVERIFY(returned);
    QCOMPARE(events.last(), "button 1");
}

void test_serial_thread::too_few_text_records()
{
    start([](const request&) { return QByteArray(text_record).replace("N0001", "N0003"); });
    read();
    QCOMPARE(events, (QStringList{"button 0", "progress 0", "progress 33", "finished 0",
                                  "progress 100", "box 1 数据读取 数据读取完成", "button 1"}));
}

void test_serial_thread::an_error_of_the_port_is_logged_before_a_read()
{
    start([](const request&) { return text_record; });
    QVERIFY(!reader->port->open(QIODevice::ReadWrite)); // it is open already
    read();
    QVERIFY(log->texts().contains("未知串口错误： OpenError"));
    QVERIFY(!log->texts().contains("串口无错误"));
    QCOMPARE(events.last(), "button 1");
}

void test_serial_thread::states_of_the_port_before_a_read_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("line");
    QTest::newRow("none") << 0 << "串口无错误";
    QTest::newRow("no device") << ENODEV << "串口设备未找到";
    QTest::newRow("no permission") << EACCES << "无权访问串口";
    QTest::newRow("another") << EIO << "未知串口错误： ResourceError";
}

/// The state is only logged: the read goes on whatever it is.
void test_serial_thread::states_of_the_port_before_a_read()
{
    QFETCH(int, error);
    QFETCH(QString, line);
    start([](const request&) { return text_record; });
    flush_error = error;
    read();
    flush_error = 0;
    QCOMPARE(flushed.load(), TCIOFLUSH); // both directions
    QCOMPARE(log->texts().filter(QRegularExpression("串口(无错误|设备未找到|错误)|无权访问串口")),
             QStringList{line});
    QCOMPARE(reader->table_list.size(), 1);
    QCOMPARE(events.last(), "button 1");
}

void test_serial_thread::a_write_that_takes_too_long()
{
    const auto go_on = std::make_shared<QSemaphore>(); // the instrument outlives this function
    start([go_on](const request&) {
        go_on->acquire();
        return QByteArray();
    });
    const auto release = qScopeGuard([go_on] { go_on->release(1'000'000); });
    // The instrument stops to read, and the line is full.
    reader->port->write(QByteArray(1 << 18, 'x'));
    while (reader->port->bytesToWrite() > 0 && reader->port->waitForBytesWritten(100))
        ;
    QVERIFY(reader->port->bytesToWrite() > 0);
    log->clear();
    reader->export_active = true;
    QElapsedTimer elapsed;
    elapsed.start();
    forget_asked_polls();
    reader->send_export_request();
    QVERIFY(elapsed.elapsed() >= 900);
    QVERIFY(std::ranges::max(asked_polls()) <= 1000);
    QCOMPARE(log->texts().last(), "[Worker] 写入超时: \"" + reader->port->portName() + "\"");
    QCOMPARE(log->lines().last().type, QtWarningMsg);
    // The read goes on, until its own time-out.
    QVERIFY(reader->port->isOpen());
    QVERIFY(reader->export_active);
    QVERIFY(reader->export_timer->isActive());
    QVERIFY(events.isEmpty());
    reader->port->clear();
}

void test_serial_thread::the_log_of_a_timeout_is_short()
{
    start(binary_script({}));
    read();
    const QByteArray unfinished = QByteArray::fromHex("5A2F07000100") + QByteArray(100, 'x');
    QVERIFY(instrument->say(unfinished));
    QTRY_COMPARE(reader->serial_rx_buffer, unfinished);
    log->clear();
    reader->serial_export_timeout();
    QCOMPARE(log->texts()[0], "serial export timeout, retry: 0 buffer size: 106");
    QCOMPARE(log->texts()[1],
             "SERIAL_RX LEN=64 HEX=5A 2F 07 00 01 00" + QStringLiteral(" 78").repeated(58));
}

void test_serial_thread::random_bytes_during_an_export()
{
    QRandomGenerator random(20240305);
    start(binary_script({}));
    read();
    QVERIFY(reader->export_active);
    int ended = 0;
    for (int count = 0; count < 3000; ++count) {
        QVERIFY(instrument->say(random_bytes(random)));
        QCoreApplication::processEvents();
        QVERIFY(reader->serial_rx_buffer.size() < frame::length_limit + frame::overhead);
        QVERIFY(reader->table_list.size() >= reader->data_msg.size());
        QCOMPARE(reader->data_msg.size(), reader->point_msg_all.size());
        if (reader->export_active)
            continue;
        // A bad frame has ended it. On with the next one, without the text command.
        ++ended;
        QTRY_COMPARE(of_kind(events, "box").size(), ended);
        QCOMPARE(of_kind(events, "button 1").size(), ended);
        QVERIFY(reader->serial_rx_buffer.isEmpty());
        reader->port->readAll();
        QTRY_COMPARE(reader->serial_probe(), 0); // what is left on the line is no reply
    }
    QVERIFY(ended > 20);
    // Whatever came, the read ends in its time.
    reader->retry_count = 1;
    reader->export_timer->start(0);
    QTRY_COMPARE(events.last(), "box 2 数据读取 数据读取超时，请重新读取");
    QCOMPARE(of_kind(events, "button 1").size(), ended + 1);
    QVERIFY(reader->serial_rx_buffer.isEmpty());
}

void test_serial_thread::android_read_to_its_end()
{
    auto frames = one_measurement();
    start_android([frames](const QByteArray& asked) mutable {
        return asked == probe ? reply(0, 0) : frames.takeFirst();
    });
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(events, (QStringList{"button 0", "progress 0", "progress 0", "finished 1",
                                  "progress 100", "button 1", "progress 100", read_succeeded}));
    QCOMPARE(android_requests,
             (QList<QByteArray>{probe, export_request, export_request, export_request}));
    const QStringList lines = log->texts();
    QVERIFY(lines.contains("ADB protocol frame, command: 47 length: 43"));
    QVERIFY(lines.contains("发送数据到 \"emulator-5554\" 长度: 11 内容: "
                           "\"5A 2D FD 00 00 04 01 02 03 04 8A\""));
    QVERIFY(log->has("读取到数据       长度: 13 内容: \"5A 00 07 00 00 06"));
    QVERIFY(!reader->export_timer->isActive());
    QVERIFY(reader->adb_rx_buffer.isEmpty());

    // Nothing listens to the socket any more.
    const qsizetype count = events.size();
    android->write(reply(0x2D, 0));
    QTRY_COMPARE(reader->channel->socket->bytesAvailable(), 13);
    QCOMPARE(events.size(), count);
}

void test_serial_thread::android_takes_any_answer_with_a_header_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("taken");
    QTest::newRow("ten bytes") << QByteArray::fromHex("5A000000000001020304") << true;
    QTest::newRow("bad status") << reply(0, 1) << true;
    QTest::newRow("another command") << reply(0x2D, 0) << true;
    QTest::newRow("bad checksum") << reply(0, 0).chopped(1) + 'x' << true;
    QTest::newRow("nine bytes") << QByteArray::fromHex("5A0000000000010203") << false;
    QTest::newRow("noise before") << "n" + reply(0, 0) << false;
    QTest::newRow("nothing") << QByteArray() << false;
}

void test_serial_thread::android_takes_any_answer_with_a_header()
{
    QFETCH(QByteArray, answer);
    QFETCH(bool, taken);
    start_android(
        [answer](const QByteArray& asked) { return asked == probe ? answer : reply(0x2D, 0); });
    read();
    if (taken) {
        QTRY_COMPARE(events.last(), read_succeeded);
        QCOMPARE(android_requests.last(), export_request);
    } else {
        QCOMPARE(events, (QStringList{"button 0", "progress 0", "progress 0", "progress 0",
                                      no_answer, "button 1"}));
        QCOMPARE(android_requests, QList<QByteArray>{probe});
    }
}

void test_serial_thread::android_probe_waits_its_whole_time()
{
    QElapsedTimer since_probe;
    qint64 passed = -1;
    start_android([&](const QByteArray& asked) {
        if (asked == probe)
            since_probe.start();
        else
            passed = since_probe.elapsed();
        return asked == probe ? reply(0, 0) : reply(0x2D, 0);
    });
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    QVERIFY2(passed >= 900, qPrintable(QString::number(passed))); // a timer may be early
}

void test_serial_thread::android_bytes_are_read_after_a_pause()
{
    start_android(
        [](const QByteArray& asked) { return asked == probe ? reply(0, 0) : QByteArray(); });
    read();
    QTRY_COMPARE(android_requests.size(), 2);
    QElapsedTimer elapsed;
    elapsed.start();
    asked_single_shots().clear();
    android->write(head{}.frame().left(20));
    QTRY_COMPARE(reader->adb_rx_buffer.size(), 20);
    QVERIFY2(elapsed.elapsed() >= 90, qPrintable(QString::number(elapsed.elapsed())));
    QCOMPARE(asked_single_shots(), QList<int>{100});
}

void test_serial_thread::android_silence_leaves_the_read_open()
{
    start_android(
        [](const QByteArray& asked) { return asked == probe ? reply(0, 0) : QByteArray(); });
    read();
    QTRY_COMPARE(android_requests.size(), 2);
    // No time-out runs on this channel; the button stays locked.
    QVERIFY(!reader->export_timer->isActive());
    reader->serial_export_timeout();
    QCOMPARE(events, (QStringList{"button 0", "progress 0", "progress 0"}));
    // However late, an answer is taken.
    android->write(reply(0x2D, 0));
    QTRY_COMPARE(events.last(), read_succeeded);
}

void test_serial_thread::a_read_anew_listens_once()
{
    start_android(
        [](const QByteArray& asked) { return asked == probe ? reply(0, 0) : QByteArray(); });
    read();
    QTRY_COMPARE(android_requests.size(), 2);
    {
        // While the first read is open; it does not take the answer away.
        const QSignalBlocker quiet(reader->channel->socket);
        QCOMPARE(reader->android_probe(), 0);
    }
    QCOMPARE(listeners(*reader->channel->socket), 1);
    android->write(reply(0x2D, 0));
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(listeners(*reader->channel->socket), 0);
}

void test_serial_thread::android_unexpected_frames_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("status 1") << reply(0x2D, 1);
    QTest::newRow("unknown command") << frame::build_frame(0x33, 0, "what?");
}

void test_serial_thread::android_unexpected_frames()
{
    QFETCH(QByteArray, frame);
    start_android(
        [frame](const QByteArray& asked) { return asked == probe ? reply(0, 0) : frame; });
    read();
    QTRY_COMPARE(events.last(), read_failed);
    const qsizetype told =
        log->texts().indexOf("ADB export received unexpected response: \"" +
                             QString::fromLatin1(frame.toHex(' ').toUpper()) + "\"");
    QVERIFY(told >= 0);
    QCOMPARE(log->lines()[told].type, QtWarningMsg);
}

void test_serial_thread::android_channel_lost_during_a_read()
{
    start_android([](const QByteArray& asked) {
        return asked == probe ? reply(0, 0) : head{}.frame().left(20);
    });
    read();
    QTRY_COMPARE(reader->adb_rx_buffer.size(), 20);
    const QPointer<AdbStringChannel> channel = reader->channel;
    // The instrument closes. The read ends even though this channel, like one that
    // only its second attempt opened, was not announced.
    QSignalSpy closed(reader->channel, &AdbStringChannel::channelClosed);
    android->abort();
    QTRY_COMPARE(closed.size(), 1);
    QVERIFY(log->has("[AdbStringChannel] socket error:"));
    QTRY_COMPARE(events.last(), read_failed);
    // The device leaves adb's list: nothing is left to end.
    reader->onDeviceDetached("emulator-5554");
    QCOMPARE(of_kind(events, "box"), QStringList{read_failed});
    QVERIFY(events.contains("button 1"));
    QVERIFY(reader->channel == nullptr);
    QTRY_VERIFY(channel.isNull());
}

void test_serial_thread::android_device_detached_during_the_wait()
{
    start_android(
        [](const QByteArray& asked) { return asked == probe ? reply(0, 0) : head{}.frame(); });
    // In the middle of the fixed wait for the answer to the probe.
    QTimer::singleShot(300, this, [this] { reader->onDeviceDetached("emulator-5554"); });
    read();
    QCOMPARE(events.last(), "button 1");
    QCOMPARE(of_kind(events, "box"), QStringList{no_answer});
}

void test_serial_thread::android_device_detached()
{
    start_android([](const QByteArray&) { return QByteArray(); });
    log->clear();
    reader->onDeviceDetached("emulator-5554");
    QCOMPARE(log->texts().first(), " 已断开  \"emulator-5554\"");
    QCOMPARE(events, (QStringList{"LED2 0", "out 0"}));
    QVERIFY(reader->channel == nullptr);
    QCOMPARE(reader->android_connected, 0);
    // Without a channel only the line is written.
    reader->onDeviceDetached("emulator-5554");
    QCOMPARE(events.size(), 2);
}

void test_serial_thread::android_follows_a_text_download()
{
    start([](const request&) { return text_record; });
    start_android(
        [](const QByteArray& asked) { return asked == probe ? reply(0, 0) : reply(0x2D, 0); });
    read();
    QTRY_COMPARE(events.last(), read_succeeded);
    QCOMPARE(of_kind(events, "(box|button)"),
             (QStringList{"button 0", "box 1 数据读取 数据读取完成", "button 1", "button 0",
                          "button 1", read_succeeded}));
}

void test_serial_thread::android_babble_fills_no_memory()
{
    start_android(
        [](const QByteArray& asked) { return asked == probe ? reply(0, 0) : QByteArray(); });
    android->write(QByteArray(4 << 20, 'Z'));
    QTRY_VERIFY(reader->channel->socket->bytesAvailable() > 0);
    read(); // finds babble in place of an answer
    QVERIFY(reader->adb_rx_buffer.size() < frame::length_limit + frame::overhead);
}

void test_serial_thread::android_cable_pulled_while_the_end_box_is_open()
{
    start_android(
        [](const QByteArray& asked) { return asked == probe ? reply(0, 0) : reply(0x2D, 0); });
    const QPointer<QTcpSocket> socket = reader->channel->socket;
    const QPointer<AdbStringChannel> channel = reader->channel;
    bool pulled = false;
    watcher->look = [&](QMessageBox* box) {
        QCOMPARE(box->text(), "数据读取成功");
        reader->onDeviceDetached("emulator-5554");
        // Both are gone before the box is answered.
        QTRY_VERIFY(socket.isNull() && channel.isNull());
        pulled = true;
    };
    read();
    QTRY_VERIFY(pulled);
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(of_kind(events, "button"), (QStringList{"button 0", "button 1"}));
    QVERIFY(reader->channel == nullptr);
}

void test_serial_thread::android_channel_lost_before_its_bytes_are_read()
{
    start_android([this](const QByteArray& asked) {
        if (asked == probe)
            return reply(0, 0);
        QTimer::singleShot(30, android, [this] { android->abort(); });
        return head{}.frame();
    });
    const QPointer<QTcpSocket> socket = reader->channel->socket;
    read();
    QTRY_COMPARE(events.last(), read_failed);
    QTRY_VERIFY(socket.isNull());
    QCOMPARE(of_kind(events, "(box|button)"), (QStringList{"button 0", "button 1", read_failed}));
}

void test_serial_thread::android_does_not_follow_a_binary_read_data()
{
    QTest::addColumn<QList<QByteArray>>("frames");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("box");
    QTest::newRow("silence") << QList<QByteArray>() << QByteArray() << no_answer;
    QTest::newRow("refused") << QList<QByteArray>() << reply(0, 1) << no_answer;
    QTest::newRow("export") << one_measurement() << reply(0, 0) << read_succeeded;
    QTest::newRow("export that fails")
        << QList<QByteArray>{reply(0x2D, 1)} << reply(0, 0) << read_failed;
}

void test_serial_thread::android_does_not_follow_a_binary_read()
{
    QFETCH(QList<QByteArray>, frames);
    QFETCH(QByteArray, answer);
    QFETCH(QString, box);
    start(binary_script(frames, answer));
    start_android([](const QByteArray&) { return reply(0, 0); });
    read();
    QTRY_COMPARE(of_kind(events, "box"), QStringList{box});
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QTRY_COMPARE(of_kind(events, "button"), (QStringList{"button 0", "button 1"}));
    QVERIFY(android_requests.isEmpty());
    // The end of the export has let go of the port, though Android is up.
    QVERIFY(instrument->say(reply(0x2D, 0)));
    QTRY_COMPARE(reader->port->bytesAvailable(), 13);
    QCOMPARE(of_kind(events, "box").size(), 1);
}

void test_serial_thread::android_socket_unconnected_at_a_request()
{
    start_android(
        [](const QByteArray& asked) { return asked == probe ? reply(0, 0) : QByteArray(); });
    read();
    QTRY_COMPARE(android_requests.size(), 2);
    // Nobody hears of it.
    const QSignalBlocker silence(reader->channel->socket);
    reader->channel->socket->abort();
    reader->send_export_request();
    QCOMPARE(events.mid(3), (QStringList{"button 1", "progress 0", read_failed}));
    QCOMPARE(android_requests.size(), 2);
}

void test_serial_thread::android_random_bytes_during_an_export()
{
    QRandomGenerator random(20240306);
    start_android(
        [](const QByteArray& asked) { return asked == probe ? reply(0, 0) : QByteArray(); });
    read();
    int reads = 1;
    for (int count = 0; count < 3000 && reads < 6; ++count) {
        android->write(random_bytes(random));
        QCoreApplication::processEvents();
        QVERIFY(reader->adb_rx_buffer.size() < frame::length_limit + frame::overhead);
        QCOMPARE(reader->data_msg.size(), reader->point_msg_all.size());
        if (count % 100 == 99) // let it be read
            QTRY_VERIFY(reader->channel->socket->bytesAvailable() == 0 ||
                        of_kind(events, "box").size() == reads);
        if (of_kind(events, "box").size() == reads) {
            QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
            QCOMPARE(of_kind(events, "button").last(), "button 1");
            reader->channel->socket->readAll();
            ++reads;
            read();
            if (events.last() == "button 1")
                break; // late noise in place of an answer to the probe
        }
    }
    // A bad frame ends it, if nothing has so far.
    if (of_kind(events, "button").last() == "button 0")
        android->write(QByteArray(1300, '\0') + frame::build_frame(0x33, 0, "what?"));
    QTRY_COMPARE(of_kind(events, "button").last(), "button 1");
    QVERIFY(reads > 1);
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(reader->adb_rx_buffer.isEmpty());
}

void test_serial_thread::android_bytes_behind_the_end_data()
{
    QTest::addColumn<QByteArray>("last");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QByteArray>("behind");
    const QString bad_frame = "box 2 数据读取 数据读取失败";
    for (const auto& [name, behind] :
         {std::pair{"reply", reply(0x2D, 0)}, std::pair{"head", head{}.frame()}}) {
        QTest::addRow("%s behind the end", name) << reply(0x2D, 0) << read_succeeded << behind;
        QTest::addRow("%s behind a bad status", name) << reply(0x2D, 1) << read_failed << behind;
        QTest::addRow("%s behind a bad head", name)
            << head{.kind = 6}.frame() << bad_frame << behind;
        QTest::addRow("%s behind points without a head", name)
            << points({{}}) << bad_frame << behind;
    }
}

void test_serial_thread::android_bytes_behind_the_end()
{
    QFETCH(QByteArray, last);
    QFETCH(QString, box);
    QFETCH(QByteArray, behind);
    // A serial port is there as well: no request strays to it.
    start([](const request&) { return text_record; });
    start_android([last, behind](const QByteArray& asked) {
        return asked == probe ? reply(0, 0) : last + behind;
    });
    const auto note = watcher->look;
    watcher->look = [&](QMessageBox* seen) {
        note(seen);
        // More comes while the box is open.
        if (events.last() == box) {
            android->write(behind);
            QTRY_VERIFY(reader->channel->socket->bytesAvailable() >= behind.size());
        }
    };
    read();
    QTRY_COMPARE(events.last(), box);
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    // Twice the delay before bytes are read.
    bool later = false;
    QTimer::singleShot(250, this, [&later] { later = true; });
    QTRY_VERIFY(later);
    QCOMPARE(of_kind(events, "box"), (QStringList{"box 1 数据读取 数据读取完成", box}));
    QCOMPARE(android_requests, (QList<QByteArray>{probe, export_request}));
    QCOMPARE(instrument->requests(), (QList<request>{{text_command, 115200}}));
}

QTEST_MAIN(test_serial_thread)
#include "test_serial_thread.moc"
