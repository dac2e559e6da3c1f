#include "memory_watch.h"

#include "stage.h"

#include <QCoreApplication>
#include <QDir>
#include <QMutexLocker>
#include <QSemaphore>
#include <QSet>

#include <cstdlib>
#include <malloc.h>

namespace {

constexpr int interval = 2000; // ms

QByteArray content_of(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The number behind `name` in a file of lines such as "VmRSS:  1234 kB".
qint64 kilobytes(const QString& path, const QByteArray& name)
{
    for (const QByteArray& line : content_of(path).split('\n')) {
        if (line.startsWith(name))
            return line.mid(name.size()).simplified().split(' ').value(0).toLongLong();
    }
    return 0;
}

/// The processes that this one has started, and those that these have.
QStringList descendants()
{
    QHash<QString, QStringList> children;
    for (const QString& process : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const QByteArray stat = content_of(QStringLiteral("/proc/%1/stat").arg(process));
        // The name, in brackets, may hold blanks: state and parent stand behind it.
        const QList<QByteArray> behind =
            stat.mid(stat.lastIndexOf(')') + 1).simplified().split(' ');
        if (behind.size() > 1)
            children[QString::fromLatin1(behind[1])] += process;
    }
    QStringList found = children.value(QString::number(QCoreApplication::applicationPid()));
    for (qsizetype i = 0; i < found.size(); ++i)
        found += children.value(found[i]);
    return found;
}

qint64 web_engine_memory()
{
    qint64 all = 0;
    for (const QString& process : descendants()) {
        const QString folder = QStringLiteral("/proc/") + process;
        if (content_of(folder + QStringLiteral("/comm")).startsWith("QtWebEngine"))
            all += kilobytes(folder + QStringLiteral("/smaps_rollup"), "Pss:");
    }
    return all;
}

qint64 heap_in_use()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<qint64>((info.uordblks + info.hblkhd) / 1024);
}

} // namespace

memory_watch::memory_watch(const QString& path, std::function<holding()> look, int patience_ms)
    : m_file(path), m_look(std::move(look)), m_patience_ms(patience_ms)
{
    check(m_file.open(QIODevice::WriteOnly), path);
    m_file.write("seconds,resident_kib,in_use_kib,web_kib,rows,points,answer_ms,doing\n");
    m_clock.start();
    m_thread.reset(QThread::create([this] {
        while (!m_ends) {
            take();
            for (int slept = 0; slept < interval && !m_ends; slept += 100)
                QThread::msleep(100);
        }
    }));
    m_thread->start();
}

memory_watch::~memory_watch()
{
    m_ends = true;
    m_thread->wait();
}

void memory_watch::say_doing(const QString& what)
{
    const QMutexLocker lock(&m_noting);
    m_doing = what;
}

QString memory_watch::longest_doing() const
{
    const QMutexLocker lock(&m_noting);
    return m_longest_doing;
}

memory_sample memory_watch::take()
{
    struct answer
    {
        holding held;
        QSemaphore here;
    };
    // Of both threads: this one may have given up when the other answers.
    const auto answered = std::make_shared<answer>();
    QElapsedTimer asked;
    asked.start();
    QMetaObject::invokeMethod(
        qApp,
        [this, answered] {
            answered->held = m_look();
            answered->here.release();
        },
        Qt::QueuedConnection);
    if (!answered->here.tryAcquire(1, m_patience_ms)) {
        say(QStringLiteral("FAILED: the window has not answered for %1 s during \"%2\"")
                .arg(m_patience_ms / 1000)
                .arg(m_doing));
        std::_Exit(1);
    }
    memory_sample one{.held = answered->held, .answer_ms = asked.elapsed()};
    one.resident = kilobytes(QStringLiteral("/proc/self/status"), "VmRSS:");
    one.in_use = heap_in_use();
    one.web = web_engine_memory();
    note(one);
    return one;
}

void memory_watch::note(const memory_sample& one)
{
    const QMutexLocker lock(&m_noting);
    if (one.answer_ms > m_longest_ms) {
        m_longest_ms = one.answer_ms;
        m_longest_doing = m_doing;
    }
    m_file.write(QStringLiteral("%1,%2,%3,%4,%5,%6,%7,%8\n")
                     .arg(static_cast<double>(m_clock.elapsed()) / 1000, 0, 'f', 1)
                     .arg(one.resident)
                     .arg(one.in_use)
                     .arg(one.web)
                     .arg(one.held.rows)
                     .arg(one.held.points)
                     .arg(one.answer_ms)
                     .arg(m_doing)
                     .toUtf8());
    m_file.flush();
}
