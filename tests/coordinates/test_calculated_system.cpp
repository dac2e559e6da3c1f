// From pairs of points to a stored system: the forms and the calculation server
// as a person meets them.

#include "coordinates/seven_parameter.h"
#include "coordinates/transforms.h"
#include "coordinates/zuobiao_form.h"
#include "coordinates/zuobiao_form_homepage.h"
#include "form_driver.h"
#include "support/background_program.h"
#include "support/box_watcher.h"

#include <QApplication>
#include <QPointer>
#include <QTest>

#include <cmath>

namespace {

/// Six points of a district near Wuhan: latitude, longitude (degrees), height (m).
constexpr geodetic_position places[] = {{30.50, 114.30, 25.0}, {30.53, 114.36, 31.5},
                                        {30.47, 114.41, 18.2}, {30.44, 114.27, 44.9},
                                        {30.56, 114.25, 57.3}, {30.49, 114.33, 22.6}};
constexpr seven_parameters known{-24.1, 123.4, 94.3, -0.02, 0.26, 0.13, 1.1e-6};

constexpr const char* field_names[] = {"lineEdit",   "lineEdit_2", "lineEdit_3",
                                       "lineEdit_4", "lineEdit_5", "lineEdit_6"};

/// The map of `known`, written out once more: rotations of the frame in
/// arc-seconds, linear.
cartesian_position target_of(const cartesian_position& at)
{
    constexpr double arc_second = 4.84813681095679e-06;
    const double s = 1.0 + known.k;
    const double rx = known.rx * arc_second;
    const double ry = known.ry * arc_second;
    const double rz = known.rz * arc_second;
    return {s * at.x + rz * at.y - ry * at.z + known.dx,
            s * at.y - rz * at.x + rx * at.z + known.dy,
            s * at.z + ry * at.x - rx * at.y + known.dz};
}

double distance(const cartesian_position& a, const cartesian_position& b)
{
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

template <typename Form>
Form* in_front()
{
    auto* form = qobject_cast<Form*>(QApplication::activeModalWidget());
    if (form == nullptr)
        qFatal("the form is not in front");
    return form;
}

} // namespace

class test_calculated_system : public QObject
{
    Q_OBJECT

private slots:
    void six_pairs_become_a_system_that_maps_them_data();
    void six_pairs_become_a_system_that_maps_them();
    void what_has_no_answer_is_a_format_error();
};

void test_calculated_system::six_pairs_become_a_system_that_maps_them_data()
{
    QTest::addColumn<bool>("geodetic"); // the source: as degrees, or Cartesian
    QTest::newRow("Cartesian") << false;
    QTest::newRow("degrees to Cartesian") << true;
}

void test_calculated_system::six_pairs_become_a_system_that_maps_them()
{
    QFETCH(bool, geodetic);
    background_program server(QStringLiteral(VELMO_CALCULATION_PROGRAM));
    const quint16 port =
        server.start({"--port", "0"}, "listening: 127.0.0.1 port ").section(' ', -1).toUShort();
    QVERIFY(port != 0);

    const fresh_store store;
    zuobiaoForm_homepage homepage;
    homepage.set_up(1, store.get(), 1, 0); // CGCS2000, which is shifted
    homepage.setWindowModality(Qt::ApplicationModal);
    homepage.show();
    press(&homepage, "pushButton_4");
    const QPointer<zuobiaoForm> editor = in_front<zuobiaoForm>();
    press(editor, "radioButton");
    press(editor, "pushButton_4");
    const QPointer<seven_parameter> calculator = in_front<seven_parameter>();
    calculator->server_address = QHostAddress::LocalHost;
    calculator->server_port = port;

    find<QComboBox>(calculator, "comboBox_3")->setCurrentIndex(1);
    if (!geodetic)
        press(calculator, "radioButton_2");
    press(calculator, "radioButton_4");
    const CoordinateSystem& system = store->systems[1];
    for (const geodetic_position& place : places) {
        const cartesian_position source = BLH2XYZ(place, system.changzhou, system.duanzhou);
        const cartesian_position target = target_of(source);
        press(calculator, "pushButton_3");
        // Until the new group is shown: what is typed before goes under.
        calculator->groups.last().values[2] = "7";
        QTRY_COMPARE(text_in(calculator, "lineEdit_3"), QStringLiteral("7"));
        const double values[] = {geodetic ? place.b : source.x,
                                 geodetic ? place.l : source.y,
                                 geodetic ? place.h : source.z,
                                 target.x,
                                 target.y,
                                 target.z};
        for (size_t i = 0; i < std::size(values); ++i)
            type(calculator, field_names[i], QString::number(values[i], 'f', 4));
        press(calculator, "pushButton_4");
    }
    box_watcher watcher;
    watcher.answer = QMessageBox::Yes;
    press(calculator, "pushButton");
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, 30000);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("成功"));
    calculator->close();
    press(editor, "pushButton");
    QTRY_VERIFY(editor.isNull());
    QCOMPARE(watcher.boxes.size(), 1);

    // From the file, as the next start reads it.
    const QList<CoordinateSystem> saved = fresh_store::on_disk();
    QCOMPARE(saved[1].name, QStringLiteral("CGCS2000"));
    QCOMPARE(saved[1].type, 1);
    for (const geodetic_position& place : places) {
        const cartesian_position source = BLH2XYZ(place, system.changzhou, system.duanzhou);
        const double error = distance(By7Param(saved[1].param7, source), target_of(source));
        QVERIFY2(error < 1e-3, qPrintable(QString("%1 m").arg(error)));
    }
    QCOMPARE(server.stop(), 0);
}

void test_calculated_system::what_has_no_answer_is_a_format_error()
{
    background_program server(QStringLiteral(VELMO_CALCULATION_PROGRAM));
    const quint16 port =
        server.start({"--port", "0"}, "listening: 127.0.0.1 port ").section(' ', -1).toUShort();
    QVERIFY(port != 0);
    const fresh_store store;
    seven_parameter form;
    form.set_up(1, store.get());
    form.server_address = QHostAddress::LocalHost;
    form.server_port = port;
    form.show();
    press(&form, "radioButton_2");
    press(&form, "radioButton_4");
    for (int i = 0; i < 4; ++i)
        press(&form, "pushButton_3");
    const auto answer = [&] {
        box_watcher watcher;
        watcher.answer = QMessageBox::No;
        press(&form, "pushButton");
        if (!QTest::qWaitFor([&] { return watcher.boxes.size() == 1; }, 30000))
            return QString();
        return watcher.boxes[0].text;
    };
    const QString format_error = QStringLiteral("The data format is incorrect");
    // One place, no numbers, too many fields.
    for (const QString& value : {QString("0"), QString("abc"), QString("1,2")}) {
        for (PointGroup& group : form.groups)
            group.values.fill(value);
        QCOMPARE(answer(), format_error);
    }

    // A line: towards east and up, 700 m from point to point.
    for (qsizetype i = 0; i < form.groups.size(); ++i) {
        const double along = 100.0 * static_cast<double>(i);
        const double values[] = {-2178000.0 + 2.0 * along, 4389000.0 - 3.0 * along,
                                 4070000.0 + 6.0 * along,  -2178024.0 + 2.0 * along,
                                 4389123.0 - 3.0 * along,  4070094.0 + 6.0 * along};
        for (size_t field = 0; field < std::size(values); ++field)
            form.groups[i].values[field] = QString::number(values[field], 'f', 4);
    }
    QCOMPARE(answer(), format_error);
    // One point of them beside it: seven numbers, and the question.
    for (const size_t field : {0U, 3U}) {
        QString& value = form.groups[2].values[field];
        value = QString::number(value.toDouble() + 250.0, 'f', 4);
    }
    QVERIFY(answer().startsWith("dx :-24.0000"));
}

QTEST_MAIN(test_calculated_system)
#include "test_calculated_system.moc"
