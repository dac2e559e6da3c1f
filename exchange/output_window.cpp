#include "exchange/output_window.h"

#include "coordinates/json_file_manager.h"
#include "coordinates/transforms.h"
#include "exchange/chosen_system.h"
#include "exchange/export_formats.h"
#include "exchange/message_boxes.h"
#include "presentation/graphic_widget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QTimer>
#include <QWebEngineView>

namespace {

constexpr int poll_interval_ms = 500;

/// A kind of measurement and its two choices for Excel: the caption, and the
/// names of the boxes up to their number.
struct kind_row
{
    const char* label;
    const char* chinese;
    const char* english;
    const char* boxes;
};

constexpr kind_row kinds[] = {
    {"label_5", "面积", "Area", "mianji"},        {"label_13", "距离", "Distance", "juli"},
    {"label_14", "航点", "Waypoint", "hangdian"}, {"label_15", "航线", "Line", "hangxian"},
    {"label_16", "航迹", "Tarck", "hangji"},      {"label_17", "放样线段", "Example", "fangyang"},
};

struct caption
{
    const char* chinese;
    const char* english;
};

constexpr caption format_caption{"导出格式", "Export Format"};
constexpr caption confirm_caption{"确定", "Confirm"};
constexpr caption box_captions[] = {{"测量数据", "Measurement data"}, {"点位数据", "Points"}};

template <typename Widget>
Widget* make(QWidget* parent, const QString& name, const QRect& place)
{
    auto* widget = new Widget(parent);
    widget->setObjectName(name);
    widget->setGeometry(place);
    return widget;
}

} // namespace

outputWindow::outputWindow(QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      timer(new QTimer(this))
{
    setFixedSize(325, 512);
    setWindowTitle(tr("导出为"));

    auto* formats_label = make<QLabel>(this, QStringLiteral("label_4"), QRect(15, 20, 105, 32));
    formats_label->setText(QString::fromUtf8(format_caption.chinese));
    m_formats = make<QComboBox>(this, QStringLiteral("export_format"), QRect(120, 20, 190, 32));
    formats_label->setBuddy(m_formats);
    auto* line = make<QFrame>(this, QStringLiteral("line"), QRect(15, 66, 295, 10));
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);

    int y = 92;
    std::size_t box = 0;
    for (const kind_row& kind : kinds) {
        make<QLabel>(this, QLatin1String(kind.label), QRect(15, y, 75, 30))
            ->setText(QString::fromUtf8(kind.chinese));
        for (const int part : {0, 1}) {
            auto* one = make<QCheckBox>(
                this, QStringLiteral("%1_%2").arg(QLatin1String(kind.boxes)).arg(part + 1),
                part == 0 ? QRect(92, y, 145, 30) : QRect(240, y, 80, 30));
            one->setText(QString::fromUtf8(box_captions[part].chinese));
            one->setChecked(true);
            m_boxes[box++] = one;
        }
        y += 56;
    }
    auto* confirm = make<QPushButton>(this, QStringLiteral("pushButton"), QRect(97, 450, 130, 38));
    confirm->setText(QString::fromUtf8(confirm_caption.chinese));
    connect(confirm, &QPushButton::clicked, this, &outputWindow::on_pushButton_clicked);
    new QShortcut(QKeySequence::Cancel, this, this, &QWidget::close);

    connect(timer, &QTimer::timeout, this, &outputWindow::enable_boxes);
    timer->start(poll_interval_ms);
    enable_boxes();
}

void outputWindow::setlanguage(int newValue)
{
    language = newValue;
    for (const export_format& one : export_formats)
        m_formats->addItem(QString::fromUtf8(language == 0 ? one.chinese : one.english));
    if (language != 0) {
        const auto label = [this](const char* name) {
            return findChild<QLabel*>(QLatin1String(name));
        };
        label("label_4")->setText(QLatin1String(format_caption.english));
        findChild<QPushButton*>(QLatin1String("pushButton"))
            ->setText(QLatin1String(confirm_caption.english));
        for (const kind_row& kind : kinds)
            label(kind.label)->setText(QLatin1String(kind.english));
        for (std::size_t box = 0; box < m_boxes.size(); ++box)
            m_boxes[box]->setText(QLatin1String(box_captions[box % 2].english));
    }

    const CoordinateSystem system = chosen_system(js, sys_index);
    m_ModelParam = flat_parameters(system);
    cz = system.changzhou;
    dz = system.duanzhou;
    pl = system.pianlv;
    system_name = system.name;
}

void outputWindow::set_parent_view(QWebEngineView* view, graphic_widget* widget, int flag)
{
    parentView = view;
    parentwidget = widget;
    picture_flag = flag;
}

void outputWindow::enable_boxes()
{
    // They mean something to Excel alone.
    const bool enabled = m_formats->currentIndex() == excel_format;
    for (QCheckBox* box : m_boxes)
        box->setEnabled(enabled);
}

void outputWindow::on_pushButton_clicked()
{
    check_flags.clear();
    for (const QCheckBox* box : m_boxes)
        check_flags.append(box->isChecked() ? 1 : 0);

    static constexpr std::array<void (outputWindow::*)(), export_formats.size()> actions{
        &outputWindow::one_CSV_clicked, &outputWindow::more_CSV_clicked,
        &outputWindow::one_DXF_clicked, &outputWindow::more_DXF_clicked,
        &outputWindow::one_GPX_clicked, &outputWindow::more_GPX_clicked,
        &outputWindow::kml_clicked,     &outputWindow::picture_clicked,
        &outputWindow::excel_clicked,
    };
    const auto format = static_cast<std::size_t>(m_formats->currentIndex());
    if (format < actions.size()) // neither no choice nor one of a second filling
        (this->*actions[format])();
}

void outputWindow::one_CSV_clicked()
{
    send(one_csv_format, &outputWindow::send_btm_sign_to_threadkey_one_csv);
}

void outputWindow::more_CSV_clicked()
{
    send(more_csv_format, &outputWindow::send_btm_sign_to_threadkey_more_csv);
}

void outputWindow::one_DXF_clicked()
{
    send(one_dxf_format, &outputWindow::send_btm_sign_to_threadkey_one_dxf);
}

void outputWindow::more_DXF_clicked()
{
    send(more_dxf_format, &outputWindow::send_btm_sign_to_threadkey_more_dxf);
}

void outputWindow::one_GPX_clicked()
{
    send(one_gpx_format, &outputWindow::send_btm_sign_to_threadkey_one_gpx);
}

void outputWindow::more_GPX_clicked()
{
    send(more_gpx_format, &outputWindow::send_btm_sign_to_threadkey_more_gpx);
}

void outputWindow::kml_clicked()
{
    send(kml_format, &outputWindow::send_btm_sign_to_threadkey_kml);
}

void outputWindow::picture_clicked()
{
    if (const QString path = ask_path(picture_format); !path.isEmpty())
        emit send_btm_sign_to_threadkey_picture(path, parentView, parentwidget, picture_flag);
}

void outputWindow::excel_clicked()
{
    if (const QString path = ask_path(excel_format); !path.isEmpty())
        emit send_btm_sign_to_threadkey_excel(check_flags, path, mode, cz, dz, pl, m_ModelParam,
                                              model, table_list, data_msg_altitude, point_msg_all,
                                              system_name);
}

void outputWindow::send(int format, export_signal signal)
{
    if (const QString path = ask_path(format); !path.isEmpty())
        emit(this->*signal)(path, mode, cz, dz, pl, m_ModelParam, model, table_list,
                            data_msg_altitude, point_msg_all);
}

QString outputWindow::ask_path(int format)
{
    const export_format& chosen = export_formats[static_cast<std::size_t>(format)];
    const QString start = QLatin1String(chosen.default_path);
    QString path =
        chosen.filter != nullptr
            ? QFileDialog::getSaveFileName(this, tr("Export File"), start, tr(chosen.filter))
            : QFileDialog::getExistingDirectory(this, tr("Choose Directory"), start,
                                                QFileDialog::ShowDirsOnly |
                                                    QFileDialog::DontResolveSymlinks);
    if (path.isEmpty())
        show_warning(QStringLiteral("警告"), QStringLiteral("未选择文件路径或文件名"));
    return path;
}
