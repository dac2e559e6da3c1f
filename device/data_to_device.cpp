#include "device/data_to_device.h"

#include "device/adb_string_channel.h"

#include <QDebug>
#include <QStandardItemModel>

void data_to_device::import_data_to_device(QStandardItemModel* /*model*/,
                                           QList<measuringData> /*Table_list*/,
                                           QStringList /*Data_msg_altitude*/)
{
    qWarning() << "upload to the instrument is not there yet";
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
