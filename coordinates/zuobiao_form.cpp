#include "coordinates/zuobiao_form.h"

#include "coordinates/json_file_manager.h"
#include "coordinates/plane_calibration.h"
#include "coordinates/seven_parameter.h"

#include <QComboBox>
#include <QDebug>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

enum class part
{
    ellipsoid,
    projection,
    seven,
    four
};

/// A number of the stored record as the form shows it.
struct number_field
{
    const char* name; ///< of the line edit
    part belongs;
    int decimals;
    const char* chinese; ///< label
    const char* english;
    const char* unit_chinese;
    const char* unit_english;
    double& (*of)(CoordinateSystem&);
};

constexpr number_field numbers[] = {
    {"chang_zhou_t", part::ellipsoid, 9, "长半轴：", "Major Semi-Axis", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.changzhou; }},
    {"duan_zhou_t", part::ellipsoid, 9, "短半轴：", "Minor Semi-Axis", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.duanzhou; }},
    {"pianlv_t", part::ellipsoid, 9, "偏率：", "Oblateness", "扁率", "flattening",
     [](CoordinateSystem& s) -> double& { return s.pianlv; }},
    {"east", part::projection, 6, "东偏移:", "Eastward askew", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.east; }},
    {"k0", part::projection, 6, "投影比例尺:", "Scale", "中央经线上的比例尺",
     "scale on the central meridian", [](CoordinateSystem& s) -> double& { return s.k0; }},
    {"north", part::projection, 6, "北偏移:", "Northward askew", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.north; }},
    {"tall", part::projection, 6, "投影高:", "Height", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.tall; }},
    {"dx_2", part::seven, 2, "DX:", "DX:", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.param7.dx; }},
    {"dy_2", part::seven, 2, "DY:", "DY:", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.param7.dy; }},
    {"dz_2", part::seven, 2, "DZ:", "DZ:", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.param7.dz; }},
    {"rotx_2", part::seven, 2, "RX:", "RX:", "角秒", "arc-seconds",
     [](CoordinateSystem& s) -> double& { return s.param7.rx; }},
    {"roty_2", part::seven, 2, "RY:", "RY:", "角秒", "arc-seconds",
     [](CoordinateSystem& s) -> double& { return s.param7.ry; }},
    {"rotz_2", part::seven, 2, "RZ:", "RZ:", "角秒", "arc-seconds",
     [](CoordinateSystem& s) -> double& { return s.param7.rz; }},
    {"k_8", part::seven, 2, "K:", "K:", "尺度差（使用时加 1）",
     "scale difference (1 is added in use)",
     [](CoordinateSystem& s) -> double& { return s.param7.k; }},
    {"east_5", part::four, 2, "东偏移:", "Eastward askew", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.param4.dx; }},
    {"north_5", part::four, 2, "北偏移:", "Northward askew", "米", "metres",
     [](CoordinateSystem& s) -> double& { return s.param4.dy; }},
    {"rt_4", part::four, 2, "旋转角:", "Rotation angle", "角秒", "arc-seconds",
     [](CoordinateSystem& s) -> double& { return s.param4.rt; }},
    {"k_4", part::four, 2, "投影比例尺:", "Scale", "平面比例尺", "plane scale",
     [](CoordinateSystem& s) -> double& { return s.param4.k; }},
};

size_t index_of(const char* name)
{
    const auto* found =
        std::find_if(std::begin(numbers), std::end(numbers), [name](const number_field& one) {
            return QLatin1String(one.name) == QLatin1String(name);
        });
    Q_ASSERT(found != std::end(numbers));
    return static_cast<size_t>(found - std::begin(numbers));
}

constexpr int follow_ms = 500;
constexpr int number_width = 140; // pixels
constexpr int meridian_width = 62;
constexpr int column_gap = 12;

/// The words of a label without the colon that some have.
QString plain(QString label)
{
    while (label.endsWith(u':') || label.endsWith(u'：') || label.endsWith(u' '))
        label.chop(1);
    return label;
}

} // namespace

// Making

zuobiaoForm::zuobiaoForm(QWidget* parent) : QWidget(parent, Qt::WindowFlags(0x8001003))
{
    static_assert((Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint).toInt() ==
                  0x8001003);
    m_numbers.resize(std::size(numbers));
    m_texts.push_back({this, "坐标系统", "Coordinate System"});

    auto* column = new QVBoxLayout(this);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(make_name_row());
    column->addWidget(make_ellipsoid_box());
    column->addWidget(make_projection_box());
    column->addWidget(make_parameters_box());
    column->addLayout(make_buttons());

    connect(pushButton, &QPushButton::clicked, this, &zuobiaoForm::on_pushButton_clicked);
    connect(pushButton_2, &QPushButton::clicked, this, &zuobiaoForm::on_pushButton_2_clicked);
    connect(pushButton_3, &QPushButton::clicked, this, &zuobiaoForm::on_pushButton_3_clicked);
    connect(pushButton_4, &QPushButton::clicked, this, &zuobiaoForm::on_pushButton_4_clicked);
    for (const QRadioButton* one : {radioButton, radioButton_2, radioButton_3})
        connect(one, &QRadioButton::toggled, this, &zuobiaoForm::enable_rows);
    new form_parts::keys(this, pushButton, pushButton_2);

    auto* follow = new QTimer(this);
    connect(follow, &QTimer::timeout, this, &zuobiaoForm::follow_ellipsoid);
    follow->start(follow_ms);
}

void zuobiaoForm::add_labelled(QGridLayout* grid, int row, int column, QWidget* field,
                               const char* chinese, const char* english)
{
    auto* label = new QLabel(field->parentWidget());
    label->setBuddy(field);
    m_texts.push_back({label, chinese, english});
    grid->addWidget(label, row, column, Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(field, row, column + 1);
}

void zuobiaoForm::add_number(QGridLayout* grid, int row, int column, const char* name)
{
    const size_t index = index_of(name);
    auto* field = form_parts::make<QLineEdit>(grid->parentWidget(), name);
    field->setMinimumWidth(number_width);
    m_numbers[index] = field;
    add_labelled(grid, row, column, field, numbers[index].chinese, numbers[index].english);
}

QWidget* zuobiaoForm::make_name_row()
{
    m_name_row = new QWidget(this);
    auto* grid = new QGridLayout(m_name_row);
    grid->setContentsMargins(0, 0, 0, 0);
    sys_name = form_parts::make<QLineEdit>(m_name_row, "sys_name");
    add_labelled(grid, 0, 0, sys_name, "坐标系统名字:", "System Name:");
    return m_name_row;
}

QGroupBox* zuobiaoForm::make_ellipsoid_box()
{
    auto* box = new QGroupBox(this);
    m_texts.push_back({box, "目标椭球", "Target ellipsoid"});
    auto* grid = new QGridLayout(box);
    grid->setHorizontalSpacing(column_gap);
    tuoqiu = form_parts::make<QComboBox>(box, "tuoqiu");
    form_parts::keep_width(tuoqiu);
    grid->addWidget(tuoqiu, 0, 0, 1, 2);
    add_number(grid, 0, 2, "pianlv_t");
    add_number(grid, 1, 0, "chang_zhou_t");
    add_number(grid, 1, 2, "duan_zhou_t");
    for (const int column : {1, 3})
        grid->setColumnStretch(column, 1);
    return box;
}

QGroupBox* zuobiaoForm::make_projection_box()
{
    auto* box = new QGroupBox(this);
    m_texts.push_back({box, "投影参数", "Projection parameters"});
    auto* grid = new QGridLayout(box);
    grid->setHorizontalSpacing(column_gap);
    mode = form_parts::make<QComboBox>(box, "mode");
    add_labelled(grid, 0, 0, mode, "投影方式:", "Method");
    touyingdai = form_parts::make<QComboBox>(box, "touyingdai");
    add_labelled(grid, 0, 2, touyingdai, "投影带:", "Belt");
    add_number(grid, 1, 0, "east");
    add_number(grid, 1, 2, "k0");
    add_number(grid, 2, 0, "north");
    add_number(grid, 2, 2, "tall");

    auto* meridian = new QWidget(box);
    auto* row = new QHBoxLayout(meridian);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    const auto angle = [&](const char* name, const QString& mark) {
        auto* field = form_parts::make<QLineEdit>(meridian, name);
        field->setMinimumWidth(meridian_width);
        row->addWidget(field);
        row->addWidget(new QLabel(mark, meridian));
        return field;
    };
    center = angle("center", QStringLiteral("°"));
    center_2 = angle("center_2", QStringLiteral("′"));
    center_3 = angle("center_3", QStringLiteral("″"));
    meridian->setFocusProxy(center);
    add_labelled(grid, 3, 0, meridian, "中央经线:", "Principal meridian :");
    pushButton_3 = form_parts::make<QPushButton>(box, "pushButton_3");
    m_texts.push_back({pushButton_3, "平面校准", "Plane calibration"});
    grid->addWidget(pushButton_3, 3, 3);
    for (const int column : {1, 3})
        grid->setColumnStretch(column, 1);
    return box;
}

QGroupBox* zuobiaoForm::make_parameters_box()
{
    auto* box = new QGroupBox(this);
    m_texts.push_back({box, "参数选择", "Parameter selection"});
    auto* column = new QVBoxLayout(box);

    auto* choice = new QHBoxLayout;
    choice->setSpacing(20);
    auto* label = new QLabel(box);
    m_texts.push_back({label, "参数选择：", "Selection"});
    choice->addWidget(label);
    const auto radio = [&](const char* name, const char* chinese, const char* english) {
        auto* button = form_parts::make<QRadioButton>(box, name);
        m_texts.push_back({button, chinese, english});
        choice->addWidget(button);
        return button;
    };
    radioButton = radio("radioButton", "七参数", "7 Parameter");
    radioButton_2 = radio("radioButton_2", "四参数", "4 Parameter");
    radioButton_3 = radio("radioButton_3", "默认参数", "Default Parameter");
    label->setBuddy(radioButton);
    choice->addStretch();
    column->addLayout(choice);

    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(column_gap);
    column->addLayout(grid);
    int row = 0;
    for (const char* name : {"dx_2", "dy_2", "dz_2"})
        add_number(grid, row++, 0, name);
    row = 0;
    for (const char* name : {"rotx_2", "roty_2", "rotz_2"})
        add_number(grid, row++, 2, name);
    add_number(grid, row, 0, "k_8");
    pushButton_4 = form_parts::make<QPushButton>(box, "pushButton_4");
    m_texts.push_back({pushButton_4, "计算", "Calculation"});
    grid->addWidget(pushButton_4, row, 3);
    row = 0;
    for (const char* name : {"east_5", "north_5", "rt_4", "k_4"})
        add_number(grid, row++, 4, name);
    return box;
}

QLayout* zuobiaoForm::make_buttons()
{
    auto* row = new QHBoxLayout;
    row->addStretch();
    pushButton = form_parts::make<QPushButton>(this, "pushButton");
    pushButton_2 = form_parts::make<QPushButton>(this, "pushButton_2");
    m_texts.push_back({pushButton, "确定", "Confirm"});
    m_texts.push_back({pushButton_2, "取消", "Cancel"});
    row->addWidget(pushButton);
    row->addWidget(pushButton_2);
    return row;
}

// Setting up

void zuobiaoForm::set_up(JsonFileManager* store, int chosen_mode, int system_index,
                         int chosen_language)
{
    js = store;
    opened_mode = chosen_mode;
    sys_index = system_index;
    language = chosen_language;
    write_texts();
    if (opened_mode != create)
        remove_name_row();
    tuoqiu->setCurrentIndex(sys_index);
    const CoordinateSystem* system = system_at(sys_index);
    show_system(system != nullptr ? *system : CoordinateSystem());
    shown_ellipsoid = tuoqiu->currentIndex();
    enable_rows();
    if (opened_mode == check)
        disable_everything();
    else if (opened_mode == create)
        sys_name->setFocus();
}

void zuobiaoForm::write_texts()
{
    for (const form_parts::text& one : m_texts) {
        one.write(language);
        if (const auto* label = qobject_cast<QLabel*>(one.widget);
            label != nullptr && label->buddy() != nullptr)
            label->buddy()->setAccessibleName(plain(label->text()));
    }
    const auto words = [this](const char* chinese, const char* english) {
        return form_parts::in_language(language, chinese, english);
    };
    for (size_t i = 0; i < m_numbers.size(); ++i)
        m_numbers[i]->setToolTip(words(numbers[i].unit_chinese, numbers[i].unit_english));
    struct angle
    {
        QLineEdit* field;
        const char* chinese;
        const char* english;
    };
    for (const angle& one : {angle{center, "中央经线 度", "Principal meridian, degrees"},
                             angle{center_2, "中央经线 分", "Principal meridian, minutes"},
                             angle{center_3, "中央经线 秒", "Principal meridian, seconds"}}) {
        one.field->setAccessibleName(words(one.chinese, one.english));
        one.field->setToolTip(one.field->accessibleName());
    }
    radioButton->setAccessibleName(radioButton->text());
    tuoqiu->setAccessibleName(words("目标椭球", "Target ellipsoid"));

    mode->clear();
    mode->addItems({words("高斯", "Gauss"), QStringLiteral("UTM")});
    touyingdai->clear();
    touyingdai->addItems(
        {words("三度带", "Zone of third degree"), words("六度带", "Band of six degrees")});
    tuoqiu->clear();
    for (const CoordinateSystem& one : std::as_const(js->systems))
        tuoqiu->addItem(one.name);
}

void zuobiaoForm::remove_name_row()
{
    if (m_name_row == nullptr)
        return;
    std::erase_if(m_texts, [this](const form_parts::text& one) {
        return one.widget->parentWidget() == m_name_row;
    });
    delete m_name_row;
    m_name_row = nullptr;
    sys_name = nullptr;
}

void zuobiaoForm::show_system(CoordinateSystem system)
{
    for (size_t i = 0; i < m_numbers.size(); ++i)
        m_numbers[i]->setText(QString::number(numbers[i].of(system), 'f', numbers[i].decimals));
    mode->setCurrentIndex(system.utm_mode == 1 ? 0 : 1);
    touyingdai->setCurrentIndex(system.method == 6 ? 1 : 0);

    // The minutes are those of a whole degree, which a fraction never has: all of it
    // stands in the seconds. Reading adds the three up, so nothing is lost.
    const double degrees = std::trunc(system.l0) + 0.0; // no minus before a 0
    const double fraction = system.l0 - degrees;
    center->setText(QString::number(degrees, 'f', 0));
    center_2->setText(QString::number(std::trunc(fraction) * 60.0 + 0.0, 'f', 0));
    center_3->setText(QString::number(fraction * 3600.0, 'f', 4));

    (system.type == 1   ? radioButton
     : system.type == 0 ? radioButton_2
                        : radioButton_3)
        ->setChecked(true);
}

void zuobiaoForm::follow_ellipsoid()
{
    if (tuoqiu->currentIndex() == shown_ellipsoid)
        return;
    shown_ellipsoid = tuoqiu->currentIndex();
    CoordinateSystem* system = system_at(shown_ellipsoid);
    if (system == nullptr)
        return;
    for (size_t i = 0; i < m_numbers.size(); ++i) {
        if (numbers[i].belongs == part::ellipsoid)
            m_numbers[i]->setText(
                QString::number(numbers[i].of(*system), 'f', numbers[i].decimals));
    }
}

void zuobiaoForm::enable_rows()
{
    for (size_t i = 0; i < m_numbers.size(); ++i) {
        if (numbers[i].belongs == part::seven)
            m_numbers[i]->setEnabled(radioButton->isChecked());
        else if (numbers[i].belongs == part::four)
            m_numbers[i]->setEnabled(radioButton_2->isChecked());
    }
}

void zuobiaoForm::disable_everything()
{
    for (QLineEdit* one : m_numbers)
        one->setEnabled(false);
    for (QWidget* one : std::initializer_list<QWidget*>{tuoqiu, mode, touyingdai, center, center_2,
                                                        center_3, radioButton, radioButton_2,
                                                        radioButton_3, pushButton_3, pushButton_4})
        one->setEnabled(false);
}

QLineEdit* zuobiaoForm::number(const char* name) const
{
    return m_numbers[index_of(name)];
}

CoordinateSystem* zuobiaoForm::system_at(int index) const
{
    return index >= 0 && index < js->systems.size() ? &js->systems[index] : nullptr;
}

// Confirming

bool zuobiaoForm::is_complete() const
{
    const auto filled = [](const QLineEdit* field) { return !field->text().isEmpty(); };
    return filled(sys_name) && filled(center) && filled(center_2) && filled(center_3) &&
           std::all_of(m_numbers.begin(), m_numbers.end(), filled);
}

int zuobiaoForm::chosen_type() const
{
    return radioButton->isChecked() ? 1 : radioButton_2->isChecked() ? 0 : 2;
}

void zuobiaoForm::read_into(CoordinateSystem& system) const
{
    for (size_t i = 0; i < m_numbers.size(); ++i)
        numbers[i].of(system) = m_numbers[i]->text().toDouble();
    system.utm_mode = mode->currentIndex() == 0 ? 1 : 2;
    system.method = touyingdai->currentIndex() == 0 ? 3 : 6;
    system.l0 = center->text().toDouble() + center_2->text().toDouble() / 60.0 +
                center_3->text().toDouble() / 3600.0;
}

void zuobiaoForm::on_pushButton_clicked()
{
    switch (opened_mode) {
    case edit: overwrite_system(); break;
    case create:
        if (!is_complete()) {
            QMessageBox::warning(
                this, form_parts::in_language(language, "新建", "CREAT"),
                form_parts::in_language(language, "请输入完整坐标参数",
                                        "Please provide the complete coordinate parameters."));
            return;
        }
        create_system();
        break;
    default: break;
    }
    close();
}

void zuobiaoForm::create_system()
{
    CoordinateSystem created;
    created.name = sys_name->text();
    read_into(created);
    // The choice of parameters belongs to the template: the new system keeps the
    // type and the ellipsoid code of a default-constructed one.
    if (CoordinateSystem* model = system_at(sys_index); model != nullptr)
        model->type = chosen_type();

    const QString title = form_parts::in_language(language, "新建", "CREAT");
    if (js->addCoordinateSystem(created)) {
        qDebug() << "成功添加坐标系统:" << created.name;
        QMessageBox::information(
            this, title,
            form_parts::in_language(language, "坐标系统新建成功",
                                    "Coordinate system has been successfully created."));
    } else {
        qDebug() << "添加坐标系统失败，可能已存在同名系统";
        QMessageBox::warning(this, title,
                             form_parts::in_language(language, "坐标系统新建失败",
                                                     "Coordinate system creation failed."));
    }
}

void zuobiaoForm::overwrite_system()
{
    CoordinateSystem* system = system_at(tuoqiu->currentIndex());
    if (system == nullptr) {
        qDebug() << "更新坐标系统失败";
        return;
    }
    read_into(*system);
    system->type = chosen_type();
    if (js->updateCoordinateSystem(*system))
        qDebug() << "成功更新坐标系统:" << system->name;
    else
        qDebug() << "更新坐标系统失败";
}

void zuobiaoForm::on_pushButton_2_clicked()
{
    close();
}

// Calculators

template <typename Calculator, typename Result, typename Receiver>
void zuobiaoForm::open_calculator(Result result, Receiver receiver)
{
    auto* calculator = new Calculator(this);
    connect(this, &zuobiaoForm::variableChanged, calculator, &Calculator::set_up);
    emit variableChanged(language, js);
    connect(calculator, result, this, receiver);
    calculator->setWindowModality(Qt::ApplicationModal);
    calculator->setAttribute(Qt::WA_DeleteOnClose);
    calculator->show();
}

void zuobiaoForm::on_pushButton_3_clicked()
{
    open_calculator<plane_calibration>(&plane_calibration::variableChanged,
                                       &zuobiaoForm::recive_plane_calibration);
}

void zuobiaoForm::on_pushButton_4_clicked()
{
    open_calculator<seven_parameter>(&seven_parameter::send_seven_parameter,
                                     &zuobiaoForm::recive_seven_parameter);
}

void zuobiaoForm::recive_seven_parameter(QString dx, QString dy, QString dz, QString rx, QString ry,
                                         QString rz, QString k)
{
    number("dx_2")->setText(dx);
    number("dy_2")->setText(dy);
    number("dz_2")->setText(dz);
    number("rotx_2")->setText(rx);
    number("roty_2")->setText(ry);
    number("rotz_2")->setText(rz);
    number("k_8")->setText(k);
}

void zuobiaoForm::recive_plane_calibration(QString dx, QString dy)
{
    const auto add = [](QLineEdit* offset, const QString& difference) {
        offset->setText(QString::number(offset->text().toDouble() + difference.toDouble(), 'f', 2));
    };
    add(number("east"), dx);
    add(number("north"), dy);
}
