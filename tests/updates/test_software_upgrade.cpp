// The check for a newer version and the download, against an HTTPS server on
// this computer.

#include "support/box_watcher.h"
#include "support/log_capture.h"
#include "update_server.h"
#include "updates/software_upgrade.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QMetaMethod>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

constexpr int patience_ms = 30'000;

const QByteArray feed_path = "/software_update.json";

QByteArray feed(const QByteArray& version, const QByteArray& url)
{
    return R"({"VerisonObj":{"LatestVersion":")" + version + R"(","Url_64":")" + url +
           R"(","UpdateTime":"2024-03-05","ReleaseNote":"faster <b>"}})";
}

} // namespace

class test_software_upgrade : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void an_unconfigured_build_reaches_nobody();
    void names_of_signal_and_slots();
    void versions_are_compared_as_text_data();
    void versions_are_compared_as_text();
    void a_new_version_is_described();
    void the_host_is_told_the_usual_name();
    void feeds_that_say_nothing_data();
    void feeds_that_say_nothing();
    void a_feed_counts_whatever_its_status();
    void a_wrong_certificate_is_refused_data();
    void a_wrong_certificate_is_refused();
    void nobody_answers();
    void a_slow_feed_is_waited_for();
    void redirects_are_followed_to_https_only();
    void each_request_has_its_own_connection();
    void a_second_check_takes_the_place_of_the_first();

    void a_download_ends_the_program();
    void progress_is_told_in_whole_megabytes();
    void a_total_that_is_not_known_is_busy();
    void downloads_that_fail_data();
    void downloads_that_fail();
    void no_check_no_url();
    void a_folder_that_takes_no_file();
    void names_stay_in_the_folder();

private:
    void check(const QByteArray& answer);
    [[nodiscard]] bool fetch();
    [[nodiscard]] QStringList files() const;
    [[nodiscard]] static QStringList described(const box_watcher& watcher);

    std::unique_ptr<update_server> m_server;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<software_upgrade> m_worker;
};

void test_software_upgrade::initTestCase()
{
    // The boxes are the only windows here, and their end is not the program's.
    QApplication::setQuitOnLastWindowClosed(false);
    m_server = std::make_unique<update_server>();
    m_server->trust();
}

void test_software_upgrade::init()
{
    m_server->answers.clear();
    m_server->requests.clear();
    m_folder = std::make_unique<QTemporaryDir>();
    m_worker = std::make_unique<software_upgrade>();
    m_worker->feed = m_server->address(feed_path);
    m_worker->folder = m_folder->path();
}

/// Runs a check to its box.
void test_software_upgrade::check(const QByteArray& answer)
{
    m_server->answers[feed_path] = {.body = answer};
    box_watcher watcher;
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_VERIFY_WITH_TIMEOUT(
        watcher.boxes.size() == 1 && QApplication::activeModalWidget() == nullptr, patience_ms);
}

/// Runs a download until it ends the program.
bool test_software_upgrade::fetch()
{
    QTimer patience;
    patience.setSingleShot(true);
    connect(&patience, &QTimer::timeout, qApp, [] { QCoreApplication::exit(1); });
    patience.start(patience_ms);
    QTimer::singleShot(0, m_worker.get(), &software_upgrade::download_file);
    return QApplication::exec() == 0;
}

QStringList test_software_upgrade::files() const
{
    return QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

/// "kind|title|text" of each box.
QStringList test_software_upgrade::described(const box_watcher& watcher)
{
    QStringList all;
    for (const box_watcher::seen_box& box : watcher.boxes)
        all += QStringLiteral("%1|%2|%3").arg(box.icon).arg(box.title, box.text);
    return all;
}

void test_software_upgrade::an_unconfigured_build_reaches_nobody()
{
    const software_upgrade worker;
    QCOMPARE(worker.feed.scheme(), QStringLiteral("https"));
    QCOMPARE(worker.feed.path(), QStringLiteral("/software_update.json"));
    QCOMPARE(worker.feed.authority(), QStringLiteral(VELMO_UPDATE_HOST));
    QCOMPARE(worker.folder, QCoreApplication::applicationDirPath());
}

void test_software_upgrade::names_of_signal_and_slots()
{
    const QMetaObject& meta = software_upgrade::staticMetaObject;
    QCOMPARE(QByteArray(meta.method(meta.methodOffset()).methodSignature()),
             QByteArray("send_set_ui_signal_to_software_upgrade(QString,QString,int)"));
    for (const char* slot : {"reply_finished(QNetworkReply*)", "upgrade_request(QString,int)"})
        QVERIFY2(meta.indexOfSlot(slot) >= 0, slot);
}

void test_software_upgrade::versions_are_compared_as_text_data()
{
    QTest::addColumn<QByteArray>("latest");
    QTest::addColumn<bool>("newer");
    QTest::newRow("the same") << QByteArray("V3.2.3") << false;
    QTest::newRow("one more") << QByteArray("V3.2.4") << true;
    QTest::newRow("one less") << QByteArray("V3.2.2") << false;
    QTest::newRow("a further digit") << QByteArray("V3.2.30") << true;
    // "1" sorts before "2": so it is and so it stays.
    QTest::newRow("ten") << QByteArray("V3.10.0") << false;
    QTest::newRow("lower case") << QByteArray("v1") << true;
    QTest::newRow("nothing") << QByteArray("") << false;
}

void test_software_upgrade::versions_are_compared_as_text()
{
    QFETCH(QByteArray, latest);
    QFETCH(bool, newer);
    m_server->answers[feed_path] = {.body = feed(latest, "https://u.example/a/velmo.exe")};
    box_watcher watcher;
    m_worker->upgrade_request("V3.2.3", 1);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Information);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("检查更新"));
    QCOMPARE(watcher.boxes[0].text.startsWith("检测到新版本!\n版本号：" + latest + "\n"), newer);
    QCOMPARE(watcher.boxes[0].text == QStringLiteral("当前已经是最新版本!"), !newer);
    // Stored in either case.
    QCOMPARE(m_worker->download_url, QStringLiteral("https://u.example/a/velmo.exe"));
    QCOMPARE(m_worker->file_name, QStringLiteral("velmo.exe"));
    QCOMPARE(m_worker->current_version, QStringLiteral("V3.2.3"));
    QCOMPARE(m_worker->language, 1);
}

void test_software_upgrade::a_new_version_is_described()
{
    m_server->answers[feed_path] = {.body = feed("V3.3.0", "https://u.example/velmo.exe")};
    box_watcher watcher;
    Qt::TextFormat format = Qt::RichText;
    watcher.look = [&format](QMessageBox* box) { format = box->textFormat(); };
    const log_capture log;
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QCOMPARE(watcher.boxes[0].text,
             QStringLiteral("检测到新版本!\n版本号：V3.3.0\n更新时间：2024-03-05\n更新说明：faster "
                            "<b>"));
    QCOMPARE(format, Qt::PlainText);   // the host's words are no markup
    QVERIFY(log.has("LatestVersion")); // the whole body
}

void test_software_upgrade::the_host_is_told_the_usual_name()
{
    check(feed("V1", ""));
    QCOMPARE(m_server->requests.size(), 1);
    QVERIFY(m_server->requests[0].header.startsWith("GET /software_update.json HTTP/1.1\r\n"));
    QVERIFY(m_server->requests[0].header.contains("\r\nUser-Agent: RT-Thread ART\r\n"));
}

void test_software_upgrade::feeds_that_say_nothing_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<qint64>("cut_after");
    const QByteArray good = feed("V3.3.0", "");
    QTest::newRow("no JSON") << QByteArray("<html>") << QByteArray("200 OK") << qint64(-1);
    QTest::newRow("nothing") << QByteArray() << QByteArray("200 OK") << qint64(-1);
    QTest::newRow("cut off") << good << QByteArray("200 OK") << qint64(40);
    QTest::newRow("not found") << QByteArray("gone") << QByteArray("404 Not Found") << qint64(-1);
}

void test_software_upgrade::feeds_that_say_nothing()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, status);
    QFETCH(qint64, cut_after);
    m_server->answers[feed_path] = {.body = body, .status = status, .cut_after = cut_after};
    box_watcher watcher;
    const log_capture log;
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 2, patience_ms);
    for (const box_watcher::seen_box& box : watcher.boxes) {
        QCOMPARE(box.icon, QMessageBox::Critical);
        QCOMPARE(box.title, QStringLiteral("检查失败"));
    }
    QCOMPARE(watcher.boxes[0].text, QStringLiteral("服务器地址错误或JSON格式错误!"));
    QJsonParseError error{};
    QJsonDocument::fromJson(cut_after < 0 ? body : body.first(cut_after), &error);
    QCOMPARE(watcher.boxes[1].text, error.errorString());
    QTRY_VERIFY(log.texts().contains('"' + error.errorString() + '"'));

    // A feed that is JSON and no object says nothing at all.
    m_server->answers[feed_path] = {.body = "[1]"};
    QSignalSpy answered(m_worker->manager, &QNetworkAccessManager::finished);
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(answered.size(), 1, patience_ms);
    QTest::qWait(100);
    QCOMPARE(watcher.boxes.size(), 2);
}

/// Only the body is looked at.
void test_software_upgrade::a_feed_counts_whatever_its_status()
{
    m_server->answers[feed_path] = {.body = feed("V3.3.0", "https://u.example/velmo.exe"),
                                    .status = "503 Service Unavailable"};
    box_watcher watcher;
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QVERIFY(watcher.boxes[0].text.startsWith("检测到新版本!"));
    QCOMPARE(m_worker->file_name, QStringLiteral("velmo.exe"));
}

void test_software_upgrade::a_wrong_certificate_is_refused_data()
{
    QTest::addColumn<QString>("names");
    QTest::addColumn<bool>("trusted");
    QTest::newRow("of an unknown signer") << "IP:127.0.0.1" << false;
    QTest::newRow("of another host") << "DNS:other.example" << true;
}

void test_software_upgrade::a_wrong_certificate_is_refused()
{
    QFETCH(QString, names);
    QFETCH(bool, trusted);
    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    update_server stranger(names);
    if (trusted)
        stranger.trust();
    stranger.answers[feed_path] = {.body = feed("V9", "https://u.example/evil.exe")};
    m_worker->feed = stranger.address(feed_path);
    box_watcher watcher;
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 2, patience_ms);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("检查失败"));
    QCOMPARE(stranger.connections, 1);
    QVERIFY(stranger.requests.isEmpty()); // it was not even asked
    QCOMPARE(m_worker->download_url, QString());

    // Nor is a file taken from it.
    m_worker->download_url = stranger.address("/evil.exe").toString();
    m_worker->file_name = "evil.exe";
    m_worker->download_file();
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 3, patience_ms);
    QCOMPARE(watcher.boxes[2].title, QStringLiteral("下载错误"));
    QVERIFY(stranger.requests.isEmpty());
    QCOMPARE(files(), QStringList());
    QSslConfiguration::setDefaultConfiguration(before);
}

void test_software_upgrade::nobody_answers()
{
    // A port that was free a moment ago.
    quint16 port = 0;
    {
        QTcpServer taken;
        QVERIFY(taken.listen(QHostAddress::LocalHost));
        port = taken.serverPort();
    }
    m_worker->feed = QUrl(QStringLiteral("https://127.0.0.1:%1/software_update.json").arg(port));
    box_watcher watcher;
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 2, patience_ms);
    QCOMPARE(watcher.boxes[0].text, QStringLiteral("服务器地址错误或JSON格式错误!"));
}

void test_software_upgrade::a_slow_feed_is_waited_for()
{
    m_server->answers[feed_path] = {.body = feed("V3.3.0", ""), .piece_delay_ms = 60};
    box_watcher watcher;
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QVERIFY(watcher.boxes[0].text.startsWith("检测到新版本!"));
}

void test_software_upgrade::redirects_are_followed_to_https_only()
{
    const auto redirect_to = [](const QByteArray& place) {
        return update_server::answer{
            .body = "", .status = "302 Found", .more_header = "Location: " + place + "\r\n"};
    };
    m_server->answers["/new.json"] = {.body = feed("V3.3.0", "")};
    m_server->answers[feed_path] = redirect_to("/new.json");
    box_watcher watcher;
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QVERIFY(watcher.boxes[0].text.startsWith("检测到新版本!"));

    watcher.boxes.clear();
    QTcpServer plain;
    QVERIFY(plain.listen(QHostAddress::LocalHost));
    m_server->answers[feed_path] =
        redirect_to("http://127.0.0.1:" + QByteArray::number(plain.serverPort()) + "/");
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 2, patience_ms);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("检查失败"));
    QVERIFY(!plain.hasPendingConnections());

    watcher.boxes.clear(); // in a circle
    m_server->answers[feed_path] = redirect_to(feed_path);
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 2, patience_ms);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("检查失败"));
}

void test_software_upgrade::each_request_has_its_own_connection()
{
    check(feed("V3.3.0", ""));
    // The answer has been taken and its connection is gone.
    QTRY_VERIFY(!QObject::disconnect(m_worker->manager, &QNetworkAccessManager::finished,
                                     m_worker.get(), &software_upgrade::reply_finished));
    check(feed("V3.3.0", ""));
    QCOMPARE(m_server->requests.size(), 2);
}

void test_software_upgrade::a_second_check_takes_the_place_of_the_first()
{
    m_server->answers[feed_path] = {.body = {}, .never = true};
    box_watcher watcher;
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_server->requests.size(), 1, patience_ms);
    m_server->answers[feed_path] = {.body = feed("V3.3.0", "")};
    m_worker->upgrade_request("V3.2.3", 0);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QTest::qWait(100);
    QCOMPARE(watcher.boxes.size(), 1);
    QVERIFY(watcher.boxes[0].text.startsWith("检测到新版本!"));
}

void test_software_upgrade::a_download_ends_the_program()
{
    const QByteArray program(3'000'000, 'p');
    m_server->answers["/files/velmo-3.3.0.exe"] = {.body = program};
    check(feed("V3.3.0", m_server->address("/files/velmo-3.3.0.exe").toEncoded()));
    QCOMPARE(files(), QStringList()); // a check fetches nothing

    box_watcher watcher;
    const log_capture log;
    QVERIFY(fetch());
    QCOMPARE(described(watcher),
             QStringList("1|下载|已下载最新版本到本软件的同地址下，请启动最新应用程序"));
    QCOMPARE(files(), QStringList("velmo-3.3.0.exe"));
    QFile file(m_folder->filePath("velmo-3.3.0.exe"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), program);
    const QString target = '"' + m_folder->filePath("velmo-3.3.0.exe") + '"';
    QVERIFY(log.texts().contains(target));
    QVERIFY(log.texts().contains("Downloaded successfully to: " + target));
    QVERIFY(log.texts().contains("Download progress:  3000000 / 3000000"));
    // The download says nothing of who it is.
    QVERIFY(!m_server->requests.last().header.contains("RT-Thread"));
}

void test_software_upgrade::progress_is_told_in_whole_megabytes()
{
    m_worker->download_url = m_server->address("/v.exe").toString();
    m_worker->file_name = "v.exe";
    box_watcher watcher;
    QSignalSpy told(m_worker.get(), &software_upgrade::send_set_ui_signal_to_software_upgrade);
    m_server->answers["/v.exe"] = {.body = QByteArray(3 * 1048576 - 1, 'p')};
    QVERIFY(fetch());
    QVERIFY(!told.isEmpty());
    QCOMPARE(told.last(), (QVariantList{"2MB", "2MB", 100}));
    for (const QVariantList& one : told)
        QCOMPARE(one[1].toString(), QStringLiteral("2MB"));

    // Below a megabyte: nothing of nothing, while the bar moves.
    told.clear();
    m_server->answers["/v.exe"] = {.body = QByteArray(900'000, 'p'), .piece_delay_ms = 20};
    QVERIFY(fetch());
    int moving = 0;
    for (const QVariantList& one : told) {
        QCOMPARE(one[0].toString(), QStringLiteral("0MB"));
        QCOMPARE(one[1].toString(), QStringLiteral("0MB"));
        moving += one[2].toInt() > 0 && one[2].toInt() < 100 ? 1 : 0;
    }
    QVERIFY(moving > 0);
    QCOMPARE(told.last()[2].toInt(), 100);
}

void test_software_upgrade::a_total_that_is_not_known_is_busy()
{
    m_worker->download_url = m_server->address("/v.exe").toString();
    m_worker->file_name = "v.exe";
    box_watcher watcher;
    QSignalSpy told(m_worker.get(), &software_upgrade::send_set_ui_signal_to_software_upgrade);
    m_server->answers["/v.exe"] = {
        .body = QByteArray(300'000, 'p'), .with_length = false, .piece_delay_ms = 20};
    QVERIFY(fetch());
    QCOMPARE(told.first(), (QVariantList{"0MB", "0MB", -1}));
    // The end makes it known, so that the bar comes to rest.
    QCOMPARE(told.last()[2].toInt(), 100);

    told.clear();
    m_server->answers["/v.exe"] = {.body = {}};
    QVERIFY(fetch());
    for (const QVariantList& one : told)
        QCOMPARE(one[2].toInt(), -1);
}

void test_software_upgrade::downloads_that_fail_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<qint64>("cut_after");
    QTest::newRow("not found") << QByteArray("404 Not Found") << qint64(-1);
    QTest::newRow("cut off at once") << QByteArray("200 OK") << qint64(0);
    QTest::newRow("cut off in the middle") << QByteArray("200 OK") << qint64(500'000);
    QTest::newRow("cut off before the end") << QByteArray("200 OK") << qint64(999'999);
}

void test_software_upgrade::downloads_that_fail()
{
    QFETCH(QByteArray, status);
    QFETCH(qint64, cut_after);
    m_worker->download_url = m_server->address("/v.exe").toString();
    m_worker->file_name = "v.exe";
    m_server->answers["/v.exe"] = {
        .body = QByteArray(1'000'000, 'p'), .status = status, .cut_after = cut_after};
    box_watcher watcher;
    const log_capture log;
    QSignalSpy told(m_worker.get(), &software_upgrade::send_set_ui_signal_to_software_upgrade);
    m_worker->download_file();
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QCOMPARE(described(watcher),
             QStringList("2|下载错误|下载失败，原因可能是网络问题或服务器无响应"));
    if (cut_after == 999'999)
        QCOMPARE(told.last()[2].toInt(), 99); // cut off, not rounded
    QVERIFY(log.has("Download failed: "));
    QCOMPARE(files(), QStringList()); // nothing, not even a part
}

void test_software_upgrade::no_check_no_url()
{
    box_watcher watcher;
    m_worker->download_file();
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("下载错误"));
    QCOMPARE(files(), QStringList());
}

void test_software_upgrade::a_folder_that_takes_no_file()
{
    m_worker->download_url = m_server->address("/v.exe").toString();
    m_worker->file_name = "v.exe";
    m_worker->folder = m_folder->filePath("missing");
    m_server->answers["/v.exe"] = {.body = "program"};
    box_watcher watcher;
    const log_capture log;
    m_worker->download_file();
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, patience_ms);
    QCOMPARE(described(watcher),
             QStringList("2|下载错误|文件写入失败，请检查是否有足够的权限或磁盘空间"));
    QVERIFY(log.has("Failed to open the file for writing."));
}

void test_software_upgrade::names_stay_in_the_folder()
{
    QVERIFY(QDir(m_folder->path()).mkpath("program"));
    m_worker->folder = m_folder->filePath("program");
    for (const char* name : {"/..%2F..%2Fevil.exe", "/..%5Cevil.exe", "/a/C%3Aevil.exe"}) {
        m_server->answers[name] = {.body = "evil"};
        check(feed("V9", m_server->address(QString()).toEncoded() + name));
        const box_watcher watcher;
        QVERIFY(fetch());
        QCOMPARE(files(), QStringList("program"));
        QCOMPARE(QDir(m_worker->folder).entryList(QDir::Files), QStringList("evil.exe"));
    }
}

QTEST_MAIN(test_software_upgrade)
#include "test_software_upgrade.moc"
