#pragma once

#include <QObject>

/// Finds adb and polls the list of attached Android devices.
class AdbDeviceManager : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
};
