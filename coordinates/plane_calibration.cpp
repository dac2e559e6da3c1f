#include "coordinates/plane_calibration.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace {

constexpr int refresh_ms = 300;
constexpr int field_width = 150;

} // namespace

plane_calibration::plane_calibration(QWidget* parent) : QWidget(parent, Qt::Dialog)
{
    auto* grid = new QGridLayout(this);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    grid->setHorizontalSpacing(10);
    const auto caption = [&](const char* name, int row, int column, const char* chinese,
                             const char* english) {
        auto* label = form_parts::make<QLabel>(this, name);
        m_texts.push_back({label, chinese, english});
        grid->addWidget(label, row, column, Qt::AlignRight | Qt::AlignVCenter);
        return label;
    };
    const auto number = [&](const char* edit_name, const char* label_name, int row, int column,
                            const char* chinese, const char* english) {
        auto* edit = form_parts::make<QLineEdit>(this, edit_name);
        edit->setText(QStringLiteral("0.0"));
        edit->setMinimumWidth(field_width);
        grid->addWidget(edit, row, column + 1);
        caption(label_name, row, column, chinese, english)->setBuddy(edit);
        return edit;
    };
    const auto result = [&](const char* value_name, const char* label_name, int column,
                            const char* text) {
        auto* value = form_parts::make<QLabel>(this, value_name);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        grid->addWidget(value, 2, column + 1);
        caption(label_name, 2, column, text, text);
        return value;
    };
    m_texts.push_back({this, "坐标校准", "Plane Calibration"});
    lineEdit = number("lineEdit", "label", 0, 0, "源X:", "Source X");
    lineEdit_2 = number("lineEdit_2", "label_2", 0, 2, "源Y:", "Source Y");
    lineEdit_3 = number("lineEdit_3", "label_3", 1, 0, "目标X:", "Target X");
    lineEdit_4 = number("lineEdit_4", "label_4", 1, 2, "目标Y:", "Target Y");
    label_dx = result("label_dx", "label_5", 0, "DX:");
    label_dy = result("label_dy", "label_6", 2, "DY:");

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    pushButton = form_parts::make<QPushButton>(this, "pushButton");
    pushButton_2 = form_parts::make<QPushButton>(this, "pushButton_2");
    buttons->addWidget(pushButton);
    buttons->addWidget(pushButton_2);
    grid->addLayout(buttons, 3, 0, 1, 4);
    m_texts.push_back({pushButton, "确定", "Confirm"});
    m_texts.push_back({pushButton_2, "取消", "Cancel"});
    connect(pushButton, &QPushButton::clicked, this, &plane_calibration::on_pushButton_clicked);
    connect(pushButton_2, &QPushButton::clicked, this, &plane_calibration::on_pushButton_2_clicked);
    new form_parts::keys(this, pushButton, pushButton_2);

    auto* refresh = new QTimer(this);
    connect(refresh, &QTimer::timeout, this, &plane_calibration::calculate);
    refresh->start(refresh_ms);
    calculate();
    lineEdit->setFocus();
    lineEdit->selectAll();
}

void plane_calibration::set_up(int language, JsonFileManager* /*js*/)
{
    for (const form_parts::text& one : m_texts)
        one.write(language);
    for (QLineEdit* edit : {lineEdit, lineEdit_2, lineEdit_3, lineEdit_4})
        edit->setToolTip(form_parts::in_language(language, "米", "metres"));
}

void plane_calibration::calculate()
{
    const auto difference = [](const QLineEdit* target, const QLineEdit* source) {
        return QString::number(target->text().toDouble() - source->text().toDouble(), 'f', 2);
    };
    label_dx->setText(difference(lineEdit_3, lineEdit));
    label_dy->setText(difference(lineEdit_4, lineEdit_2));
}

void plane_calibration::on_pushButton_clicked()
{
    // What was typed since the last refresh counts as well.
    calculate();
    emit variableChanged(label_dx->text(), label_dy->text());
    close();
}

void plane_calibration::on_pushButton_2_clicked()
{
    close();
}
