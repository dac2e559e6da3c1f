// The import dialog.

#include "exchange/input_window.h"
#include "support/box_watcher.h"
#include "support/file_dialog_user.h"

#include <QMetaMethod>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class test_input_window : public QObject
{
    Q_OBJECT

private slots:
    void opens_as_designed();
    void names_of_signal_and_slots();
    void texts_follow_the_language();
    void a_file_is_sent_on();
    void a_cancelled_choice_is_sent_on_too();
    void escape_closes();
};

void test_input_window::opens_as_designed()
{
    const input_window window;
    QCOMPARE(window.language, 0);
    QCOMPARE(window.minimumSize(), QSize(488, 123));
    QCOMPARE(window.maximumSize(), QSize(488, 123));
    QCOMPARE(window.windowTitle(), QStringLiteral("导入"));
    QVERIFY(!window.windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
    QVERIFY(!window.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(window.isWindow());
    for (const char* name : {"pushButton", "pushButton_2"}) {
        const auto* button = window.findChild<QPushButton*>(name);
        QCOMPARE(button->styleSheet(),
                 QStringLiteral("QPushButton{border: 1px solid #bfbfbf;border-radius:8px;"
                                "background-color:#d4d4d4}QPushButton:pressed {  "
                                "background-color: #bfbfbf;}"));
        QVERIFY(window.rect().contains(button->geometry()));
    }
}

void test_input_window::names_of_signal_and_slots()
{
    const QMetaObject& meta = input_window::staticMetaObject;
    QCOMPARE(QByteArray(meta.method(meta.methodOffset()).methodSignature()),
             QByteArray("send_btm_sign_to_mainwindow_import_file(QString)"));
    QVERIFY(meta.indexOfSlot("on_pushButton_clicked()") >= 0);
    QVERIFY(meta.indexOfSlot("on_pushButton_2_clicked()") >= 0);
}

void test_input_window::texts_follow_the_language()
{
    input_window window;
    const auto shows = [&window](const char* object, const char* text) {
        const auto* button = window.findChild<QPushButton*>(object);
        QCOMPARE(button->text(), QString(text));
        QVERIFY(button->sizeHint().width() <= button->width());
    };
    window.show();
    shows("pushButton", "下载Excel文件导入模版");
    shows("pushButton_2", "导入文件");
    window.setlanguage(1);
    QCOMPARE(window.language, 1);
    shows("pushButton", "Download the Excel template for import");
    shows("pushButton_2", "Importing files");
    window.setlanguage(0);
    shows("pushButton_2", "导入文件");
}

void test_input_window::a_file_is_sent_on()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("a.csv"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    const QString default_folder = QStringLiteral("/home/user/Documents");
    input_window window;
    window.show();
    file_dialog_user user;
    user.path = file.fileName();
    const QSignalSpy chosen(&window, &input_window::send_btm_sign_to_mainwindow_import_file);
    window.findChild<QPushButton*>("pushButton_2")->click();
    QCOMPARE(user.dialogs.size(), 1);
    QCOMPARE(user.dialogs[0].title, QStringLiteral("Open Files"));
    QCOMPARE(user.dialogs[0].accept_mode, QFileDialog::AcceptOpen);
    QCOMPARE(user.dialogs[0].file_mode, QFileDialog::ExistingFile); // one, not several
    // The last name has no dot.
    QCOMPARE(
        user.dialogs[0].filters,
        (QStringList{"GIS and Data Files (*.kml *.csv *.dxf *.gpx *.xlsx *xls)", "All Files (*)"}));
    QVERIFY(QDir(user.dialogs[0].directory).exists());
    // A folder that is not there is taken for the name of a file by the dialog.
    if (QDir(default_folder).exists())
        QCOMPARE(user.dialogs[0].directory, default_folder);
    else
        QCOMPARE(user.dialogs[0].file_name, QStringLiteral("Documents"));
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen[0][0].toString(), file.fileName());
    QVERIFY(window.isVisible());
}

void test_input_window::a_cancelled_choice_is_sent_on_too()
{
    input_window window;
    window.show();
    file_dialog_user user;
    box_watcher watcher;
    const QSignalSpy chosen(&window, &input_window::send_btm_sign_to_mainwindow_import_file);
    window.findChild<QPushButton*>("pushButton_2")->click();
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen[0][0].toString(), QString());
    QCOMPARE(watcher.boxes.size(), 0);
}

void test_input_window::escape_closes()
{
    input_window window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_Escape);
    QVERIFY(!window.isVisible());
}

QTEST_MAIN(test_input_window)
#include "test_input_window.moc"
