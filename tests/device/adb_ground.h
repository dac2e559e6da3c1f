#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>

/// An adb server of the test's own: another port than the user's, keys in a
/// folder of its own, and no look at the ports of other people's emulators. The
/// server, once something has started it, ends with this object.
class adb_ground
{
public:
    adb_ground();
    ~adb_ground();
    adb_ground(const adb_ground&) = delete;
    adb_ground& operator=(const adb_ground&) = delete;

    /// The real adb; empty where there is none.
    [[nodiscard]] QString adb() const { return m_adb; }
    [[nodiscard]] std::uint16_t server_port() const { return m_port; }
    /// What the real adb prints.
    QByteArray run(const QStringList& arguments) const;

    /// An executable shell script that stands in for adb. Each call adds its
    /// arguments as a line to `calls`, then `body` runs.
    [[nodiscard]] QString script(const QByteArray& body) const;
    /// The calls of the script so far.
    [[nodiscard]] QStringList calls() const;
    void forget_calls() const;
    /// A file in this object's folder.
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }
    void write(const QString& name, const QByteArray& content) const;

private:
    QTemporaryDir m_folder;
    QString m_adb;
    std::uint16_t m_port = 0;
};
