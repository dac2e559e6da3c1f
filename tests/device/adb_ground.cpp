#include "adb_ground.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>

adb_ground::adb_ground() : m_adb(QStandardPaths::findExecutable(QStringLiteral("adb")))
{
    QTcpServer free_port;
    if (!free_port.listen(QHostAddress::LocalHost))
        qFatal("no free port");
    m_port = free_port.serverPort();
    qputenv("ANDROID_ADB_SERVER_PORT", QByteArray::number(m_port));
    qputenv("ADB_LOCAL_TRANSPORT_MAX_PORT", "5554"); // one below the first emulator
    qputenv("HOME", m_folder.path().toLocal8Bit());
}

adb_ground::~adb_ground()
{
    if (!m_adb.isEmpty())
        run({QStringLiteral("kill-server")});
}

QByteArray adb_ground::run(const QStringList& arguments) const
{
    QProcess process;
    process.start(m_adb, arguments);
    process.waitForFinished(20000);
    return process.readAllStandardOutput();
}

QString adb_ground::script(const QByteArray& body) const
{
    const QString name = path(QStringLiteral("adb_script"));
    write(QStringLiteral("adb_script"),
          "#!/bin/sh\necho \"$*\" >>'" + path("calls").toLocal8Bit() + "'\n" + body + "\n");
    QFile::setPermissions(name, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return name;
}

QStringList adb_ground::calls() const
{
    QFile file(path(QStringLiteral("calls")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

void adb_ground::forget_calls() const
{
    QFile::remove(path(QStringLiteral("calls")));
}

void adb_ground::write(const QString& name, const QByteArray& content) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write");
}
