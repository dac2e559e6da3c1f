#include "plain_drawing.h"
#include "presentation/graphic_widget.h"

#include <QImage>
#include <QPaintEngine>
#include <QPainter>
#include <QPicture>
#include <QRandomGenerator>
#include <QTest>

#include <cmath>
#include <type_traits>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize usual_size(841, 601);

struct ticked
{
    QStringList data;
    QList<std::pair<int, int>> rows;
    int frame_shown = 0;
    QSize size = usual_size;

    /// The texts in rows 0, 1, 2 and so on.
    static ticked in_order(const QStringList& data)
    {
        ticked all{data, {}};
        for (int i = 0; i < data.size(); ++i)
            all.rows.append({i, i});
        return all;
    }
};

template <typename Widget>
QImage picture(Widget& widget, const ticked& what)
{
    widget.draw_data = what.data;
    widget.draw_rows = what.rows;
    widget.frame_shown = what.frame_shown;
    widget.resize(what.size);
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

QImage drawn(const ticked& what)
{
    graphic_widget widget;
    return picture(widget, what);
}

/// What the same measurements look like when drawn the plain way.
QImage expected(const ticked& what)
{
    plain_drawing_widget widget;
    return picture(widget, what);
}

/// The smallest rectangle around everything not white.
QRect ink(const QImage& image)
{
    QRect around;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != Qt::white)
                around |= QRect(x, y, 1, 1);
        }
    }
    return around;
}

/// Half grey is dark enough: a line between two rows of pixels tints both.
bool dark(const QImage& image, int x, int y)
{
    return image.pixelColor(x, y).lightness() < 200;
}

/// `text` from a base of 1 and 2 degrees: pixels of the drawing at its own scale.
QString at_pixels(const QList<QPoint>& points)
{
    QStringList parts;
    for (const QPoint& point : points) {
        parts.append(QString::number(1 + point.x() * 1e-8, 'f', 12));
        parts.append(QString::number(2 + point.y() * 1e-8, 'f', 12));
    }
    return parts.join(u',');
}

/// Notes the pens of the lines that are drawn. On pixels a line of width 1 looks the
/// same with any join.
class pen_recorder : public QPaintDevice, private QPaintEngine
{
public:
    pen_recorder() : QPaintEngine(AllFeatures) {}

    [[nodiscard]] QPaintEngine* paintEngine() const override
    {
        return const_cast<pen_recorder*>(this);
    }

    QList<QPen> pens;

protected:
    [[nodiscard]] int metric(PaintDeviceMetric which) const override
    {
        switch (which) {
        case PdmDevicePixelRatio: return 1;
        case PdmDevicePixelRatioScaled: return qRound(devicePixelRatioFScale());
        default: return 96; // as good as any
        }
    }

private:
    bool begin(QPaintDevice* /*device*/) override { return true; }
    bool end() override { return true; }
    [[nodiscard]] Type type() const override { return User; }
    void updateState(const QPaintEngineState& /*state*/) override {}
    void drawPixmap(const QRectF& /*to*/, const QPixmap& /*what*/, const QRectF& /*from*/) override
    {
    }
    void drawPath(const QPainterPath& /*path*/) override {}
    void drawTextItem(const QPointF& /*at*/, const QTextItem& /*text*/) override {}
    void drawPolygon(const QPointF* /*points*/, int /*count*/, PolygonDrawMode mode) override
    {
        if (mode == PolylineMode)
            pens.append(painter()->pen());
    }
};

} // namespace

Q_DECLARE_METATYPE(ticked)

class test_graphic_widget : public QObject
{
    Q_OBJECT

private slots:
    void equals_the_plain_drawing_data();
    void equals_the_plain_drawing();
    void nothing_ticked_is_white();
    void a_waypoint_is_a_dot_with_its_number();
    void the_frame_moves_the_centre();
    void far_apart_stays_inside();
    void north_is_up();
    void lines_are_not_closed();
    void lines_have_the_pen_they_should();
    void the_number_is_that_of_the_last_pair();
    void an_empty_text_has_its_number_in_the_corner();
    void an_odd_part_is_not_drawn();
    void numbers_that_are_none();
    void holds_nothing_from_paint_to_paint();
    void a_repaint_equals_the_plain_drawing_data();
    void a_repaint_equals_the_plain_drawing();
    void follows_each_change();
    void other_devices_get_lines();
};

void test_graphic_widget::equals_the_plain_drawing_data()
{
    QTest::addColumn<ticked>("what");
    const QString waypoint = u"116.500000000000,39.500000000000"_s;
    const QString open = at_pixels({{0, 0}, {200, 0}, {200, 150}, {0, 150}});
    const QString closed = at_pixels({{0, 0}, {200, 0}, {200, 150}, {0, 150}, {0, 0}});
    const QString slanted = at_pixels({{3, 5}, {171, 33}, {250, 190}, {-60, 120}});
    QTest::newRow("nothing") << ticked();
    QTest::newRow("waypoint") << ticked::in_order({waypoint});
    QTest::newRow("two far apart") << ticked::in_order({waypoint, u"-70.1,-33.2"_s});
    QTest::newRow("open") << ticked::in_order({open});
    QTest::newRow("closed") << ticked::in_order({closed});
    QTest::newRow("slanted") << ticked::in_order({slanted});
    QTest::newRow("several") << ticked::in_order({slanted, at_pixels({{40, 40}}), closed});
    QTest::newRow("another order") << ticked::in_order({at_pixels({{40, 40}}), closed, slanted});
    QTest::newRow("twice the same") << ticked::in_order({closed, closed});
    QTest::newRow("one place") << ticked::in_order({at_pixels({{5, 5}, {5, 5}, {5, 5}})});
    QTest::newRow("frame") << ticked{{slanted, closed}, {{0, 0}, {1, 1}}, 1};
    QTest::newRow("frame of another number") << ticked{{slanted}, {{0, 0}}, -3};
    QTest::newRow("rows") << ticked{{slanted, closed}, {{0, 9}, {1, 1203}, {0, 77}}, 1};
    QTest::newRow("no row") << ticked{{slanted, closed}, {{1, 4}}};
    QTest::newRow("empty text") << ticked::in_order({closed, QString(), waypoint});
    QTest::newRow("only an empty text") << ticked::in_order({QString()});
    QTest::newRow("odd parts") << ticked::in_order({closed + u",1.1"_s, u"7"_s});
    QTest::newRow("empty parts") << ticked::in_order({u",,1,,2,1.000001,,2.000002,"_s});
    QTest::newRow("unreadable") << ticked::in_order({u"abc,2,3,x"_s});
    QTest::newRow("small widget") << ticked{{slanted, waypoint}, {{0, 0}, {1, 1}}, 1, {260, 150}};
    QTest::newRow("large widget") << ticked{{slanted}, {{0, 0}}, 1, {1500, 900}};

    QRandomGenerator random(11);
    QStringList huge;
    for (int i = 0; i < 5000; ++i) {
        huge.append(QString::number(random.generateDouble() * 360 - 180, 'f', 12));
        huge.append(QString::number(random.generateDouble() * 180 - 90, 'f', 12));
    }
    QTest::newRow("huge") << ticked::in_order({huge.join(u',')});
    QStringList track;
    for (int i = 0; i < 100'000; ++i) {
        track.append(QString::number(116.5 + 0.01 * std::cos(i * 0.01) * i / 100'000, 'f', 12));
        track.append(QString::number(39.5 + 0.01 * std::sin(i * 0.01) * i / 100'000, 'f', 12));
    }
    QTest::newRow("100,000 points closer than pixels") << ticked::in_order({track.join(u',')});
}

void test_graphic_widget::equals_the_plain_drawing()
{
    QFETCH(ticked, what);
    const QImage image = drawn(what);
    QCOMPARE(image.size(), what.size);
    QCOMPARE(image, expected(what));
    QCOMPARE(ink(image).isEmpty(), what.data.isEmpty());
}

void test_graphic_widget::nothing_ticked_is_white()
{
    static_assert(std::is_same_v<decltype(graphic_widget::frame_shown), qint32>);
    QVERIFY(ink(drawn({})).isEmpty());
    // A pair without a measurement changes nothing.
    QVERIFY(ink(drawn({{}, {{0, 4}}})).isEmpty());
}

void test_graphic_widget::a_waypoint_is_a_dot_with_its_number()
{
    const QImage image = drawn(ticked::in_order({u"116.5,39.5"_s}));
    // Centre (420, 300) upwards is line 301 of 601.
    const QImage left = image.copy(0, 0, 424, 601);
    const QRect dot = ink(left);
    QVERIFY(dark(image, 420, 301));
    QVERIFY(dot.contains(QPoint(420, 301)));
    QVERIFY2(dot.width() >= 3 && dot.width() <= 4, qPrintable(QString::number(dot.width())));
    QVERIFY2(dot.height() >= 3 && dot.height() <= 4, qPrintable(QString::number(dot.height())));
    const QRect number = ink(image.copy(424, 0, 417, 601)).translated(424, 0);
    QVERIFY(!number.isEmpty());
    QVERIFY(number.right() < 440);
    QVERIFY(number.bottom() <= 302 && number.top() > 285); // stands on the point's line
}

void test_graphic_widget::the_frame_moves_the_centre()
{
    ticked what = ticked::in_order({at_pixels({{0, 0}, {100, 60}})});
    what.size = {840, 600};
    const QRect middle = ink(drawn(what));
    what.frame_shown = 1;
    QCOMPARE(ink(drawn(what)), middle.translated(-120, 65)); // down is up
    what.frame_shown = -7;
    QCOMPARE(ink(drawn(what)), middle.translated(-120, 65));
}

void test_graphic_widget::far_apart_stays_inside()
{
    const QRect all = ink(drawn(ticked::in_order({u"-100,-40"_s, u"100,40"_s})));
    QVERIFY(QRect(QPoint(0, 0), usual_size).contains(all));
    // One step less would not have fitted.
    QVERIFY2(all.width() > 0.9 * 841 - 10, qPrintable(QString::number(all.width())));
}

void test_graphic_widget::north_is_up()
{
    // East, then north: the corner is lower right.
    const QImage image = drawn({{at_pixels({{0, 0}, {200, 0}, {200, 100}})}, {}});
    QVERIFY(dark(image, 420, 601 - 250)); // the middle of the lower side
    QVERIFY(dark(image, 520, 601 - 300)); // the middle of the right side
    QVERIFY(!dark(image, 420, 601 - 350));
    QVERIFY(!dark(image, 320, 601 - 300));
}

void test_graphic_widget::lines_are_not_closed()
{
    const QList<QPoint> corners{{0, 0}, {200, 0}, {200, 100}, {0, 100}};
    const QImage open = drawn({{at_pixels(corners)}, {}});
    const QImage closed = drawn({{at_pixels(corners + QList<QPoint>{{0, 0}})}, {}});
    QVERIFY(!dark(open, 320, 601 - 300));
    QVERIFY(dark(closed, 320, 601 - 300));
    QVERIFY(dark(open, 520, 601 - 300));
}

void test_graphic_widget::lines_have_the_pen_they_should()
{
    graphic_widget widget;
    picture(widget, ticked::in_order({at_pixels({{0, 0}, {90, 50}, {20, 70}})}));
    pen_recorder device;
    QPainter painter(&device);
    widget.render(&painter, QPoint(), QRegion(), {});
    painter.end();
    QCOMPARE(device.pens, QList<QPen>{QPen(QBrush(Qt::black, Qt::SolidPattern), 1.0, Qt::SolidLine,
                                           Qt::SquareCap, Qt::BevelJoin)});
}

void test_graphic_widget::the_number_is_that_of_the_last_pair()
{
    const QStringList data{at_pixels({{0, 0}, {90, 50}}), at_pixels({{30, 0}})};
    const QImage image = drawn({data, {{0, 4}, {1, 7}, {0, 41}}});
    QCOMPARE(image, drawn({data, {{0, 41}, {1, 7}}}));
    QVERIFY(image != drawn({data, {{0, 4}, {1, 7}}}));
    QVERIFY(image != drawn({data, {{0, 41}}})); // no pair, no number
}

void test_graphic_widget::an_empty_text_has_its_number_in_the_corner()
{
    const QImage image = drawn({{QString()}, {{0, 0}}});
    const QRect number = ink(image);
    QVERIFY(!number.isEmpty());
    QVERIFY(number.left() >= 4 && number.right() < 16);
    QVERIFY(number.top() > 585 && number.bottom() == 600);
}

void test_graphic_widget::an_odd_part_is_not_drawn()
{
    const QString even = at_pixels({{0, 0}, {90, 50}, {20, 70}});
    QCOMPARE(drawn(ticked::in_order({even + u",1.000001"_s})), drawn(ticked::in_order({even})));
}

void test_graphic_widget::numbers_that_are_none()
{
    const QImage zero = drawn(ticked::in_order({u"1,2,0,3,4,0"_s}));
    for (const QString& text : {u"nan"_s, u"inf"_s, u"-inf"_s, u"1e999"_s, u"1e250"_s})
        QCOMPARE(drawn(ticked::in_order({u"1,2,%1,3,4,%1"_s.arg(text)})), zero);
    // And a widget that nothing can be fitted to is painted as well.
    QCOMPARE(drawn({{u"1,2,3,4"_s}, {{0, 0}}, 1, {100, 80}}).size(), QSize(100, 80));
}

void test_graphic_widget::holds_nothing_from_paint_to_paint()
{
    graphic_widget widget;
    const ticked first = ticked::in_order({at_pixels({{0, 0}, {90, 50}}), at_pixels({{30, 0}})});
    const ticked second = ticked::in_order({at_pixels({{30, 0}})});
    const QImage before = picture(widget, first);
    QCOMPARE(picture(widget, first), before);
    QCOMPARE(picture(widget, second), drawn(second));
    QCOMPARE(picture(widget, first), before);
    QVERIFY(ink(picture(widget, {})).isEmpty());
}

void test_graphic_widget::a_repaint_equals_the_plain_drawing_data()
{
    QTest::addColumn<double>("pixel_ratio");
    QTest::addColumn<QPointF>("place");
    QTest::newRow("a pixel each") << 1.0 << QPointF();
    QTest::newRow("elsewhere") << 1.0 << QPointF(7, 11);
    QTest::newRow("between pixels") << 1.0 << QPointF(7.25, 11.5);
    QTest::newRow("four pixels each") << 2.0 << QPointF(3, 5);
    QTest::newRow("one and a quarter") << 1.25 << QPointF(3, 5);
    QTest::newRow("one and a half") << 1.5 << QPointF();
}

void test_graphic_widget::a_repaint_equals_the_plain_drawing()
{
    QFETCH(double, pixel_ratio);
    QFETCH(QPointF, place);
    const QString slanted = at_pixels({{3, 5}, {171, 33}, {250, 190}, {-60, 120}});
    const QString waypoint = at_pixels({{40, 40}});
    const auto painted = [&](auto& widget) {
        widget.draw_data = {slanted, waypoint};
        widget.draw_rows = {{0, 0}, {1, 1}};
        widget.resize(usual_size);
        QImage image((usual_size + QSize(20, 20)) * pixel_ratio, QImage::Format_RGB32);
        image.setDevicePixelRatio(pixel_ratio);
        image.fill(Qt::green);
        QPainter painter(&image);
        painter.translate(place);
        widget.render(&painter, QPoint(), QRegion(), {});
        return image;
    };
    plain_drawing_widget plain;
    const QImage wanted = painted(plain);
    graphic_widget widget;
    QCOMPARE(painted(widget), wanted);
    QCOMPARE(painted(widget), wanted);
}

void test_graphic_widget::follows_each_change()
{
    const ticked first{{at_pixels({{0, 0}, {90, 50}}), at_pixels({{30, 0}})}, {{0, 0}, {1, 1}}};
    ticked data = first;
    data.data[1] = at_pixels({{30, 1}});
    ticked rows = first;
    rows.rows[1].second = 7;
    ticked frame = first;
    frame.frame_shown = 1;
    ticked size = first;
    size.size = {700, 500};
    graphic_widget widget;
    for (const ticked& other : {data, rows, frame, size}) {
        const QImage before = picture(widget, first);
        QCOMPARE(before, expected(first));
        const QImage after = picture(widget, other);
        QCOMPARE(after, expected(other));
        QVERIFY(after != before);
    }
}

/// What is no image of pixels, such as a printer, is drawn on with lines.
void test_graphic_widget::other_devices_get_lines()
{
    graphic_widget widget;
    const ticked what = ticked::in_order({at_pixels({{0, 0}, {90, 50}, {20, 70}})});
    const QImage shown = picture(widget, what);
    QPicture lines;
    QPainter painter(&lines);
    widget.render(&painter, QPoint(), QRegion(), {});
    painter.end();
    QVERIFY(lines.size() < 5000); // the picture has two million bytes
    QImage image(usual_size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter(&image).drawPicture(0, 0, lines);
    QVERIFY(dark(image, 420, 601 - 300) == dark(shown, 420, 601 - 300));
    QVERIFY(!ink(image).isEmpty());
}

QTEST_MAIN(test_graphic_widget)
#include "test_graphic_widget.moc"
