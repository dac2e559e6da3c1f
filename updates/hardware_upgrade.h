#pragma once

#include "updates/firmware_image.h"
#include "updates/ymodem.h"

#include <QString>
#include <QThread>
#include <QTimer>
#include <QUrl>

#include <array>
#include <cstdint>
#include <memory>

class QNetworkAccessManager;
class QNetworkReply;
class QSerialPort;

namespace feeds {
struct image;
}

/// Replaces the instrument's firmware over the serial line: its boot loader is
/// started by a text and takes the image by YMODEM. The image comes from a file
/// or from the update host's list for the instrument's version.
///
/// Results and failures are told in boxes, in Chinese whatever the language. A
/// transfer that fails begins again by itself.
class hardware_upgrade : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE(<QNetworkReply>)

public:
    explicit hardware_upgrade(QObject* parent = nullptr);
    ~hardware_upgrade() override;

    QSerialPort* port;              ///< the program's one serial port, shared by serial_thread
    QNetworkAccessManager* manager; ///< fetches the list
    QString file_name;              ///< of the image, without a folder
    std::unique_ptr<std::array<char, firmware_image::image_limit>> image;
    qint32 image_length = 0;  ///< bytes of the image in use
    std::uint8_t active = 0;  ///< 1 while the boot loader's bytes are looked at
    ymodem::sender transfer;  ///< where the transfer stands
    std::uint8_t pending = 0; ///< 1 from the first block until success
    QTimer* transfer_timer;   ///< single-shot, covers a whole transfer
    QString device_version;   ///< the instrument's, from the look at the list
    QString file_url;         ///< of the chosen image
    QString local_name;       ///< under which the image is stored
    QString url_folder;       ///< of the list's images, without "/" at its end
    QString url_file;         ///< name of the list's last image

    /// The list of images, by default the update host's.
    QUrl list_url;
    /// Where fetched images go, by default the program's folder.
    QString folder;

    /// Loads an image, by its suffix Intel HEX ("hex", in lower case) or binary, and
    /// begins to send it.
    void load_file(const QString& path);

signals:
    void finished(); ///< declared, never emitted
    void add_comboBox_value(QString value);
    void updata_progress(int percent);

public slots:
    /// Takes one byte from the port, and drops it while no transfer runs.
    void serial_read();
    /// Takes the list of images.
    void reply_finished(QNetworkReply* reply);
    /// Asks the instrument for its version and the update host for its images.
    void recv_form_cloud_updata();
    /// Lets the user choose a file and sends it.
    void recv_form_local_updata();
    /// Fetches the image of that name, and sends what a former press has fetched.
    void recv_form_sure(QString combobox);

protected:
    void run() override;

private:
    [[nodiscard]] bool check_port(bool for_writing);
    void listen();
    void stop_listening();
    [[nodiscard]] QByteArray ask_version(const QByteArray& request);
    void offer_image(const feeds::image& offered);
    void fetch(const QUrl& url);
    void store(QNetworkReply& reply, const QString& name);
    void start_transfer();
    void transfer_timed_out();

    bool m_listening = false; ///< readyRead of the port is connected
    bool m_asking = false;    ///< a version is being waited for
};
