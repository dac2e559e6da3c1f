#include "instrument/byte_log.h"

#include <QDateTime>

namespace instrument {

bool byte_log::open(const QString& path, QString& error)
{
    m_file.setFileName(path);
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return true;
    error = m_file.errorString();
    return false;
}

void byte_log::note(const QString& line, const QString& text)
{
    write(line, "note " + text.toUtf8());
}

void byte_log::write_bytes(const QString& line, const char* direction, QByteArrayView bytes)
{
    if (!m_file.isOpen())
        return;
    write(line, QByteArray(direction) + ' ' + QByteArray::number(bytes.size()) + ' ' +
                    bytes.toByteArray().toHex(' ').toUpper());
}

void byte_log::write(const QString& line, const QByteArray& rest)
{
    if (!m_file.isOpen())
        return;
    m_file.write(QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toLatin1() + ' ' +
                 line.toUtf8() + ' ' + rest + '\n');
    m_file.flush();
}

} // namespace instrument
