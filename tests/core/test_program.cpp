// The program as a process of its own: what it says at the start, and that it
// goes on.

#include <QProcess>
#include <QRegularExpression>
#include <QTest>

class test_program : public QObject
{
    Q_OBJECT

private slots:
    void starts_and_says_its_ssl();
};

void test_program::starts_and_says_its_ssl()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", ""); // no adb: nothing else is started
    QProcess program;
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QStringLiteral(VELMO_PROGRAM), QStringList());
    QVERIFY(program.waitForStarted());
    QString said;
    const auto has = [&](const QString& line) {
        said += QString::fromUtf8(program.readAll());
        return said.contains(QRegularExpression(line, QRegularExpression::MultilineOption));
    };
    QTRY_VERIFY_WITH_TIMEOUT(has("^QSslSocket= \""), 30'000);
    QTRY_VERIFY_WITH_TIMEOUT(has("^OpenSSL Support: (true|false)$"), 30'000);
    QTRY_VERIFY_WITH_TIMEOUT(has("^执行串口检测$"), 30'000); // two seconds later it still runs
    QCOMPARE(program.state(), QProcess::Running);
    program.terminate();
    QVERIFY(program.waitForFinished(30'000));
}

QTEST_GUILESS_MAIN(test_program)
#include "test_program.moc"
