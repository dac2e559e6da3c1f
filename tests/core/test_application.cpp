// The star: the long-lived objects and their 54 connections.

#include "coordinates/json_file_manager.h"
#include "core/application.h"
#include "core/main_window.h"
#include "core/main_window_form.h"
#include "core/thread_key.h"
#include "device/adb_string_channel.h"
#include "device/data_to_device.h"
#include "device/serial_thread.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "presentation/graphic_widget.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"
#include "updates/hardware_upgrade.h"
#include "updates/software_upgrade.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QMutex>
#include <QPushButton>
#include <QSerialPort>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QTimer>
#include <QTranslator>
#include <QWebChannel>
#include <QWebEngineView>

class test_application : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void font_is_the_default_one();
    void objects_are_made_in_their_order();
    void workers_share_the_serial_port();
    void workers_log_their_labels_and_end();
    void workers_inherit_their_priority();
    void everything_lives_in_one_thread();
    void arguments_are_known_to_the_meta_objects();
    void an_emit_returns_after_the_tables_are_rebuilt();
    void menus_are_translated_at_first();
    void yes_ends_the_program_data();
    void yes_ends_the_program();
    void all_connections_stand_once();

private:
    application_objects m_objects{};
    QStringList m_start_lines;
    QList<QThread::Priority> m_priorities; ///< of the workers' threads as they ran
    QList<QObject*> m_made; ///< all objects of this thread, in the order of their making
};

// The hook of object inspectors: called at the making of each QObject.
QT_BEGIN_NAMESPACE
extern Q_CORE_EXPORT quintptr qtHookData[];
QT_END_NAMESPACE

namespace {

constexpr int add_object_hook = 3;

QList<QObject*> made_here;

/// The priority with which each thread was started that logs.
QList<QThread::Priority> priorities_here;
QMutex priorities_lock;
QtMessageHandler handler_before = nullptr;

void note_priority(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (text.contains(" ID: ")) {
        const QMutexLocker lock(&priorities_lock);
        priorities_here.append(QThread::currentThread()->priority());
    }
    handler_before(type, context, text);
}

void note_object(QObject* one)
{
    static const Qt::HANDLE here = QThread::currentThreadId();
    if (QThread::currentThreadId() == here) // the web engine makes objects elsewhere too
        made_here.append(one);
}

} // namespace

void test_application::initTestCase()
{
    qputenv("PATH", ""); // no adb: nothing outside this process takes part
    install_default_font();
    const log_capture log;
    handler_before = qInstallMessageHandler(note_priority);
    note_object(nullptr); // from this thread
    qtHookData[add_object_hook] = reinterpret_cast<quintptr>(&note_object);
    m_objects = make_application_objects();
    qtHookData[add_object_hook] = 0;
    m_made = made_here;
    for (QThread* worker :
         {static_cast<QThread*>(m_objects.key), static_cast<QThread*>(m_objects.serial),
          static_cast<QThread*>(m_objects.import), static_cast<QThread*>(m_objects.exporter),
          static_cast<QThread*>(m_objects.upload), static_cast<QThread*>(m_objects.software),
          static_cast<QThread*>(m_objects.firmware)})
        QVERIFY(worker->wait(10'000));
    qInstallMessageHandler(handler_before);
    m_start_lines = log.texts();
    m_priorities = priorities_here;
}

void test_application::font_is_the_default_one()
{
    QCOMPARE(QApplication::font().pixelSize(), 13);
    QCOMPARE(QApplication::font().family(), QStringLiteral("Microsoft YaHei"));
}

void test_application::objects_are_made_in_their_order()
{
    // The last of an address is the one that lives: memory is used again.
    qsizetype before = -1;
    for (QObject* one :
         {static_cast<QObject*>(m_objects.key), static_cast<QObject*>(m_objects.window),
          static_cast<QObject*>(m_objects.serial), static_cast<QObject*>(m_objects.import),
          static_cast<QObject*>(m_objects.exporter), static_cast<QObject*>(m_objects.upload),
          static_cast<QObject*>(m_objects.software), static_cast<QObject*>(m_objects.firmware)}) {
        const qsizetype place = m_made.lastIndexOf(one);
        QVERIFY(place > before);
        before = place;
    }
    // Within the window the store of coordinate systems comes last: behind the
    // timer, which is behind the tables.
    const qsizetype store = m_made.lastIndexOf(m_objects.window->js);
    QVERIFY(store < m_made.lastIndexOf(m_objects.serial));
    QVERIFY(store > m_made.lastIndexOf(m_objects.window->timer));
    QVERIFY(m_made.lastIndexOf(m_objects.window->timer) >
            m_made.lastIndexOf(m_objects.window->model));
    QVERIFY(m_made.lastIndexOf(m_objects.window->model) >
            m_made.lastIndexOf(m_objects.window->web_channel));
    QVERIFY(m_made.lastIndexOf(m_objects.window->web_channel) >
            m_made.lastIndexOf(m_objects.window->ui->menuBar));
    QVERIFY(m_made.lastIndexOf(m_objects.window->ui->action_english) >
            m_made.lastIndexOf(m_objects.window->ui->tuxing_control));
}

void test_application::workers_share_the_serial_port()
{
    QVERIFY(m_objects.serial->port != nullptr);
    QCOMPARE(m_objects.upload->port, m_objects.serial->port);
    QCOMPARE(m_objects.firmware->port, m_objects.serial->port);
    QCOMPARE(m_objects.window->key, m_objects.key);
}

void test_application::workers_log_their_labels_and_end()
{
    const auto lines_with = [this](const QString& label) {
        return m_start_lines.filter(QRegularExpression("^" + label + " 0x[0-9a-f]+$")).size();
    };
    for (const char* label : {"thread_key ID:", "serial thread ID:", "file_import_thread ID:",
                              "file_export_thread ID:", "data_to_device ID:"})
        QCOMPARE(lines_with(QLatin1String(label)), 1);
    // The firmware worker has no label of its own and logs this one as well.
    QCOMPARE(lines_with("software_upgrade ID:"), 2);
    QCOMPARE(lines_with("hardware_upgrade ID:"), 0);
    // These two are declared only.
    QCOMPARE(lines_with("table_display ID:"), 0);
    QCOMPARE(lines_with("other_information ID:"), 0);
}

void test_application::workers_inherit_their_priority()
{
    QCOMPARE(m_priorities, QList<QThread::Priority>(7, QThread::InheritPriority));
}

void test_application::everything_lives_in_one_thread()
{
    for (QObject* one :
         {static_cast<QObject*>(m_objects.key), static_cast<QObject*>(m_objects.window),
          static_cast<QObject*>(m_objects.serial), static_cast<QObject*>(m_objects.import),
          static_cast<QObject*>(m_objects.exporter), static_cast<QObject*>(m_objects.upload),
          static_cast<QObject*>(m_objects.software), static_cast<QObject*>(m_objects.firmware)})
        QCOMPARE(one->thread(), QThread::currentThread());
}

void test_application::arguments_are_known_to_the_meta_objects()
{
    int looked_at = 0;
    for (const QObject* one :
         {static_cast<QObject*>(m_objects.key), static_cast<QObject*>(m_objects.window),
          static_cast<QObject*>(m_objects.serial), static_cast<QObject*>(m_objects.import),
          static_cast<QObject*>(m_objects.exporter), static_cast<QObject*>(m_objects.upload),
          static_cast<QObject*>(m_objects.software), static_cast<QObject*>(m_objects.firmware)}) {
        const QMetaObject* meta = one->metaObject();
        for (int at = meta->methodOffset(); at < meta->methodCount(); ++at) {
            const QMetaMethod method = meta->method(at);
            for (int k = 0; k < method.parameterCount(); ++k, ++looked_at)
                QVERIFY2(method.parameterMetaType(k).isValid(),
                         method.methodSignature().constData());
        }
    }
    QVERIFY(looked_at > 300);
}

void test_application::an_emit_returns_after_the_tables_are_rebuilt()
{
    measuringData record;
    record.method = QStringLiteral("面积");
    emit m_objects.serial->read_data_finished({record}, {"1,2"}, {"1,2,3\n"}, {{point_msg()}});
    QCOMPARE(m_objects.window->model->rowCount(), 1);
    QCOMPARE(m_objects.window->model_area->rowCount(), 1);
}

void test_application::menus_are_translated_at_first()
{
    // A switch sets their texts literally; a window made under a translator has
    // its words.
    QTranslator english;
    QVERIFY(english.load("./en_CN.qm"));
    QVERIFY(QCoreApplication::installTranslator(&english));
    const MainWindow window;
    QCoreApplication::removeTranslator(&english);
    const std::pair<const QAction*, QString> texts[] = {
        {window.ui->menu_file->menuAction(), "File"},
        {window.ui->action_quit, "Quit"},
        {window.ui->menu_map->menuAction(), "Map Options"},
        {window.ui->action_google, "Google Map"},
        {window.ui->action_sky, "Sky Map"},
        {window.ui->action_about, "About of Velmo office"}};
    for (const auto& [action, text] : texts)
        QCOMPARE(action->text(), text);
}

void test_application::yes_ends_the_program_data()
{
    QTest::addColumn<bool>("by_menu");
    QTest::newRow("the window's own button") << false;
    QTest::newRow("the menu") << true;
}

void test_application::yes_ends_the_program()
{
    QFETCH(bool, by_menu);
    MainWindow window;
    window.show();
    box_watcher watcher;
    watcher.answer = QMessageBox::Yes;
    QTimer::singleShot(0, &window, [&] {
        if (by_menu)
            window.ui->action_quit->trigger();
        else
            window.close();
    });
    QCOMPARE(QApplication::exec(), 0);
    QCOMPARE(watcher.boxes.size(), 1); // quitting closes the window and does not ask again
    QVERIFY(!window.isVisible());
}

void test_application::all_connections_stand_once()
{
    const application_objects& o = m_objects;
    int rows = 0;
    // A connection is there exactly once when it can be taken away exactly once.
    const auto row = [&rows](int number, auto* sender, auto signal, auto* receiver, auto slot) {
        QCOMPARE(number, ++rows);
        const QByteArray words = QByteArray("connection ") + QByteArray::number(number);
        QVERIFY2(QObject::disconnect(sender, signal, receiver, slot), words.constData());
        QVERIFY2(!QObject::disconnect(sender, signal, receiver, slot), words.constData());
    };
    row(1, o.key, &thread_key::data_finished, o.window, &MainWindow::recast_table);
    row(2, o.key, &thread_key::key_set_progressbar, o.window, &MainWindow::set_progressbar);
    row(3, o.key, &thread_key::draw_map_signal, o.window, &MainWindow::draw_map);
    row(4, o.key, &thread_key::delete_map_signal, o.window, &MainWindow::delete_map);
    row(5, o.key, &thread_key::information, o.window, &MainWindow::set_information);
    row(6, o.key, &thread_key::send_delete_table_data, o.window, &MainWindow::reset_table_data);
    row(7, o.key, &thread_key::send_LED_control, o.window, &MainWindow::set_LED);
    row(8, o.key, &thread_key::send_LED_2_control, o.window, &MainWindow::set_LED_2);
    row(9, o.window, &MainWindow::send_btm_sign_to_threadkey_read_data, o.key,
        &thread_key::recv_read_data_sign_from_velmo);
    row(10, o.window, &MainWindow::send_btm_sign_to_threadkey_import_file, o.key,
        &thread_key::recv_import_file_sign_from_velmo);
    row(11, o.window, &MainWindow::send_btm_sign_to_threadkey_device, o.key,
        &thread_key::recv_device_sign_from_velmo);
    row(12, o.window, &MainWindow::send_btm_sign_to_threadkey_software_upgrade, o.key,
        &thread_key::recv_software_upgrade_sign_from_velmo);
    row(13, o.window, &MainWindow::send_btm_sign_to_threadkey_marlund, o.key,
        &thread_key::recv_marlund_sign_from_velmo);
    row(14, o.window, &MainWindow::send_btm_sign_to_threadkey_delete_tableandmap, o.key,
        &thread_key::recv_delete_sign_from_velmo);
    row(15, o.window, &MainWindow::send_check_sign_to_threadkey_other, o.key,
        &thread_key::check_countmsg);
    row(16, o.window, &MainWindow::send_check_all, o.key, &thread_key::recv_check_all);
    row(17, o.window, &MainWindow::send_check_mianji, o.key, &thread_key::recv_check_mianji);
    row(18, o.window, &MainWindow::send_check_juli, o.key, &thread_key::recv_check_juli);
    row(19, o.window, &MainWindow::send_check_hangdian, o.key, &thread_key::recv_check_hangdian);
    row(20, o.window, &MainWindow::send_check_hangxian, o.key, &thread_key::recv_check_hangxian);
    row(21, o.window, &MainWindow::send_check_hangji, o.key, &thread_key::recv_check_hangji);
    row(22, o.window, &MainWindow::send_check_fangyang, o.key, &thread_key::recv_check_fangyang);
    row(23, o.window, &MainWindow::send_all_table_change, o.key,
        &thread_key::recv_all_table_change);
    row(24, o.window, &MainWindow::send_area_table_change, o.key,
        &thread_key::recv_area_table_change);
    row(25, o.window, &MainWindow::send_dist_table_change, o.key,
        &thread_key::recv_dist_table_change);
    row(26, o.window, &MainWindow::send_point_table_change, o.key,
        &thread_key::recv_point_table_change);
    row(27, o.window, &MainWindow::send_line_table_change, o.key,
        &thread_key::recv_line_table_change);
    row(28, o.window, &MainWindow::send_track_table_change, o.key,
        &thread_key::recv_track_table_change);
    row(29, o.window, &MainWindow::send_fangyang_table_change, o.key,
        &thread_key::recv_fangyang_table_change);
    row(30, o.window, &MainWindow::relation_table, o.key, &thread_key::change_table_relation);
    row(31, o.key, &thread_key::send_cmd_to_serial_thread, o.serial,
        &serial_thread::recv_cmd_from_key);
    row(32, o.serial, &serial_thread::read_data_finished, o.key,
        &thread_key::recv_read_data_finished);
    row(33, o.serial, &serial_thread::read_data_set_progressbar, o.key,
        &thread_key::recv_set_progressbar);
    row(34, o.serial, &serial_thread::LED_control, o.key,
        &thread_key::recv_LED_control_from_serial);
    row(35, o.serial, &serial_thread::LED_2_control, o.key,
        &thread_key::recv_LED_2_control_from_serial);
    row(36, o.serial, &serial_thread::button_control, o.window, &MainWindow::set_read_button);
    row(37, o.window, &MainWindow::variableChanged, o.import, &file_import_thread::setlanguage);
    row(38, o.key, &thread_key::send_cmd_to_file_import_thread, o.import,
        &file_import_thread::import_file);
    row(39, o.import, &file_import_thread::read_data_finished, o.key,
        &thread_key::recv_import_data_finished);
    row(40, o.window, &MainWindow::variableChanged, o.exporter, &file_export_thread::setlanguage);
    row(41, o.key, &thread_key::send_cmd_to_file_export_thread, o.exporter,
        &file_export_thread::export_file);
    row(42, o.key, &thread_key::send_cmd_to_file_export_thread_check_flag, o.exporter,
        &file_export_thread::export_file_check_flag);
    row(43, o.key, &thread_key::send_cmd_to_picture_export_thread, o.exporter,
        &file_export_thread::picture_export);
    row(44, o.serial, &serial_thread::adbchannel_in, o.upload, &data_to_device::channel_in);
    row(45, o.serial, &serial_thread::adbchannel_out, o.upload, &data_to_device::channel_out);
    row(46, o.key, &thread_key::send_cmd_to_import_data_to_device_thread, o.upload,
        &data_to_device::import_data_to_device);
    row(47, o.key, &thread_key::send_cmd_to_software_upgrade_thread, o.software,
        &software_upgrade::upgrade_request);
    row(48, o.key, &thread_key::send_cmd_to_software_upgrade_thread_down_file, o.software,
        &software_upgrade::download_file);
    row(49, o.software, &software_upgrade::send_set_ui_signal_to_software_upgrade, o.key,
        &thread_key::recv_set_ui_from_soft_upgrade_thread);
    row(50, o.key, &thread_key::send_cloud_updata_to_hardware_updata_thread, o.firmware,
        &hardware_upgrade::recv_form_cloud_updata);
    row(51, o.key, &thread_key::send_sure_to_hardware_updata_thread, o.firmware,
        &hardware_upgrade::recv_form_sure);
    row(52, o.key, &thread_key::send_local_updata_to_hardware_updata_thread, o.firmware,
        &hardware_upgrade::recv_form_local_updata);
    row(53, o.firmware, &hardware_upgrade::add_comboBox_value, o.key,
        &thread_key::recv_add_comboBox_value_from_hardware_upgrade_thread);
    row(54, o.firmware, &hardware_upgrade::updata_progress, o.key,
        &thread_key::recv_updata_progress_from_hardware_upgrade_thread);
    QCOMPARE(rows, 54);
    // Nothing else is joined: the hub, the window and the workers have no connection
    // left.
    for (QObject* one : {static_cast<QObject*>(o.key), static_cast<QObject*>(o.window),
                         static_cast<QObject*>(o.serial), static_cast<QObject*>(o.import),
                         static_cast<QObject*>(o.exporter), static_cast<QObject*>(o.upload),
                         static_cast<QObject*>(o.software), static_cast<QObject*>(o.firmware)}) {
        const QMetaObject* meta = one->metaObject();
        for (int at = meta->methodOffset(); at < meta->methodCount(); ++at) {
            const QMetaMethod method = meta->method(at);
            if (method.methodType() == QMetaMethod::Signal)
                QVERIFY2(!QObject::disconnect(one, method, nullptr, QMetaMethod()),
                         method.methodSignature().constData());
        }
    }
}

QTEST_MAIN(test_application)
#include "test_application.moc"
