#include "presentation/selection_totals.h"

#include <QStandardItemModel>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

measuringData record(const QString& areameter, const QString& areamu, const QString& distance,
                     const QString& numpoint)
{
    measuringData data;
    data.areameter = areameter;
    data.areamu = areamu;
    data.distance = distance;
    data.numpoint = numpoint;
    return data;
}

void fill(QStandardItemModel& model, const QList<bool>& ticks)
{
    for (const bool tick : ticks) {
        auto* check = new QStandardItem;
        check->setData(tick, Qt::EditRole);
        model.appendRow({check, new QStandardItem(u"x"_s)});
    }
}

} // namespace

class test_selection_totals : public QObject
{
    Q_OBJECT

private slots:
    void nothing_ticked_is_zero_everywhere_data();
    void nothing_ticked_is_zero_everywhere();
    void one_waypoint_of_three();
    void sums_run_over_the_ticked_rows();
    void square_metres_with_a_point_count_as_zero();
    void what_cannot_be_read_counts_as_zero();
    void mu_and_length_have_six_significant_digits();
    void sums_beyond_32_bits();
    void lists_shorter_than_the_model();
    void lists_longer_than_the_model();
    void a_check_cell_without_a_value_is_not_ticked();
    void twenty_thousand_rows();
};

void test_selection_totals::nothing_ticked_is_zero_everywhere_data()
{
    QTest::addColumn<QList<bool>>("ticks");
    QTest::newRow("no rows") << QList<bool>{};
    QTest::newRow("three rows") << QList<bool>{false, false, false};
}

void test_selection_totals::nothing_ticked_is_zero_everywhere()
{
    // Points and records are zero too, although the lists hold measurements:
    // the panels stay empty until something is ticked.
    QFETCH(QList<bool>, ticks);
    QStandardItemModel model;
    fill(model, ticks);
    const QList<measuringData> records(3, record("10", "1", "2", "3"));
    const selection_totals totals = totals_of(model, records, {"1,2", "3,4", "5,6"});
    for (const QString* value : {&totals.checked, &totals.areameter, &totals.areamu, &totals.length,
                                 &totals.points, &totals.records})
        QCOMPARE(*value, "0");
    QVERIFY(totals.checked_data.isEmpty());
}

void test_selection_totals::one_waypoint_of_three()
{
    QStandardItemModel model;
    fill(model, {false, true, false});
    const selection_totals totals =
        totals_of(model,
                  {record("900", "1.35", "120.5", "40"), record("0", "0", "0", "1"),
                   record("0", "0", "77.7", "12")},
                  {"1,2", "116.5,39.5", "5,6"});
    QCOMPARE(totals.checked, "1");
    QCOMPARE(totals.areameter, "0");
    QCOMPARE(totals.areamu, "0");
    QCOMPARE(totals.length, "0");
    QCOMPARE(totals.points, "53");
    QCOMPARE(totals.records, "3");
    QCOMPARE(totals.checked_data, (QList<widgetData>{{"116.5,39.5", 1}}));
}

void test_selection_totals::sums_run_over_the_ticked_rows()
{
    QStandardItemModel model;
    fill(model, {true, false, true, true});
    const selection_totals totals =
        totals_of(model,
                  {record("900", "1.35", "120.5", "40"), record("5000", "7.5", "300", "5"),
                   record("100", "0.15", "40.25", "4"), record("0", "0", "10", "x")},
                  {"a", "b", "c", "d"});
    QCOMPARE(totals.checked, "3");
    QCOMPARE(totals.areameter, "1000");
    QCOMPARE(totals.areamu, "1.5");
    QCOMPARE(totals.length, "170.75");
    QCOMPARE(totals.points, "49");
    QCOMPARE(totals.records, "4");
    QCOMPARE(totals.checked_data, (QList<widgetData>{{"a", 0}, {"c", 2}, {"d", 3}}));
}

void test_selection_totals::square_metres_with_a_point_count_as_zero()
{
    // The instrument sends whole square metres; an imported value may have
    // decimals, and its area is then missing from the sum. It stays so.
    QStandardItemModel model;
    fill(model, {true, true, true});
    const selection_totals totals =
        totals_of(model,
                  {record("1234.0", "0", "0", "0"), record("1234", "0", "0", "0"),
                   record("99.9", "0", "0", "0")},
                  {"", "", ""});
    QCOMPARE(totals.areameter, "1234");
}

void test_selection_totals::what_cannot_be_read_counts_as_zero()
{
    // Whole numbers take no exponent and no decimals, not even ".0"; mu and
    // length take both, and blanks around a number hurt neither.
    QStandardItemModel model;
    fill(model, {true, true, true, true, true});
    const selection_totals totals =
        totals_of(model,
                  {record("1e3", "1e3", "-5", "2.0"), record("", "", "", ""),
                   record("12 m", "12 m", "1,5", "x"), record(" 7 ", " 2.5 ", " 0.25 ", " 3 "),
                   record("99999999999", "0.5", "10", "99999999999")},
                  {"", "", "", "", ""});
    QCOMPARE(totals.areameter, "7");
    QCOMPARE(totals.areamu, "1003");
    QCOMPARE(totals.length, "5.25");
    QCOMPARE(totals.points, "3");
}

void test_selection_totals::mu_and_length_have_six_significant_digits()
{
    // A total over a million turns to exponent form, and smaller ones lose what
    // is behind the sixth digit.
    QStandardItemModel model;
    fill(model, {true, true});
    selection_totals totals = totals_of(
        model, {record("0", "1000000", "12345.67", "0"), record("0", "234567", "0.08", "0")},
        {"", ""});
    QCOMPARE(totals.areamu, "1.23457e+06");
    QCOMPARE(totals.length, "12345.8");
    totals = totals_of(model, {record("0", "99999.4", "999999.4", "0"), record("0", "0", "0", "0")},
                       {"", ""});
    QCOMPARE(totals.areamu, "99999.4");
    QCOMPARE(totals.length, "999999");
    totals = totals_of(model, {record("0", "1000000", "0.00001", "0"), record("0", "0", "0", "0")},
                       {"", ""});
    QCOMPARE(totals.areamu, "1e+06");
    QCOMPARE(totals.length, "1e-05");
}

void test_selection_totals::sums_beyond_32_bits()
{
    QStandardItemModel model;
    fill(model, {true, true});
    const selection_totals totals = totals_of(model,
                                              {record("2000000000", "0", "0", "2000000000"),
                                               record("2000000000", "0", "0", "2000000000")},
                                              {"", ""});
    QCOMPARE(totals.areameter, "4000000000");
    QCOMPARE(totals.points, "4000000000");
}

void test_selection_totals::lists_shorter_than_the_model()
{
    QStandardItemModel model;
    fill(model, {true, true, true});
    const selection_totals totals =
        totals_of(model, {record("10", "1", "2", "3"), record("20", "2", "3", "4")}, {"1,2"});
    QCOMPARE(totals.checked, "3");
    QCOMPARE(totals.areameter, "30");
    QCOMPARE(totals.areamu, "3");
    QCOMPARE(totals.length, "5");
    QCOMPARE(totals.points, "7");
    QCOMPARE(totals.records, "2");
    QCOMPARE(totals.checked_data, (QList<widgetData>{{"1,2", 0}, {"", 1}, {"", 2}}));
    QCOMPARE(totals_of(model, {}, {}).records, "0");
}

void test_selection_totals::lists_longer_than_the_model()
{
    QStandardItemModel model;
    fill(model, {true});
    const selection_totals totals = totals_of(
        model, {record("10", "1", "2", "3"), record("20", "2", "3", "4")}, {"1,2", "3,4"});
    QCOMPARE(totals.checked, "1");
    QCOMPARE(totals.areameter, "10");
    QCOMPARE(totals.points, "7");
    QCOMPARE(totals.records, "2");
}

void test_selection_totals::a_check_cell_without_a_value_is_not_ticked()
{
    QStandardItemModel model(2, 5); // no items at all
    QCOMPARE(totals_of(model, QList<measuringData>(2), {"", ""}).checked, "0");
    model.setItem(1, 0, new QStandardItem);
    QCOMPARE(totals_of(model, QList<measuringData>(2), {"", ""}).checked, "0");
    QVERIFY(model.setData(model.index(1, 0), true, Qt::EditRole));
    QCOMPARE(totals_of(model, QList<measuringData>(2), {"", ""}).checked, "1");
}

void test_selection_totals::twenty_thousand_rows()
{
    constexpr int rows = 20'000;
    QStandardItemModel model;
    QList<bool> ticks;
    for (int row = 0; row < rows; ++row)
        ticks.append(row % 2 == 0);
    fill(model, ticks);
    const QList<measuringData> records(rows, record("10", "0.5", "2", "3"));
    const QStringList texts(rows, "116.5,39.5");

    const selection_totals totals = totals_of(model, records, texts);
    QCOMPARE(totals.checked, "10000");
    QCOMPARE(totals.areameter, "100000");
    QCOMPARE(totals.points, "60000");
}

QTEST_APPLESS_MAIN(test_selection_totals)
#include "test_selection_totals.moc"
