// The blocks as another program takes them: rb of lrzsz, on a pseudo-terminal.
// It acknowledges the first end of a transfer, which the instrument's boot loader
// refuses; up to there and from there on it is the same road.

#include "updates/ymodem.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <array>

#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int patience_ms = 120'000; // rb itself waits 10 s for what went lost

QByteArray image_of(qsizetype size)
{
    QByteArray image(size, '\0');
    QRandomGenerator random(static_cast<quint32>(size) + 3);
    for (char& byte : image)
        byte = static_cast<char>(random.generate());
    return image;
}

void send(int line, const QByteArray& bytes)
{
    for (qsizetype at = 0; at < bytes.size();) {
        const ssize_t written =
            write(line, bytes.constData() + at, static_cast<size_t>(bytes.size() - at));
        if (written <= 0)
            qFatal("the line takes nothing");
        at += written;
    }
}

/// Waits until a process does nothing but wait. After what it says rb throws away
/// what is on the line, so that a block sent before it listens again goes lost.
void wait_until_it_sleeps(qint64 process)
{
    const QDeadlineTimer deadline(patience_ms);
    for (int seen = 0; seen < 3 && !deadline.hasExpired(); QThread::msleep(2)) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(process));
        if (!stat.open(QIODevice::ReadOnly))
            return; // it has ended
        const QByteArray fields = stat.readAll();
        const char state = fields.mid(fields.lastIndexOf(')') + 2).front();
        if (state == 'Z')
            return;
        seen = state == 'S' ? seen + 1 : 0;
    }
}

} // namespace

class test_ymodem_peer : public QObject
{
    Q_OBJECT

private slots:
    void files_arrive_whole_data();
    void files_arrive_whole();
};

void test_ymodem_peer::files_arrive_whole_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1, 128, 129, 1025, 70'000})
        QTest::addRow("%d", size) << size;
}

void test_ymodem_peer::files_arrive_whole()
{
    QFETCH(int, size);
    QVERIFY2(!QStandardPaths::findExecutable("rb").isEmpty(), "lrzsz is not installed");
    const QTemporaryDir folder;
    const QByteArray image = image_of(size);

    termios raw{};
    cfmakeraw(&raw);
    std::array<char, 128> name{};
    int here = -1;
    int there = -1;
    QCOMPARE(openpty(&here, &there, name.data(), &raw, nullptr), 0);
    QProcess rb;
    rb.setWorkingDirectory(folder.path());
    rb.setStandardInputFile(QString::fromLocal8Bit(name.data()));
    rb.setStandardOutputFile(QString::fromLocal8Bit(name.data()));
    rb.start("rb", {"--quiet", "--overwrite"});
    QVERIFY(rb.waitForStarted(patience_ms));

    ymodem::sender from(QStringLiteral("image.bin"), image);
    ymodem::sender::step step;
    QByteArray last;
    const QDeadlineTimer deadline(patience_ms);
    while (step.goes_on && !deadline.hasExpired()) {
        pollfd readable{here, POLLIN, 0};
        char byte = 0;
        if (poll(&readable, 1, 100) <= 0 || read(here, &byte, 1) != 1) {
            rb.waitForFinished(0); // lets it notice
            if (from.at() == ymodem::sender::closing_sent && rb.state() == QProcess::NotRunning)
                break;
            continue;
        }
        wait_until_it_sleeps(rb.processId());
        const bool again =
            (byte == ymodem::asked && from.at() == ymodem::sender::data_sent) ||
            (byte != ymodem::acknowledged && (from.at() == ymodem::sender::header_sent ||
                                              from.at() == ymodem::sender::closing_sent));
        if (again) {
            send(here, last);
            continue;
        }
        if (from.at() == ymodem::sender::end_sent && byte == ymodem::acknowledged) {
            // As if it had refused the end; the repeat stays here.
            QCOMPARE(from.take(ymodem::refused).send, QByteArray(1, ymodem::end_of_transmission));
        }
        step = from.take(byte);
        if (!step.send.isEmpty())
            last = step.send;
        send(here, step.send);
    }
    // It has taken the closing block and left; its last acknowledgement may have
    // gone with it.
    QCOMPARE(from.at() == ymodem::sender::closing_sent || from.at() == ymodem::sender::idle, true);
    QVERIFY(rb.state() == QProcess::NotRunning || rb.waitForFinished(patience_ms));
    QCOMPARE(rb.exitStatus(), QProcess::NormalExit);
    QCOMPARE(rb.exitCode(), 0);
    close(here);
    close(there);
    QFile file(folder.filePath("image.bin"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.size(), image.size()); // without the padding
    QVERIFY(file.readAll() == image);
}

QTEST_GUILESS_MAIN(test_ymodem_peer)
#include "test_ymodem_peer.moc"
