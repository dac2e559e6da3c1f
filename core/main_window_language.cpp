// The language in force: its switch, and what looks different in it.

#include "core/main_window.h"
#include "core/main_window_form.h"

#include <QAction>
#include <QCoreApplication>
#include <QDebug>
#include <QLibraryInfo>
#include <QMenu>
#include <QPushButton>
#include <QTranslator>

namespace {

/// Path of an image of the language: "./pic/ch/push/readdata_push.png" or
/// "./pic/en/push/readdata_en_push.png".
QString image_path(const QString& name, int language, bool pushed)
{
    const QString folder = pushed ? QStringLiteral("push") : QStringLiteral("normal");
    const QString end = pushed ? QStringLiteral("_push") : QString();
    return language == 0 ? QStringLiteral("./pic/ch/%1/%2%3.png").arg(folder, name, end)
                         : QStringLiteral("./pic/en/%1/%2_en%3.png").arg(folder, name, end);
}

QString image_style(const QString& image)
{
    return QStringLiteral("QPushButton{border:none;background-color:transparent;image: url(%1);}")
        .arg(image);
}

QString pushed_style(const QString& image)
{
    return QStringLiteral("QPushButton:pressed {image: url(%1);}").arg(image);
}

} // namespace

void MainWindow::choose_language(QAction* chosen)
{
    if (!chosen->isChecked()) {
        chosen->setChecked(true);
        return;
    }
    const bool english = chosen == ui->action_english;
    (english ? ui->action_chinese : ui->action_english)->setChecked(false);

    // Installed translators stay: the latest is asked first.
    auto* translator = new QTranslator(this);
    if (!translator->load(english ? QStringLiteral("./en_CN.qm") : QStringLiteral("./zh_CN.qm"))) {
        qDebug() << "失败";
        delete translator;
        return;
    }
    qDebug() << (english ? "切换为英文" : "切换为中文");
    QCoreApplication::installTranslator(translator);

    run_script(english ? QStringLiteral("changelanguage(1)") : QStringLiteral("changelanguage(0)"));
    language = english ? 1 : 0;
    choose_qt_texts();
    set_menu_texts();
    style_buttons();
    ui->retranslateUi(this);
    write_connection_text();
}

void MainWindow::choose_qt_texts()
{
    if (language != 0) {
        QCoreApplication::removeTranslator(&m_qt_chinese); // its sources are English
        return;
    }
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    // The second is all that an installer for Windows puts beside the program.
    if (m_qt_chinese.load(QStringLiteral("qtbase_zh_CN"), folder) ||
        m_qt_chinese.load(QStringLiteral("qt_zh_CN"), folder))
        QCoreApplication::installTranslator(&m_qt_chinese);
}

void MainWindow::set_menu_texts()
{
    struct menu_text
    {
        QAction* action;
        const char* chinese; ///< null: the switch to Chinese leaves the text as it is
        const char* english;
    };
    const menu_text texts[] = {
        {ui->menu_file->menuAction(), "文件", "File"},
        {ui->action_export_graphics, "导出图形", "Export Graphics"},
        {ui->action_export, "导出...", "Export..."},
        {ui->action_quit, "退出", "Quit"},
        {ui->menu_setting->menuAction(), "设置", "Setting"},
        {ui->menu_mu->menuAction(), "亩制", "Mu"},
        {ui->action_small_mu, "小亩", "Small mu"},
        {ui->action_coordinate, "坐标设置", "Coordinate Setting"},
        {ui->menu_map->menuAction(), "地图选项", "Map Options"},
        {ui->action_gaode, "高德地图", "Gaode Map"},
        {ui->action_google, nullptr, "Google Map"},
        {ui->action_sky, nullptr, "Sky Map"},
        {ui->menu_help->menuAction(), "帮助", "Help"},
        {ui->action_instructions, "使用说明", "Instructions"},
        {ui->action_about, "关于Velmo office", "About of Velmo office"},
        {ui->action_download, "资料下载", "Data of Software Download"},
        {ui->action_software, "软件更新", "Software Update"},
    };
    for (const menu_text& one : texts) {
        if (const char* text = language == 0 ? one.chinese : one.english; text != nullptr)
            one.action->setText(QString::fromUtf8(text));
    }
}

void MainWindow::style_buttons()
{
    struct image_button
    {
        QPushButton* button;
        const char* image;
    };
    for (const image_button& one :
         {image_button{ui->data_read, "readdata"}, image_button{ui->data_output_file, "outputdata"},
          image_button{ui->data_input_file, "inputdata"},
          image_button{ui->data_to_device, "uploaddata"}, image_button{ui->print, "print"},
          image_button{ui->softwareupgrade, "softwareupgrade"},
          image_button{ui->hardwareupgrade, "hardwareupgrade"}}) {
        const QString name = QLatin1String(one.image);
        one.button->setStyleSheet(image_style(image_path(name, language, false)) +
                                  pushed_style(image_path(name, language, true)));
    }
    style_view_buttons();

    ui->north->setStyleSheet(image_style(QStringLiteral("./pic/com/north.png")));
    ui->tuxing_control->setStyleSheet(image_style(QStringLiteral("./pic/com/g_c.png")) +
                                      pushed_style(QStringLiteral("./pic/com/g_c_push.png")));
    ui->marlund->setStyleSheet(image_style(QStringLiteral("./pic/com/marlund.png")) +
                               pushed_style(QStringLiteral("./pic/com/marlund_push.png")));
}

void MainWindow::style_view_buttons()
{
    // The one in front shows its pushed image; neither has a pressed state.
    const bool map_in_front = map_shown != 0;
    ui->pushButton_map->setStyleSheet(
        image_style(image_path(QStringLiteral("map"), language, map_in_front)));
    ui->pushButton_graph->setStyleSheet(
        image_style(image_path(QStringLiteral("graph"), language, !map_in_front)));
}
