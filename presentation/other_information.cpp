#include "presentation/other_information.h"

#include <QDebug>

void other_information::run()
{
    qDebug() << "other_information ID:" << QThread::currentThreadId();
}
