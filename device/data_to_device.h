#pragma once

#include "core/records.h"
#include "device/upload_records.h"

#include <QPointer>
#include <QThread>

#include <cstdint>
#include <optional>

class AdbStringChannel;
class QIODevice;
class QSerialPort;
class QStandardItemModel;

/// Sends ticked measurements to the instrument, over the serial port, the Android
/// channel, or one after the other where both are up. Each instrument is asked
/// which protocol it understands: packets in the instrument's binary frames, or,
/// where nothing answers, the Mode text of older ones.
///
/// Everything blocks: the interface stands still, up to 15 s for a frame. Every
/// error ends the upload with one box and leaves what the instrument has accepted.
///
/// Port and channel are shared with serial_thread and nothing guards them. An
/// upload in the middle of a binary read takes the read's frames for noise and
/// loses its own answers to the read, which then fails; the upload finds no packet
/// protocol and sends Mode text. In the middle of a text read the upload throws
/// away what has come in, and the read ends in the next pause. A read cannot begin
/// during an upload, but for a box that something else shows meanwhile.
class data_to_device : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE("device/adb_string_channel.h")
    Q_MOC_INCLUDE(<QStandardItemModel>)

public:
    using QThread::QThread;

    /// The device of an upload. Null once its owner has deleted it, which a box in
    /// the middle of a wait gives time for.
    using device_pointer = QPointer<QIODevice>;
    using UploadItem = upload_records::UploadItem;

    QSerialPort* port = nullptr; ///< the program's one serial port, shared by serial_thread
    /// The current Android channel; null also when its owner has deleted it, which
    /// it may without a word when another device takes its place.
    QPointer<AdbStringChannel> channel;

    // The conversation. Where a function returns false, `error` is the text for
    // the user.

    /// Writes all of `bytes`, each part of it within 1000 ms.
    bool write_all(const device_pointer& device, const QByteArray& bytes, QString& error);
    /// Waits for the answer to `command`. `status` is the instrument's, 0 with a
    /// result of true, or 0xFF when none came; `device_type` is set with true alone.
    bool wait_ack(const device_pointer& device, std::uint8_t command, int timeout_ms,
                  QString& error, std::uint8_t& device_type, std::uint8_t& status);
    /// Sends a frame and waits up to 15000 ms for its answer. What had come in
    /// before is thrown away.
    bool send_and_wait_ack(const device_pointer& device, const QByteArray& frame,
                           std::uint8_t command, QString& error, std::uint8_t& status);
    /// Whether the instrument answers the upload probe well within 800 ms.
    bool probe_packet_protocol(const device_pointer& device);
    /// Writes Mode text; nothing is awaited.
    bool send_mode_text(const device_pointer& device, const QString& text, QString& error);
    /// Sends each item and its points. An item whose kind the instrument does not
    /// know is skipped.
    bool send_packets(const device_pointer& device, const QList<UploadItem>& items,
                      int points_per_frame, QString& error);

public slots:
    /// Sends the rows that are ticked in `model`.
    void import_data_to_device(QStandardItemModel* model, QList<measuringData> Table_list,
                               QStringList Data_msg_altitude);
    void channel_in(AdbStringChannel* serial);
    /// Forgets the channel, whatever is passed.
    void channel_out(AdbStringChannel* serial);

protected:
    void run() override;

private:
    /// What is to be sent, in the forms that have been needed so far: two
    /// instruments of one protocol share one.
    struct shipment
    {
        QList<int> rows; ///< ticked rows of the main table
        QList<measuringData> table_list;
        QStringList data_msg_altitude;
        std::optional<QList<UploadItem>> items;
        std::optional<QString> mode_text;
    };
    /// What is particular to one channel.
    struct route
    {
        device_pointer device;
        int points_per_frame;
        const char* packet_message; ///< box for a failure, %1 the error
        const char* mode_message;
    };

    bool upload(const route& way, shipment& load);
    static std::optional<QList<UploadItem>> build_items(const shipment& load);
    static std::optional<QString> build_mode_text(const shipment& load);
    bool send_points(const device_pointer& device, const UploadItem& item, int points_per_frame,
                     std::uint8_t& sequence, QString& error);
    QIODevice* usable_port() const;
    QIODevice* usable_socket() const;
};
