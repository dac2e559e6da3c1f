#include "cable.h"

#include "device/serial_thread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>

cable::cable()
{
    qApp->installEventFilter(this);
}

bool cable::plug_in(const QString& path)
{
    if (m_serial == nullptr)
        return false;
    m_serial->available_ports = [path] {
        QList<serial_thread::listed_port> ports;
        if (QFile::exists(path)) // until it is pulled out
            ports.append({path, path, QStringLiteral("USB Serial")});
        return ports;
    };
    return true;
}

void cable::unplug()
{
    if (m_serial != nullptr)
        m_serial->available_ports = [] { return QList<serial_thread::listed_port>(); };
}

bool cable::eventFilter(QObject* watched, QEvent* event)
{
    // By name, as this plugin does not hold the program's code.
    QObject* const owner = watched->parent();
    if (event->type() == QEvent::Timer && owner != nullptr &&
        qstrcmp(owner->metaObject()->className(), "serial_thread") == 0)
        m_serial = static_cast<serial_thread*>(owner);
    return false;
}
