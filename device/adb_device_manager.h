#pragma once

#include <QMap>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QTimer>

/// Finds adb and polls the list of attached Android devices.
///
/// Only the command lines "start-server" and "devices", the exit code of the
/// first and the tab-separated lines of the second are relied on. All waits for
/// adb block the thread that owns the object.
class AdbDeviceManager : public QObject
{
    Q_OBJECT

public:
    /// Locates adb; nothing is started yet.
    explicit AdbDeviceManager(QObject* parent = nullptr);
    /// Stops polling and kills a query that still runs.
    ~AdbDeviceManager() override;

    /// Path of adb: "adb.exe" beside the program, else "adb" from the search
    /// path, else the bare word "adb".
    [[nodiscard]] QString locate_adb() const;

    /// Starts the adb server (blocks up to 13 s) and then polling, with a first
    /// query at once. False, after a critical line, when adb is no existing file,
    /// does not start, does not end in time or ends with an error; polling does
    /// not start then.
    bool start();

    QProcess process;                  ///< runs "adb devices"
    QTimer poll_timer{this};           ///< runs checkDevices
    QString adb_path;                  ///< result of locate_adb
    QMap<QString, bool> known_devices; ///< serial numbers seen at the last poll

signals:
    void deviceAttached(QString serial);
    void deviceDetached(QString serial);

public slots:
    /// Compares the list that `process` printed with the one before. Only lines
    /// "serial<tab>device" count: a device in any other state is absent.
    void onAdbDevicesFinished(int exitCode, QProcess::ExitStatus exitStatus);
    /// Asks adb for its devices, unless an earlier question is still open.
    void checkDevices();
};
