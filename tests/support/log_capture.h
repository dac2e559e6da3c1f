#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Gathers the lines of Qt's logger for as long as it lives. One at a time.
class log_capture
{
public:
    struct line
    {
        QtMsgType type;
        QString text;
    };

    log_capture();
    ~log_capture();
    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    [[nodiscard]] QList<line> lines() const;
    [[nodiscard]] QStringList texts() const;
    /// Whether a line holds `part`.
    [[nodiscard]] bool has(const QString& part) const;
    void clear();
};
