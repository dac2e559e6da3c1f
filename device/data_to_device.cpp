#include "device/data_to_device.h"

#include "device/adb_string_channel.h"
#include "device/frame.h"
#include "device/message_box.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QSerialPort>
#include <QStandardItemModel>
#include <QTcpSocket>

namespace {

// Milliseconds.
constexpr int probe_timeout = 800;
constexpr int ack_timeout = 15000;
constexpr int write_timeout = 1000;
constexpr int read_wait = 50;

constexpr int points_per_serial_frame = 51;
constexpr int points_per_android_frame = 1000;

/// What an upload probe carries in place of a device token.
constexpr QByteArrayView no_token = "\xFF\xFF\xFF\xFF";
constexpr std::uint8_t no_status = 0xFF;
/// The instrument does not know the kind of the measurement.
constexpr std::uint8_t status_unsupported = 2;
/// Longer Mode text is not logged.
constexpr qsizetype logged_text = 4096;

QString not_connected()
{
    return QStringLiteral("通道未连接");
}

void warn(const QString& title, const QString& text)
{
    show_message_box(QMessageBox::Warning, title, text);
}

void warn(const QString& text)
{
    warn(QStringLiteral("警告"), text);
}

bool is_open(const data_to_device::device_pointer& device)
{
    return !device.isNull() && device->isOpen();
}

/// Two hexadecimal digits.
QString hex(std::uint8_t byte)
{
    return QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0'));
}

/// An answer that came too late must not be taken for one to what is sent next.
void throw_away_input(const data_to_device::device_pointer& device)
{
    device->waitForReadyRead(0); // fetches what the system holds
    if (is_open(device))
        device->readAll();
}

QList<int> ticked_rows(const QStandardItemModel& model)
{
    QList<int> rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        if (model.index(row, 0).data().toBool())
            rows.append(row);
    }
    return rows;
}

void warn_about_row(int row, const QString& error)
{
    warn(QStringLiteral("第%1条数据%2").arg(QString::number(row + 1), error));
}

} // namespace

// What the user sees.

void data_to_device::import_data_to_device(QStandardItemModel* model,
                                           QList<measuringData> Table_list,
                                           QStringList Data_msg_altitude)
{
    if (model == nullptr) {
        warn(QStringLiteral("数据表为空"));
        return;
    }
    QList<route> ways;
    if (QIODevice* const serial = usable_port(); serial != nullptr) {
        ways.append(
            {serial, points_per_serial_frame, "普通串口上传失败：%1", "Mode方式上传失败：%1"});
    }
    if (QIODevice* const android = usable_socket(); android != nullptr) {
        ways.append({android, points_per_android_frame, "安卓设备上传失败：%1",
                     "安卓设备Mode方式上传失败：%1"});
    }
    if (ways.isEmpty()) {
        warn(QStringLiteral("串口未连接"));
        return;
    }
    shipment load{.rows = ticked_rows(*model),
                  .table_list = Table_list,
                  .data_msg_altitude = Data_msg_altitude,
                  .items = {},
                  .mode_text = {}};
    if (load.rows.isEmpty()) {
        warn(QStringLiteral("未勾选数据"));
        return;
    }
    if (load.rows.constLast() >= qMin(Table_list.size(), Data_msg_altitude.size())) {
        warn(QStringLiteral("勾选数据超出缓存范围"));
        return;
    }
    qDebug().noquote() << QStringLiteral("[import] selected records=%1").arg(load.rows.size());
    for (const route& way : ways) {
        if (!upload(way, load))
            return;
    }
    show_message_box(QMessageBox::Information, QStringLiteral("上传"),
                     QStringLiteral("上传数据成功"));
}

QIODevice* data_to_device::usable_port() const
{
    const bool usable = port != nullptr && port->isOpen() && port->isReadable();
    qDebug() << "[import] serial usable:" << usable;
    return usable ? port : nullptr;
}

QIODevice* data_to_device::usable_socket() const
{
    const bool usable = !channel.isNull() && channel->socket != nullptr &&
                        channel->socket->state() == QTcpSocket::ConnectedState;
    qDebug() << "[import] android usable:" << usable;
    return usable ? channel->socket : nullptr;
}

bool data_to_device::upload(const route& way, shipment& load)
{
    const bool packets = probe_packet_protocol(way.device);
    QString error;
    bool sent = false;
    if (packets) {
        if (!load.items)
            load.items = build_items(load);
        if (!load.items)
            return false;
        sent = send_packets(way.device, *load.items, way.points_per_frame, error);
    } else {
        if (!load.mode_text)
            load.mode_text = build_mode_text(load);
        if (!load.mode_text)
            return false;
        qDebug().noquote()
            << QStringLiteral("[import] legacy Mode text chars=%1").arg(load.mode_text->size());
        sent = send_mode_text(way.device, *load.mode_text, error);
    }
    if (!sent) {
        warn(QStringLiteral("上传"),
             QString::fromUtf8(packets ? way.packet_message : way.mode_message).arg(error));
    }
    return sent;
}

/// The items of all rows; nothing, after a box, where a row cannot be sent.
std::optional<QList<data_to_device::UploadItem>> data_to_device::build_items(const shipment& load)
{
    QList<UploadItem> items;
    for (const int row : load.rows) {
        QString error;
        UploadItem item;
        if (!upload_records::build_upload_item(load.table_list[row], load.data_msg_altitude[row],
                                               item, error)) {
            warn_about_row(row, error);
            return std::nullopt;
        }
        items.append(item);
    }
    return items;
}

/// The Mode text of all rows; nothing, after a box, where a row cannot be sent.
std::optional<QString> data_to_device::build_mode_text(const shipment& load)
{
    QString text;
    for (const int row : load.rows) {
        QString error;
        if (!upload_records::append_mode_text(text, load.table_list[row],
                                              load.data_msg_altitude[row], error)) {
            warn_about_row(row, error);
            return std::nullopt;
        }
    }
    return text;
}

// The conversation.

bool data_to_device::probe_packet_protocol(const device_pointer& device)
{
    if (!is_open(device))
        return false;
    qDebug().noquote() << QStringLiteral("[import] probe packet protocol cmd=0x%1 timeoutMs=%2")
                              .arg(hex(frame::upload_probe), QString::number(probe_timeout));
    throw_away_input(device);
    QString error;
    if (!write_all(device, frame::build_frame(frame::upload_probe, 0, no_token), error)) {
        qDebug() << "[import] packet protocol probe write failed:" << error;
        return false;
    }
    std::uint8_t device_type = 0;
    std::uint8_t status = no_status;
    if (!wait_ack(device, frame::upload_probe, probe_timeout, error, device_type, status)) {
        qDebug() << "[import] packet protocol probe failed, legacy Mode will be sent:" << error;
        return false;
    }
    qDebug().noquote() << "[import] packet protocol selected, device type:"
                       << QStringLiteral("0x%1").arg(hex(device_type));
    return true;
}

bool data_to_device::send_packets(const device_pointer& device, const QList<UploadItem>& items,
                                  int points_per_frame, QString& error)
{
    constexpr qsizetype item_size = 36;
    qDebug().noquote() << QStringLiteral("[import] send packet records=%1 pointsPerFrame=%2")
                              .arg(items.size())
                              .arg(points_per_frame);
    std::uint8_t sequence = 0;
    for (qsizetype index = 0; index < items.size(); ++index) {
        const UploadItem& item = items[index];
        const QString place = QStringLiteral("%1/%2").arg(index + 1).arg(items.size());
        qDebug().noquote() << QStringLiteral(
                                  "[import] packet record %1 method=%2 oldMode=%3 points=%4")
                                  .arg(place, QString::number(item.kind), item.old_mode,
                                       QString::number(item.points.size()));
        const QByteArray data = upload_records::item_data(item, items.size());
        if (data.size() != item_size) {
            qWarning() << "[import] item payload length mismatch:" << data.size()
                       << "expected:" << item_size;
        }
        std::uint8_t status = no_status;
        if (send_and_wait_ack(device, frame::build_frame(frame::upload_item, sequence++, data),
                              frame::upload_item, error, status)) {
            if (!send_points(device, item, points_per_frame, sequence, error))
                return false;
            qDebug().noquote() << QStringLiteral("[import] packet record %1 done").arg(place);
        } else if (status == status_unsupported) {
            qDebug().noquote()
                << QStringLiteral("[import] device rejected record %1 as unsupported type, skipped")
                       .arg(place);
        } else {
            return false;
        }
    }
    return true;
}

bool data_to_device::send_points(const device_pointer& device, const UploadItem& item,
                                 int points_per_frame, std::uint8_t& sequence, QString& error)
{
    for (qsizetype first = 0; first < item.points.size(); first += points_per_frame) {
        const qsizetype count = qMin<qsizetype>(points_per_frame, item.points.size() - first);
        const QByteArray points = frame::build_frame(
            frame::upload_points, sequence++, upload_records::points_data(item, first, count));
        std::uint8_t status = no_status;
        if (!send_and_wait_ack(device, points, frame::upload_points, error, status))
            return false;
    }
    return true;
}

bool data_to_device::send_and_wait_ack(const device_pointer& device, const QByteArray& frame,
                                       std::uint8_t command, QString& error, std::uint8_t& status)
{
    status = no_status;
    if (!is_open(device)) {
        error = not_connected();
        return false;
    }
    throw_away_input(device);
    if (!write_all(device, frame, error))
        return false;
    qDebug().noquote() << QStringLiteral("[import] wait ack cmd=0x%1 frameBytes=%2 timeoutMs=%3")
                              .arg(hex(command), QString::number(frame.size()),
                                   QString::number(ack_timeout));
    QElapsedTimer elapsed;
    elapsed.start();
    std::uint8_t device_type = 0;
    const bool good = wait_ack(device, command, ack_timeout, error, device_type, status);
    const QString outcome = QStringLiteral("[import] ack %1 cmd=0x%2 elapsedMs=%3 status=0x%4")
                                .arg(good ? QStringLiteral("ok") : QStringLiteral("failed"),
                                     hex(command), QString::number(elapsed.elapsed()), hex(status));
    qDebug().noquote() << (good ? outcome : outcome + QStringLiteral(" error=") + error);
    return good;
}

bool data_to_device::send_mode_text(const device_pointer& device, const QString& text,
                                    QString& error)
{
    qDebug().noquote()
        << QStringLiteral("[import] send legacy Mode text chars=%1").arg(text.size());
    if (text.size() <= logged_text)
        qDebug().noquote() << QStringLiteral("[import] legacy Mode payload: ") + text;
    return write_all(device, text.toUtf8(), error);
}

bool data_to_device::write_all(const device_pointer& device, const QByteArray& bytes,
                               QString& error)
{
    if (!is_open(device)) {
        error = not_connected();
        return false;
    }
    qsizetype done = 0;
    // What the device has taken may still wait in its buffer.
    while (done < bytes.size() || device->bytesToWrite() > 0) {
        if (done < bytes.size()) {
            const qint64 written = device->write(bytes.sliced(done));
            if (written < 1) {
                error = QStringLiteral("通道写入失败");
                return false;
            }
            done += written;
        }
        if (!device->waitForBytesWritten(write_timeout) || device.isNull()) {
            error = QStringLiteral("通道写入超时");
            return false;
        }
    }
    return true;
}

bool data_to_device::wait_ack(const device_pointer& device, std::uint8_t command, int timeout_ms,
                              QString& error, std::uint8_t& device_type, std::uint8_t& status)
{
    status = no_status;
    QByteArray received;
    QElapsedTimer elapsed;
    elapsed.start();
    while (elapsed.elapsed() < timeout_ms) {
        // A cable that is pulled out closes the device: nothing more will come.
        if (!is_open(device)) {
            error = not_connected();
            return false;
        }
        if (device->bytesAvailable() == 0 && !device->waitForReadyRead(read_wait))
            continue;
        if (is_open(device))
            received += device->readAll();
        upload_records::acknowledgement answer{};
        if (!upload_records::take_acknowledgement(received, command, answer))
            continue;
        status = answer.status;
        if (status == 0) {
            device_type = answer.device_type;
            return true;
        }
        error = QStringLiteral("设备拒绝命令0x%1，状态%2，可能是不支持该导入类型或数据格式错误")
                    .arg(hex(command), QString::number(status));
        return false;
    }
    error = QStringLiteral("等待设备响应0x%1超时").arg(hex(command));
    return false;
}

void data_to_device::channel_in(AdbStringChannel* serial)
{
    channel = serial;
}

void data_to_device::channel_out(AdbStringChannel* /*serial*/)
{
    channel = nullptr;
}

void data_to_device::run()
{
    qDebug() << "data_to_device ID:" << QThread::currentThreadId();
}
