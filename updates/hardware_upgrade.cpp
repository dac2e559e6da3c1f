#include "updates/hardware_upgrade.h"

#include <QDebug>

namespace {

void log_missing(const char* what)
{
    qWarning() << "firmware upgrade is not there yet:" << what;
}

} // namespace

void hardware_upgrade::recv_form_cloud_updata()
{
    log_missing("cloud list");
}

void hardware_upgrade::recv_form_local_updata()
{
    log_missing("local file");
}

void hardware_upgrade::recv_form_sure(QString combobox)
{
    log_missing(qPrintable(combobox));
}

void hardware_upgrade::run()
{
    // The label is the one in force: this worker has none of its own.
    qDebug() << "software_upgrade ID:" << QThread::currentThreadId();
}
