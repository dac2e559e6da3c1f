// The instruments: how they come and go, reads with faults, uploads.

#include "load_run.h"

#include "tables.h"

#include "device/serial_thread.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QThread>

#include <iterator>

namespace {

/// A read that goes wrong.
struct wrong_read
{
    const char* fault;
    const QString& box;
    int whole_by; ///< what is whole by this frame arrives; -1: everything
};

/// In frames of measurements of three frames each: a head, 51 points and 9.
const wrong_read serial_faults[] = {
    {"split=7", read_whole, -1},          {"noise=300", read_whole, -1},
    {"ignore-request@8", read_whole, -1}, {"silent-after=13", read_late, 13},
    {"status-byte@13", read_bad, 12},     {"points-in-frame=52@8", read_bad, 7},
    {"flip-bit=80@9", read_bad, 8},       {"command=0x7E@16", read_broken, 15},
    {"end-status", read_broken, -1},      {"points-mode", read_whole, -1},
};

const wrong_read adb_faults[] = {
    {"noise=300@4", read_whole, -1},      {"status-byte@10", read_bad, 9},
    {"command=0x7E@13", read_broken, 12}, {"split=11", read_whole, -1},
    {"end-status", read_broken, -1},      {"currency@7", read_bad, 6},
};

QStringList as_options(const QStringList& faults)
{
    QStringList options;
    for (const QString& one : faults)
        options << QStringLiteral("--fault") << one;
    return options;
}

/// Measurements in what an instrument has written of what it was sent.
qsizetype received_in(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).array().size()
                                          : 0;
}

} // namespace

void load_run::attach_adb(const contents& memory, const QStringList& faults)
{
    const QString received = m_at.file(QStringLiteral("received-adb.json"));
    QFile::remove(received);
    const QStringList options =
        QStringList{QStringLiteral("--adb"), QStringLiteral("--received"), received} +
        memory.options + as_options(faults);
    // A connection that only the second attempt makes is of no use until the instrument
    // has been away.
    constexpr int enough = 60'000; // ms
    for (;;) {
        check(m_adb.start(options), QStringLiteral("no instrument over adb"));
        m_adb_attached = true;
        const QDeadlineTimer deadline(enough);
        while (!deadline.hasExpired() && m_at.see([] { return stage::box() == nullptr; }))
            QThread::msleep(50);
        if (m_at.see([] { return stage::box() != nullptr; }))
            break;
        detach_adb();
        ++m_attached_again;
    }
    expect_boxes({attached_adb});
}

void load_run::detach_adb()
{
    m_adb.stop();
    m_adb_attached = false;
    // One that comes back before adb's list was without it is not noticed.
    m_at.wait_for(
        QStringLiteral("the instrument gone from adb's list"),
        [this] { return m_usb.reader()->adb_manager.known_devices.isEmpty(); }, long_wait);
}

void load_run::attach_serial(const contents& memory, const QStringList& more)
{
    const QString received = m_at.file(QStringLiteral("received-serial.json"));
    QFile::remove(received);
    const QStringList options =
        QStringList{QStringLiteral("--pty"), QStringLiteral("--received"), received} +
        memory.options + more;
    check(m_serial.start(options), QStringLiteral("no instrument on a serial port"));
    m_serial_attached = true;
    const QString path = m_serial.serial_path();
    m_at.wait_for(QStringLiteral("the search for serial ports"),
                  [&] { return m_usb.plug_in(path); });
    expect_boxes({attached_serial});
}

/// Ends the instrument on the serial port, as a cable that is pulled out.
void load_run::unplug_serial()
{
    m_at.see([this] {
        m_usb.unplug();
        return 0;
    });
    m_serial.stop();
    m_serial_attached = false;
}

void load_run::detach_serial()
{
    unplug_serial();
    expect_boxes({lost_serial});
}

void load_run::detach_all()
{
    if (m_serial_attached)
        detach_serial();
    if (m_adb_attached)
        detach_adb();
}

/// A read was broken off at a place that nobody knows: counts how many measurements
/// have come, and enters them.
void load_run::count_broken_read(const contents& memory, const ledger& before)
{
    const qint64 rows = m_at.see([] { return static_cast<qint64>(tables::rows()); });
    for (qsizetype whole = 0; whole < memory.size(); ++whole) {
        const ledger come = deliveries(before, memory, whole);
        if (m_own.rows() + come.rows() == rows) {
            m_own.add(come);
            return;
        }
    }
    throw step_failed(QStringLiteral("%1 rows behind a broken read of %2 measurements")
                          .arg(rows)
                          .arg(memory.size()));
}

void load_run::say_instruments()
{
    if (m_adb_attached)
        say(QStringLiteral("  the instrument over adb ") + m_adb.state());
    if (m_serial_attached)
        say(QStringLiteral("  the instrument on the serial port ") + m_serial.state());
}

void load_run::wrong_serial_reads()
{
    for (int i = 0; i < 2; ++i) {
        delete_all();
        detach_all();
        const wrong_read& one = serial_faults[m_serial_next++ % std::size(serial_faults)];
        const QString fault = QLatin1String(one.fault);
        doing(QStringLiteral("read over the serial port, ") + fault);
        attach_serial(m_few, as_options({fault}));
        read({one.box});
        m_own.add(
            deliveries({}, m_few, one.whole_by < 0 ? m_few.size() : m_few.whole_by(one.whole_by)));
        compare(fault);
    }
}

void load_run::wrong_adb_reads()
{
    delete_all();
    detach_all();
    const wrong_read& one = adb_faults[m_adb_next++ % std::size(adb_faults)];
    const QString fault = QLatin1String(one.fault);
    doing(QStringLiteral("read over adb, ") + fault);
    attach_adb(m_few, {fault});
    read({one.box});
    m_own.add(
        deliveries({}, m_few, one.whole_by < 0 ? m_few.size() : m_few.whole_by(one.whole_by)));
    compare(fault);
}

/// An instrument that speaks text, at the lower speed, and another over adb: both are
/// read. The second time the text records are there already.
void load_run::old_instrument()
{
    delete_all();
    detach_all();
    doing(QStringLiteral("read text and frames"));
    attach_adb(m_few);
    attach_serial(m_few, {QStringLiteral("--baud"), QStringLiteral("9600"),
                          QStringLiteral("--text"), QStringLiteral("short")});
    ledger text;
    for (const mark& one : m_few.by_text)
        text.add(one);
    for (int i = 0; i < 2; ++i) {
        // The text download brings all that the read began with and what is new, and
        // the other read begins with that.
        ledger delivered = m_own;
        if (i == 0)
            delivered.add(text);
        m_at.click(QStringLiteral("data_read"));
        const QStringList come = boxes(2);
        m_own.add(delivered);
        if (come == QStringList{read_text, no_answer}) {
            ++m_clicked_again;
        } else {
            check(come == QStringList{read_text, read_whole},
                  QStringLiteral("boxes \"%1\"").arg(come.join(QStringLiteral("\", \""))));
            m_own.add(deliveries(delivered, m_few, m_few.size()));
        }
        compare(QStringLiteral("text and frames"));
    }
}

void load_run::pulled_cables()
{
    const auto halfway = [this] {
        m_at.wait_for(
            QStringLiteral("the middle of the read"), [] { return percent() >= 30; }, long_wait);
    };
    delete_all();
    detach_all();
    doing(QStringLiteral("pull out the cable of adb during a read"));
    attach_adb(m_few, {QStringLiteral("delay=250")});
    start_reading();
    halfway();
    m_adb.stop();
    expect_boxes({read_broken});
    detach_adb();
    count_broken_read(m_few, {});
    compare(QStringLiteral("a read that was broken off"));

    delete_all();
    doing(QStringLiteral("pull out the serial cable during a read"));
    attach_serial(m_few, as_options({QStringLiteral("delay=250")}));
    start_reading();
    halfway();
    unplug_serial();
    expect_boxes({lost_serial, read_broken});
    count_broken_read(m_few, {});
    compare(QStringLiteral("a read that was broken off"));

    doing(QStringLiteral("read with no instrument"));
    read({not_connected});
    compare(QStringLiteral("a read with no instrument"));
}

void load_run::repeated_reads()
{
    delete_all();
    detach_all();
    doing(QStringLiteral("read twice"));
    attach_serial(m_few);
    for (int i = 0; i < 2; ++i) {
        const ledger before = m_own;
        read({read_whole});
        m_own.add(deliveries(before, m_few, m_few.size()));
        compare(QStringLiteral("a repeated read"));
    }
}

void load_run::upload()
{
    delete_all();
    detach_all();
    doing(QStringLiteral("upload over adb and the serial port"));
    attach_adb(m_few);
    read({read_whole});
    m_own.add(deliveries({}, m_few, m_few.size()));
    attach_serial(m_few);
    const int rows = m_at.see([] { return tables::rows(); });
    for (int row = rows - 6; row < rows; ++row)
        tick(row);
    m_at.click(QStringLiteral("data_to_device"));
    expect_boxes({QStringLiteral("上传: 上传数据成功")});
    for (const char* const name : {"received-adb.json", "received-serial.json"}) {
        const QString path = m_at.file(QLatin1String(name));
        m_at.wait_for(QStringLiteral("six measurements in ") + path,
                      [&] { return received_in(path) == 6; });
    }
    compare(QStringLiteral("an upload"));
}
