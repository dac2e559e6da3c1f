// The window with all that it is joined to, without a device: rectangles,
// resizing, languages, boxes, tables, ticks and edits, driven by events.

#include "coordinates/json_file_manager.h"
#include "coordinates/zuobiao_form_homepage.h"
#include "core/application.h"
#include "core/main_window.h"
#include "core/main_window_form.h"
#include "core/thread_key.h"
#include "exchange/input_window.h"
#include "exchange/output_window.h"
#include "presentation/bridge.h"
#include "presentation/check_box_delegate.h"
#include "presentation/graphic_widget.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"
#include "support/sample_lists.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFrame>
#include <QGroupBox>
#include <QHeaderView>
#include <QIcon>
#include <QImage>
#include <QItemDelegate>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStyleOptionButton>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTranslator>
#include <QUrl>
#include <QVariant>
#include <QWebChannel>
#include <QWebEnginePage>
#include <QWebEngineSettings>
#include <QWebEngineView>
#include <QWindow>

#include <type_traits>

using pairs = QList<std::pair<int, int>>;

class page_recorder
{
public:
    explicit page_recorder(QWebEngineView* view);
    ~page_recorder();

    bool ready = false;

private:
    QWebEngineView* m_view;
    QWebEnginePage* m_own;
};

class test_main_window : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void opens_as_designed();
    void objects_have_their_names_data();
    void objects_have_their_names();
    void each_tab_has_its_table_and_its_box();
    void rectangles_data();
    void rectangles();
    void resizing_follows_the_rules();
    void image_buttons_have_names_and_pictures();
    void a_missing_image_leaves_a_blank_button();
    void view_buttons_show_what_is_in_front();
    void styles_are_the_designed_ones();
    void signals_stand_in_their_order();

    void language_switch_sets_every_text();
    void language_back_leaves_two_map_options_in_english();
    void language_clicked_twice_stays();
    void language_without_its_file_stays_in_the_old_one();
    void translators_of_earlier_switches_stay();
    void qt_says_its_own_words_in_the_language();
    void headers_follow_at_the_next_rebuild();

    void lamps_share_the_text();
    void progress_and_read_button();
    void information_fills_both_panels();
    void drawing_gets_the_ticked_measurements();
    void drawing_is_painted_anew_at_each_pass();
    void the_timer_asks_for_the_totals_of_the_window();
    void units_of_the_panels_are_fixed();
    void long_texts_fit_their_places();
    void the_map_view_is_set_up();
    void a_page_that_is_not_there_shows_nothing();
    void scripts_reach_the_page_in_order();
    void language_reaches_the_page();
    void map_options_work_like_radio_buttons();
    void frame_toggles();
    void close_asks_first_data();
    void close_asks_first();
    void menus_stand_as_designed();
    void help_boxes();
    void help_boxes_in_english();
    void the_store_that_is_handed_in_is_kept();
    void coordinate_settings_open_and_come_back();
    void coordinate_settings_end_before_they_open_again();
    void buttons_emit_their_signals();
    void export_dialog_gets_what_is_shown();
    void export_dialog_is_joined_to_the_hub();
    void import_dialog_follows_the_language();
    void import_dialog_is_joined_to_the_window();

    void first_delivery_stays_when_the_second_comes();
    void shorter_lists_are_taken_as_far_as_all_go();
    void rows_stand_in_the_tables_of_their_kinds();
    void every_view_has_its_headers_and_delegates_data();
    void every_view_has_its_headers_and_delegates();
    void a_rebuild_tells_its_relations_and_an_empty_one_nothing();
    void rebuild_clears_ticks_and_keeps_boxes();
    void emptied_tables_keep_headers_and_relations();
    void rebuild_releases_the_models_before();

    void a_click_on_the_tick_toggles_both_tables();
    void what_does_not_toggle_data();
    void what_does_not_toggle();
    void the_press_of_a_double_click_changes_nothing();
    void space_toggles();
    void ticking_in_a_kind_table_reaches_the_main_one();
    void tab_box_ticks_all();
    void boxes_and_tables_send_their_own_signals();
    void deleting_takes_the_ticked_rows();
    void deleting_nothing_still_clears_the_boxes();
    void a_read_ends_with_its_tick_in_the_totals();

    void name_edited_in_the_main_table();
    void name_edited_in_a_kind_table_data();
    void name_edited_in_a_kind_table();
    void time_is_taken_as_typed();
    void number_and_type_columns_are_accepted_and_ignored();
    void a_measurement_without_points_is_legal();
    void an_import_is_appended_like_a_read();
    void edit_without_relation_is_dropped();
    void edit_behind_the_lists_is_dropped();
    void names_and_times_are_written_everywhere();
    void only_what_differs_is_written();
    void editing_through_the_keyboard();

public slots:
    void swallow_url(const QUrl& url) { m_opened_urls += url; }

private:
    void deliver(const sample_lists& lists);
    [[nodiscard]] QVariant answer_of_page(const QString& script) const;
    [[nodiscard]] QString calls_of_page() const;
    void choose_english();
    void choose_chinese();
    [[nodiscard]] static QPoint tick_place(const QTableView* view, int row);
    [[nodiscard]] bool ticked(const QStandardItemModel* model, int row) const;

    application_objects m_objects{};
    QList<QUrl> m_opened_urls;
    MainWindow* m_window = nullptr;
    Ui::MainWindow* m_ui = nullptr;
};

void test_main_window::initTestCase()
{
    // Without adb in reach the device worker polls nothing.
    qputenv("PATH", "");
    install_default_font();
    m_objects = make_application_objects();
    m_window = m_objects.window;
    m_ui = m_window->ui.get();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
}

void test_main_window::init()
{
    if (m_window->language != 0)
        choose_chinese();
    m_window->reset_table_data({}, {}, {}, {});
    for (auto* box : m_window->findChildren<QCheckBox*>())
        box->setChecked(false);
    m_ui->tabWidget->setCurrentIndex(0);
    m_ui->pushButton_map->click();
}

void test_main_window::deliver(const sample_lists& lists)
{
    m_window->recast_table(0, lists.table_list, lists.data_msg, lists.data_msg_altitude,
                           lists.point_msg_all);
}

void test_main_window::choose_english()
{
    m_ui->action_english->trigger();
}

void test_main_window::choose_chinese()
{
    m_ui->action_chinese->trigger();
}

QPoint test_main_window::tick_place(const QTableView* view, int row)
{
    return view->visualRect(view->model()->index(row, 0)).center();
}

bool test_main_window::ticked(const QStandardItemModel* model, int row) const
{
    return model->index(row, 0).data(Qt::DisplayRole).toBool();
}

// Look

void test_main_window::opens_as_designed()
{
    QCOMPARE(m_window->size(), QSize(1288, 724));
    QCOMPARE(m_window->version, QStringLiteral("V3.2.3"));
    QCOMPARE(m_window->language, 0);
    QCOMPARE(m_window->map_shown, 1);
    QCOMPARE(m_window->frame_shown, 1);
    static_assert(std::is_same_v<decltype(MainWindow::language), qint32>);
    static_assert(std::is_same_v<decltype(MainWindow::map_shown), qint32>);
    static_assert(std::is_same_v<decltype(MainWindow::mode_flag), qint32>);
    static_assert(std::is_same_v<decltype(MainWindow::sys_index), qint32>);
    static_assert(std::is_same_v<decltype(MainWindow::frame_shown), qint32>);
    QCOMPARE(m_ui->label_serial->text(), QStringLiteral("未连接"));
    QCOMPARE(m_ui->label_tablist->text(), QStringLiteral("数据列表"));
    QCOMPARE(m_ui->groupBox->title(), QStringLiteral(" 条目信息"));
    QVERIFY(!m_ui->progressBar->isTextVisible());
    QCOMPARE(m_ui->progressBar->minimum(), 0);
    QCOMPARE(m_ui->progressBar->maximum(), 100);
    const QStringList titles{"全部", " 面积", " 距离", "航点", "航线", " 航迹", "放样"};
    for (int tab = 0; tab < titles.size(); ++tab)
        QCOMPARE(m_ui->tabWidget->tabText(tab), titles[tab]);
    for (const QLabel* lamp : {m_ui->LED, m_ui->LED_2}) {
        QVERIFY(lamp->styleSheet().contains("rgba(255, 0, 0, 255)"));
        QVERIFY(lamp->styleSheet().endsWith("border-radius:10px;"));
    }
    QVERIFY(!m_window->windowIcon().isNull());
    QCOMPARE(m_window->windowIcon().pixmap(16).toImage(),
             QIcon("./pic/com/1.ico").pixmap(16).toImage());
    QCOMPARE(m_window->coordinate_form, nullptr);
    QVERIFY(m_window->js != nullptr);

    const std::pair<const QLabel*, QString> texts[] = {
        {m_ui->label_2, "读取进度"},   {m_ui->label_frame, "测量信息"},
        {m_ui->label_11, "已接收"},    {m_ui->label_total, "总计勾选:"},
        {m_ui->label_14, "总计勾选:"}, {m_ui->label_area, "面积:"},
        {m_ui->label_17, "面积:"},     {m_ui->label_dist, "周长:"},
        {m_ui->label_21, "周长:"},     {m_ui->label_total_unit, "条"},
        {m_ui->label_16, "条"},        {m_ui->label_area_unit, "平方米"},
        {m_ui->label_18, "平方米"},    {m_ui->label_mu_unit, "亩"},
        {m_ui->label_19, "亩"},        {m_ui->label_dist_unit, "米"},
        {m_ui->label_22, "米"}};
    for (const auto& [label, text] : texts)
        QCOMPARE(label->text(), text);
    QCOMPARE(m_ui->delect_tableandmap->text(), QStringLiteral("删除"));
    QCOMPARE(m_ui->action_google->text(), QStringLiteral("谷歌地图"));
    QCOMPARE(m_ui->action_sky->text(), QStringLiteral("天地图"));
    for (const QAction* first : {m_ui->action_gaode, m_ui->action_chinese})
        QVERIFY(first->isCheckable() && first->isChecked());
    for (const QAction* other : {m_ui->action_google, m_ui->action_sky, m_ui->action_english})
        QVERIFY(other->isCheckable() && !other->isChecked());
    // What lies on the drawing goes with it.
    for (const QWidget* one :
         {static_cast<QWidget*>(m_ui->north), static_cast<QWidget*>(m_ui->frame),
          static_cast<QWidget*>(m_ui->tuxing_control)})
        QCOMPARE(one->parentWidget(), m_ui->widget_graphic);
}

void test_main_window::objects_have_their_names_data()
{
    QTest::addColumn<QString>("type");
    const auto all = [](const char* type, std::initializer_list<const char*> names) {
        for (const char* name : names)
            QTest::newRow(name) << type;
    };
    all("QWidget", {"centralWidget", "widget1", "widget2", "widget3", "widget4", "tab", "tab_2",
                    "tab_3", "tab_4", "tab_5", "tab_6", "tab_7"});
    all("QPushButton", {"data_read", "data_to_device", "data_output_file", "data_input_file",
                        "delect_tableandmap", "marlund", "pushButton_map", "pushButton_graph",
                        "print", "softwareupgrade", "hardwareupgrade", "north", "tuxing_control"});
    all("QTabWidget", {"tabWidget"});
    all("QTableView", {"alltableView", "areatableView", "distableView", "pointtableView",
                       "linetableView", "tracktableView", "fangyangtableView"});
    all("QCheckBox", {"checkBox", "checkBox_mianji", "checkBox_juli", "checkBox_hangdian",
                      "checkBox_hangxian", "checkBox_hangji", "checkBox_fangyang"});
    all("QLabel",
        {"label_tablist", "label_2",  "progressLabel", "totalchecked", "areameter",  "areamu",
         "distmeter",     "LED",      "LED_2",         "label_serial", "label_8",    "label_20",
         "label_11",      "label_10", "label_13",      "label_point",  "label_tiao", "label_15",
         "label_24",      "label_25", "label_26"});
    all("QProgressBar", {"progressBar"});
    all("QGroupBox", {"groupBox"});
    all("QWebEngineView", {"map"});
    all("graphic_widget", {"widget_graphic"});
    all("QFrame", {"frame"});
    all("QMenuBar", {"menuBar"});
}

void test_main_window::objects_have_their_names()
{
    QFETCH(QString, type);
    const auto found = m_window->findChildren<QWidget*>(QLatin1String(QTest::currentDataTag()));
    QCOMPARE(found.size(), 1);
    QVERIFY(found[0]->inherits(type.toLatin1().constData()));
}

void test_main_window::each_tab_has_its_table_and_its_box()
{
    const QStringList tabs{"tab", "tab_2", "tab_3", "tab_4", "tab_5", "tab_6", "tab_7"};
    const QStringList views{"alltableView",  "areatableView",  "distableView",     "pointtableView",
                            "linetableView", "tracktableView", "fangyangtableView"};
    const QStringList boxes{"checkBox",          "checkBox_mianji",   "checkBox_juli",
                            "checkBox_hangdian", "checkBox_hangxian", "checkBox_hangji",
                            "checkBox_fangyang"};
    QCOMPARE(m_ui->tabWidget->count(), 7);
    for (int at = 0; at < 7; ++at) {
        const QWidget* tab = m_ui->tabWidget->widget(at);
        QCOMPARE(tab->objectName(), tabs[at]);
        const auto* view = tab->findChild<QTableView*>();
        QCOMPARE(view->objectName(), views[at]);
        QCOMPARE(tab->findChild<QCheckBox*>()->objectName(), boxes[at]);
        const QStandardItemModel* const models[] = {m_window->model,          m_window->model_area,
                                                    m_window->model_distance, m_window->model_point,
                                                    m_window->model_airline,  m_window->model_track,
                                                    m_window->model_fangyang};
        QCOMPARE(view->model(), models[at]);
    }
}

void test_main_window::rectangles_data()
{
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QRect>("place");
    QString parent;
    const auto row = [&parent](const char* name, int left, int top, int right, int bottom) {
        QTest::newRow(name) << parent << QRect(QPoint(left, top), QPoint(right, bottom));
    };
    parent = "centralWidget";
    row("widget1", 10, 0, 410, 140);
    row("widget2", 420, 0, 1270, 60);
    row("widget3", 10, 160, 410, 460);
    row("widget4", 10, 470, 410, 510);
    row("groupBox", 10, 530, 410, 660);
    row("marlund", 10, 670, 410, 695);
    row("map", 430, 80, 1270, 680);
    row("widget_graphic", 430, 80, 1270, 680);
    parent = "widget1";
    row("data_read", 20, 10, 190, 70);
    row("data_to_device", 20, 80, 190, 140);
    row("data_output_file", 210, 10, 380, 70);
    row("data_input_file", 210, 80, 380, 140);
    parent = "widget3";
    row("delect_tableandmap", 310, 9, 360, 29);
    row("tabWidget", 10, 40, 370, 280);
    parent = "widget4";
    row("progressBar", 70, 10, 330, 29);
    row("progressLabel", 350, 10, 390, 30);
    parent = "widget2";
    row("LED", 260, 20, 279, 39);
    row("LED_2", 290, 20, 309, 39);
    parent = "widget_graphic";
    row("north", 10, 10, 89, 70);
    row("frame", 580, 480, 800, 590);
    row("tuxing_control", 820, 580, 835, 595);
}

void test_main_window::rectangles()
{
    QFETCH(QString, parent);
    QFETCH(QRect, place);
    const auto* widget = m_window->findChild<QWidget*>(QLatin1String(QTest::currentDataTag()));
    QVERIFY(widget != nullptr);
    QCOMPARE(widget->parentWidget()->objectName(), parent);
    QCOMPARE(widget->geometry(), place);
}

void test_main_window::resizing_follows_the_rules()
{
    m_window->resize(1600, 900); // s is 38
    QCOMPARE(m_ui->widget2->width(), 1156);
    QCOMPARE(m_ui->map->size(), QSize(1146, 777));
    QCOMPARE(m_ui->widget_graphic->geometry(), m_ui->map->geometry());
    QCOMPARE(m_ui->frame->pos(), QPoint(885, 656));
    QCOMPARE(m_ui->tuxing_control->pos(), QPoint(1125, 756));
    QCOMPARE(m_ui->widget3->height(), 477);
    QCOMPARE(m_ui->tabWidget->height(), 417);
    for (const char* view : {"alltableView", "areatableView", "distableView", "pointtableView",
                             "linetableView", "tracktableView", "fangyangtableView"})
        QCOMPARE(m_window->findChild<QTableView*>(QLatin1String(view))->height(), 397);
    QCOMPARE(m_ui->widget4->pos(), QPoint(10, 646));
    QCOMPARE(m_ui->groupBox->pos(), QPoint(10, 706));
    QCOMPARE(m_ui->marlund->pos(), QPoint(10, 846));

    const std::pair<QWidget*, QPoint> top_bar[] = {{m_ui->pushButton_map, {48, 10}},
                                                   {m_ui->pushButton_graph, {128, 10}},
                                                   {m_ui->label_8, {256, 0}},
                                                   {m_ui->label_serial, {276, 13}},
                                                   {m_ui->LED, {336, 20}},
                                                   {m_ui->LED_2, {366, 20}},
                                                   {m_ui->label_20, {434, 0}},
                                                   {m_ui->label_11, {482, 13}},
                                                   {m_ui->label_point, {640, 13}},
                                                   {m_ui->label_tiao, {700, 13}},
                                                   {m_ui->label_10, {760, 0}},
                                                   {m_ui->print, {789, 10}},
                                                   {m_ui->label_13, {898, 0}},
                                                   {m_ui->softwareupgrade, {946, 10}},
                                                   {m_ui->hardwareupgrade, {1036, 10}}};
    for (const auto& [widget, place] : top_bar)
        QCOMPARE(widget->pos(), place);

    // A width of which each division leaves a rest, and each is cut off before it
    // is multiplied: s is 1.
    m_window->resize(1310, 900);
    const std::pair<QWidget*, int> cut_off[] = {{m_ui->pushButton_map, 11},
                                                {m_ui->pushButton_graph, 91},
                                                {m_ui->label_8, 182},
                                                {m_ui->label_serial, 202},
                                                {m_ui->LED, 262},
                                                {m_ui->LED_2, 292},
                                                {m_ui->label_20, 323},
                                                {m_ui->label_11, 334},
                                                {m_ui->label_point, 455},
                                                {m_ui->label_tiao, 515},
                                                {m_ui->label_10, 575},
                                                {m_ui->print, 580},
                                                {m_ui->label_13, 676},
                                                {m_ui->softwareupgrade, 687},
                                                {m_ui->hardwareupgrade, 777}};
    for (const auto& [widget, x] : cut_off)
        QCOMPARE(widget->x(), x);
    m_window->resize(1600, 900);

    // Below the limits the last layout stays, in each direction by itself.
    m_window->resize(1295, 700);
    QCOMPARE(m_ui->widget2->width(), 1156);
    QCOMPARE(m_ui->map->size(), QSize(1146, 777));
    QCOMPARE(m_ui->print->pos(), QPoint(789, 10));
    m_window->resize(1296, 724);
    QCOMPARE(m_ui->widget2->width(), 852);
    QCOMPARE(m_ui->map->size(), QSize(842, 777));
    QCOMPARE(m_ui->print->pos(), QPoint(580, 10));
    m_window->resize(1288, 725);
    QCOMPARE(m_ui->map->size(), QSize(842, 602));
    QCOMPARE(m_ui->marlund->pos(), QPoint(10, 671));
    m_window->resize(1288, 724);
}

void test_main_window::image_buttons_have_names_and_pictures()
{
    struct entry
    {
        QPushButton* button;
        const char* image;
        const char* chinese;
        const char* english;
    };
    const entry entries[] = {
        {m_ui->data_read, "readdata", "获取数据", "Read Data"},
        {m_ui->data_output_file, "outputdata", "导出数据", "Export Data"},
        {m_ui->data_input_file, "inputdata", "导入数据", "Import Data"},
        {m_ui->data_to_device, "uploaddata", "上传数据", "Upload Data"},
        {m_ui->print, "print", "打印", "Print"},
        {m_ui->softwareupgrade, "softwareupgrade", "软件更新", "Software Update"},
        {m_ui->hardwareupgrade, "hardwareupgrade", "设备升级", "Firmware Upgrade"}};
    const auto check = [&](bool english) {
        for (const entry& one : entries) {
            const QString name = QLatin1String(one.image);
            const QString normal = english ? "./pic/en/normal/" + name + "_en.png"
                                           : "./pic/ch/normal/" + name + ".png";
            const QString pushed = english ? "./pic/en/push/" + name + "_en_push.png"
                                           : "./pic/ch/push/" + name + "_push.png";
            QCOMPARE(one.button->styleSheet(),
                     "QPushButton{border:none;background-color:transparent;image: url(" + normal +
                         ");}QPushButton:pressed {image: url(" + pushed + ");}");
            for (const QString& file : {normal, pushed})
                QVERIFY2(!QImage(file).isNull(), qPrintable(file));
            QCOMPARE(one.button->accessibleName(),
                     QString::fromUtf8(english ? one.english : one.chinese));
            QVERIFY(!one.button->toolTip().isEmpty());
        }
    };
    check(false);
    const QString chinese_tip = m_ui->data_read->toolTip();
    choose_english();
    check(true);
    QVERIFY(m_ui->data_read->toolTip() != chinese_tip);
    for (const char* file :
         {"1.ico", "north.png", "g_c.png", "g_c_push.png", "marlund.png", "marlund_push.png"})
        QVERIFY2(!QImage("./pic/com/" + QString(file)).isNull(), file);
}

void test_main_window::a_missing_image_leaves_a_blank_button()
{
    const auto is_blank = [this] {
        const QImage shown = m_ui->data_read->grab().toImage();
        QImage empty = shown;
        empty.fill(shown.pixel(0, 0));
        return shown == empty;
    };
    choose_english();
    QVERIFY(!is_blank());
    choose_chinese();
    // Where the translation is and no images are.
    const QString here = QDir::currentPath();
    const QTemporaryDir folder;
    QVERIFY(QFile::copy("./en_CN.qm", folder.filePath("en_CN.qm")));
    const box_watcher watcher;
    QVERIFY(QDir::setCurrent(folder.path()));
    choose_english();
    const bool blank = is_blank();
    QVERIFY(QDir::setCurrent(here));
    QVERIFY(blank);
    QCOMPARE(m_window->language, 1);
    QVERIFY(m_ui->data_read->isVisible() && m_ui->data_read->isEnabled());
    QCOMPARE(watcher.boxes.size(), 0);
}

void test_main_window::view_buttons_show_what_is_in_front()
{
    const auto style = [](const QString& image) {
        return "QPushButton{border:none;background-color:transparent;image: url(" + image + ");}";
    };
    QCOMPARE(m_ui->pushButton_map->styleSheet(), style("./pic/ch/push/map_push.png"));
    QCOMPARE(m_ui->pushButton_graph->styleSheet(), style("./pic/ch/normal/graph.png"));
    const auto in_front = [this](const QWidget* one, const QWidget* other) {
        const QObjectList& order = m_ui->centralWidget->children();
        return order.indexOf(one) > order.indexOf(other);
    };
    QVERIFY(in_front(m_ui->map, m_ui->widget_graphic));

    // While the map is in front, its button changes nothing: it would undo these two.
    m_ui->widget_graphic->raise();
    m_ui->pushButton_map->setStyleSheet({});
    m_ui->pushButton_map->click();
    QCOMPARE(m_window->map_shown, 1);
    QVERIFY(in_front(m_ui->widget_graphic, m_ui->map));
    QCOMPARE(m_ui->pushButton_map->styleSheet(), QString());
    m_ui->map->raise();

    m_ui->pushButton_graph->click();
    QCOMPARE(m_window->map_shown, 0);
    QVERIFY(in_front(m_ui->widget_graphic, m_ui->map));
    QCOMPARE(m_ui->pushButton_map->styleSheet(), style("./pic/ch/normal/map.png"));
    QCOMPARE(m_ui->pushButton_graph->styleSheet(), style("./pic/ch/push/graph_push.png"));

    m_ui->map->raise();
    m_ui->pushButton_graph->setStyleSheet({});
    m_ui->pushButton_graph->click();
    QCOMPARE(m_window->map_shown, 0);
    QVERIFY(in_front(m_ui->map, m_ui->widget_graphic));
    QCOMPARE(m_ui->pushButton_graph->styleSheet(), QString());

    choose_english();
    QCOMPARE(m_ui->pushButton_map->styleSheet(), style("./pic/en/normal/map_en.png"));
    QCOMPARE(m_ui->pushButton_graph->styleSheet(), style("./pic/en/push/graph_en_push.png"));
}

void test_main_window::styles_are_the_designed_ones()
{
    const QString panel =
        "QWidget {background-color: qlineargradient(spread:pad, x1:0, y1:0, x2:0, y2:1,"
        "stop: 0 rgba(240, 240, 240, 255),stop: 1 rgba(220, 220, 220, 255));"
        "border: 1px solid #c7c7c7;";
    for (const QWidget* one : {m_ui->widget1, m_ui->widget2, m_ui->widget3, m_ui->widget4,
                               static_cast<QWidget*>(m_ui->groupBox)})
        QVERIFY2(one->styleSheet().startsWith(panel + "border-radius: "),
                 qPrintable(one->objectName()));
    QVERIFY(m_ui->widget3->styleSheet().contains(
        "QTableView {    border: none;    background-color: white;    gridline-color: #c7c7c7;"
        "    selection-background-color: #a0a0a0;    selection-color: white;}"));
    QVERIFY(m_ui->widget4->styleSheet().contains(
        "QProgressBar {background-color: white;border-radius: 10px;}"
        "QProgressBar::chunk {background-color: #53c9ff;border-radius: 8px;}"));
    const auto image = [](const QString& name) {
        return "QPushButton{border:none;background-color:transparent;image: url(./pic/com/" + name +
               ".png);}";
    };
    const auto pushed = [](const QString& name) {
        return "QPushButton:pressed {image: url(./pic/com/" + name + ".png);}";
    };
    QCOMPARE(m_ui->north->styleSheet(), image("north"));
    QCOMPARE(m_ui->tuxing_control->styleSheet(), image("g_c") + pushed("g_c_push"));
    QCOMPARE(m_ui->marlund->styleSheet(), image("marlund") + pushed("marlund_push"));
}

void test_main_window::signals_stand_in_their_order()
{
    QStringList declared;
    const QMetaObject* meta = m_window->metaObject();
    for (int at = meta->methodOffset(); at < meta->methodCount(); ++at) {
        if (meta->method(at).methodType() == QMetaMethod::Signal)
            declared += meta->method(at).name();
    }
    QCOMPARE(declared, (QStringList{"send_btm_sign_to_threadkey_read_data",
                                    "send_btm_sign_to_threadkey_software_upgrade",
                                    "send_btm_sign_to_threadkey_import_file",
                                    "send_btm_sign_to_threadkey_device",
                                    "send_btm_sign_to_threadkey_marlund",
                                    "send_btm_sign_to_threadkey_delete_tableandmap",
                                    "send_check_sign_to_threadkey_other",
                                    "variableChanged",
                                    "zuobiaochanged",
                                    "relation_table",
                                    "send_check_all",
                                    "send_check_mianji",
                                    "send_check_juli",
                                    "send_check_hangdian",
                                    "send_check_hangxian",
                                    "send_check_hangji",
                                    "send_check_fangyang",
                                    "send_all_table_change",
                                    "send_area_table_change",
                                    "send_dist_table_change",
                                    "send_point_table_change",
                                    "send_line_table_change",
                                    "send_track_table_change",
                                    "send_fangyang_table_change"}));
}

// Language

void test_main_window::language_switch_sets_every_text()
{
    const std::pair<QAction*, QPair<QString, QString>> texts[] = {
        {m_ui->menu_file->menuAction(), {"文件", "File"}},
        {m_ui->action_export_graphics, {"导出图形", "Export Graphics"}},
        {m_ui->action_export, {"导出...", "Export..."}},
        {m_ui->action_quit, {"退出", "Quit"}},
        {m_ui->menu_setting->menuAction(), {"设置", "Setting"}},
        {m_ui->menu_mu->menuAction(), {"亩制", "Mu"}},
        {m_ui->action_small_mu, {"小亩", "Small mu"}},
        {m_ui->action_coordinate, {"坐标设置", "Coordinate Setting"}},
        {m_ui->menu_map->menuAction(), {"地图选项", "Map Options"}},
        {m_ui->action_gaode, {"高德地图", "Gaode Map"}},
        {m_ui->menu_help->menuAction(), {"帮助", "Help"}},
        {m_ui->action_instructions, {"使用说明", "Instructions"}},
        {m_ui->action_about, {"关于Velmo office", "About of Velmo office"}},
        {m_ui->action_download, {"资料下载", "Data of Software Download"}},
        {m_ui->action_software, {"软件更新", "Software Update"}},
    };
    for (const auto& [action, words] : texts)
        QCOMPARE(action->text(), words.first);

    log_capture log;
    choose_english();
    QVERIFY(log.has("切换为英文"));
    QCOMPARE(m_window->language, 1);
    QVERIFY(!m_ui->action_chinese->isChecked());
    for (const auto& [action, words] : texts)
        QCOMPARE(action->text(), words.second);
    QCOMPARE(m_ui->action_google->text(), QStringLiteral("Google Map"));
    QCOMPARE(m_ui->action_sky->text(), QStringLiteral("Sky Map"));
    QCOMPARE(m_ui->label_tablist->text(), QStringLiteral("Data List"));
    QCOMPARE(m_ui->label_serial->text(), QStringLiteral("disconnect"));
    // The menu of the languages speaks each in its own.
    QCOMPARE(m_ui->menu_language->title(), QStringLiteral("Language"));
    QCOMPARE(m_ui->action_chinese->text(), QStringLiteral("简体中文"));
    QCOMPARE(m_ui->action_english->text(), QStringLiteral("English"));

    log.clear();
    choose_chinese();
    QVERIFY(log.has("切换为中文"));
    QCOMPARE(m_window->language, 0);
    for (const auto& [action, words] : texts)
        QCOMPARE(action->text(), words.first);
    QCOMPARE(m_ui->label_tablist->text(), QStringLiteral("数据列表"));
    QCOMPARE(m_ui->label_serial->text(), QStringLiteral("未连接"));
}

void test_main_window::language_back_leaves_two_map_options_in_english()
{
    choose_english();
    choose_chinese();
    QCOMPARE(m_ui->action_gaode->text(), QStringLiteral("高德地图"));
    // Only the switch to English sets these two.
    QCOMPARE(m_ui->action_google->text(), QStringLiteral("Google Map"));
    QCOMPARE(m_ui->action_sky->text(), QStringLiteral("Sky Map"));
}

void test_main_window::language_clicked_twice_stays()
{
    const log_capture log;
    QVERIFY(m_ui->action_chinese->isChecked());
    m_ui->action_chinese->trigger();
    QVERIFY(m_ui->action_chinese->isChecked());
    QVERIFY(!m_ui->action_english->isChecked());
    QVERIFY(!log.has("切换为中文"));
}

void test_main_window::language_without_its_file_stays_in_the_old_one()
{
    const QString here = QDir::currentPath();
    const QTemporaryDir empty;
    QVERIFY(QDir::setCurrent(empty.path()));
    const log_capture log;
    choose_english();
    QVERIFY(QDir::setCurrent(here));
    QVERIFY(log.has("失败"));
    // The new language is ticked while the old one stays in force.
    QVERIFY(m_ui->action_english->isChecked());
    QVERIFY(!m_ui->action_chinese->isChecked());
    QCOMPARE(m_window->language, 0);
    QCOMPARE(m_ui->menu_file->title(), QStringLiteral("文件"));
    m_ui->action_chinese->trigger();
    QVERIFY(m_ui->action_chinese->isChecked());
}

void test_main_window::headers_follow_at_the_next_rebuild()
{
    deliver(sample_lists::one_of_each());
    const auto headers = [](const QStandardItemModel* model) {
        QStringList all;
        for (int column = 0; column < model->columnCount(); ++column)
            all += model->headerData(column, Qt::Horizontal).toString();
        return all;
    };
    const QStringList chinese{"", "序号", "数据名称", "采集时间", "类型"};
    const QStringList english{"", "ID", "Data Name", "Acquisition Time", "Type"};
    QCOMPARE(headers(m_window->model), chinese);
    QCOMPARE(headers(m_window->model_track), chinese.first(4));
    const auto words = [this] {
        QStringList all;
        for (int row = 0; row < m_window->model->rowCount(); ++row)
            all += m_window->model->item(row, 4)->text();
        return all;
    };
    const QStringList chinese_words{"面积", "距离", "航点", "航线", "航迹", "放样", "自制", ""};
    QCOMPARE(words(), chinese_words);
    choose_english();
    QCOMPARE(headers(m_window->model), chinese);
    QCOMPARE(words(), chinese_words);
    m_window->rebuild_tables();
    QCOMPARE(headers(m_window->model), english);
    QCOMPARE(headers(m_window->model_track), english.first(4));
    QCOMPARE(words(),
             (QStringList{"area", "distance", "point", "airline", "track", "example", "self", ""}));
}

void test_main_window::translators_of_earlier_switches_stay()
{
    choose_english();
    choose_chinese();
    const auto installed = m_window->findChildren<QTranslator*>();
    QVERIFY(installed.size() >= 2);
    for (QTranslator* one : installed) {
        QVERIFY(QCoreApplication::removeTranslator(one)); // only what is installed goes
        QVERIFY(QCoreApplication::installTranslator(one));
    }
}

void test_main_window::qt_says_its_own_words_in_the_language()
{
    // The words under which a file dialog's and a box's buttons are made.
    const auto save = [] { return QCoreApplication::translate("QFileDialog", "&Save"); };
    const auto cancel = [] {
        return QDialogButtonBox().addButton(QDialogButtonBox::Cancel)->text();
    };
    QCOMPARE(save(), QStringLiteral("保存(&S)"));
    QCOMPARE(cancel(), QStringLiteral("取消"));
    choose_english();
    QCOMPARE(save(), QStringLiteral("&Save"));
    QCOMPARE(cancel(), QStringLiteral("Cancel"));
    choose_chinese();
    QCOMPARE(save(), QStringLiteral("保存(&S)"));
    QCOMPARE(cancel(), QStringLiteral("取消"));
}

// What comes back

void test_main_window::lamps_share_the_text()
{
    m_window->set_LED(true);
    QCOMPARE(m_ui->label_serial->text(), QStringLiteral("已连接"));
    QCOMPARE(m_ui->LED->styleSheet(),
             QStringLiteral("background-color: qradialgradient(spread:pad, cx:0.5, cy:0.5, "
                            "radius:0.5, fx:0.5, fy:0.5, stop:0 rgba(0, 229, 0, 255), stop:1 "
                            "rgba(220, 220, 220, 255));border-radius:10px;"));
    m_window->set_LED_2(false);
    QCOMPARE(m_ui->label_serial->text(), QStringLiteral("未连接"));
    QVERIFY(m_ui->LED->styleSheet().contains("rgba(0, 229, 0, 255)"));
    QCOMPARE(m_ui->LED_2->styleSheet(),
             QStringLiteral("background-color: qradialgradient(spread:pad, cx:0.5, cy:0.5, "
                            "radius:0.5, fx:0.5, fy:0.5, stop:0 rgba(255, 0, 0, 255), stop:1 "
                            "rgba(220, 220, 220, 255));border-radius:10px;"));
    choose_english();
    m_window->set_LED_2(true);
    QCOMPARE(m_ui->label_serial->text(), QStringLiteral("connect"));
    m_window->set_LED(false);
    m_window->set_LED_2(false);
    QCOMPARE(m_ui->label_serial->text(), QStringLiteral("disconnect"));
}

void test_main_window::progress_and_read_button()
{
    emit m_objects.key->key_set_progressbar(42);
    QCOMPARE(m_ui->progressBar->value(), 42);
    QCOMPARE(m_ui->progressLabel->text(), QStringLiteral("42%"));
    m_window->set_read_button(false);
    QVERIFY(!m_ui->data_read->isEnabled());
    m_window->set_read_button(true);
    QVERIFY(m_ui->data_read->isEnabled());
}

void test_main_window::information_fills_both_panels()
{
    QCOMPARE(m_window->timer->interval(), 500);
    QVERIFY(m_window->timer->isActive());
    m_window->timer->stop();
    emit m_objects.key->information("3", "1234", "1.85", "99.5", "120点", "7条",
                                    {{"1,2", 4}, {"3,4", 6}});
    QCOMPARE(m_ui->totalchecked->text(), QStringLiteral("3"));
    QCOMPARE(m_ui->label_15->text(), QStringLiteral("3"));
    QCOMPARE(m_ui->areameter->text(), QStringLiteral("1234"));
    QCOMPARE(m_ui->label_24->text(), QStringLiteral("1234"));
    QCOMPARE(m_ui->areamu->text(), QStringLiteral("1.85"));
    QCOMPARE(m_ui->label_25->text(), QStringLiteral("1.85"));
    QCOMPARE(m_ui->distmeter->text(), QStringLiteral("99.5"));
    QCOMPARE(m_ui->label_26->text(), QStringLiteral("99.5"));
    QCOMPARE(m_ui->label_point->text(), QStringLiteral("120点"));
    QCOMPARE(m_ui->label_tiao->text(), QStringLiteral("7条"));
    m_window->timer->start();
}

void test_main_window::drawing_gets_the_ticked_measurements()
{
    m_window->timer->stop();
    const graphic_widget& drawing = *m_ui->widget_graphic;
    emit m_objects.key->information("2", "0", "0", "0", "0点", "0条", {{"1,2", 4}, {"3,4", 6}});
    QCOMPARE(drawing.draw_data, (QStringList{"1,2", "3,4"}));
    QCOMPARE(drawing.draw_rows, (pairs{{0, 4}, {1, 6}}));
    QCOMPARE(drawing.frame_shown, 1);

    // The frame's state travels with a measurement only.
    m_ui->tuxing_control->click();
    emit m_objects.key->information("0", "0", "0", "0", "0点", "0条", {});
    QCOMPARE(drawing.draw_data, QStringList());
    QCOMPARE(drawing.draw_rows, pairs());
    QCOMPARE(drawing.frame_shown, 1);
    emit m_objects.key->information("1", "0", "0", "0", "0点", "0条", {{"1,2", 0}});
    QCOMPARE(drawing.frame_shown, 0);
    m_ui->tuxing_control->click();
    m_window->timer->start();
}

/// Counts the paint events of a whole widget. A label that lies on it repaints its
/// own place alone.
class paint_counter : public QObject
{
public:
    explicit paint_counter(QWidget* watched) { watched->installEventFilter(this); }

    int paints = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint &&
            static_cast<QPaintEvent*>(event)->rect() == static_cast<QWidget*>(watched)->rect())
            ++paints;
        return false;
    }
};

void test_main_window::drawing_is_painted_anew_at_each_pass()
{
    m_window->timer->stop();
    m_ui->pushButton_graph->click();
    paint_counter counter(m_ui->widget_graphic);
    QTRY_VERIFY(counter.paints > 0); // it has come to the front
    // Paints what was asked for until now; the map below asks as well, whenever it likes.
    const auto paint = [this] {
        QCoreApplication::sendPostedEvents(m_window, QEvent::UpdateRequest);
    };
    for (int pass = 0; pass < 2; ++pass) {
        paint();
        counter.paints = 0;
        // With the texts of before, so that only the pass itself asks.
        emit m_objects.key->information(m_ui->totalchecked->text(), m_ui->areameter->text(),
                                        m_ui->areamu->text(), m_ui->distmeter->text(),
                                        m_ui->label_point->text(), m_ui->label_tiao->text(), {});
        paint();
        QVERIFY(counter.paints > 0);
    }
    m_window->timer->start();
}

void test_main_window::the_timer_asks_for_the_totals_of_the_window()
{
    deliver(sample_lists::one_of_each());
    QSignalSpy asked(m_window, &MainWindow::send_check_sign_to_threadkey_other);
    QVERIFY(asked.wait());
    QCOMPARE(asked[0][0].value<QStandardItemModel*>(), m_window->model);
    QCOMPARE(asked[0][1].value<QList<measuringData>>(), m_window->table_list);
    QCOMPARE(asked[0][2].toStringList(), m_window->data_msg);
    // It goes on, and it follows a rebuild.
    deliver(sample_lists::named({"a"}));
    asked.clear();
    QVERIFY(asked.wait());
    QCOMPARE(asked[0][0].value<QStandardItemModel*>(), m_window->model);
    QCOMPARE(asked[0][1].value<QList<measuringData>>().size(), m_window->table_list.size());
}

void test_main_window::units_of_the_panels_are_fixed()
{
    // The sums are in square metres, mu and metres, whatever units the
    // instrument had chosen.
    sample_lists lists = sample_lists::of_methods({"面积"});
    lists.table_list[0].md = "3";
    lists.table_list[0].jd = "5";
    deliver(lists);
    m_ui->checkBox->setChecked(true);
    QTRY_COMPARE(m_ui->totalchecked->text(), QStringLiteral("1"));
    QCOMPARE(m_ui->areameter->text(), QStringLiteral("1000"));
    QCOMPARE(m_ui->areamu->text(), QStringLiteral("1.5"));
    QCOMPARE(m_ui->distmeter->text(), QStringLiteral("130.5"));
    for (const QLabel* unit : {m_ui->label_area_unit, m_ui->label_18})
        QCOMPARE(unit->text(), QStringLiteral("平方米"));
    for (const QLabel* unit : {m_ui->label_mu_unit, m_ui->label_19})
        QCOMPARE(unit->text(), QStringLiteral("亩"));
    for (const QLabel* unit : {m_ui->label_dist_unit, m_ui->label_22})
        QCOMPARE(unit->text(), QStringLiteral("米"));
}

void test_main_window::long_texts_fit_their_places()
{
    const auto fits = [](const QLabel* label) {
        return QFontMetrics(label->font()).horizontalAdvance(label->text()) <= label->width();
    };
    m_window->timer->stop();
    choose_english();
    emit m_objects.key->information("20100", "225202660", "1.23457e+06", "1.23457e+06",
                                    "380123 pts", "20100 rec.", {});
    for (const QLabel* label :
         {m_ui->totalchecked, m_ui->label_15, m_ui->areameter, m_ui->label_24, m_ui->areamu,
          m_ui->label_25, m_ui->distmeter, m_ui->label_26, m_ui->label_point, m_ui->label_tiao})
        QVERIFY2(fits(label), qPrintable(label->objectName()));
    QCOMPARE(m_ui->label_serial->text(), QStringLiteral("disconnect"));
    QVERIFY(fits(m_ui->label_serial));
    for (const QLabel* label : m_window->findChildren<QLabel*>())
        QVERIFY2(fits(label), qPrintable(label->objectName() + ": " + label->text()));
    // What fits is shown at its full size.
    emit m_objects.key->information("1", "0", "0", "0", "0 pts", "0 rec.", {});
    QCOMPARE(m_ui->label_point->font().pixelSize(), 13);
    m_window->timer->start();
}

QVariant test_main_window::answer_of_page(const QString& script) const
{
    QVariant answer;
    bool answered = false;
    m_ui->map->page()->runJavaScript(script, [&](const QVariant& value) {
        answer = value;
        answered = true;
    });
    if (!QTest::qWaitFor([&] { return answered; }, 30'000))
        return "the page does not answer";
    return answer;
}

/// Puts a page in place of the map's whose functions note their calls: those of
/// the map's own pages cannot be replaced.
page_recorder::page_recorder(QWebEngineView* view) : m_view(view), m_own(view->page())
{
    m_own->setParent(view->window()); // the view deletes a page that is its child
    auto* recorder = new QWebEnginePage(view);
    bool loaded = false;
    QObject::connect(recorder, &QWebEnginePage::loadFinished, recorder, [&] { loaded = true; });
    recorder->setHtml("<script>var calls = [];"
                      "var clearMap = () => calls.push('clear');"
                      "var changelanguage = (n) => calls.push('language ' + n);"
                      "var beginLocatedCityPacket = (id, kind) => calls.push('begin ' + kind);"
                      "var appendLocatedCityPacket = (id, all) => calls.push('append');"
                      "var finishLocatedCityPacket = (id) => calls.push('finish');"
                      "var deleteDrawnPolygons = () => calls.push('delete');</script>");
    view->setPage(recorder);
    ready = QTest::qWaitFor([&] { return loaded; }, 30'000);
}

page_recorder::~page_recorder()
{
    m_view->setPage(m_own);
    m_own->setParent(m_view);
}

QString test_main_window::calls_of_page() const
{
    return answer_of_page("window.calls.splice(0).join(' | ')").toString();
}

void test_main_window::the_map_view_is_set_up()
{
    const QWebEngineSettings* settings = m_ui->map->settings();
    for (const QWebEngineSettings::WebAttribute attribute :
         {QWebEngineSettings::JavascriptEnabled,
          QWebEngineSettings::LocalContentCanAccessRemoteUrls,
          QWebEngineSettings::LocalContentCanAccessFileUrls, QWebEngineSettings::AutoLoadImages,
          QWebEngineSettings::PluginsEnabled, QWebEngineSettings::AllowRunningInsecureContent})
        QVERIFY2(settings->testAttribute(attribute), qPrintable(QString::number(attribute)));
    QCOMPARE(m_window->web_channel->parent(), m_window);
    QCOMPARE(m_ui->map->page()->webChannel(), m_window->web_channel);
    const QHash<QString, QObject*> offered = m_window->web_channel->registeredObjects();
    QCOMPARE(offered.keys(), QStringList{"bridge_name"});
    const QObject* one = offered.value("bridge_name");
    QVERIFY(qobject_cast<const bridge*>(one) != nullptr);
    QCOMPARE(one->parent(), nullptr);
    // It offers nothing.
    QCOMPARE(bridge::staticMetaObject.methodCount(), QObject::staticMetaObject.methodCount());
    QCOMPARE(bridge::staticMetaObject.propertyCount(), QObject::staticMetaObject.propertyCount());
}

void test_main_window::a_page_that_is_not_there_shows_nothing()
{
    // The page of the start has come to its end before.
    QTRY_COMPARE_WITH_TIMEOUT(answer_of_page("document.readyState + ' ' + typeof VelmoMap"),
                              QVariant("complete object"), 30'000);
    QTRY_VERIFY_WITH_TIMEOUT(!m_ui->map->page()->isLoading(), 30'000);
    box_watcher watcher;
    const QString here = QDir::currentPath();
    const QTemporaryDir empty;
    QSignalSpy loaded(m_ui->map->page(), &QWebEnginePage::loadFinished);
    QVERIFY(QDir::setCurrent(empty.path()));
    m_ui->action_google->trigger();
    const bool ended = QTest::qWaitFor([&] { return loaded.size() == 2; }, 30'000);
    QVERIFY(QDir::setCurrent(here));
    QVERIFY(ended);
    QCOMPARE(loaded[0][0].toBool(), false); // the page
    QCOMPARE(loaded[1][0].toBool(), true);  // nothing in its place
    QCOMPARE(answer_of_page("document.documentElement.innerText").toString(), QString());
    QCOMPARE(answer_of_page("typeof VelmoMap").toString(), QString("undefined"));
    QCOMPARE(watcher.boxes.size(), 0);
    // The way back is open.
    m_ui->action_gaode->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 3, 30'000);
    QCOMPARE(loaded[2][0].toBool(), true);
    QCOMPARE(answer_of_page("typeof VelmoMap").toString(), QString("object"));
}

void test_main_window::scripts_reach_the_page_in_order()
{
    const page_recorder recorder(m_ui->map);
    QVERIFY(recorder.ready);
    deliver(sample_lists::of_methods({"面积", "航点"}));
    const QString area = "begin 1 | append | finish";
    const QString waypoint = "begin 3 | append | finish";

    QStringList scripts_lengths;
    const QMetaObject::Connection counted =
        connect(m_objects.key, &thread_key::draw_map_signal, this,
                [&](const QString& script) { scripts_lengths += QString::number(script.size()); });
    const log_capture log;
    m_ui->checkBox->setChecked(true);
    disconnect(counted);
    QCOMPARE(scripts_lengths.size(), 6);
    QCOMPARE(calls_of_page(), "clear | " + area + " | " + waypoint);
    QStringList lengths;
    for (const QString& line : log.texts()) {
        if (line.startsWith("map script length: "))
            lengths += line.section(' ', -1);
    }
    QCOMPARE(lengths, scripts_lengths);
    m_ui->checkBox->setChecked(false); // erasing is dropped: only clearing removes figures
    QCOMPARE(calls_of_page(), QStringLiteral("clear"));

    // The boxes of the kinds draw all measurements and clear nothing.
    for (QCheckBox* box :
         {m_ui->checkBox_mianji, m_ui->checkBox_juli, m_ui->checkBox_hangdian,
          m_ui->checkBox_hangxian, m_ui->checkBox_hangji, m_ui->checkBox_fangyang}) {
        box->setChecked(true);
        const QString calls = calls_of_page();
        QVERIFY2(!calls.contains("clear"), qPrintable(box->objectName() + ": " + calls));
        QCOMPARE(calls.count("finish"), 2);
        box->setChecked(false);
        QCOMPARE(calls_of_page(), QString());
    }

    // A change of a row clears first, in each of the seven tables.
    m_window->model->setData(m_window->model->index(0, 0), true);
    m_window->all_table_change(true);
    QCOMPARE(calls_of_page(), "clear | " + area);
    m_window->area_table_change(true);
    QCOMPARE(calls_of_page(), "clear | " + area);
    for (auto slot : {&MainWindow::dist_table_change, &MainWindow::point_table_change,
                      &MainWindow::line_table_change, &MainWindow::track_table_change,
                      &MainWindow::fangyang_table_change}) {
        (m_window->*slot)(true);
        QCOMPARE(calls_of_page(), QStringLiteral("clear"));
    }

    // A rebuild leaves the map as it is.
    m_window->rebuild_tables();
    QCOMPARE(calls_of_page(), QString());
}

void test_main_window::language_reaches_the_page()
{
    {
        const page_recorder recorder(m_ui->map);
        QVERIFY(recorder.ready);
        choose_english();
        QCOMPARE(calls_of_page(), QStringLiteral("language 1"));
        choose_chinese();
        QCOMPARE(calls_of_page(), QStringLiteral("language 0"));
    }
    // A page loaded under English is told so.
    choose_english();
    m_ui->action_sky->trigger();
    QTRY_COMPARE_WITH_TIMEOUT(answer_of_page("document.documentElement.lang").toString(),
                              QStringLiteral("en"), 30'000);
    m_ui->action_gaode->trigger();
    QTRY_VERIFY_WITH_TIMEOUT(m_ui->map->url().path().endsWith("/index.html"), 30'000);
}

void test_main_window::map_options_work_like_radio_buttons()
{
    QTRY_VERIFY_WITH_TIMEOUT(m_ui->map->url().path().endsWith("/index.html"), 30'000);
    QSignalSpy loads(m_ui->map, &QWebEngineView::loadStarted);
    m_ui->action_gaode->trigger(); // the one in force: nothing is loaded
    QVERIFY(m_ui->action_gaode->isChecked());
    QCOMPARE(loads.size(), 0);

    log_capture log;
    const std::pair<QAction*, QString> options[] = {{m_ui->action_google, "/index_google.html"},
                                                    {m_ui->action_sky, "/index_tiandi.html"},
                                                    {m_ui->action_gaode, "/index.html"}};
    for (const auto& [chosen, page] : options) {
        log.clear();
        chosen->trigger();
        for (const QAction* option : {m_ui->action_gaode, m_ui->action_google, m_ui->action_sky})
            QCOMPARE(option->isChecked(), option == chosen);
        QTRY_VERIFY_WITH_TIMEOUT(m_ui->map->url().path() == QDir::currentPath() + page, 30'000);
        QTRY_COMPARE_WITH_TIMEOUT(answer_of_page("typeof finishLocatedCityPacket + ' ' + typeof "
                                                 "window.bridge")
                                      .toString(),
                                  QStringLiteral("function object"), 30'000);
        QCOMPARE(log.has("Loading URL:"), chosen == m_ui->action_google);
        QCOMPARE(log.has("Loading URL: QUrl(\"" + m_ui->map->url().toString() + "\")"),
                 chosen == m_ui->action_google);
    }
}

void test_main_window::menus_stand_as_designed()
{
    const auto names = [](const QList<QAction*>& actions) {
        QStringList all;
        for (const QAction* action : actions)
            all += action->isSeparator() ? QStringLiteral("-") : action->text();
        return all;
    };
    QCOMPARE(names(m_ui->menuBar->actions()), (QStringList{"文件", "设置", "帮助", "Language"}));
    QCOMPARE(names(m_ui->menu_file->actions()), (QStringList{"导出图形", "导出...", "-", "退出"}));
    QCOMPARE(names(m_ui->menu_setting->actions()), (QStringList{"亩制", "坐标设置", "地图选项"}));
    QCOMPARE(m_ui->menu_mu->actions(), QList<QAction*>{m_ui->action_small_mu});
    QCOMPARE(m_ui->menu_map->actions(),
             (QList<QAction*>{m_ui->action_gaode, m_ui->action_google, m_ui->action_sky}));
    QCOMPARE(names(m_ui->menu_help->actions()),
             (QStringList{"使用说明", "关于Velmo office", "资料下载", "软件更新"}));
    QCOMPARE(names(m_ui->menu_language->actions()), (QStringList{"简体中文", "English"}));

    box_watcher watcher;
    m_ui->action_small_mu->trigger();
    QCOMPARE(watcher.boxes.size(), 0);
    // Connected to nothing: there is nothing to take away.
    QVERIFY(!QObject::disconnect(m_ui->action_small_mu, nullptr, m_window, nullptr));
    QSignalSpy banner(m_window, &MainWindow::send_btm_sign_to_threadkey_marlund);
    QDesktopServices::setUrlHandler("https", this, "swallow_url");
    m_ui->marlund->click();
    QDesktopServices::unsetUrlHandler("https");
    QCOMPARE(banner.size(), 1);
    QCOMPARE(m_opened_urls.size(), 1);
}

void test_main_window::frame_toggles()
{
    m_ui->pushButton_graph->click();
    QVERIFY(m_ui->frame->isVisible());
    m_ui->tuxing_control->click();
    QCOMPARE(m_window->frame_shown, 0);
    QVERIFY(!m_ui->frame->isVisible());
    m_ui->tuxing_control->click();
    QCOMPARE(m_window->frame_shown, 1);
    QVERIFY(m_ui->frame->isVisible());
}

void test_main_window::close_asks_first_data()
{
    QTest::addColumn<bool>("english");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("chinese") << false << "退出确认"
                             << "您确定要退出程序吗？";
    QTest::newRow("english") << true << "Quit"
                             << "Are you sure you want to quit the program?";
}

void test_main_window::close_asks_first()
{
    QFETCH(bool, english);
    QFETCH(QString, title);
    QFETCH(QString, text);
    if (english)
        choose_english();
    box_watcher watcher; // answers with the default, which is No
    QVERIFY(!m_window->close());
    QVERIFY(m_window->isVisible());
    m_ui->action_quit->trigger();
    QVERIFY(m_window->isVisible());
    QCOMPARE(watcher.boxes.size(), 2);
    for (const box_watcher::seen_box& box : std::as_const(watcher.boxes)) {
        QCOMPARE(box.icon, QMessageBox::Question);
        QCOMPARE(box.title, title);
        QCOMPARE(box.text, text);
        QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);
        QCOMPARE(box.default_button, QMessageBox::No);
    }
}

void test_main_window::help_boxes()
{
    box_watcher watcher;
    m_ui->action_about->trigger();
    m_ui->action_download->trigger();
    m_ui->action_instructions->trigger();
    QCOMPARE(watcher.boxes.size(), 3);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::NoIcon);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("关于 Velmo"));
    QVERIFY(watcher.boxes[0].text.startsWith("软件名称：Velmo\n软件版本：V3.2.3\nMarlund"));
    QCOMPARE(watcher.boxes[1].title, QStringLiteral("资料下载"));
    QCOMPARE(watcher.boxes[1].text, QStringLiteral("功能等待更新"));
    QCOMPARE(watcher.boxes[2].title, QStringLiteral("使用说明"));
    const QStringList help{
        "1、主要流程：连接设备>>获取数据>>选择数据>>地图、图形显示>>数据、图形导出",
        "2、获取数据：使用数据线将设备与电脑连接，点击获取数据按钮，软件会自动识别设备，并获取设备"
        "中的数据",
        "3、选择数据：可以直接勾选数据，也可以在数据列表中双击数据条目选择数据，还可以勾选全选按钮"
        "选中所有数据",
        "4、删除数据：将选中的数据全部删除",
        "5、地图显示：地图上会将在数据列表中勾选的数据以图形的方式展现在地图上，并将定位到其地图中"
        "心位置，地图必须在有网络的情况下使用",
        "6、图形显示：在画板上将在数据列表中勾选的数据画成对应的图形（上北下南），每一条数据的图形"
        "在起始点位置会有一个小圆圈，并且旁边会有一个数值索引，用于图形导出时与导出信息对应",
        "7、数据导出：导出的内容有经纬度，海拔，距离，面积和采集时间等信息，文件格式为可以为CSV、DX"
        "F、KML、GPX，导出文件可以保存到一个文件或者进行文件条目单独保存为多个文件，用户可根据实际"
        "需要进行选择导出文件保存方式。导出文件以其对应的采集时间命名",
        "8、数据导入:"
        "导出的数据文件进行再次导入到软件进行查看测量距离，面积、测量图形和采集时间等信息",
        "9、图形导出：以截图方式保存显示的地图或者图形",
        "10、坐标格式：用于设置导出数据的格式，默认格式是“度”",
        "11、关于：本软件信息",
    };
    QCOMPARE(watcher.boxes[2].text, help.join('\n'));
    for (const box_watcher::seen_box& box : std::as_const(watcher.boxes))
        QCOMPARE(box.buttons, QMessageBox::Ok);
}

void test_main_window::help_boxes_in_english()
{
    choose_english();
    box_watcher watcher;
    m_ui->action_about->trigger();
    m_ui->action_download->trigger();
    QCOMPARE(watcher.boxes.size(), 2);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("About Velmo"));
    QVERIFY(watcher.boxes[0].text.contains(":V3.2.3\nMarlund") ||
            watcher.boxes[0].text.contains(": V3.2.3\nMarlund"));
    QVERIFY(!watcher.boxes[0].text.contains("软件"));
    QCOMPARE(watcher.boxes[1].title, QStringLiteral("Data of Software Download"));
    QCOMPARE(watcher.boxes[1].text, QStringLiteral("This function awaits an update"));
}

void test_main_window::the_store_that_is_handed_in_is_kept()
{
    JsonFileManager* const own = m_window->js;
    JsonFileManager other;
    m_window->setmodeflag(2, &other, 5);
    QCOMPARE(m_window->mode_flag, 2);
    QCOMPARE(m_window->js, &other);
    QCOMPARE(m_window->sys_index, 5);
    m_window->setmodeflag(0, own, 0);
    QCOMPARE(m_window->js, own);
}

void test_main_window::coordinate_settings_open_and_come_back()
{
    choose_english();
    m_window->setmodeflag(4, m_window->js, 2);
    const log_capture log;
    QSignalSpy filled(m_window, &MainWindow::zuobiaochanged);
    m_ui->action_coordinate->trigger();
    zuobiaoForm_homepage* form = m_window->coordinate_form;
    QVERIFY(form != nullptr);
    QCOMPARE(QApplication::activeModalWidget(), form);
    QCOMPARE(form->windowModality(), Qt::ApplicationModal);
    QCOMPARE(form->windowTitle(), QStringLiteral("Coordinate Setting"));
    QVERIFY(log.has("!!!!! 4 2"));
    QCOMPARE(filled.size(), 1);
    QCOMPARE(filled[0][0].toInt(), 4);
    QCOMPARE(filled[0][1].value<JsonFileManager*>(), m_window->js);
    QCOMPARE(filled[0][2].toInt(), 2);
    QCOMPARE(filled[0][3].toInt(), 1);
    auto* systems = form->findChild<QComboBox*>("comboBox_3");
    QCOMPARE(systems->currentIndex(), 2);

    systems->setCurrentIndex(1);
    form->findChild<QComboBox*>("comboBox")->setCurrentIndex(0);
    form->findChild<QPushButton*>("pushButton")->click();
    QVERIFY(!form->isVisible());
    QCOMPARE(m_window->mode_flag, 1);
    QCOMPARE(m_window->sys_index, 1);
    m_window->setmodeflag(0, m_window->js, 0);
}

void test_main_window::coordinate_settings_end_before_they_open_again()
{
    m_ui->action_coordinate->trigger();
    const QPointer<zuobiaoForm_homepage> first = m_window->coordinate_form;
    QVERIFY(first != nullptr);
    {
        const log_capture log;
        m_window->show_coordinate_settings();
        QVERIFY(first.isNull());
        QVERIFY(log.has("坐标窗口已销毁"));
    }
    QVERIFY(m_window->coordinate_form != nullptr);
    QVERIFY(m_window->coordinate_form->isVisible());
    delete m_window->coordinate_form;
    QVERIFY(m_window->coordinate_form == nullptr);
}

void test_main_window::buttons_emit_their_signals()
{
    deliver(sample_lists::one_of_each());
    // The worker's own answer to a read is not looked at here.
    QObject::disconnect(m_window, &MainWindow::send_btm_sign_to_threadkey_read_data, nullptr,
                        nullptr);
    QSignalSpy read(m_window, &MainWindow::send_btm_sign_to_threadkey_read_data);
    m_ui->data_read->click();
    QObject::connect(m_window, &MainWindow::send_btm_sign_to_threadkey_read_data, m_objects.key,
                     &thread_key::recv_read_data_sign_from_velmo);
    QCOMPARE(read.size(), 1);
    QCOMPARE(read[0][0].value<QList<measuringData>>(), m_window->table_list);
    QCOMPARE(read[0][1].toStringList(), m_window->data_msg);
    QCOMPARE(read[0][2].toStringList(), m_window->data_msg_altitude);
    QCOMPARE(read[0][3].value<QList<QList<point_msg>>>(), m_window->point_msg_all);

    box_watcher watcher;
    QSignalSpy upload(m_window, &MainWindow::send_btm_sign_to_threadkey_device);
    m_ui->data_to_device->click();
    QCOMPARE(upload.size(), 1);
    QCOMPARE(upload[0][0].value<QStandardItemModel*>(), m_window->model);
    QCOMPARE(upload[0][1].value<QList<measuringData>>(), m_window->table_list);
    QCOMPARE(upload[0][2].toStringList(), m_window->data_msg_altitude);
    // Nothing is connected here, which the upload says and nobody else.
    QCOMPARE(watcher.texts(), QStringList{"串口未连接"});
    QVERIFY(!m_ui->data_to_device->toolTip().contains("尚未提供"));

    QSignalSpy imported(m_window, &MainWindow::send_btm_sign_to_threadkey_import_file);
    m_window->setmodeflag(4, m_window->js, 2);
    m_window->recv_input_signal("/tmp/field.kml");
    m_window->setmodeflag(0, m_window->js, 0);
    QCOMPARE(imported.size(), 1);
    QCOMPARE(imported[0][0].toString(), QStringLiteral("/tmp/field.kml"));
    QCOMPARE(imported[0][1].toInt(), 4);
    QCOMPARE(imported[0][2].value<JsonFileManager*>(), m_window->js);
    QCOMPARE(imported[0][3].toInt(), 2);
}

// Dialogs

void test_main_window::export_dialog_gets_what_is_shown()
{
    deliver(sample_lists::one_of_each());
    m_window->setmodeflag(3, m_window->js, 1);
    const auto opened = [this] {
        const auto dialogs = m_window->findChildren<outputWindow*>();
        return dialogs.size() == 1 ? dialogs[0] : nullptr;
    };
    for (const bool english : {false, true}) {
        if (english)
            choose_english();
        (english ? m_ui->pushButton_map : m_ui->pushButton_graph)->click();
        if (english)
            m_ui->action_export->trigger();
        else
            m_ui->data_output_file->click();
        QPointer<outputWindow> dialog = opened();
        QVERIFY(dialog != nullptr);
        QVERIFY(dialog->isVisible());
        QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
        QCOMPARE(dialog->pos() + dialog->rect().center(), m_window->geometry().center());
        QCOMPARE(dialog->windowTitle(), english ? QStringLiteral("Export As") : "导出为");
        QCOMPARE(dialog->language, english ? 1 : 0);
        QCOMPARE(dialog->findChild<QComboBox*>("export_format")->count(), 9);
        QCOMPARE(dialog->parentView, m_ui->map);
        QCOMPARE(dialog->parentwidget, m_ui->widget_graphic);
        QCOMPARE(dialog->picture_flag, english ? 1 : 0); // what is in front
        QCOMPARE(dialog->model.data(), m_window->model);
        QCOMPARE(dialog->js, m_window->js);
        QCOMPARE(dialog->table_list, m_window->table_list);
        QCOMPARE(dialog->data_msg_altitude, m_window->data_msg_altitude);
        QCOMPARE(dialog->point_msg_all, m_window->point_msg_all);
        QCOMPARE(dialog->mode, 3);
        QCOMPARE(dialog->sys_index, 1);
        QCOMPARE(dialog->system_name, m_window->js->systems[1].name);
        QCOMPARE(dialog->cz, m_window->js->systems[1].changzhou);
        // The next one is another; this one ends when it is closed.
        dialog->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(dialog == nullptr);
    }
    m_window->setmodeflag(0, m_window->js, 0);
}

void test_main_window::export_dialog_is_joined_to_the_hub()
{
    m_ui->data_output_file->click();
    auto* dialog = m_window->findChild<outputWindow*>();
    QVERIFY(dialog != nullptr);
    using out = outputWindow;
    const auto expect = [&](auto signal, int command) {
        const QSignalSpy sent(m_objects.key, &thread_key::send_cmd_to_file_export_thread);
        emit(dialog->*signal)("/tmp/none", 3, 1.0, 2.0, 0.5, {}, nullptr, {}, {}, {});
        QCOMPARE(sent.size(), 1);
        QCOMPARE(sent[0][0].toInt(), command);
    };
    box_watcher watcher; // nothing is ticked
    expect(&out::send_btm_sign_to_threadkey_kml, 1);
    expect(&out::send_btm_sign_to_threadkey_one_csv, 3);
    expect(&out::send_btm_sign_to_threadkey_more_csv, 4);
    expect(&out::send_btm_sign_to_threadkey_one_dxf, 5);
    expect(&out::send_btm_sign_to_threadkey_more_dxf, 6);
    expect(&out::send_btm_sign_to_threadkey_one_gpx, 7);
    expect(&out::send_btm_sign_to_threadkey_more_gpx, 8);
    QCOMPARE(watcher.texts(), QStringList(7, "未勾选数据"));
    const QSignalSpy sent(m_objects.key, &thread_key::send_cmd_to_file_export_thread);
    const QSignalSpy flags(m_objects.key, &thread_key::send_cmd_to_file_export_thread_check_flag);
    emit dialog->send_btm_sign_to_threadkey_excel({1}, "/tmp/none", 3, 1.0, 2.0, 0.5, {}, nullptr,
                                                  {}, {}, {}, "system");
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent[0][0].toInt(), 9);
    QCOMPARE(flags.size(), 1);
    const QSignalSpy picture(m_objects.key, &thread_key::send_cmd_to_picture_export_thread);
    const QTemporaryDir folder;
    const QString path = folder.filePath("drawing.png");
    emit dialog->send_btm_sign_to_threadkey_picture(path, m_ui->map, m_ui->widget_graphic, 0);
    QCOMPARE(picture.size(), 1);
    QCOMPARE(watcher.texts().constLast(), QStringLiteral("图片文件导出成功"));
    QCOMPARE(QImage(path).size(), m_ui->widget_graphic->size());
    dialog->close();
}

void test_main_window::import_dialog_follows_the_language()
{
    m_ui->data_input_file->click();
    QPointer<input_window> dialog = m_window->findChild<input_window*>();
    QVERIFY(dialog != nullptr);
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->windowModality(), Qt::NonModal);
    QCOMPARE(dialog->windowHandle()->transientParent(), m_window->windowHandle());
    const auto* button = dialog->findChild<QPushButton*>("pushButton_2");
    QCOMPARE(button->text(), QStringLiteral("导入文件"));
    // Not modal: the language can change behind it, and the next dialog tells it.
    choose_english();
    QCOMPARE(button->text(), QStringLiteral("导入文件"));
    m_ui->data_input_file->click();
    QCOMPARE(button->text(), QStringLiteral("Importing files"));
    for (input_window* one : m_window->findChildren<input_window*>())
        one->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(dialog == nullptr);
}

void test_main_window::import_dialog_is_joined_to_the_window()
{
    m_window->setmodeflag(4, m_window->js, 2);
    const QSignalSpy asked(m_objects.key, &thread_key::send_cmd_to_file_import_thread);
    m_ui->data_input_file->click();
    auto* dialog = m_window->findChild<input_window*>();
    emit dialog->send_btm_sign_to_mainwindow_import_file({});
    dialog->close();
    m_window->setmodeflag(0, m_window->js, 0);
    // Even a cancelled choice goes all the way.
    QCOMPARE(asked.size(), 1);
    QCOMPARE(asked[0][0].toString(), QString());
    QCOMPARE(asked[0][1].toInt(), 4);
    QCOMPARE(asked[0][2].value<JsonFileManager*>(), m_window->js);
    QCOMPARE(asked[0][3].toInt(), 2);
}

// Tables

void test_main_window::first_delivery_stays_when_the_second_comes()
{
    // A read of two measurements delivers [a] and then [a, b].
    deliver(sample_lists::named({"a"}));
    deliver(sample_lists::named({"a", "b"}));
    QCOMPARE(m_window->model->rowCount(), 3);
    const QStringList names{"a", "a", "b"};
    for (int row = 0; row < names.size(); ++row) {
        QCOMPARE(m_window->model->item(row, 2)->text(), names[row]);
        QCOMPARE(m_window->model->item(row, 1)->text(), QString::number(row + 1));
    }
    const sample_lists first = sample_lists::named({"a"});
    const sample_lists second = sample_lists::named({"a", "b"});
    QCOMPARE(m_window->table_list, first.table_list + second.table_list);
    QCOMPARE(m_window->data_msg, first.data_msg + second.data_msg);
    QCOMPARE(m_window->data_msg_altitude, first.data_msg_altitude + second.data_msg_altitude);
    QCOMPARE(m_window->point_msg_all, first.point_msg_all + second.point_msg_all);
    // What replaces them does so in each of the four.
    m_window->reset_table_data(second.table_list, second.data_msg, second.data_msg_altitude,
                               second.point_msg_all);
    QCOMPARE(m_window->model->rowCount(), 2);
    QCOMPARE(m_window->table_list, second.table_list);
    QCOMPARE(m_window->data_msg, second.data_msg);
    QCOMPARE(m_window->data_msg_altitude, second.data_msg_altitude);
    QCOMPARE(m_window->point_msg_all, second.point_msg_all);
}

void test_main_window::shorter_lists_are_taken_as_far_as_all_go()
{
    sample_lists lists = sample_lists::named({"a", "b", "c"});
    lists.data_msg.removeLast();
    lists.point_msg_all.append(QList<point_msg>{});
    deliver(lists);
    QCOMPARE(m_window->table_list.size(), 2);
    QCOMPARE(m_window->data_msg.size(), 2);
    QCOMPARE(m_window->data_msg_altitude.size(), 2);
    QCOMPARE(m_window->point_msg_all.size(), 2);
    lists.data_msg.clear();
    deliver(lists);
    QCOMPARE(m_window->model->rowCount(), 2);
}

void test_main_window::rows_stand_in_the_tables_of_their_kinds()
{
    deliver(sample_lists::of_methods({"航迹", "面积", "航迹", "自制", "航线", "雷达", "面积"}));
    QCOMPARE(m_window->model->rowCount(), 7);
    QCOMPARE(m_window->model->columnCount(), 5);
    QCOMPARE(m_window->model->item(3, 4)->text(), QStringLiteral("自制"));
    QCOMPARE(m_window->model->item(5, 4)->text(), QString());
    QCOMPARE(m_window->model_area->columnCount(), 4);
    QCOMPARE(m_window->relation_area, (pairs{{0, 1}, {1, 6}}));
    QCOMPARE(m_window->relation_track, (pairs{{0, 0}, {1, 2}}));
    QCOMPARE(m_window->relation_airline, (pairs{{0, 4}}));
    QCOMPARE(m_window->relation_distance, pairs());
    QCOMPARE(m_objects.key->relation_area, m_window->relation_area);
    QCOMPARE(m_objects.key->relation_track, m_window->relation_track);
    QCOMPARE(m_objects.key->relation_airline, m_window->relation_airline);
    QCOMPARE(m_window->model_track->item(1, 1)->text(), QStringLiteral("2"));
    QCOMPARE(m_window->model_track->item(1, 2)->text(), m_window->table_list[2].name);
    for (int column = 1; column < 5; ++column)
        QCOMPARE(m_window->model->item(0, column)->textAlignment(), Qt::AlignCenter);
    const int widths[] = {42, 40, 100, 128, 42};
    for (int column = 0; column < 5; ++column)
        QCOMPARE(m_ui->alltableView->columnWidth(column), widths[column]);
    QVERIFY(!m_ui->alltableView->horizontalHeader()->stretchLastSection());
    QVERIFY(m_ui->areatableView->horizontalHeader()->stretchLastSection());
    QVERIFY(m_ui->areatableView->verticalHeader()->isHidden());
    QCOMPARE(m_ui->areatableView->horizontalHeader()->sectionResizeMode(2), QHeaderView::Fixed);
}

void test_main_window::every_view_has_its_headers_and_delegates_data()
{
    QTest::addColumn<bool>("main_table");
    QTest::newRow("alltableView") << true;
    for (const char* view : {"areatableView", "distableView", "pointtableView", "linetableView",
                             "tracktableView", "fangyangtableView"})
        QTest::newRow(view) << false;
}

void test_main_window::every_view_has_its_headers_and_delegates()
{
    QFETCH(bool, main_table);
    deliver(sample_lists::one_of_each());
    auto* view = m_window->findChild<QTableView*>(QLatin1String(QTest::currentDataTag()));
    const auto* model = qobject_cast<QStandardItemModel*>(view->model());
    const QStringList headers{"", "序号", "数据名称", "采集时间", "类型"};
    const int widths[] = {42, 40, 100, 128, 42};
    const int columns = main_table ? 5 : 4;
    QCOMPARE(model->columnCount(), columns);
    QHeaderView* header = view->horizontalHeader();
    QVERIFY(view->verticalHeader()->isHidden());
    QCOMPARE(header->defaultAlignment(), Qt::AlignHCenter | Qt::AlignVCenter);
    QCOMPARE(header->stretchLastSection(), !main_table);
    QVERIFY(qobject_cast<CheckBoxDelegate*>(view->itemDelegate()) != nullptr);
    for (int column = 0; column < columns; ++column) {
        QCOMPARE(model->headerData(column, Qt::Horizontal).toString(), headers[column]);
        QCOMPARE(header->sectionResizeMode(column), QHeaderView::Fixed);
        if (main_table || column < 3)
            QCOMPARE(view->columnWidth(column), widths[column]);
        if (column == 0)
            continue;
        QCOMPARE(model->item(0, column)->textAlignment(), Qt::AlignCenter);
        QVERIFY(model->item(0, column)->isEditable());
        const QAbstractItemDelegate* plain = view->itemDelegateForColumn(column);
        QVERIFY(plain != nullptr);
        QCOMPARE(plain->metaObject()->className(), "QItemDelegate");
    }
    QCOMPARE(view->itemDelegateForColumn(0), nullptr); // the view's own: the ticks
    QCOMPARE(model->item(0, 0)->text(), QString());
}

void test_main_window::a_rebuild_tells_its_relations_and_an_empty_one_nothing()
{
    QSignalSpy told(m_window, &MainWindow::relation_table);
    const log_capture log;
    deliver(
        sample_lists::of_methods({"放样", "航迹", "航线", "航点", "距离", "面积", "自制", "面积"}));
    QVERIFY(log.has("全部数组中有： 8"));
    QCOMPARE(told.size(), 1);
    const pairs expected[] = {{{0, 5}, {1, 7}}, {{0, 4}}, {{0, 3}}, {{0, 2}}, {{0, 1}}, {{0, 0}}};
    for (int list = 0; list < 6; ++list)
        QCOMPARE(told[0][list].value<pairs>(), expected[list]);
    const thread_key& hub = *m_objects.key;
    const pairs* const copies[] = {&hub.relation_area,  &hub.relation_distance,
                                   &hub.relation_point, &hub.relation_airline,
                                   &hub.relation_track, &hub.relation_fangyang};
    for (int list = 0; list < 6; ++list)
        QCOMPARE(*copies[list], expected[list]);
    QCOMPARE(thread_key::find_type_row(5, hub.relation_area), 0);
    QCOMPARE(thread_key::find_type_row(7, hub.relation_area), 1);

    m_window->reset_table_data({}, {}, {}, {});
    QCOMPARE(told.size(), 1);
    QVERIFY(!log.has("全部数组中有： 0"));
}

void test_main_window::rebuild_clears_ticks_and_keeps_boxes()
{
    deliver(sample_lists::one_of_each());
    m_ui->checkBox->setChecked(true);
    QVERIFY(ticked(m_window->model, 0));
    m_window->rebuild_tables();
    for (int row = 0; row < m_window->model->rowCount(); ++row)
        QVERIFY(!ticked(m_window->model, row));
    QVERIFY(m_ui->checkBox->isChecked());
}

void test_main_window::emptied_tables_keep_headers_and_relations()
{
    deliver(sample_lists::of_methods({"面积", "面积"}));
    m_window->reset_table_data({}, {}, {}, {});
    QCOMPARE(m_window->model->rowCount(), 0);
    QCOMPARE(m_window->model_area->rowCount(), 0);
    QCOMPARE(m_window->model->columnCount(), 5);
    QCOMPARE(m_window->model_area->headerData(2, Qt::Horizontal).toString(),
             QStringLiteral("数据名称"));
    QCOMPARE(m_window->relation_area, (pairs{{0, 0}, {1, 1}}));
    QCOMPARE(m_objects.key->relation_area, (pairs{{0, 0}, {1, 1}}));
}

void test_main_window::rebuild_releases_the_models_before()
{
    const QPointer<QStandardItemModel> main = m_window->model;
    const QPointer<QStandardItemModel> area = m_window->model_area;
    m_window->rebuild_tables();
    QVERIFY(m_window->model != main);
    QVERIFY(m_ui->alltableView->model() == m_window->model);
    QTRY_VERIFY(main.isNull() && area.isNull());
}

// Ticks

void test_main_window::a_click_on_the_tick_toggles_both_tables()
{
    deliver(sample_lists::of_methods({"距离", "面积"}));
    QSignalSpy changed(m_window, &MainWindow::send_all_table_change);
    QTest::mouseClick(m_ui->alltableView->viewport(), Qt::LeftButton, {},
                      tick_place(m_ui->alltableView, 1));
    QVERIFY(ticked(m_window->model, 1));
    QVERIFY(!ticked(m_window->model, 0));
    QVERIFY(ticked(m_window->model_area, 0));
    QVERIFY(!ticked(m_window->model_distance, 0));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed[0][0].toBool(), true);

    // The signal tells the success of the change: true at an untick as well.
    QTest::mouseClick(m_ui->alltableView->viewport(), Qt::LeftButton, {},
                      tick_place(m_ui->alltableView, 1));
    QVERIFY(!ticked(m_window->model, 1));
    QVERIFY(!ticked(m_window->model_area, 0));
    QCOMPARE(changed[1][0].toBool(), true);
}

void test_main_window::what_does_not_toggle_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("second press of a double click") << 0;
    QTest::newRow("right button") << 1;
    QTest::newRow("beside the box") << 2;
    QTest::newRow("another key") << 3;
}

void test_main_window::what_does_not_toggle()
{
    QFETCH(int, kind);
    deliver(sample_lists::of_methods({"面积"}));
    QWidget* viewport = m_ui->alltableView->viewport();
    const QPoint place = tick_place(m_ui->alltableView, 0);
    switch (kind) {
    case 0: QTest::mouseDClick(viewport, Qt::LeftButton, {}, place); break;
    case 1: QTest::mouseClick(viewport, Qt::RightButton, {}, place); break;
    case 2: QTest::mouseClick(viewport, Qt::LeftButton, {}, place + QPoint(-17, 0)); break;
    default:
        m_ui->alltableView->setCurrentIndex(m_window->model->index(0, 0));
        QTest::keyClick(m_ui->alltableView, Qt::Key_A);
    }
    QVERIFY(!ticked(m_window->model, 0));
    QVERIFY(m_ui->alltableView->viewport()->findChildren<QLineEdit*>().isEmpty());
}

void test_main_window::the_press_of_a_double_click_changes_nothing()
{
    deliver(sample_lists::of_methods({"面积"}));
    QWidget* viewport = m_ui->alltableView->viewport();
    const QPoint place = tick_place(m_ui->alltableView, 0);
    // The first click toggles; the press of a double click after it changes
    // nothing.
    QTest::mouseClick(viewport, Qt::LeftButton, {}, place);
    QVERIFY(ticked(m_window->model, 0));
    const QPointF at = place;
    QMouseEvent second(QEvent::MouseButtonDblClick, at, viewport->mapToGlobal(at), Qt::LeftButton,
                       Qt::LeftButton, {});
    QApplication::sendEvent(viewport, &second);
    QVERIFY(ticked(m_window->model, 0));
}

void test_main_window::space_toggles()
{
    deliver(sample_lists::of_methods({"面积", "航点"}));
    m_ui->alltableView->setFocus();
    m_ui->alltableView->setCurrentIndex(m_window->model->index(1, 0));
    QTest::keyClick(m_ui->alltableView, Qt::Key_Space);
    QVERIFY(ticked(m_window->model, 1));
    QVERIFY(ticked(m_window->model_point, 0));
    QTest::keyClick(m_ui->alltableView, Qt::Key_Select);
    QVERIFY(!ticked(m_window->model, 1));
}

void test_main_window::ticking_in_a_kind_table_reaches_the_main_one()
{
    deliver(sample_lists::of_methods({"面积", "航迹", "航迹"}));
    m_ui->tabWidget->setCurrentWidget(m_ui->tab_6);
    QTest::mouseClick(m_ui->tracktableView->viewport(), Qt::LeftButton, {},
                      tick_place(m_ui->tracktableView, 1));
    QVERIFY(ticked(m_window->model_track, 1));
    QVERIFY(ticked(m_window->model, 2));
    QVERIFY(!ticked(m_window->model, 1));
}

void test_main_window::tab_box_ticks_all()
{
    deliver(sample_lists::one_of_each());
    QSignalSpy all(m_window, &MainWindow::send_check_all);
    QTest::mouseClick(m_ui->checkBox, Qt::LeftButton);
    QVERIFY(m_ui->checkBox->isChecked());
    // The six kinds only: a record of the instrument's own making has no tick of
    // its own to write.
    for (int row = 0; row < m_window->model->rowCount(); ++row)
        QCOMPARE(ticked(m_window->model, row), row < 6);
    QVERIFY(ticked(m_window->model_fangyang, 0));
    QTest::mouseClick(m_ui->checkBox, Qt::LeftButton);
    for (int row = 0; row < m_window->model->rowCount(); ++row)
        QCOMPARE(ticked(m_window->model, row), false);
    QCOMPARE(all.size(), 2);
    QCOMPARE(all[0][0].toBool(), true);
    QCOMPARE(all[1][0].toBool(), false);

    // The box of one kind ticks its own rows only.
    m_ui->checkBox_hangji->setChecked(true);
    QVERIFY(ticked(m_window->model_track, 0));
    QVERIFY(!ticked(m_window->model_area, 0));
}

void test_main_window::boxes_and_tables_send_their_own_signals()
{
    using check_signal = decltype(&MainWindow::send_check_all);
    struct road
    {
        QCheckBox* box;
        void (MainWindow::*box_slot)(int);
        check_signal of_box;
        const QTableView* view;
        check_signal of_table;
    };
    const road roads[] = {
        {m_ui->checkBox, &MainWindow::check_all, &MainWindow::send_check_all, m_ui->alltableView,
         &MainWindow::send_all_table_change},
        {m_ui->checkBox_mianji, &MainWindow::check_mianji, &MainWindow::send_check_mianji,
         m_ui->areatableView, &MainWindow::send_area_table_change},
        {m_ui->checkBox_juli, &MainWindow::check_juli, &MainWindow::send_check_juli,
         m_ui->distableView, &MainWindow::send_dist_table_change},
        {m_ui->checkBox_hangdian, &MainWindow::check_hangdian, &MainWindow::send_check_hangdian,
         m_ui->pointtableView, &MainWindow::send_point_table_change},
        {m_ui->checkBox_hangxian, &MainWindow::check_hangxian, &MainWindow::send_check_hangxian,
         m_ui->linetableView, &MainWindow::send_line_table_change},
        {m_ui->checkBox_hangji, &MainWindow::check_hangji, &MainWindow::send_check_hangji,
         m_ui->tracktableView, &MainWindow::send_track_table_change},
        {m_ui->checkBox_fangyang, &MainWindow::check_fangyang, &MainWindow::send_check_fangyang,
         m_ui->fangyangtableView, &MainWindow::send_fangyang_table_change}};
    deliver(sample_lists::one_of_each());
    QObject* const models[] = {m_window->model,          m_window->model_area,
                               m_window->model_distance, m_window->model_point,
                               m_window->model_airline,  m_window->model_track,
                               m_window->model_fangyang};
    // Whatever is sent, by the number of its signal, with its flag and all that
    // goes with it.
    QStringList sent;
    QObject context;
    const auto note = [&](const QString& words, check_signal signal) {
        connect(m_window, signal, &context,
                [&, words](bool clicked, QStandardItemModel* all, QStandardItemModel* area,
                           QStandardItemModel* distance, QStandardItemModel* point,
                           QStandardItemModel* airline, QStandardItemModel* track,
                           QStandardItemModel* fangyang, const QList<measuringData>& table_list,
                           const QStringList& data_msg) {
                    sent += words + (clicked ? " true" : " false");
                    const QObject* const came[] = {all,     area,  distance, point,
                                                   airline, track, fangyang};
                    for (int at = 0; at < 7; ++at)
                        QCOMPARE(came[at], models[at]);
                    QCOMPARE(table_list, m_window->table_list);
                    QCOMPARE(data_msg, m_window->data_msg);
                });
    };
    for (int at = 0; at < 7; ++at) {
        note("box " + QString::number(at), roads[at].of_box);
        note("table " + QString::number(at), roads[at].of_table);
    }
    for (int at = 0; at < 7; ++at) {
        const road& one = roads[at];
        const QString box = "box " + QString::number(at);
        const QString table = "table " + QString::number(at);
        sent.clear();
        one.box->setChecked(true);
        one.box->setChecked(false);
        (m_window->*one.box_slot)(1); // any other value than 0
        QCOMPARE(sent, (QStringList{box + " true", box + " false", box + " true"}));
        sent.clear();
        auto* ticks = qobject_cast<CheckBoxDelegate*>(one.view->itemDelegate());
        for (const bool success : {true, false})
            emit ticks->checkboxStateChanged(success);
        QCOMPARE(sent, (QStringList{table + " true", table + " false"}));
    }
}

void test_main_window::deleting_takes_the_ticked_rows()
{
    deliver(sample_lists::named({"a", "b", "c", "d", "e"}));
    for (const int row : {1, 3})
        QTest::mouseClick(m_ui->alltableView->viewport(), Qt::LeftButton, {},
                          tick_place(m_ui->alltableView, row));
    m_ui->delect_tableandmap->click();
    QStringList names;
    for (const measuringData& record : std::as_const(m_window->table_list))
        names += record.name;
    QCOMPARE(names, (QStringList{"a", "c", "e"}));
    QCOMPARE(m_window->data_msg.size(), 3);
    QCOMPARE(m_window->data_msg[1], sample_lists::coordinates_of(2));
    QCOMPARE(m_window->model->rowCount(), 3);
}

void test_main_window::deleting_nothing_still_clears_the_boxes()
{
    QCheckBox* const boxes[] = {m_ui->checkBox,          m_ui->checkBox_mianji,
                                m_ui->checkBox_juli,     m_ui->checkBox_hangdian,
                                m_ui->checkBox_hangxian, m_ui->checkBox_hangji,
                                m_ui->checkBox_fangyang};
    for (QCheckBox* box : boxes)
        box->setChecked(true);
    const sample_lists lists = sample_lists::named({"a"});
    deliver(lists);
    const QSignalSpy asked(m_window, &MainWindow::send_btm_sign_to_threadkey_delete_tableandmap);
    QObject context;
    connect(m_window, &MainWindow::send_btm_sign_to_threadkey_delete_tableandmap, &context, [&] {
        for (const QCheckBox* box : boxes) // the request comes first
            QVERIFY(box->isChecked());
    });
    const QStandardItemModel* const model = m_window->model;
    m_ui->delect_tableandmap->click();
    for (const QCheckBox* box : boxes)
        QVERIFY(!box->isChecked());
    QCOMPARE(m_window->model->rowCount(), 1);
    QCOMPARE(asked.size(), 1);
    QCOMPARE(asked[0][0].value<QStandardItemModel*>(), model);
    QCOMPARE(asked[0][1].value<QList<measuringData>>(), lists.table_list);
    QCOMPARE(asked[0][2].toStringList(), lists.data_msg);
    QCOMPARE(asked[0][3].toStringList(), lists.data_msg_altitude);
    QCOMPARE(asked[0][4].value<QList<QList<point_msg>>>(), lists.point_msg_all);
}

void test_main_window::a_read_ends_with_its_tick_in_the_totals()
{
    deliver(sample_lists::of_methods({"航点", "航点", "航点"}));
    QTest::mouseClick(m_ui->alltableView->viewport(), Qt::LeftButton, {},
                      tick_place(m_ui->alltableView, 1));
    QTRY_COMPARE(m_ui->totalchecked->text(), QStringLiteral("1"));
    QCOMPARE(m_ui->label_point->text(), QStringLiteral("6点"));
    QCOMPARE(m_ui->label_tiao->text(), QStringLiteral("3条"));
}

// Edits

void test_main_window::name_edited_in_the_main_table()
{
    deliver(sample_lists::of_methods({"面积", "航迹"}));
    const QString time = m_window->table_list[1].time;
    const log_capture log;
    m_window->model->item(1, 2)->setText("north field");
    QCOMPARE(m_window->table_list[1].name, QStringLiteral("north field"));
    QCOMPARE(m_window->model_track->item(0, 2)->text(), QStringLiteral("north field"));
    QCOMPARE(m_window->table_list[1].time, time);
    QVERIFY(log.has("更新主表数据名称: 行 1 新名称: \"north field\""));
    // What the edit writes into the other table is no edit of its own.
    QVERIFY(!log.has("通过航迹表更新数据名称"));
    for (const QStandardItemModel* one :
         {m_window->model, m_window->model_area, m_window->model_distance, m_window->model_point,
          m_window->model_airline, m_window->model_track, m_window->model_fangyang})
        QVERIFY(!one->signalsBlocked());
    QVERIFY(log.has("数据名称同步完成: 主表行 1 新名称: \"north field\""));
}

void test_main_window::name_edited_in_a_kind_table_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("words");
    QTest::addColumn<QString>("time_words");
    QTest::newRow("area") << "面积"
                          << "通过面积表更新数据名称: 主表行"
                          << "Updated area table time: main row";
    QTest::newRow("distance") << "距离"
                              << "通过距离表更新数据名称: 主表行"
                              << "Updated distance table time: main row";
    QTest::newRow("point") << "航点"
                           << "通过航点表更新数据名称: 主表行"
                           << "Updated point table time: main row";
    QTest::newRow("airline") << "航线"
                             << "通过航线表更新数据名称: 主表行"
                             << "Updated line table time: main row";
    QTest::newRow("track") << "航迹"
                           << "通过航迹表更新数据名称: 主表行"
                           << "Updated track table time: main row";
    QTest::newRow("fangyang") << "放样"
                              << "通过放样表更新数据名称: 主表行"
                              << "Updated fangyang table time: main row";
}

void test_main_window::name_edited_in_a_kind_table()
{
    QFETCH(QString, method);
    QFETCH(QString, words);
    QFETCH(QString, time_words);
    deliver(sample_lists::of_methods({"自制", method, method}));
    QStandardItemModel* const models[] = {m_window->model_area,  m_window->model_distance,
                                          m_window->model_point, m_window->model_airline,
                                          m_window->model_track, m_window->model_fangyang};
    QStandardItemModel* edited = nullptr;
    for (QStandardItemModel* model : models) {
        if (model->rowCount() == 2)
            edited = model;
    }
    QVERIFY(edited != nullptr);
    const log_capture log;
    edited->item(1, 2)->setText("renamed");
    QCOMPARE(m_window->table_list[2].name, QStringLiteral("renamed"));
    QCOMPARE(m_window->model->item(2, 2)->text(), QStringLiteral("renamed"));
    QVERIFY(m_window->table_list[1].name != QStringLiteral("renamed"));
    QVERIFY(log.has(words + " 2 新名称: \"renamed\""));
    // What the edit writes into the main table is no edit of its own.
    QVERIFY(!log.has("更新主表数据名称"));
    QCOMPARE(m_window->table_list[2].time,
             sample_lists::of_methods({"", "", ""}).table_list[2].time);

    edited->item(0, 3)->setText("2024-1-1 0:0:0");
    QCOMPARE(m_window->table_list[1].time, QStringLiteral("2024-1-1 0:0:0"));
    QCOMPARE(m_window->model->item(1, 3)->text(), QStringLiteral("2024-1-1 0:0:0"));
    QVERIFY(log.has(time_words + " 1 time \"2024-1-1 0:0:0\""));
    QVERIFY(log.has("Data time sync completed: main row 1 time \"2024-1-1 0:0:0\""));
    QVERIFY(!log.has("Updated main table time"));
}

void test_main_window::time_is_taken_as_typed()
{
    deliver(sample_lists::of_methods({"面积"}));
    const log_capture log;
    m_window->model->item(0, 3)->setText("yesterday");
    QCOMPARE(m_window->table_list[0].time, QStringLiteral("yesterday"));
    QCOMPARE(m_window->model_area->item(0, 3)->text(), QStringLiteral("yesterday"));
    QVERIFY(log.has("Updated main table time: row 0 time \"yesterday\""));
}

void test_main_window::number_and_type_columns_are_accepted_and_ignored()
{
    deliver(sample_lists::of_methods({"面积"}));
    const QList<measuringData> before = m_window->table_list;
    m_window->model->item(0, 1)->setText("99");
    QCOMPARE(m_window->model->item(0, 1)->text(), QStringLiteral("99"));
    QCOMPARE(m_window->model_area->item(0, 1)->text(), QStringLiteral("1"));
    m_window->model->item(0, 4)->setText("距离");
    QCOMPARE(m_window->model->item(0, 4)->text(), QStringLiteral("距离"));
    m_window->model_area->item(0, 1)->setText("77");
    QCOMPARE(m_window->model_area->item(0, 1)->text(), QStringLiteral("77"));
    QCOMPARE(m_window->model->item(0, 1)->text(), QStringLiteral("99"));
    QCOMPARE(m_window->table_list, before);
    m_window->rebuild_tables();
    QCOMPARE(m_window->model->item(0, 1)->text(), QStringLiteral("1"));
    QCOMPARE(m_window->model_area->item(0, 1)->text(), QStringLiteral("1"));
    QCOMPARE(m_window->model->item(0, 4)->text(), QStringLiteral("面积"));
}

void test_main_window::a_measurement_without_points_is_legal()
{
    measuringData record;
    record.method = "航点";
    m_window->recast_table(0, {record}, {""}, {""}, {QList<point_msg>()});
    QCOMPARE(m_window->model_point->item(0, 2)->text(), QStringLiteral("0"));
    m_ui->checkBox->setChecked(true);
    QVERIFY(ticked(m_window->model_point, 0));
    QTRY_COMPARE(m_ui->label_point->text(), QStringLiteral("0点"));
    QTRY_COMPARE(m_ui->totalchecked->text(), QStringLiteral("1"));
    QCOMPARE(m_ui->label_tiao->text(), QStringLiteral("1条"));
    m_ui->delect_tableandmap->click();
    QVERIFY(m_window->table_list.isEmpty());
}

void test_main_window::an_import_is_appended_like_a_read()
{
    const sample_lists lists = sample_lists::named({"a", "b"});
    for (int command = 0; command <= 1; ++command)
        m_window->recast_table(command, lists.table_list, lists.data_msg, lists.data_msg_altitude,
                               lists.point_msg_all);
    QCOMPARE(m_window->model->rowCount(), 4);
    QCOMPARE(m_window->model->item(2, 2)->text(), QStringLiteral("a"));
}

void test_main_window::edit_without_relation_is_dropped()
{
    deliver(sample_lists::of_methods({"面积"}));
    const QList<measuringData> before = m_window->table_list;
    m_window->relation_area.clear();
    m_window->model_area->item(0, 2)->setText("lost");
    QCOMPARE(m_window->table_list, before);
    QVERIFY(m_window->model->item(0, 2)->text() != QStringLiteral("lost"));
}

void test_main_window::edit_behind_the_lists_is_dropped()
{
    deliver(sample_lists::of_methods({"面积"}));
    const QString name = m_window->model_area->item(0, 2)->text();
    const QString time = m_window->model_area->item(0, 3)->text();
    m_window->table_list.clear();
    m_window->model->item(0, 2)->setText("lost");
    m_window->model->item(0, 3)->setText("lost");
    QVERIFY(m_window->table_list.isEmpty());
    QCOMPARE(m_window->model_area->item(0, 2)->text(), name);
    QCOMPARE(m_window->model_area->item(0, 3)->text(), time);
}

void test_main_window::names_and_times_are_written_everywhere()
{
    deliver(sample_lists::of_methods({"面积", "航迹", "面积"}));
    const log_capture log;
    // Two names of one operation. Neither touches the lists.
    const QList<measuringData> before = m_window->table_list;
    m_window->updateDataNameInAllTables(2, "second");
    QVERIFY(log.has("数据名称同步完成: 主表行 2 新名称: \"second\""));
    m_window->syncDataNameToOtherTables(1, "track");
    m_window->updateDataTimeInAllTables(2, "noon");
    QCOMPARE(m_window->model->item(2, 2)->text(), QStringLiteral("second"));
    QCOMPARE(m_window->model_area->item(1, 2)->text(), QStringLiteral("second"));
    QCOMPARE(m_window->model->item(1, 2)->text(), QStringLiteral("track"));
    QCOMPARE(m_window->model_track->item(0, 2)->text(), QStringLiteral("track"));
    QCOMPARE(m_window->model->item(2, 3)->text(), QStringLiteral("noon"));
    QCOMPARE(m_window->model_area->item(1, 3)->text(), QStringLiteral("noon"));
    QCOMPARE(m_window->model_area->item(0, 2)->text(), QStringLiteral("m0"));
    QCOMPARE(m_window->table_list, before);

    // Rows that are not there are passed over, of several pairs the first counts.
    m_window->relation_area = {{9, 0}, {1, 0}, {0, 2}, {1, 2}, {0, 99}};
    m_window->updateDataNameInAllTables(0, "nowhere");
    QCOMPARE(m_window->model->item(0, 2)->text(), QStringLiteral("nowhere"));
    QCOMPARE(m_window->model_area->item(1, 2)->text(), QStringLiteral("second"));
    m_window->updateDataNameInAllTables(2, "first pair");
    QCOMPARE(m_window->model_area->item(0, 2)->text(), QStringLiteral("first pair"));
    QCOMPARE(m_window->model_area->item(1, 2)->text(), QStringLiteral("second"));
    m_window->updateDataNameInAllTables(99, "behind");
    QCOMPARE(m_window->model_area->item(0, 2)->text(), QStringLiteral("behind"));
    m_window->updateDataNameInAllTables(-1, "before");
    QVERIFY(m_window->model->findItems("before", Qt::MatchExactly, 2).isEmpty());
}

/// A cell that counts how often it is written.
class counting_item : public QStandardItem
{
public:
    using QStandardItem::QStandardItem;

    void setData(const QVariant& value, int role) override
    {
        ++writes;
        QStandardItem::setData(value, role);
    }

    int writes = 0;
};

void test_main_window::only_what_differs_is_written()
{
    deliver(sample_lists::of_methods({"面积"}));
    for (const int column : {2, 3}) {
        const auto write = [&](const QString& text) {
            if (column == 2)
                m_window->updateDataNameInAllTables(0, text);
            else
                m_window->updateDataTimeInAllTables(0, text);
        };
        auto* main = new counting_item("as it was");
        auto* area = new counting_item("as it was");
        m_window->model->setItem(0, column, main);
        m_window->model_area->setItem(0, column, area);
        for (counting_item* item : {main, area})
            item->writes = 0;
        write("as it was");
        QCOMPARE(main->writes, 0);
        QCOMPARE(area->writes, 0);
        write("new");
        QCOMPARE(main->writes, 1);
        QCOMPARE(area->writes, 1);
        QCOMPARE(area->text(), QStringLiteral("new"));
    }
}

void test_main_window::editing_through_the_keyboard()
{
    deliver(sample_lists::of_methods({"面积"}));
    m_ui->alltableView->setFocus();
    m_ui->alltableView->setCurrentIndex(m_window->model->index(0, 2));
    QTest::keyClick(m_ui->alltableView, Qt::Key_F2);
    auto* editor = m_ui->alltableView->viewport()->findChild<QLineEdit*>();
    QVERIFY(editor != nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "typed");
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(m_window->table_list[0].name, QStringLiteral("typed"));
    QCOMPARE(m_window->model_area->item(0, 2)->text(), QStringLiteral("typed"));
}

QTEST_MAIN(test_main_window)
#include "test_main_window.moc"
