#pragma once

#include <QThread>

class QSerialPort;

/// Replaces the instrument's firmware over the serial line. The upgrade is not
/// there yet; the port is held already.
class hardware_upgrade : public QThread
{
    Q_OBJECT

public:
    using QThread::QThread;

    QSerialPort* port = nullptr; ///< the program's one serial port, shared by serial_thread

signals:
    void add_comboBox_value(QString value);
    void updata_progress(int percent);

public slots:
    void recv_form_cloud_updata();
    void recv_form_local_updata();
    void recv_form_sure(QString combobox);

protected:
    void run() override;
};
