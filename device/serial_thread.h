#pragma once

#include "core/records.h"
#include "device/adb_device_manager.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QMessageBox>
#include <QSerialPort>
#include <QThread>

#include <cstdint>
#include <functional>

class AdbStringChannel;
class QRegularExpression;
class QTimer;

namespace text_records {
enum class kind;
}

/// Owner of the channels to the instrument, the serial port and the Android TCP
/// channel, and of the read conversation that runs over them.
///
/// Everything happens in the thread that made the object; waits are nested event
/// loops, so that timers and slots run in the middle of a read. Failures are told
/// to the user in a message box and end the read.
class serial_thread : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE("device/adb_string_channel.h")

public:
    /// A serial port as the operating system lists it.
    struct listed_port
    {
        QString system_location; ///< what to open, such as "/dev/ttyUSB0"
        QString name;            ///< "ttyUSB0"
        QString description;     ///< the adapter's own words
    };

    /// Starts watching both kinds of channel; the serial ports after 2000 ms.
    explicit serial_thread(QObject* parent = nullptr);
    /// Closes and deletes the port.
    ~serial_thread() override;

    // Channels.

    QString text_buffer;                 ///< text received so far in a text download
    QSerialPort* port;                   ///< the program's one serial port
    QTimer* detect_timer;                ///< runs detect_ports every 1000 ms
    QTimer* export_timer;                ///< single-shot, runs serial_export_timeout
    bool port_connected = false;         ///< detect_ports has found and opened a port
    qint32 android_connected = 0;        ///< 1 while the TCP channel can be used, else 0
    AdbDeviceManager adb_manager;        ///< watcher of the Android devices
    AdbStringChannel* channel = nullptr; ///< the current TCP channel, or null

    /// The ports that detect_ports looks at, by default those of the operating
    /// system.
    std::function<QList<listed_port>()> available_ports;
    /// Shows a box and returns when it is answered, by default a QMessageBox.
    std::function<void(QMessageBox::Icon icon, const QString& title, const QString& text)> show_box;

    /// Opens the first port whose description begins with "USB", at 115200 baud,
    /// while none is open; notices when the open one has been closed.
    void detect_ports();
    void handle_serial_error(QSerialPort::SerialPortError error);
    /// Closes the port and tells the user; nothing on a closed port.
    void close_serial();
    /// Changes between 9600 and 115200 baud; the rate stays where it was left.
    void toggle_baud();

    // A read.

    QByteArray device_token;           ///< 4 bytes of the probe's reply, part of every request
    qint32 retry_count = 0;            ///< retries of the current request, at most 1
    bool export_active = false;        ///< an export waits for frames
    qint32 record_count = 0;           ///< measurements finished in this read
    qint32 record_all = 0;             ///< measurements announced
    std::uint32_t points_received = 0; ///< of the measurement in progress
    std::uint32_t points_total = 0;    ///< of the measurement in progress

    // The lists are handed in by the command and added to by the read. Only
    // whole measurements are in all four: a head whose points never came leaves
    // `table_list` longer than the others.
    QList<measuringData> table_list;
    QStringList data_msg;
    QStringList data_msg_altitude;
    QList<QList<point_msg>> point_msg_all;

    // The measurement in progress.
    QStringList current_plain; ///< longitude, latitude, in turn, degrees
    QStringList current_lines; ///< "longitude,latitude,altitude\n" for each point
    QList<point_msg> current_points;

    // What has arrived and is no whole frame yet: less than 1200 bytes.
    QByteArray serial_rx_buffer;
    QByteArray adb_rx_buffer;

    /// Chooses channel and protocol and reads. A text download has ended on
    /// return; a binary export goes on by itself and ends in finish_export.
    void read_device();
    /// Logs received bytes; nothing for none.
    void log_rx(const QByteArray& data) const;
    /// Asks the instrument on the serial port for its export. 0 when the export
    /// began, 1 when there was no good reply within 1000 ms.
    int serial_probe();
    /// The same on the TCP channel, where any answer with a frame header counts.
    int android_probe();
    /// Asks for the next frame on the channel of this read; on the serial port
    /// within 5000 ms. Ends the read when the channel is gone.
    void send_export_request();
    /// Writes a frame given as hex pairs. On the TCP channel the first 11 of the
    /// `raw` bytes go out. A failure is only logged.
    void send_hex(const QString& hex, bool android, const QByteArray& raw);
    /// Takes a frame 0x2F or 0x30 and asks for the next, or fails the read.
    void process_export_frame(QByteArrayView frame);
    /// Ends a binary read.
    void finish_export(bool success, const QString& message);

    // Text records. Each parser returns 0 when the record was added to the lists
    // and 1 when it was not understood or was there already.

    /// Bytes of one text download, far more than an instrument's memory holds; an
    /// instrument that has said more will never stop.
    qint64 text_limit = 256 << 20;
    /// Gathers text records, beginning with `data`, until nothing has come for
    /// 200 ms. They are parsed when as many have come as the first one announces.
    /// Beyond `text_limit` bytes it gives up.
    void text_loop(QByteArray data);
    /// Parses one record by its kind and form; what is no record is passed over.
    void parse_record(const QString& text);
    int parse_area_record(const QRegularExpression& record_pattern,
                          const QRegularExpression& point_pattern, const QString& text);
    int parse_distance_record(const QRegularExpression& record_pattern,
                              const QRegularExpression& point_pattern, const QString& text);
    int parse_waypoint_record(const QRegularExpression& record_pattern,
                              const QRegularExpression& point_pattern, const QString& text);
    int parse_route_record(const QRegularExpression& record_pattern,
                           const QRegularExpression& point_pattern, const QString& text);
    int parse_track_record(const QRegularExpression& record_pattern,
                           const QRegularExpression& point_pattern, const QString& text);
    int parse_staking_record(const QRegularExpression& record_pattern,
                             const QRegularExpression& point_pattern, const QString& text);

signals:
    void read_data_finished(QList<measuringData> table_list, QStringList data_msg,
                            QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all);
    void read_data_set_progressbar(int percent);
    void LED_control(bool connected);
    void LED_2_control(bool connected);
    void button_control(bool enabled);
    void onStringSend();
    void adbchannel_in(AdbStringChannel* channel);
    void adbchannel_out(AdbStringChannel* channel);

public slots:
    void new_recive_data_from_device();
    void new_recive_data_from_android_device();
    /// Replaces the lists by the given ones; command 1 reads the instrument.
    void recv_cmd_from_key(int command, QList<measuringData> table_list, QStringList data_msg,
                           QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all_o);
    void onDeviceAttached(QString serial);
    void onDeviceDetached(QString serial);
    void serial_export_timeout();

protected:
    void run() override;

private:
    /// The channel over which a binary read goes on, from probe to end.
    enum class read_path
    {
        none,
        serial,
        android,
    };
    enum class frame_verdict
    {
        more,  ///< the read goes on
        ended, ///< the read has ended
    };

    void start_detection();
    bool open_port(const listed_port& listed);

    void first_attempt(AdbStringChannel* attempted);
    void second_attempt(AdbStringChannel* attempted);
    void channel_lost(AdbStringChannel* lost);
    void forget_channel();
    void end_android_read();
    void android_channel_closed();

    bool read_serial();
    void log_port_state() const;
    void write_text_command();
    QByteArray ask_for_text();
    bool read_text();
    void read_android();
    void report_no_answer();
    QByteArray wait_for_probe_reply();
    QByteArray read_socket();
    void read_android_frames();
    void send_frame(const QByteArray& raw, bool android);

    frame_verdict take_serial_frame(const QByteArray& frame);
    frame_verdict take_android_frame(const QByteArray& frame);
    bool take_head(QByteArrayView frame);
    bool take_points(QByteArrayView frame);
    void store_points(QByteArrayView frame, int count);
    void finish_measurement();

    void clear_text();
    void take_text();
    int add_text_record(text_records::kind what, const QRegularExpression& record_pattern,
                        const QRegularExpression& point_pattern, const QString& text);
    bool has_text_record(const measuringData& record, const QString& lines) const;

    read_path path = read_path::none;
    /// What take_text knows already of text_buffer.
    struct seen_text
    {
        qsizetype size = 0;       ///< characters looked at
        qsizetype records = 0;    ///< exclamation marks among them
        qsizetype announced = -1; ///< index of the first "N", or -1
    };
    seen_text text_seen;
    bool android_read_due = false; ///< read_android_frames is about to run
};
