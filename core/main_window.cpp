#include "core/main_window.h"

#include "coordinates/json_file_manager.h"
#include "coordinates/zuobiao_form_homepage.h"
#include "core/main_window_form.h"
#include "core/map_page.h"
#include "core/thread_key.h"
#include "exchange/input_window.h"
#include "exchange/output_window.h"
#include "exchange/print.h"
#include "maker.h"
#include "presentation/bridge.h"
#include "presentation/graphic_widget.h"
#include "updates/hardwareupdata.h"
#include "updates/update_form.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDebug>
#include <QFrame>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTimer>
#include <QUrl>
#include <QWebChannel>
#include <QWebEnginePage>
#include <QWebEngineSettings>
#include <QWebEngineView>
#include <QWindow>

namespace {

constexpr int totals_interval_ms = 500;

QString lamp_style(const char* colour, int radius)
{
    return QStringLiteral(
               "background-color: qradialgradient(spread:pad, cx:0.5, cy:0.5, radius:0.5, fx:0.5, "
               "fy:0.5, stop:0 %1, stop:1 rgba(220, 220, 220, 255));border-radius:%2px;")
        .arg(QLatin1String(colour))
        .arg(radius);
}

constexpr char lamp_green[] = "rgba(0, 229, 0, 255)";
constexpr char lamp_red[] = "rgba(255, 0, 0, 255)";
constexpr int lamp_radius = 10;

} // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), ui(new Ui::MainWindow)
{
    ui->setupUi(this);
    connect_menus();

    style_buttons();
    choose_qt_texts();
    // Round: half from the first to the last pixel, and one. A style sheet draws
    // a larger radius as a square.
    for (QLabel* lamp : {ui->LED, ui->LED_2}) {
        const QRect place = lamp->rect();
        lamp->setStyleSheet(lamp_style(lamp_red, (place.right() - place.left()) / 2 + 1));
    }
    set_LED(false);
    start_web_view();

    init_table_models();

    timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this,
            [this] { emit send_check_sign_to_threadkey_other(model, table_list, data_msg); });
    timer->start(totals_interval_ms);

    connect_check_boxes();
    js = new JsonFileManager(this);
}

MainWindow::~MainWindow()
{
    // While there still is a pointer that its end can clear.
    delete coordinate_form;
}

void MainWindow::connect_menus()
{
    const auto on = [this](QAction* action, auto slot) {
        connect(action, &QAction::triggered, this, slot);
    };
    on(ui->action_export_graphics, &MainWindow::on_print_clicked);
    on(ui->action_export, &MainWindow::on_data_output_file_clicked);
    on(ui->action_quit, &MainWindow::quit_if_confirmed);
    on(ui->action_coordinate, &MainWindow::show_coordinate_settings);
    for (QAction* provider : {ui->action_gaode, ui->action_google, ui->action_sky})
        on(provider, [this, provider] { choose_map(provider); });
    on(ui->action_instructions, &MainWindow::show_instructions);
    on(ui->action_about, &MainWindow::show_about);
    on(ui->action_download, &MainWindow::show_download);
    on(ui->action_software, &MainWindow::on_softwareupgrade_clicked);
    for (QAction* one : {ui->action_chinese, ui->action_english})
        on(one, [this, one] { choose_language(one); });
}

void MainWindow::connect_check_boxes()
{
    const auto on = [this](QCheckBox* box, void (MainWindow::*slot)(int)) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 7, 0)
        connect(box, &QCheckBox::checkStateChanged, this,
                [this, slot](Qt::CheckState state) { (this->*slot)(state); });
#else
        connect(box, &QCheckBox::stateChanged, this, slot);
#endif
    };
    on(ui->checkBox, &MainWindow::check_all);
    on(ui->checkBox_mianji, &MainWindow::check_mianji);
    on(ui->checkBox_juli, &MainWindow::check_juli);
    on(ui->checkBox_hangdian, &MainWindow::check_hangdian);
    on(ui->checkBox_hangxian, &MainWindow::check_hangxian);
    on(ui->checkBox_hangji, &MainWindow::check_hangji);
    on(ui->checkBox_fangyang, &MainWindow::check_fangyang);
}

// Map

void MainWindow::start_web_view()
{
    ui->map->setPage(new map_page(ui->map));
    // Its entries would only leave the page or show its source.
    ui->map->setContextMenuPolicy(Qt::PreventContextMenu);
    web_channel = new QWebChannel(this);
    // Without a parent: it lives as long as the process, like the page it serves.
    web_channel->registerObject(QStringLiteral("bridge_name"), new bridge);
    ui->map->page()->setWebChannel(web_channel);

    QWebEngineSettings* settings = ui->map->settings();
    for (const QWebEngineSettings::WebAttribute attribute :
         {QWebEngineSettings::JavascriptEnabled,
          QWebEngineSettings::LocalContentCanAccessRemoteUrls,
          QWebEngineSettings::LocalContentCanAccessFileUrls, QWebEngineSettings::AutoLoadImages,
          QWebEngineSettings::PluginsEnabled, QWebEngineSettings::AllowRunningInsecureContent})
        settings->setAttribute(attribute, true);

    // A page begins in Chinese; one that was loaded later learns the language here.
    connect(ui->map->page(), &QWebEnginePage::loadFinished, this, [this](bool loaded) {
        if (loaded && ui->map->url().isLocalFile()) // not what stands for a missing page
            run_script(QStringLiteral("changelanguage(%1)").arg(language));
    });
    load_page(QStringLiteral("/index.html"));
    ui->map->raise();
    ui->widget_graphic->lower();
}

void MainWindow::load_page(const QString& page)
{
    const QUrl url = map_page::url_of(page);
    if (page == QLatin1String("/index_google.html"))
        qDebug() << "Loading URL:" << url;
    ui->map->page()->load(url);
}

void MainWindow::run_script(const QString& script)
{
    ui->map->page()->runJavaScript(script);
}

void MainWindow::choose_map(QAction* chosen)
{
    if (!chosen->isChecked()) {
        chosen->setChecked(true);
        return;
    }
    struct provider
    {
        QAction* action;
        const char* page;
    };
    const provider providers[] = {{ui->action_gaode, "/index.html"},
                                  {ui->action_google, "/index_google.html"},
                                  {ui->action_sky, "/index_tiandi.html"}};
    for (const provider& one : providers) {
        if (one.action != chosen)
            one.action->setChecked(false);
    }
    for (const provider& one : providers) {
        if (one.action == chosen)
            load_page(QLatin1String(one.page));
    }
}

void MainWindow::draw_map(QString script)
{
    qDebug() << "map script length:" << script.size();
    run_script(script);
}

void MainWindow::delete_map(QString /*script*/) {}

void MainWindow::on_pushButton_map_clicked()
{
    if (map_shown == 1)
        return;
    map_shown = 1;
    style_view_buttons();
    ui->map->raise();
    ui->widget_graphic->lower();
}

void MainWindow::on_pushButton_graph_clicked()
{
    if (map_shown == 0)
        return;
    map_shown = 0;
    style_view_buttons();
    ui->widget_graphic->raise();
    ui->map->lower();
}

void MainWindow::on_tuxing_control_clicked()
{
    frame_shown = frame_shown == 0 ? 1 : 0;
    ui->frame->setVisible(frame_shown != 0);
}

// Buttons that become signals

void MainWindow::on_data_read_clicked()
{
    emit send_btm_sign_to_threadkey_read_data(table_list, data_msg, data_msg_altitude,
                                              point_msg_all);
}

void MainWindow::on_data_to_device_clicked()
{
    emit send_btm_sign_to_threadkey_device(model, table_list, data_msg_altitude);
}

void MainWindow::on_data_output_file_clicked()
{
    auto* dialog = new outputWindow(this);
    dialog->set_parent_view(ui->map, ui->widget_graphic, map_shown);
    dialog->model = model;
    dialog->js = js;
    dialog->data_msg_altitude = data_msg_altitude;
    dialog->table_list = table_list;
    dialog->point_msg_all = point_msg_all;
    dialog->mode = mode_flag;
    dialog->sys_index = sys_index;

    connect(this, &MainWindow::variableChanged, dialog, &outputWindow::setlanguage);
    emit variableChanged(language);

    using out = outputWindow;
    using hub = thread_key;
    const auto join = [this, dialog](auto signal, auto slot) {
        connect(dialog, signal, key, slot);
    };
    join(&out::send_btm_sign_to_threadkey_kml, &hub::recv_kml_sign_from_output);
    join(&out::send_btm_sign_to_threadkey_picture, &hub::recv_picture_sign_from_output);
    join(&out::send_btm_sign_to_threadkey_one_csv, &hub::recv_one_csv_sign_from_output);
    join(&out::send_btm_sign_to_threadkey_more_csv, &hub::recv_more_csv_sign_from_output);
    join(&out::send_btm_sign_to_threadkey_one_dxf, &hub::recv_one_dxf_sign_from_output);
    join(&out::send_btm_sign_to_threadkey_more_dxf, &hub::recv_more_dxf_sign_from_output);
    join(&out::send_btm_sign_to_threadkey_one_gpx, &hub::recv_one_gpx_sign_from_output);
    join(&out::send_btm_sign_to_threadkey_more_gpx, &hub::recv_more_gpx_sign_from_output);
    join(&out::send_btm_sign_to_threadkey_excel, &hub::recv_excel_sign_from_output);

    show_in_the_middle(dialog);
}

void MainWindow::on_data_input_file_clicked()
{
    auto* dialog = new input_window(this);
    connect(this, &MainWindow::variableChanged, dialog, &input_window::setlanguage);
    emit variableChanged(language);
    connect(dialog, &input_window::send_btm_sign_to_mainwindow_import_file, this,
            &MainWindow::recv_input_signal);
    show_in_the_middle(dialog, Qt::NonModal);
}

void MainWindow::show_in_the_middle(QWidget* dialog, Qt::WindowModality modality)
{
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(modality);
    dialog->move(geometry().center() - dialog->rect().center());
    dialog->show();
    // Above this window also where it does not block it: a box of this window would
    // otherwise bring this window before it, and hide it.
    if (modality == Qt::NonModal)
        dialog->windowHandle()->setTransientParent(windowHandle());
}

void MainWindow::on_delect_tableandmap_clicked()
{
    emit send_btm_sign_to_threadkey_delete_tableandmap(model, table_list, data_msg,
                                                       data_msg_altitude, point_msg_all);
    for (QCheckBox* box :
         {ui->checkBox, ui->checkBox_mianji, ui->checkBox_juli, ui->checkBox_hangdian,
          ui->checkBox_hangxian, ui->checkBox_hangji, ui->checkBox_fangyang})
        box->setChecked(false);
}

void MainWindow::on_print_clicked()
{
    auto* const form = new print(this);
    form->add_print_image(ui->widget_graphic);
    show_in_the_middle(form);
}

void MainWindow::on_softwareupgrade_clicked()
{
    auto* const form = new updateForm(this);
    form->language = language;
    connect(form, &updateForm::send_dowmfile_signal_to_software_upgrade, key,
            &thread_key::recv_updata_form_down_file);
    connect(key, &thread_key::send_set_ui_to_updata_form, form, &updateForm::set_ui);
    show_in_the_middle(form);
    emit send_btm_sign_to_threadkey_software_upgrade(version, language);
}

void MainWindow::on_hardwareupgrade_clicked()
{
    auto* const form = new hardwareupdata(this);
    connect(this, &MainWindow::variableChanged, form, &hardwareupdata::setlanguage);
    emit variableChanged(language);
    connect(form, &hardwareupdata::send_signal_cloud_updata, key,
            &thread_key::recv_cloud_updata_from_hardware_updata);
    connect(form, &hardwareupdata::send_signal_sure, key,
            &thread_key::recv_sure_from_hardware_updata);
    connect(form, &hardwareupdata::send_signal_local_updata, key,
            &thread_key::recv_local_updata_from_hardware_updata);
    connect(key, &thread_key::send_add_comboBox_to_hardware_updata_form, form,
            &hardwareupdata::recv_add_comboBox_value);
    connect(key, &thread_key::send_updata_progress_hardware_updata_form, form,
            &hardwareupdata::recv_updata_progress_value);
    show_in_the_middle(form);
}

void MainWindow::on_marlund_clicked()
{
    emit send_btm_sign_to_threadkey_marlund();
}

void MainWindow::show_coordinate_settings()
{
    if (coordinate_form != nullptr) {
        coordinate_form->close();
        delete coordinate_form; // clears the pointer
    }
    qDebug() << "!!!!!" << mode_flag << sys_index;
    coordinate_form = new zuobiaoForm_homepage(this);
    connect(this, &MainWindow::zuobiaochanged, coordinate_form, &zuobiaoForm_homepage::set_up);
    connect(coordinate_form, &zuobiaoForm_homepage::modeflagchange, this, &MainWindow::setmodeflag);
    connect(coordinate_form, &QObject::destroyed, this, [this] {
        coordinate_form = nullptr;
        qDebug() << "坐标窗口已销毁";
    });
    emit zuobiaochanged(mode_flag, js, sys_index, language);
    coordinate_form->setWindowModality(Qt::ApplicationModal);
    coordinate_form->show();
}

// What comes back

void MainWindow::set_progressbar(int percent)
{
    ui->progressBar->setValue(percent);
    ui->progressLabel->setText(QString::number(percent) + QLatin1Char('%'));
}

void MainWindow::set_read_button(bool enabled)
{
    ui->data_read->setEnabled(enabled);
    // A style sheet shows the same image either way: let the lock be seen.
    auto* faded = new QGraphicsOpacityEffect(ui->data_read);
    faded->setOpacity(enabled ? 1.0 : 0.45);
    ui->data_read->setGraphicsEffect(faded); // replaces and deletes the one before
}

void MainWindow::set_LED(bool connected)
{
    set_lamp(ui->LED, connected);
}

void MainWindow::set_LED_2(bool connected)
{
    set_lamp(ui->LED_2, connected);
}

void MainWindow::set_lamp(QLabel* lamp, bool connected)
{
    m_connected = connected;
    write_connection_text();
    lamp->setStyleSheet(lamp_style(connected ? lamp_green : lamp_red, lamp_radius));
}

void MainWindow::write_connection_text()
{
    const QString text = language == 0 ? (m_connected ? tr("已连接") : tr("未连接"))
                                       : (m_connected ? tr("connect") : tr("disconnect"));
    Ui::MainWindow::set_fitting(ui->label_serial, text);
}

void MainWindow::set_information(QString checked, QString areameter, QString areamu, QString length,
                                 QString points, QString records, QList<widgetData> checked_data)
{
    Ui::MainWindow::set_fitting(ui->totalchecked, checked);
    Ui::MainWindow::set_fitting(ui->label_15, checked);
    Ui::MainWindow::set_fitting(ui->areameter, areameter);
    Ui::MainWindow::set_fitting(ui->label_24, areameter);
    Ui::MainWindow::set_fitting(ui->areamu, areamu);
    Ui::MainWindow::set_fitting(ui->label_25, areamu);
    Ui::MainWindow::set_fitting(ui->distmeter, length);
    Ui::MainWindow::set_fitting(ui->label_26, length);
    Ui::MainWindow::set_fitting(ui->label_point, points);
    Ui::MainWindow::set_fitting(ui->label_tiao, records);

    graphic_widget& drawing = *ui->widget_graphic;
    drawing.draw_data.clear();
    drawing.draw_rows.clear();
    for (const widgetData& one : std::as_const(checked_data)) {
        drawing.draw_rows.append({static_cast<int>(drawing.draw_data.size()), one.row});
        drawing.draw_data.append(one.data);
        drawing.frame_shown = frame_shown;
    }
    drawing.update();
}

void MainWindow::setmodeflag(int m, JsonFileManager* store, int index)
{
    mode_flag = m;
    js = store;
    sys_index = index;
}

void MainWindow::recv_input_signal(QString path)
{
    emit send_btm_sign_to_threadkey_import_file(path, mode_flag, js, sys_index);
}

// Boxes

void MainWindow::show_instructions()
{
    const QStringList lines{
        tr("1、主要流程：连接设备>>获取数据>>选择数据>>地图、图形显示>>数据、图形导出"),
        tr("2、获取数据：使用数据线将设备与电脑连接，点击获取数据按钮，软件会自动识别设备，并获取设"
           "备中的数据"),
        tr("3、选择数据：可以直接勾选数据，也可以在数据列表中双击数据条目选择数据，还可以勾选全选按"
           "钮选中所有数据"),
        tr("4、删除数据：将选中的数据全部删除"),
        tr("5、地图显示：地图上会将在数据列表中勾选的数据以图形的方式展现在地图上，并将定位到其地图"
           "中心位置，地图必须在有网络的情况下使用"),
        tr("6、图形显示：在画板上将在数据列表中勾选的数据画成对应的图形（上北下南），每一条数据的图"
           "形在起始点位置会有一个小圆圈，并且旁边会有一个数值索引，用于图形导出时与导出信息对应"),
        tr("7、数据导出：导出的内容有经纬度，海拔，距离，面积和采集时间等信息，文件格式为可以为CSV"
           "、DXF、KML、GPX，导出文件可以保存到一个文件或者进行文件条目单独保存为多个文件，用户可根"
           "据实际需要进行选择导出文件保存方式。导出文件以其对应的采集时间命名"),
        tr("8、数据导入:"
           "导出的数据文件进行再次导入到软件进行查看测量距离，面积、测量图形和采集时间等信息"),
        tr("9、图形导出：以截图方式保存显示的地图或者图形"),
        tr("10、坐标格式：用于设置导出数据的格式，默认格式是“度”"),
        tr("11、关于：本软件信息"),
    };
    QMessageBox box(this);
    box.setWindowTitle(tr("使用说明"));
    box.setText(lines.join(QLatin1Char('\n')));
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
}

void MainWindow::show_about()
{
    QMessageBox box(this);
    box.setWindowTitle(tr("关于 Velmo"));
    box.setText(tr("软件名称：Velmo\n软件版本：") + version + QLatin1Char('\n') +
                QString::fromUtf8(maker::contact));
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
}

void MainWindow::show_download()
{
    QMessageBox box(this);
    box.setWindowTitle(tr("资料下载"));
    box.setText(tr("功能等待更新"));
    box.setStandardButtons(QMessageBox::Ok);
    box.exec();
}

bool MainWindow::confirm_quit()
{
    const bool english = language != 0;
    return QMessageBox::question(
               this, english ? QStringLiteral("Quit") : QStringLiteral("退出确认"),
               english ? QStringLiteral("Are you sure you want to quit the program?")
                       : QStringLiteral("您确定要退出程序吗？"),
               QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

void MainWindow::quit_if_confirmed()
{
    if (!confirm_quit())
        return;
    m_quit_confirmed = true; // quitting closes the window, which need not ask again
    QCoreApplication::quit();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!m_quit_confirmed)
        quit_if_confirmed();
    event->setAccepted(m_quit_confirmed);
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    ui->resize_with(event->size());
}
