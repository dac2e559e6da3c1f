#pragma once

#include <QObject>
#include <QString>

class serial_thread;

/// The cable between a pseudo-terminal and the program. The system lists no
/// pseudo-terminal among its serial ports, so the list that the program looks at is
/// replaced. The program's part that holds it is found by its timer's events. GUI
/// thread only.
class cable : public QObject
{
    Q_OBJECT

public:
    cable();

    /// Lists the pseudo-terminal as the one USB serial port, as long as it is there;
    /// false as long as the program does not look for ports.
    bool plug_in(const QString& path);
    /// Lists no port any more. A name of a pseudo-terminal that has gone may come back
    /// as another program's.
    void unplug();
    /// The program's part that reads the instruments; null as long as it does not look
    /// for ports.
    [[nodiscard]] const serial_thread* reader() const { return m_serial; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    serial_thread* m_serial = nullptr;
};
