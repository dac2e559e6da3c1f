#include "updates/software_upgrade.h"

#include <QDebug>

void software_upgrade::upgrade_request(QString version, int /*language*/)
{
    qWarning() << "the check for a newer version is not there yet, this is" << version;
}

void software_upgrade::download_file()
{
    qWarning() << "the download of a newer version is not there yet";
}

void software_upgrade::run()
{
    qDebug() << "software_upgrade ID:" << QThread::currentThreadId();
}
