// The two JSON files of the update host, good and bad.

#include "support/mutation.h"
#include "updates/feeds.h"

#include <QTest>

class test_feeds : public QObject
{
    Q_OBJECT

private slots:
    void a_version();
    void a_version_with_gaps_data();
    void a_version_with_gaps();
    void no_version_data();
    void no_version();
    void images();
    void images_of_an_unknown_instrument_data();
    void images_of_an_unknown_instrument();
    void mutated_feeds();
};

void test_feeds::a_version()
{
    QString error;
    const auto news = feeds::read_version(
        R"({"VerisonObj":{"LatestVersion":"V3.3.0","Url_64":"https://u.example/v.exe",
            "UpdateTime":"2024-03-05","ReleaseNote":"new\nlines"},"other":1})",
        error);
    QVERIFY(news.has_value());
    QCOMPARE(news->latest, QStringLiteral("V3.3.0"));
    QCOMPARE(news->url, QStringLiteral("https://u.example/v.exe"));
    QCOMPARE(news->time, QStringLiteral("2024-03-05"));
    QCOMPARE(news->note, QStringLiteral("new\nlines"));
    QVERIFY(error.isEmpty());
}

void test_feeds::a_version_with_gaps_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("nothing") << QByteArray("{}");
    QTest::newRow("spelled rightly") << QByteArray(R"({"VersionObj":{"LatestVersion":"V9"}})");
    QTest::newRow("no object in it") << QByteArray(R"({"VerisonObj":"V9"})");
    QTest::newRow("empty object") << QByteArray(R"({"VerisonObj":{}})");
    QTest::newRow("other types") << QByteArray(
        R"({"VerisonObj":{"LatestVersion":9,"Url_64":[],"UpdateTime":null,
                          "ReleaseNote":{}}})");
}

void test_feeds::a_version_with_gaps()
{
    QFETCH(QByteArray, text);
    QString error;
    const auto news = feeds::read_version(text, error);
    QVERIFY(news.has_value());
    for (const QString& member : {news->latest, news->url, news->time, news->note})
        QCOMPARE(member, QString());
}

void test_feeds::no_version_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("says_why");
    QTest::newRow("nothing") << QByteArray() << true;
    QTest::newRow("a page") << QByteArray("<html>not found</html>") << true;
    QTest::newRow("cut off") << QByteArray(R"({"VerisonObj":{"LatestVersion":"V3)") << true;
    QTest::newRow("a list") << QByteArray("[1,2]") << false;
}

void test_feeds::no_version()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, says_why);
    QString error;
    QVERIFY(!feeds::read_version(text, error).has_value());
    QCOMPARE(!error.isEmpty(), says_why);
}

void test_feeds::images()
{
    QString error;
    const auto images = feeds::read_images(
        R"({"G1":{"Url5":"e","Url2":"b","Url1":"a","Url6":"f","Url3":3},"G2":{}})", "G1", error);
    QVERIFY(images.has_value());
    QStringList all;
    for (const feeds::image& one : *images)
        all += one.key + '=' + one.url;
    QCOMPARE(all, QStringList({"Url1=a", "Url2=b", "Url5=e"}));
    QCOMPARE(feeds::read_images(R"({"G2":{}})", "G2", error)->size(), 0);
    QCOMPARE(feeds::read_images(R"({"G2":"x"})", "G2", error)->size(), 0);
    QVERIFY(error.isEmpty());
}

void test_feeds::images_of_an_unknown_instrument_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("says_why");
    QTest::newRow("another one") << QByteArray(R"({"G2":{"Url1":"a"}})") << false;
    QTest::newRow("a list") << QByteArray(R"(["G1"])") << false;
    QTest::newRow("nothing") << QByteArray() << true;
    QTest::newRow("no JSON") << QByteArray("{G1}") << true;
}

void test_feeds::images_of_an_unknown_instrument()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, says_why);
    QString error;
    QVERIFY(!feeds::read_images(text, "G1", error).has_value());
    QCOMPARE(!error.isEmpty(), says_why);
}

void test_feeds::mutated_feeds()
{
    const QByteArray version =
        R"({"VerisonObj":{"LatestVersion":"V3.3.0","Url_64":"https://u.example/v.exe",)"
        R"("UpdateTime":"2024-03-05","ReleaseNote":"é\u56fa\n"}})";
    const QByteArray images =
        R"({"G1":{"Url1":"https://u.example/a.bin","Url2":"https://u.example/b.bin"},"G2":{}})";
    std::mt19937 random(20060102);
    int understood = 0;
    for (int i = mutation_count(); i > 0; --i) {
        QString error;
        const auto news = feeds::read_version(mutated(version, random), error);
        QVERIFY(!news || error.isEmpty());
        const auto list = feeds::read_images(mutated(images, random), "G1", error);
        QVERIFY(!list || list->size() <= 5);
        understood += (news ? 1 : 0) + (list ? 1 : 0);
    }
    QVERIFY(understood > 0);
}

QTEST_GUILESS_MAIN(test_feeds)
#include "test_feeds.moc"
