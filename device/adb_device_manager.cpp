#include "device/adb_device_manager.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QStandardPaths>

namespace {

constexpr int poll_interval = 1500;         // ms
constexpr int start_timeout = 3000;         // ms, for any adb process
constexpr int server_start_timeout = 10000; // ms
constexpr int kill_timeout = 3000;          // ms

/// Serial numbers of the devices ready for use in what "adb devices" printed.
QMap<QString, bool> ready_devices(QByteArray output)
{
    output.replace('\r', QByteArrayView());
    QMap<QString, bool> devices;
    for (const QString& line : QString::fromUtf8(output).split(u'\n', Qt::SkipEmptyParts)) {
        if (line.startsWith(u"List of devices"))
            continue;
        const QStringList parts = line.split(u'\t', Qt::SkipEmptyParts);
        if (parts.size() == 2 && parts[1] == u"device")
            devices.insert(parts[0], true);
    }
    return devices;
}

} // namespace

AdbDeviceManager::AdbDeviceManager(QObject* parent) : QObject(parent), adb_path(locate_adb())
{
    connect(&process, &QProcess::finished, this, &AdbDeviceManager::onAdbDevicesFinished);
    poll_timer.setInterval(poll_interval);
    connect(&poll_timer, &QTimer::timeout, this, &AdbDeviceManager::checkDevices);
}

AdbDeviceManager::~AdbDeviceManager()
{
    poll_timer.stop();
    // What a killed query printed is no news for anybody.
    process.disconnect(this);
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(kill_timeout);
    }
}

QString AdbDeviceManager::locate_adb() const
{
    qInfo() << "[AdbDeviceManager] locating adb ...";
    const QString beside = QCoreApplication::applicationDirPath() + QStringLiteral("/adb.exe");
    if (QFile::exists(beside))
        return beside;
    const QString found = QStandardPaths::findExecutable(QStringLiteral("adb"));
    return found.isEmpty() ? QStringLiteral("adb") : found;
}

bool AdbDeviceManager::start()
{
    if (!QFile::exists(adb_path)) {
        qCritical() << "[AdbDeviceManager] adb not found:" << adb_path;
        return false;
    }
    QProcess server;
    server.start(adb_path, {QStringLiteral("start-server")}, QIODevice::ReadWrite);
    if (!server.waitForStarted(start_timeout)) {
        qCritical() << "[AdbDeviceManager] failed to start adb process:" << server.errorString();
        return false;
    }
    if (!server.waitForFinished(server_start_timeout)) {
        qCritical() << "[AdbDeviceManager] start-server timeout:" << adb_path;
        server.kill();
        server.waitForFinished(kill_timeout);
        return false;
    }
    if (server.exitStatus() != QProcess::NormalExit || server.exitCode() != 0) {
        qCritical() << "[AdbDeviceManager] start-server failed, exitCode:" << server.exitCode()
                    << "stderr:" << QString::fromLocal8Bit(server.readAllStandardError());
        return false;
    }
    poll_timer.start();
    checkDevices();
    return true;
}

void AdbDeviceManager::checkDevices()
{
    if (process.state() != QProcess::NotRunning)
        return;
    process.start(adb_path, {QStringLiteral("devices")}, QIODevice::ReadWrite);
    if (!process.waitForStarted(start_timeout))
        qWarning() << "[AdbDeviceManager] failed to start devices query:" << process.errorString();
}

void AdbDeviceManager::onAdbDevicesFinished(int /*exitCode*/, QProcess::ExitStatus /*exitStatus*/)
{
    const QMap<QString, bool> devices = ready_devices(process.readAllStandardOutput());
    // Each device is entered before it is told of: a slot may show a box, during
    // which the next poll comes in.
    for (const QString& serial : devices.keys()) {
        if (known_devices.contains(serial))
            continue;
        known_devices.insert(serial, true);
        emit deviceAttached(serial);
    }
    for (const QString& serial : known_devices.keys()) {
        if (!devices.contains(serial) && known_devices.remove(serial) > 0)
            emit deviceDetached(serial);
    }
}
