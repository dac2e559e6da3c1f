// The program as a process of its own: what it says at the start, and that it
// goes on.

#include <QFile>
#include <QLibraryInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSslSocket>
#include <QTemporaryDir>
#include <QTest>

class test_program : public QObject
{
    Q_OBJECT

private slots:
    void starts_and_says_its_ssl_data();
    void starts_and_says_its_ssl();
};

void test_program::starts_and_says_its_ssl_data()
{
    QTest::addColumn<bool>("openssl");
    QTest::newRow("with OpenSSL") << true;
#ifdef Q_OS_LINUX
    QTest::newRow("without OpenSSL") << false;
#endif
}

void test_program::starts_and_says_its_ssl()
{
    QFETCH(bool, openssl);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", ""); // no adb: nothing else is started
    const QTemporaryDir no_libraries;
    if (!openssl) {
        // Found before the real ones, libraries as well, but with nothing of theirs.
        const QString other = QLibraryInfo::path(QLibraryInfo::LibrariesPath) + "/libQt6Core.so.6";
        for (const char* name : {"libssl.so.3", "libcrypto.so.3", "libssl.so", "libcrypto.so"})
            QVERIFY(QFile::link(other, no_libraries.filePath(QLatin1String(name))));
        environment.insert("LD_LIBRARY_PATH", no_libraries.path());
    }
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
    const bool supported = openssl && QSslSocket::supportsSsl();
    QTRY_VERIFY_WITH_TIMEOUT(
        has(supported ? "^OpenSSL Support: true$" : "^OpenSSL Support: false$"), 30'000);
    QTRY_VERIFY_WITH_TIMEOUT(has("^执行串口检测$"), 30'000); // two seconds later it still runs
    QCOMPARE(program.state(), QProcess::Running);
    program.terminate();
    QVERIFY(program.waitForFinished(30'000));
}

QTEST_GUILESS_MAIN(test_program)
#include "test_program.moc"
