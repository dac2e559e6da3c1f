#include "plain_drawing.h"
#include "presentation/drawing_layout.h"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize usual_size(841, 601);

QList<plain_drawing::points> figures_of(const drawing_layout& layout)
{
    QList<plain_drawing::points> figures;
    for (std::size_t i = 0; i < layout.ends.size(); ++i) {
        plain_drawing::points figure;
        for (const QPointF& point : layout.figure(i))
            figure.append({point.x(), point.y()});
        figures.append(figure);
    }
    return figures;
}

/// Texts of `figures` measurements of up to `points` points within `spread`
/// degrees around the middle of a country.
QStringList random_texts(QRandomGenerator& random, int figures, int points, double spread)
{
    QStringList texts;
    for (int i = 0; i < figures; ++i) {
        QStringList parts;
        const int count = random.bounded(points + 1);
        for (int k = 0; k < count; ++k) {
            parts.append(
                QString::number(116.5 + spread * (random.generateDouble() - 0.5), 'f', 12));
            parts.append(QString::number(39.5 + spread * (random.generateDouble() - 0.5), 'f', 12));
        }
        texts.append(parts.join(u','));
    }
    return texts;
}

} // namespace

class test_drawing_layout : public QObject
{
    Q_OBJECT

private slots:
    void centre_makes_room_for_the_frame();
    void the_first_point_of_all_is_the_base();
    void all_is_moved_to_the_centre();
    void small_figures_are_not_magnified();
    void shrinks_by_steps_of_nine_tenths();
    void a_point_on_the_border_is_inside();
    void equals_the_plain_way_data();
    void equals_the_plain_way();
    void empty_parts_are_left_out();
    void an_odd_part_is_left_out();
    void texts_without_points();
    void numbers_that_are_none_data();
    void numbers_that_are_none();
    void numbers_of_any_size_end();
    void a_widget_smaller_than_the_frame_data();
    void a_widget_smaller_than_the_frame();
    void labels_by_the_last_pair();
    void label_without_points_or_row();
};

void test_drawing_layout::centre_makes_room_for_the_frame()
{
    QCOMPARE(drawing_centre({841, 601}, false), QPoint(420, 300));
    QCOMPARE(drawing_centre({841, 601}, true), QPoint(300, 235));
    QCOMPARE(drawing_centre({240, 130}, true), QPoint(0, 0));
    QCOMPARE(drawing_centre({101, 101}, true), QPoint(-69, -14)); // halves go towards zero
}

void test_drawing_layout::the_first_point_of_all_is_the_base()
{
    // A hundred-millionth of a degree is a pixel, north is up, and the second
    // measurement is placed by the first point of the first.
    const auto layout = lay_out_drawing(
        {u"116.00000000,39.00000000"_s, u"116.00000100,39.00000050"_s}, usual_size, false);
    QCOMPARE(layout.ends, (std::vector<std::size_t>{1, 2}));
    const QPointF apart = layout.points[1] - layout.points[0];
    QVERIFY(std::abs(apart.x() - 100) < 1e-5);
    QVERIFY(std::abs(apart.y() - 50) < 1e-5);
    // Where the first text has no point, the first point there is does it.
    const auto later =
        lay_out_drawing({QString(), u"116.00000000,39.00000000"_s, u"116.00000100,39.00000050"_s},
                        usual_size, false);
    QCOMPARE(later.ends, (std::vector<std::size_t>{0, 1, 2}));
    QVERIFY(later.points == layout.points);
}

void test_drawing_layout::all_is_moved_to_the_centre()
{
    const auto layout =
        lay_out_drawing({u"1.00000000,2.00000000,1.00000200,2.00000100"_s}, usual_size, false);
    QCOMPARE((layout.points[0] + layout.points[1]) / 2, QPointF(420, 300));
    QCOMPARE(lay_out_drawing({u"116.5,39.5"_s}, usual_size, false).points,
             std::vector<QPointF>{QPointF(420, 300)});
    QCOMPARE(lay_out_drawing({u"116.5,39.5"_s}, usual_size, true).points,
             std::vector<QPointF>{QPointF(300, 235)});
}

void test_drawing_layout::small_figures_are_not_magnified()
{
    const auto layout =
        lay_out_drawing({u"1.00000000,2.00000000,1.00000010,2.00000000"_s}, usual_size, false);
    QVERIFY(std::abs(layout.points[1].x() - layout.points[0].x() - 10) < 1e-6);
}

void test_drawing_layout::shrinks_by_steps_of_nine_tenths()
{
    // 2,000 pixels wide as it stands; 0.9 to the ninth is 0.387, which is the
    // first that goes into 800.
    const auto layout =
        lay_out_drawing({u"0.00000000,2.00000000,0.00002000,2.00000000"_s}, {800, 600}, false);
    const double width = layout.points[1].x() - layout.points[0].x();
    QVERIFY(std::abs(width - 2000 * std::pow(0.9, 9)) < 1e-6);
    QVERIFY(width <= 800 && width / 0.9 > 800);
}

void test_drawing_layout::a_point_on_the_border_is_inside()
{
    // Written as whole pixels by a base of 0: from 0 to 800, both still inside.
    const auto layout = lay_out_drawing({u"0,0,0.000008,0"_s}, {800, 600}, false);
    QCOMPARE(layout.points, (std::vector<QPointF>{{0, 300}, {800, 300}}));
}

void test_drawing_layout::equals_the_plain_way_data()
{
    QTest::addColumn<double>("spread");
    for (const double spread : {1e-8, 1e-6, 5e-6, 2e-5, 1e-3, 0.1, 10.0, 360.0, 1e9})
        QTest::addRow("%g degrees", spread) << spread;
}

void test_drawing_layout::equals_the_plain_way()
{
    // To the last bit, not only to the pixel: the points go through the same
    // sequence of arithmetic, only the search for one outside is shortened.
    QFETCH(double, spread);
    QRandomGenerator random(7);
    for (int round = 0; round < 60; ++round) {
        const QStringList texts =
            random_texts(random, random.bounded(12), random.bounded(40), spread);
        const QSize size(242 + random.bounded(1500), 132 + random.bounded(1000));
        const int frame_shown = random.bounded(2);
        const auto figures = figures_of(lay_out_drawing(texts, size, frame_shown != 0));
        QVERIFY(figures == plain_drawing::lay_out(texts, size.width(), size.height(), frame_shown));
        QVERIFY(!plain_drawing::any_outside(figures, size.width(), size.height()));
    }
}

void test_drawing_layout::empty_parts_are_left_out()
{
    const auto plain = lay_out_drawing({u"1,2,1.000001,2.000001"_s}, usual_size, true);
    QCOMPARE(plain.points.size(), std::size_t(2));
    QCOMPARE(lay_out_drawing({u",,1,,2,1.000001,,,2.000001,"_s}, usual_size, true).points,
             plain.points);
}

void test_drawing_layout::an_odd_part_is_left_out()
{
    const auto even =
        lay_out_drawing({u"1,2,1.000001,2.000001"_s, u"1.000002,2"_s}, usual_size, true);
    const auto odd =
        lay_out_drawing({u"1,2,1.000001,2.000001,77"_s, u"1.000002,2,99"_s}, usual_size, true);
    QCOMPARE(odd.points, even.points);
    QCOMPARE(odd.ends, even.ends);
    QCOMPARE(lay_out_drawing({u"77"_s}, usual_size, true).ends, (std::vector<std::size_t>{0}));
}

void test_drawing_layout::texts_without_points()
{
    QVERIFY(lay_out_drawing({}, usual_size, true).ends.empty());
    const auto layout = lay_out_drawing({QString(), u",,,"_s, u"5"_s}, usual_size, true);
    QCOMPARE(layout.ends, (std::vector<std::size_t>{0, 0, 0}));
    QVERIFY(layout.points.empty());
    QVERIFY(layout.figure(1).empty());
}

void test_drawing_layout::numbers_that_are_none_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text : {"abc", "nan", "-nan", "inf", "-inf", "1e999", "1e300", "-1e20"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void test_drawing_layout::numbers_that_are_none()
{
    // As 0, wherever they stand: the fit would not end with what no shrinking
    // brings inside.
    QFETCH(QString, text);
    const QList<QStringList> cases{{u"%1,2,3,4"_s}, {u"1,2,3,%1,5,6"_s}, {u"1,2"_s, u"%1,%1"_s}};
    for (const QStringList& with : cases) {
        QStringList strange = with;
        QStringList zero = with;
        strange.replaceInStrings(u"%1"_s, text);
        zero.replaceInStrings(u"%1"_s, u"0"_s);
        QCOMPARE(lay_out_drawing(strange, usual_size, true).points,
                 lay_out_drawing(zero, usual_size, true).points);
    }
}

void test_drawing_layout::numbers_of_any_size_end()
{
    const auto layout = lay_out_drawing({u"-9e19,-9e19,9e19,9e19"_s, u"1,2"_s}, usual_size, true);
    QVERIFY(!plain_drawing::any_outside(figures_of(layout), 841, 601));
    QVERIFY(layout.points[1].x() - layout.points[0].x() > 100);
}

void test_drawing_layout::a_widget_smaller_than_the_frame_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize size : {QSize(0, 0), QSize(1, 1), QSize(100, 100), QSize(240, 130),
                             QSize(841, 100), QSize(100, 601), QSize(-1, -1)})
        QTest::addRow("%d x %d", size.width(), size.height()) << size;
}

void test_drawing_layout::a_widget_smaller_than_the_frame()
{
    // The centre lies on the border or beyond, and nothing comes inside by going
    // towards it: the figure ends as a dot there.
    QFETCH(QSize, size);
    const auto layout = lay_out_drawing({u"116,39,117,40,116.5,39.5"_s}, size, true);
    const QPointF centre = drawing_centre(size, true);
    for (const QPointF& point : layout.points) {
        const QPointF away = point - centre;
        const bool x_fits =
            std::abs(away.x()) <= 1 || (point.x() >= 0 && point.x() <= size.width());
        const bool y_fits =
            std::abs(away.y()) <= 1 || (point.y() >= 0 && point.y() <= size.height());
        QVERIFY(x_fits && y_fits);
    }
}

void test_drawing_layout::labels_by_the_last_pair()
{
    const auto layout =
        lay_out_drawing({u"1,2,1.000001,2.000001"_s, u"1.000001,2"_s}, usual_size, true);
    const auto labels =
        label_drawing(layout, {{0, 3}, {1, 8}, {0, 20}, {2, 5}, {-1, 6}, {1, 2147483647}});
    QCOMPARE(labels.size(), std::size_t(2));
    QCOMPARE(labels[0].text, "21");
    QCOMPARE(labels[0].at, layout.points[0] + QPointF(4, 0));
    QCOMPARE(labels[1].text, "2147483648");
    QCOMPARE(labels[1].at, layout.points[2] + QPointF(4, 0));
}

void test_drawing_layout::label_without_points_or_row()
{
    const auto layout = lay_out_drawing({u"1,2"_s, QString(), u"1,2"_s}, usual_size, true);
    const auto labels = label_drawing(layout, {{0, 0}, {1, 1}});
    QCOMPARE(labels.size(), std::size_t(2)); // the third has no row
    QCOMPARE(labels[1].text, "2");
    QCOMPARE(labels[1].at, QPointF(4, 0));
}

QTEST_APPLESS_MAIN(test_drawing_layout)
#include "test_drawing_layout.moc"
