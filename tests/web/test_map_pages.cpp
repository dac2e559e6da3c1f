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
#include "presentation/graphic_widget.h"
#include "support/log_capture.h"
#include "support/sample_lists.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
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
    void numbers_with_a_leading_zero_are_lost_and_told();
    void keys_leave_the_functions_working();
    void scripts_before_the_page_is_ready_are_lost();

    void a_burst_moves_the_view_once();
    void a_single_waypoint_is_not_magnified_beyond_reason();
    void large_figures_are_cut_to_the_view();

    void shift_of_published_points_data();
    void shift_of_published_points();
    void mainland_data();
    void mainland();
    void figures_stand_where_the_provider_has_them_data();
    void figures_stand_where_the_provider_has_them();
    void a_figure_across_the_border_is_not_torn_data();
    void a_figure_across_the_border_is_not_torn();
    void the_graticule_has_its_degrees();

    void language_data();
    void language();
    void language_outlives_the_provider();
    void attribution_data();
    void attribution();

    void tiles_are_asked_for_data();
    void tiles_are_asked_for();
    void tiles_follow_the_language_data();
    void tiles_follow_the_language();
    void missing_tiles_are_told_and_come_back();
    void tiles_on_the_screen_stay_when_the_network_is_lost();
    void a_silent_provider_is_told();
    void sky_map_without_a_key_says_so();

    void a_long_record_takes_the_whole_road();
    void a_tick_in_the_window_reaches_the_map();
    void a_tick_reaches_map_drawing_and_totals_at_once();
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

const QString all_tiles_came =
    u"(tiles => tiles.length > 0 && tiles.every(one => one.classList.contains("
    "'leaflet-tile-loaded')))([...document.querySelectorAll('.leaflet-tile')])"_s;

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
    m_tiles.silent = false;
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
    return comes_true(u"VelmoMap.drawn() === %1"_s.arg(figures));
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
    QCOMPARE(value(u"VelmoMap.figures().length + VelmoMap.waiting()"_s).toInt(), 0);
}

void test_map_pages::packets_are_joined_across_odd_ends()
{
    run(u"beginLocatedCityPacket(\"a\",2)"_s);
    run(u"appendLocatedCityPacket(\"a\",[126.1,45.1,126.2])"_s);
    run(u"appendLocatedCityPacket(\"a\",[])"_s);
    run(u"appendLocatedCityPacket(\"a\",[45.2,126.3,45.3,126.4])"_s);
    run(u"finishLocatedCityPacket(\"a\")"_s);
    QCOMPARE(value(u"VelmoMap.figures()[0].measured.join()"_s).toString(),
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
    QCOMPARE(value(u"VelmoMap.figures().map(f => f.id + ':' + f.kind + ':' + f.measured)"
                   ".join(' ')"_s)
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
    QCOMPARE(value(u"VelmoMap.figures()[0].kind"_s).toInt(), 3);
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
    QCOMPARE(value(u"VelmoMap.figures().map(f => f.id).join()"_s).toString(), u"b,c"_s);
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

/// Coordinates go to the page as they stand in the file, as script. There 045.7
/// is no number, the script of its thousand numbers does not run, and the figure
/// joins what lies around the gap; 045 is the octal number 37.
void test_map_pages::numbers_with_a_leading_zero_are_lost_and_told()
{
    const QString note = u"document.getElementById('note').innerText"_s;
    const QString before = value(note).toString();
    run(u"beginLocatedCityPacket(\"a\",2)"_s);
    run(u"appendLocatedCityPacket(\"a\",[126.1,45.1])"_s);
    run(u"appendLocatedCityPacket(\"a\",[126.2,45.2,126.3,045.7])"_s);
    run(u"appendLocatedCityPacket(\"a\",[126.4,45.4,126.5,045])"_s);
    run(u"finishLocatedCityPacket(\"a\")"_s);
    QVERIFY(drawn(1));
    QCOMPARE(value(u"VelmoMap.figures()[0].measured.join()"_s).toString(),
             u"126.1,45.1,126.4,45.4,126.5,37"_s);
    QCOMPARE(value(note).toString(), before + u"\n部分坐标无法读取，图形不完整"_s);
    run(u"changelanguage(1)"_s);
    QVERIFY(value(note).toString().endsWith(
        u"\nSome coordinates cannot be read. A figure is not complete."_s));
    run(u"changelanguage(0)"_s);
    run(u"clearMap()"_s);
    QCOMPARE(value(note).toString(), before);
    // A fault beside any figure says nothing about one.
    run(u"nonsense("_s);
    map_view::send_figure(*m_view, u"b"_s, u"2"_s, QLatin1String(square));
    QVERIFY(drawn(1));
    QCOMPARE(value(note).toString(), before);
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

void test_map_pages::scripts_before_the_page_is_ready_are_lost()
{
    // No queue keeps them: what is ticked goes to the page at the next change.
    QSignalSpy loaded(m_view->page(), &QWebEnginePage::loadFinished);
    m_view->page()->load(map_page::url_of(u"/index.html"_s));
    map_view::send_figure(*m_view, u"early"_s, u"1"_s, QLatin1String(square));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, 30'000);
    QVERIFY(loaded[0][0].toBool());
    QCOMPARE(value(u"VelmoMap.figures().length + VelmoMap.waiting()"_s), QVariant(0));
    map_view::send_figure(*m_view, u"late"_s, u"1"_s, QLatin1String(square));
    QVERIFY(drawn(1));
}

// View

void test_map_pages::a_burst_moves_the_view_once()
{
    const int moves = value(u"VelmoMap.moves()"_s).toInt();
    for (int i = 0; i < 20; ++i)
        map_view::send_figure(*m_view, u"f%1"_s.arg(i), u"2"_s,
                              u"%1,45.75,%2,45.76"_s.arg(126.5 + i * 0.01).arg(126.505 + i * 0.01));
    QVERIFY(drawn(20));
    QCOMPARE(value(u"VelmoMap.moves()"_s).toInt(), moves + 1);
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
    QCOMPARE(value(u"VelmoMap.moves()"_s).toInt(), moves + 2);

    // A cleared map stays where it is.
    run(u"clearMap()"_s);
    QVERIFY(drawn(0));
    QCOMPARE(value(u"VelmoMap.moves()"_s).toInt(), moves + 2);
}

void test_map_pages::a_single_waypoint_is_not_magnified_beyond_reason()
{
    map_view::send_figure(*m_view, u"p"_s, u"3"_s, u"126.65,45.75"_s);
    QVERIFY(drawn(1));
    QCOMPARE(value(u"VelmoMap.zoom()"_s).toInt(), 17);
    // What has an extent may be looked at as closely as there are tiles.
    run(u"clearMap()"_s);
    map_view::send_figure(*m_view, u"a"_s, u"1"_s,
                          u"126.65,45.75,126.6501,45.75,126.6501,45.7501"_s);
    QVERIFY(comes_true(u"VelmoMap.zoom() === 18"_s));
}

/// Close by, the corners of a large figure lie millions of pixels away.
void test_map_pages::large_figures_are_cut_to_the_view()
{
    map_view::send_figure(*m_view, u"a"_s, u"1"_s, u"100,30,120,30,120,45,100,45"_s);
    map_view::send_figure(*m_view, u"l"_s, u"2"_s, u"100,37,120,37"_s);
    QVERIFY(drawn(2));
    run(u"VelmoMap.show(110, 37, 18)"_s);
    const QPoint middle = map_view::pixel_of(*m_view, 110, 37);
    QVERIFY(map_view::shows(*m_view, middle, line_colour, 1));
    QVERIFY(map_view::shows(*m_view, middle + QPoint(30, 100), filled_over(background), 0));
    QVERIFY(!map_view::shows_now(*m_view, middle + QPoint(0, 100), line_colour, 3));
    run(u"VelmoMap.show(110, 45, 18)"_s);
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
    // Towns, passes and islands close to the outline, on one side and the other.
    place("Heihe", 127.528, 50.245, true);
    place("Suifenhe", 131.15, 44.41, true);
    place("Hekou", 103.96, 22.53, true);
    place("Pingtan", 119.79, 25.5, true);
    place("Hutou", 133.66, 45.98, true);
    place("Beijicun", 122.35, 53.48, true);
    place("Changbai", 128.2, 41.42, true);
    place("Fangchuan", 130.6, 42.43, true);
    place("Shiwei", 119.9, 51.33, true);
    place("Mohan", 101.69, 21.2, true);
    place("Youyi pass", 106.71, 21.98, true);
    place("Zhangmu", 85.98, 27.99, true);
    place("Weitou", 118.57, 24.52, true);
    place("Wanshan", 113.73, 21.93, true);
    place("Yongxing", 112.34, 16.83, true);
    place("East Hengqin", 113.535, 22.13, true);
    place("Huma", 126.65, 51.73, true);
    place("Xunke", 128.47, 49.57, true);
    place("Jiayin", 130.4, 48.89, true);
    place("Tongjiang", 132.51, 47.64, true);
    place("Raohe", 134.01, 46.8, true);
    place("Dongning", 131.12, 44.06, true);
    place("Tumen", 129.84, 42.97, true);
    place("Ji'an", 126.19, 41.12, true);
    place("Linjiang", 126.92, 41.81, true);
    place("Donggang", 124.15, 39.86, true);
    place("Arxan", 119.94, 47.18, true);
    place("Jeminay", 85.87, 47.43, true);
    place("Tacheng", 82.98, 46.75, true);
    place("Alashankou", 82.57, 45.17, true);
    place("Zhaosu", 81.13, 43.16, true);
    place("Wuqia", 75.26, 39.72, true);
    place("Tashkurgan", 75.23, 37.77, true);
    place("Burang", 81.18, 30.29, true);
    place("Jilong", 85.32, 28.39, true);
    place("Yadong", 88.9, 27.49, true);
    place("Cona", 91.95, 27.99, true);
    place("Gongshan", 98.67, 27.74, true);
    place("Pianma", 98.62, 26.01, true);
    place("Wanding", 98.07, 24.09, true);
    place("Nansan", 98.83, 23.77, true);
    place("Cangyuan", 99.25, 23.15, true);
    place("Menglian", 99.59, 22.33, true);
    place("Mengla", 101.56, 21.46, true);
    place("Pingxiang", 106.76, 22.09, true);
    place("Gongbei", 113.55, 22.22, true);
    place("Shekou", 113.92, 22.48, true);
    place("Luohu", 114.118, 22.536, true);
    place("Dapeng", 114.48, 22.58, true);
    place("Dadeng", 118.33, 24.56, true);
    place("Gulangyu", 118.06, 24.445, true);
    place("Shengsi", 122.45, 30.73, true);
    place("Weizhou", 109.12, 21.04, true);
    place("Changhai", 122.58, 39.27, true);
    place("Nan'ao", 117.02, 23.42, true);
    place("Dongji", 122.69, 30.19, true);
    place("Dangan", 114.25, 22.05, true);
    place("Shangchuan", 112.77, 21.68, true);
    place("Sinuiju", 124.4, 40.09, false);
    place("Namyang", 129.86, 42.95, false);
    place("Muse", 97.9, 23.99, false);
    place("Zabaikalsk", 117.33, 49.65, false);
    place("Dadan", 118.17, 24.39, false);
    place("Manpo", 126.29, 41.15, false);
    place("Hyesan", 128.18, 41.4, false);
    place("Musan", 129.2, 42.23, false);
    place("Hoeryong", 129.75, 42.44, false);
    place("Unggi", 130.4, 42.33, false);
    place("Kraskino", 130.78, 42.71, false);
    place("Khasan", 130.64, 42.43, false);
    place("Pogranichny", 131.38, 44.41, false);
    place("Leninskoye", 132.62, 47.93, false);
    place("Bikin", 134.26, 46.82, false);
    place("Dalnerechensk", 133.73, 45.93, false);
    place("Zamyn-Uud", 111.9, 43.73, false);
    place("Bulgan", 91.54, 46.09, false);
    place("Zharkent", 80.0, 44.16, false);
    place("Dostyk", 82.48, 45.25, false);
    place("Zaysan", 84.87, 47.47, false);
    place("Sary-Tash", 73.26, 39.73, false);
    place("Murghab", 73.97, 38.17, false);
    place("Leh", 77.58, 34.16, false);
    place("Namche", 86.71, 27.81, false);
    place("Gangtok", 88.61, 27.33, false);
    place("Tawang", 91.86, 27.59, false);
    place("Putao", 97.4, 27.33, false);
    place("Namkham", 97.68, 23.83, false);
    place("Laukkai", 98.76, 23.69, false);
    place("Luang Namtha", 101.4, 20.95, false);
    place("Phongsali", 102.1, 21.68, false);
    place("Lao Cai", 103.97, 22.49, false);
    place("Ha Giang", 104.98, 22.82, false);
    place("Dong Dang", 106.7, 21.95, false);
    place("Cao Bang", 106.26, 22.67, false);
    place("Mong Cai", 107.97, 21.52, false);
    place("Sheung Shui", 114.13, 22.5, false);
    place("Tung Ping Chau", 114.44, 22.54, false);
    place("Taipa", 113.56, 22.155, false);
    place("Coloane", 113.56, 22.12, false);
    place("Lieyu", 118.24, 24.43, false);
    place("Beigan", 119.99, 26.22, false);
    place("Juguang", 119.94, 25.96, false);
    place("Dongyin", 120.5, 26.37, false);
    place("Wuqiu", 119.45, 24.99, false);
    place("Baengnyeong", 124.67, 37.96, false);
}

void test_map_pages::mainland()
{
    QFETCH(double, longitude);
    QFETCH(double, latitude);
    QFETCH(bool, inside);
    QCOMPARE(value(u"Mainland.has(%1, %2)"_s.arg(longitude).arg(latitude)).toBool(), inside);
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

void test_map_pages::a_figure_across_the_border_is_not_torn_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<bool>("from_mainland");
    QTest::addColumn<bool>("shifted");
    QTest::newRow("gaode, from the mainland") << u"/index.html"_s << true << true;
    QTest::newRow("gaode, from abroad") << u"/index.html"_s << false << false;
    QTest::newRow("google, from the mainland") << u"/index_google.html"_s << true << true;
    QTest::newRow("google, from abroad") << u"/index_google.html"_s << false << false;
    QTest::newRow("sky map") << u"/index_tiandi.html"_s << true << false;
}

/// Across the Amur, from one town to the other: the start decides for all.
void test_map_pages::a_figure_across_the_border_is_not_torn()
{
    QFETCH(QString, page);
    QFETCH(bool, from_mainland);
    QFETCH(bool, shifted);
    load(page);
    const QString heihe = u"127.528,50.245"_s;
    const QString blagoveshchensk = u"127.55,50.3"_s;
    // What cannot be a place is no start.
    map_view::send_figure(*m_view, u"a"_s, u"2"_s,
                          u"999,0,"_s + (from_mainland ? heihe : blagoveshchensk) + u',' +
                              (from_mainland ? blagoveshchensk : heihe));
    QVERIFY(drawn(1));
    for (const int at : {0, 2}) {
        const QVariantList pair =
            value(u"VelmoMap.figures()[0].placed.slice(%1, %2)"_s.arg(at).arg(at + 2)).toList();
        const QVariantList expected =
            value(u"(([x, y]) => %1)(VelmoMap.figures()[0].measured.slice(%2, %3))"_s
                      .arg(shifted ? u"Gcj02.shifted(x, y)"_s : u"[x, y]"_s)
                      .arg(at)
                      .arg(at + 2))
                .toList();
        QCOMPARE(pair.size(), 2);
        QVERIFY(qAbs(pair[0].toDouble() - expected[0].toDouble()) < 1e-9);
        QVERIFY(qAbs(pair[1].toDouble() - expected[1].toDouble()) < 1e-9);
    }
}

void test_map_pages::the_graticule_has_its_degrees()
{
    run(u"window.words = []; const write = CanvasRenderingContext2D.prototype.fillText; "
        "CanvasRenderingContext2D.prototype.fillText = function (text, ...rest) { "
        "words.push(text); return write.call(this, text, ...rest); }"_s);
    run(u"VelmoMap.show(126.66, 45.76, 12)"_s); // a line each 0.05 degrees there
    QVERIFY(comes_true(u"words.includes('126.65°E') && words.includes('45.75°N')"_s));
    QVERIFY(!value(u"words.includes('126.66°E')"_s).toBool());
    const QColor line(0xcf, 0xd8, 0xde);
    const QColor text(0x6b, 0x7a, 0x85);
    const QPoint crossing = map_view::pixel_of(*m_view, 126.65, 45.75);
    QVERIFY(map_view::shows(*m_view, crossing + QPoint(0, 40), line, 1));
    QVERIFY(map_view::shows_now(*m_view, crossing + QPoint(40, 0), line, 1));
    QVERIFY(!map_view::shows_now(*m_view, crossing + QPoint(40, 40), line, 10));
    QVERIFY(map_view::shows_now(*m_view, QPoint(crossing.x() + 28, 10), text, 12));
    QVERIFY(map_view::shows_now(*m_view, QPoint(28, crossing.y() - 9), text, 12));
    run(u"words.length = 0; VelmoMap.show(-70.26, -33.46, 12)"_s);
    QVERIFY(comes_true(u"words.includes('70.25°W') && words.includes('33.45°S')"_s));
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

void test_map_pages::attribution_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("attribution");
    const auto row = [](const char* page, int language, const QString& attribution) {
        QTest::addRow("%s %d", page, language)
            << QString::fromUtf8(page) << language << attribution;
    };
    row("/index.html", 0, u"© 高德地图"_s);
    row("/index.html", 1, u"© Gaode (AutoNavi)"_s);
    row("/index_google.html", 0, u"© 谷歌地图"_s);
    row("/index_google.html", 1, u"© Google"_s);
    row("/index_tiandi.html", 0, u"© 天地图 国家地理信息公共服务平台"_s);
    row("/index_tiandi.html", 1, u"© Tianditu, National Platform for Geospatial Information"_s);
}

void test_map_pages::attribution()
{
    QFETCH(QString, page);
    QFETCH(int, language);
    QFETCH(QString, attribution);
    load(page);
    run(u"changelanguage(%1)"_s.arg(language));
    QCOMPARE(
        value(u"document.querySelector('.leaflet-control-attribution').innerText"_s).toString(),
        u"Leaflet | "_s + attribution);
}

// Tiles

void test_map_pages::tiles_follow_the_language_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    QTest::newRow("gaode") << u"/index.html"_s << u"?lang=zh_cn&"_s << u"?lang=en&"_s;
    QTest::newRow("google") << u"/index_google.html"_s << u"&hl=zh-CN&"_s << u"&hl=en&"_s;
}

void test_map_pages::tiles_follow_the_language()
{
    QFETCH(QString, page);
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    load(page);
    QTRY_VERIFY(m_tiles.requests.filter(chinese).size() >= 4);
    QCOMPARE(m_tiles.requests.filter(english).size(), 0);
    run(u"changelanguage(1)"_s);
    QTRY_VERIFY(m_tiles.requests.filter(english).size() >= 4);
    QVERIFY(comes_true(all_tiles_came));
    m_tiles.requests.clear();
    run(u"changelanguage(2)"_s); // the same: nothing is asked for again
    QTest::qWait(300);
    QCOMPARE(m_tiles.requests, QStringList());
}

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
        QTRY_VERIFY2(!m_tiles.requests.filter(part).isEmpty(), qPrintable(part));
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

void test_map_pages::tiles_on_the_screen_stay_when_the_network_is_lost()
{
    load(u"/index.html"_s);
    const QString note_hidden = u"document.getElementById('note').hidden"_s;
    const QPoint left(60, 300);
    const QPoint right(940, 300);
    QVERIFY(map_view::shows(*m_view, left, tile_colour, 0));
    QVERIFY(map_view::shows(*m_view, right, tile_colour, 0));
    QVERIFY(comes_true(all_tiles_came));

    m_tiles.open = false;
    run(u"VelmoMap.pan(600, 0)"_s);
    QVERIFY(comes_true(u"!"_s + note_hidden));
    QTRY_VERIFY(!map_view::shows_now(*m_view, right, tile_colour, 0));
    QVERIFY(map_view::shows_now(*m_view, left, tile_colour, 0));
    // One tile is asked for again; what is there stays.
    QTest::qWait(1000);
    m_tiles.requests.clear();
    QTRY_VERIFY_WITH_TIMEOUT(!m_tiles.requests.isEmpty(), 30'000);
    QTest::qWait(400);
    QCOMPARE(m_tiles.requests.size(), 1);
    QVERIFY(map_view::shows_now(*m_view, left, tile_colour, 0));
    QVERIFY(!value(note_hidden).toBool());

    m_tiles.open = true;
    QVERIFY(map_view::comes_true(*m_view, note_hidden, 30'000));
    QVERIFY(map_view::shows(*m_view, right, tile_colour, 0));
    QVERIFY(map_view::shows_now(*m_view, left, tile_colour, 0));
}

void test_map_pages::a_silent_provider_is_told()
{
    m_tiles.silent = true;
    m_view->page()->load(map_page::url_of(u"/index.html"_s)); // which ends with its last tile
    QVERIFY(comes_true(u"typeof VelmoMap === 'object' && VelmoMap.provider === Providers.gaode"_s));
    const QString note_hidden = u"document.getElementById('note').hidden"_s;
    QTest::qWait(1000);
    QVERIFY(value(note_hidden).toBool()); // patience first
    QVERIFY(map_view::comes_true(*m_view, u"!"_s + note_hidden, 30'000));
    m_tiles.silent = false;
    QVERIFY(map_view::comes_true(*m_view, note_hidden, 40'000));
    QVERIFY(map_view::shows(*m_view, QPoint(400, 350), tile_colour, 0));
    QVERIFY(map_view::shows(*m_view, QPoint(940, 60), tile_colour, 0));
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
    QCOMPARE(value(u"VelmoMap.figures()[0].measured.length"_s).toInt(), 2002);
    QCOMPARE(value(u"VelmoMap.figures()[0].measured[2001]"_s).toDouble(), 45.2);
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
    QVERIFY(map_view::comes_true(map, u"VelmoMap.drawn() === 1"_s));
    QVERIFY(map_view::shows(map, map.rect().center(), line_colour, 4));
    QVERIFY(before != map_view::picture(map));

    view->setCurrentIndex(window().model->index(2, 0));
    QTest::keyClick(view, Qt::Key_Space);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.drawn() === 2"_s));
    QTest::keyClick(view, Qt::Key_Space);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.drawn() === 1"_s));
}

/// Half a second is one pass of the totals timer and thirty frames of the page.
void test_map_pages::a_tick_reaches_map_drawing_and_totals_at_once()
{
    MainWindow& shown = window();
    QWebEngineView& map = *shown.ui->map;
    const sample_lists lists = sample_lists::of_methods({u"距离"_s, u"面积"_s, u"航点"_s});
    shown.reset_table_data(lists.table_list, lists.data_msg, lists.data_msg_altitude,
                           lists.point_msg_all);
    map.page()->runJavaScript(u"clearMap()"_s);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.drawn() === 0"_s));
    QTRY_COMPARE(shown.ui->totalchecked->text(), u"0"_s);
    const auto drawing = [&] { return shown.ui->widget_graphic->grab().toImage(); };
    const QImage empty = drawing();
    QVERIFY(map_view::comes_true(map, u"window.frames_until_drawn = 0; (function count() { "
                                      "if (VelmoMap.drawn() === 1) return; ++frames_until_drawn; "
                                      "requestAnimationFrame(count); })(); true"_s));
    QCOMPARE(shown.timer->interval(), 500);
    QSignalSpy passes(&shown, &MainWindow::send_check_sign_to_threadkey_other);

    QTableView* view = shown.ui->alltableView;
    view->setFocus();
    view->setCurrentIndex(shown.model->index(1, 0));
    QTest::keyClick(view, Qt::Key_Space);
    const qsizetype before = passes.size();
    QTRY_VERIFY(passes.size() > before);
    QCOMPARE(passes.size(), before + 1);
    QCOMPARE(shown.ui->totalchecked->text(), u"1"_s);
    QCOMPARE(shown.ui->areameter->text(), QString::number(lists.table_list[1].areameter.toInt()));
    QCOMPARE(shown.ui->widget_graphic->draw_data, QStringList{lists.data_msg[1]});
    QVERIFY(drawing() != empty);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.drawn() === 1"_s));
    const int frames = map_view::value_of(map, u"window.frames_until_drawn"_s).toInt();
    QVERIFY2(frames > 0 && frames <= 30, qPrintable(QString::number(frames)));
    const QColor under = m_tiles.open ? tile_colour : background;
    QVERIFY(map_view::shows(map, map.rect().center(), filled_over(under), 60));

    QTest::keyClick(view, Qt::Key_Space);
    QTRY_COMPARE(shown.ui->totalchecked->text(), u"0"_s);
    QCOMPARE(drawing(), empty);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.drawn() === 0"_s));
    QTest::keyClick(view, Qt::Key_Space);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.drawn() === 1"_s));
}

void test_map_pages::a_provider_change_drops_the_figures()
{
    QWebEngineView& map = *window().ui->map;
    QVERIFY(map_view::comes_true(map, u"typeof VelmoMap === 'object'"_s));
    map.page()->runJavaScript(u"clearMap()"_s);
    map_view::send_figure(map, u"a"_s, u"1"_s, QLatin1String(square));
    QVERIFY(map_view::comes_true(map, u"VelmoMap.figures().length === 1"_s));
    QSignalSpy loaded(map.page(), &QWebEnginePage::loadFinished);
    // The one in force: nothing happens.
    window().ui->action_gaode->trigger();
    QTest::qWait(200);
    QCOMPARE(loaded.size(), 0);
    QCOMPARE(map_view::value_of(map, u"VelmoMap.figures().length"_s).toInt(), 1);
    window().ui->action_google->trigger();
    QTRY_COMPARE(loaded.size(), 1);
    QVERIFY(map_view::comes_true(map, u"VelmoMap.provider === Providers.google"_s));
    QCOMPARE(map_view::value_of(map, u"VelmoMap.figures().length"_s).toInt(), 0);
    QCOMPARE(map.page()->title(), u"谷歌地图"_s);
}

QTEST_MAIN(test_map_pages)
#include "test_map_pages.moc"
