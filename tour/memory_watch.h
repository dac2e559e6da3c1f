#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QString>
#include <QThread>

#include <atomic>
#include <functional>
#include <memory>

/// What the window holds.
struct holding
{
    qint64 rows = 0;
    qint64 points = 0;
};

/// Memory at one moment, in KiB.
struct memory_sample
{
    qint64 resident = 0; ///< of the program
    qint64 in_use = 0;   ///< what the program has allocated and not freed
    qint64 web = 0;      ///< of the web engine's processes, shared pages in parts
    holding held;
    qint64 answer_ms = 0; ///< until the event loop has answered
};

/// Notes every few seconds how much memory the program and the web engine's processes
/// take, in a table of commas, and sees to it that the event loop answers: when it
/// has not for `patience_ms`, the process ends with 1. Linux alone.
class memory_watch
{
public:
    /// `look` is called in the GUI thread.
    memory_watch(const QString& path, std::function<holding()> look, int patience_ms);
    ~memory_watch();

    /// What the program is made to do from now on.
    void say_doing(const QString& what);
    /// A sample now, which is noted as well.
    memory_sample take();
    /// The longest that the event loop has taken to answer, and during what.
    [[nodiscard]] qint64 longest_ms() const { return m_longest_ms; }
    [[nodiscard]] QString longest_doing() const;

private:
    void note(const memory_sample& one);

    QFile m_file;
    std::function<holding()> m_look;
    int m_patience_ms;
    QElapsedTimer m_clock;
    mutable QMutex m_noting;
    QString m_doing;
    QString m_longest_doing;
    std::atomic<qint64> m_longest_ms = 0;
    std::atomic<bool> m_ends = false;
    std::unique_ptr<QThread> m_thread;
};
