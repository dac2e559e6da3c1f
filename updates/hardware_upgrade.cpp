#include "updates/hardware_upgrade.h"

#include "update_host.h"
#include "updates/download.h"
#include "updates/feeds.h"

#include <QApplication>
#include <QDebug>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMetaEnum>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QScopedValueRollback>
#include <QSerialPort>

namespace {

constexpr int answer_passes = 3;
constexpr int answer_wait_ms = 500;
constexpr int confirm_wait_ms = 200;
/// Time for each whole KiB of an image: at 115200 baud it takes half of it.
constexpr int time_per_kib_ms = 200;

const QString warning_title = QStringLiteral("警告");
const QString notice_title = QStringLiteral("提示");
const QString upgrade_title = QStringLiteral("升级");
const QString not_supported = QStringLiteral("本设备不支持升级");

void warn(const QString& text)
{
    QMessageBox::warning(QApplication::activeWindow(), warning_title, text);
}

void notify(const QString& title, const QString& text)
{
    QMessageBox::information(QApplication::activeWindow(), title, text);
}

/// Waits while everything else goes on.
void pause(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

void log_error_state(QSerialPort::SerialPortError error)
{
    switch (error) {
    case QSerialPort::NoError: qDebug() << "串口无错误"; break;
    case QSerialPort::DeviceNotFoundError: qDebug() << "串口设备未找到"; break;
    case QSerialPort::PermissionError: qDebug() << "无权访问串口"; break;
    default:
        qDebug() << "未知串口错误："
                 << QMetaEnum::fromType<QSerialPort::SerialPortError>().valueToKey(error);
    }
}

} // namespace

hardware_upgrade::hardware_upgrade(QObject* parent)
    : QThread(parent), port(new QSerialPort(this)), manager(new QNetworkAccessManager(this)),
      image(std::make_unique<std::array<char, firmware_image::image_limit>>()),
      transfer_timer(new QTimer(this)),
      list_url(update_host::address(QStringLiteral("/hardware_update.json"))),
      folder(QCoreApplication::applicationDirPath())
{
    qDebug() << "Alloc successfully";
    transfer_timer->setSingleShot(true);
    connect(transfer_timer, &QTimer::timeout, this, &hardware_upgrade::transfer_timed_out);
    connect(manager, &QNetworkAccessManager::finished, this, &hardware_upgrade::reply_finished);
}

hardware_upgrade::~hardware_upgrade()
{
    QThread::wait();
}

void hardware_upgrade::run()
{
    // The label is the one in force: this worker has none of its own.
    qDebug() << "software_upgrade ID:" << QThread::currentThreadId();
}

// The instrument's version

bool hardware_upgrade::check_port(bool for_writing)
{
    log_error_state(port->error());
    if (port->isOpen() && port->isReadable() && (!for_writing || port->isWritable()))
        return true;
    warn(QStringLiteral("串口未连接"));
    return false;
}

QByteArray hardware_upgrade::ask_version(const QByteArray& request)
{
    port->write(request);
    qDebug() << "send version to device";
    for (int pass = 0; pass < answer_passes; ++pass) {
        const QByteArray received = port->readAll();
        qDebug() << "recive data from device:" << received;
        pause(answer_wait_ms);
        if (!received.isEmpty())
            return received;
    }
    return {};
}

// The list on the update host

void hardware_upgrade::recv_form_cloud_updata()
{
    if (m_asking)
        return;
    const QScopedValueRollback asking(m_asking, true);
    if (!check_port(false))
        return;
    stop_listening();
    const QByteArray answer = ask_version("version");
    if (answer.isEmpty()) {
        notify(notice_title, not_supported);
        return;
    }
    const QString text = QString::fromUtf8(answer);
    const qsizetype end = text.indexOf(QChar::Null);
    device_version = text.left(end);
    if (end >= 0)
        qDebug() << "截取的字符串: " << device_version;
    else
        qDebug() << "没有找到 \\0，原始字符串: " << device_version;
    manager->get(download::list_request(list_url));
}

void hardware_upgrade::reply_finished(QNetworkReply* reply)
{
    // A request that failed has an empty body, which is no JSON.
    const QByteArray body = reply->readAll();
    reply->deleteLater();
    qDebug() << QString::fromUtf8(body);
    QString error;
    const auto images = feeds::read_images(body, device_version, error);
    if (!images && !error.isEmpty()) {
        const QString title = QStringLiteral("检查失败");
        QMessageBox::critical(QApplication::activeWindow(), title,
                              QStringLiteral("服务器地址错误或JSON格式错误!"));
        QMessageBox::critical(QApplication::activeWindow(), title, error);
        return;
    }
    if (!images) {
        qDebug() << "Key" << device_version << "not found!";
        notify(notice_title, not_supported);
        return;
    }
    for (const feeds::image& one : *images)
        offer_image(one);
}

void hardware_upgrade::offer_image(const feeds::image& offered)
{
    const qsizetype slash = offered.url.lastIndexOf(QLatin1Char('/'));
    url_file = offered.url.mid(slash + 1);
    if (slash >= 0) {
        url_folder = offered.url.left(slash);
        qDebug() << "路径: " << url_folder;
        qDebug() << "文件名: " << url_file;
    } else {
        qDebug() << "未找到 '/' 符号";
    }
    emit add_comboBox_value(url_file);
    qDebug().nospace() << device_version << " " << qPrintable(offered.key) << ": " << offered.url;
}

void hardware_upgrade::recv_form_sure(QString combobox)
{
    if (m_asking)
        return;
    const QScopedValueRollback asking(m_asking, true);
    // All images share the folder of the list's last one.
    file_url = url_folder + QLatin1Char('/') + combobox;
    if (file_url.isEmpty()) {
        notify(warning_title, QStringLiteral("请先点击-云端升级-按钮"));
        return;
    }
    pause(confirm_wait_ms);
    const QByteArray answer = ask_version("version");
    if (answer.isEmpty()) {
        notify(notice_title, QStringLiteral("本设备不支持升级或设备未连接"));
        return;
    }
    const qsizetype end = answer.indexOf('\0');
    const QString version = QString::fromUtf8(answer.left(qMax(end, 0)));
    if (end >= 0)
        qDebug() << "截取的字符串: " << version;
    else
        qDebug() << "没有找到 \\0，原始字符串: " << answer;
    if (version != device_version) {
        notify(notice_title, not_supported);
        return;
    }
    const QUrl url(file_url);
    local_name = download::file_name(url);
    fetch(url);
    // What is loaded is what an earlier press has fetched: the first press for a
    // new file finds none yet.
    load_file(folder + QLatin1Char('/') + local_name);
}

void hardware_upgrade::fetch(const QUrl& url)
{
    auto* const loader = new QNetworkAccessManager(this);
    connect(loader, &QNetworkAccessManager::finished, this,
            [this, loader, name = local_name](QNetworkReply* reply) {
                store(*reply, name);
                reply->deleteLater();
                loader->deleteLater();
            });
    loader->get(download::request_for(url));
}

void hardware_upgrade::store(QNetworkReply& reply, const QString& name)
{
    if (reply.error() != QNetworkReply::NoError) {
        qDebug() << "Download failed: " << reply.errorString();
        warn(QStringLiteral("文件下载失败"));
        return;
    }
    const QString path = folder + QLatin1Char('/') + name;
    if (!download::write_file(path, reply.readAll())) {
        qDebug() << "Failed to open the file for writing.";
        warn(QStringLiteral("文件打开失败"));
        return;
    }
    qDebug() << "Downloaded successfully to:" << path;
}

// A local file

void hardware_upgrade::recv_form_local_updata()
{
    if (m_asking)
        return;
    const QScopedValueRollback asking(m_asking, true);
    if (!check_port(true))
        return;
    stop_listening();
    // Any answer will do.
    if (ask_version("version\r\n").isEmpty()) {
        notify(notice_title, not_supported);
        return;
    }
    const QString path =
        QFileDialog::getOpenFileName(QApplication::activeWindow(), QStringLiteral("file selection"),
                                     QStringLiteral("."), QStringLiteral("file(*.hex *.bin)"));
    if (path.isEmpty()) {
        warn(QStringLiteral("文件打开失败"));
        qDebug() << "Open file fail.";
        return;
    }
    load_file(path);
}

void hardware_upgrade::load_file(const QString& path)
{
    using firmware_image::outcome;
    struct message
    {
        const char* box;
        const char* log;
    };
    const QFileInfo file(path);
    const bool is_hex = file.suffix() == QLatin1String("hex");
    const auto tell = [](const message& what) {
        warn(QString::fromUtf8(what.box));
        qDebug() << what.log;
    };
    const firmware_image::result loaded =
        is_hex ? firmware_image::load_hex(path, *image) : firmware_image::load_binary(path, *image);
    switch (loaded.what) {
    case outcome::loaded: break;
    case outcome::not_opened:
        return tell(is_hex ? message{"hex文件打开失败", "hex file open fail"}
                           : message{"bin文件打开失败", "bin file open failed"});
    case outcome::too_large:
        return tell(is_hex ? message{"hex文件过大", "hex file too large"}
                           : message{"bin文件过大", "bin file too large"});
    case outcome::malformed: return tell({"hex文件格式错误", "hex file malformed"});
    }
    if (loaded.length == 0)
        return tell({"固件文件中没有数据", "firmware file without data"});
    file_name = file.fileName();
    image_length = loaded.length;
    start_transfer();
}

// The transfer

void hardware_upgrade::listen()
{
    connect(port, &QSerialPort::readyRead, this, &hardware_upgrade::serial_read,
            Qt::UniqueConnection);
    m_listening = true;
}

void hardware_upgrade::stop_listening()
{
    disconnect(port, &QSerialPort::readyRead, this, &hardware_upgrade::serial_read);
    m_listening = false;
}

void hardware_upgrade::start_transfer()
{
    port->readAll(); // what the instrument said before is no answer to this
    listen();
    active = 1;
    transfer = ymodem::sender(file_name, QByteArrayView(image->data(), image_length));
    port->write("iapstart");
    qDebug() << "send iapstart to device";
}

void hardware_upgrade::serial_read()
{
    char byte = 0;
    if (port->read(&byte, 1) != 1 || active == 0)
        return;
    // Bytes that arrive together are announced once: come back for the next one. While
    // nothing runs each announcement costs a byte, and no more.
    if (port->bytesAvailable() > 0)
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_listening)
                    serial_read();
            },
            Qt::QueuedConnection);

    const ymodem::sender::step step = transfer.take(byte);
    active = step.goes_on ? 1 : 0;
    if (!step.send.isEmpty())
        port->write(step.send);
    switch (step.what) {
    case ymodem::sender::event::none: break;
    case ymodem::sender::event::header_sent:
        pending = 1;
        qDebug() << "file lenth" << image_length;
        transfer_timer->start(image_length / 1024 * time_per_kib_ms);
        break;
    case ymodem::sender::event::data_sent:
        qDebug() << transfer.percent();
        emit updata_progress(transfer.percent());
        break;
    case ymodem::sender::event::finished:
        pending = 0;
        stop_listening(); // what the port brings from now on is for others
        notify(upgrade_title, QStringLiteral("设备升级成功"));
        break;
    }
}

void hardware_upgrade::transfer_timed_out()
{
    if (pending == 0)
        return;
    stop_listening();
    QMessageBox::warning(QApplication::activeWindow(), upgrade_title,
                         QStringLiteral("设备升级失败，重新升级"));
    start_transfer();
}
