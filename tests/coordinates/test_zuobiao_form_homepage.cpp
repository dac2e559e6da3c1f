// The form that chooses the coordinate format and manages the systems.

#include "coordinates/zuobiao_form.h"
#include "coordinates/zuobiao_form_homepage.h"
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

namespace {

constexpr const char* managing[] = {"pushButton_3", "pushButton_4", "pushButton_5", "pushButton_6"};

QStringList names_of(const QComboBox* box)
{
    QStringList all;
    for (int row = 0; row < box->count(); ++row)
        all += box->itemText(row);
    return all;
}

zuobiaoForm* open_editor()
{
    return qobject_cast<zuobiaoForm*>(QApplication::activeModalWidget());
}

} // namespace

class test_zuobiao_form_homepage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void names_of_signals_and_slots();
    void opens_in_the_format_data();
    void opens_in_the_format();
    void every_text_in_both_languages_data();
    void every_text_in_both_languages();
    void lists_the_systems();
    void the_radio_buttons_act_at_once();
    void confirm_hands_over_format_and_system_data();
    void confirm_hands_over_format_and_system();
    void cancel_hands_over_nothing();
    void stays_at_its_size();
    void keys_and_their_order();

    void editors_open_modal_and_delete_themselves_data();
    void editors_open_modal_and_delete_themselves();
    void only_a_new_system_refills_the_list();
    void an_editor_goes_with_the_form();

    void deletes_without_asking_data();
    void deletes_without_asking();
    void a_deletion_that_fails_is_told_data();
    void a_deletion_that_fails_is_told();
    void deleting_without_a_system();
    void deleting_the_last_row_chooses_the_one_before();

private:
    void open(int m, int index = 0, int language = 0);

    std::unique_ptr<fresh_store> m_store;
    std::unique_ptr<zuobiaoForm_homepage> m_form;
};

void test_zuobiao_form_homepage::init()
{
    m_store = std::make_unique<fresh_store>();
}

void test_zuobiao_form_homepage::cleanup()
{
    m_form.reset();
}

void test_zuobiao_form_homepage::open(int m, int index, int language)
{
    m_form = std::make_unique<zuobiaoForm_homepage>();
    m_form->set_up(m, m_store->get(), index, language);
    m_form->setWindowModality(Qt::ApplicationModal);
    m_form->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
}

void test_zuobiao_form_homepage::names_of_signals_and_slots()
{
    QStringList declared;
    const QMetaObject& meta = zuobiaoForm_homepage::staticMetaObject;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at)
        declared += QString::fromLatin1(meta.method(at).methodSignature());
    QCOMPARE(declared, (QStringList{"zuobiaochanged(JsonFileManager*,int,int,int)",
                                    "modeflagchange(int,JsonFileManager*,int)",
                                    "set_up(int,JsonFileManager*,int,int)",
                                    "on_pushButton_clicked()", "on_pushButton_2_clicked()",
                                    "on_pushButton_3_clicked()", "on_pushButton_4_clicked()",
                                    "on_pushButton_5_clicked()", "on_pushButton_6_clicked()"}));
}

void test_zuobiao_form_homepage::opens_in_the_format_data()
{
    QTest::addColumn<int>("m");
    QTest::addColumn<bool>("plane");
    QTest::addColumn<int>("row");
    QTest::newRow("degrees") << 0 << false << 0;
    QTest::newRow("X Y") << 1 << true << 0;
    QTest::newRow("degrees and minutes") << 2 << false << 1;
    QTest::newRow("degrees, minutes and seconds") << 3 << false << 2;
    QTest::newRow("Y X") << 4 << true << 1;
}

void test_zuobiao_form_homepage::opens_in_the_format()
{
    QFETCH(int, m);
    QFETCH(bool, plane);
    QFETCH(int, row);
    const log_capture log;
    open(m);
    QVERIFY(log.has(QString("modeflag= %1 setmodeflag").arg(m)));
    QCOMPARE(find<QRadioButton>(m_form.get(), "radioButton")->isChecked(), plane);
    QCOMPARE(find<QRadioButton>(m_form.get(), "radioButton_2")->isChecked(), !plane);
    const auto* order = find<QComboBox>(m_form.get(), "comboBox");
    const auto* notation = find<QComboBox>(m_form.get(), "comboBox_2");
    QCOMPARE(order->isEnabled(), plane);
    QCOMPARE(notation->isEnabled(), !plane);
    QCOMPARE((plane ? order : notation)->currentIndex(), row);
    QCOMPARE(find<QComboBox>(m_form.get(), "comboBox_3")->isEnabled(), plane);
    for (const char* button : managing)
        QCOMPARE(find<QPushButton>(m_form.get(), button)->isEnabled(), plane);
    for (const char* button : {"pushButton", "pushButton_2"})
        QVERIFY(find<QPushButton>(m_form.get(), button)->isEnabled());
}

void test_zuobiao_form_homepage::every_text_in_both_languages_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QStringList>("notations");
    QTest::newRow("Chinese") << 0 << QStringList{"坐标设置", "坐标格式", "直角坐标", "球面坐标",
                                                 "坐标系统", "坐标列表", "确定",     "取消",
                                                 "查看",     "编辑",     "删除",     "新建坐标系"}
                             << QStringList{"度", "度°分′", "度°分′秒″"};
    QTest::newRow("English") << 1
                             << QStringList{"Coordinate Setting",
                                            "Coordinate format",
                                            "Rectangular",
                                            "Spherical",
                                            "Coordinate system",
                                            "Coordinate list",
                                            "Confirm",
                                            "Cancel",
                                            "Check",
                                            "Editor",
                                            "Delete",
                                            "New construction"}
                             << QStringList{"Degrees", "Degrees minutes",
                                            "Degrees minutes seconds"};
}

void test_zuobiao_form_homepage::every_text_in_both_languages()
{
    QFETCH(int, language);
    QFETCH(QStringList, texts);
    QFETCH(QStringList, notations);
    open(0, 0, language);
    const QWidget* form = m_form.get();
    QStringList shown{form->windowTitle(),
                      find<QGroupBox>(form, "groupBox")->title(),
                      find<QRadioButton>(form, "radioButton")->text(),
                      find<QRadioButton>(form, "radioButton_2")->text(),
                      find<QGroupBox>(form, "groupBox_2")->title(),
                      find<QLabel>(form, "label")->text()};
    for (const char* button : {"pushButton", "pushButton_2", "pushButton_3", "pushButton_4",
                               "pushButton_5", "pushButton_6"})
        shown += find<QPushButton>(form, button)->text();
    QCOMPARE(shown, texts);
    QCOMPARE(names_of(find<QComboBox>(form, "comboBox")), (QStringList{"XY", "YX"}));
    QCOMPARE(names_of(find<QComboBox>(form, "comboBox_2")), notations);
    QCOMPARE(find<QComboBox>(form, "comboBox_2")->accessibleName(), texts[3]);
    QCOMPARE(find<QLabel>(form, "label")->buddy(), find<QComboBox>(form, "comboBox_3"));
}

void test_zuobiao_form_homepage::lists_the_systems()
{
    const log_capture log;
    open(1, 2);
    const auto* list = find<QComboBox>(m_form.get(), "comboBox_3");
    QCOMPARE(names_of(list), (QStringList{"BEIJING1954", "CGCS2000", "WGS1984", "XIAN1980"}));
    QCOMPARE(list->currentIndex(), 2);
    QVERIFY(log.has("当前坐标系统总数: 4"));

    // An index from before a deletion, or from an empty list.
    open(1, 9);
    QCOMPARE(find<QComboBox>(m_form.get(), "comboBox_3")->currentIndex(), 3);
    open(1, -1);
    QCOMPARE(find<QComboBox>(m_form.get(), "comboBox_3")->currentIndex(), 0);
}

void test_zuobiao_form_homepage::the_radio_buttons_act_at_once()
{
    open(0);
    const auto enabled = [this](const char* name) {
        return find<QWidget>(m_form.get(), name)->isEnabled();
    };
    for (const bool plane : {true, false}) {
        press(m_form.get(), plane ? "radioButton" : "radioButton_2");
        for (const char* name : {"comboBox", "comboBox_3", "pushButton_3", "pushButton_4",
                                 "pushButton_5", "pushButton_6"})
            QCOMPARE(enabled(name), plane);
        QCOMPARE(enabled("comboBox_2"), !plane);
    }
}

void test_zuobiao_form_homepage::confirm_hands_over_format_and_system_data()
{
    opens_in_the_format_data();
}

void test_zuobiao_form_homepage::confirm_hands_over_format_and_system()
{
    QFETCH(int, m);
    QFETCH(bool, plane);
    QFETCH(int, row);
    open(plane ? 0 : 1, 1); // from the other frame
    QSignalSpy chosen(m_form.get(), &zuobiaoForm_homepage::modeflagchange);
    press(m_form.get(), plane ? "radioButton" : "radioButton_2");
    find<QComboBox>(m_form.get(), plane ? "comboBox" : "comboBox_2")->setCurrentIndex(row);
    find<QComboBox>(m_form.get(), "comboBox_3")->setCurrentIndex(3);
    press(m_form.get(), "pushButton");
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen[0][0].toInt(), m);
    QCOMPARE(chosen[0][1].value<JsonFileManager*>(), m_store->get());
    QCOMPARE(chosen[0][2].toInt(), 3);
    QVERIFY(!m_form->isVisible());
}

void test_zuobiao_form_homepage::cancel_hands_over_nothing()
{
    open(0);
    QSignalSpy chosen(m_form.get(), &zuobiaoForm_homepage::modeflagchange);
    press(m_form.get(), "radioButton");
    press(m_form.get(), "pushButton_2");
    QVERIFY(!m_form->isVisible());
    QCOMPARE(chosen.size(), 0);
}

void test_zuobiao_form_homepage::stays_at_its_size()
{
    CoordinateSystem named;
    named.name = QString(5000, 'W');
    QVERIFY((*m_store)->addCoordinateSystem(named));
    for (const int language : {0, 1}) {
        open(1, 4, language);
        QCOMPARE(m_form->minimumSize(), m_form->maximumSize());
        QVERIFY(m_form->width() < 600);
    }
}

void test_zuobiao_form_homepage::keys_and_their_order()
{
    open(1);
    // The arrow keys lead to the other radio button.
    QCOMPARE(tab_order(m_form.get(), "radioButton"),
             (QStringList{"radioButton", "comboBox", "comboBox_3", "pushButton_3", "pushButton_4",
                          "pushButton_5", "pushButton_6", "pushButton", "pushButton_2"}));
    QSignalSpy chosen(m_form.get(), &zuobiaoForm_homepage::modeflagchange);
    find<QComboBox>(m_form.get(), "comboBox_3")->setFocus();
    QTest::keyClick(m_form->focusWidget(), Qt::Key_Return);
    QCOMPARE(chosen.size(), 1);
    QVERIFY(!m_form->isVisible());

    open(1);
    QSignalSpy cancelled(m_form.get(), &zuobiaoForm_homepage::modeflagchange);
    QTest::keyClick(find<QComboBox>(m_form.get(), "comboBox_3"), Qt::Key_Escape);
    QVERIFY(!m_form->isVisible());
    QCOMPARE(cancelled.size(), 0);

    // Enter on a button presses that one.
    open(1);
    find<QPushButton>(m_form.get(), "pushButton_2")->setFocus();
    QSignalSpy not_chosen(m_form.get(), &zuobiaoForm_homepage::modeflagchange);
    QTest::keyClick(m_form->focusWidget(), Qt::Key_Enter);
    QVERIFY(!m_form->isVisible());
    QCOMPARE(not_chosen.size(), 0);
}

void test_zuobiao_form_homepage::editors_open_modal_and_delete_themselves_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("mode");
    QTest::newRow("check") << "pushButton_3" << 0;
    QTest::newRow("edit") << "pushButton_4" << 1;
    QTest::newRow("new") << "pushButton_6" << 2;
}

void test_zuobiao_form_homepage::editors_open_modal_and_delete_themselves()
{
    QFETCH(QString, button);
    QFETCH(int, mode);
    open(1, 0, 1);
    find<QComboBox>(m_form.get(), "comboBox_3")->setCurrentIndex(2);
    QSignalSpy filled(m_form.get(), &zuobiaoForm_homepage::zuobiaochanged);
    press(m_form.get(), button);
    const QPointer<zuobiaoForm> editor = open_editor();
    QVERIFY(editor != nullptr);
    QCOMPARE(editor->windowModality(), Qt::ApplicationModal);
    // 0x8001003, and the system menu that Qt adds where there is a close button.
    QCOMPARE(editor->windowFlags(), Qt::WindowFlags(0x8001003) | Qt::WindowSystemMenuHint);
    QCOMPARE(filled.size(), 1);
    QCOMPARE(filled[0][0].value<JsonFileManager*>(), m_store->get());
    QCOMPARE(filled[0][1].toInt(), mode);
    QCOMPARE(filled[0][2].toInt(), 2);
    QCOMPARE(filled[0][3].toInt(), 1);
    QCOMPARE(editor->opened_mode, mode);
    QCOMPARE(editor->sys_index, 2);
    QCOMPARE(editor->language, 1);
    editor->close();
    QTRY_VERIFY(editor.isNull());
    QVERIFY(m_form->isVisible());
}

void test_zuobiao_form_homepage::only_a_new_system_refills_the_list()
{
    open(1, 2);
    const log_capture log;
    for (const char* button : {"pushButton_3", "pushButton_4"}) {
        press(m_form.get(), button);
        const QPointer<zuobiaoForm> editor = open_editor();
        editor->close();
        QTRY_VERIFY(editor.isNull());
    }
    QVERIFY(!log.has("当前坐标系统总数:"));

    press(m_form.get(), "pushButton_6");
    const QPointer<zuobiaoForm> editor = open_editor();
    type(editor, "sys_name", "AAA");
    box_watcher watcher;
    press(editor, "pushButton");
    QTRY_VERIFY(editor.isNull());
    QCOMPARE(watcher.texts(), QStringList{"坐标系统新建成功"});
    QVERIFY(log.has("当前坐标系统总数: 5"));
    const auto* list = find<QComboBox>(m_form.get(), "comboBox_3");
    QCOMPARE(names_of(list).last(), QStringLiteral("AAA"));
    QCOMPARE(list->currentIndex(), 2);
    // The next start sorts the names.
    QCOMPARE(fresh_store::on_disk().constFirst().name, QStringLiteral("AAA"));
}

void test_zuobiao_form_homepage::an_editor_goes_with_the_form()
{
    open(1);
    press(m_form.get(), "pushButton_6");
    const QPointer<zuobiaoForm> editor = open_editor();
    QVERIFY(editor != nullptr);
    m_form.reset();
    QVERIFY(editor.isNull());
}

void test_zuobiao_form_homepage::deletes_without_asking_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("Chinese") << 0 << "删除"
                             << "坐标系统已删除";
    QTest::newRow("English") << 1 << "DELETE"
                             << "The coordinate system has been deleted.";
}

void test_zuobiao_form_homepage::deletes_without_asking()
{
    QFETCH(int, language);
    QFETCH(QString, title);
    QFETCH(QString, text);
    open(4, 1, language);
    const log_capture log;
    box_watcher watcher;
    press(m_form.get(), "pushButton_5");
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Information);
    QCOMPARE(watcher.boxes[0].title, title);
    QCOMPARE(watcher.boxes[0].text, text);
    QStringList told;
    for (const QString& line : log.texts()) {
        // Without those of the store between them.
        if (line.contains("删除"))
            told += line;
    }
    QCOMPARE(told, (QStringList{"准备删除坐标系统: \"CGCS2000\"", "成功删除坐标系统: \"CGCS2000\"",
                                "验证成功: 坐标系统已被删除"}));
    QCOMPARE(names_of(find<QComboBox>(m_form.get(), "comboBox_3")),
             (QStringList{"BEIJING1954", "WGS1984", "XIAN1980"}));
    QCOMPARE(fresh_store::on_disk().size(), 3);
}

void test_zuobiao_form_homepage::a_deletion_that_fails_is_told_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    QTest::newRow("Chinese") << 0 << "删除"
                             << "坐标系统删除失败";
    QTest::newRow("English") << 1 << "DELETE"
                             << "Coordinate system deletion failed";
}

void test_zuobiao_form_homepage::a_deletion_that_fails_is_told()
{
    QFETCH(int, language);
    QFETCH(QString, title);
    QFETCH(QString, text);
    open(1, 0, language);
    m_store->break_file();
    box_watcher watcher;
    press(m_form.get(), "pushButton_5");
    QCOMPARE(watcher.boxes.size(), 1);
    QCOMPARE(watcher.boxes[0].icon, QMessageBox::Information);
    QCOMPARE(watcher.boxes[0].title, title);
    QCOMPARE(watcher.boxes[0].text, text);
    // The list is what memory holds.
    QCOMPARE(find<QComboBox>(m_form.get(), "comboBox_3")->count(), (*m_store)->systems.size());
}

void test_zuobiao_form_homepage::deleting_without_a_system()
{
    (*m_store)->systems.clear();
    open(1, 0);
    const log_capture log;
    box_watcher watcher;
    press(m_form.get(), "pushButton_5");
    QVERIFY(log.has("坐标系统 \"\" 不存在，无需删除"));
    QCOMPARE(watcher.texts(), QStringList{"坐标系统删除失败"});

    QSignalSpy chosen(m_form.get(), &zuobiaoForm_homepage::modeflagchange);
    press(m_form.get(), "pushButton");
    QCOMPARE(chosen[0][2].toInt(), -1);
}

void test_zuobiao_form_homepage::deleting_the_last_row_chooses_the_one_before()
{
    open(1, 3);
    box_watcher watcher;
    press(m_form.get(), "pushButton_5");
    QCOMPARE(find<QComboBox>(m_form.get(), "comboBox_3")->currentText(), QStringLiteral("WGS1984"));
}

QTEST_MAIN(test_zuobiao_form_homepage)
#include "test_zuobiao_form_homepage.moc"
