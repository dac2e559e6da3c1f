// A page of the map whose process ends, or never answers again, is replaced, and
// the program goes on: in the real window and the real web engine.

#include "core/application.h"
#include "core/main_window.h"
#include "core/main_window_form.h"
#include "core/map_page.h"
#include "map_view.h"
#include "presentation/graphic_widget.h"
#include "support/sample_lists.h"

#include <QAction>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QWebEngineView>

#include <cmath>
#include <csignal>

using namespace Qt::StringLiterals;

class test_map_recovery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void a_process_that_ends_is_replaced();
    void an_endless_script_ends_by_itself_data();
    void an_endless_script_ends_by_itself();
    void an_endless_script_does_not_keep_the_provider();
    void a_busy_page_is_left_alone();
    void half_a_million_points_are_left_alone();

private:
    [[nodiscard]] QVariant value(const QString& expression)
    {
        return map_view::value_of(*m_view, expression);
    }
    /// Ticks one measurement of these coordinates.
    void tick(const QString& coordinates);
    /// Ticks an honest figure and looks for it.
    void goes_on();

    MainWindow* m_window = nullptr;
    QWebEngineView* m_view = nullptr;
    map_page* m_page = nullptr;
};

void test_map_recovery::initTestCase()
{
    qputenv("PATH", ""); // without adb in reach the device worker polls nothing
    // No name leads anywhere, so that nothing waits for tiles. Read when the
    // engine starts.
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--host-resolver-rules=\"MAP * ~NOTFOUND\"");
    install_default_font();
    m_window = make_application_objects().window;
    m_view = m_window->ui->map;
    m_page = qobject_cast<map_page*>(m_view->page());
    QVERIFY(m_page != nullptr);
    QVERIFY(m_page->patience >= 15);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
}

void test_map_recovery::init()
{
    m_page->patience = map_page().patience;
    QVERIFY(map_view::load(*m_view, u"/index.html"_s));
}

void test_map_recovery::tick(const QString& coordinates)
{
    sample_lists lists = sample_lists::of_methods({u"距离"_s});
    lists.data_msg[0] = coordinates;
    m_window->reset_table_data(lists.table_list, lists.data_msg, lists.data_msg_altitude,
                               lists.point_msg_all);
    m_window->model->item(0, 0)->setData(true, Qt::EditRole);
    m_window->all_table_change(true);
}

void test_map_recovery::goes_on()
{
    tick(u"126.65,45.75,126.66,45.76"_s);
    const bool drawn = map_view::comes_true(*m_view, u"VelmoMap.drawn() === 1"_s);
    QVERIFY2(drawn, qPrintable(value(u"JSON.stringify([document.readyState, "
                                     "document.visibilityState, VelmoMap.drawn(), "
                                     "performance.now()])"_s)
                                   .toString()));
}

void test_map_recovery::a_process_that_ends_is_replaced()
{
    goes_on();
    m_window->language = 1;
    const qint64 process = m_page->renderProcessPid();
    QVERIFY(process > 0);
    QSignalSpy ended(m_page, &QWebEnginePage::renderProcessTerminated);
    QSignalSpy loaded(m_page, &QWebEnginePage::loadFinished);
    QCOMPARE(::kill(static_cast<pid_t>(process), SIGKILL), 0);
    QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, 30'000);
    QTRY_VERIFY_WITH_TIMEOUT(!loaded.isEmpty() && loaded.last().first().toBool(), 30'000);
    QVERIFY(m_page->renderProcessPid() != process);
    QCOMPARE(m_page->url(), map_page::url_of(u"/index.html"_s));
    // Empty, in the language in force, and ready for the next tick.
    QVERIFY(map_view::comes_true(*m_view, u"document.documentElement.lang === 'en'"_s));
    QCOMPARE(value(u"VelmoMap.drawn()"_s).toInt(), 0);
    QCOMPARE(m_window->table_list.size(), 1);
    goes_on();
    m_window->language = 0;
}

void test_map_recovery::an_endless_script_ends_by_itself_data()
{
    QTest::addColumn<QString>("script");
    QTest::newRow("loop") << u"for(;;){}"_s;
    QTest::newRow("later") << u"setTimeout(() => { for(;;){} }, 700)"_s;
    QTest::newRow("kept by all means")
        << u"onbeforeunload = e => { e.returnValue = 'x'; for(;;){} }; "
           "onunload = () => { for(;;){} }; for(;;){}"_s;
}

void test_map_recovery::an_endless_script_ends_by_itself()
{
    QFETCH(QString, script);
    m_page->patience = 3;
    QSignalSpy ended(m_page, &QWebEnginePage::renderProcessTerminated);
    QSignalSpy loaded(m_page, &QWebEnginePage::loadFinished);
    tick(u"126.65,45.75,(() => { %1 })(),45.751"_s.arg(script));
    QTRY_VERIFY_WITH_TIMEOUT(!ended.isEmpty(), 60'000);
    QTRY_VERIFY_WITH_TIMEOUT(!loaded.isEmpty() && loaded.last().first().toBool(), 60'000);
    // The engine may call the page that was just ended loaded, too: only the next one answers.
    QVERIFY(map_view::comes_true(*m_view, u"typeof VelmoMap === 'object'"_s));
    QCOMPARE(m_window->table_list.size(), 1);
    QCOMPARE(m_page->url(), map_page::url_of(u"/index.html"_s));
    goes_on();
}

void test_map_recovery::an_endless_script_does_not_keep_the_provider()
{
    m_page->patience = 3;
    tick(u"126.65,45.75,(() => { for(;;){} })(),45.751"_s);
    m_window->ui->action_google->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(m_page->title(), u"谷歌地图"_s, 60'000);
    QCOMPARE(m_page->url(), map_page::url_of(u"/index_google.html"_s));
    QVERIFY(m_window->ui->action_google->isChecked());
    goes_on();
    m_window->ui->action_gaode->trigger();
    QVERIFY(map_view::comes_true(
        *m_view, u"typeof VelmoMap === 'object' && document.title === '高德地图'"_s, 30'000));
}

void test_map_recovery::a_busy_page_is_left_alone()
{
    QSignalSpy ended(m_page, &QWebEnginePage::renderProcessTerminated);
    QCOMPARE(value(u"window.marked = 1"_s).toInt(), 1);
    m_page->runJavaScript(u"for (const end = Date.now() + 4500; Date.now() < end;) {}"_s);
    QTest::qWait(5000);
    QVERIFY(map_view::comes_true(*m_view, u"window.marked === 1"_s));
    QCOMPARE(ended.size(), 0);
}

void test_map_recovery::half_a_million_points_are_left_alone()
{
    QSignalSpy ended(m_page, &QWebEnginePage::renderProcessTerminated);
    QCOMPARE(value(u"window.marked = 1"_s).toInt(), 1);
    QStringList numbers;
    for (int i = 0; i < 100'000; ++i)
        numbers += u"%1,%2"_s.arg(126.0 + 0.1 * std::sin(i * 0.01) + i * 1e-7, 0, 'f', 12)
                       .arg(45.0 + 0.1 * std::cos(i * 0.01), 0, 'f', 12);
    const QString text = numbers.join(u',');
    sample_lists lists = sample_lists::of_methods(QStringList(5, u"距离"_s));
    lists.data_msg.fill(text);
    m_window->reset_table_data(lists.table_list, lists.data_msg, lists.data_msg_altitude,
                               lists.point_msg_all);
    for (int row = 0; row < 5; ++row)
        m_window->model->item(row, 0)->setData(true, Qt::EditRole);
    m_window->all_table_change(true);
    QVERIFY(map_view::comes_true(*m_view, u"VelmoMap.drawn() === 5"_s, 120'000));
    QVERIFY(map_view::comes_true(*m_view, u"window.marked === 1"_s));
    QCOMPARE(ended.size(), 0);
    // The drawing and the totals follow at the next pass.
    QTRY_COMPARE(m_window->ui->widget_graphic->draw_data.size(), 5);
    QVERIFY(m_window->ui->widget_graphic->draw_data.first() == text);
}

QTEST_MAIN(test_map_recovery)
#include "test_map_recovery.moc"
