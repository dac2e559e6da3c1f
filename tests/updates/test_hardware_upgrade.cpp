// The firmware upgrade over a pseudo-terminal with the simulated instrument's
// boot loader at its other end, with real boxes, a real file dialog, and an
// HTTPS server on this computer.

#include "instrument/boot_loader.h"
#include "instrument/pseudo_terminal.h"
#include "support/asked_waits.h"
#include "support/box_watcher.h"
#include "support/file_dialog_user.h"
#include "support/log_capture.h"
#include "update_server.h"
#include "updates/hardware_upgrade.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMetaEnum>
#include <QMetaMethod>
#include <QRandomGenerator>
#include <QSerialPort>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int patience_ms = 60'000;

const QByteArray list_path = "/hardware_update.json";
const QString failed_box = "2|升级|设备升级失败，重新升级";
const QString good_box = "1|升级|设备升级成功";

QByteArray image_of(qsizetype size)
{
    QByteArray image(size, '\0');
    QRandomGenerator random(static_cast<quint32>(size) + 7);
    for (char& byte : image)
        byte = static_cast<char>(random.generate());
    return image;
}

/// Notes what the boot loader lets through.
class listener final : public instrument::protocol
{
public:
    explicit listener(QByteArray& heard) : m_heard(heard) {}
    QList<instrument::chunk> receive(QByteArrayView bytes) override
    {
        m_heard.append(bytes.data(), bytes.size());
        return {};
    }

private:
    QByteArray& m_heard;
};

/// What makes the program ask for the instrument's version.
enum class question
{
    cloud,
    local,
    confirm,
};

/// The other end of a line, in the test's own hand. Closes the port with it: the
/// line's name may be another program's the next moment, and the port holds a lock
/// on it.
class open_line
{
public:
    explicit open_line(QSerialPort& port) : m_port(port)
    {
        termios raw{};
        cfmakeraw(&raw);
        std::array<char, 128> name{};
        if (openpty(&m_here, &m_there, name.data(), &raw, nullptr) != 0)
            qFatal("no pseudo-terminal");
        m_path = QString::fromLocal8Bit(name.data());
    }
    ~open_line()
    {
        m_port.close();
        close(m_here);
        close(m_there);
    }
    open_line(const open_line&) = delete;
    open_line& operator=(const open_line&) = delete;

    [[nodiscard]] QString path() const { return m_path; }
    void say(const QByteArray& bytes) const
    {
        if (::write(m_here, bytes.constData(), static_cast<size_t>(bytes.size())) != bytes.size())
            qFatal("the line takes nothing");
    }
    /// The next `count` bytes, fewer when they do not come.
    [[nodiscard]] QByteArray hear(qsizetype count) const
    {
        QByteArray heard;
        pollfd readable{m_here, POLLIN, 0};
        while (heard.size() < count && poll(&readable, 1, patience_ms) > 0) {
            std::array<char, 2048> bytes{};
            const ssize_t size =
                read(m_here, bytes.data(),
                     std::min<size_t>(bytes.size(), static_cast<size_t>(count - heard.size())));
            if (size <= 0)
                break;
            heard.append(bytes.data(), size);
        }
        return heard;
    }

private:
    QSerialPort& m_port;
    int m_here = -1;
    int m_there = -1;
    QString m_path;
};

} // namespace

class test_hardware_upgrade : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void it_begins_as_designed();
    void names_of_signals_and_slots();
    void a_closed_port_is_told();
    void the_state_of_the_port_is_logged_data();
    void the_state_of_the_port_is_logged();
    void a_port_that_another_holds();
    void the_port_must_be_open_for_what_is_done_data();
    void the_port_must_be_open_for_what_is_done();
    void what_the_instrument_is_asked_data();
    void what_the_instrument_is_asked();
    void when_an_answer_counts_data();
    void when_an_answer_counts();
    void a_question_takes_the_port_from_a_transfer_data();
    void a_question_takes_the_port_from_a_transfer();
    void an_instrument_without_an_answer_data();
    void an_instrument_without_an_answer();

    void a_local_file_is_asked_for();
    void no_file_chosen();
    void bad_files_data();
    void bad_files();
    void images_reach_the_instrument_data();
    void images_reach_the_instrument();
    void small_images_have_no_time_data();
    void small_images_have_no_time();
    void a_hex_file_is_closed_up();
    void an_upper_case_suffix_is_binary();
    void refused_blocks_are_repeated();
    void silence_before_the_header_is_not_told();
    void silence_is_told_and_tried_again_data();
    void silence_is_told_and_tried_again();
    void success_leaves_nothing_running();
    void success_gives_the_port_back();
    void one_byte_for_each_call();
    void the_whole_road();
    void each_transfer_has_its_own_time();
    void answers_in_one_piece_are_all_taken();
    void what_was_said_before_is_no_answer();
    void bytes_are_dropped_while_nothing_runs();
    void the_machine_stops_silently();
    void a_press_during_a_question_is_ignored();

    void the_list_fills_the_box();
    void twice_lists_twice();
    void the_version_decides_what_is_listed();
    void a_list_counts_whatever_its_status();
    void lists_that_say_nothing_data();
    void lists_that_say_nothing();
    void addresses_without_a_folder();
    void the_second_confirm_uses_what_the_first_has_fetched();
    void confirm_without_a_look_at_the_list();
    void confirm_without_a_zero_byte_fails();
    void confirm_of_another_version_fails();
    void confirm_without_an_answer();
    void an_image_that_cannot_be_fetched();
    void an_image_that_cannot_be_stored();
    void image_names_stay_in_the_folder();

private:
    void ask(question what);
    void start_instrument(instrument::boot_settings settings = {});
    void open_port(const QString& path);
    [[nodiscard]] QByteArray hear(const open_line& line, qsizetype count);
    void begin_transfer(const QByteArray& image);
    QString write(const QString& name, const QByteArray& content);
    void upgrade(const QByteArray& image, const QString& name = QStringLiteral("image.bin"));
    void look_at_list();
    void offer(const QByteArray& version, const QByteArray& entries);

    std::unique_ptr<update_server> m_server;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QSerialPort> m_port;
    std::unique_ptr<instrument::pseudo_terminal> m_terminal;
    std::unique_ptr<hardware_upgrade> m_worker;
    std::unique_ptr<box_watcher> m_boxes;
    std::unique_ptr<log_capture> m_log;
    std::optional<instrument::firmware> m_taken;
    QByteArray m_heard; ///< by the instrument, beside its boot loader
    QStringList m_offered;

    [[nodiscard]] QStringList boxes() const;
};

void test_hardware_upgrade::initTestCase()
{
    QApplication::setQuitOnLastWindowClosed(false);
    m_server = std::make_unique<update_server>();
    m_server->trust();
}

void test_hardware_upgrade::init()
{
    m_server->answers.clear();
    m_server->requests.clear();
    m_taken.reset();
    m_heard.clear();
    m_offered.clear();
    m_folder = std::make_unique<QTemporaryDir>();
    m_port = std::make_unique<QSerialPort>();
    m_log = std::make_unique<log_capture>();
    m_worker = std::make_unique<hardware_upgrade>();
    m_worker->port = m_port.get();
    m_worker->list_url = m_server->address(list_path);
    m_worker->folder = m_folder->path();
    connect(m_worker.get(), &hardware_upgrade::add_comboBox_value, this,
            [this](const QString& name) { m_offered += name; });
    m_boxes = std::make_unique<box_watcher>();
}

void test_hardware_upgrade::cleanup()
{
    m_worker.reset();
    m_port.reset();
    m_terminal.reset();
    m_boxes.reset();
    m_log.reset();
}

/// "kind|title|text" of each box.
QStringList test_hardware_upgrade::boxes() const
{
    QStringList all;
    for (const box_watcher::seen_box& box : m_boxes->boxes)
        all += QStringLiteral("%1|%2|%3").arg(box.icon).arg(box.title, box.text);
    return all;
}

void test_hardware_upgrade::start_instrument(instrument::boot_settings settings)
{
    m_terminal = std::make_unique<instrument::pseudo_terminal>(
        115200,
        [this, settings] {
            return std::make_unique<instrument::boot_loader>(
                std::make_unique<listener>(m_heard), settings,
                [this](const instrument::firmware& taken) { m_taken = taken; });
        },
        nullptr);
    QString error;
    QVERIFY2(m_terminal->start(QString(), error), qPrintable(error));
    open_port(m_terminal->path());
}

void test_hardware_upgrade::open_port(const QString& path)
{
    m_port->setPortName(path);
    QVERIFY(m_port->open(QIODevice::ReadWrite));
    QVERIFY(m_port->setBaudRate(115200));
}

/// What the program has sent, which goes out without an event loop.
QByteArray test_hardware_upgrade::hear(const open_line& line, qsizetype count)
{
    while (m_port->bytesToWrite() > 0 && m_port->waitForBytesWritten(patience_ms)) {
    }
    return line.hear(count);
}

/// Begins with an image from a file that another press has fetched.
void test_hardware_upgrade::begin_transfer(const QByteArray& image)
{
    m_worker->folder = m_folder->path();
    write("a.bin", image);
    m_worker->load_file(m_folder->filePath("a.bin"));
    while (m_port->bytesToWrite() > 0 && m_port->waitForBytesWritten(patience_ms)) {
    }
}

QString test_hardware_upgrade::write(const QString& name, const QByteArray& content)
{
    QFile file(m_folder->filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

/// Sends a local file and waits for the good end, through as many failures as a
/// busy machine makes of its time.
void test_hardware_upgrade::upgrade(const QByteArray& image, const QString& name)
{
    file_dialog_user chooser;
    chooser.path = write(name, image);
    m_worker->recv_form_local_updata();
    QTRY_VERIFY_WITH_TIMEOUT(boxes().contains(good_box), patience_ms);
    QVERIFY(m_taken.has_value());
}

void test_hardware_upgrade::offer(const QByteArray& version, const QByteArray& entries)
{
    m_server->answers[list_path] = {.body = "{\"" + version + "\":{" + entries + "}}"};
}

void test_hardware_upgrade::look_at_list()
{
    const auto asked = m_server->requests.size();
    QSignalSpy answered(m_worker->manager, &QNetworkAccessManager::finished);
    m_worker->recv_form_cloud_updata();
    QTRY_COMPARE_WITH_TIMEOUT(answered.size(), 1, patience_ms);
    QCOMPARE(m_server->requests.size(), asked + 1);
}

void test_hardware_upgrade::ask(question what)
{
    switch (what) {
    case question::cloud: return m_worker->recv_form_cloud_updata();
    case question::local: return m_worker->recv_form_local_updata();
    case question::confirm: return m_worker->recv_form_sure("a.bin");
    }
}

void test_hardware_upgrade::it_begins_as_designed()
{
    const hardware_upgrade worker;
    QVERIFY(m_log->has("Alloc successfully"));
    QCOMPARE(worker.image->size(), std::size_t(4194304));
    QCOMPARE(worker.active, 0);
    QCOMPARE(worker.pending, 0);
    QCOMPARE(worker.list_url,
             QUrl(QStringLiteral("https://" VELMO_UPDATE_HOST "/hardware_update.json")));
    QCOMPARE(worker.folder, QCoreApplication::applicationDirPath());
    QVERIFY(worker.port != nullptr); // its own until it is handed the program's
}

void test_hardware_upgrade::names_of_signals_and_slots()
{
    const QMetaObject& meta = hardware_upgrade::staticMetaObject;
    QByteArrayList names;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at)
        names += meta.method(at).methodSignature();
    QCOMPARE(names, (QByteArrayList{"finished()", "add_comboBox_value(QString)",
                                    "updata_progress(int)", "serial_read()",
                                    "reply_finished(QNetworkReply*)", "recv_form_cloud_updata()",
                                    "recv_form_local_updata()", "recv_form_sure(QString)"}));
}

void test_hardware_upgrade::a_closed_port_is_told()
{
    m_worker->recv_form_cloud_updata();
    m_worker->recv_form_local_updata();
    QCOMPARE(boxes(), QStringList({"2|警告|串口未连接", "2|警告|串口未连接"}));
    QVERIFY(m_log->has("串口无错误"));
    QVERIFY(!m_log->has("send version to device"));
}

void test_hardware_upgrade::the_state_of_the_port_is_logged_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("words");
    QTest::newRow("missing") << "missing"
                             << "串口设备未找到";
    QTest::newRow("no port") << "file"
                             << "未知串口错误：";
}

void test_hardware_upgrade::the_state_of_the_port_is_logged()
{
    QFETCH(QString, name);
    QFETCH(QString, words);
    write("file", "no port");
    m_port->setPortName(m_folder->filePath(name));
    QVERIFY(!m_port->open(QIODevice::ReadWrite));
    m_worker->recv_form_local_updata();
    // An error without words of its own has its name.
    if (name == "file")
        words += QLatin1Char(' ') +
                 QLatin1String(QMetaEnum::fromType<QSerialPort::SerialPortError>().valueToKey(
                     m_port->error()));
    QVERIFY2(m_log->texts().contains(words), qPrintable(m_log->texts().join('\n')));
    QCOMPARE(boxes(), QStringList("2|警告|串口未连接"));
}

void test_hardware_upgrade::a_port_that_another_holds()
{
    QSerialPort holder;
    const open_line line(holder);
    holder.setPortName(line.path());
    QVERIFY(holder.open(QIODevice::ReadWrite));
    m_port->setPortName(line.path());
    QVERIFY(!m_port->open(QIODevice::ReadWrite));
    m_worker->recv_form_cloud_updata();
    QVERIFY(m_log->texts().contains("无权访问串口"));
    QCOMPARE(boxes(), QStringList("2|警告|串口未连接"));
}

void test_hardware_upgrade::the_port_must_be_open_for_what_is_done_data()
{
    QTest::addColumn<question>("what");
    QTest::addColumn<QIODevice::OpenMode>("mode");
    QTest::addColumn<bool>("enough");
    using device = QIODevice;
    QTest::newRow("cloud, both") << question::cloud << device::OpenMode(device::ReadWrite) << true;
    QTest::newRow("cloud, read") << question::cloud << device::OpenMode(device::ReadOnly) << true;
    QTest::newRow("cloud, write") << question::cloud << device::OpenMode(device::WriteOnly)
                                  << false;
    QTest::newRow("local, both") << question::local << device::OpenMode(device::ReadWrite) << true;
    QTest::newRow("local, read") << question::local << device::OpenMode(device::ReadOnly) << false;
    QTest::newRow("local, write") << question::local << device::OpenMode(device::WriteOnly)
                                  << false;
}

void test_hardware_upgrade::the_port_must_be_open_for_what_is_done()
{
    QFETCH(question, what);
    QFETCH(QIODevice::OpenMode, mode);
    QFETCH(bool, enough);
    const open_line line(*m_port);
    m_port->setPortName(line.path());
    QVERIFY(m_port->open(mode));
    ask(what);
    QCOMPARE(boxes(), QStringList(enough ? "1|提示|本设备不支持升级" : "2|警告|串口未连接"));
    QCOMPARE(m_log->has("send version to device"), enough);
}

void test_hardware_upgrade::what_the_instrument_is_asked_data()
{
    QTest::addColumn<question>("what");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QList<int>>("waits"); // ms: three passes, and one before a confirmation
    QTest::addColumn<QString>("box");
    QTest::newRow("cloud") << question::cloud << QByteArray("version") << QList<int>{500, 500, 500}
                           << "1|提示|本设备不支持升级";
    QTest::newRow("local") << question::local << QByteArray("version\r\n")
                           << QList<int>{500, 500, 500} << "1|提示|本设备不支持升级";
    QTest::newRow("confirm") << question::confirm << QByteArray("version")
                             << QList<int>{200, 500, 500, 500}
                             << "1|提示|本设备不支持升级或设备未连接";
}

void test_hardware_upgrade::what_the_instrument_is_asked()
{
    QFETCH(question, what);
    QFETCH(QByteArray, request);
    QFETCH(QList<int>, waits);
    QFETCH(QString, box);
    const open_line line(*m_port);
    open_port(line.path());
    asked_single_shots().clear();
    ask(what);
    QCOMPARE(asked_single_shots(), waits);
    QCOMPARE(boxes(), QStringList(box));
    m_port->write("#"); // what follows is not theirs
    QCOMPARE(hear(line, request.size() + 1), request + "#");
}

void test_hardware_upgrade::when_an_answer_counts_data()
{
    QTest::addColumn<int>("after");
    QTest::addColumn<bool>("seen");
    QTest::newRow("before the question") << 0 << true;
    QTest::newRow("in the first wait") << 1 << true;
    QTest::newRow("in the last wait") << 3 << false;
}

/// The answer comes once the program has looked so often.
void test_hardware_upgrade::when_an_answer_counts()
{
    QFETCH(int, after);
    QFETCH(bool, seen);
    const open_line line(*m_port);
    open_port(line.path());
    const auto looks = [this] { return m_log->texts().filter("recive data from device:").size(); };
    const auto answer = [&line] { line.say(QByteArray("G1", 3)); };
    QTimer answering;
    connect(&answering, &QTimer::timeout, &answering, [&] {
        if (looks() == after) {
            answer();
            answering.stop();
        }
    });
    if (after == 0) {
        answer();
        QTRY_COMPARE_WITH_TIMEOUT(m_port->bytesAvailable(), 3, patience_ms);
    } else {
        answering.start(1);
    }
    QElapsedTimer elapsed;
    elapsed.start();
    const file_dialog_user chooser; // cancels
    ask(question::local);
    QCOMPARE(chooser.dialogs.size(), seen ? 1 : 0);
    QCOMPARE(boxes(), QStringList(seen ? "2|警告|文件打开失败" : "1|提示|本设备不支持升级"));
    QVERIFY(looks() > after || !seen);
    if (after == 0) {
        QCOMPARE(looks(), 1);
        QVERIFY(elapsed.elapsed() >= 490); // it is used when the pass is over
    }
}

void test_hardware_upgrade::a_question_takes_the_port_from_a_transfer_data()
{
    QTest::addColumn<question>("what");
    QTest::addColumn<bool>("taken");
    QTest::newRow("cloud") << question::cloud << true;
    QTest::newRow("local") << question::local << true;
    QTest::newRow("confirm") << question::confirm << false;
}

void test_hardware_upgrade::a_question_takes_the_port_from_a_transfer()
{
    QFETCH(question, what);
    QFETCH(bool, taken);
    const open_line line(*m_port);
    open_port(line.path());
    begin_transfer(image_of(4096));
    ask(what); // remains without an answer
    QCOMPARE(QObject::disconnect(m_port.get(), &QSerialPort::readyRead, m_worker.get(),
                                 &hardware_upgrade::serial_read),
             !taken);
}

void test_hardware_upgrade::an_instrument_without_an_answer_data()
{
    QTest::addColumn<bool>("cloud");
    QTest::newRow("cloud") << true;
    QTest::newRow("local") << false;
}

void test_hardware_upgrade::an_instrument_without_an_answer()
{
    QFETCH(bool, cloud);
    start_instrument({.version = {}});
    if (cloud)
        m_worker->recv_form_cloud_updata();
    else
        m_worker->recv_form_local_updata();
    QCOMPARE(boxes(), QStringList("1|提示|本设备不支持升级"));
    QVERIFY(m_log->has("send version to device"));
    // Three passes.
    QCOMPARE(m_log->texts().filter("recive data from device:").size(), 3);
    QVERIFY(m_server->requests.isEmpty());
}

void test_hardware_upgrade::a_local_file_is_asked_for()
{
    // The answer's content is not looked at.
    start_instrument({.version = "?", .version_ends_with_zero = false});
    const QByteArray image = image_of(4000);
    file_dialog_user chooser;
    chooser.path = write("a b.bin", image);
    QSignalSpy progress(m_worker.get(), &hardware_upgrade::updata_progress);
    m_worker->recv_form_local_updata();
    QCOMPARE(chooser.dialogs.size(), 1);
    QCOMPARE(chooser.dialogs[0].title, QStringLiteral("file selection"));
    QCOMPARE(chooser.dialogs[0].filters, QStringList("file(*.hex *.bin)"));
    QCOMPARE(QDir(chooser.dialogs[0].directory), QDir(QDir::currentPath()));
    QTRY_VERIFY_WITH_TIMEOUT(boxes().contains(good_box), patience_ms);
    QCOMPARE(m_taken->name, QStringLiteral("a b.bin"));
    QCOMPARE(m_taken->image, image);
    QVERIFY(m_log->has("send iapstart to device"));
    QVERIFY(m_log->has("file lenth 4000"));
    QList<int> last;
    for (const QVariantList& one : progress.mid(progress.size() - 4))
        last += one[0].toInt();
    QCOMPARE(last, QList<int>({25, 51, 76, 100}));
}

void test_hardware_upgrade::no_file_chosen()
{
    start_instrument();
    const file_dialog_user chooser; // cancels
    m_worker->recv_form_local_updata();
    QCOMPARE(chooser.dialogs.size(), 1);
    QCOMPARE(boxes(), QStringList("2|警告|文件打开失败"));
    QVERIFY(m_log->has("Open file fail."));
    QVERIFY(!m_log->has("iapstart"));
}

void test_hardware_upgrade::bad_files_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("log");
    QTest::newRow("binary too large") << "f.bin" << QByteArray(4194305, 'x')
                                      << QString("2|警告|bin文件过大") << "bin file too large";
    QTest::newRow("hex too large") << "f.hex" << QByteArray(12582913, '\n')
                                   << QString("2|警告|hex文件过大") << "hex file too large";
    QTest::newRow("hex malformed") << "f.hex" << QByteArray(":10000000zz\n")
                                   << QString("2|警告|hex文件格式错误") << "hex file malformed";
    QTest::newRow("binary without data")
        << "f.bin" << QByteArray() << QString("2|警告|固件文件中没有数据")
        << "firmware file without data";
    QTest::newRow("hex without data")
        << "f.hex" << QByteArray(":00000001FF\n") << QString("2|警告|固件文件中没有数据")
        << "firmware file without data";
}

void test_hardware_upgrade::bad_files()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, box);
    QFETCH(QString, log);
    start_instrument();
    file_dialog_user chooser;
    chooser.path = write(name, content);
    m_worker->recv_form_local_updata();
    QCOMPARE(boxes(), QStringList(box));
    QVERIFY(m_log->has(log));
    QVERIFY(!m_log->has("iapstart")); // the instrument is left alone
    QCOMPARE(m_worker->active, 0);
}

void test_hardware_upgrade::images_reach_the_instrument_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1024, 1025, 2048, 65537, 4194304})
        QTest::addRow("%d", size) << size;
}

void test_hardware_upgrade::images_reach_the_instrument()
{
    QFETCH(int, size);
    start_instrument();
    const QByteArray image = image_of(size);
    upgrade(image);
    QCOMPARE(m_taken->image.size(), image.size());
    QCOMPARE(m_taken->sha256(),
             QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex());
}

void test_hardware_upgrade::small_images_have_no_time_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1, 128, 129, 1023})
        QTest::addRow("%d", size) << size;
}

/// Below 1024 bytes the time for the transfer is none: the failure is told as
/// soon as the first block is out, and again after each new beginning.
void test_hardware_upgrade::small_images_have_no_time()
{
    QFETCH(int, size);
    start_instrument();
    file_dialog_user chooser;
    chooser.path = write("small.bin", image_of(size));
    m_worker->recv_form_local_updata();
    QTRY_VERIFY_WITH_TIMEOUT(boxes().size() >= 2, patience_ms);
    QCOMPARE(boxes().first(2), QStringList({failed_box, failed_box}));
    QVERIFY(m_log->texts().filter("send iapstart to device").size() >= 2);
    QVERIFY(!m_taken.has_value());
}

void test_hardware_upgrade::a_hex_file_is_closed_up()
{
    start_instrument();
    QByteArray text = ":020000040800F2\n";
    QByteArray image;
    for (int i = 0; i < 100; ++i) {
        const QByteArray data = image_of(16 + i % 3);
        image += data;
        // Addresses all over the place; no checksum.
        text += ":" + QByteArray::number(data.size(), 16).rightJustified(2, '0') +
                QByteArray::number((i * 7919) % 65536, 16).rightJustified(4, '0') + "00" +
                data.toHex() + "\r\n";
    }
    upgrade(text + ":00000001FF\r\n", "f.hex");
    QCOMPARE(m_taken->name, QStringLiteral("f.hex"));
    QCOMPARE(m_taken->image, image);
}

void test_hardware_upgrade::an_upper_case_suffix_is_binary()
{
    start_instrument();
    QByteArray text;
    for (int i = 0; i < 100; ++i)
        text += ":0400000041424344FF\n";
    upgrade(text, "F.HEX");
    QCOMPARE(m_taken->image, text);
}

void test_hardware_upgrade::refused_blocks_are_repeated()
{
    start_instrument({.refused = {1, 2, 9}});
    const QByteArray image = image_of(9000);
    QSignalSpy progress(m_worker.get(), &hardware_upgrade::updata_progress);
    upgrade(image);
    QCOMPARE(m_taken->image, image);
    // A block that is sent again reports nothing.
    QCOMPARE(progress.size() % 9, 0);
    QCOMPARE(progress.last()[0].toInt(), 100);
}

/// The time of a transfer begins with its header: before it nothing is told.
void test_hardware_upgrade::silence_before_the_header_is_not_told()
{
    start_instrument({.silent_from = 0});
    file_dialog_user chooser;
    chooser.path = write("f.bin", image_of(100));
    m_worker->recv_form_local_updata();
    QTest::qWait(300);
    QCOMPARE(boxes(), QStringList());
    QCOMPARE(m_worker->active, 1);
    QCOMPARE(m_worker->pending, 0);
    QVERIFY(!m_worker->transfer_timer->isActive());
}

void test_hardware_upgrade::silence_is_told_and_tried_again_data()
{
    QTest::addColumn<int>("message");
    QTest::newRow("at the header") << 1;
    QTest::newRow("at the first block") << 2;
    QTest::newRow("at the second block") << 3;
    QTest::newRow("at the end") << 4;
    QTest::newRow("at the end's repeat") << 5;
    QTest::newRow("at the closing block") << 6;
}

void test_hardware_upgrade::silence_is_told_and_tried_again()
{
    QFETCH(int, message);
    start_instrument({.silent_from = message});
    const QByteArray image = image_of(2048);
    upgrade(image);
    QCOMPARE(m_taken->image, image);
    QCOMPARE(boxes().first(), failed_box);
    QCOMPARE(boxes().last(), good_box);
    QVERIFY(m_log->texts().filter("send iapstart to device").size() >= 2);
}

void test_hardware_upgrade::success_leaves_nothing_running()
{
    start_instrument();
    upgrade(image_of(1024));
    QCOMPARE(m_worker->active, 0);
    QCOMPARE(m_worker->pending, 0);
    QCOMPARE(m_worker->transfer.at(), ymodem::sender::idle);
    const auto seen = boxes().size();
    QTest::qWait(500); // longer than the time of the transfer
    QCOMPARE(boxes().size(), seen);
}

/// Without an event loop the steps are taken one by one, and no timer strikes.
void test_hardware_upgrade::one_byte_for_each_call()
{
    const open_line line(*m_port);
    open_port(line.path());
    const QByteArray image = image_of(129);
    begin_transfer(image);
    QCOMPARE(line.hear(8), QByteArray("iapstart"));

    line.say("zzC");
    QVERIFY(m_port->waitForReadyRead(patience_ms));
    QCOMPARE(m_port->bytesAvailable(), 2); // announced once, taken once
    m_worker->serial_read();
    QCOMPARE(m_port->bytesAvailable(), 1);
    QCOMPARE(m_worker->transfer.at(), ymodem::sender::idle);
    m_worker->serial_read();
    QCOMPARE(m_worker->transfer.at(), ymodem::sender::header_sent);
}

/// The table's road from "iapstart" to the end, byte for byte as it goes over the
/// line, for an image of 129 bytes: one block of 1024.
void test_hardware_upgrade::the_whole_road()
{
    const open_line line(*m_port);
    open_port(line.path());
    const QByteArray image = image_of(129);
    begin_transfer(image);
    QSignalSpy progress(m_worker.get(), &hardware_upgrade::updata_progress);
    QCOMPARE(line.hear(8), QByteArray("iapstart"));
    const auto say = [&](char byte) {
        line.say(QByteArray(1, byte));
        QVERIFY(m_port->waitForReadyRead(patience_ms));
    };
    say('?'); // nothing for the first stage
    QCOMPARE(m_worker->active, 1);
    say('C');
    QCOMPARE(hear(line, 133), ymodem::header_block("a.bin", 129));
    QCOMPARE(m_worker->pending, 1);
    QVERIFY(m_worker->transfer_timer->isActive());
    QCOMPARE(m_worker->transfer_timer->interval(), 0); // below 1024 bytes
    say('\x06');
    say('C');
    QCOMPARE(hear(line, 1029), ymodem::data_block(1, image));
    QCOMPARE(image.size() + QByteArray(895, '\x1A').size(), 1024);
    say('\x15');
    QCOMPARE(hear(line, 1029), ymodem::data_block(1, image));
    QCOMPARE(progress.size(), 1); // none for the repeat
    QCOMPARE(progress[0][0].toInt(), 100);
    say('\x06');
    QCOMPARE(hear(line, 1), QByteArray("\x04"));
    say('\x15');
    QCOMPARE(hear(line, 1), QByteArray("\x04"));
    say('\x06');
    say('C');
    QCOMPARE(hear(line, 133), ymodem::closing_block());
    QCOMPARE(m_worker->pending, 1);
    m_worker->transfer_timer->stop(); // the box has an event loop
    say('\x06');
    QCOMPARE(boxes(), QStringList(good_box));
    QCOMPARE(m_worker->active, 0);
    QCOMPARE(m_worker->pending, 0);
}

/// What is left of an earlier transfer's time does not strike in the next one.
void test_hardware_upgrade::each_transfer_has_its_own_time()
{
    const open_line line(*m_port);
    open_port(line.path());
    for (const int size : {400 * 1024, 300 * 1024 + 1023}) {
        begin_transfer(image_of(size));
        line.say("C");
        QTRY_COMPARE_WITH_TIMEOUT(m_worker->transfer.at(), ymodem::sender::header_sent,
                                  patience_ms);
        QVERIFY(m_worker->transfer_timer->isActive());
        QCOMPARE(m_worker->transfer_timer->interval(), size / 1024 * 200);
    }
}

void test_hardware_upgrade::answers_in_one_piece_are_all_taken()
{
    const open_line line(*m_port);
    open_port(line.path());
    begin_transfer(image_of(200'000));
    line.say("C\x06"
             "C\x06\x06");
    QTRY_COMPARE_WITH_TIMEOUT(m_worker->transfer.offset(), 3 * 1024, patience_ms);
    QCOMPARE(m_port->bytesAvailable(), 0);
}

void test_hardware_upgrade::what_was_said_before_is_no_answer()
{
    const open_line line(*m_port);
    open_port(line.path());
    line.say("CCC");
    QTRY_COMPARE_WITH_TIMEOUT(m_port->bytesAvailable(), 3, patience_ms);
    begin_transfer(image_of(200'000));
    QCOMPARE(m_port->bytesAvailable(), 0);
    line.say("C");
    QTRY_COMPARE_WITH_TIMEOUT(m_worker->transfer.at(), ymodem::sender::header_sent, patience_ms);
}

void test_hardware_upgrade::bytes_are_dropped_while_nothing_runs()
{
    start_instrument({.version = "0123456789", .version_ends_with_zero = false});
    connect(m_port.get(), &QSerialPort::readyRead, m_worker.get(), &hardware_upgrade::serial_read);
    m_port->write("version");
    QTRY_COMPARE(m_port->bytesAvailable(), 9); // one is gone
    m_worker->serial_read();
    QCOMPARE(m_port->bytesAvailable(), 8);
    QCOMPARE(m_worker->active, 0);
    QVERIFY(boxes().isEmpty());
}

void test_hardware_upgrade::the_machine_stops_silently()
{
    const open_line line(*m_port);
    open_port(line.path());
    begin_transfer(image_of(4096));
    line.say("C\x06"
             "CX"); // no acknowledgement
    QTRY_VERIFY_WITH_TIMEOUT(
        m_worker->transfer.at() == ymodem::sender::data_sent && m_worker->active == 0, patience_ms);
    QCOMPARE(m_worker->transfer_timer->interval(), 800);
    QVERIFY(boxes().isEmpty()); // nothing is told before the time is over
    line.say("\x06");
    QTRY_COMPARE_WITH_TIMEOUT(boxes().size(), 1, patience_ms);
    QCOMPARE(boxes(), QStringList(failed_box));
    QCOMPARE(m_worker->transfer.offset(), 0);
    QTRY_COMPARE(m_worker->active, 1); // and it has begun again
    QCOMPARE(m_log->texts().filter("send iapstart to device").size(), 2);
}

void test_hardware_upgrade::a_press_during_a_question_is_ignored()
{
    start_instrument();
    offer("VELMO-SIM-1.0", R"("Url1":"https://u.example/a.bin")");
    QTimer::singleShot(100, m_worker.get(), &hardware_upgrade::recv_form_cloud_updata);
    QTimer::singleShot(150, m_worker.get(), &hardware_upgrade::recv_form_local_updata);
    look_at_list();
    QTest::qWait(300);
    QCOMPARE(m_log->texts().filter("send version to device").size(), 1);
    QCOMPARE(m_offered, QStringList("a.bin"));
    QVERIFY(boxes().isEmpty());
}

void test_hardware_upgrade::the_list_fills_the_box()
{
    start_instrument();
    offer("VELMO-SIM-1.0",
          R"("Url3":"https://u.example/fw/c.bin","Url1":"https://u.example/fw/a.hex",
             "Url5":"https://v.example/x/e.bin","Url2":"https://u.example/fw/b.bin",
             "Url4":"https://u.example/fw/d.bin","Url6":"https://u.example/fw/f.bin")");
    look_at_list();
    QCOMPARE(m_offered, QStringList({"a.hex", "b.bin", "c.bin", "d.bin", "e.bin"}));
    QCOMPARE(m_worker->url_folder, QStringLiteral("https://v.example/x")); // the last one's
    QCOMPARE(m_worker->device_version, QStringLiteral("VELMO-SIM-1.0"));
    QVERIFY(m_server->requests[0].header.contains("\r\nUser-Agent: RT-Thread ART\r\n"));
    QVERIFY(m_log->has("截取的字符串: "));
    const QStringList places{"u.example/fw|a.hex", "u.example/fw|b.bin", "u.example/fw|c.bin",
                             "u.example/fw|d.bin", "v.example/x|e.bin"};
    int number = 0;
    for (const QString& place : places) {
        const QString folder = "https://" + place.section('|', 0, 0);
        const QString file = place.section('|', 1);
        const qsizetype at =
            m_log->texts().indexOf(QStringLiteral("\"VELMO-SIM-1.0\" Url%1: \"%2/%3\"")
                                       .arg(QString::number(++number), folder, file));
        QVERIFY2(at >= 2, qPrintable(place));
        QCOMPARE(m_log->texts()[at - 2], "路径:  \"" + folder + '"');
        QCOMPARE(m_log->texts()[at - 1], "文件名:  \"" + file + '"');
    }
    QVERIFY(boxes().isEmpty());
}

void test_hardware_upgrade::twice_lists_twice()
{
    start_instrument();
    offer("VELMO-SIM-1.0", R"("Url1":"https://u.example/a.bin","Url4":"https://u.example/d.bin")");
    look_at_list();
    look_at_list();
    QCOMPARE(m_offered, QStringList({"a.bin", "d.bin", "a.bin", "d.bin"}));
}

void test_hardware_upgrade::the_version_decides_what_is_listed()
{
    // Without a zero byte the whole text counts.
    start_instrument({.version = "G2-\xE4\xBA\x8C", .version_ends_with_zero = false});
    m_server->answers[list_path] = {
        .body = R"({"G1":{"Url1":"/a"},"G2-二":{"Url1":"https://u.example/two.bin"}})"};
    look_at_list();
    QCOMPARE(m_offered, QStringList("two.bin"));
    QVERIFY(m_log->has("没有找到 \\0，原始字符串: "));
}

/// Only the body is looked at.
void test_hardware_upgrade::a_list_counts_whatever_its_status()
{
    start_instrument();
    m_server->answers[list_path] = {.body =
                                        R"({"VELMO-SIM-1.0":{"Url1":"https://u.example/a.bin"}})",
                                    .status = "503 Service Unavailable"};
    look_at_list();
    QCOMPARE(m_offered, QStringList("a.bin"));
    QVERIFY(boxes().isEmpty());
}

void test_hardware_upgrade::lists_that_say_nothing_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("told");
    QTest::newRow("an unknown instrument")
        << QByteArray(R"({"G9":{}})") << QStringList("1|提示|本设备不支持升级");
    QTest::newRow("no object") << QByteArray("[]") << QStringList("1|提示|本设备不支持升级");
    QTest::newRow("no images") << QByteArray(R"({"VELMO-SIM-1.0":{}})") << QStringList();
    QTest::newRow("no object for it") << QByteArray(R"({"VELMO-SIM-1.0":"x"})") << QStringList();
    QTest::newRow("no JSON") << QByteArray("<html>")
                             << QStringList({"3|检查失败|服务器地址错误或JSON格式错误!",
                                             "3|检查失败|illegal value"});
    QTest::newRow("nothing") << QByteArray()
                             << QStringList({"3|检查失败|服务器地址错误或JSON格式错误!",
                                             "3|检查失败|illegal value"});
}

void test_hardware_upgrade::lists_that_say_nothing()
{
    QFETCH(QByteArray, body);
    QFETCH(QStringList, told);
    start_instrument();
    m_server->answers[list_path] = {.body = body};
    look_at_list();
    QTRY_COMPARE_WITH_TIMEOUT(boxes(), told, patience_ms);
    QCOMPARE(m_offered, QStringList());
    if (told.size() == 1)
        QVERIFY(m_log->has("not found!"));
}

void test_hardware_upgrade::addresses_without_a_folder()
{
    start_instrument();
    offer("VELMO-SIM-1.0", R"("Url1":"https://u.example/fw/a.bin","Url2":"b.bin","Url3":7)");
    look_at_list();
    QCOMPARE(m_offered, QStringList({"a.bin", "b.bin"}));
    QCOMPARE(m_worker->url_folder, QStringLiteral("https://u.example/fw"));
    QVERIFY(m_log->has("未找到 '/' 符号"));
}

void test_hardware_upgrade::the_second_confirm_uses_what_the_first_has_fetched()
{
    start_instrument();
    const QByteArray image = image_of(5000);
    m_server->answers["/fw/new.bin"] = {.body = image};
    offer("VELMO-SIM-1.0", R"("Url1":")" + m_server->address("/fw/new.bin").toEncoded() + "\"");
    look_at_list();
    m_worker->recv_form_sure("new.bin");
    QCOMPARE(boxes(), QStringList("2|警告|bin文件打开失败"));
    QVERIFY(m_log->has("bin file open failed"));
    QVERIFY(!m_log->has("iapstart"));
    const QString path = m_folder->filePath("new.bin");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path), patience_ms);
    QTRY_VERIFY(m_log->has("Downloaded successfully to:"));

    m_worker->recv_form_sure("new.bin");
    QTRY_VERIFY_WITH_TIMEOUT(boxes().contains(good_box), patience_ms);
    QCOMPARE(m_taken->name, QStringLiteral("new.bin"));
    QCOMPARE(m_taken->image, image);
    // It is fetched anew each time.
    QTRY_COMPARE_WITH_TIMEOUT(m_server->requests.size(), 3, patience_ms);
}

/// A read or another upgrade gets every byte of its answer.
void test_hardware_upgrade::success_gives_the_port_back()
{
    start_instrument();
    const QByteArray image = image_of(65536);
    write("new.bin", image);
    m_server->answers["/fw/new.bin"] = {.body = image};
    offer("VELMO-SIM-1.0", R"("Url1":")" + m_server->address("/fw/new.bin").toEncoded() + "\"");
    look_at_list();
    m_worker->recv_form_sure("new.bin");
    QTRY_COMPARE_WITH_TIMEOUT(boxes().count(good_box), 1, patience_ms);

    m_port->write("version");
    QTRY_COMPARE_WITH_TIMEOUT(m_port->bytesAvailable(), 14, patience_ms);
    QTest::qWait(50); // nobody takes them
    QCOMPARE(m_port->readAll(), QByteArray("VELMO-SIM-1.0", 14));

    m_taken.reset();
    m_worker->recv_form_sure("new.bin");
    QTRY_COMPARE_WITH_TIMEOUT(boxes().count(good_box), 2, patience_ms);
    QVERIFY(m_taken.has_value() && m_taken->image == image);
}

/// The address is never empty, with the "/" in it, so that nobody is sent back to
/// the list: an instrument without a zero byte has the version of none.
void test_hardware_upgrade::confirm_without_a_look_at_the_list()
{
    start_instrument({.version_ends_with_zero = false});
    m_worker->recv_form_sure("a.bin");
    QTRY_COMPARE_WITH_TIMEOUT(boxes().size(), 2, patience_ms);
    QVERIFY(boxes().contains("2|警告|bin文件打开失败"));
    QVERIFY(boxes().contains("2|警告|文件下载失败"));
    QCOMPARE(m_worker->file_url, QStringLiteral("/a.bin"));
}

void test_hardware_upgrade::confirm_without_a_zero_byte_fails()
{
    start_instrument({.version_ends_with_zero = false});
    offer("VELMO-SIM-1.0", R"("Url1":"https://u.example/a.bin")");
    look_at_list();
    QCOMPARE(m_offered, QStringList("a.bin"));
    m_worker->recv_form_sure("a.bin");
    QCOMPARE(boxes(), QStringList("1|提示|本设备不支持升级"));
    QVERIFY(m_log->has("没有找到 \\0，原始字符串: "));
}

void test_hardware_upgrade::confirm_of_another_version_fails()
{
    start_instrument();
    m_worker->device_version = QStringLiteral("G9");
    m_worker->url_folder = m_server->address("/fw").toString();
    m_worker->recv_form_sure("a.bin");
    QCOMPARE(boxes(), QStringList("1|提示|本设备不支持升级"));
    QVERIFY(m_server->requests.isEmpty());
}

void test_hardware_upgrade::confirm_without_an_answer()
{
    // No look at the port: a closed one simply gives no answer.
    m_worker->recv_form_sure("a.bin");
    QCOMPARE(boxes(), QStringList("1|提示|本设备不支持升级或设备未连接"));
    QCOMPARE(m_worker->file_url, QStringLiteral("/a.bin"));
}

void test_hardware_upgrade::an_image_that_cannot_be_fetched()
{
    start_instrument();
    m_worker->device_version = QStringLiteral("VELMO-SIM-1.0");
    m_worker->url_folder = m_server->address("/fw").toString();
    m_server->answers["/fw/a.bin"] = {.body = image_of(9000), .cut_after = 8000};
    m_worker->recv_form_sure("a.bin");
    QTRY_COMPARE_WITH_TIMEOUT(boxes().size(), 2, patience_ms);
    QVERIFY(boxes().contains("2|警告|bin文件打开失败"));
    QVERIFY(boxes().contains("2|警告|文件下载失败"));
    QVERIFY(m_log->has("Download failed: "));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList());
}

void test_hardware_upgrade::an_image_that_cannot_be_stored()
{
    start_instrument();
    m_worker->device_version = QStringLiteral("VELMO-SIM-1.0");
    m_worker->url_folder = m_server->address("/fw").toString();
    m_worker->folder = m_folder->filePath("missing");
    m_server->answers["/fw/a.hex"] = {.body = "image"};
    m_worker->recv_form_sure("a.hex");
    QTRY_COMPARE_WITH_TIMEOUT(boxes().size(), 2, patience_ms);
    QVERIFY(boxes().contains("2|警告|hex文件打开失败"));
    QVERIFY(boxes().contains("2|警告|文件打开失败"));
    QVERIFY(m_log->has("hex file open fail"));
    QVERIFY(m_log->has("Failed to open the file for writing."));
}

void test_hardware_upgrade::image_names_stay_in_the_folder()
{
    start_instrument();
    QVERIFY(QDir(m_folder->path()).mkdir("program"));
    m_worker->folder = m_folder->filePath("program");
    m_worker->device_version = QStringLiteral("VELMO-SIM-1.0");
    m_worker->url_folder = m_server->address("/fw").toString();
    m_server->answers["/fw/..%5C..%5Cevil.bin"] = {.body = "evil"};
    m_worker->recv_form_sure("..%5C..%5Cevil.bin");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_folder->filePath("program/evil.bin")), patience_ms);
    QCOMPARE(m_worker->local_name, QStringLiteral("evil.bin"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList("program"));
}

QTEST_MAIN(test_hardware_upgrade)
#include "test_hardware_upgrade.moc"
