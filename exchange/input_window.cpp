#include "exchange/input_window.h"

#include "exchange/excel_template.h"
#include "exchange/message_boxes.h"

#include <QFileDialog>
#include <QPushButton>
#include <QShortcut>

namespace {

QPushButton* make_button(QWidget* parent, const char* name, const QRect& place)
{
    auto* button = new QPushButton(parent);
    button->setObjectName(QLatin1String(name));
    button->setGeometry(place);
    button->setStyleSheet(
        QStringLiteral("QPushButton{border: 1px solid #bfbfbf;border-radius:8px;background-color:"
                       "#d4d4d4}QPushButton:pressed {  background-color: #bfbfbf;}"));
    return button;
}

} // namespace

input_window::input_window(QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      m_template(make_button(this, "pushButton", QRect(20, 38, 270, 46))),
      m_import(make_button(this, "pushButton_2", QRect(308, 38, 160, 46)))
{
    setFixedSize(488, 123);
    setWindowTitle(tr("导入"));
    connect(m_template, &QPushButton::clicked, this, &input_window::on_pushButton_clicked);
    connect(m_import, &QPushButton::clicked, this, &input_window::on_pushButton_2_clicked);
    new QShortcut(QKeySequence::Cancel, this, this, &QWidget::close);
    setlanguage(language);
}

void input_window::setlanguage(int newValue)
{
    language = newValue;
    m_template->setText(language == 0 ? QStringLiteral("下载Excel文件导入模版")
                                      : QStringLiteral("Download the Excel template for import"));
    m_import->setText(language == 0 ? QStringLiteral("导入文件")
                                    : QStringLiteral("Importing files"));
}

void input_window::on_pushButton_clicked()
{
    const QString path = QFileDialog::getSaveFileName(
        this, tr("Export File"), QStringLiteral("/home/user/Documents/exported_data.xlsx"),
        tr("Xlsx Files (*.xlsx);;All Files (*)"));
    if (!path.isEmpty())
        save_excel_template(path, language);
    else if (language == 0)
        show_warning(QStringLiteral("警告"), QStringLiteral("未选择文件路径或文件名"));
    else
        show_warning(QStringLiteral("Warning"),
                     QStringLiteral("No file path or filename was selected"));
}

void input_window::on_pushButton_2_clicked()
{
    emit send_btm_sign_to_mainwindow_import_file(QFileDialog::getOpenFileName(
        this, tr("Open Files"), QStringLiteral("/home/user/Documents"),
        tr("GIS and Data Files (*.kml *.csv *.dxf *.gpx *.xlsx *xls);;All Files (*)")));
}
