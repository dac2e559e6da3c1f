#pragma once

#include "core/records.h"

#include <QThread>

class AdbStringChannel;
class QSerialPort;

/// Owner of the channels to the instrument and of the read conversation.
class serial_thread : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE("device/adb_string_channel.h")

public:
    explicit serial_thread(QObject* parent = nullptr);

    QSerialPort* port;

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
    void recv_cmd_from_key(int command, QList<measuringData> table_list, QStringList data_msg,
                           QStringList data_msg_altitude, QList<QList<point_msg>> point_msg_all_o);

protected:
    void run() override;
};
