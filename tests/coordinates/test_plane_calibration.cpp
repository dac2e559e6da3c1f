// The calculator of east and north offsets.

#include "coordinates/plane_calibration.h"
#include "form_driver.h"

#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>

class test_plane_calibration : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void names_of_signals_and_slots();
    void starts_at_zero();
    void every_text_in_both_languages();
    void the_results_follow();
    void no_number_counts_as_zero();
    void confirm_sends_what_is_shown();
    void a_quick_confirm_sends_what_was_typed();
    void cancel_sends_nothing();
    void keys_and_their_order();

private:
    [[nodiscard]] QString label(const char* name) const
    {
        return find<QLabel>(m_form.get(), name)->text();
    }

    std::unique_ptr<plane_calibration> m_form;
};

void test_plane_calibration::init()
{
    m_form = std::make_unique<plane_calibration>();
    m_form->set_up(0, nullptr);
    m_form->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_form.get()));
}

void test_plane_calibration::names_of_signals_and_slots()
{
    QStringList declared;
    const QMetaObject& meta = plane_calibration::staticMetaObject;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at)
        declared += QString::fromLatin1(meta.method(at).methodSignature());
    QCOMPARE(declared,
             (QStringList{"variableChanged(QString,QString)", "set_up(int,JsonFileManager*)",
                          "on_pushButton_clicked()", "on_pushButton_2_clicked()"}));
}

void test_plane_calibration::starts_at_zero()
{
    for (const char* edit : {"lineEdit", "lineEdit_2", "lineEdit_3", "lineEdit_4"})
        QCOMPARE(text_in(m_form.get(), edit), QStringLiteral("0.0"));
    QCOMPARE(label("label_dx"), QStringLiteral("0.00"));
    QCOMPARE(label("label_dy"), QStringLiteral("0.00"));
    const auto timers = m_form->findChildren<QTimer*>(Qt::FindDirectChildrenOnly);
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers[0]->interval(), 300);
    QVERIFY(!timers[0]->isSingleShot());
}

void test_plane_calibration::every_text_in_both_languages()
{
    const auto texts = [this] {
        QStringList all{m_form->windowTitle()};
        for (const char* name : {"label", "label_2", "label_3", "label_4", "label_5", "label_6"})
            all += label(name);
        all += find<QPushButton>(m_form.get(), "pushButton")->text();
        all += find<QPushButton>(m_form.get(), "pushButton_2")->text();
        return all;
    };
    QCOMPARE(texts(), (QStringList{"坐标校准", "源X:", "源Y:", "目标X:", "目标Y:", "DX:", "DY:",
                                   "确定", "取消"}));
    m_form->set_up(1, nullptr);
    QCOMPARE(texts(), (QStringList{"Plane Calibration", "Source X", "Source Y", "Target X",
                                   "Target Y", "DX:", "DY:", "Confirm", "Cancel"}));
    const std::pair<const char*, const char*> buddies[] = {{"label", "lineEdit"},
                                                           {"label_2", "lineEdit_2"},
                                                           {"label_3", "lineEdit_3"},
                                                           {"label_4", "lineEdit_4"}};
    for (const auto& [name, edit] : buddies)
        QCOMPARE(find<QLabel>(m_form.get(), name)->buddy(), find<QLineEdit>(m_form.get(), edit));
}

void test_plane_calibration::the_results_follow()
{
    type(m_form.get(), "lineEdit", "3000000.125");
    type(m_form.get(), "lineEdit_3", "3000010.5");
    type(m_form.get(), "lineEdit_2", "500100");
    type(m_form.get(), "lineEdit_4", "500000.25");
    QTRY_COMPARE(label("label_dx"), QStringLiteral("10.38"));
    QTRY_COMPARE(label("label_dy"), QStringLiteral("-99.75"));
}

void test_plane_calibration::no_number_counts_as_zero()
{
    type(m_form.get(), "lineEdit", "far");
    type(m_form.get(), "lineEdit_3", "7");
    QTRY_COMPARE(label("label_dx"), QStringLiteral("7.00"));
}

void test_plane_calibration::confirm_sends_what_is_shown()
{
    QSignalSpy sent(m_form.get(), &plane_calibration::variableChanged);
    type(m_form.get(), "lineEdit_3", "1.006");
    QTRY_COMPARE(label("label_dx"), QStringLiteral("1.01"));
    press(m_form.get(), "pushButton");
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent[0][0].toString(), QStringLiteral("1.01"));
    QCOMPARE(sent[0][1].toString(), QStringLiteral("0.00"));
    QVERIFY(!m_form->isVisible());
}

void test_plane_calibration::a_quick_confirm_sends_what_was_typed()
{
    QSignalSpy sent(m_form.get(), &plane_calibration::variableChanged);
    type(m_form.get(), "lineEdit_4", "12.5");
    press(m_form.get(), "pushButton"); // before the timer has fired
    QCOMPARE(sent[0][1].toString(), QStringLiteral("12.50"));
}

void test_plane_calibration::cancel_sends_nothing()
{
    QSignalSpy sent(m_form.get(), &plane_calibration::variableChanged);
    press(m_form.get(), "pushButton_2");
    QVERIFY(!m_form->isVisible());
    QCOMPARE(sent.size(), 0);
}

void test_plane_calibration::keys_and_their_order()
{
    QCOMPARE(tab_order(m_form.get(), "lineEdit"),
             (QStringList{"lineEdit", "lineEdit_2", "lineEdit_3", "lineEdit_4", "pushButton",
                          "pushButton_2"}));
    QSignalSpy sent(m_form.get(), &plane_calibration::variableChanged);
    QTest::keyClick(find<QLineEdit>(m_form.get(), "lineEdit"), Qt::Key_Return);
    QCOMPARE(sent.size(), 1);
    QVERIFY(!m_form->isVisible());
    m_form->show();
    QTest::keyClick(find<QLineEdit>(m_form.get(), "lineEdit"), Qt::Key_Escape);
    QVERIFY(!m_form->isVisible());
    QCOMPARE(sent.size(), 1);
}

QTEST_MAIN(test_plane_calibration)
#include "test_plane_calibration.moc"
