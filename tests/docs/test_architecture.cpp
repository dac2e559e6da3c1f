// What the architecture page names is there: every file, and every name of the code.

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

namespace {

QString content_of(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The texts in backticks of the page, without its pictures in code.
QStringList quoted()
{
    QString page = content_of(QStringLiteral(SOURCE_DIR "/docs/architecture.md"));
    page.remove(QRegularExpression(QStringLiteral("```.*?```"),
                                   QRegularExpression::DotMatchesEverythingOption));
    QStringList found;
    const QRegularExpression code(QStringLiteral("`([^`\n]+)`"));
    for (auto match = code.globalMatch(page); match.hasNext();)
        found += match.next().captured(1);
    found.removeDuplicates();
    return found;
}

/// All sources of the program, the instrument and the build.
QString sources()
{
    QString all;
    for (const char* folder : {"core", "presentation", "device", "coordinates", "exchange",
                               "updates", "instrument", "translations", "cmake"}) {
        QDirIterator files(QStringLiteral(SOURCE_DIR "/") + QLatin1String(folder),
                           {"*.cpp", "*.h", "*.txt", "*.cmake"}, QDir::Files);
        while (files.hasNext())
            all += content_of(files.next());
    }
    return all + content_of(QStringLiteral(SOURCE_DIR "/CMakeLists.txt"));
}

} // namespace

class test_architecture : public QObject
{
    Q_OBJECT

private slots:
    void named_files_are_there();
    void names_stand_in_the_code();
};

void test_architecture::named_files_are_there()
{
    int files = 0;
    for (const QString& one : quoted()) {
        if (!one.contains(u'/'))
            continue;
        QVERIFY2(QFileInfo::exists(QStringLiteral(SOURCE_DIR "/") + one), qPrintable(one));
        ++files;
    }
    QVERIFY(files > 20);
}

void test_architecture::names_stand_in_the_code()
{
    const QString all = sources();
    const QRegularExpression name(QStringLiteral("^(?:\\w+::)?(\\w+)(?:\\(\\w*\\))?$"));
    int names = 0;
    for (const QString& one : quoted()) {
        const QRegularExpressionMatch match = name.match(one);
        if (!match.hasMatch())
            continue;
        const QRegularExpression word(QStringLiteral("\\b%1\\b").arg(match.captured(1)));
        QVERIFY2(all.contains(word), qPrintable(one));
        ++names;
    }
    QVERIFY(names > 40);
}

QTEST_GUILESS_MAIN(test_architecture)
#include "test_architecture.moc"
