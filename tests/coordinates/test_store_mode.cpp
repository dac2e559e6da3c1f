#include "coordinates/json_file_manager.h"

#include <QFile>
#include <QTest>

// Stands between the program and QFile: what text mode changes in writing shows on
// Windows only.

bool real_open(QFile* file, QIODevice::OpenMode mode) asm(
    "__real__ZN5QFile4openE6QFlagsIN13QIODeviceBase12OpenModeFlagEE");
bool open_file(QFile* file, QIODevice::OpenMode mode) asm(
    "__wrap__ZN5QFile4openE6QFlagsIN13QIODeviceBase12OpenModeFlagEE");

namespace {

QList<QIODevice::OpenMode> modes; ///< of all files opened so far

} // namespace

bool open_file(QFile* file, QIODevice::OpenMode mode)
{
    modes += mode;
    return real_open(file, mode);
}

class test_store_mode : public QObject
{
    Q_OBJECT

private slots:
    void read_and_written_as_text();
};

void test_store_mode::read_and_written_as_text()
{
    JsonFileManager manager;
    QCOMPARE(modes.size(), 2); // the built-in systems are written, then read
    QVERIFY(modes[0].testFlags(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text));
    QVERIFY(modes[1].testFlags(QIODevice::ReadOnly | QIODevice::Text));
    CoordinateSystem more;
    more.name = QStringLiteral("one more");
    QVERIFY(manager.addCoordinateSystem(more));
    QCOMPARE(modes.size(), 3);
    QCOMPARE(modes[2], modes[0]);
}

QTEST_GUILESS_MAIN(test_store_mode)
#include "test_store_mode.moc"
