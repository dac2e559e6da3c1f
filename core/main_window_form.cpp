#include "core/main_window_form.h"

#include "core/main_window.h"
#include "presentation/graphic_widget.h"
#include "presentation/plain_check_box.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QFrame>
#include <QGroupBox>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QWebEngineView>

#include <array>

namespace Ui {

namespace {

/// A rectangle from its first and last pixel in each direction.
QRect pixels(int left, int top, int right, int bottom)
{
    return {QPoint(left, top), QPoint(right, bottom)};
}

template <typename Widget>
Widget* make(QWidget* parent, const char* name, const QRect& place)
{
    auto* widget = new Widget(parent);
    widget->setObjectName(QLatin1String(name));
    widget->setGeometry(place);
    return widget;
}

QLabel* make_label(QWidget* parent, const char* name, const QRect& place,
                   Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter)
{
    auto* label = make<QLabel>(parent, name, place);
    label->setAlignment(alignment);
    return label;
}

/// A thin vertical line of the top bar.
QLabel* make_separator(QWidget* parent, const char* name, int x)
{
    auto* line = make<QLabel>(parent, name, QRect(x, 0, 1, 61));
    line->setStyleSheet(QStringLiteral("background-color: #c7c7c7; border: none;"));
    return line;
}

void place_image(QPushButton* button)
{
    button->setFocusPolicy(Qt::TabFocus);
    button->setCursor(Qt::PointingHandCursor);
}

/// The look of a panel; `own` are the rules for what lies on it. Labels stay
/// without the panel's border.
void style_panel(QWidget* panel, const QString& own = {})
{
    panel->setStyleSheet(
        QStringLiteral("QWidget {background-color: qlineargradient(spread:pad, x1:0, y1:0, x2:0, "
                       "y2:1,stop: 0 rgba(240, 240, 240, 255),stop: 1 rgba(220, 220, 220, 255));"
                       "border: 1px solid #c7c7c7;border-radius: 8px;}"
                       "QLabel {background: transparent;border: none;}"
                       "QToolTip {background: #ffffe1;border: 1px solid #767676;border-radius: 0;"
                       "color: black;}") +
        own);
}

/// Tooltip and accessible name of a button that shows an image only.
void describe(QWidget* widget, const QString& name, const QString& hint = {})
{
    widget->setAccessibleName(name);
    widget->setToolTip(hint.isEmpty() ? name : hint);
}

} // namespace

void MainWindow::setupUi(QMainWindow* window)
{
    window->setObjectName(QStringLiteral("MainWindow"));
    window->resize(1288, 724);
    window->setWindowIcon(QIcon(QStringLiteral("./pic/com/1.ico")));
    centralWidget = new QWidget(window);
    centralWidget->setObjectName(QStringLiteral("centralWidget"));
    window->setCentralWidget(centralWidget);

    make_actions_panel();
    make_tables_panel();
    make_progress_row();
    make_totals_box();
    make_top_bar();
    make_views();
    make_menus(window);

    retranslateUi(window);
    QMetaObject::connectSlotsByName(window);
}

void MainWindow::make_actions_panel()
{
    widget1 = make<QWidget>(centralWidget, "widget1", pixels(10, 0, 410, 140));
    style_panel(widget1);
    data_read = make<QPushButton>(widget1, "data_read", pixels(20, 10, 190, 70));
    data_to_device = make<QPushButton>(widget1, "data_to_device", pixels(20, 80, 190, 140));
    data_output_file = make<QPushButton>(widget1, "data_output_file", pixels(210, 10, 380, 70));
    data_input_file = make<QPushButton>(widget1, "data_input_file", pixels(210, 80, 380, 140));
    for (QPushButton* button : {data_read, data_to_device, data_output_file, data_input_file})
        place_image(button);
    data_read->setShortcut(Qt::Key_F5);
    data_input_file->setShortcut(QKeySequence::Open);
}

void MainWindow::make_tables_panel()
{
    widget3 = make<QWidget>(centralWidget, "widget3", pixels(10, 160, 410, 460));
    style_panel(
        widget3,
        QStringLiteral(
            "#delect_tableandmap {border: 1px solid #bfbfbf;border-radius: 4px;"
            "background-color: #f7f7f7;}"
            "#delect_tableandmap:hover {background-color: #ffffff;}"
            "#delect_tableandmap:pressed {background-color: #bfbfbf;}"
            "#delect_tableandmap:focus {border: 1px solid #2878c8;}"
            "QTabWidget::pane {border: none;}"
            "QTabBar {border: none;background: transparent;}"
            "QTabBar::tab {background: #e4e4e4;border: 1px solid #c7c7c7;border-bottom: none;"
            "border-top-left-radius: 4px;border-top-right-radius: 4px;height: 20px;width: 48px;"
            "font-size: 12px;padding: 0;margin-right: 1px;}"
            "QTabBar::tab:selected {background: white;color: #1565a8;}"
            "QTabBar::tab:hover:!selected {background: #f0f0f0;}"
            "#tabWidget > QStackedWidget, #tabWidget > QStackedWidget > QWidget "
            "{background: transparent;border: none;border-radius: 0;}"
            "QTableView {    border: none;    background-color: white;    gridline-color: #c7c7c7;"
            "    selection-background-color: #a0a0a0;    selection-color: white;}"
            "QTableView {border-radius: 0;}"
            "QHeaderView {border: none;border-radius: 0;}"
            "QHeaderView::section {background-color: #ececec;border: none;"
            "border-right: 1px solid #c7c7c7;border-bottom: 1px solid #c7c7c7;}"
            "QScrollBar {border: none;border-radius: 0;background: #f0f0f0;margin: 0;}"
            "QScrollBar:vertical {width: 8px;}"
            "QScrollBar:horizontal {height: 8px;}"
            "QScrollBar::handle {background: #b4b4b4;border-radius: 3px;}"
            "QScrollBar::handle:vertical {min-height: 24px;}"
            "QScrollBar::add-line, QScrollBar::sub-line {width: 0;height: 0;}"
            "QTableView QLineEdit {background: white;border: 1px solid #2878c8;border-radius: "
            "0;}"));
    label_tablist = make_label(widget3, "label_tablist", pixels(15, 9, 300, 29));
    delect_tableandmap = make<QPushButton>(widget3, "delect_tableandmap", pixels(310, 9, 360, 29));
    tabWidget = make<QTabWidget>(widget3, "tabWidget", pixels(10, 40, 370, 280));
    tabWidget->tabBar()->setUsesScrollButtons(false);
    tabWidget->tabBar()->setDrawBase(false);

    struct tab_entry
    {
        const char* name;
        QWidget* MainWindow::*page;
        const char* view_name;
        QTableView* MainWindow::*view;
        const char* box_name;
        QCheckBox* MainWindow::*box;
    };
    static constexpr std::array<tab_entry, 7> tabs{{
        {"tab", &MainWindow::tab, "alltableView", &MainWindow::alltableView, "checkBox",
         &MainWindow::checkBox},
        {"tab_2", &MainWindow::tab_2, "areatableView", &MainWindow::areatableView,
         "checkBox_mianji", &MainWindow::checkBox_mianji},
        {"tab_3", &MainWindow::tab_3, "distableView", &MainWindow::distableView, "checkBox_juli",
         &MainWindow::checkBox_juli},
        {"tab_4", &MainWindow::tab_4, "pointtableView", &MainWindow::pointtableView,
         "checkBox_hangdian", &MainWindow::checkBox_hangdian},
        {"tab_5", &MainWindow::tab_5, "linetableView", &MainWindow::linetableView,
         "checkBox_hangxian", &MainWindow::checkBox_hangxian},
        {"tab_6", &MainWindow::tab_6, "tracktableView", &MainWindow::tracktableView,
         "checkBox_hangji", &MainWindow::checkBox_hangji},
        {"tab_7", &MainWindow::tab_7, "fangyangtableView", &MainWindow::fangyangtableView,
         "checkBox_fangyang", &MainWindow::checkBox_fangyang},
    }};
    for (const tab_entry& entry : tabs) {
        auto* page = new QWidget;
        page->setObjectName(QLatin1String(entry.name));
        auto* view = make<QTableView>(page, entry.view_name, QRect(0, 0, 361, 221));
        view->verticalHeader()->setDefaultSectionSize(24);
        view->horizontalHeader()->setFixedHeight(24);
        view->setTabKeyNavigation(false);
        // Over the header of the tick column.
        auto* box = make<plain_check_box>(page, entry.box_name, QRect(13, 4, 16, 16));
        this->*entry.page = page;
        this->*entry.view = view;
        this->*entry.box = box;
        tabWidget->addTab(page, QString());
    }
}

void MainWindow::make_progress_row()
{
    widget4 = make<QWidget>(centralWidget, "widget4", pixels(10, 470, 410, 510));
    style_panel(widget4,
                QStringLiteral("QProgressBar {background-color: white;border-radius: 10px;}"
                               "QProgressBar::chunk {background-color: #53c9ff;border-radius: "
                               "8px;}"));
    label_2 = make_label(widget4, "label_2", pixels(10, 10, 69, 30));
    progressBar = make<QProgressBar>(widget4, "progressBar", pixels(70, 10, 330, 29));
    progressBar->setRange(0, 100);
    progressBar->setValue(0);
    progressBar->setTextVisible(false);
    progressLabel = make_label(widget4, "progressLabel", pixels(350, 10, 390, 30));
    progressLabel->setText(QStringLiteral("0%"));
}

void MainWindow::make_totals_box()
{
    groupBox = make<QGroupBox>(centralWidget, "groupBox", pixels(10, 530, 410, 660));
    style_panel(groupBox, QStringLiteral("QGroupBox {padding-top: 18px;}"
                                         "QGroupBox::title {subcontrol-origin: padding;"
                                         "subcontrol-position: top left;left: 10px;top: 6px;"
                                         "background: transparent;}"));
    const auto row = [this](int y, const char* caption_name, QLabel** caption,
                            const char* value_name, QLabel** value, const char* unit_name,
                            QLabel** unit) {
        *caption = make_label(groupBox, caption_name, QRect(20, y, 110, 22));
        *value = make_label(groupBox, value_name, QRect(130, y, 90, 22),
                            Qt::AlignRight | Qt::AlignVCenter);
        *unit = make_label(groupBox, unit_name, QRect(226, y, 50, 22));
    };
    row(36, "label_total", &label_total, "totalchecked", &totalchecked, "label_total_unit",
        &label_total_unit);
    row(66, "label_area", &label_area, "areameter", &areameter, "label_area_unit",
        &label_area_unit);
    row(96, "label_dist", &label_dist, "distmeter", &distmeter, "label_dist_unit",
        &label_dist_unit);
    areamu =
        make_label(groupBox, "areamu", QRect(276, 66, 80, 22), Qt::AlignRight | Qt::AlignVCenter);
    label_mu_unit = make_label(groupBox, "label_mu_unit", QRect(362, 66, 32, 22));
    for (QLabel* value : {totalchecked, areameter, areamu, distmeter})
        value->setText(QStringLiteral("0"));

    marlund = make<QPushButton>(centralWidget, "marlund", pixels(10, 670, 410, 695));
    place_image(marlund);
}

void MainWindow::make_top_bar()
{
    widget2 = make<QWidget>(centralWidget, "widget2", pixels(420, 0, 1270, 60));
    style_panel(widget2);
    const auto button = [this](const char* name, int x) {
        auto* made = make<QPushButton>(widget2, name, QRect(x, 10, 80, 41));
        place_image(made);
        return made;
    };
    pushButton_map = button("pushButton_map", 10);
    pushButton_graph = button("pushButton_graph", 90);
    pushButton_map->setShortcut(Qt::CTRL | Qt::Key_1);
    pushButton_graph->setShortcut(Qt::CTRL | Qt::Key_2);
    label_8 = make_separator(widget2, "label_8", 180);
    label_serial = make_label(widget2, "label_serial", QRect(200, 13, 60, 34));
    LED = make_label(widget2, "LED", pixels(260, 20, 279, 39));
    LED_2 = make_label(widget2, "LED_2", pixels(290, 20, 309, 39));
    label_20 = make_separator(widget2, "label_20", 320);
    label_11 =
        make_label(widget2, "label_11", QRect(330, 13, 110, 34), Qt::AlignRight | Qt::AlignVCenter);
    label_point = make_label(widget2, "label_point", QRect(450, 13, 60, 34));
    label_tiao = make_label(widget2, "label_tiao", QRect(510, 13, 60, 34));
    label_10 = make_separator(widget2, "label_10", 570);
    print = button("print", 580);
    label_13 = make_separator(widget2, "label_13", 670);
    softwareupgrade = button("softwareupgrade", 680);
    hardwareupgrade = button("hardwareupgrade", 770);
}

void MainWindow::make_views()
{
    map = make<QWebEngineView>(centralWidget, "map", pixels(430, 80, 1270, 680));
    widget_graphic =
        make<graphic_widget>(centralWidget, "widget_graphic", pixels(430, 80, 1270, 680));

    north = make<QPushButton>(widget_graphic, "north", pixels(10, 10, 89, 70));
    north->setFocusPolicy(Qt::NoFocus);
    frame = make<QFrame>(widget_graphic, "frame", pixels(580, 480, 800, 590));
    frame->setStyleSheet(QStringLiteral(
        "QFrame {background-color: rgba(255, 255, 255, 235);border: 1px solid #c7c7c7;"
        "border-radius: 6px;}"
        "QLabel {background: transparent;border: none;}"));
    tuxing_control =
        make<QPushButton>(widget_graphic, "tuxing_control", pixels(820, 580, 835, 595));
    tuxing_control->setCursor(Qt::PointingHandCursor);

    const auto row = [this](int y, const char* caption_name, QLabel** caption,
                            const char* value_name, QLabel** value, const char* unit_name,
                            QLabel** unit) {
        *caption = make_label(frame, caption_name, QRect(10, y, 94, 18));
        *value =
            make_label(frame, value_name, QRect(104, y, 64, 18), Qt::AlignRight | Qt::AlignVCenter);
        *unit = make_label(frame, unit_name, QRect(172, y, 46, 18));
        (*value)->setText(QStringLiteral("0"));
    };
    label_frame = make_label(frame, "label_frame", QRect(10, 4, 200, 20));
    row(26, "label_14", &label_14, "label_15", &label_15, "label_16", &label_16);
    row(46, "label_17", &label_17, "label_24", &label_24, "label_18", &label_18);
    label_25 =
        make_label(frame, "label_25", QRect(80, 66, 88, 18), Qt::AlignRight | Qt::AlignVCenter);
    label_25->setText(QStringLiteral("0"));
    label_19 = make_label(frame, "label_19", QRect(172, 66, 46, 18));
    row(86, "label_21", &label_21, "label_26", &label_26, "label_22", &label_22);
}

void MainWindow::make_menus(QMainWindow* window)
{
    menuBar = window->menuBar();
    menuBar->setObjectName(QStringLiteral("menuBar"));

    const auto action = [window](QMenu* menu, const char* name, const QString& text,
                                 const QKeySequence& shortcut = {}) {
        QAction* made = menu->addAction(text);
        made->setParent(window);
        made->setObjectName(QLatin1String(name));
        made->setShortcut(shortcut);
        return made;
    };
    const auto checkable = [&action](QMenu* menu, const char* name, const QString& text,
                                     bool checked) {
        QAction* made = action(menu, name, text);
        made->setCheckable(true);
        made->setChecked(checked);
        return made;
    };

    menu_file = menuBar->addMenu(::MainWindow::tr("文件"));
    action_export_graphics = action(menu_file, "action_export_graphics",
                                    ::MainWindow::tr("导出图形"), QKeySequence::Print);
    action_export =
        action(menu_file, "action_export", ::MainWindow::tr("导出..."), Qt::CTRL | Qt::Key_E);
    menu_file->addSeparator();
    action_quit = action(menu_file, "action_quit", ::MainWindow::tr("退出"), Qt::CTRL | Qt::Key_Q);

    menu_setting = menuBar->addMenu(::MainWindow::tr("设置"));
    menu_mu = menu_setting->addMenu(::MainWindow::tr("亩制"));
    action_small_mu = action(menu_mu, "action_small_mu", ::MainWindow::tr("小亩"));
    action_coordinate = action(menu_setting, "action_coordinate", ::MainWindow::tr("坐标设置"));
    menu_map = menu_setting->addMenu(::MainWindow::tr("地图选项"));
    action_gaode = checkable(menu_map, "action_gaode", ::MainWindow::tr("高德地图"), true);
    action_google = checkable(menu_map, "action_google", ::MainWindow::tr("谷歌地图"), false);
    action_sky = checkable(menu_map, "action_sky", ::MainWindow::tr("天地图"), false);

    menu_help = menuBar->addMenu(::MainWindow::tr("帮助"));
    action_instructions = action(menu_help, "action_instructions", ::MainWindow::tr("使用说明"),
                                 QKeySequence::HelpContents);
    action_about = action(menu_help, "action_about", ::MainWindow::tr("关于Velmo office"));
    action_download = action(menu_help, "action_download", ::MainWindow::tr("资料下载"));
    action_software = action(menu_help, "action_software", ::MainWindow::tr("软件更新"));

    menu_language = menuBar->addMenu(QStringLiteral("Language"));
    action_chinese = checkable(menu_language, "action_chinese", QStringLiteral("简体中文"), true);
    action_english = checkable(menu_language, "action_english", QStringLiteral("English"), false);
}

void MainWindow::retranslateUi(QMainWindow* window)
{
    window->setWindowTitle(QStringLiteral("Velmo"));

    label_tablist->setText(::MainWindow::tr("数据列表"));
    delect_tableandmap->setText(::MainWindow::tr("删除"));
    delect_tableandmap->setToolTip(::MainWindow::tr("删除选中的数据"));
    // The blanks before some titles are the form's own.
    static constexpr std::array<const char*, 7> tab_titles{
        QT_TRANSLATE_NOOP("MainWindow", "全部"),  QT_TRANSLATE_NOOP("MainWindow", " 面积"),
        QT_TRANSLATE_NOOP("MainWindow", " 距离"), QT_TRANSLATE_NOOP("MainWindow", "航点"),
        QT_TRANSLATE_NOOP("MainWindow", "航线"),  QT_TRANSLATE_NOOP("MainWindow", " 航迹"),
        QT_TRANSLATE_NOOP("MainWindow", "放样")};
    for (size_t at = 0; at < tab_titles.size(); ++at) {
        const QString title = ::MainWindow::tr(tab_titles[at]);
        QWidget* page = tabWidget->widget(static_cast<int>(at));
        tabWidget->setTabText(static_cast<int>(at), title);
        page->findChild<QTableView*>()->setAccessibleName(title.trimmed());
        describe(page->findChild<QCheckBox*>(), ::MainWindow::tr("全选：%1").arg(title.trimmed()));
    }

    label_2->setText(::MainWindow::tr("读取进度"));
    progressBar->setAccessibleName(::MainWindow::tr("读取进度"));
    groupBox->setTitle(::MainWindow::tr(" 条目信息"));
    for (QLabel* caption : {label_total, label_14})
        caption->setText(::MainWindow::tr("总计勾选:"));
    for (QLabel* caption : {label_area, label_17})
        caption->setText(::MainWindow::tr("面积:"));
    for (QLabel* caption : {label_dist, label_21})
        caption->setText(::MainWindow::tr("周长:"));
    for (QLabel* unit : {label_total_unit, label_16})
        unit->setText(::MainWindow::tr("条"));
    for (QLabel* unit : {label_area_unit, label_18})
        unit->setText(::MainWindow::tr("平方米"));
    for (QLabel* unit : {label_mu_unit, label_19})
        unit->setText(::MainWindow::tr("亩"));
    for (QLabel* unit : {label_dist_unit, label_22})
        unit->setText(::MainWindow::tr("米"));
    label_frame->setText(::MainWindow::tr("测量信息"));
    label_11->setText(::MainWindow::tr("已接收"));
    LED->setAccessibleName(::MainWindow::tr("串口指示灯"));
    LED->setToolTip(::MainWindow::tr("串口指示灯"));
    LED_2->setAccessibleName(::MainWindow::tr("安卓设备指示灯"));
    LED_2->setToolTip(::MainWindow::tr("安卓设备指示灯"));

    describe(data_read, ::MainWindow::tr("获取数据"), ::MainWindow::tr("从仪器读取测量数据 (F5)"));
    describe(data_to_device, ::MainWindow::tr("上传数据"),
             ::MainWindow::tr("把勾选的数据上传到仪器"));
    describe(data_output_file, ::MainWindow::tr("导出数据"),
             ::MainWindow::tr("把勾选的数据导出到文件 (Ctrl+E)"));
    describe(data_input_file, ::MainWindow::tr("导入数据"),
             ::MainWindow::tr("从文件导入数据 (Ctrl+O)"));
    describe(pushButton_map, ::MainWindow::tr("地图"), ::MainWindow::tr("显示地图 (Ctrl+1)"));
    describe(pushButton_graph, ::MainWindow::tr("图形"), ::MainWindow::tr("显示图形 (Ctrl+2)"));
    describe(print, ::MainWindow::tr("打印"), ::MainWindow::tr("打印图形"));
    describe(softwareupgrade, ::MainWindow::tr("软件更新"), ::MainWindow::tr("检查软件新版本"));
    describe(hardwareupgrade, ::MainWindow::tr("设备升级"), ::MainWindow::tr("升级仪器固件"));
    describe(marlund, ::MainWindow::tr("厂家主页"));
    describe(north, ::MainWindow::tr("北"));
    describe(tuxing_control, ::MainWindow::tr("显示或隐藏测量信息"));
    map->setAccessibleName(::MainWindow::tr("地图"));
    widget_graphic->setAccessibleName(::MainWindow::tr("图形"));
}

void MainWindow::set_fitting(QLabel* label, const QString& text)
{
    constexpr int smallest = 9; // pixels; below it nobody reads
    constexpr int gap = 4;      // pixels kept free before the label that follows
    QFont font = label->font();
    int size = QApplication::font().pixelSize();
    do {
        font.setPixelSize(size);
    } while (QFontMetrics(font).horizontalAdvance(text) > label->width() - gap &&
             --size > smallest);
    label->setFont(font);
    label->setText(text);
    label->setToolTip(text);
}

void MainWindow::resize_with(const QSize& window_size)
{
    const int w = window_size.width();
    const int h = window_size.height();
    if (w > 1295) {
        const int s = (w - 1295) / 8;
        widget2->resize(w - 444, widget2->height());
        map->resize(w - 454, map->height());
        widget_graphic->resize(w - 454, widget_graphic->height());
        frame->move(w - 715, frame->y());
        tuxing_control->move(w - 475, tuxing_control->y());

        pushButton_map->move(s + 10, 10);
        pushButton_graph->move(s + 90, 10);
        label_8->move(2 * (s + 90), 0);
        label_serial->move(2 * s + 200, 13);
        LED->move(2 * s + 260, 20);
        LED_2->move(2 * s + 290, 20);
        label_20->move(2 * (s + 160) + s, 0);
        label_11->move(4 * s + 330, 13);
        label_point->move(5 * (s + 90), 13);
        label_tiao->move(5 * s + 510, 13);
        label_10->move(5 * s + 570, 0);
        print->move((w - 1295) / 16 * 11 + 580, 10);
        label_13->move(6 * s + 670, 0);
        softwareupgrade->move(7 * s + 680, 10);
        hardwareupgrade->move(7 * s + 770, 10);
    }
    if (h > 724) {
        map->resize(map->width(), h - 123);
        widget_graphic->resize(widget_graphic->width(), h - 123);
        frame->move(frame->x(), h - 244);
        tuxing_control->move(tuxing_control->x(), h - 144);
        widget3->resize(widget3->width(), h - 423);
        for (QTableView* view : {alltableView, areatableView, distableView, pointtableView,
                                 linetableView, tracktableView, fangyangtableView})
            view->resize(view->width(), h - 503);
        tabWidget->resize(tabWidget->width(), h - 483);
        widget4->move(10, h - 254);
        groupBox->move(10, h - 194);
        marlund->move(10, h - 54);
    }
}

} // namespace Ui
