#pragma once

#include "core/records.h"

#include <QPointer>
#include <QThread>

class AdbStringChannel;
class QSerialPort;
class QStandardItemModel;

/// Sends ticked measurements to the instrument. The upload itself is not there
/// yet; the two channels are held already.
class data_to_device : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE("device/adb_string_channel.h")
    Q_MOC_INCLUDE(<QStandardItemModel>)

public:
    using QThread::QThread;

    QSerialPort* port = nullptr; ///< the program's one serial port, shared by serial_thread
    /// The current Android channel; null also when its owner has deleted it, which
    /// it may without a word when another device takes its place.
    QPointer<AdbStringChannel> channel;

public slots:
    /// Sends the rows that are ticked in `model`.
    void import_data_to_device(QStandardItemModel* model, QList<measuringData> Table_list,
                               QStringList Data_msg_altitude);
    void channel_in(AdbStringChannel* serial);
    /// Forgets the channel, whatever is passed.
    void channel_out(AdbStringChannel* serial);

protected:
    void run() override;
};
