#include "presentation/quick_number.h"

#include <QRandomGenerator>
#include <QTest>

#include <bit>

using namespace Qt::StringLiterals;

class test_quick_number : public QObject
{
    Q_OBJECT

private slots:
    void the_double_of_qt_data();
    void the_double_of_qt();
    void coordinates_at_random();
};

void test_quick_number::the_double_of_qt_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text : {"",
                             "0",
                             "-0",
                             "0.000000000000",
                             "-0.0",
                             "1",
                             "-1",
                             "126.650000000000",
                             "-179.999999999999",
                             "999999999999999",
                             "9999999999999999",
                             "99999999999999.9",
                             "123456789012345.6",
                             "0.12345678901234",
                             "0.123456789012345",
                             "0000000000000001",
                             "00000000000000.25",
                             "5.",
                             ".5",
                             "-.5",
                             ".",
                             "-",
                             "--1",
                             "1-",
                             "+2",
                             " 1.5 ",
                             "1 2",
                             "1.2.3",
                             "1e3",
                             "1E-3",
                             "1e999",
                             "1e-999",
                             "0x10",
                             "nan",
                             "inf",
                             "-inf",
                             "abc",
                             "116.5N",
                             "12_3",
                             "1,5"})
        QTest::newRow(*text == 0 ? "empty" : text) << QString::fromLatin1(text);
    QTest::newRow("other digits") << u"١٢"_s;
    QTest::newRow("fullwidth") << u"１２.５"_s;
    QTest::newRow("minus sign") << u"−12.5"_s;
}

void test_quick_number::the_double_of_qt()
{
    QFETCH(QString, text);
    QCOMPARE(std::bit_cast<quint64>(quick_to_double(text)),
             std::bit_cast<quint64>(text.toDouble()));
}

void test_quick_number::coordinates_at_random()
{
    QRandomGenerator random(20240305);
    for (int i = 0; i < 100'000; ++i) {
        const QString text =
            QString::number(random.generateDouble() * 360 - 180, 'f', random.bounded(16));
        const double quick = quick_to_double(text);
        const double qt = text.toDouble();
        QVERIFY2(std::bit_cast<quint64>(quick) == std::bit_cast<quint64>(qt), qPrintable(text));
    }
}

QTEST_APPLESS_MAIN(test_quick_number)
#include "test_quick_number.moc"
