// The form that has seven parameters computed, against a server of the test's own.

#include "coordinates/seven_parameter.h"
#include "coordinates/transforms.h"
#include "form_driver.h"
#include "support/box_watcher.h"
#include "support/log_capture.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QListWidget>
#include <QMetaMethod>
#include <QNetworkDatagram>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTimer>
#include <QUdpSocket>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

namespace {

const QStringList field_names{"lineEdit",   "lineEdit_2", "lineEdit_3",
                              "lineEdit_4", "lineEdit_5", "lineEdit_6"};

} // namespace

class test_seven_parameter : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void names_of_signals_and_slots();
    void starts_without_a_group();
    void asks_the_built_in_server();
    void tells_that_there_is_no_socket();
    void every_text_in_both_languages();
    void the_form_of_points_switches_its_side_only();
    void adding_a_group_fills_by_format_data();
    void adding_a_group_fills_by_format();
    void a_group_fixes_the_choices_until_the_last_is_deleted();
    void a_first_group_after_the_last_starts_anew();
    void deleting_renumbers();
    void deleting_nothing();
    void updating_stores_decimal_degrees_data();
    void updating_stores_decimal_degrees();
    void updating_takes_cartesian_texts_as_they_stand();
    void showing_a_group_by_format_data();
    void showing_a_group_by_format();
    void a_row_that_took_a_deleted_number_is_shown();

    void fewer_than_four_groups_send_nothing_data();
    void fewer_than_four_groups_send_nothing();
    void the_request_to_the_letter();
    void geodetic_points_are_converted();
    void the_targets_ellipsoid_is_not_used();
    void without_a_system_the_server_decides();
    void a_request_that_cannot_be_sent_data();
    void a_request_that_cannot_be_sent();
    void silence_is_told_data();
    void silence_is_told();

    void a_reply_is_shown_and_taken_over_data();
    void a_reply_is_shown_and_taken_over();
    void no_leaves_the_editor_alone();
    void a_reply_without_seven_parts_is_refused_data();
    void a_reply_without_seven_parts_is_refused();
    void fields_that_are_no_numbers_pass();
    void a_late_reply_still_counts();
    void every_pending_reply_is_handled();
    void keys_and_their_order();

private:
    void open(int language = 0);
    [[nodiscard]] QStringList fields() const;
    void fill(const QStringList& texts) const;
    void add_cartesian_groups(int count) const;
    [[nodiscard]] QByteArray request();
    void reply(const QByteArray& text);
    [[nodiscard]] QListWidget* list() const
    {
        return find<QListWidget>(m_form.get(), "listWidget");
    }

    std::unique_ptr<fresh_store> m_store;
    std::unique_ptr<seven_parameter> m_form;
    std::unique_ptr<QUdpSocket> m_server;
    quint16 m_client_port = 0;
};

void test_seven_parameter::init()
{
    m_store = std::make_unique<fresh_store>();
    m_server = std::make_unique<QUdpSocket>();
    QVERIFY(m_server->bind(QHostAddress::LocalHost));
    open();
}

void test_seven_parameter::cleanup()
{
    m_form.reset();
}

void test_seven_parameter::open(int language)
{
    const log_capture log;
    m_form = std::make_unique<seven_parameter>();
    m_form->set_up(language, m_store->get());
    m_form->server_address = QHostAddress::LocalHost;
    m_form->server_port = m_server->localPort();
    m_form->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
    for (const QString& line : log.texts()) {
        if (line.startsWith("UDP socket bound to port: "))
            m_client_port = line.section(' ', -1).toUShort();
    }
    QVERIFY(m_client_port != 0);
}

QStringList test_seven_parameter::fields() const
{
    QStringList texts;
    for (const QString& name : field_names)
        texts += text_in(m_form.get(), name);
    return texts;
}

void test_seven_parameter::fill(const QStringList& texts) const
{
    for (qsizetype i = 0; i < texts.size(); ++i)
        type(m_form.get(), field_names[i], texts[i]);
}

void test_seven_parameter::add_cartesian_groups(int count) const
{
    press(m_form.get(), "radioButton_2");
    press(m_form.get(), "radioButton_4");
    for (int i = 0; i < count; ++i)
        press(m_form.get(), "pushButton_3");
}

QByteArray test_seven_parameter::request()
{
    if (!QTest::qWaitFor([this] { return m_server->hasPendingDatagrams(); }, 30000))
        return {};
    return m_server->receiveDatagram().data();
}

void test_seven_parameter::reply(const QByteArray& text)
{
    m_server->writeDatagram(text, QHostAddress::LocalHost, m_client_port);
}

void test_seven_parameter::names_of_signals_and_slots()
{
    QStringList declared;
    const QMetaObject& meta = seven_parameter::staticMetaObject;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at)
        declared += QString::fromLatin1(meta.method(at).methodSignature());
    QCOMPARE(
        declared,
        (QStringList{
            "send_seven_parameter(QString,QString,QString,QString,QString,QString,QString)",
            "set_up(int,JsonFileManager*)", "on_pushButton_clicked()", "on_pushButton_2_clicked()",
            "on_pushButton_3_clicked()", "on_pushButton_4_clicked()"}));
}

void test_seven_parameter::starts_without_a_group()
{
    QCOMPARE(fields(), QStringList(6, "0"));
    for (const QString& name : field_names)
        QVERIFY(!find<QLineEdit>(m_form.get(), name)->isEnabled());
    QVERIFY(find<QRadioButton>(m_form.get(), "radioButton")->isChecked());
    QVERIFY(find<QRadioButton>(m_form.get(), "radioButton_3")->isChecked());
    QCOMPARE(list()->count(), 0);
    QVERIFY(m_form->groups.isEmpty());
    for (const char* box : {"comboBox", "comboBox_2"}) {
        const auto* angle = find<QComboBox>(m_form.get(), box);
        QCOMPARE((QStringList{angle->itemText(0), angle->itemText(1), angle->itemText(2)}),
                 (QStringList{"°", "°′", "°′″"}));
    }
    const QStringList systems{"BEIJING1954", "CGCS2000", "WGS1984", "XIAN1980"};
    for (const char* name : {"comboBox_3", "comboBox_4"}) {
        const auto* box = find<QComboBox>(m_form.get(), name);
        QStringList entries;
        for (int row = 0; row < box->count(); ++row)
            entries += box->itemText(row);
        QCOMPARE(entries, systems);
    }
    // One timer runs, the one that shows the current group.
    QList<int> intervals;
    for (const auto* timer : m_form->findChildren<QTimer*>(Qt::FindDirectChildrenOnly)) {
        if (timer->isActive() && !timer->isSingleShot())
            intervals += timer->interval();
    }
    QCOMPARE(intervals, QList<int>{500});
}

void test_seven_parameter::asks_the_built_in_server()
{
    const seven_parameter usual;
    // Fails in a build for another server, which is what it is there for.
    QCOMPARE(usual.server_address.toString(), QStringLiteral("127.0.0.1"));
    QCOMPARE(usual.server_port, quint16(6020));
}

void test_seven_parameter::tells_that_there_is_no_socket()
{
#ifdef Q_OS_UNIX
    rlimit usual{};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &usual), 0);
    rlimit none = usual;
    none.rlim_cur = 0;
    const log_capture log;
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0); // what is open stays so
    const seven_parameter form;
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &usual), 0);
    QCOMPARE(log.texts().filter("UDP socket").size(), 1);
    const QString line = log.texts().filter("UDP socket").constFirst();
    const QString told = "Failed to bind UDP socket: ";
    QVERIFY2(line.startsWith(told + '"') && line.size() > told.size() + 2, qPrintable(line));
    // It goes on: the form is there.
    QVERIFY(form.findChild<QPushButton*>("pushButton") != nullptr);
#else
    QSKIP("no limit of open sockets to lower");
#endif
}

void test_seven_parameter::every_text_in_both_languages()
{
    const auto texts = [this] {
        QStringList all;
        for (const char* name : {"label", "label_2", "label_z_3", "label_z_4"})
            all += find<QLabel>(m_form.get(), name)->text();
        for (const char* name : {"pushButton_3", "pushButton_2", "pushButton", "pushButton_4"})
            all += find<QPushButton>(m_form.get(), name)->text();
        return all;
    };
    QCOMPARE(texts(), (QStringList{"源坐标", "目标坐标", "椭球基准：", "椭球基准：",
                                   "添加一个新的组", "删除当前组", "计算", "更新变更"}));
    open(1);
    QCOMPARE(texts(),
             (QStringList{"Transfer", "Target", "Ellipsoid", "Ellipsoid", "Add A New Group",
                          "Delete The Current Group", "Calculation", "Update"}));
    for (const char* name : {"radioButton", "radioButton_3"})
        QCOMPARE(find<QRadioButton>(m_form.get(), name)->text(), QStringLiteral("B L H"));
    for (const char* name : {"radioButton_2", "radioButton_4"})
        QCOMPARE(find<QRadioButton>(m_form.get(), name)->text(), QStringLiteral("Z X Y"));
    QCOMPARE(find<QLineEdit>(m_form.get(), "lineEdit_5")->accessibleName(),
             QStringLiteral("Target L"));
}

void test_seven_parameter::the_form_of_points_switches_its_side_only()
{
    const auto names = [this](const QString& end) {
        QStringList all;
        for (const char* name : {"label_x", "label_y", "label_z"})
            all += find<QLabel>(m_form.get(), name + end)->text();
        return all;
    };
    const auto on = [this](const char* box) {
        return find<QComboBox>(m_form.get(), box)->isEnabled();
    };
    const QStringList blh{"B", "L", "H"};
    const QStringList xyz{"X", "Y", "Z"};
    QCOMPARE(names(""), blh);
    QCOMPARE(names("_2"), blh);
    press(m_form.get(), "radioButton_2");
    QCOMPARE(names(""), xyz);
    QCOMPARE(names("_2"), blh);
    QVERIFY(!on("comboBox") && !on("comboBox_3") && on("comboBox_2") && on("comboBox_4"));
    press(m_form.get(), "radioButton_4");
    QCOMPARE(names("_2"), xyz);
    QVERIFY(!on("comboBox_2") && !on("comboBox_4"));
    press(m_form.get(), "radioButton");
    press(m_form.get(), "radioButton_3");
    QCOMPARE(names(""), blh);
    QCOMPARE(names("_2"), blh);
    QVERIFY(on("comboBox") && on("comboBox_2") && on("comboBox_3") && on("comboBox_4"));
}

void test_seven_parameter::adding_a_group_fills_by_format_data()
{
    QTest::addColumn<int>("source"); // angle format, -1 Cartesian
    QTest::addColumn<int>("target");
    QTest::addColumn<QStringList>("filled");
    QTest::newRow("degrees") << 0 << 0 << QStringList{"0", "0", "0", "0", "0", "0"};
    QTest::newRow("degrees and minutes")
        << 1 << 1 << QStringList{"0°0′", "0°0′", "0", "0°0′", "0°0′", "0"};
    QTest::newRow("the target's height of degrees, minutes and seconds is odd")
        << 2 << 2 << QStringList{"0°0′0″", "0°0′0″", "0", "0°0′0″", "0°0′0″", "0°"};
    QTest::newRow("Cartesian") << -1 << -1 << QStringList{"0", "0", "0", "0", "0", "0"};
    QTest::newRow("each side by itself")
        << 2 << -1 << QStringList{"0°0′0″", "0°0′0″", "0", "0", "0", "0"};
    QTest::newRow("a format that a Cartesian side had")
        << -1 << 2 << QStringList{"0", "0", "0", "0°0′0″", "0°0′0″", "0°"};
}

void test_seven_parameter::adding_a_group_fills_by_format()
{
    QFETCH(int, source);
    QFETCH(int, target);
    QFETCH(QStringList, filled);
    const auto choose = [this](const char* box, const char* cartesian, int format) {
        find<QComboBox>(m_form.get(), box)->setCurrentIndex(format < 0 ? 2 : format);
        if (format < 0)
            press(m_form.get(), cartesian);
    };
    choose("comboBox", "radioButton_2", source);
    choose("comboBox_2", "radioButton_4", target);
    press(m_form.get(), "pushButton_3");
    QCOMPARE(fields(), filled); // until the timer shows what is stored
    for (const QString& name : field_names)
        QVERIFY(find<QLineEdit>(m_form.get(), name)->isEnabled());
    QCOMPARE(m_form->groups.size(), 1);
    for (const QString& value : m_form->groups[0].values)
        QCOMPARE(value, QStringLiteral("0"));
    QCOMPARE(list()->item(0)->text(), QStringLiteral("Group1"));
    QCOMPARE(list()->currentRow(), 0);
    press(m_form.get(), "pushButton_3");
    QCOMPARE(list()->item(1)->text(), QStringLiteral("Group2"));
    QCOMPARE(list()->currentRow(), 1);
}

void test_seven_parameter::a_group_fixes_the_choices_until_the_last_is_deleted()
{
    const QStringList choices{"radioButton", "radioButton_2", "radioButton_3", "radioButton_4",
                              "comboBox",    "comboBox_2",    "comboBox_3",    "comboBox_4"};
    const auto check = [&](bool expected) {
        for (const QString& name : choices)
            QCOMPARE(find<QWidget>(m_form.get(), name)->isEnabled(), expected);
    };
    check(true);
    press(m_form.get(), "pushButton_3");
    press(m_form.get(), "pushButton_3");
    check(false);
    press(m_form.get(), "pushButton_2");
    check(false);
    type(m_form.get(), "lineEdit", "7");
    const log_capture log;
    press(m_form.get(), "pushButton_2");
    check(true);
    QVERIFY(log.has("!!!!"));
    QCOMPARE(fields(), QStringList(6, "0"));
    QVERIFY(!find<QLineEdit>(m_form.get(), "lineEdit")->isEnabled());

    // All of them work again, whichever form was chosen.
    add_cartesian_groups(1);
    press(m_form.get(), "pushButton_2");
    check(true);
}

void test_seven_parameter::a_first_group_after_the_last_starts_anew()
{
    for (const char* box : {"comboBox", "comboBox_2"})
        find<QComboBox>(m_form.get(), box)->setCurrentIndex(2);
    const QStringList begun{"0°0′0″", "0°0′0″", "0", "0°0′0″", "0°0′0″", "0°"};
    const QStringList shown{"0°0′0.0000″", "0°0′0.0000″", "0", "0°0′0.0000″", "0°0′0.0000″", "0"};
    press(m_form.get(), "pushButton_3");
    QTRY_COMPARE(fields(), shown);
    fill({"30°7′30″", "104°1′1.2″", "5", "1°2′3″", "4°5′6″", "7"});
    press(m_form.get(), "pushButton_4");
    press(m_form.get(), "pushButton_2");
    QCOMPARE(list()->count(), 0);
    press(m_form.get(), "pushButton_3");
    QCOMPARE(fields(), begun);
    QCOMPARE(m_form->groups.size(), 1);
    for (const QString& value : m_form->groups[0].values)
        QCOMPARE(value, QStringLiteral("0"));
    QCOMPARE(list()->item(0)->text(), QStringLiteral("Group1"));
    // The timer shows what is stored, though the row has the number of the one before.
    QTRY_COMPARE(fields(), shown);
}

void test_seven_parameter::deleting_renumbers()
{
    add_cartesian_groups(3);
    for (int i = 0; i < 3; ++i)
        m_form->groups[i].values[0] = QString::number(10 + i);
    list()->setCurrentRow(1);
    press(m_form.get(), "pushButton_2");
    QCOMPARE(list()->count(), 2);
    QCOMPARE(list()->item(0)->text(), QStringLiteral("Group1"));
    QCOMPARE(list()->item(1)->text(), QStringLiteral("Group2"));
    QCOMPARE(m_form->groups.size(), 2);
    QCOMPARE(m_form->groups[1].values[0], QStringLiteral("12"));
}

void test_seven_parameter::deleting_nothing()
{
    const log_capture log;
    press(m_form.get(), "pushButton_2");
    press(m_form.get(), "pushButton_4");
    QVERIFY(!log.has("!!!!"));
    QVERIFY(m_form->groups.isEmpty());
    // Nor when none of the rows is the current one.
    add_cartesian_groups(2);
    fill({"1", "2", "3", "4", "5", "6"});
    list()->setCurrentRow(-1);
    press(m_form.get(), "pushButton_2");
    press(m_form.get(), "pushButton_4");
    QVERIFY(!log.has("!!!!"));
    QCOMPARE(list()->count(), 2);
    QCOMPARE(m_form->groups.size(), 2);
    for (const PointGroup& group : m_form->groups)
        QCOMPARE(QStringList(group.values.begin(), group.values.end()), QStringList(6, "0"));
}

void test_seven_parameter::updating_stores_decimal_degrees_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QStringList>("typed");
    QTest::addColumn<QStringList>("kept");
    QTest::newRow("degrees") << 0 << QStringList{"30.123456789", "-104.5", "31.2345"}
                             << QStringList{"30.123456789", "-104.500000000", "31.234500000"};
    QTest::newRow("no numbers") << 0 << QStringList{"north", "", "1,5"}
                                << QStringList{"0.000000000", "0.000000000", "0.000000000"};
    QTest::newRow("degrees and minutes")
        << 1 << QStringList{"30°7.5′", "104°30′", "31.2"}
        << QStringList{"30.125000000", "104.500000000", "31.200000000"};
    QTest::newRow("without their marks")
        << 1 << QStringList{"30", "104°", "31°"}
        << QStringList{"-1.000000000", "-1.000000000", "0.000000000"};
    QTest::newRow("degrees, minutes and seconds")
        << 2 << QStringList{"30°7′30″", "104°1′1.2″", "-5"}
        << QStringList{"30.125000000", "104.017000000", "-5.000000000"};
}

void test_seven_parameter::updating_stores_decimal_degrees()
{
    QFETCH(int, format);
    QFETCH(QStringList, typed);
    QFETCH(QStringList, kept);
    // The source in this format, the target in degrees, then the other way round.
    for (const bool source : {true, false}) {
        open();
        find<QComboBox>(m_form.get(), source ? "comboBox" : "comboBox_2")->setCurrentIndex(format);
        press(m_form.get(), "pushButton_3");
        fill(source ? typed + QStringList{"1", "2", "3"} : QStringList{"1", "2", "3"} + typed);
        press(m_form.get(), "pushButton_4");
        const QStringList plain{"1.000000000", "2.000000000", "3.000000000"};
        const auto& values = m_form->groups[0].values;
        QCOMPARE(QStringList(values.begin(), values.end()), source ? kept + plain : plain + kept);
    }
}

void test_seven_parameter::updating_takes_cartesian_texts_as_they_stand()
{
    add_cartesian_groups(1);
    const QStringList texts{"-2267700.12345678901", " 1 ", "abc", "", "1e6", "+5"};
    fill(texts);
    press(m_form.get(), "pushButton_4");
    const auto& values = m_form->groups[0].values;
    QCOMPARE(QStringList(values.begin(), values.end()), texts);
}

void test_seven_parameter::showing_a_group_by_format_data()
{
    QTest::addColumn<int>("format"); // -1 Cartesian
    QTest::addColumn<QStringList>("stored");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("degrees lose digits")
        << 0 << QStringList{"30.123456789", "104.000000000", "1234.5678"}
        << QStringList{"30.1235", "104", "1234.57"};
    QTest::newRow("degrees and minutes")
        << 1 << QStringList{"30.125000000", "-104.500000000", "31.2"}
        << QStringList{"30°7.50000000′", "-104°-30.00000000′", "31.2"};
    QTest::newRow("degrees, minutes and seconds")
        << 2 << QStringList{"30.125000000", "104.017000000", "1234567.8"}
        << QStringList{"30°7′30.0000″", "104°1′1.2000″", "1.23457e+06"};
    QTest::newRow("just south of the equator") << 2 << QStringList{"-0.250000000", "0", "0"}
                                               << QStringList{"0°-15′0.0000″", "0°0′0.0000″", "0"};
    QTest::newRow("Cartesian") << -1 << QStringList{"abc", " 1 ", "-2267700.12345678901"}
                               << QStringList{"abc", " 1 ", "-2267700.12345678901"};
}

void test_seven_parameter::showing_a_group_by_format()
{
    QFETCH(int, format);
    QFETCH(QStringList, stored);
    QFETCH(QStringList, shown);
    for (const char* box : {"comboBox", "comboBox_2"})
        find<QComboBox>(m_form.get(), box)->setCurrentIndex(format < 0 ? 2 : format);
    if (format < 0) {
        press(m_form.get(), "radioButton_2");
        press(m_form.get(), "radioButton_4");
    }
    press(m_form.get(), "pushButton_3");
    press(m_form.get(), "pushButton_3");
    for (size_t i = 0; i < 3; ++i) {
        m_form->groups[0].values[i] = stored[static_cast<qsizetype>(i)];
        m_form->groups[0].values[i + 3] = stored[static_cast<qsizetype>(i)];
    }
    list()->setCurrentRow(0);
    QTRY_COMPARE(fields(), shown + shown);

    // What is shown is what Update reads: the angles come back.
    if (format > 0) {
        press(m_form.get(), "pushButton_4");
        for (size_t i = 0; i < 2; ++i)
            QVERIFY(std::abs(m_form->groups[0].values[i].toDouble() -
                             stored[static_cast<qsizetype>(i)].toDouble()) < 2e-8);
    }
}

void test_seven_parameter::a_row_that_took_a_deleted_number_is_shown()
{
    add_cartesian_groups(3);
    for (int i = 0; i < 3; ++i)
        m_form->groups[i].values[0] = QString::number(10 + i);
    list()->setCurrentRow(1);
    QTRY_COMPARE(text_in(m_form.get(), "lineEdit"), QStringLiteral("11"));
    press(m_form.get(), "pushButton_2");
    const int now = list()->currentRow();
    QTRY_COMPARE(text_in(m_form.get(), "lineEdit"), m_form->groups[now].values[0]);
}

void test_seven_parameter::fewer_than_four_groups_send_nothing_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("Chinese, three") << 0 << 3 << "计算"
                                    << "计算失败，至少需要4组点位数据";
    QTest::newRow("English, none")
        << 1 << 0 << "Calculation"
        << "The calculation failed. At least 4 sets of point data are required.";
}

void test_seven_parameter::fewer_than_four_groups_send_nothing()
{
    QFETCH(int, language);
    QFETCH(int, count);
    QFETCH(QString, title);
    QFETCH(QString, text);
    open(language);
    add_cartesian_groups(count);
    box_watcher watcher;
    const log_capture log;
    press(m_form.get(), "pushButton");
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Information);
    QCOMPARE(watcher.boxes[0].title, title);
    QCOMPARE(watcher.boxes[0].text, text);
    QVERIFY(!log.has("send:"));
    QVERIFY(!m_server->waitForReadyRead(50));
}

void test_seven_parameter::the_request_to_the_letter()
{
    add_cartesian_groups(4);
    for (int group = 0; group < 4; ++group) {
        for (int i = 0; i < 6; ++i)
            m_form->groups[group].values[static_cast<size_t>(i)] =
                QString(QChar('a' + group)) + QString::number(i);
    }
    const log_capture log;
    press(m_form.get(), "pushButton");
    const QString expected = QString("$%1,4,a0,a1,a2,b0,b1,b2,c0,c1,c2,d0,d1,d2,"
                                     "a3,a4,a5,b3,b4,b5,c3,c4,c5,d3,d4,d5,*")
                                 .arg(m_client_port);
    QCOMPARE(QString::fromUtf8(request()), expected);
    QVERIFY(log.has("send: \"" + expected + "\""));

    // Zeros are sent as well: the form does not judge.
    open();
    add_cartesian_groups(4);
    m_form->groups[3].values[5] = "北";
    press(m_form.get(), "pushButton");
    QVERIFY(request().endsWith(",0,0,\xE5\x8C\x97,*"));
    m_form->groups[3].values[5] = "0";
    press(m_form.get(), "pushButton");
    QCOMPARE(request(),
             "$" + QByteArray::number(m_client_port) + ",4," + QByteArray("0,").repeated(24) + "*");
}

void test_seven_parameter::geodetic_points_are_converted()
{
    // The equator at Greenwich, the pole, 90 degrees east: known by hand.
    find<QComboBox>(m_form.get(), "comboBox_3")->setCurrentIndex(0); // BEIJING1954
    press(m_form.get(), "radioButton_4");
    for (const QStringList& point : {QStringList{"0", "0", "0"}, QStringList{"0", "0", "100.5"},
                                     QStringList{"0", "0", "-5"}, QStringList{"0", "0", "1e3"}}) {
        press(m_form.get(), "pushButton_3");
        fill(point + QStringList{"1.23456789", "2", "3"});
        press(m_form.get(), "pushButton_4");
    }
    press(m_form.get(), "pushButton");
    const QByteArray target = "1.23456789,2,3,";
    QCOMPARE(request(), "$" + QByteArray::number(m_client_port) +
                            ",4,6378245.0000,0.0000,0.0000,6378345.5000,0.0000,0.0000,"
                            "6378240.0000,0.0000,0.0000,6379245.0000,0.0000,0.0000," +
                            target + target + target + target + "*");
}

void test_seven_parameter::the_targets_ellipsoid_is_not_used()
{
    for (int i = 0; i < 4; ++i) {
        press(m_form.get(), "pushButton_3");
        fill({"30", "114", "20", "30", "114", "20"});
        press(m_form.get(), "pushButton_4");
    }
    find<QComboBox>(m_form.get(), "comboBox_3")->setCurrentIndex(0);
    find<QComboBox>(m_form.get(), "comboBox_4")->setCurrentIndex(0);
    press(m_form.get(), "pushButton");
    const QByteArray first = request();
    find<QComboBox>(m_form.get(), "comboBox_4")->setCurrentIndex(2);
    press(m_form.get(), "pushButton");
    QCOMPARE(request(), first);
    find<QComboBox>(m_form.get(), "comboBox_3")->setCurrentIndex(2);
    press(m_form.get(), "pushButton");
    const QByteArray other = request();
    QVERIFY(other != first);
    // Source and target of one position are one point, on the source's ellipsoid.
    const QByteArrayList parts = other.split(',');
    QCOMPARE(parts.sliced(2, 3), parts.sliced(14, 3));
    const cartesian_position at = BLH2XYZ({30.0, 114.0, 20.0}, 6378137.0, 6356752.314245179);
    QCOMPARE(parts[2], QByteArray::number(at.x, 'f', 4));
    QCOMPARE(parts[4], QByteArray::number(at.z, 'f', 4));
}

void test_seven_parameter::without_a_system_the_server_decides()
{
    (*m_store)->systems.clear();
    open();
    for (int i = 0; i < 4; ++i)
        press(m_form.get(), "pushButton_3");
    press(m_form.get(), "pushButton");
    QVERIFY(request().startsWith("$"));
}

void test_seven_parameter::a_request_that_cannot_be_sent_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("Chinese") << 0 << "错误"
                             << "发送数据失败！";
    QTest::newRow("English") << 1 << "ERROR"
                             << "Failed to send data";
}

void test_seven_parameter::a_request_that_cannot_be_sent()
{
    QFETCH(int, language);
    QFETCH(QString, title);
    QFETCH(QString, text);
    open(language);
    add_cartesian_groups(4);
    // More than a datagram can carry.
    m_form->groups[0].values[0] = QString(70000, '1');
    box_watcher watcher;
    press(m_form.get(), "pushButton");
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher.boxes[0].title, title);
    QCOMPARE(watcher.boxes[0].text, text);
    // Nothing is waited for.
    if (language == 0)
        QTest::qWait(3300);
    QCOMPARE(watcher.boxes.size(), 1);
}

void test_seven_parameter::silence_is_told_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("Chinese") << 0 << "计算失败"
                             << "计算失败：未收到服务器响应";
    QTest::newRow("English") << 1 << "Calculation failed"
                             << "Calculation failed: No response from the server was received";
}

void test_seven_parameter::silence_is_told()
{
    QFETCH(int, language);
    QFETCH(QString, title);
    QFETCH(QString, text);
    open(language);
    add_cartesian_groups(4);
    box_watcher watcher;
    QElapsedTimer clock;
    clock.start();
    press(m_form.get(), "pushButton");
    QList<int> limits;
    for (const auto* timer : m_form->findChildren<QTimer*>(Qt::FindDirectChildrenOnly)) {
        if (timer->isActive() && timer->isSingleShot())
            limits += timer->interval();
    }
    QCOMPARE(limits, QList<int>{3000});
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, 30000);
    QVERIFY(clock.elapsed() >= 2800); // a timer may be a twentieth early
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher.boxes[0].title, title);
    QCOMPARE(watcher.boxes[0].text, text);
    // It was asked once and is not asked again.
    QVERIFY(!request().isEmpty());
    QVERIFY(!m_server->waitForReadyRead(100));
}

void test_seven_parameter::a_reply_is_shown_and_taken_over_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("question");
    QTest::newRow("Chinese") << 0 << "成功"
                             << "是否同步到'参数设置'中?";
    QTest::newRow("English") << 1 << "Success"
                             << "Whether to synchronize to the 'Parameter Settings'?";
}

void test_seven_parameter::a_reply_is_shown_and_taken_over()
{
    QFETCH(int, language);
    QFETCH(QString, title);
    QFETCH(QString, question);
    open(language);
    add_cartesian_groups(4);
    QSignalSpy sent(m_form.get(), &seven_parameter::send_seven_parameter);
    press(m_form.get(), "pushButton");
    QVERIFY(!request().isEmpty());
    const log_capture log;
    box_watcher watcher;
    watcher.answer = QMessageBox::Yes;
    reply("$-24.1,123.45678901234,94.3,-0.02,0.26,0.13,0.0000011*");
    QTRY_COMPARE_WITH_TIMEOUT(sent.size(), 1, 30000);
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Question);
    QCOMPARE(watcher.boxes[0].title, title);
    QCOMPARE(watcher.boxes[0].buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(watcher.boxes[0].text, "dx :-24.1000000000 \ndy :123.4567890123 \n"
                                    "dz :94.3000000000 \nrx :-0.0200000000 \n"
                                    "ry :0.2600000000 \nrz :0.1300000000 \n"
                                    "k :0.0000011000 \n" +
                                        question);
    const QStringList texts{"-24.1", "123.45678901234", "94.3", "-0.02", "0.26",
                            "0.13",  "0.0000011"};
    for (int i = 0; i < 7; ++i)
        QCOMPARE(sent[0][i].toString(), texts[i]);
    QVERIFY(log.has("Timeout timer stopped"));
    const qsizetype told = log.texts().indexOf(QString("解析出的7个参数:"));
    QVERIFY(told >= 0);
    QCOMPARE(
        log.texts().mid(told + 1, 7),
        (QStringList{"  param1: -24.1000000000", "  param2: 123.4567890123",
                     "  param3: 94.3000000000", "  param4: -0.0200000000", "  param5: 0.2600000000",
                     "  param6: 0.1300000000", "  param7: 0.0000011000"}));
    for (const log_capture::line& line : log.lines().mid(told, 8))
        QCOMPARE(line.type, QtDebugMsg);
    // The answer has come: no time-out follows.
    if (language == 0)
        QTest::qWait(3300);
    QCOMPARE(watcher.boxes.size(), 1);
}

void test_seven_parameter::no_leaves_the_editor_alone()
{
    QSignalSpy sent(m_form.get(), &seven_parameter::send_seven_parameter);
    box_watcher watcher;
    watcher.answer = QMessageBox::No;
    reply("$1,2,3,4,5,6,7*");
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, 30000);
    QCOMPARE(sent.size(), 0);
}

void test_seven_parameter::a_reply_without_seven_parts_is_refused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("language");
    QTest::newRow("ten") << QByteArray("$1,2,3,4,5,6,7,8,9,10*") << 0;
    QTest::newRow("six") << QByteArray("$1,2,3,4,5,6*") << 1;
    QTest::newRow("empty parts count") << QByteArray("$1,2,3,4,5,6,7,*") << 0;
    QTest::newRow("words") << QByteArray("!at least 4 pairs are needed*") << 1;
    QTest::newRow("two characters") << QByteArray("$*") << 0;
    QTest::newRow("one character") << QByteArray("$") << 1;
    QTest::newRow("nothing") << QByteArray() << 0;
    QTest::newRow("no text at all") << QByteArray("\xFF\xFE\x00\x80,\xC3", 6) << 1;
    QTest::newRow("as much as fits") << QByteArray(60000, ',') << 0;
}

void test_seven_parameter::a_reply_without_seven_parts_is_refused()
{
    QFETCH(QByteArray, text);
    QFETCH(int, language);
    open(language);
    QSignalSpy sent(m_form.get(), &seven_parameter::send_seven_parameter);
    box_watcher watcher;
    watcher.answer = QMessageBox::Yes;
    reply(text);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, 30000);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
    QCOMPARE(watcher.boxes[0].title, language == 0 ? QString("错误") : QString("ERROR"));
    QCOMPARE(watcher.boxes[0].text,
             language == 0 ? QString("数据格式不正确") : QString("The data format is incorrect"));
    QCOMPARE(sent.size(), 0);
}

void test_seven_parameter::fields_that_are_no_numbers_pass()
{
    QSignalSpy sent(m_form.get(), &seven_parameter::send_seven_parameter);
    box_watcher watcher;
    watcher.answer = QMessageBox::Yes;
    reply("Xa,,3 m,nan,5,6,sevenX");
    QTRY_COMPARE_WITH_TIMEOUT(sent.size(), 1, 30000);
    QVERIFY(watcher.boxes[0].text.startsWith(
        "dx :0.0000000000 \ndy :0.0000000000 \ndz :0.0000000000 \nrx :nan \nry :5.0000000000 \n"));
    QCOMPARE(sent[0][0].toString(), QStringLiteral("a"));
    QCOMPARE(sent[0][1].toString(), QString());
    QCOMPARE(sent[0][2].toString(), QStringLiteral("3 m"));
    QCOMPARE(sent[0][6].toString(), QStringLiteral("seven"));
}

void test_seven_parameter::a_late_reply_still_counts()
{
    add_cartesian_groups(4);
    QSignalSpy sent(m_form.get(), &seven_parameter::send_seven_parameter);
    box_watcher watcher;
    watcher.answer = QMessageBox::Yes;
    press(m_form.get(), "pushButton");
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 1, 30000);
    QCOMPARE(watcher.boxes[0].title, QStringLiteral("计算失败"));
    const log_capture log;
    reply("$1,2,3,4,5,6,7*");
    QTRY_COMPARE_WITH_TIMEOUT(sent.size(), 1, 30000);
    QVERIFY(!log.has("Timeout timer stopped"));
}

void test_seven_parameter::every_pending_reply_is_handled()
{
    QSignalSpy sent(m_form.get(), &seven_parameter::send_seven_parameter);
    box_watcher watcher;
    watcher.answer = QMessageBox::Yes;
    reply("$1,2,3,4,5,6,7*");
    reply("$1,2*");
    reply("$7,6,5,4,3,2,1*");
    QTRY_COMPARE_WITH_TIMEOUT(watcher.boxes.size(), 3, 30000);
    QTRY_COMPARE(sent.size(), 2);
    QCOMPARE(sent[1][0].toString(), QStringLiteral("7"));
}

void test_seven_parameter::keys_and_their_order()
{
    QCOMPARE(tab_order(m_form.get(), "listWidget").mid(0, 5),
             (QStringList{"listWidget", "pushButton_3", "pushButton_2", "radioButton",
                          "radioButton_2"}));
    add_cartesian_groups(1);
    const QStringList order = tab_order(m_form.get(), "lineEdit");
    QCOMPARE(order.mid(0, 8), field_names + QStringList({"pushButton_4", "pushButton"}));

    // Enter in a field stores the group, Escape closes the form.
    fill({"1", "2", "3", "4", "5", "6"});
    QTest::keyClick(find<QLineEdit>(m_form.get(), "lineEdit_6"), Qt::Key_Return);
    QCOMPARE(m_form->groups[0].values[5], QStringLiteral("6"));
    QVERIFY(m_form->isVisible());
    QTest::keyClick(find<QLineEdit>(m_form.get(), "lineEdit_6"), Qt::Key_Escape);
    QVERIFY(!m_form->isVisible());
}

QTEST_MAIN(test_seven_parameter)
#include "test_seven_parameter.moc"
