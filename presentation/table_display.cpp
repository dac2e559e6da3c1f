#include "presentation/table_display.h"

#include <QDebug>

void table_display::run()
{
    qDebug() << "table_display ID:" << QThread::currentThreadId();
}
