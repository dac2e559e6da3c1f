#include "coordinates/zuobiao_form_homepage.h"

#include "coordinates/form_parts.h"
#include "coordinates/json_file_manager.h"
#include "coordinates/zuobiao_form.h"

#include <QComboBox>
#include <QDebug>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

/// A coordinate format as the form shows it.
struct format
{
    int modeflag;
    bool plane;
    int row; ///< in the box of its frame
};

constexpr format formats[] = {
    {0, false, 0}, {1, true, 0}, {2, false, 1}, {3, false, 2}, {4, true, 1}};

} // namespace

zuobiaoForm_homepage::zuobiaoForm_homepage(QWidget* parent) : QWidget(parent, Qt::Dialog)
{
    auto* column = new QVBoxLayout(this);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->setSpacing(12);
    make_format_box();
    make_systems_box();
    column->addWidget(groupBox);
    column->addWidget(groupBox_2);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    pushButton = form_parts::make<QPushButton>(this, "pushButton");
    pushButton_2 = form_parts::make<QPushButton>(this, "pushButton_2");
    buttons->addWidget(pushButton);
    buttons->addWidget(pushButton_2);
    column->addLayout(buttons);

    using form = zuobiaoForm_homepage;
    connect(pushButton, &QPushButton::clicked, this, &form::on_pushButton_clicked);
    connect(pushButton_2, &QPushButton::clicked, this, &form::on_pushButton_2_clicked);
    connect(pushButton_3, &QPushButton::clicked, this, &form::on_pushButton_3_clicked);
    connect(pushButton_4, &QPushButton::clicked, this, &form::on_pushButton_4_clicked);
    connect(pushButton_5, &QPushButton::clicked, this, &form::on_pushButton_5_clicked);
    connect(pushButton_6, &QPushButton::clicked, this, &form::on_pushButton_6_clicked);
    connect(radioButton, &QRadioButton::toggled, this, &form::enable_for_frame);
    new form_parts::keys(this, pushButton, pushButton_2);
}

zuobiaoForm_homepage::~zuobiaoForm_homepage()
{
    // While there still is a list that its end can refill.
    delete m_editor;
}

void zuobiaoForm_homepage::make_format_box()
{
    groupBox = form_parts::make<QGroupBox>(this, "groupBox");
    auto* grid = new QGridLayout(groupBox);
    grid->setHorizontalSpacing(16);
    grid->setColumnStretch(1, 1);
    radioButton = form_parts::make<QRadioButton>(groupBox, "radioButton");
    comboBox = form_parts::make<QComboBox>(groupBox, "comboBox");
    radioButton_2 = form_parts::make<QRadioButton>(groupBox, "radioButton_2");
    comboBox_2 = form_parts::make<QComboBox>(groupBox, "comboBox_2");
    comboBox->addItems({QStringLiteral("XY"), QStringLiteral("YX")});
    grid->addWidget(radioButton, 0, 0);
    grid->addWidget(comboBox, 0, 1);
    grid->addWidget(radioButton_2, 1, 0);
    grid->addWidget(comboBox_2, 1, 1);
}

void zuobiaoForm_homepage::make_systems_box()
{
    groupBox_2 = form_parts::make<QGroupBox>(this, "groupBox_2");
    auto* column = new QVBoxLayout(groupBox_2);
    auto* list = new QHBoxLayout;
    label = form_parts::make<QLabel>(groupBox_2, "label");
    comboBox_3 = form_parts::make<QComboBox>(groupBox_2, "comboBox_3");
    form_parts::keep_width(comboBox_3);
    label->setBuddy(comboBox_3);
    list->addWidget(label);
    list->addWidget(comboBox_3, 1);
    column->addLayout(list);

    auto* buttons = new QHBoxLayout;
    pushButton_3 = form_parts::make<QPushButton>(groupBox_2, "pushButton_3");
    pushButton_4 = form_parts::make<QPushButton>(groupBox_2, "pushButton_4");
    pushButton_5 = form_parts::make<QPushButton>(groupBox_2, "pushButton_5");
    pushButton_6 = form_parts::make<QPushButton>(groupBox_2, "pushButton_6");
    for (QPushButton* button : {pushButton_3, pushButton_4, pushButton_5, pushButton_6})
        buttons->addWidget(button);
    column->addLayout(buttons);
}

void zuobiaoForm_homepage::write_texts()
{
    for (const form_parts::text& one :
         {form_parts::text{this, "坐标设置", "Coordinate Setting"},
          form_parts::text{groupBox, "坐标格式", "Coordinate format"},
          form_parts::text{radioButton, "直角坐标", "Rectangular"},
          form_parts::text{radioButton_2, "球面坐标", "Spherical"},
          form_parts::text{groupBox_2, "坐标系统", "Coordinate system"},
          form_parts::text{label, "坐标列表", "Coordinate list"},
          form_parts::text{pushButton, "确定", "Confirm"},
          form_parts::text{pushButton_2, "取消", "Cancel"},
          form_parts::text{pushButton_3, "查看", "Check"},
          form_parts::text{pushButton_4, "编辑", "Editor"},
          form_parts::text{pushButton_5, "删除", "Delete"},
          form_parts::text{pushButton_6, "新建坐标系", "New construction"}})
        one.write(language);
    comboBox_2->clear();
    comboBox_2->addItems(
        {form_parts::in_language(language, "度", "Degrees"),
         form_parts::in_language(language, "度°分′", "Degrees minutes"),
         form_parts::in_language(language, "度°分′秒″", "Degrees minutes seconds")});
    comboBox->setAccessibleName(radioButton->text());
    comboBox_2->setAccessibleName(radioButton_2->text());
}

void zuobiaoForm_homepage::set_up(int m, JsonFileManager* store, int system_index,
                                  int chosen_language)
{
    modeflag = m;
    js = store;
    sys_index = system_index;
    language = chosen_language;
    write_texts();
    for (const format& one : formats) {
        if (one.modeflag != modeflag)
            continue;
        (one.plane ? radioButton : radioButton_2)->setChecked(true);
        (one.plane ? comboBox : comboBox_2)->setCurrentIndex(one.row);
    }
    enable_for_frame();
    qDebug() << "modeflag=" << modeflag << "setmodeflag";
    fill_systems(sys_index);
}

void zuobiaoForm_homepage::enable_for_frame()
{
    const bool plane = radioButton->isChecked();
    for (QWidget* one : {static_cast<QWidget*>(comboBox), static_cast<QWidget*>(comboBox_3),
                         static_cast<QWidget*>(pushButton_3), static_cast<QWidget*>(pushButton_4),
                         static_cast<QWidget*>(pushButton_5), static_cast<QWidget*>(pushButton_6)})
        one->setEnabled(plane);
    comboBox_2->setEnabled(!plane);
}

void zuobiaoForm_homepage::fill_systems(int index)
{
    qDebug() << "当前坐标系统总数:" << js->systems.size();
    comboBox_3->clear();
    for (const CoordinateSystem& one : std::as_const(js->systems))
        comboBox_3->addItem(one.name);
    // An index from before a deletion may lie behind the end, one from an empty list
    // before the beginning.
    comboBox_3->setCurrentIndex(qMin(qMax(index, 0), comboBox_3->count() - 1));
}

void zuobiaoForm_homepage::on_pushButton_clicked()
{
    const bool plane = radioButton->isChecked();
    const int row = (plane ? comboBox : comboBox_2)->currentIndex();
    for (const format& one : formats) {
        if (one.plane == plane && one.row == row)
            modeflag = one.modeflag;
    }
    emit modeflagchange(modeflag, js, comboBox_3->currentIndex());
    close();
}

void zuobiaoForm_homepage::on_pushButton_2_clicked()
{
    close();
}

void zuobiaoForm_homepage::on_pushButton_3_clicked()
{
    open_editor(zuobiaoForm::check);
}

void zuobiaoForm_homepage::on_pushButton_4_clicked()
{
    open_editor(zuobiaoForm::edit);
}

void zuobiaoForm_homepage::on_pushButton_6_clicked()
{
    open_editor(zuobiaoForm::create);
}

void zuobiaoForm_homepage::open_editor(int mode)
{
    m_editor = new zuobiaoForm(this);
    connect(this, &zuobiaoForm_homepage::zuobiaochanged, m_editor, &zuobiaoForm::set_up);
    if (mode == zuobiaoForm::create) {
        connect(m_editor, &QObject::destroyed, this,
                [this] { fill_systems(comboBox_3->currentIndex()); });
    }
    emit zuobiaochanged(js, mode, comboBox_3->currentIndex(), language);
    m_editor->setWindowModality(Qt::ApplicationModal);
    m_editor->setAttribute(Qt::WA_DeleteOnClose);
    m_editor->show();
}

void zuobiaoForm_homepage::on_pushButton_5_clicked()
{
    const QString name = comboBox_3->currentText();
    if (js->getCoordinateSystem(name).name.isEmpty())
        qDebug() << "坐标系统" << name << "不存在，无需删除";
    qDebug() << "准备删除坐标系统:" << name;
    const QString title = form_parts::in_language(language, "删除", "DELETE");
    if (js->deleteCoordinateSystem(name)) {
        qDebug() << "成功删除坐标系统:" << name;
        if (js->getCoordinateSystem(name).name.isEmpty())
            qDebug() << "验证成功: 坐标系统已被删除";
        QMessageBox::information(
            this, title,
            form_parts::in_language(language, "坐标系统已删除",
                                    "The coordinate system has been deleted."));
    } else {
        QMessageBox::information(this, title,
                                 form_parts::in_language(language, "坐标系统删除失败",
                                                         "Coordinate system deletion failed"));
    }
    fill_systems(comboBox_3->currentIndex());
}
