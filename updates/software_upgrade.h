#pragma once

#include <QThread>

/// Looks for a newer version of this program. The check and the download are
/// not there yet.
class software_upgrade : public QThread
{
    Q_OBJECT

public:
    using QThread::QThread;

signals:
    /// Received size, total size, percent.
    void send_set_ui_signal_to_software_upgrade(QString bytesReceived, QString bytesTotal,
                                                int progressBar);

public slots:
    void upgrade_request(QString version, int language);
    void download_file();

protected:
    void run() override;
};
