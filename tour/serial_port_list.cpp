#include "serial_port_list.h"

#include "device/serial_thread.h"

#include <QCoreApplication>
#include <QEvent>

namespace {

/// Waits for the owner of the port at its timer, which is the one way to it from
/// outside, and replaces its list.
class owner_finder : public QObject
{
public:
    explicit owner_finder(QString path) : QObject(qApp), m_path(std::move(path))
    {
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        QObject* const owner = watched->parent();
        if (event->type() == QEvent::Timer && owner != nullptr &&
            qstrcmp(owner->metaObject()->className(), "serial_thread") == 0) {
            static_cast<serial_thread*>(owner)->available_ports = [path = m_path] {
                return QList<serial_thread::listed_port>{
                    {path, path, QStringLiteral("USB Serial (simulated)")}};
            };
            qApp->removeEventFilter(this);
            deleteLater();
        }
        return false;
    }

private:
    QString m_path;
};

} // namespace

void list_serial_port(const QString& path)
{
    new owner_finder(path);
}
