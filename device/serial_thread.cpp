#include "device/serial_thread.h"

#include "device/adb_string_channel.h"

#include <QDebug>
#include <QSerialPort>

serial_thread::serial_thread(QObject* parent) : QThread(parent), port(new QSerialPort) {}

void serial_thread::recv_cmd_from_key(int, QList<measuringData>, QStringList, QStringList,
                                      QList<QList<point_msg>>)
{
}

void serial_thread::run()
{
    qDebug() << "serial thread ID:" << QThread::currentThreadId();
}
