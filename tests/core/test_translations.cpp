// Both translation files know every text that passes through tr, and nothing
// in them is left unfinished.

#include <QFile>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>
#include <QXmlStreamReader>

namespace {

using texts = QMap<QPair<QString, QString>, QString>; // (context, source) to translation

texts texts_of(const QString& path, QStringList* unfinished)
{
    texts all;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return all;
    QXmlStreamReader xml(&file);
    QString context;
    QString source;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.name() == QLatin1String("source")) {
            source = xml.readElementText();
        } else if (xml.name() == QLatin1String("translation")) {
            const bool open = xml.attributes().value("type") == QLatin1String("unfinished");
            const QString translation = xml.readElementText();
            if (unfinished != nullptr && (open || translation.isEmpty()))
                unfinished->append(source);
            all.insert({context, source}, translation);
        }
    }
    return all;
}

} // namespace

class test_translations : public QObject
{
    Q_OBJECT

private slots:
    void every_text_is_known_data();
    void every_text_is_known();
    void the_compiled_file_gives_the_words();
};

void test_translations::every_text_is_known_data()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << "en_CN";
    QTest::newRow("Chinese") << "zh_CN";
}

void test_translations::every_text_is_known()
{
    QFETCH(QString, language);
    const QTemporaryDir folder;
    const QString gathered = folder.filePath("gathered.ts");
    QProcess lupdate;
    lupdate.setWorkingDirectory(QStringLiteral(SOURCE_DIR));
    lupdate.start(QStringLiteral(LUPDATE),
                  {"-silent", "-locations", "none", "core", "presentation", "device", "coordinates",
                   "exchange", "updates", "-ts", gathered});
    QVERIFY(lupdate.waitForFinished(60'000));
    QCOMPARE(lupdate.exitCode(), 0);

    QStringList unfinished;
    const texts known =
        texts_of(QStringLiteral(SOURCE_DIR) + "/translations/" + language + ".ts", &unfinished);
    QCOMPARE(unfinished, QStringList());
    const texts used = texts_of(gathered, nullptr);
    QVERIFY(used.size() > 60);
    for (auto one = used.keyBegin(); one != used.keyEnd(); ++one)
        QVERIFY2(known.contains(*one), qPrintable(one->second));
    for (auto one = known.keyBegin(); one != known.keyEnd(); ++one)
        QVERIFY2(used.contains(*one), qPrintable("no longer used: " + one->second));
}

void test_translations::the_compiled_file_gives_the_words()
{
    QTranslator english;
    QVERIFY(english.load("./en_CN.qm"));
    QCOMPARE(english.translate("MainWindow", "数据列表"), QStringLiteral("Data List"));
    QTranslator chinese;
    QVERIFY(chinese.load("./zh_CN.qm"));
    // The Chinese file holds the Chinese words too: it must cover an English
    // translator that is still installed.
    QCOMPARE(chinese.translate("MainWindow", "数据列表"), QStringLiteral("数据列表"));
}

QTEST_GUILESS_MAIN(test_translations)
#include "test_translations.moc"
