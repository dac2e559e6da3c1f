// The editor of one coordinate system, with everything that it keeps odd.

#include "coordinates/plane_calibration.h"
#include "coordinates/seven_parameter.h"
#include "coordinates/zuobiao_form.h"
#include "form_driver.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"

#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QMetaMethod>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTimer>

namespace {

const QStringList seven_fields{"dx_2", "dy_2", "dz_2", "rotx_2", "roty_2", "rotz_2", "k_8"};
const QStringList four_fields{"east_5", "north_5", "rt_4", "k_4"};
const QStringList other_fields{"chang_zhou_t", "duan_zhou_t", "pianlv_t", "east",     "north",
                               "k0",           "tall",        "center",   "center_2", "center_3"};

/// A system in which every number is another one.
CoordinateSystem sample()
{
    CoordinateSystem s;
    s.name = "Field 7";
    s.changzhou = 6378137.123456789;
    s.duanzhou = 6356752.25;
    s.pianlv = 0.003352813;
    s.type = 1;
    s.ellipsoid = 3;
    s.utm_mode = 2;
    s.method = 6;
    s.k0 = 0.9996;
    s.east = 500000.1234567;
    s.north = -2.5;
    s.tall = 31.0;
    s.l0 = 114.5;
    s.param7 = {-24.123, 123.456, 94.789, 0.021, -0.257, 0.126, 1.1};
    s.param4 = {10.004, -20.006, 0.999, 12.345};
    return s;
}

void set_text(const QWidget* form, const QString& edit, const QString& text)
{
    find<QLineEdit>(form, edit)->setText(text);
}

bool enabled(const QWidget* form, const QString& name)
{
    return find<QWidget>(form, name)->isEnabled();
}

} // namespace

class test_zuobiao_form : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void names_of_signals_and_slots();
    void shows_every_field();
    void meridian_is_shown_as_whole_degrees_and_seconds_data();
    void meridian_is_shown_as_whole_degrees_and_seconds();
    void unknown_codes_open_like_this_data();
    void unknown_codes_open_like_this();
    void every_text_in_both_languages_data();
    void every_text_in_both_languages();
    void fields_have_names_and_units();
    void stays_at_its_size();
    void keys_and_their_order();

    void the_name_is_there_for_a_new_system_only_data();
    void the_name_is_there_for_a_new_system_only();
    void the_choice_enables_its_rows();
    void checking_disables_everything();
    void the_ellipsoid_follows_its_box();

    void creates_a_system();
    void a_template_gets_the_type_and_the_new_system_does_not();
    void the_template_is_what_the_form_was_opened_on();
    void creating_needs_every_field_data();
    void creating_needs_every_field();
    void creating_an_existing_name_fails_data();
    void creating_an_existing_name_fails();
    void creating_without_a_template();

    void editing_writes_every_field();
    void editing_overwrites_the_system_of_the_box();
    void a_quick_confirm_takes_the_axes_along();
    void editing_takes_empty_fields_as_zero();
    void editing_keeps_the_digits_that_are_shown();
    void editing_that_fails_is_only_logged();
    void checking_and_cancelling_change_nothing();

    void calibration_adds_to_the_offsets();
    void seven_parameters_arrive_as_they_came();
    void calculators_end_with_their_windows();

private:
    zuobiaoForm* open(int mode, int index, int language = 0);
    [[nodiscard]] CoordinateSystem& stored(int index) const { return (*m_store)->systems[index]; }

    std::unique_ptr<fresh_store> m_store;
    QPointer<zuobiaoForm> m_form;
};

void test_zuobiao_form::init()
{
    m_store = std::make_unique<fresh_store>();
    QVERIFY((*m_store)->addCoordinateSystem(sample()));
    // BEIJING1954, CGCS2000, WGS1984, XIAN1980, Field 7: a new one stands last.
}

void test_zuobiao_form::cleanup()
{
    delete m_form;
}

zuobiaoForm* test_zuobiao_form::open(int mode, int index, int language)
{
    delete m_form;
    m_form = new zuobiaoForm;
    m_form->set_up(m_store->get(), mode, index, language);
    m_form->setAttribute(Qt::WA_DeleteOnClose);
    m_form->show();
    if (!QTest::qWaitForWindowExposed(m_form))
        qFatal("the form does not show");
    return m_form;
}

void test_zuobiao_form::names_of_signals_and_slots()
{
    QStringList declared;
    const QMetaObject& meta = zuobiaoForm::staticMetaObject;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at)
        declared += QString::fromLatin1(meta.method(at).methodSignature());
    QCOMPARE(declared,
             (QStringList{
                 "variableChanged(int,JsonFileManager*)", "set_up(JsonFileManager*,int,int,int)",
                 "on_pushButton_clicked()", "on_pushButton_2_clicked()",
                 "on_pushButton_3_clicked()", "on_pushButton_4_clicked()",
                 "recive_seven_parameter(QString,QString,QString,QString,QString,QString,QString)",
                 "recive_plane_calibration(QString,QString)"}));
}

void test_zuobiao_form::shows_every_field()
{
    const QWidget* form = open(zuobiaoForm::edit, 4);
    const std::pair<const char*, const char*> shown[] = {
        {"chang_zhou_t", "6378137.123456789"},
        {"duan_zhou_t", "6356752.250000000"},
        {"pianlv_t", "0.003352813"},
        {"east", "500000.123457"},
        {"north", "-2.500000"},
        {"k0", "0.999600"},
        {"tall", "31.000000"},
        {"center", "114"},
        {"center_2", "0"},
        {"center_3", "1800.0000"},
        {"dx_2", "-24.12"},
        {"dy_2", "123.46"},
        {"dz_2", "94.79"},
        {"rotx_2", "0.02"},
        {"roty_2", "-0.26"},
        {"rotz_2", "0.13"},
        {"k_8", "1.10"},
        {"east_5", "10.00"},
        {"north_5", "-20.01"},
        {"rt_4", "12.35"},
        {"k_4", "1.00"},
    };
    for (const auto& [edit, text] : shown)
        QVERIFY2(text_in(form, edit) == QLatin1String(text),
                 qPrintable(QString("%1: %2").arg(edit, text_in(form, edit))));
    QCOMPARE(find<QComboBox>(form, "tuoqiu")->currentText(), QStringLiteral("Field 7"));
    QCOMPARE(find<QComboBox>(form, "tuoqiu")->count(), 5);
    QCOMPARE(find<QComboBox>(form, "mode")->currentIndex(), 1);
    QCOMPARE(find<QComboBox>(form, "touyingdai")->currentIndex(), 1);
    QVERIFY(find<QRadioButton>(form, "radioButton")->isChecked());
}

void test_zuobiao_form::meridian_is_shown_as_whole_degrees_and_seconds_data()
{
    QTest::addColumn<double>("l0");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("half a degree is 1800 seconds, never minutes")
        << 114.5 << QStringList{"114", "0", "1800.0000"};
    QTest::newRow("whole") << 117.0 << QStringList{"117", "0", "0.0000"};
    QTest::newRow("west") << -71.25 << QStringList{"-71", "0", "-900.0000"};
    QTest::newRow("just west of Greenwich") << -0.5 << QStringList{"0", "0", "-1800.0000"};
    QTest::newRow("none") << 0.0 << QStringList{"0", "0", "0.0000"};
    QTest::newRow("absurd") << 1e15 << QStringList{"1000000000000000", "0", "0.0000"};
}

void test_zuobiao_form::meridian_is_shown_as_whole_degrees_and_seconds()
{
    QFETCH(double, l0);
    QFETCH(QStringList, shown);
    stored(4).l0 = l0;
    const QWidget* form = open(zuobiaoForm::edit, 4);
    QCOMPARE((QStringList{text_in(form, "center"), text_in(form, "center_2"),
                          text_in(form, "center_3")}),
             shown);
    // Reading adds the three up again.
    press(form, "pushButton");
    QCOMPARE(stored(4).l0, l0);
}

void test_zuobiao_form::unknown_codes_open_like_this_data()
{
    QTest::addColumn<int>("utm_mode");
    QTest::addColumn<int>("method");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("mode_row");
    QTest::addColumn<int>("belt_row");
    QTest::addColumn<QString>("choice");
    QTest::addColumn<int>("stored_mode");
    QTest::addColumn<int>("stored_method");
    QTest::addColumn<int>("stored_type");
    QTest::newRow("Gauss, 3 degrees, four")
        << 1 << 3 << 0 << 0 << 0 << "radioButton_2" << 1 << 3 << 0;
    QTest::newRow("UTM, 6 degrees, seven") << 2 << 6 << 1 << 1 << 1 << "radioButton" << 2 << 6 << 1;
    QTest::newRow("default parameters") << 1 << 3 << 2 << 0 << 0 << "radioButton_3" << 1 << 3 << 2;
    QTest::newRow("neither") << 0 << 0 << 7 << 1 << 0 << "radioButton_3" << 2 << 3 << 2;
    QTest::newRow("large") << 99 << 60 << -1 << 1 << 0 << "radioButton_3" << 2 << 3 << 2;
}

void test_zuobiao_form::unknown_codes_open_like_this()
{
    QFETCH(int, utm_mode);
    QFETCH(int, method);
    QFETCH(int, type);
    QFETCH(int, mode_row);
    QFETCH(int, belt_row);
    QFETCH(QString, choice);
    QFETCH(int, stored_mode);
    QFETCH(int, stored_method);
    QFETCH(int, stored_type);
    stored(4).utm_mode = utm_mode;
    stored(4).method = method;
    stored(4).type = type;
    const QWidget* form = open(zuobiaoForm::edit, 4);
    QCOMPARE(find<QComboBox>(form, "mode")->currentIndex(), mode_row);
    QCOMPARE(find<QComboBox>(form, "touyingdai")->currentIndex(), belt_row);
    QVERIFY(find<QRadioButton>(form, choice)->isChecked());
    press(form, "pushButton");
    QCOMPARE(stored(4).utm_mode, stored_mode);
    QCOMPARE(stored(4).method, stored_method);
    QCOMPARE(stored(4).type, stored_type);
}

void test_zuobiao_form::every_text_in_both_languages_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("Chinese")
        << 0 << QStringList{"坐标系统",    "坐标系统名字:", "目标椭球",  "长半轴：",  "短半轴：",
                            "偏率：",      "投影参数",      "投影方式:", "投影带:",   "东偏移:",
                            "投影比例尺:", "北偏移:",       "投影高:",   "中央经线:", "平面校准",
                            "参数选择",    "参数选择：",    "旋转角:",   "确定",      "取消",
                            "七参数",      "四参数",        "默认参数",  "计算"}
        << QStringList{"高斯", "UTM", "三度带", "六度带"};
    QTest::newRow("English") << 1
                             << QStringList{"Coordinate System",
                                            "System Name:",
                                            "Target ellipsoid",
                                            "Major Semi-Axis",
                                            "Minor Semi-Axis",
                                            "Oblateness",
                                            "Projection parameters",
                                            "Method",
                                            "Belt",
                                            "Eastward askew",
                                            "Scale",
                                            "Northward askew",
                                            "Height",
                                            "Principal meridian :",
                                            "Plane calibration",
                                            "Parameter selection",
                                            "Selection",
                                            "Rotation angle",
                                            "Confirm",
                                            "Cancel",
                                            "7 Parameter",
                                            "4 Parameter",
                                            "Default Parameter",
                                            "Calculation"}
                             << QStringList{"Gauss", "UTM", "Zone of third degree",
                                            "Band of six degrees"};
}

void test_zuobiao_form::every_text_in_both_languages()
{
    QFETCH(int, language);
    QFETCH(QStringList, texts);
    QFETCH(QStringList, entries);
    const QWidget* form = open(zuobiaoForm::create, 0, language);
    QSet<QString> shown{form->windowTitle()};
    for (const auto* label : form->findChildren<QLabel*>())
        shown += label->text();
    for (const auto* button : form->findChildren<QAbstractButton*>())
        shown += button->text();
    for (const auto* box : form->findChildren<QGroupBox*>())
        shown += box->title();
    for (const QString& text : texts)
        QVERIFY2(shown.contains(text), qPrintable(text));
    // The same texts in their places.
    QCOMPARE(form->windowTitle(), texts[0]);
    const std::pair<const char*, int> buttons[] = {
        {"pushButton", 18},    {"pushButton_2", 19}, {"radioButton", 20}, {"radioButton_2", 21},
        {"radioButton_3", 22}, {"pushButton_3", 14}, {"pushButton_4", 23}};
    for (const auto& [name, text] : buttons)
        QCOMPARE(find<QAbstractButton>(form, name)->text(), texts[text]);
    const std::pair<const char*, int> labels[] = {
        {"sys_name", 1}, {"chang_zhou_t", 3}, {"duan_zhou_t", 4}, {"pianlv_t", 5},
        {"mode", 7},     {"touyingdai", 8},   {"east", 9},        {"k0", 10},
        {"north", 11},   {"tall", 12},        {"rt_4", 17}};
    for (const auto& [name, text] : labels) {
        const auto* field = find<QWidget>(form, name);
        QStringList own;
        for (const auto* label : form->findChildren<QLabel*>()) {
            if (label->buddy() == field)
                own += label->text();
        }
        QCOMPARE(own, QStringList{texts[text]});
    }
    const auto* mode = find<QComboBox>(form, "mode");
    const auto* belt = find<QComboBox>(form, "touyingdai");
    QCOMPARE(
        (QStringList{mode->itemText(0), mode->itemText(1), belt->itemText(0), belt->itemText(1)}),
        entries);
}

void test_zuobiao_form::fields_have_names_and_units()
{
    for (const int language : {0, 1}) {
        const QWidget* form = open(zuobiaoForm::create, 0, language);
        for (const QString& name :
             seven_fields + four_fields + other_fields + QStringList{"sys_name", "tuoqiu"}) {
            const auto* field = find<QWidget>(form, name);
            QVERIFY2(!field->accessibleName().isEmpty(), qPrintable(name));
            QVERIFY2(!field->accessibleName().endsWith(u':'), qPrintable(name));
        }
        QCOMPARE(find<QWidget>(form, "rotx_2")->toolTip(),
                 language == 0 ? QStringLiteral("角秒") : QStringLiteral("arc-seconds"));
    }
}

void test_zuobiao_form::stays_at_its_size()
{
    stored(0).name = QString(5000, 'W');
    for (const int language : {0, 1}) {
        for (const int mode : {zuobiaoForm::check, zuobiaoForm::edit, zuobiaoForm::create}) {
            const QWidget* form = open(mode, 0, language);
            QCOMPARE(form->minimumSize(), form->maximumSize());
            QVERIFY(form->width() < 1000);
            QVERIFY(form->height() < 700);
        }
    }
}

void test_zuobiao_form::keys_and_their_order()
{
    stored(0).type = 1;
    QWidget* form = open(zuobiaoForm::create, 0);
    QCOMPARE(form->focusWidget(), find<QWidget>(form, "sys_name"));
    QCOMPARE(tab_order(form, "sys_name"),
             (QStringList{
                 "sys_name",     "tuoqiu",        "pianlv_t",      "chang_zhou_t", "duan_zhou_t",
                 "mode",         "touyingdai",    "east",          "k0",           "north",
                 "tall",         "center",        "center_2",      "center_3",     "pushButton_3",
                 "radioButton",  "radioButton_2", "radioButton_3", "dx_2",         "dy_2",
                 "dz_2",         "rotx_2",        "roty_2",        "rotz_2",       "k_8",
                 "pushButton_4", "pushButton",    "pushButton_2"}));
    box_watcher watcher;
    QTest::keyClick(find<QLineEdit>(form, "tall"), Qt::Key_Return);
    QCOMPARE(watcher.texts(), QStringList{"请输入完整坐标参数"});
    QVERIFY(form->isVisible());
    QTest::keyClick(find<QLineEdit>(form, "tall"), Qt::Key_Escape);
    QTRY_VERIFY(m_form.isNull());
    QCOMPARE((*m_store)->systems.size(), 5);
}

void test_zuobiao_form::the_name_is_there_for_a_new_system_only_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("check") << 0;
    QTest::newRow("edit") << 1;
    QTest::newRow("new") << 2;
}

void test_zuobiao_form::the_name_is_there_for_a_new_system_only()
{
    QFETCH(int, mode);
    const QWidget* form = open(mode, 3);
    const bool wanted = mode == zuobiaoForm::create;
    QCOMPARE(form->findChild<QLineEdit*>("sys_name") != nullptr, wanted);
    bool labelled = false;
    for (const auto* label : form->findChildren<QLabel*>())
        labelled = labelled || label->text() == QStringLiteral("坐标系统名字:");
    QCOMPARE(labelled, wanted);
    QCOMPARE(find<QComboBox>(form, "tuoqiu")->currentIndex(), 3);
    if (wanted)
        QCOMPARE(text_in(form, "sys_name"), QString());
}

void test_zuobiao_form::the_choice_enables_its_rows()
{
    const QWidget* form = open(zuobiaoForm::edit, 4);
    const auto check = [&](bool seven, bool four) {
        for (const QString& name : seven_fields)
            QCOMPARE(enabled(form, name), seven);
        for (const QString& name : four_fields)
            QCOMPARE(enabled(form, name), four);
        for (const QString& name : other_fields)
            QVERIFY(enabled(form, name));
    };
    check(true, false);
    press(form, "radioButton_2");
    check(false, true);
    press(form, "radioButton_3");
    check(false, false);
    press(form, "radioButton");
    check(true, false);
}

void test_zuobiao_form::checking_disables_everything()
{
    const QWidget* form = open(zuobiaoForm::check, 4);
    for (const QString& name :
         seven_fields + four_fields + other_fields +
             QStringList{"tuoqiu", "mode", "touyingdai", "radioButton", "radioButton_2",
                         "radioButton_3", "pushButton_3", "pushButton_4"})
        QVERIFY2(!enabled(form, name), qPrintable(name));
    QVERIFY(enabled(form, "pushButton"));
    QVERIFY(enabled(form, "pushButton_2"));
}

void test_zuobiao_form::the_ellipsoid_follows_its_box()
{
    const QWidget* form = open(zuobiaoForm::edit, 4);
    const auto timers = form->findChildren<QTimer*>(Qt::FindDirectChildrenOnly);
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers[0]->interval(), 500);
    find<QComboBox>(form, "tuoqiu")->setCurrentIndex(0);
    QTRY_COMPARE(text_in(form, "chang_zhou_t"), QStringLiteral("6378245.000000000"));
    QCOMPARE(text_in(form, "duan_zhou_t"), QStringLiteral("6356863.018773047"));
    QCOMPARE(text_in(form, "pianlv_t"), QStringLiteral("0.003352330"));
    QCOMPARE(text_in(form, "east"), QStringLiteral("500000.123457"));
    QCOMPARE(text_in(form, "dx_2"), QStringLiteral("-24.12"));

    // What is typed afterwards stays: only another choice refills.
    type(form, "chang_zhou_t", "1");
    QTest::qWait(1100);
    QCOMPARE(text_in(form, "chang_zhou_t"), QStringLiteral("1"));
}

void test_zuobiao_form::creates_a_system()
{
    const QWidget* form = open(zuobiaoForm::create, 4);
    const log_capture log;
    box_watcher watcher;
    type(form, "sys_name", "North 1");
    type(form, "center_2", "30");
    type(form, "center_3", "36");
    type(form, "k_8", "0.0000012345");
    type(form, "tall", "high"); // no number
    press(form, "pushButton");
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Information);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("新建"));
    QCOMPARE(watcher.boxes[0].text, QStringLiteral("坐标系统新建成功"));
    QVERIFY(log.has("成功添加坐标系统: \"North 1\""));
    QTRY_VERIFY(m_form.isNull());

    const CoordinateSystem& made = stored(5);
    QCOMPARE(made.name, QStringLiteral("North 1"));
    QCOMPARE(made.changzhou, 6378137.123456789);
    QCOMPARE(made.duanzhou, 6356752.25);
    QCOMPARE(made.pianlv, 0.003352813);
    QCOMPARE(made.utm_mode, 2);
    QCOMPARE(made.method, 6);
    QCOMPARE(made.k0, 0.9996);
    QCOMPARE(made.east, 500000.123457);
    QCOMPARE(made.north, -2.5);
    QCOMPARE(made.tall, 0.0);
    QCOMPARE(made.l0, 114.0 + 30.0 / 60.0 + 36.0 / 3600.0);
    QCOMPARE(made.param7.dx, -24.12);
    QCOMPARE(made.param7.rz, 0.13);
    QCOMPARE(made.param7.k, 0.0000012345);
    QCOMPARE(made.param4.dx, 10.0);
    QCOMPARE(made.param4.dy, -20.01);
    QCOMPARE(made.param4.rt, 12.35);
    QCOMPARE(made.param4.k, 1.0);
    QCOMPARE(fresh_store::on_disk().size(), 6);
}

void test_zuobiao_form::a_template_gets_the_type_and_the_new_system_does_not()
{
    const QWidget* form = open(zuobiaoForm::create, 3, 1); // XIAN1980: type 0, ellipsoid 1
    box_watcher watcher;
    type(form, "sys_name", "From Xian");
    press(form, "radioButton");
    press(form, "pushButton");
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("CREAT"));
    QCOMPARE(watcher.boxes[0].text,
             QStringLiteral("Coordinate system has been successfully created."));
    QCOMPARE(stored(3).type, 1);
    QCOMPARE(stored(5).type, 0);
    QCOMPARE(stored(5).ellipsoid, 0);
    QCOMPARE(stored(3).ellipsoid, 1);
    // Both go to the file, which is written as a whole.
    for (const CoordinateSystem& one : fresh_store::on_disk()) {
        if (one.name == QStringLiteral("XIAN1980"))
            QCOMPARE(one.type, 1);
        if (one.name == QStringLiteral("From Xian"))
            QCOMPARE(one.type, 0);
    }
}

void test_zuobiao_form::the_template_is_what_the_form_was_opened_on()
{
    const QWidget* form = open(zuobiaoForm::create, 3); // XIAN1980
    find<QComboBox>(form, "tuoqiu")->setCurrentIndex(1);
    QTRY_COMPARE(text_in(form, "chang_zhou_t"), QStringLiteral("6378137.000000000"));
    box_watcher watcher;
    type(form, "sys_name", "From Xian");
    press(form, "radioButton");
    press(form, "pushButton");
    QCOMPARE(watcher.texts(), QStringList{"坐标系统新建成功"});
    // The box gives the axes and no more.
    QCOMPARE(stored(3).type, 1);
    QCOMPARE(stored(1).type, 0);
    QCOMPARE(stored(5).changzhou, stored(1).changzhou);
}

void test_zuobiao_form::creating_needs_every_field_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<int>("language");
    int row = 0;
    for (const QString& field : QStringList{"sys_name"} + other_fields + seven_fields + four_fields)
        QTest::newRow(qPrintable(field)) << field << row++ % 2;
}

void test_zuobiao_form::creating_needs_every_field()
{
    QFETCH(QString, field);
    QFETCH(int, language);
    const QWidget* form = open(zuobiaoForm::create, 0, language);
    set_text(form, "sys_name", "Named");
    set_text(form, field, {});
    box_watcher watcher;
    press(form, "pushButton");
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher.boxes[0].title, language == 0 ? QString("新建") : QString("CREAT"));
    QCOMPARE(watcher.boxes[0].text,
             language == 0 ? QString("请输入完整坐标参数")
                           : QString("Please provide the complete coordinate parameters."));
    QVERIFY(form->isVisible());
    QCOMPARE((*m_store)->systems.size(), 5);
}

void test_zuobiao_form::creating_an_existing_name_fails_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("Chinese") << 0 << "新建"
                             << "坐标系统新建失败";
    QTest::newRow("English") << 1 << "CREAT"
                             << "Coordinate system creation failed.";
}

void test_zuobiao_form::creating_an_existing_name_fails()
{
    QFETCH(int, language);
    QFETCH(QString, title);
    QFETCH(QString, text);
    const QWidget* form = open(zuobiaoForm::create, 1, language);
    const log_capture log;
    box_watcher watcher;
    type(form, "sys_name", "WGS1984");
    press(form, "radioButton_3");
    press(form, "pushButton");
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher.boxes[0].title, title);
    QCOMPARE(watcher.boxes[0].text, text);
    QVERIFY(log.has("添加坐标系统失败，可能已存在同名系统"));
    QTRY_VERIFY(m_form.isNull());
    QCOMPARE((*m_store)->systems.size(), 5);
    // The template's type has changed in memory all the same, not in the file.
    QCOMPARE(stored(1).type, 2);
    for (const CoordinateSystem& one : fresh_store::on_disk()) {
        if (one.name == QStringLiteral("CGCS2000"))
            QCOMPARE(one.type, 0);
    }
}

void test_zuobiao_form::creating_without_a_template()
{
    (*m_store)->systems.clear();
    const QWidget* form = open(zuobiaoForm::create, -1);
    QCOMPARE(text_in(form, "east"), QStringLiteral("500000.000000"));
    QCOMPARE(text_in(form, "k0"), QStringLiteral("1.000000"));
    box_watcher watcher;
    type(form, "sys_name", "First");
    press(form, "pushButton");
    QCOMPARE(watcher.texts(), QStringList{"坐标系统新建成功"});
    QCOMPARE(stored(0).name, QStringLiteral("First"));
}

void test_zuobiao_form::editing_writes_every_field()
{
    const QWidget* form = open(zuobiaoForm::edit, 0);
    const log_capture log;
    const QStringList fields = other_fields + seven_fields + four_fields;
    press(form, "radioButton");
    for (qsizetype i = 0; i < fields.size(); ++i)
        set_text(form, fields[i], QString::number(static_cast<double>(i) + 0.125));
    find<QComboBox>(form, "mode")->setCurrentIndex(1);
    find<QComboBox>(form, "touyingdai")->setCurrentIndex(1);
    box_watcher watcher;
    press(form, "pushButton");
    QTRY_VERIFY(m_form.isNull());
    QCOMPARE(watcher.boxes.size(), 0);
    QVERIFY(log.has("成功更新坐标系统: \"BEIJING1954\""));

    for (const CoordinateSystem& one : {stored(0), fresh_store::on_disk().constFirst()}) {
        QCOMPARE(one.name, QStringLiteral("BEIJING1954"));
        QCOMPARE(one.type, 1);
        QCOMPARE(one.ellipsoid, 0);
        QCOMPARE(one.utm_mode, 2);
        QCOMPARE(one.method, 6);
        const double numbers[] = {one.changzhou, one.duanzhou, one.pianlv, one.east,
                                  one.north,     one.k0,       one.tall};
        for (size_t i = 0; i < std::size(numbers); ++i)
            QCOMPARE(numbers[i], static_cast<double>(i) + 0.125);
        QCOMPARE(one.l0, 7.125 + 8.125 / 60.0 + 9.125 / 3600.0);
        const double parameters[] = {one.param7.dx, one.param7.dy, one.param7.dz, one.param7.rx,
                                     one.param7.ry, one.param7.rz, one.param7.k,  one.param4.dx,
                                     one.param4.dy, one.param4.rt, one.param4.k};
        for (size_t i = 0; i < std::size(parameters); ++i)
            QCOMPARE(parameters[i], static_cast<double>(i) + 10.125);
    }
}

void test_zuobiao_form::editing_overwrites_the_system_of_the_box()
{
    const CoordinateSystem before = stored(4);
    const QWidget* form = open(zuobiaoForm::edit, 4);
    find<QComboBox>(form, "tuoqiu")->setCurrentIndex(1); // CGCS2000
    QTRY_COMPARE(text_in(form, "chang_zhou_t"), QStringLiteral("6378137.000000000"));
    press(form, "pushButton");
    QCOMPARE(stored(1).name, QStringLiteral("CGCS2000"));
    QCOMPARE(stored(1).east, 500000.123457);
    QCOMPARE(stored(1).type, 1);
    QCOMPARE(stored(1).ellipsoid, 3);
    QCOMPARE(stored(4).east, before.east);
    QCOMPARE(stored(4).param7.dx, before.param7.dx);
}

/// Before the timer has shown the axes of the system that was just chosen.
void test_zuobiao_form::a_quick_confirm_takes_the_axes_along()
{
    const CoordinateSystem before = stored(4);
    const QWidget* form = open(zuobiaoForm::edit, 4);
    // No events in between, so no timer either.
    find<QComboBox>(form, "tuoqiu")->setCurrentIndex(0); // BEIJING1954
    find<QPushButton>(form, "pushButton")->click();
    QCOMPARE(stored(0).name, QStringLiteral("BEIJING1954"));
    for (const CoordinateSystem& one : {stored(0), fresh_store::on_disk().constFirst()}) {
        QCOMPARE(one.changzhou, before.changzhou);
        QCOMPARE(one.duanzhou, before.duanzhou);
        QCOMPARE(one.pianlv, before.pianlv);
    }
}

void test_zuobiao_form::editing_takes_empty_fields_as_zero()
{
    const QWidget* form = open(zuobiaoForm::edit, 4);
    for (const char* field : {"east", "center", "k_8", "chang_zhou_t"})
        type(form, field, {});
    type(form, "north", "1,5");
    box_watcher watcher;
    press(form, "pushButton");
    QCOMPARE(watcher.boxes.size(), 0);
    QCOMPARE(stored(4).east, 0.0);
    QCOMPARE(stored(4).north, 0.0);
    QCOMPARE(stored(4).l0, 0.5);
    QCOMPARE(stored(4).param7.k, 0.0);
    QCOMPARE(stored(4).changzhou, 0.0);
}

void test_zuobiao_form::editing_keeps_the_digits_that_are_shown()
{
    stored(4).param7.k = 1.1e-6;
    const QWidget* form = open(zuobiaoForm::edit, 4);
    press(form, "pushButton");
    QCOMPARE(stored(4).param7.k, 0.0);
    QCOMPARE(stored(4).param7.dx, -24.12);
    QCOMPARE(stored(4).east, 500000.123457);
}

void test_zuobiao_form::editing_that_fails_is_only_logged()
{
    {
        const QWidget* form = open(zuobiaoForm::edit, 4);
        m_store->break_file();
        const log_capture log;
        box_watcher watcher;
        press(form, "pushButton");
        QVERIFY(log.has("更新坐标系统失败"));
        QCOMPARE(watcher.boxes.size(), 0);
        QTRY_VERIFY(m_form.isNull());
    }
    (*m_store)->systems.clear();
    const QWidget* form = open(zuobiaoForm::edit, -1);
    const log_capture log;
    press(form, "pushButton");
    QVERIFY(log.has("更新坐标系统失败"));
    QVERIFY((*m_store)->systems.isEmpty());
}

void test_zuobiao_form::checking_and_cancelling_change_nothing()
{
    const QWidget* form = open(zuobiaoForm::check, 4);
    press(form, "pushButton");
    QTRY_VERIFY(m_form.isNull());
    form = open(zuobiaoForm::edit, 4);
    type(form, "east", "1");
    press(form, "pushButton_2");
    QTRY_VERIFY(m_form.isNull());
    form = open(zuobiaoForm::create, 4);
    type(form, "sys_name", "Not wanted");
    press(form, "radioButton_3");
    press(form, "pushButton_2");
    QTRY_VERIFY(m_form.isNull());
    QCOMPARE((*m_store)->systems.size(), 5);
    QCOMPARE(stored(4).east, sample().east);
    QCOMPARE(stored(4).param7.dx, sample().param7.dx);
    QCOMPARE(stored(4).type, 1);
}

void test_zuobiao_form::calibration_adds_to_the_offsets()
{
    const QWidget* form = open(zuobiaoForm::edit, 4, 1);
    press(form, "pushButton_3");
    auto* calculator = qobject_cast<plane_calibration*>(QApplication::activeModalWidget());
    QVERIFY(calculator != nullptr);
    QCOMPARE(calculator->windowModality(), Qt::ApplicationModal);
    QCOMPARE(calculator->windowTitle(), QStringLiteral("Plane Calibration"));
    type(calculator, "lineEdit", "100");
    type(calculator, "lineEdit_3", "110.25");
    type(calculator, "lineEdit_2", "50");
    type(calculator, "lineEdit_4", "20");
    press(calculator, "pushButton");
    // The offsets are shown with two decimals from now on: 500000.123457 + 10.25.
    QCOMPARE(text_in(form, "east"), QStringLiteral("500010.37"));
    QCOMPARE(text_in(form, "north"), QStringLiteral("-32.50"));

    m_form->recive_plane_calibration("nothing", "1");
    QCOMPARE(text_in(form, "east"), QStringLiteral("500010.37"));
    QCOMPARE(text_in(form, "north"), QStringLiteral("-31.50"));
}

void test_zuobiao_form::seven_parameters_arrive_as_they_came()
{
    const QWidget* form = open(zuobiaoForm::edit, 4);
    press(form, "pushButton_4");
    auto* calculator = qobject_cast<seven_parameter*>(QApplication::activeModalWidget());
    QVERIFY(calculator != nullptr);
    QCOMPARE(calculator->windowModality(), Qt::ApplicationModal);
    emit calculator->send_seven_parameter("1.23456789", "-2", "x", "", "5e-7", " 6 ", "0.0000011");
    const QStringList came{"1.23456789", "-2", "x", "", "5e-7", " 6 ", "0.0000011"};
    for (qsizetype i = 0; i < came.size(); ++i)
        QCOMPARE(text_in(form, seven_fields[i]), came[i]);
    calculator->close();
    press(form, "pushButton");
    QCOMPARE(stored(4).param7.dx, 1.23456789);
    QCOMPARE(stored(4).param7.dz, 0.0);
    QCOMPARE(stored(4).param7.ry, 5e-7);
    QCOMPARE(stored(4).param7.k, 0.0000011);
}

void test_zuobiao_form::calculators_end_with_their_windows()
{
    const QWidget* form = open(zuobiaoForm::edit, 4);
    QSignalSpy asked(m_form, &zuobiaoForm::variableChanged);
    for (const char* button : {"pushButton_3", "pushButton_4"}) {
        press(form, button);
        const QPointer<QWidget> calculator = QApplication::activeModalWidget();
        QVERIFY(calculator != nullptr);
        QTest::keyClick(calculator, Qt::Key_Escape);
        QTRY_VERIFY(calculator.isNull());
    }
    QCOMPARE(asked.size(), 2);
    QCOMPARE(asked[0][0].toInt(), 0);
    QCOMPARE(asked[0][1].value<JsonFileManager*>(), m_store->get());
}

QTEST_MAIN(test_zuobiao_form)
#include "test_zuobiao_form.moc"
