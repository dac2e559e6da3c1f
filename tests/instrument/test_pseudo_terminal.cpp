#include "golden_memory.h"

#include "device/frame.h"
#include "instrument/frame_responder.h"
#include "instrument/pseudo_terminal.h"
#include "instrument/sample_memory.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSerialPort>
#include <QTemporaryDir>
#include <QTest>

using namespace instrument;

namespace {

constexpr int patience = 20000; // ms

} // namespace

class test_pseudo_terminal : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void a_read_through_a_serial_port();
    void every_byte_value_passes();
    void another_speed_is_not_understood();
    void answers_at_another_speed_are_lost();
    void delays_and_pieces_keep_their_order();
    void the_line_outlives_its_host();
    void a_long_answer_to_a_host_that_reads_late();
    void the_link();
    void the_log();

private:
    [[nodiscard]] bool start(const protocol_factory& make_protocol, const QString& link = {});
    [[nodiscard]] bool open(QSerialPort& port, int baud = 115200) const;
    [[nodiscard]] QByteArray log_text() const;
    protocol_factory responder(const fault_list& faults = {})
    {
        return [this, faults] {
            return std::make_unique<frame_responder>(m_stored, frame_identity{golden::token, 1},
                                                     faults);
        };
    }

    memory m_stored;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<byte_log> m_log;
    std::unique_ptr<pseudo_terminal> m_terminal;
};

/// Waits until `received` holds as many bytes as `expected`, and compares.
#define QTRY_RECEIVE(port, expected)                                                               \
    do {                                                                                           \
        const QByteArray wanted = (expected);                                                      \
        QByteArray received;                                                                       \
        QVERIFY2(QTest::qWaitFor(                                                                  \
                     [&] {                                                                         \
                         received += (port).readAll();                                             \
                         return received.size() >= wanted.size();                                  \
                     },                                                                            \
                     patience),                                                                    \
                 received.toHex(' ').constData());                                                 \
        QCOMPARE(received, wanted);                                                                \
    } while (false)

void test_pseudo_terminal::init()
{
    m_stored = golden::stored();
    m_terminal.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(start(responder()));
}

bool test_pseudo_terminal::start(const protocol_factory& make_protocol, const QString& link)
{
    QString error;
    m_terminal.reset();
    m_log = std::make_unique<byte_log>();
    if (!m_log->open(m_folder->filePath("log"), error))
        return false;
    m_terminal = std::make_unique<pseudo_terminal>(115200, make_protocol, m_log.get());
    return m_terminal->start(link, error);
}

bool test_pseudo_terminal::open(QSerialPort& port, int baud) const
{
    port.setPortName(m_terminal->path());
    port.setBaudRate(baud);
    return port.open(QIODevice::ReadWrite);
}

QByteArray test_pseudo_terminal::log_text() const
{
    QFile file(m_folder->filePath("log"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void test_pseudo_terminal::a_read_through_a_serial_port()
{
    QSerialPort port;
    QVERIFY(open(port));
    // The text command meets silence, so the first answer is that to the probe.
    port.write("~\r\n");
    port.write(golden::probe);
    QTRY_RECEIVE(port, golden::probe_reply);
    for (const QByteArray& frame :
         {golden::first_head, golden::first_points, golden::second_head, golden::end}) {
        port.write(golden::request);
        QTRY_RECEIVE(port, frame);
    }
}

void test_pseudo_terminal::every_byte_value_passes()
{
    class echo final : public protocol
    {
        QList<chunk> receive(QByteArrayView bytes) override { return {{bytes.toByteArray()}}; }
    };
    QVERIFY(start([] { return std::make_unique<echo>(); }));
    QSerialPort port;
    QVERIFY(open(port));
    QByteArray all;
    for (int value = 0; value < 256; ++value)
        all.append(static_cast<char>(value));
    port.write(all);
    QTRY_RECEIVE(port, all);
}

void test_pseudo_terminal::another_speed_is_not_understood()
{
    QSerialPort port;
    QVERIFY(open(port, 9600));
    QCOMPARE(m_terminal->host_baud(), 9600);
    port.write(golden::probe);
    QTRY_VERIFY_WITH_TIMEOUT(log_text().contains("note not understood at 9600 baud"), patience);
    QCOMPARE(log_text().count("note host at 9600 baud\n"), 1);
    QVERIFY(port.setBaudRate(115200));
    QCOMPARE(m_terminal->host_baud(), 115200);
    port.write(golden::request);
    QTRY_RECEIVE(port, golden::first_head);
    QCOMPARE(log_text().count("note host at 115200 baud\n"), 1);
    QVERIFY(!log_text().contains(golden::probe_reply.toHex(' ').toUpper()));
}

void test_pseudo_terminal::answers_at_another_speed_are_lost()
{
    QString error;
    QVERIFY(start(responder({parse_fault("delay=50@1", error).value()})));
    QSerialPort port;
    QVERIFY(open(port));
    port.write(golden::request);
    QTRY_VERIFY_WITH_TIMEOUT(log_text().contains(" in 11 "), patience);
    QVERIFY(port.setBaudRate(9600));
    QTRY_VERIFY_WITH_TIMEOUT(log_text().contains(" bytes lost at 9600 baud"), patience);
    // What was lost is not shown as sent.
    QVERIFY(!log_text().contains(" out "));
    QVERIFY(log_text().contains("note host at 9600 baud\n"));
    QVERIFY(port.setBaudRate(115200));
    port.write(golden::request);
    QTRY_RECEIVE(port, golden::first_points);
    QCOMPARE(log_text().count(" out "), 1);
}

void test_pseudo_terminal::delays_and_pieces_keep_their_order()
{
    QString error;
    QVERIFY(start(responder(
        {parse_fault("delay=40", error).value(), parse_fault("split=3", error).value()})));
    QSerialPort port;
    QVERIFY(open(port));
    QElapsedTimer clock;
    clock.start();
    port.write(golden::probe + golden::request + golden::request);
    QTRY_RECEIVE(port, golden::probe_reply + golden::first_head + golden::first_points);
    QVERIFY(clock.elapsed() >= 120);
}

void test_pseudo_terminal::the_line_outlives_its_host()
{
    for (int host = 0; host < 3; ++host) {
        QSerialPort port;
        QVERIFY(open(port));
        port.write(golden::probe);
        QTRY_RECEIVE(port, golden::probe_reply);
        port.close();
    }
}

void test_pseudo_terminal::a_long_answer_to_a_host_that_reads_late()
{
    m_stored = synthetic_memory(1, 51 * 100);
    QVERIFY(start(responder()));
    QSerialPort port;
    port.setReadBufferSize(1);
    QVERIFY(open(port));
    for (int i = 0; i < 101; ++i)
        port.write(golden::request);
    // The terminal is full long before the instrument has said everything.
    QTRY_COMPARE_WITH_TIMEOUT(log_text().count(" out "), 101, patience);
    port.setReadBufferSize(0);
    QByteArray all;
    QTRY_COMPARE_WITH_TIMEOUT((all += port.readAll()).size(), 43 + 100 * (12 + 51 * 19), patience);
    QByteArray frame;
    for (int i = 0; i < 101; ++i)
        QVERIFY(frame::extract_frame(all, frame));
    QVERIFY(all.isEmpty());
}

void test_pseudo_terminal::the_link()
{
    const QString link = m_folder->filePath("tty");
    QVERIFY(start(responder(), link));
    QCOMPARE(QFile::symLinkTarget(link), m_terminal->path());
    m_terminal.reset();
    QVERIFY(!QFileInfo(link).isSymLink());

    // A link that somebody left is replaced, a file is not.
    QVERIFY(QFile::link("/nowhere", link));
    QVERIFY(start(responder(), link));
    QCOMPARE(QFile::symLinkTarget(link), m_terminal->path());
    QFile file(m_folder->filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    pseudo_terminal other(115200, responder(), nullptr);
    QString error;
    QVERIFY(!other.start(file.fileName(), error));
    QCOMPARE(error, file.fileName() + " exists and is no symbolic link");
}

void test_pseudo_terminal::the_log()
{
    QSerialPort port;
    QVERIFY(open(port));
    port.write(golden::probe);
    QTRY_RECEIVE(port, golden::probe_reply);
    static const QRegularExpression lines(
        R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z serial in 11 5A 00 FD 00 00 04 FF FF FF FF E1
\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z serial out 13 5A 00 01 00 00 06 01 02 03 04 00 00 6A
$)");
    QVERIFY2(lines.match(QString::fromLatin1(log_text())).hasMatch(), log_text().constData());
}

QTEST_GUILESS_MAIN(test_pseudo_terminal)
#include "test_pseudo_terminal.moc"
