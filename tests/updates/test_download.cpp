// Names and files of what is fetched.

#include "updates/download.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class test_download : public QObject
{
    Q_OBJECT

private slots:
    void names_stay_in_the_folder_data();
    void names_stay_in_the_folder();
    void files_are_written_whole_or_not_at_all();
    void the_list_knows_its_caller();
};

void test_download::names_stay_in_the_folder_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("name");
    const auto row = [](const char* url, const char* name) {
        QTest::newRow(*url == '\0' ? "empty" : url) << QString(url) << QString(name);
    };
    row("https://u.example/velmo-3.3.0.exe", "velmo-3.3.0.exe");
    row("https://u.example/a/b/velmo.exe?x=/../y#/z", "velmo.exe");
    row("https://u.example/%E5%9B%BA%E4%BB%B6.bin", "固件.bin");
    row("https://u.example/a%20b.bin", "a b.bin");
    row("", "");
    row("https://u.example", "");
    row("https://u.example/", "");
    row("https://u.example/a/", "");
    row("https://u.example/..", "");
    row("https://u.example/a/.", "");
    row("https://u.example/%2E%2E", "");
    row("https://u.example/..%20", "");
    row("https://u.example/..%2F..%2Fetc%2Fpasswd", "passwd");
    row("https://u.example/..%2F..", "");
    row("https://u.example/..%5C..%5Cwin.ini", "win.ini");
    row("https://u.example/..\\..\\win.ini", "win.ini");
    row("https://u.example/C%3Awin.ini", "win.ini");
    row("https://u.example/a.bin%3Astream", "stream");
    row("https://u.example/a%00b.bin", "");
}

void test_download::names_stay_in_the_folder()
{
    QFETCH(QString, url);
    QFETCH(QString, name);
    QCOMPARE(download::file_name(QUrl(url)), name);
}

void test_download::files_are_written_whole_or_not_at_all()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("f.bin");
    QVERIFY(download::write_file(path, "one"));
    QVERIFY(download::write_file(path, "two"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("two"));
    QVERIFY(!download::write_file(folder.path() + '/', "a folder is no file"));
    QVERIFY(!download::write_file(folder.filePath("missing/f.bin"), "no such folder"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList("f.bin"));
}

void test_download::the_list_knows_its_caller()
{
    const QUrl url("https://u.example/list.json");
    QCOMPARE(download::list_request(url).header(QNetworkRequest::UserAgentHeader).toString(),
             QStringLiteral("RT-Thread ART"));
    QVERIFY(!download::request_for(url).header(QNetworkRequest::UserAgentHeader).isValid());
    QCOMPARE(download::request_for(url).url(), url);
}

QTEST_GUILESS_MAIN(test_download)
#include "test_download.moc"
