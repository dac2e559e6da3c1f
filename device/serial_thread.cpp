#include "device/serial_thread.h"

#include "core/code_tables.h"
#include "device/adb_string_channel.h"
#include "device/binary_records.h"
#include "device/frame.h"
#include "device/message_box.h"
#include "device/text_records.h"

#include <QDateTime>
#include <QDebug>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMetaEnum>
#include <QPointer>
#include <QSerialPortInfo>
#include <QTcpSocket>
#include <QTimer>

#ifdef Q_OS_UNIX
#include <poll.h>
#endif

#include <utility>

namespace {

// Milliseconds.
constexpr int detect_delay = 2000;
constexpr int detect_interval = 1000;
constexpr int first_attempt_delay = 1000;
constexpr int second_attempt_delay = 2000;
constexpr int text_answer_wait = 500;
constexpr int text_pause = 200;
constexpr int probe_wait = 1000;
constexpr int export_timeout = 5000;
constexpr int socket_read_delay = 100;
constexpr int write_timeout = 1000;

/// Bytes that wait in the port while no text download is on; more stay with the
/// driver. An instrument that talks unasked must not fill the memory.
constexpr qint64 port_buffer_size = 1 << 20;

/// Asks an instrument of the text protocol for its memory.
constexpr QByteArrayView text_command = "~\r\n";
/// Sent in place of the device token before it is known.
constexpr QByteArrayView no_token = "\xFF\xFF\xFF\xFF";
/// Bytes of a host frame of a read.
constexpr qsizetype request_size = 11;
constexpr qsizetype token_offset = 6;
constexpr qsizetype token_size = 4;
/// Least size of the instrument's reply, with the command that it answers at
/// offset 10 and the status, 0 for good, at offset 11.
constexpr qsizetype reply_size = 13;
/// Bytes of an answer that hold the device token.
constexpr qsizetype token_answer_size = token_offset + token_size;

/// Highest number of retries of one export request.
constexpr int retry_limit = 1;

const QString box_port_title = QStringLiteral("串口");
const QString box_read_title = QStringLiteral("数据读取");
const QString box_warning_title = QStringLiteral("警告");
const QString read_failed = QStringLiteral("数据读取失败，请重新读取");

QList<serial_thread::listed_port> system_ports()
{
    QList<serial_thread::listed_port> ports;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
        ports.append({info.systemLocation(), info.portName(), info.description()});
    return ports;
}

/// Waits while everything else goes on.
void wait(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

const char* error_name(QSerialPort::SerialPortError error)
{
    return QMetaEnum::fromType<QSerialPort::SerialPortError>().valueToKey(error);
}

/// Whether `reply` answers `command` with a good status.
bool is_good_reply(const QByteArray& reply, frame::command command)
{
    return reply.size() >= reply_size && reply.front() == frame::header &&
           frame::read_u8(reply, 1) == frame::reply && frame::read_u8(reply, 10) == command &&
           frame::read_u8(reply, 11) == 0;
}

bool is_export_data(std::uint8_t command)
{
    return command == frame::measurement_head || command == frame::measurement_points;
}

/// Whether the line of an open port has gone. A port that is pulled out reads as
/// ended here, for which Qt has no better word than ReadError, again and again.
bool has_hung_up([[maybe_unused]] QSerialPort& port)
{
#ifdef Q_OS_UNIX
    if (!port.isOpen())
        return false;
    pollfd line{port.handle(), 0, 0};
    return poll(&line, 1, 0) > 0 && (line.revents & POLLHUP) != 0;
#else
    return false;
#endif
}

QString hex_text(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

} // namespace

serial_thread::serial_thread(QObject* parent)
    : QThread(parent), port(new QSerialPort), detect_timer(new QTimer(this)),
      export_timer(new QTimer(this)), available_ports(system_ports), show_box(show_message_box)
{
    port->setReadBufferSize(port_buffer_size);
    export_timer->setSingleShot(true);
    connect(export_timer, &QTimer::timeout, this, &serial_thread::serial_export_timeout);
    QTimer::singleShot(detect_delay, this, &serial_thread::start_detection);
    connect(&adb_manager, &AdbDeviceManager::deviceAttached, this,
            &serial_thread::onDeviceAttached);
    connect(&adb_manager, &AdbDeviceManager::deviceDetached, this,
            &serial_thread::onDeviceDetached);
    adb_manager.start();
}

serial_thread::~serial_thread()
{
    QThread::wait();
    port->disconnect(this);
    delete port;
}

void serial_thread::run()
{
    qDebug() << "serial thread ID:" << QThread::currentThreadId();
}

// The serial port.

void serial_thread::start_detection()
{
    qDebug() << "执行串口检测";
    connect(detect_timer, &QTimer::timeout, this, &serial_thread::detect_ports);
    detect_timer->start(detect_interval);
    connect(port, &QSerialPort::errorOccurred, this, [this](QSerialPort::SerialPortError error) {
        const bool gone = error == QSerialPort::ReadError && has_hung_up(*port);
        handle_serial_error(gone ? QSerialPort::ResourceError : error);
    });
}

void serial_thread::detect_ports()
{
    for (const listed_port& listed : available_ports()) {
        if (port_connected)
            break;
        if (listed.description.startsWith(u"USB") && open_port(listed))
            break;
    }
    // Behind a full buffer nobody watches the line.
    if (port_connected && has_hung_up(*port))
        handle_serial_error(QSerialPort::ResourceError);
    if (port_connected && !port->isOpen()) {
        port_connected = false;
        port->close();
        qDebug() << "Disconnected from previously connected port.";
    }
}

bool serial_thread::open_port(const listed_port& listed)
{
    port->setPortName(listed.system_location);
    if (!port->open(QIODevice::ReadWrite)) {
        qDebug() << "Failed to open port: " << listed.name;
        return false;
    }
    qDebug() << "Connected to port: " << listed.name;
    port_connected = true;
    port->setBaudRate(QSerialPort::Baud115200);
    port->setDataBits(QSerialPort::Data8);
    port->setStopBits(QSerialPort::OneStop);
    port->setParity(QSerialPort::NoParity);
    emit LED_control(true);
    show_box(QMessageBox::Information, box_port_title, QStringLiteral("设备已连接"));
    return true;
}

void serial_thread::handle_serial_error(QSerialPort::SerialPortError error)
{
    switch (error) {
    case QSerialPort::NoError:
    case QSerialPort::TimeoutError: break;
    case QSerialPort::PermissionError:
    case QSerialPort::ResourceError:
        qDebug() << error_name(error);
        close_serial();
        break;
    default: qDebug() << "An unexpected serial port error occurred: " << error_name(error); break;
    }
}

void serial_thread::close_serial()
{
    if (!port->isOpen())
        return;
    port->close();
    port_connected = false;
    emit LED_control(false);
    clear_text();
    show_box(QMessageBox::Information, box_port_title, QStringLiteral("设备连接有误"));
    qDebug() << "Serial port closed.";
}

void serial_thread::toggle_baud()
{
    switch (port->baudRate()) {
    case QSerialPort::Baud9600:
        port->setBaudRate(QSerialPort::Baud115200);
        qDebug() << "切换为Baud115200";
        break;
    case QSerialPort::Baud115200:
        port->setBaudRate(QSerialPort::Baud9600);
        qDebug() << "切换为Baud9600";
        break;
    default: qDebug() << "Unexpected current baud rate. Skipping toggle."; break;
    }
}

// The Android channel.

void serial_thread::onDeviceAttached(QString serial)
{
    qDebug() << "已连接 " << serial;
    if (channel != nullptr)
        channel->deleteLater();
    channel = new AdbStringChannel(QStringLiteral("127.0.0.1"), AdbStringChannel::device_port,
                                   serial, adb_manager.adb_path, this);
    // An attempt dies with its channel.
    QTimer::singleShot(first_attempt_delay, channel,
                       [this, attempted = channel] { first_attempt(attempted); });
    end_android_read();
}

void serial_thread::first_attempt(AdbStringChannel* attempted)
{
    // Another device may have taken the place of this one, whose channel then
    // waits for its deletion.
    if (channel != attempted)
        return;
    if (!channel->open()) {
        qDebug() << "首次连接失败，2秒后重试";
        QTimer::singleShot(second_attempt_delay, channel,
                           [this, attempted] { second_attempt(attempted); });
        return;
    }
    connect(channel, &AdbStringChannel::channelClosed, this,
            [this, attempted] { channel_lost(attempted); });
    const QPointer<AdbStringChannel> announced = attempted;
    emit LED_2_control(true);
    show_box(QMessageBox::Information, box_port_title, QStringLiteral("安卓设备已连接"));
    // It may have been lost while the box was shown, and another have its address.
    if (announced.isNull() || channel != announced)
        return;
    android_connected = 1;
    emit adbchannel_in(channel);
}

void serial_thread::second_attempt(AdbStringChannel* attempted)
{
    // A success is left without consequence: only a device that is detached and
    // attached anew gets its channel announced.
    if (channel != attempted || channel->open())
        return;
    qDebug() << "重试连接失败，放弃";
    emit LED_2_control(false);
    emit adbchannel_out(channel);
    android_connected = 0;
}

void serial_thread::channel_lost(AdbStringChannel* lost)
{
    if (channel != lost)
        return;
    // In spite of the words nothing is tried again: the device has to leave adb's
    // list and come back.
    qDebug() << "通道已关闭，尝试重新连接";
    forget_channel();
    end_android_read();
}

void serial_thread::onDeviceDetached(QString serial)
{
    qDebug() << " 已断开 " << serial;
    AdbStringChannel* const detached = channel;
    if (detached == nullptr)
        return;
    detached->close(); // runs channel_lost when the channel was up
    if (channel != nullptr && channel != detached)
        return; // another device has come while a box was shown
    forget_channel();
    end_android_read();
}

void serial_thread::forget_channel()
{
    if (channel != nullptr)
        channel->deleteLater();
    channel = nullptr;
    emit LED_2_control(false);
    emit adbchannel_out(channel);
    android_connected = 0;
}

/// A read on the lost channel would wait for ever, with the button locked.
void serial_thread::end_android_read()
{
    if (path == read_path::android)
        finish_export(false, read_failed);
}

void serial_thread::android_channel_closed()
{
    // Not within the channel's own signal, for the sake of the box.
    QTimer::singleShot(0, this, [this] {
        if (channel == nullptr || channel->socket == nullptr)
            end_android_read();
    });
}

// The read conversation.

void serial_thread::recv_cmd_from_key(int command, QList<measuringData> new_table_list,
                                      QStringList new_data_msg, QStringList new_data_msg_altitude,
                                      QList<QList<point_msg>> point_msg_all_o)
{
    table_list = new_table_list;
    data_msg = new_data_msg;
    data_msg_altitude = new_data_msg_altitude;
    point_msg_all = point_msg_all_o;
    clear_text();
    if (command == 1)
        read_device();
}

void serial_thread::read_device()
{
    if (port->isOpen() && port->isReadable()) {
        if (!read_serial() || android_connected == 0)
            return;
    } else if (android_connected == 0) {
        show_box(QMessageBox::Warning, box_warning_title, QStringLiteral("串口未连接"));
        return;
    }
    read_android();
}

/// Reads the serial port; whether it was a text download, after which the Android
/// channel has its turn.
bool serial_thread::read_serial()
{
    port->clear();
    // A read of the port listens again after its buffer was full.
    port->readAll();
    log_port_state();
    emit button_control(false);
    emit read_data_set_progressbar(0);

    if (read_text())
        return true;
    if (serial_probe() != 0)
        report_no_answer();
    return false;
}

void serial_thread::log_port_state() const
{
    switch (port->error()) {
    case QSerialPort::NoError: qDebug() << "串口无错误"; break;
    case QSerialPort::DeviceNotFoundError: qDebug() << "串口设备未找到"; break;
    case QSerialPort::PermissionError: qDebug() << "无权访问串口"; break;
    default: qDebug() << "未知串口错误：" << error_name(port->error()); break;
    }
}

void serial_thread::write_text_command()
{
    port->write(text_command.data(), text_command.size());
    qDebug() << "发送数据："
             << "~";
}

/// What the instrument says to the text command, at the current baud rate or, if
/// that is no record, at the other one. Empty when it does not talk text.
QByteArray serial_thread::ask_for_text()
{
    write_text_command();
    ::wait(text_answer_wait);
    QByteArray data = port->readAll();
    log_rx(data);
    if (data.startsWith("\r\n"))
        data.remove(0, 2);
    qDebug() << data.size();
    if (!data.startsWith('n')) {
        toggle_baud();
        write_text_command();
        ::wait(text_answer_wait);
        data = port->readAll();
        log_rx(data);
    }
    qDebug() << "接收数据：" << data;
    return data;
}

/// Reads an instrument of the text protocol; false when this is none.
bool serial_thread::read_text()
{
    // A box that someone else shows holds the waits up, while an instrument goes on
    // talking that knows no stop: nothing may get lost.
    port->setReadBufferSize(text_limit);
    const QByteArray data = ask_for_text();
    if (!data.isEmpty())
        text_loop(data);
    port->setReadBufferSize(port_buffer_size);
    if (data.isEmpty())
        return false;
    emit read_data_finished(table_list, data_msg, data_msg_altitude, point_msg_all);
    emit read_data_set_progressbar(100);
    show_box(QMessageBox::Information, box_read_title, QStringLiteral("数据读取完成"));
    emit button_control(true);
    return true;
}

void serial_thread::read_android()
{
    emit button_control(false);
    emit read_data_set_progressbar(0);
    if (android_probe() != 0)
        report_no_answer();
}

void serial_thread::report_no_answer()
{
    emit read_data_set_progressbar(0);
    show_box(QMessageBox::Warning, box_warning_title, QStringLiteral("数据未读取成功，请再次点击"));
    emit button_control(true);
}

void serial_thread::log_rx(const QByteArray& data) const
{
    if (data.isEmpty())
        return;
    qDebug().noquote()
        << QStringLiteral("SERIAL_RX LEN=%1 HEX=%2").arg(data.size()).arg(hex_text(data));
}

int serial_thread::serial_probe()
{
    emit read_data_set_progressbar(0);
    retry_count = 0;
    export_active = false;
    export_timer->stop();
    serial_rx_buffer.clear();
    disconnect(port, &QSerialPort::readyRead, this, &serial_thread::new_recive_data_from_device);
    // The text command went out at two rates; the probe goes out at the first.
    toggle_baud();
    send_frame(frame::build_frame(frame::reply, 0, no_token), false);

    const QByteArray reply = wait_for_probe_reply();
    qDebug() << "读取到数据      "
             << "长度:" << reply.size();
    if (!is_good_reply(reply, frame::reply))
        return 1;

    serial_rx_buffer.clear();
    connect(port, &QSerialPort::readyRead, this, &serial_thread::new_recive_data_from_device,
            Qt::UniqueConnection);
    device_token = reply.mid(token_offset, token_size);
    retry_count = 0;
    export_active = true;
    path = read_path::serial;
    send_export_request();
    return 0;
}

/// The first frame within 1000 ms, or nothing.
QByteArray serial_thread::wait_for_probe_reply()
{
    QByteArray received;
    QByteArray reply;
    QElapsedTimer elapsed;
    elapsed.start();
    for (qint64 left = probe_wait; left > 0 && port->isOpen();
         left = probe_wait - elapsed.elapsed()) {
        if (port->bytesAvailable() == 0 && !port->waitForReadyRead(static_cast<int>(left)))
            break;
        const QByteArray data = port->readAll();
        log_rx(data);
        received += data;
        if (frame::extract_frame(received, reply))
            break;
    }
    return reply;
}

int serial_thread::android_probe()
{
    emit read_data_set_progressbar(0);
    send_frame(frame::build_frame(frame::reply, 0, no_token), true);
    ::wait(probe_wait);
    const QByteArray answer = read_socket();
    qDebug() << "读取到数据      "
             << "长度:" << answer.size() << "内容:" << hex_text(answer);
    // Neither checksum nor command nor status is looked at on this channel.
    if (answer.size() < token_answer_size || answer.front() != frame::header)
        return 1;

    adb_rx_buffer.clear();
    connect(channel->socket, &QTcpSocket::readyRead, this,
            &serial_thread::new_recive_data_from_android_device, Qt::UniqueConnection);
    // A channel that only its second attempt opened has nobody else to tell.
    connect(channel, &AdbStringChannel::channelClosed, this, &serial_thread::android_channel_closed,
            Qt::UniqueConnection);
    device_token = answer.mid(token_offset, token_size);
    path = read_path::android;
    send_export_request();
    return 0;
}

/// What the socket holds; nothing when it is gone.
QByteArray serial_thread::read_socket()
{
    return channel != nullptr && channel->socket != nullptr ? channel->socket->readAll()
                                                            : QByteArray();
}

void serial_thread::send_export_request()
{
    const bool android = path == read_path::android;
    const bool connected = android ? channel != nullptr && channel->socket != nullptr &&
                                         channel->socket->state() == QTcpSocket::ConnectedState
                                   : port != nullptr && port->isOpen();
    if (!connected) {
        finish_export(false, read_failed);
        return;
    }
    send_frame(frame::build_frame(frame::export_request, 0, device_token), android);
    // The Android channel has no time-out: a silent instrument leaves its read open.
    // While the request was written the read may have ended.
    if (!android && export_active)
        export_timer->start(export_timeout);
}

void serial_thread::send_frame(const QByteArray& raw, bool android)
{
    send_hex(hex_text(raw), android, raw);
}

void serial_thread::send_hex(const QString& hex, bool android, const QByteArray& raw)
{
    QString digits = hex;
    digits.remove(u' ');
    if (digits.isEmpty())
        return;
    if (android ? channel == nullptr || !channel->open() : port == nullptr || !port->isOpen())
        return;
    const QByteArray bytes = QByteArray::fromHex(digits.toLatin1());
    if (bytes.isEmpty()) {
        qWarning() << "[Worker] 无效的十六进制字符串:" << hex;
        return;
    }
    const QString device = android ? channel->device_serial : port->portName();
    qDebug() << "发送数据到" << device << "长度:" << bytes.size() << "内容:" << hex;
    QIODevice* const out = android ? static_cast<QIODevice*>(channel->socket) : port;
    out->write(android ? raw.left(request_size) : bytes);
    if (!out->waitForBytesWritten(write_timeout))
        qWarning() << "[Worker] 写入超时:" << device;
}

void serial_thread::new_recive_data_from_device()
{
    // Bytes that come while a request is written are announced by no signal.
    do {
        const QByteArray data = port->readAll();
        log_rx(data);
        serial_rx_buffer += data;
        QByteArray frame;
        while (frame::extract_frame(serial_rx_buffer, frame)) {
            if (take_serial_frame(frame) == frame_verdict::ended)
                return;
        }
    } while (port->bytesAvailable() > 0);
}

serial_thread::frame_verdict serial_thread::take_serial_frame(const QByteArray& frame)
{
    export_timer->stop();
    const std::uint8_t command = frame::read_u8(frame, 1);
    qDebug() << "serial protocol frame, command:" << command << "length:" << frame.size();
    if (is_export_data(command)) {
        process_export_frame(frame);
        return export_active ? frame_verdict::more : frame_verdict::ended;
    }
    if (is_good_reply(frame, frame::export_request))
        finish_export(true, QStringLiteral("数据读取成功"));
    else
        finish_export(false, read_failed);
    return frame_verdict::ended;
}

void serial_thread::new_recive_data_from_android_device()
{
    // A read may show a box, whose event loop can see the channel and its socket
    // deleted: that must not happen within the socket's own signal.
    if (std::exchange(android_read_due, true))
        return;
    // More of a frame may be on its way.
    QTimer::singleShot(socket_read_delay, this, &serial_thread::read_android_frames);
}

void serial_thread::read_android_frames()
{
    android_read_due = false;
    if (path != read_path::android)
        return; // the read has ended meanwhile
    adb_rx_buffer += read_socket();
    QByteArray frame;
    while (frame::extract_frame(adb_rx_buffer, frame)) {
        if (take_android_frame(frame) == frame_verdict::ended)
            return;
    }
    // Bytes that came while a request was written need not be announced again.
    if (channel != nullptr && channel->socket != nullptr && channel->socket->bytesAvailable() > 0)
        new_recive_data_from_android_device();
}

serial_thread::frame_verdict serial_thread::take_android_frame(const QByteArray& frame)
{
    const std::uint8_t command = frame::read_u8(frame, 1);
    qDebug() << "ADB protocol frame, command:" << command << "length:" << frame.size();
    if (is_export_data(command)) {
        process_export_frame(frame);
        return path == read_path::android ? frame_verdict::more : frame_verdict::ended;
    }
    if (is_good_reply(frame, frame::export_request)) {
        finish_export(true, QStringLiteral("数据读取成功"));
    } else {
        qWarning() << "ADB export received unexpected response:" << hex_text(frame);
        finish_export(false, read_failed);
    }
    return frame_verdict::ended;
}

void serial_thread::serial_export_timeout()
{
    if (!export_active)
        return;
    qWarning() << "serial export timeout, retry:" << retry_count
               << "buffer size:" << serial_rx_buffer.size();
    log_rx(serial_rx_buffer.left(64));
    if (retry_count < retry_limit) {
        ++retry_count;
        send_export_request();
    } else {
        finish_export(false, QStringLiteral("数据读取超时，请重新读取"));
    }
}

void serial_thread::finish_export(bool success, const QString& message)
{
    retry_count = 0;
    export_active = false;
    export_timer->stop();
    serial_rx_buffer.clear();
    adb_rx_buffer.clear();
    record_count = 0;
    if (path != read_path::android) {
        disconnect(port, &QSerialPort::readyRead, this,
                   &serial_thread::new_recive_data_from_device);
    } else if (channel != nullptr && channel->socket != nullptr) {
        disconnect(channel->socket, &QTcpSocket::readyRead, this,
                   &serial_thread::new_recive_data_from_android_device);
    }
    path = read_path::none;
    emit button_control(true);
    emit read_data_set_progressbar(success ? 100 : 0);
    show_box(success ? QMessageBox::Information : QMessageBox::Warning, box_read_title, message);
}

// Measurement frames.

void serial_thread::process_export_frame(QByteArrayView frame)
{
    qDebug() << "into    setp2    !!!!!!!!!!!!!!!!! ";
    const read_path path_before = path;
    const bool good = frame.size() >= frame::overhead &&
                      (frame::read_u8(frame, 1) == frame::measurement_head ? take_head(frame)
                                                                           : take_points(frame));
    if (!good) {
        finish_export(false, QStringLiteral("数据读取失败"));
        return;
    }
    // The read may have ended while others took what it has delivered.
    if (path != path_before)
        return;
    qDebug() << "table_list.size" << table_list.size();
    retry_count = 0;
    export_active = true;
    send_export_request();
}

/// Begins a measurement; false, with the reason in the log, for a bad frame.
bool serial_thread::take_head(QByteArrayView frame)
{
    if (frame.size() != binary_records::head_frame_size) {
        qWarning() << "Invalid 0x2f frame length:" << frame.size();
        return false;
    }
    const binary_records::measurement_head head = binary_records::read_head(frame);
    if (timezone_device_to_code(head.timezone).isEmpty() ||
        currency_device_to_code(head.currency).isEmpty()) {
        qWarning() << "Invalid 0x2f parameter value, timezone:" << head.timezone
                   << "price unit:" << head.currency;
        return false;
    }
    points_received = 0;
    points_total = head.points;
    current_plain.clear();
    current_lines.clear();
    current_points.clear();
    if (head.kind >= measurement_kinds.size()) {
        qWarning() << "Unknown export measurement mode:" << head.kind;
        return false;
    }
    record_all = head.records;
    if (mode_device_to_code(head.mode).isEmpty()) {
        qWarning() << "Invalid 0x2f measurement method:" << head.mode;
        return false;
    }
    table_list.append(binary_records::to_record(head));
    return true;
}

/// Adds points to the measurement in progress; false, with the reason in the log
/// and nothing of the frame kept, for a bad frame.
bool serial_thread::take_points(QByteArrayView frame)
{
    const int length = frame::read_u16(frame, 4);
    const int points_length = length - binary_records::points_overhead;
    if (table_list.isEmpty() || points_total <= points_received ||
        frame.size() != length + frame::overhead || points_length <= 0 ||
        points_length % binary_records::point_size != 0) {
        qWarning() << "Invalid 0x30 frame, frame length:" << frame.size()
                   << "data length:" << length;
        return false;
    }
    const int count = points_length / binary_records::point_size;
    const std::uint32_t remaining = points_total - points_received;
    if (count > binary_records::max_points || static_cast<std::uint32_t>(count) > remaining) {
        qWarning() << "Invalid 0x30 point count:" << count << "remaining:" << remaining;
        return false;
    }
    const std::uint8_t mode = binary_records::points_mode(frame, count);
    const auto item_mode =
        static_cast<std::uint8_t>(mode_code_to_device(table_list.constLast().mode));
    if (mode != item_mode) {
        qWarning() << "0x30 measurement mode does not match 0x2f, point mode:" << mode
                   << "item mode:" << item_mode;
    }
    for (int index = 0; index < count; ++index) {
        const std::uint8_t status = binary_records::read_point(frame, index).status;
        if (status >= 10 && status <= 254) {
            qWarning() << "Invalid 0x30 positioning status:" << status;
            return false;
        }
    }
    store_points(frame, count);
    if (points_received == points_total)
        finish_measurement();
    return true;
}

void serial_thread::store_points(QByteArrayView frame, int count)
{
    const QDateTime start =
        QDateTime::fromString(table_list.constLast().time, QStringLiteral("yyyy-M-d H:m:s"));
    for (int index = 0; index < count; ++index) {
        const binary_records::measured_point point = binary_records::read_point(frame, index);
        const QString longitude = binary_records::degrees_text(point.longitude);
        const QString latitude = binary_records::degrees_text(point.latitude);
        const QString altitude = binary_records::altitude_text(point.altitude_cm);
        const QString time = start.isValid()
                                 ? start.addSecs(point.seconds).toString(u"yyyy-MM-dd HH:mm:ss")
                                 : QString::number(point.seconds);
        current_plain << longitude << latitude;
        current_lines << longitude + u',' + latitude + u',' + altitude + u'\n';
        current_points << binary_records::to_point_msg(point, time);
    }
    points_received += static_cast<std::uint32_t>(count);
}

/// The measurement in progress is whole: hands it on with all others.
void serial_thread::finish_measurement()
{
    points_received = 0;
    data_msg.append(current_plain.join(u','));
    data_msg_altitude.append(current_lines.join(QString()));
    point_msg_all.append(current_points);
    ++record_count;
    emit read_data_finished(table_list, data_msg, data_msg_altitude, point_msg_all);
    if (record_all != 0)
        emit read_data_set_progressbar(static_cast<int>(qint64{record_count} * 100 / record_all));
    qDebug() << "record_count" << record_count << "record_all" << record_all;
}

// Text records.

void serial_thread::text_loop(QByteArray data)
{
    qint64 received = 0;
    while (!data.isEmpty()) {
        received += data.size();
        if (received > text_limit) {
            qWarning() << "text download given up, bytes received:" << received;
            clear_text();
            return;
        }
        text_buffer += QString::fromUtf8(data);
        take_text();
        ::wait(text_pause);
        data = port->readAll();
        log_rx(data);
    }
}

void serial_thread::clear_text()
{
    text_buffer.clear();
    text_seen = {};
}

/// Parses what has been gathered once it holds as many records as are announced.
void serial_thread::take_text()
{
    const QStringView fresh = QStringView(text_buffer).mid(text_seen.size);
    if (text_seen.announced < 0) {
        const qsizetype at = fresh.indexOf(u'N');
        text_seen.announced = at < 0 ? at : text_seen.size + at;
    }
    text_seen.records += fresh.count(u'!');
    text_seen.size = text_buffer.size();
    if (text_seen.announced < 0) {
        qDebug() << "The character 'N' was not found in the string.";
        return;
    }
    const int total = text_buffer.mid(text_seen.announced + 1, 4).toInt();
    const qsizetype count = text_seen.records;
    // Less than four digits before a comma, or no number at all: nothing can be
    // said about the progress, and more may come.
    if (total == 0)
        return;
    emit read_data_set_progressbar(static_cast<int>(count * 100 / total));
    if (total > count)
        return;
    text_seen = {}; // what stays behind is looked at anew
    if (text_buffer.startsWith(u"\r\n"))
        text_buffer.remove(0, 2);
    if (text_buffer.startsWith(u'\n'))
        text_buffer.remove(0, 1);
    for (qsizetype end = text_buffer.indexOf(u'!'); end >= 0; end = text_buffer.indexOf(u'!')) {
        const QString record = text_buffer.left(end + 1);
        text_buffer.remove(0, end + 1);
        parse_record(record);
    }
}

void serial_thread::parse_record(const QString& text)
{
    qDebug() << text;
    if (!text_records::begins_as_record(text))
        return;
    const auto recognised = text_records::recognise(text);
    if (!recognised) {
        qDebug() << "Unknown format: " << text;
        return;
    }
    const auto& [what, record_pattern, point_pattern] = *recognised;
    switch (what) {
    case text_records::kind::area: parse_area_record(record_pattern, point_pattern, text); break;
    case text_records::kind::distance:
        parse_distance_record(record_pattern, point_pattern, text);
        break;
    case text_records::kind::waypoint:
        parse_waypoint_record(record_pattern, point_pattern, text);
        break;
    case text_records::kind::route: parse_route_record(record_pattern, point_pattern, text); break;
    case text_records::kind::track: parse_track_record(record_pattern, point_pattern, text); break;
    case text_records::kind::staking:
        parse_staking_record(record_pattern, point_pattern, text);
        break;
    }
}

int serial_thread::parse_area_record(const QRegularExpression& record_pattern,
                                     const QRegularExpression& point_pattern, const QString& text)
{
    return add_text_record(text_records::kind::area, record_pattern, point_pattern, text);
}

int serial_thread::parse_distance_record(const QRegularExpression& record_pattern,
                                         const QRegularExpression& point_pattern,
                                         const QString& text)
{
    return add_text_record(text_records::kind::distance, record_pattern, point_pattern, text);
}

int serial_thread::parse_waypoint_record(const QRegularExpression& record_pattern,
                                         const QRegularExpression& point_pattern,
                                         const QString& text)
{
    return add_text_record(text_records::kind::waypoint, record_pattern, point_pattern, text);
}

int serial_thread::parse_route_record(const QRegularExpression& record_pattern,
                                      const QRegularExpression& point_pattern, const QString& text)
{
    return add_text_record(text_records::kind::route, record_pattern, point_pattern, text);
}

int serial_thread::parse_track_record(const QRegularExpression& record_pattern,
                                      const QRegularExpression& point_pattern, const QString& text)
{
    return add_text_record(text_records::kind::track, record_pattern, point_pattern, text);
}

int serial_thread::parse_staking_record(const QRegularExpression& record_pattern,
                                        const QRegularExpression& point_pattern,
                                        const QString& text)
{
    return add_text_record(text_records::kind::staking, record_pattern, point_pattern, text);
}

int serial_thread::add_text_record(text_records::kind what,
                                   const QRegularExpression& record_pattern,
                                   const QRegularExpression& point_pattern, const QString& text)
{
    const auto measurement = text_records::read(what, record_pattern, point_pattern, text);
    if (!measurement)
        return 1;
    if (has_text_record(measurement->record, measurement->lines)) {
        if (what == text_records::kind::waypoint)
            qDebug() << "table_list has this data!";
        return 1;
    }
    table_list.append(measurement->record);
    data_msg.append(measurement->plain);
    data_msg_altitude.append(measurement->lines);
    point_msg_all.append(measurement->points);
    return 0;
}

/// Whether a measurement with the same fields and points is there already.
bool serial_thread::has_text_record(const measuringData& record, const QString& lines) const
{
    // A record without coordinate text, at the end, equals none.
    const qsizetype known = qMin(table_list.size(), data_msg_altitude.size());
    for (qsizetype index = 0; index < known; ++index) {
        const measuringData& one = table_list[index];
        if (one.name == record.name && one.time == record.time && one.distance == record.distance &&
            one.numrecord == record.numrecord && one.areameter == record.areameter &&
            data_msg_altitude[index] == lines)
            return true;
    }
    return false;
}
