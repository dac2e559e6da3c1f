#pragma once

#include <QByteArrayView>
#include <QFile>
#include <QString>

namespace instrument {

/// A file with every byte that passed, readable while it grows. A line is
///
///     2024-03-05T07:08:09.123Z serial in 11 5A 00 FD 00 00 04 FF FF FF FF E1
///
/// with the time in UTC, the line's name, "in" for bytes from the host or "out"
/// for bytes to it, their count and the bytes. "note" lines hold text.
class byte_log
{
public:
    /// Begins the file anew. Returns false with the reason in `error`.
    [[nodiscard]] bool open(const QString& path, QString& error);

    // Without an open file these do nothing.
    void in(const QString& line, QByteArrayView bytes) { write_bytes(line, "in", bytes); }
    void out(const QString& line, QByteArrayView bytes) { write_bytes(line, "out", bytes); }
    void note(const QString& line, const QString& text);

private:
    void write_bytes(const QString& line, const char* direction, QByteArrayView bytes);
    void write(const QString& line, const QByteArray& rest);

    QFile m_file;
};

} // namespace instrument
