#include "core/application.h"

#include "coordinates/json_file_manager.h"
#include "core/main_window.h"
#include "core/thread_key.h"
#include "device/adb_string_channel.h"
#include "device/data_to_device.h"
#include "device/serial_thread.h"
#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "presentation/graphic_widget.h"
#include "updates/hardware_upgrade.h"
#include "updates/software_upgrade.h"

#include <QApplication>
#include <QDebug>
#include <QFont>
#include <QSerialPort>
#include <QSslSocket>
#include <QStandardItemModel>
#include <QWebEngineView>

namespace {

void join_hub_and_window(thread_key* key, MainWindow* window)
{
    using hub = thread_key;
    using win = MainWindow;
    const auto join = [](auto... ends) { QObject::connect(ends...); };

    join(key, &hub::data_finished, window, &win::recast_table);
    join(key, &hub::key_set_progressbar, window, &win::set_progressbar);
    join(key, &hub::draw_map_signal, window, &win::draw_map);
    join(key, &hub::delete_map_signal, window, &win::delete_map);
    join(key, &hub::information, window, &win::set_information);
    join(key, &hub::send_delete_table_data, window, &win::reset_table_data);
    join(key, &hub::send_LED_control, window, &win::set_LED);
    join(key, &hub::send_LED_2_control, window, &win::set_LED_2);

    join(window, &win::send_btm_sign_to_threadkey_read_data, key,
         &hub::recv_read_data_sign_from_velmo);
    join(window, &win::send_btm_sign_to_threadkey_import_file, key,
         &hub::recv_import_file_sign_from_velmo);
    join(window, &win::send_btm_sign_to_threadkey_device, key, &hub::recv_device_sign_from_velmo);
    join(window, &win::send_btm_sign_to_threadkey_software_upgrade, key,
         &hub::recv_software_upgrade_sign_from_velmo);
    join(window, &win::send_btm_sign_to_threadkey_marlund, key, &hub::recv_marlund_sign_from_velmo);
    join(window, &win::send_btm_sign_to_threadkey_delete_tableandmap, key,
         &hub::recv_delete_sign_from_velmo);
    join(window, &win::send_check_sign_to_threadkey_other, key, &hub::check_countmsg);
    join(window, &win::send_check_all, key, &hub::recv_check_all);
    join(window, &win::send_check_mianji, key, &hub::recv_check_mianji);
    join(window, &win::send_check_juli, key, &hub::recv_check_juli);
    join(window, &win::send_check_hangdian, key, &hub::recv_check_hangdian);
    join(window, &win::send_check_hangxian, key, &hub::recv_check_hangxian);
    join(window, &win::send_check_hangji, key, &hub::recv_check_hangji);
    join(window, &win::send_check_fangyang, key, &hub::recv_check_fangyang);
    join(window, &win::send_all_table_change, key, &hub::recv_all_table_change);
    join(window, &win::send_area_table_change, key, &hub::recv_area_table_change);
    join(window, &win::send_dist_table_change, key, &hub::recv_dist_table_change);
    join(window, &win::send_point_table_change, key, &hub::recv_point_table_change);
    join(window, &win::send_line_table_change, key, &hub::recv_line_table_change);
    join(window, &win::send_track_table_change, key, &hub::recv_track_table_change);
    join(window, &win::send_fangyang_table_change, key, &hub::recv_fangyang_table_change);
    join(window, &win::relation_table, key, &hub::change_table_relation);
}

void join_serial(serial_thread* serial, thread_key* key, MainWindow* window)
{
    QObject::connect(key, &thread_key::send_cmd_to_serial_thread, serial,
                     &serial_thread::recv_cmd_from_key);
    QObject::connect(serial, &serial_thread::read_data_finished, key,
                     &thread_key::recv_read_data_finished);
    QObject::connect(serial, &serial_thread::read_data_set_progressbar, key,
                     &thread_key::recv_set_progressbar);
    QObject::connect(serial, &serial_thread::LED_control, key,
                     &thread_key::recv_LED_control_from_serial);
    QObject::connect(serial, &serial_thread::LED_2_control, key,
                     &thread_key::recv_LED_2_control_from_serial);
    QObject::connect(serial, &serial_thread::button_control, window, &MainWindow::set_read_button);
}

void join_import(file_import_thread* import, thread_key* key, MainWindow* window)
{
    QObject::connect(window, &MainWindow::variableChanged, import,
                     &file_import_thread::setlanguage);
    QObject::connect(key, &thread_key::send_cmd_to_file_import_thread, import,
                     &file_import_thread::import_file);
    QObject::connect(import, &file_import_thread::read_data_finished, key,
                     &thread_key::recv_import_data_finished);
}

void join_export(file_export_thread* exporter, thread_key* key, MainWindow* window)
{
    QObject::connect(window, &MainWindow::variableChanged, exporter,
                     &file_export_thread::setlanguage);
    QObject::connect(key, &thread_key::send_cmd_to_file_export_thread, exporter,
                     &file_export_thread::export_file);
    QObject::connect(key, &thread_key::send_cmd_to_file_export_thread_check_flag, exporter,
                     &file_export_thread::export_file_check_flag);
    QObject::connect(key, &thread_key::send_cmd_to_picture_export_thread, exporter,
                     &file_export_thread::picture_export);
}

void join_upload(data_to_device* upload, serial_thread* serial, thread_key* key)
{
    QObject::connect(serial, &serial_thread::adbchannel_in, upload, &data_to_device::channel_in);
    QObject::connect(serial, &serial_thread::adbchannel_out, upload, &data_to_device::channel_out);
    QObject::connect(key, &thread_key::send_cmd_to_import_data_to_device_thread, upload,
                     &data_to_device::import_data_to_device);
}

void join_software(software_upgrade* software, thread_key* key)
{
    QObject::connect(key, &thread_key::send_cmd_to_software_upgrade_thread, software,
                     &software_upgrade::upgrade_request);
    QObject::connect(key, &thread_key::send_cmd_to_software_upgrade_thread_down_file, software,
                     &software_upgrade::download_file);
    QObject::connect(software, &software_upgrade::send_set_ui_signal_to_software_upgrade, key,
                     &thread_key::recv_set_ui_from_soft_upgrade_thread);
}

void join_firmware(hardware_upgrade* firmware, thread_key* key)
{
    QObject::connect(key, &thread_key::send_cloud_updata_to_hardware_updata_thread, firmware,
                     &hardware_upgrade::recv_form_cloud_updata);
    QObject::connect(key, &thread_key::send_sure_to_hardware_updata_thread, firmware,
                     &hardware_upgrade::recv_form_sure);
    QObject::connect(key, &thread_key::send_local_updata_to_hardware_updata_thread, firmware,
                     &hardware_upgrade::recv_form_local_updata);
    QObject::connect(firmware, &hardware_upgrade::add_comboBox_value, key,
                     &thread_key::recv_add_comboBox_value_from_hardware_upgrade_thread);
    QObject::connect(firmware, &hardware_upgrade::updata_progress, key,
                     &thread_key::recv_updata_progress_from_hardware_upgrade_thread);
}

} // namespace

void install_default_font()
{
#ifndef Q_OS_WIN
    // The font of the Windows desktop is rarely elsewhere; name a face with the
    // same Chinese forms rather than leave the choice to chance.
    QFont::insertSubstitutions(QStringLiteral("Microsoft YaHei"),
                               {QStringLiteral("Noto Sans CJK SC"), QStringLiteral("Noto Sans")});
#endif
    QFont font;
    font.setPixelSize(13);
    font.setFamily(QStringLiteral("Microsoft YaHei"));
    QApplication::setFont(font);
}

application_objects make_application_objects()
{
    application_objects made{};

    made.key = new thread_key;
    made.window = new MainWindow;
    made.window->key = made.key;
    join_hub_and_window(made.key, made.window);
    made.key->start(QThread::InheritPriority);

    made.serial = new serial_thread;
    join_serial(made.serial, made.key, made.window);
    made.serial->start(QThread::InheritPriority);

    made.import = new file_import_thread;
    join_import(made.import, made.key, made.window);
    made.import->start(QThread::InheritPriority);

    made.exporter = new file_export_thread;
    join_export(made.exporter, made.key, made.window);
    made.exporter->start(QThread::InheritPriority);

    made.upload = new data_to_device;
    made.upload->port = made.serial->port;
    join_upload(made.upload, made.serial, made.key);
    made.upload->start(QThread::InheritPriority);

    made.software = new software_upgrade;
    join_software(made.software, made.key);
    made.software->start(QThread::InheritPriority);

    made.firmware = new hardware_upgrade;
    made.firmware->port = made.serial->port;
    join_firmware(made.firmware, made.key);
    made.firmware->start(QThread::InheritPriority);
    return made;
}

int run_application(int argc, char* argv[])
{
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    const QApplication application(argc, argv);
    install_default_font();
    const application_objects objects = make_application_objects();
    qDebug() << "QSslSocket=" << QSslSocket::sslLibraryBuildVersionString();
    qDebug() << "OpenSSL Support:" << QSslSocket::supportsSsl();
    objects.window->show();
    return QApplication::exec();
}
