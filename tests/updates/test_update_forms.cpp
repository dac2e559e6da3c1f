// The windows of both updates: sizes, texts, pictures, signals, progress.

#include "updates/hardwareupdata.h"
#include "updates/update_form.h"

#include <QComboBox>
#include <QLabel>
#include <QMetaMethod>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

class test_update_forms : public QObject
{
    Q_OBJECT

private slots:
    void software_form();
    void software_progress_data();
    void software_progress();
    void firmware_form();
    void firmware_buttons_follow_the_language_data();
    void firmware_buttons_follow_the_language();
    void firmware_signals();
    void escape_closes();
    void names_of_signals_and_slots();
};

void test_update_forms::software_form()
{
    updateForm form;
    form.show();
    QCOMPARE(form.size(), QSize(407, 147));
    QCOMPARE(form.windowTitle(), QStringLiteral("软件更新"));
    QVERIFY((form.windowFlags() & Qt::WindowMinimizeButtonHint) == 0);
    QVERIFY((form.windowFlags() & Qt::WindowMaximizeButtonHint) == 0);
    QVERIFY((form.windowFlags() & Qt::WindowCloseButtonHint) != 0);
    QCOMPARE(form.findChild<QPushButton*>("pushButton")->text(), QStringLiteral("下载"));
    QCOMPARE(form.findChild<QLabel*>("label")->text(), QStringLiteral("下载："));
    QCOMPARE(form.findChild<QLabel*>("label_2")->text(), QStringLiteral("总大小："));
    auto* bar = form.findChild<QProgressBar*>("progressBar");
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 100);
    QCOMPARE(bar->value(), 0);

    QSignalSpy wanted(&form, &updateForm::send_dowmfile_signal_to_software_upgrade);
    QTest::mouseClick(form.pushButton, Qt::LeftButton);
    QCOMPARE(wanted.size(), 1);
    QVERIFY(!form.pushButton->isEnabled());
    QTest::mouseClick(form.pushButton, Qt::LeftButton);
    QCOMPARE(wanted.size(), 1);
}

void test_update_forms::software_progress_data()
{
    QTest::addColumn<int>("percent");
    QTest::addColumn<bool>("busy");
    QTest::newRow("0") << 0 << false;
    QTest::newRow("37") << 37 << false;
    QTest::newRow("100") << 100 << false;
    QTest::newRow("unknown") << -1 << true;
}

void test_update_forms::software_progress()
{
    QFETCH(int, percent);
    QFETCH(bool, busy);
    updateForm form;
    form.set_ui("1MB", "2MB", -1);
    form.set_ui("12MB", "34MB", percent);
    QCOMPARE(form.findChild<QLabel*>("bytesReceived")->text(), QStringLiteral("12MB"));
    QCOMPARE(form.findChild<QLabel*>("bytesTotal")->text(), QStringLiteral("34MB"));
    // A range without an end is what makes a bar busy.
    QCOMPARE(form.progressBar->maximum(), busy ? 0 : 100);
    if (!busy)
        QCOMPARE(form.progressBar->value(), percent);
}

void test_update_forms::firmware_form()
{
    hardwareupdata form;
    QCOMPARE(form.size(), QSize(510, 253));
    auto* bar = form.findChild<QProgressBar*>("progressBar");
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 100);
    QCOMPARE(bar->value(), 0);
    QCOMPARE(form.findChild<QLabel*>("label")->text(), QStringLiteral("升级进度："));
    QVERIFY(form.findChild<QFrame*>("line") != nullptr);
    QCOMPARE(form.findChild<QComboBox*>("comboBox")->count(), 0);
    form.recv_updata_progress_value(42);
    QCOMPARE(bar->value(), 42);
    form.recv_add_comboBox_value("a.bin");
    form.recv_add_comboBox_value("a.bin");
    QCOMPARE(form.comboBox->count(), 2); // twice is twice
}

void test_update_forms::firmware_buttons_follow_the_language_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("end");
    QTest::newRow("Chinese") << 0 << "ch"
                             << "";
    QTest::newRow("English") << 1 << "en"
                             << "_en";
    QTest::newRow("any other") << 7 << "en"
                               << "_en";
}

void test_update_forms::firmware_buttons_follow_the_language()
{
    QFETCH(int, language);
    QFETCH(QString, folder);
    QFETCH(QString, end);
    hardwareupdata form;
    form.setlanguage(1);
    form.setlanguage(language);
    QCOMPARE(form.windowTitle(), QStringLiteral("设备升级"));
    const QMap<QString, QString> pictures{
        {"pushButton", "cloudupdata"}, {"pushButton_2", "localupdata"}, {"pushButton_3", "sure"}};
    for (auto one = pictures.begin(); one != pictures.end(); ++one) {
        auto* button = form.findChild<QPushButton*>(one.key());
        QCOMPARE(button->text(), QString());
        QVERIFY(!button->accessibleName().isEmpty());
        QCOMPARE(button->styleSheet(),
                 QStringLiteral("QPushButton{border:none;background-color:transparent;image: "
                                "url(./pic/%1/normal/%2%3.png);}QPushButton:pressed {image: "
                                "url(./pic/%1/push/%2%3_push.png);}")
                     .arg(folder, one.value(), end));
    }
}

void test_update_forms::firmware_signals()
{
    hardwareupdata form;
    form.show();
    form.recv_add_comboBox_value("a.bin");
    form.recv_add_comboBox_value("b.bin");
    form.comboBox->setCurrentIndex(1);
    QSignalSpy cloud(&form, &hardwareupdata::send_signal_cloud_updata);
    QSignalSpy local(&form, &hardwareupdata::send_signal_local_updata);
    QSignalSpy sure(&form, &hardwareupdata::send_signal_sure);
    QTest::mouseClick(form.pushButton, Qt::LeftButton);
    QTest::mouseClick(form.pushButton_2, Qt::LeftButton);
    QTest::mouseClick(form.pushButton_3, Qt::LeftButton);
    QCOMPARE(cloud.size(), 1);
    QCOMPARE(local.size(), 1);
    QCOMPARE(sure.size(), 1);
    QCOMPARE(sure[0][0].toString(), QStringLiteral("b.bin"));
}

void test_update_forms::escape_closes()
{
    updateForm software;
    hardwareupdata firmware;
    for (QWidget* const form :
         {static_cast<QWidget*>(&software), static_cast<QWidget*>(&firmware)}) {
        form->show();
        QVERIFY(QTest::qWaitForWindowActive(form));
        QTest::keyClick(form, Qt::Key_Escape);
        QVERIFY(!form->isVisible());
    }
}

void test_update_forms::names_of_signals_and_slots()
{
    const auto names = [](const QMetaObject& meta) {
        QByteArrayList all;
        for (int at = meta.methodOffset(); at < meta.methodCount(); ++at)
            all += meta.method(at).methodSignature();
        return all;
    };
    QCOMPARE(names(updateForm::staticMetaObject),
             (QByteArrayList{"send_dowmfile_signal_to_software_upgrade()",
                             "on_pushButton_clicked()", "set_ui(QString,QString,int)"}));
    const QByteArrayList firmware = names(hardwareupdata::staticMetaObject);
    QCOMPARE(firmware.first(3),
             (QByteArrayList{"send_signal_cloud_updata()", "send_signal_local_updata()",
                             "send_signal_sure(QString)"}));
    QCOMPARE(
        firmware.mid(3),
        (QByteArrayList{"setlanguage(int)", "on_pushButton_clicked()", "on_pushButton_2_clicked()",
                        "on_pushButton_3_clicked()", "recv_add_comboBox_value(QString)",
                        "recv_updata_progress_value(int)"}));
}

QTEST_MAIN(test_update_forms)
#include "test_update_forms.moc"
