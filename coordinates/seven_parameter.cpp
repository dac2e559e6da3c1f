#include "coordinates/seven_parameter.h"

#include "coordinates/form_parts.h"
#include "coordinates/json_file_manager.h"
#include "coordinates/transforms.h"

#include <QComboBox>
#include <QDebug>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QNetworkDatagram>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QUdpSocket>

#include <cmath>

namespace {

constexpr int time_out_ms = 3000;
constexpr int poll_ms = 500;
constexpr qsizetype least_groups = 4;
constexpr int field_width = 190; // pixels

QString group_text(qsizetype number)
{
    return QStringLiteral("Group%1").arg(number);
}

/// Degrees, minutes and seconds with the sign on each of them, as they are read
/// back.
struct split_angle
{
    double degrees, minutes, seconds; ///< whole, whole, the rest
    double all_minutes;               ///< what is left of the degrees

    explicit split_angle(double angle)
    {
        degrees = std::trunc(angle) + 0.0; // no minus before a 0
        all_minutes = (angle - degrees) * 60.0;
        minutes = std::trunc(all_minutes) + 0.0;
        seconds = (all_minutes - minutes) * 60.0;
    }
};

} // namespace

// Making

seven_parameter::seven_parameter(QWidget* parent)
    : QWidget(parent, Qt::Dialog), m_socket(new QUdpSocket(this)), m_timeout(new QTimer(this)),
      m_poll(new QTimer(this))
{
    if (m_socket->bind())
        qDebug() << "UDP socket bound to port:" << m_socket->localPort();
    else
        qDebug() << "Failed to bind UDP socket:" << m_socket->errorString();
    connect(m_socket, &QUdpSocket::readyRead, this, &seven_parameter::read_replies);
    m_timeout->setSingleShot(true);
    connect(m_timeout, &QTimer::timeout, this, &seven_parameter::tell_time_out);
    connect(m_poll, &QTimer::timeout, this, &seven_parameter::show_current);
    m_poll->start(poll_ms);
    server_address = QHostAddress(QStringLiteral(VELMO_CALCULATION_SERVER));

    auto* rows = new QVBoxLayout(this);
    auto* columns = new QHBoxLayout;
    rows->addLayout(columns);
    auto* list = new QVBoxLayout;
    listWidget = form_parts::make<QListWidget>(this, "listWidget");
    pushButton_3 = form_parts::make<QPushButton>(this, "pushButton_3");
    pushButton_2 = form_parts::make<QPushButton>(this, "pushButton_2");
    // As wide as the buttons below it.
    listWidget->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    list->addWidget(listWidget);
    list->addWidget(pushButton_3);
    list->addWidget(pushButton_2);
    columns->addLayout(list);
    const side_names names[] = {
        {"label", "radioButton", "radioButton_2", "comboBox", "label_z_3", "comboBox_3", "label_x",
         "label_y", "label_z", "lineEdit", "lineEdit_2", "lineEdit_3"},
        {"label_2", "radioButton_3", "radioButton_4", "comboBox_2", "label_z_4", "comboBox_4",
         "label_x_2", "label_y_2", "label_z_2", "lineEdit_4", "lineEdit_5", "lineEdit_6"}};
    for (size_t i = 0; i < m_sides.size(); ++i) {
        auto* panel = new QFrame(this);
        panel->setFrameShape(QFrame::StyledPanel);
        m_sides[i] = make_side(panel, names[i]);
        columns->addWidget(panel, 1);
        for (const QRadioButton* radio : {m_sides[i].geodetic, m_sides[i].cartesian})
            connect(radio, &QRadioButton::clicked, this, [this, i] { follow_form(m_sides[i]); });
    }
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    pushButton_4 = form_parts::make<QPushButton>(this, "pushButton_4");
    pushButton = form_parts::make<QPushButton>(this, "pushButton");
    buttons->addWidget(pushButton_4);
    buttons->addWidget(pushButton);
    rows->addLayout(buttons);

    using form = seven_parameter;
    connect(pushButton, &QPushButton::clicked, this, &form::on_pushButton_clicked);
    connect(pushButton_2, &QPushButton::clicked, this, &form::on_pushButton_2_clicked);
    connect(pushButton_3, &QPushButton::clicked, this, &form::on_pushButton_3_clicked);
    connect(pushButton_4, &QPushButton::clicked, this, &form::on_pushButton_4_clicked);
    new form_parts::keys(this, pushButton_4, nullptr);

    enable_fields(false);
    for (const side& one : m_sides) {
        one.geodetic->setChecked(true);
        follow_form(one);
    }
    pushButton_3->setFocus();
}

seven_parameter::side seven_parameter::make_side(QWidget* parent, const side_names& names)
{
    using form_parts::make;
    auto* grid = new QGridLayout(parent);
    grid->setColumnStretch(1, 1);
    side made{};
    made.heading = make<QLabel>(parent, names[0]);
    QFont bold = made.heading->font();
    bold.setBold(true);
    made.heading->setFont(bold);
    grid->addWidget(made.heading, 0, 0, 1, 2, Qt::AlignHCenter);

    auto* choice = new QHBoxLayout;
    made.geodetic = make<QRadioButton>(parent, names[1]);
    made.geodetic->setText(QStringLiteral("B L H"));
    made.cartesian = make<QRadioButton>(parent, names[2]);
    made.cartesian->setText(QStringLiteral("Z X Y"));
    made.angle = make<QComboBox>(parent, names[3]);
    made.angle->addItems({QStringLiteral("°"), QStringLiteral("°′"), QStringLiteral("°′″")});
    choice->addWidget(made.geodetic);
    choice->addWidget(made.angle);
    choice->addSpacing(12);
    choice->addWidget(made.cartesian);
    choice->addStretch();
    grid->addLayout(choice, 1, 0, 1, 2);
    QWidget::setTabOrder(made.geodetic, made.cartesian);

    made.ellipsoid_label = make<QLabel>(parent, names[4]);
    made.ellipsoid = make<QComboBox>(parent, names[5]);
    form_parts::keep_width(made.ellipsoid);
    made.ellipsoid_label->setBuddy(made.ellipsoid);
    grid->addWidget(made.ellipsoid_label, 2, 0);
    grid->addWidget(made.ellipsoid, 2, 1);
    for (size_t i = 0; i < 3; ++i) {
        made.names[i] = make<QLabel>(parent, names[6 + i]);
        made.fields[i] = make<QLineEdit>(parent, names[9 + i]);
        made.fields[i]->setMinimumWidth(field_width);
        made.names[i]->setBuddy(made.fields[i]);
        const int row = 3 + static_cast<int>(i);
        grid->addWidget(made.names[i], row, 0, Qt::AlignRight | Qt::AlignVCenter);
        grid->addWidget(made.fields[i], row, 1);
    }
    grid->setRowStretch(6, 1);
    return made;
}

void seven_parameter::set_up(int language, JsonFileManager* js)
{
    m_language = language;
    m_js = js;
    for (const form_parts::text& one :
         {form_parts::text{this, "七参数", "7 Parameter"},
          form_parts::text{m_sides[0].heading, "源坐标", "Transfer"},
          form_parts::text{m_sides[1].heading, "目标坐标", "Target"},
          form_parts::text{m_sides[0].ellipsoid_label, "椭球基准：", "Ellipsoid"},
          form_parts::text{m_sides[1].ellipsoid_label, "椭球基准：", "Ellipsoid"},
          form_parts::text{pushButton, "计算", "Calculation"},
          form_parts::text{pushButton_2, "删除当前组", "Delete The Current Group"},
          form_parts::text{pushButton_3, "添加一个新的组", "Add A New Group"},
          form_parts::text{pushButton_4, "更新变更", "Update"}})
        one.write(language);
    listWidget->setAccessibleName(words("组", "Groups"));
    for (const side& one : m_sides) {
        one.angle->setAccessibleName(words("角度格式", "Angle format"));
        one.angle->setToolTip(one.angle->accessibleName());
        one.ellipsoid->clear();
        for (const CoordinateSystem& system : std::as_const(js->systems))
            one.ellipsoid->addItem(system.name);
        describe_fields(one);
    }
}

QString seven_parameter::words(const char* chinese, const char* english) const
{
    return form_parts::in_language(m_language, chinese, english);
}

// Form of the points

seven_parameter::angle_format seven_parameter::side::format() const
{
    return static_cast<angle_format>(angle->currentIndex());
}

void seven_parameter::follow_form(const side& one)
{
    const bool geodetic = one.geodetic->isChecked();
    one.angle->setEnabled(geodetic);
    one.ellipsoid->setEnabled(geodetic);
    const QString names = geodetic ? QStringLiteral("BLH") : QStringLiteral("XYZ");
    for (size_t i = 0; i < one.names.size(); ++i)
        one.names[i]->setText(names[static_cast<qsizetype>(i)]);
    describe_fields(one);
}

void seven_parameter::describe_fields(const side& one)
{
    static constexpr const char* examples[] = {"104.0257", "104°1.542′", "104°1′32.52″"};
    const bool geodetic = one.geodetic->isChecked();
    for (size_t i = 0; i < one.fields.size(); ++i) {
        one.fields[i]->setAccessibleName(one.heading->text() + u' ' + one.names[i]->text());
        one.fields[i]->setToolTip(geodetic && i < 2 ? QString::fromUtf8(examples[one.format()])
                                                    : words("米", "metres"));
    }
}

void seven_parameter::enable_choices(bool enabled)
{
    for (const side& one : m_sides) {
        for (QWidget* choice :
             std::initializer_list<QWidget*>{one.geodetic, one.cartesian, one.angle, one.ellipsoid})
            choice->setEnabled(enabled);
    }
}

void seven_parameter::enable_fields(bool enabled)
{
    for (const side& one : m_sides) {
        for (QLineEdit* field : one.fields) {
            field->setEnabled(enabled);
            if (!enabled)
                field->setText(QStringLiteral("0"));
        }
    }
}

// Groups

void seven_parameter::on_pushButton_3_clicked()
{
    enable_fields(true);
    static const QString beginnings[] = {QStringLiteral("0"), QStringLiteral("0°0′"),
                                         QStringLiteral("0°0′0″")};
    for (const side& one : m_sides) {
        const bool geodetic = one.geodetic->isChecked();
        const QString& angle = beginnings[geodetic ? one.format() : degrees];
        one.fields[0]->setText(angle);
        one.fields[1]->setText(angle);
        one.fields[2]->setText(QStringLiteral("0"));
        describe_fields(one);
    }
    // The target's height begins differently here.
    const side& target = m_sides[1];
    if (target.geodetic->isChecked() && target.format() == degrees_minutes_seconds)
        target.fields[2]->setText(QStringLiteral("0°"));

    PointGroup group;
    group.values.fill(QStringLiteral("0"));
    groups.append(group);
    listWidget->addItem(group_text(groups.size()));
    listWidget->setCurrentRow(static_cast<int>(groups.size()) - 1);
    enable_choices(false);
}

void seven_parameter::on_pushButton_2_clicked()
{
    const int row = listWidget->currentRow();
    if (row < 0)
        return;
    delete listWidget->takeItem(row);
    groups.removeAt(row);
    renumber();
    m_shown_row = -1; // the row that was shown is gone; another has its number now
    if (groups.isEmpty()) {
        enable_fields(false);
        enable_choices(true);
    }
    qDebug() << "!!!!";
}

void seven_parameter::renumber()
{
    for (int row = 0; row < listWidget->count(); ++row)
        listWidget->item(row)->setText(group_text(row + 1));
}

void seven_parameter::on_pushButton_4_clicked()
{
    const int row = listWidget->currentRow();
    if (row < 0)
        return;
    using read_angle = double (*)(const QString&);
    static constexpr read_angle readers[] = {[](const QString& text) { return text.toDouble(); },
                                             dm_to_degrees, dms_to_degrees};
    QString* value = groups[row].values.data();
    for (const side& one : m_sides) {
        const read_angle read = readers[one.format()];
        for (size_t i = 0; i < one.fields.size(); ++i, ++value) {
            const QString text = one.fields[i]->text();
            if (one.cartesian->isChecked())
                *value = text;
            else
                *value = QString::number(i < 2 ? read(text) : text.toDouble(), 'f', 9);
        }
    }
}

void seven_parameter::show_current()
{
    const int row = listWidget->currentRow();
    if (row == m_shown_row || row < 0)
        return;
    m_shown_row = row;
    const QString* values = groups[row].values.data();
    show_values(m_sides[0], values);
    show_values(m_sides[1], values + 3);
}

void seven_parameter::show_values(const side& one, const QString* values)
{
    const auto shown = [&one](double value) {
        const split_angle angle(value);
        const QString whole = QString::number(angle.degrees, 'f', 0) + u'°';
        switch (one.format()) {
        case degrees: return QString::number(value);
        case degrees_minutes: return whole + QString::number(angle.all_minutes, 'f', 8) + u'′';
        default:
            return whole + QString::number(angle.minutes) + u'′' +
                   QString::number(angle.seconds, 'f', 4) + u'″';
        }
    };
    for (size_t i = 0; i < one.fields.size(); ++i) {
        QString text = values[i];
        if (one.geodetic->isChecked())
            text = i < 2 ? shown(text.toDouble()) : QString::number(text.toDouble());
        one.fields[i]->setText(text);
    }
}

// The server

void seven_parameter::on_pushButton_clicked()
{
    if (groups.size() < least_groups) {
        QMessageBox::information(
            this, words("计算", "Calculation"),
            words("计算失败，至少需要4组点位数据",
                  "The calculation failed. At least 4 sets of point data are required."));
        return;
    }
    const QString request = QStringLiteral("$%1,%2").arg(m_socket->localPort()).arg(groups.size()) +
                            points_of(0) + points_of(1) + QStringLiteral(",*");
    qDebug() << "send:" << request;
    if (m_socket->writeDatagram(request.toUtf8(), server_address, server_port) == -1)
        QMessageBox::warning(this, words("错误", "ERROR"),
                             words("发送数据失败！", "Failed to send data"));
    else
        m_timeout->start(time_out_ms);
}

QString seven_parameter::points_of(size_t which_side) const
{
    // The target's own ellipsoid is not asked: its points stand on the source's.
    const int index = m_sides[0].ellipsoid->currentIndex();
    const CoordinateSystem system = m_js->systems.value(index);
    const bool geodetic = m_sides[which_side].geodetic->isChecked();
    QString text;
    for (const PointGroup& group : groups) {
        const QString* values = group.values.data() + 3 * which_side;
        if (geodetic) {
            const cartesian_position at =
                BLH2XYZ({values[0].toDouble(), values[1].toDouble(), values[2].toDouble()},
                        system.changzhou, system.duanzhou);
            for (const double coordinate : {at.x, at.y, at.z})
                text += u',' + QString::number(coordinate, 'f', 4);
        } else {
            for (int i = 0; i < 3; ++i)
                text += u',' + values[i];
        }
    }
    return text;
}

void seven_parameter::read_replies()
{
    if (m_timeout->isActive()) {
        m_timeout->stop();
        qDebug() << "Timeout timer stopped";
    }
    while (m_socket->hasPendingDatagrams()) {
        const QNetworkDatagram datagram = m_socket->receiveDatagram();
        if (!datagram.isValid())
            break;
        handle_reply(QString::fromUtf8(datagram.data()));
    }
}

void seven_parameter::handle_reply(const QString& reply)
{
    static constexpr const char* names[] = {"dx", "dy", "dz", "rx", "ry", "rz", "k"};
    constexpr qsizetype count = std::size(names);
    const QStringList parts = reply.mid(1, qMax<qsizetype>(0, reply.size() - 2)).split(u',');
    if (parts.size() != count) {
        QMessageBox::warning(this, words("错误", "ERROR"),
                             words("数据格式不正确", "The data format is incorrect"));
        return;
    }
    qDebug() << "解析出的7个参数:";
    QString text;
    for (qsizetype i = 0; i < count; ++i) {
        const QString value = QString::number(parts[i].toDouble(), 'f', 10);
        qDebug().noquote() << QStringLiteral("  param%1: %2").arg(i + 1).arg(value);
        text += QStringLiteral("%1 :%2 \n").arg(QLatin1String(names[i]), value);
    }
    text += words("是否同步到'参数设置'中?", "Whether to synchronize to the 'Parameter Settings'?");
    if (QMessageBox::question(this, words("成功", "Success"), text,
                              QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes)
        emit send_seven_parameter(parts[0], parts[1], parts[2], parts[3], parts[4], parts[5],
                                  parts[6]);
}

void seven_parameter::tell_time_out()
{
    QMessageBox::warning(this, words("计算失败", "Calculation failed"),
                         words("计算失败：未收到服务器响应",
                               "Calculation failed: No response from the server was received"));
}
