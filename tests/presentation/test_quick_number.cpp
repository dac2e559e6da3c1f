#include "presentation/quick_number.h"

#include <QRandomGenerator>
#include <QTest>

#include <array>
#include <bit>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

class test_quick_number : public QObject
{
    Q_OBJECT

private slots:
    void the_double_of_qt_data();
    void the_double_of_qt();
    void coordinates_at_random();
    void the_digits_of_qt_data();
    void the_digits_of_qt();
    void digits_at_random();
};

namespace {

QString written(double value, int decimals)
{
    std::array<char16_t, longest_quick_number> text;
    const char16_t* const end = quick_write(text.data(), value, decimals);
    return QStringView(text.data(), end).toString();
}

} // namespace

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
    bool quick_ok = false;
    bool ok = false;
    (void)quick_to_double(text, &quick_ok);
    (void)text.toDouble(&ok);
    QCOMPARE(quick_ok, ok);
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

void test_quick_number::the_digits_of_qt_data()
{
    QTest::addColumn<double>("value");
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const double value : {0.0,
                               -0.0,
                               0.5,
                               0.25,
                               -0.05,
                               0.999999999999999,
                               1.0,
                               -1.0,
                               1.05,
                               1.25,
                               9.95,
                               -9.96,
                               104.5,
                               30.25,
                               179.95,
                               999999.5,
                               999999.99,
                               999999.9999999999,
                               1000000.0,
                               1234567.8,
                               1e15,
                               1e300,
                               5e-324,
                               1 + 0x1p-52,
                               1.03125,
                               512.34375,
                               -1e-15,
                               infinite,
                               99.9999999999995,
                               34.9410400390625,
                               -infinite})
        QTest::addRow("%.17g", value) << value;
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN();
}

void test_quick_number::the_digits_of_qt()
{
    QFETCH(double, value);
    for (int decimals = 1; decimals <= 12; ++decimals)
        QCOMPARE(written(value, decimals), QString::number(value, 'f', decimals));
}

void test_quick_number::digits_at_random()
{
    QRandomGenerator random(20240305);
    for (int i = 0; i < 100'000; ++i) {
        double value = random.generateDouble() * 360 - 180;
        if (i % 3 == 0) // of a file: a number with few decimals
            value = std::round(value * 1e6) / 1e6;
        if (i % 3 == 1) // half of a last digit is left
            value = std::round(value * 0x1p13) / 0x1p13;
        for (const int decimals : {1, 3, 12})
            QCOMPARE(written(value, decimals), QString::number(value, 'f', decimals));
    }
}

QTEST_APPLESS_MAIN(test_quick_number)
#include "test_quick_number.moc"
