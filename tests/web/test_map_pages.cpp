// The three map pages in the real web engine: what each function of their
// vocabulary does, where the figures stand, what is said when no tiles come.
// Tiles come from a server of this test, to which the names of the providers'
// hosts lead.

#include "core/application.h"
#include "core/main_window.h"
#include "core/main_window_form.h"
#include "core/map_page.h"
#include "core/thread_key.h"
#include "local_server.h"
#include "map_view.h"
#include "support/log_capture.h"
#include "support/sample_lists.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEngineCertificateError>
#include <QWebEngineView>

using namespace Qt::StringLiterals;

class test_map_pages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void pages_offer_the_vocabulary_data();
    void pages_offer_the_vocabulary();
    void areas_are_filled();
    void lines_are_drawn_and_their_start_marked_data();
    void lines_are_drawn_and_their_start_marked();
    void waypoints_are_pins();
    void clear_removes_figures_and_packets();
    void packets_are_joined_across_odd_ends();
    void identifiers_keep_packets_apart();
    void an_identifier_drawn_again_replaces();
    void delete_takes_exactly_the_same_figure();
    void bad_input_is_ignored_data();
    void bad_input_is_ignored();
    void keys_leave_the_functions_working();

    void a_burst_moves_the_view_once();
    void a_single_waypoint_is_not_magnified_beyond_reason();
    void large_figures_are_cut_to_the_view();

    void shift_of_published_points_data();
    void shift_of_published_points();
    void mainland_data();
    void mainland();
    void figures_stand_where_the_provider_has_them_data();
    void figures_stand_where_the_provider_has_them();

    void language_data();
    void language();
    void language_outlives_the_provider();

    void tiles_are_asked_for_data();
    void tiles_are_asked_for();
    void missing_tiles_are_told_and_come_back();
    void sky_map_without_a_key_says_so();

    void a_long_record_takes_the_whole_road();
    void a_tick_in_the_window_reaches_the_map();
    void a_provider_change_drops_the_figures();

private:
    void load(const QString& page);
    [[nodiscard]] QVariant value(const QString& expression)
    {
        return map_view::value_of(*m_view, expression);
    }
    [[nodiscard]] bool comes_true(const QString& expression)
    {
        return map_view::comes_true(*m_view, expression);
    }
    /// Waits until this many figures are drawn.
    [[nodiscard]] bool drawn(int figures);
    void run(const QString& script) { m_view->page()->runJavaScript(script); }

    local_server m_tiles{local_server::kind::tls};
    std::unique_ptr<QWebEngineView> m_own_view;
    QWebEngineView* m_view = nullptr;
};

namespace {

const QColor tile_colour(0xb8, 0xe0, 0xb0);
const QColor background(0xee, 0xf1, 0xf3);
const QColor area_line(0xc2, 0x41, 0x0c);
const QColor line_colour(0x1d, 0x4e, 0xd8);
const QColor start_colour(0x16, 0xa3, 0x4a);
const QColor pin_colour(0xdc, 0x26, 0x26);

constexpr const char* square = "126.650,45.750,126.654,45.750,126.654,45.747,126.650,45.747";

/// 0.28 of the area's orange over a colour.
QColor filled_over(const QColor& under)
{
    const auto mixed = [](int top, int below) { return qRound(top * 0.28 + below * 0.72); };
    return {mixed(249, under.red()), mixed(115, under.green()), mixed(22, under.blue())};
}

} // namespace

void test_map_pages::initTestCase()
{
    qputenv("PATH", ""); // without adb in reach the device worker polls nothing
    // The names of all hosts lead to the server. Read when the engine starts.
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS",
            "--ignore-certificate-errors --host-resolver-rules=\"MAP * 127.0.0.1:" +
                QByteArray::number(m_tiles.port()) + '"');
    install_default_font();
    m_own_view = std::make_unique<QWebEngineView>();
    m_view = m_own_view.get();
    m_view->setPage(new map_page(m_view));
    map_view::give_program_settings(*m_view);
    connect(m_view->page(), &QWebEnginePage::certificateError, this,
            [](QWebEngineCertificateError error) { error.acceptCertificate(); });
    m_view->resize(1000, 600);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view));
}

void test_map_pages::init()
{
    m_tiles.open = true;
    load(u"/index_tiandi.html"_s); // without a shift and without tiles
    run(u"changelanguage(0)"_s);
    m_tiles.requests.clear();
}

void test_map_pages::cleanupTestCase()
{
    m_own_view.reset();
}

void test_map_pages::load(const QString& page)
{
    QVERIFY(map_view::load(*m_view, page));
}

bool test_map_pages::drawn(int figures)
{
    return comes_true(u"VelmoMap.layer._figures.length === %1"_s.arg(figures));
}

void test_map_pages::pages_offer_the_vocabulary_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("title");
    QTest::newRow("gaode") << u"/index.html"_s << u"高德地图"_s;
    QTest::newRow("google") << u"/index_google.html"_s << u"谷歌地图"_s;
    QTest::newRow("sky") << u"/index_tiandi.html"_s << u"天地图"_s;
}

void test_map_pages::pages_offer_the_vocabulary()
{
    QFETCH(QString, page);
    QFETCH(QString, title);
    log_capture log;
    load(page);
    QCOMPARE(m_view->page()->title(), title);
    for (const char* name :
         {"clearMap", "changelanguage", "beginLocatedCityPacket", "appendLocatedCityPacket",
          "finishLocatedCityPacket", "deleteDrawnPolygons"})
        QCOMPARE(value(u"typeof window.%1"_s.arg(QLatin1String(name))), QVariant(u"function"_s));
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, QLatin1String(square));
    QVERIFY(drawn(1));
    // Nothing of the page's own is against its policy or fails.
    const QStringList lines = log.texts();
    for (const QString& line : lines)
        QVERIFY2(!line.contains("Refused") && !line.contains("Uncaught"), qPrintable(line));
}

void test_map_pages::areas_are_filled()
{
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, QLatin1String(square));
    QVERIFY(drawn(1));
    const QPoint inside = map_view::pixel_of(*m_view, 126.6523, 45.7485);
    QVERIFY(map_view::shows(*m_view, inside, filled_over(background), 0));
    QVERIFY(map_view::shows(*m_view, map_view::pixel_of(*m_view, 126.652, 45.750), area_line));
    // The side from the last point back to the first.
    QVERIFY(map_view::shows(*m_view, map_view::pixel_of(*m_view, 126.650, 45.7485), area_line));
    QVERIFY(
        !map_view::shows_now(*m_view, map_view::pixel_of(*m_view, 126.656, 45.7485), area_line));
}

void test_map_pages::lines_are_drawn_and_their_start_marked_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("line") << u"2"_s;
    // A record of no known kind leaves a comma and nothing after it.
    QTest::newRow("no kind") << QString();
}

void test_map_pages::lines_are_drawn_and_their_start_marked()
{
    QFETCH(QString, kind);
    map_view::send_figure(*m_view, u"l"_s, kind, QLatin1String(square));
    QVERIFY(drawn(1));
    QVERIFY(map_view::shows(*m_view, map_view::pixel_of(*m_view, 126.652, 45.750), line_colour));
    QVERIFY(map_view::shows(*m_view, map_view::pixel_of(*m_view, 126.650, 45.750), start_colour));
    // Neither closed nor filled.
    QVERIFY(map_view::shows_now(*m_view, map_view::pixel_of(*m_view, 126.6523, 45.7485), background,
                                0));
    QVERIFY(
        !map_view::shows_now(*m_view, map_view::pixel_of(*m_view, 126.650, 45.7485), line_colour));
}

void test_map_pages::waypoints_are_pins()
{
    map_view::send_figure(*m_view, u"p"_s, u"3"_s, u"126.65,45.75"_s);
    QVERIFY(drawn(1));
    const QPoint tip = map_view::pixel_of(*m_view, 126.65, 45.75);
    QVERIFY(map_view::shows(*m_view, tip - QPoint(0, 7), pin_colour, 1));
    QVERIFY(!map_view::shows_now(*m_view, tip + QPoint(0, 5), pin_colour));
    // In the middle of the map.
    QVERIFY((tip - QPoint(500, 300)).manhattanLength() <= 2);
}

void test_map_pages::clear_removes_figures_and_packets()
{
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, QLatin1String(square));
    QVERIFY(drawn(1));
    const QPoint inside = map_view::pixel_of(*m_view, 126.6523, 45.7485);
    QVERIFY(map_view::shows(*m_view, inside, filled_over(background), 0));
    run(u"beginLocatedCityPacket(\"b\",1)"_s);
    run(u"clearMap()"_s);
    run(u"appendLocatedCityPacket(\"b\",[%1])"_s.arg(QLatin1String(square)));
    run(u"finishLocatedCityPacket(\"b\")"_s);
    QVERIFY(drawn(0));
    QVERIFY(map_view::shows(*m_view, inside, background, 0));
    QCOMPARE(value(u"VelmoMap.figures.size + VelmoMap.packets.size"_s).toInt(), 0);
}

void test_map_pages::packets_are_joined_across_odd_ends()
{
    run(u"beginLocatedCityPacket(\"a\",2)"_s);
    run(u"appendLocatedCityPacket(\"a\",[126.1,45.1,126.2])"_s);
    run(u"appendLocatedCityPacket(\"a\",[])"_s);
    run(u"appendLocatedCityPacket(\"a\",[45.2,126.3,45.3,126.4])"_s);
    run(u"finishLocatedCityPacket(\"a\")"_s);
    QCOMPARE(value(u"[...VelmoMap.figures.get('a').measured].join()"_s).toString(),
             u"126.1,45.1,126.2,45.2,126.3,45.3"_s);
}

void test_map_pages::identifiers_keep_packets_apart()
{
    run(u"beginLocatedCityPacket(\"draw_1_1\",1)"_s);
    run(u"beginLocatedCityPacket(\"draw_11_1\",3)"_s);
    run(u"appendLocatedCityPacket(\"draw_1_1\",[126.1,45.1])"_s);
    run(u"appendLocatedCityPacket(\"draw_11_1\",[126.9,45.9])"_s);
    run(u"appendLocatedCityPacket(\"draw_1_1\",[126.2,45.2])"_s);
    run(u"appendLocatedCityPacket(\"unknown\",[126.2,45.2])"_s);
    run(u"finishLocatedCityPacket(\"unknown\")"_s);
    run(u"finishLocatedCityPacket(\"draw_11_1\")"_s);
    run(u"finishLocatedCityPacket(\"draw_1_1\")"_s);
    QCOMPARE(value(u"[...VelmoMap.figures.values()].map(f => f.id + ':' + f.kind + ':' + "
                   "[...f.measured]).join(' ')"_s)
                 .toString(),
             u"draw_11_1:3:126.9,45.9 draw_1_1:1:126.1,45.1,126.2,45.2"_s);
}

void test_map_pages::an_identifier_drawn_again_replaces()
{
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, QLatin1String(square));
    map_view::send_figure(*m_view, u"a"_s, u"3"_s, u"126.65,45.75"_s);
    // Finished once, it is no packet any more.
    run(u"finishLocatedCityPacket(\"a\")"_s);
    QVERIFY(drawn(1));
    QCOMPARE(value(u"VelmoMap.layer._figures[0].kind"_s).toInt(), 3);
}

void test_map_pages::delete_takes_exactly_the_same_figure()
{
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, QLatin1String(square));
    map_view::send_figure(*m_view, u"b"_s, u"2"_s, QLatin1String(square));
    map_view::send_figure(*m_view, u"c"_s, u"1"_s, u"126.1,45.1,126.2,45.2,126.3,45.1"_s);
    QVERIFY(drawn(3));
    run(u"deleteDrawnPolygons(1,126.1,45.1)"_s);
    run(u"deleteDrawnPolygons(1,%1)"_s.arg(QLatin1String(square)));
    QVERIFY(drawn(2));
    QCOMPARE(value(u"[...VelmoMap.figures.keys()].join()"_s).toString(), u"b,c"_s);
}

void test_map_pages::bad_input_is_ignored_data()
{
    QTest::addColumn<QString>("script");
    for (const char* script :
         {"beginLocatedCityPacket()", "beginLocatedCityPacket(null, {})",
          "beginLocatedCityPacket('x', Symbol.iterator)", "appendLocatedCityPacket()",
          "appendLocatedCityPacket('x', 5)", "appendLocatedCityPacket('x', null)",
          "finishLocatedCityPacket()", "finishLocatedCityPacket({})",
          "finishLocatedCityPacket(Symbol('x'))",
          "finishLocatedCityPacket({ toString() { throw 1 } })", "deleteDrawnPolygons()",
          "deleteDrawnPolygons('x', 'y')", "deleteDrawnPolygons(Symbol('x'), 1, 2)",
          "changelanguage()", "changelanguage('x')", "changelanguage(NaN)",
          "beginLocatedCityPacket('x', 1); finishLocatedCityPacket('x')",
          "beginLocatedCityPacket('x', 1); appendLocatedCityPacket('x', [NaN, 1, 'a', {}, null, "
          "undefined, 181, 0, 0, 91, Infinity, 5, 126]); finishLocatedCityPacket('x')",
          "beginLocatedCityPacket('x', 1); appendLocatedCityPacket('x', [Symbol('a'), 1n, 126]); "
          "finishLocatedCityPacket('x')"})
        QTest::newRow(script) << QString::fromUtf8(script);
}

void test_map_pages::bad_input_is_ignored()
{
    QFETCH(QString, script);
    QCOMPARE(value(u"try { %1; 'fine' } catch (e) { 'threw ' + e }"_s.arg(script)).toString(),
             u"fine"_s);
    QCOMPARE(value(u"document.documentElement.lang"_s).toString(), u"zh"_s);
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, QLatin1String(square));
    QVERIFY(drawn(1));
}

void test_map_pages::keys_leave_the_functions_working()
{
    const QUrl before = m_view->page()->url();
    QTest::mouseClick(m_view->focusProxy(), Qt::LeftButton, {}, QPoint(200, 200));
    for (const int key : {Qt::Key_Backspace, Qt::Key_F5, Qt::Key_Escape, Qt::Key_Left, Qt::Key_Plus,
                          Qt::Key_Tab, Qt::Key_Return, Qt::Key_Space, Qt::Key_Back, Qt::Key_F11})
        QTest::keyClick(m_view->focusProxy(), Qt::Key(key));
    QTest::keyClick(m_view->focusProxy(), Qt::Key_Left, Qt::AltModifier);
    QTest::keyClick(m_view->focusProxy(), Qt::Key_R, Qt::ControlModifier);
    QTest::mouseClick(m_view->focusProxy(), Qt::BackButton, {}, QPoint(200, 200));
    QTest::qWait(200);
    QCOMPARE(m_view->page()->url(), before);
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, QLatin1String(square));
    QVERIFY(drawn(1));
    QVERIFY(map_view::shows(*m_view, map_view::pixel_of(*m_view, 126.652, 45.750), area_line));
}

// View

void test_map_pages::a_burst_moves_the_view_once()
{
    run(u"window.moves = 0; VelmoMap.map.on('moveend', () => ++window.moves)"_s);
    for (int i = 0; i < 20; ++i)
        map_view::send_figure(*m_view, u"f%1"_s.arg(i), u"2"_s,
                              u"%1,45.75,%2,45.76"_s.arg(126.5 + i * 0.01).arg(126.505 + i * 0.01));
    QVERIFY(drawn(20));
    QCOMPARE(value(u"window.moves"_s).toInt(), 1);
    // Everything is in view, and fills a good part of it.
    const QPoint first = map_view::pixel_of(*m_view, 126.5, 45.75);
    const QPoint last = map_view::pixel_of(*m_view, 126.695, 45.76);
    QVERIFY(m_view->rect().contains(first));
    QVERIFY(m_view->rect().contains(last));
    QVERIFY(last.x() - first.x() > 400);

    // A later figure: the view goes to the union of both.
    map_view::send_figure(*m_view, u"far"_s, u"3"_s, u"127.5,46.5"_s);
    QVERIFY(drawn(21));
    QVERIFY(m_view->rect().contains(map_view::pixel_of(*m_view, 127.5, 46.5)));
    QVERIFY(m_view->rect().contains(map_view::pixel_of(*m_view, 126.5, 45.75)));
    QCOMPARE(value(u"window.moves"_s).toInt(), 2);

    // A cleared map stays where it is.
    run(u"clearMap()"_s);
    QVERIFY(drawn(0));
    QCOMPARE(value(u"window.moves"_s).toInt(), 2);
}

void test_map_pages::a_single_waypoint_is_not_magnified_beyond_reason()
{
    map_view::send_figure(*m_view, u"p"_s, u"3"_s, u"126.65,45.75"_s);
    QVERIFY(drawn(1));
    QCOMPARE(value(u"VelmoMap.map.getZoom()"_s).toInt(), 17);
}

/// Close by, the corners of a large figure lie millions of pixels away.
void test_map_pages::large_figures_are_cut_to_the_view()
{
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, u"100,30,120,30,120,45,100,45"_s);
    map_view::send_figure(*m_view, u"l"_s, u"2"_s, u"100,37,120,37"_s);
    QVERIFY(drawn(2));
    run(u"VelmoMap.map.setView([37, 110], 18, {animate: false})"_s);
    const QPoint middle = map_view::pixel_of(*m_view, 110, 37);
    QVERIFY(map_view::shows(*m_view, middle, line_colour, 1));
    QVERIFY(map_view::shows(*m_view, middle + QPoint(30, 100), filled_over(background), 0));
    QVERIFY(!map_view::shows_now(*m_view, middle + QPoint(0, 100), line_colour, 3));
    run(u"VelmoMap.map.setView([45, 110], 18, {animate: false})"_s);
    const QPoint edge = map_view::pixel_of(*m_view, 110, 45);
    QVERIFY(map_view::shows(*m_view, edge, area_line, 1));
    QVERIFY(map_view::shows_now(*m_view, edge + QPoint(35, 100), filled_over(background), 0));
    QVERIFY(map_view::shows_now(*m_view, edge + QPoint(35, -100), background, 0));
}

// The shift

void test_map_pages::shift_of_published_points_data()
{
    QTest::addColumn<double>("longitude");
    QTest::addColumn<double>("latitude");
    QTest::addColumn<double>("shifted_longitude");
    QTest::addColumn<double>("shifted_latitude");
    // Pairs that are published with the formula.
    QTest::newRow("Shanghai") << 121.5272106 << 31.1774276 << 121.531541859215 << 31.17530398364597;
    QTest::newRow("Shenzhen") << 113.912316 << 22.543847 << 113.9171764808363 << 22.540796131694766;
    QTest::newRow("Beijing") << 116.377817 << 39.911954 << 116.38404722455657 << 39.91334545536069;
    // Worked out apart from the page, in Python.
    QTest::newRow("Harbin") << 126.65 << 45.75 << 126.655987590 << 45.751965555;
    QTest::newRow("Urumqi") << 87.6 << 43.8 << 87.602838972 << 43.801212030;
    QTest::newRow("Sanya") << 109.5 << 18.25 << 109.504118444 << 18.248331521;
    QTest::newRow("Chengdu") << 104.07 << 30.66 << 104.072515043 << 30.657585183;
}

void test_map_pages::shift_of_published_points()
{
    QFETCH(double, longitude);
    QFETCH(double, latitude);
    QFETCH(double, shifted_longitude);
    QFETCH(double, shifted_latitude);
    const QVariantList shifted =
        value(u"Gcj02.shifted(%1, %2)"_s.arg(longitude, 0, 'f', 9).arg(latitude, 0, 'f', 9))
            .toList();
    QCOMPARE(shifted.size(), 2);
    QVERIFY(qAbs(shifted[0].toDouble() - shifted_longitude) < 2e-9);
    QVERIFY(qAbs(shifted[1].toDouble() - shifted_latitude) < 2e-9);
}

void test_map_pages::mainland_data()
{
    QTest::addColumn<double>("longitude");
    QTest::addColumn<double>("latitude");
    QTest::addColumn<bool>("inside");
    const auto place = [](const char* name, double longitude, double latitude, bool inside) {
        QTest::newRow(name) << longitude << latitude << inside;
    };
    place("Harbin", 126.65, 45.75, true);
    place("Beijing", 116.39, 39.91, true);
    place("Mohe", 122.53, 52.97, true);
    place("Fuyuan", 134.29, 48.36, true);
    place("Hunchun", 130.36, 42.86, true);
    place("Dandong", 124.39, 40.13, true);
    place("Dalian", 121.61, 38.91, true);
    place("Weihai", 122.12, 37.51, true);
    place("Shanghai", 121.47, 31.23, true);
    place("Zhoushan", 122.21, 29.99, true);
    place("Fuzhou", 119.30, 26.08, true);
    place("Xiamen", 118.09, 24.48, true);
    place("Shenzhen", 114.06, 22.55, true);
    place("Zhuhai", 113.57, 22.27, true);
    place("Sanya", 109.51, 18.25, true);
    place("Dongxing", 107.97, 21.55, true);
    place("Ruili", 97.85, 24.01, true);
    place("Jinghong", 100.80, 22.00, true);
    place("Lhasa", 91.11, 29.65, true);
    place("Kashgar", 75.99, 39.47, true);
    place("Khorgos", 80.42, 44.21, true);
    place("Altay", 88.13, 47.84, true);
    place("Erenhot", 111.98, 43.65, true);
    place("Manzhouli", 117.44, 49.60, true);
    place("Hong Kong", 114.17, 22.30, false);
    place("Lantau", 113.94, 22.28, false);
    place("Macau", 113.55, 22.19, false);
    place("Taipei", 121.56, 25.04, false);
    place("Kaohsiung", 120.30, 22.62, false);
    place("Kinmen", 118.32, 24.43, false);
    place("Matsu", 119.95, 26.16, false);
    place("Seoul", 126.98, 37.57, false);
    place("Pyongyang", 125.75, 39.03, false);
    place("Vladivostok", 131.89, 43.12, false);
    place("Khabarovsk", 135.07, 48.48, false);
    place("Blagoveshchensk", 127.55, 50.30, false);
    place("Ulaanbaatar", 106.91, 47.92, false);
    place("Almaty", 76.95, 43.24, false);
    place("Kathmandu", 85.32, 27.72, false);
    place("Thimphu", 89.64, 27.47, false);
    place("Hanoi", 105.85, 21.03, false);
    place("Myitkyina", 97.40, 25.38, false);
    place("Fukuoka", 130.40, 33.59, false);
    place("Greenwich", 0.0, 51.48, false);
}

void test_map_pages::mainland()
{
    QFETCH(double, longitude);
    QFETCH(double, latitude);
    QFETCH(bool, inside);
    QCOMPARE(value(u"Gcj02.applies(%1, %2)"_s.arg(longitude).arg(latitude)).toBool(), inside);
}

void test_map_pages::figures_stand_where_the_provider_has_them_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("measured");
    QTest::addColumn<double>("longitude");
    QTest::addColumn<double>("latitude");
    for (const char* page : {"/index.html", "/index_google.html"}) {
        QTest::addRow("%s, mainland", page)
            << QString::fromUtf8(page) << u"126.65,45.75"_s << 126.655987590 << 45.751965555;
        QTest::addRow("%s, abroad", page)
            << QString::fromUtf8(page) << u"135.07,48.48"_s << 135.07 << 48.48;
    }
    QTest::newRow("sky map") << u"/index_tiandi.html"_s << u"126.65,45.75"_s << 126.65 << 45.75;
}

void test_map_pages::figures_stand_where_the_provider_has_them()
{
    QFETCH(QString, page);
    QFETCH(QString, measured);
    QFETCH(double, longitude);
    QFETCH(double, latitude);
    load(page);
    map_view::send_figure(*m_view, u"p"_s, u"3"_s, measured);
    QVERIFY(drawn(1));
    const QPoint tip = map_view::pixel_of(*m_view, longitude, latitude);
    QVERIFY(m_view->rect().contains(tip));
    QVERIFY(map_view::shows(*m_view, tip - QPoint(0, 7), pin_colour, 1));
}

// Language

void test_map_pages::language_data()
{
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("attribution");
    QTest::addColumn<QString>("zoom");
    QTest::addColumn<QString>("unit");
    QTest::addColumn<QString>("note");
    const QString chinese_note = u"天地图需要密钥，请填入 tianditu_key.js"_s;
    const QString english_note = u"Sky Map needs a key in tianditu_key.js"_s;
    QTest::newRow("0") << u"0"_s << u"天地图"_s << u"放大"_s << u"公里"_s << chinese_note;
    QTest::newRow("1") << u"1"_s << u"Tianditu"_s << u"Zoom in"_s << u"km"_s << english_note;
    QTest::newRow("other") << u"7"_s << u"Tianditu"_s << u"Zoom in"_s << u"km"_s << english_note;
}

void test_map_pages::language()
{
    QFETCH(QString, number);
    QFETCH(QString, attribution);
    QFETCH(QString, zoom);
    QFETCH(QString, unit);
    QFETCH(QString, note);
    run(u"changelanguage(1); changelanguage(%1)"_s.arg(number));
    const auto text = [this](const char* selector) {
        return value(u"document.querySelector('%1').innerText"_s.arg(QLatin1String(selector)))
            .toString();
    };
    QVERIFY(text(".leaflet-control-attribution").contains(attribution));
    QVERIFY(text(".leaflet-control-scale").endsWith(u' ' + unit));
    QCOMPARE(value(u"document.querySelector('.leaflet-control-zoom-in').title"_s).toString(), zoom);
    QCOMPARE(text("#note"), note);
    // Once each, however often the language was set.
    QCOMPARE(value(u"document.querySelectorAll('.leaflet-control').length"_s).toInt(), 3);
}

void test_map_pages::language_outlives_the_provider()
{
    run(u"changelanguage(1)"_s);
    load(u"/index_google.html"_s);
    QVERIFY(comes_true(u"document.documentElement.lang === 'en'"_s));
    QCOMPARE(m_view->page()->title(), u"Google Map"_s);
}

// Tiles

void test_map_pages::tiles_are_asked_for_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("wanted");
    QTest::newRow("gaode") << u"/index.html"_s << QString()
                           << QStringList{u"webrd01.is.autonavi.com/appmaptile?"_s,
                                          u"webrd04.is.autonavi.com/appmaptile?"_s, u"&x="_s};
    QTest::newRow("google") << u"/index_google.html"_s << QString()
                            << QStringList{u"mt0.google.com/vt/lyrs=m&hl=zh-CN&gl=cn&x="_s,
                                           u"mt3.google.com/vt/lyrs=m"_s};
    QTest::newRow("sky") << u"/index_tiandi.html"_s << u"a key&"_s
                         << QStringList{u"tianditu.gov.cn/vec_w/wmts?"_s,
                                        u"tianditu.gov.cn/cva_w/wmts?"_s, u"&tk=a%20key%26"_s};
}

void test_map_pages::tiles_are_asked_for()
{
    QFETCH(QString, page);
    QFETCH(QString, key);
    QFETCH(QStringList, wanted);
    // The pages in a folder of their own, with a key as a user would put it in.
    const QString stage = QDir::currentPath();
    const QTemporaryDir folder;
    const QStringList files = QDir(stage).entryList({u"*.html"_s, u"*.js"_s, u"*.css"_s});
    for (const QString& file : files)
        QVERIFY(QFile::copy(stage + u'/' + file, folder.filePath(file)));
    QFile key_file(folder.filePath(u"tianditu_key.js"_s));
    QVERIFY(key_file.open(QIODevice::ReadOnly));
    QByteArray text = key_file.readAll();
    key_file.close();
    QVERIFY(text.contains("TIANDITU_KEY = \"\""));
    text.replace("TIANDITU_KEY = \"\"", "TIANDITU_KEY = \"" + key.toUtf8() + '"');
    QVERIFY(key_file.open(QIODevice::WriteOnly));
    key_file.write(text);
    key_file.close();

    QDir::setCurrent(folder.path());
    const bool loaded = map_view::load(*m_view, page);
    QDir::setCurrent(stage);
    QVERIFY(loaded);
    QTRY_VERIFY(m_tiles.requests.size() >= 8);
    for (const QString& part : std::as_const(wanted))
        QTRY_VERIFY2(m_tiles.requests.filter(part).size() > 0, qPrintable(part));
    QVERIFY(map_view::shows(*m_view, QPoint(400, 350), tile_colour, 0));
    QCOMPARE(value(u"document.getElementById('note').hidden"_s), QVariant(true));

    // Figures lie over the tiles.
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, u"100,30,110,30,110,40,100,40"_s);
    QVERIFY(drawn(1));
    QVERIFY(map_view::shows(*m_view, map_view::pixel_of(*m_view, 104, 35), filled_over(tile_colour),
                            0));
}

void test_map_pages::missing_tiles_are_told_and_come_back()
{
    m_tiles.open = false;
    load(u"/index.html"_s);
    const QString note = u"document.getElementById('note')"_s;
    QVERIFY(comes_true(note + u".hidden === false"_s));
    QCOMPARE(value(note + u".innerText"_s).toString(), u"无法获取地图瓦片，请检查网络连接"_s);
    run(u"changelanguage(1)"_s);
    QCOMPARE(value(note + u".innerText"_s).toString(),
             u"Map tiles cannot be reached. Check the network connection."_s);

    // Figures stand all the same, over the graticule.
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, QLatin1String(square));
    QVERIFY(drawn(1));
    const QPoint corner = map_view::pixel_of(*m_view, 126.655987590, 45.751965555);
    QVERIFY(map_view::shows(*m_view, corner, area_line));
    run(u"clearMap()"_s);
    QVERIFY(drawn(0));
    QVERIFY(map_view::shows(*m_view, QPoint(500, 300), background, 20));

    // Asked for again by itself, and gone when they come.
    m_tiles.open = true;
    QVERIFY(map_view::comes_true(*m_view, note + u".hidden"_s, 20'000));
    QVERIFY(map_view::shows(*m_view, QPoint(500, 300), tile_colour, 0));
}

void test_map_pages::sky_map_without_a_key_says_so()
{
    QTest::qWait(300);
    QCOMPARE(m_tiles.requests, QStringList());
    QCOMPARE(value(u"document.getElementById('note').hidden"_s), QVariant(false));
}

// The whole road

namespace {

/// The objects of the program, made once: nothing deletes them.
MainWindow& window()
{
    static const application_objects objects = [] {
        const application_objects made = make_application_objects();
        made.window->show();
        return made;
    }();
    return *objects.window;
}

} // namespace

void test_map_pages::a_long_record_takes_the_whole_road()
{
    thread_key key;
    QStringList scripts;
    connect(&key, &thread_key::draw_map_signal, this, [&](const QString& script) {
        scripts += script;
        run(script);
    });
    QStringList numbers;
    for (int i = 0; i < 1001; ++i)
        numbers +=
            u"%1, %2"_s.arg(126.0 + i * 0.0001, 0, 'f', 12).arg(45.0 + i * 0.0002, 0, 'f', 12);
    key.draw_row(0, u"2"_s, {numbers.join(u',')});
    QCOMPARE(scripts.size(), 5); // begin, 1000, 1000 and 2 numbers, finish
    QVERIFY(drawn(1));
    QCOMPARE(value(u"VelmoMap.layer._figures[0].measured.length"_s).toInt(), 2002);
    QCOMPARE(value(u"VelmoMap.layer._figures[0].measured[2001]"_s).toDouble(), 45.2);
    QVERIFY(map_view::shows(*m_view, map_view::pixel_of(*m_view, 126.05, 45.1), line_colour));
}

void test_map_pages::a_tick_in_the_window_reaches_the_map()
{
    QWebEngineView& map = *window().ui->map;
    QVERIFY(QTest::qWaitForWindowExposed(&window()));
    QVERIFY(map_view::comes_true(map, u"typeof VelmoMap === 'object'"_s));
    const sample_lists lists = sample_lists::of_methods({u"距离"_s, u"面积"_s, u"航点"_s});
    window().reset_table_data(lists.table_list, lists.data_msg, lists.data_msg_altitude,
                              lists.point_msg_all);
    const QImage before = map_view::picture(map);

    QTableView* view = window().ui->alltableView;
    view->setFocus();
    view->setCurrentIndex(window().model->index(0, 0));
    QTest::keyClick(view, Qt::Key_Space);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.layer._figures.length === 1"_s));
    QVERIFY(map_view::shows(map, map.rect().center(), line_colour, 4));
    QVERIFY(before != map_view::picture(map));

    view->setCurrentIndex(window().model->index(2, 0));
    QTest::keyClick(view, Qt::Key_Space);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.layer._figures.length === 2"_s));
    QTest::keyClick(view, Qt::Key_Space);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.layer._figures.length === 1"_s));
}

void test_map_pages::a_provider_change_drops_the_figures()
{
    QWebEngineView& map = *window().ui->map;
    QVERIFY(map_view::comes_true(map, u"VelmoMap.figures.size === 1"_s));
    QSignalSpy loaded(map.page(), &QWebEnginePage::loadFinished);
    // The one in force: nothing happens.
    window().ui->action_gaode->trigger();
    QTest::qWait(200);
    QCOMPARE(loaded.size(), 0);
    QCOMPARE(map_view::value_of(map, u"VelmoMap.figures.size"_s).toInt(), 1);
    window().ui->action_google->trigger();
    QTRY_COMPARE(loaded.size(), 1);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.provider === Providers.google"_s));
    QCOMPARE(map_view::value_of(map, u"VelmoMap.figures.size"_s).toInt(), 0);
    QCOMPARE(map.page()->title(), u"谷歌地图"_s);
}

QTEST_MAIN(test_map_pages)
#include "test_map_pages.moc"
