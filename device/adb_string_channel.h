#pragma once

#include <QAbstractSocket>
#include <QObject>
#include <QString>

class QTcpSocket;

/// One adb forward and one TCP socket for one Android instrument.
class AdbStringChannel : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

signals:
    void stringReceived(char* text);
    void channelClosed();
};
