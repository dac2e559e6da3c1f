// The page of rules and their tests: every test case that it names is there.

#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QTest>

namespace {

QString content_of(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The sources of the test programs by their names.
QHash<QString, QString> test_programs()
{
    QHash<QString, QString> programs;
    QDirIterator files(QStringLiteral(SOURCE_DIR "/tests"), {"test_*.cpp"}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        programs.insert(files.fileInfo().baseName(), content_of(path));
    }
    return programs;
}

} // namespace

class test_edge_cases : public QObject
{
    Q_OBJECT

private slots:
    void every_rule_names_its_tests();
};

void test_edge_cases::every_rule_names_its_tests()
{
    const QHash<QString, QString> programs = test_programs();
    const QRegularExpression row(QStringLiteral("^\\| (.+) \\| (.+?) \\|$"),
                                 QRegularExpression::MultilineOption);
    const QRegularExpression test_case(QStringLiteral("(test_\\w+)?::(\\w+)"));
    const QString page = content_of(QStringLiteral(SOURCE_DIR "/docs/edge_cases.md"));
    int rules = 0;
    for (auto rule = row.globalMatch(page); rule.hasNext();) {
        const QRegularExpressionMatch cells = rule.next();
        if (cells.captured(1) == QStringLiteral("Rule"))
            continue;
        ++rules;
        QString program;
        int cases = 0;
        for (auto one = test_case.globalMatch(cells.captured(2)); one.hasNext(); ++cases) {
            const QRegularExpressionMatch named = one.next();
            if (named.hasCaptured(1))
                program = named.captured(1);
            const QString signature =
                QStringLiteral("void %1::%2()").arg(program, named.captured(2));
            QVERIFY2(programs.value(program).contains(signature), qPrintable(signature));
        }
        const bool says_why_not = cells.captured(2).startsWith(QStringLiteral("no test: "));
        QVERIFY2(cases > 0 || says_why_not, qPrintable(cells.captured(1)));
    }
    QVERIFY(rules > 700);
}

QTEST_GUILESS_MAIN(test_edge_cases)
#include "test_edge_cases.moc"
