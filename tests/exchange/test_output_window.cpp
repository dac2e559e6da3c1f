// The export dialog: its widgets in both languages, what each choice asks for in
// the file dialog and what it sends on.

#include "coordinates/json_file_manager.h"
#include "exchange/export_formats.h"
#include "exchange/output_window.h"
#include "presentation/graphic_widget.h"
#include "support/box_watcher.h"
#include "support/file_dialog_user.h"
#include "support/sample_records.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWebEngineView>

#include <algorithm>

namespace {

const QStringList box_names{"mianji_1",   "mianji_2",   "juli_1",     "juli_2",
                            "hangdian_1", "hangdian_2", "hangxian_1", "hangxian_2",
                            "hangji_1",   "hangji_2",   "fangyang_1", "fangyang_2"};

/// A dialog as the window opens it, over two ticked measurements.
struct open_dialog
{
    explicit open_dialog(int language = 0)
    {
        CoordinateSystem first;
        first.name = "first";
        CoordinateSystem second;
        second.name = "second";
        second.changzhou = 6378137.0;
        second.duanzhou = 6356752.25;
        second.pianlv = 0.0033;
        second.type = 1;
        second.ellipsoid = 2;
        second.utm_mode = 2;
        second.method = 6;
        second.k0 = 0.5;
        second.east = 400000.0;
        second.l0 = 104.5;
        second.param7.rz = 6.0;
        second.param4.rt = 14.0;
        second.param4.k = 13.0;
        store.systems = {first, second};
        window.js = &store;
        window.sys_index = 1;
        window.model = &model;
        window.table_list = lists.table_list;
        window.data_msg_altitude = lists.data_msg_altitude;
        window.point_msg_all = lists.point_msg_all;
        window.mode = 3;
        window.setlanguage(language);
        window.show();
    }

    [[nodiscard]] QComboBox* formats() const
    {
        return window.findChild<QComboBox*>("export_format");
    }
    void confirm() const { window.findChild<QPushButton*>("pushButton")->click(); }

    JsonFileManager store;
    QStandardItemModel model;
    sample_lists lists = sample_records();
    outputWindow window;
};

struct path_choice
{
    int format;
    const char* signal;
    const char* title;
    const char* filter; ///< null: a folder
    const char* proposed;
};

const path_choice path_choices[] = {
    {0, "one_csv", "Export File", "CSV Files (*.csv)", "exported_data.csv"},
    {1, "more_csv", "Choose Directory", nullptr, ""},
    {2, "one_dxf", "Export File", "DXF Files (*.dxf)", "exported_data.dxf"},
    {3, "more_dxf", "Choose Directory", nullptr, ""},
    {4, "one_gpx", "Export File", "GPX Files (*.gpx)", "exported_data.gpx"},
    {5, "more_gpx", "Choose Directory", nullptr, ""},
    {6, "kml", "Export File", "KML Files (*.kml)", "exported_data.kml"},
    {7, "picture", "Export File", "PNG Files (*.png)", "exported_data.png"},
    {8, "excel", "Export File", "Xlsx Files (*.xlsx)", "exported_data.xlsx"},
};

void path_rows()
{
    QTest::addColumn<int>("row");
    for (std::size_t row = 0; row < std::size(path_choices); ++row)
        QTest::newRow(path_choices[row].signal) << static_cast<int>(row);
}

QByteArray signature_start(const char* format)
{
    return QByteArray("send_btm_sign_to_threadkey_") + format + '(';
}

/// Spies for the nine signals, in the order of their declaration.
struct all_signals
{
    explicit all_signals(const outputWindow& window)
    {
        const QMetaObject& meta = outputWindow::staticMetaObject;
        for (int at = meta.methodOffset(); at < meta.methodCount(); ++at) {
            if (meta.method(at).methodType() == QMetaMethod::Signal)
                spies.emplace_back(new QSignalSpy(&window, meta.method(at)));
        }
    }
    [[nodiscard]] int sent() const
    {
        int all = 0;
        for (const auto& spy : spies)
            all += static_cast<int>(spy->size());
        return all;
    }
    std::vector<std::unique_ptr<QSignalSpy>> spies;
};

} // namespace

class test_output_window : public QObject
{
    Q_OBJECT

private slots:
    void opens_as_designed();
    void texts_data();
    void texts();
    void formats_data();
    void formats();
    void a_second_call_adds_the_formats_again();
    void formats_of_a_second_call_send_nothing();
    void table_of_formats_agrees_with_itself();
    void language_takes_over_the_system();
    void a_system_that_is_not_there_is_empty();
    void parent_view_is_stored();
    void boxes_are_for_excel_alone();
    void boxes_count_whether_enabled_or_not();
    void flags_are_taken_anew();
    void signals_stand_in_their_order();
    void slots_are_there();
    void asks_for_the_path_data() { path_rows(); }
    void asks_for_the_path();
    void without_a_path_nothing_is_sent_data() { path_rows(); }
    void without_a_path_nothing_is_sent();
    void a_rebuilt_table_sends_no_model();
    void escape_closes();
};

void test_output_window::opens_as_designed()
{
    outputWindow window;
    QCOMPARE(window.size(), QSize(325, 512));
    QCOMPARE(window.minimumSize(), window.maximumSize());
    QCOMPARE(window.windowTitle(), QStringLiteral("导出为"));
    QVERIFY(!window.windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
    QVERIFY(!window.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    QVERIFY(window.windowFlags().testFlag(Qt::WindowCloseButtonHint));
    QVERIFY(window.isWindow());
    QCOMPARE(window.timer->interval(), 500);
    QVERIFY(window.timer->isActive());
    for (const QString& name : box_names) {
        const auto* box = window.findChild<QCheckBox*>(name);
        QVERIFY2(box != nullptr, qPrintable(name));
        QVERIFY(box->isChecked());
    }
    QVERIFY(window.findChild<QFrame*>("line") != nullptr);
    QCOMPARE(window.findChild<QComboBox*>("export_format")->count(), 0);
    // No widget leaves the window or covers another.
    const auto widgets = window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget* one : widgets) {
        QVERIFY(window.rect().contains(one->geometry()));
        for (const QWidget* other : widgets)
            QVERIFY(one == other || !one->geometry().intersects(other->geometry()));
    }
}

void test_output_window::texts_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QStringList>("labels");
    QTest::addColumn<QString>("confirm");
    QTest::addColumn<QStringList>("boxes");
    QTest::newRow("Chinese") << 0 << QStringList{"导出格式", "面积", "距离",    "航点",
                                                 "航线",     "航迹", "放样线段"}
                             << "确定" << QStringList{"测量数据", "点位数据"};
    for (const int other : {1, 2})
        QTest::addRow("English, %d", other)
            << other << QStringList{"Export Format", "Area",  "Distance", "Waypoint",
                                    "Line",          "Tarck", "Example"}
            << "Confirm" << QStringList{"Measurement data", "Points"};
}

void test_output_window::texts()
{
    QFETCH(int, language);
    QFETCH(QStringList, labels);
    QFETCH(QString, confirm);
    QFETCH(QStringList, boxes);
    const open_dialog dialog(language);
    QCOMPARE(dialog.window.language, language);
    QStringList shown;
    for (const char* name :
         {"label_4", "label_5", "label_13", "label_14", "label_15", "label_16", "label_17"})
        shown += dialog.window.findChild<QLabel*>(name)->text();
    QCOMPARE(shown, labels);
    QCOMPARE(dialog.window.findChild<QPushButton*>("pushButton")->text(), confirm);
    for (qsizetype at = 0; at < box_names.size(); ++at) {
        const auto* box = dialog.window.findChild<QCheckBox*>(box_names[at]);
        QCOMPARE(box->text(), boxes[at % 2]);
        QVERIFY2(box->sizeHint().width() <= box->width(), qPrintable(box_names[at]));
    }
}

void test_output_window::formats_data()
{
    QTest::addColumn<int>("language");
    QTest::addColumn<QStringList>("items");
    QTest::newRow("Chinese") << 0 << QStringList{"合并为CSV文件", "多个CSV文件",   "合并为DXF文件",
                                                 "多个DXF文件",   "合并为GPX文件", "多个GPX文件",
                                                 "KML文件",       "图片",          "Excel文件"};
    for (const int other : {1, 2})
        QTest::addRow("English, %d", other)
            << other
            << QStringList{"Merge into CSV files", "Multiple CSV files",   "Merge into DXF files",
                           "Multiple DXF files",   "Merge into GPX files", "Multiple GPX files",
                           "Export KML files",     "Export Picture",       "Export Excel files"};
}

void test_output_window::formats()
{
    QFETCH(int, language);
    QFETCH(QStringList, items);
    const open_dialog dialog(language);
    QStringList shown;
    for (int at = 0; at < dialog.formats()->count(); ++at)
        shown += dialog.formats()->itemText(at);
    QCOMPARE(shown, items);
    QCOMPARE(dialog.formats()->currentIndex(), 0);
}

void test_output_window::a_second_call_adds_the_formats_again()
{
    open_dialog dialog(0);
    dialog.window.setlanguage(1);
    QCOMPARE(dialog.formats()->count(), 18);
    QCOMPARE(dialog.formats()->itemText(8), QStringLiteral("Excel文件"));
    QCOMPARE(dialog.formats()->itemText(9), QStringLiteral("Merge into CSV files"));
    QCOMPARE(dialog.formats()->currentIndex(), 0);
}

void test_output_window::formats_of_a_second_call_send_nothing()
{
    box_watcher watcher;
    file_dialog_user user;
    open_dialog dialog(0);
    dialog.window.setlanguage(1);
    const all_signals sent(dialog.window);
    for (const int index : {-1, 9, 17}) {
        dialog.formats()->setCurrentIndex(index);
        dialog.confirm();
        QCOMPARE(dialog.window.check_flags, QList<int>(12, 1)); // taken all the same
    }
    QCOMPARE(sent.sent(), 0);
    QVERIFY(user.dialogs.isEmpty());
    QVERIFY(watcher.boxes.isEmpty());
}

void test_output_window::table_of_formats_agrees_with_itself()
{
    const int commands[] = {3, 4, 5, 6, 7, 8, 1, 0, 9};
    for (std::size_t at = 0; at < export_formats.size(); ++at) {
        const export_format& format = export_formats[at];
        QCOMPARE(static_cast<int>(format.command), commands[at]);
        QCOMPARE(QByteArray(format.label), QByteArray(path_choices[at].signal) + "_export");
        QCOMPARE(QByteArray(format.default_path),
                 path_choices[at].filter == nullptr
                     ? QByteArray("/home/user/Documents")
                     : QByteArray("/home/user/Documents/") + path_choices[at].proposed);
    }
}

void test_output_window::language_takes_over_the_system()
{
    const open_dialog dialog;
    const outputWindow& window = dialog.window;
    QCOMPARE(window.cz, 6378137.0);
    QCOMPARE(window.dz, 6356752.25);
    QCOMPARE(window.pl, 0.0033);
    QCOMPARE(window.system_name, QStringLiteral("second"));
    const model_param& param = window.m_ModelParam;
    QCOMPARE(int(param.type), 1);
    QCOMPARE(int(param.ellipsoid), 2);
    QCOMPARE(int(param.projection.utm_mode), 2);
    QCOMPARE(int(param.projection.method), 6);
    QCOMPARE(param.projection.l0, 104.5F);
    QCOMPARE(param.projection.k0, 0.5F);
    QCOMPARE(param.projection.east, 400000.0);
    QCOMPARE(param.param7.rz, 6.0);
    QCOMPARE(param.param4.rt, 14.0);
    QCOMPARE(param.param4.k, 13.0);
}

void test_output_window::a_system_that_is_not_there_is_empty()
{
    for (const int index : {-1, 2}) {
        open_dialog dialog;
        dialog.window.sys_index = index;
        dialog.window.setlanguage(0);
        QCOMPARE(dialog.window.system_name, QString());
        QCOMPARE(dialog.window.cz, 0.0);
    }
    outputWindow alone;
    alone.setlanguage(0);
    QCOMPARE(alone.system_name, QString());
}

void test_output_window::parent_view_is_stored()
{
    outputWindow window;
    graphic_widget drawing;
    auto* view = reinterpret_cast<QWebEngineView*>(&drawing); // only kept
    window.set_parent_view(view, &drawing, 1);
    QCOMPARE(window.parentView, view);
    QCOMPARE(window.parentwidget, &drawing);
    QCOMPARE(window.picture_flag, 1);
}

void test_output_window::boxes_are_for_excel_alone()
{
    const open_dialog dialog;
    const auto all = [&](bool enabled) {
        return std::ranges::all_of(box_names, [&](const QString& name) {
            return dialog.window.findChild<QCheckBox*>(name)->isEnabled() == enabled;
        });
    };
    QVERIFY(all(false));
    dialog.formats()->setCurrentIndex(8);
    QTRY_VERIFY(all(true));
    for (const int other : {7, 0}) {
        dialog.formats()->setCurrentIndex(other);
        QTRY_VERIFY(all(false));
        dialog.formats()->setCurrentIndex(8);
        QTRY_VERIFY(all(true));
    }
}

void test_output_window::boxes_count_whether_enabled_or_not()
{
    box_watcher watcher;
    file_dialog_user user;
    for (qsizetype at = 0; at < box_names.size(); ++at) {
        const open_dialog dialog;
        dialog.window.findChild<QCheckBox*>(box_names[at])->setChecked(false);
        dialog.confirm();
        QList<int> flags(12, 1);
        flags[at] = 0;
        QCOMPARE(dialog.window.check_flags, flags);
    }
}

void test_output_window::flags_are_taken_anew()
{
    box_watcher watcher;
    file_dialog_user user;
    const open_dialog dialog;
    dialog.confirm();
    dialog.confirm();
    QCOMPARE(dialog.window.check_flags, QList<int>(12, 1));
}

void test_output_window::signals_stand_in_their_order()
{
    const QMetaObject& meta = outputWindow::staticMetaObject;
    const QByteArray tail = "QString,int,double,double,double,model_param,QStandardItemModel*,"
                            "QList<measuringData>,QStringList,QList<QList<point_msg>>";
    QList<QByteArray> expected;
    for (const char* format : {"kml", "picture", "one_csv", "more_csv", "one_dxf", "more_dxf",
                               "one_gpx", "more_gpx", "excel"}) {
        QByteArray arguments = tail;
        if (QByteArray(format) == "picture")
            arguments = "QString,QWebEngineView*,graphic_widget*,int";
        else if (QByteArray(format) == "excel")
            arguments = "QList<int>," + tail + ",QString";
        expected += signature_start(format) + arguments + ')';
    }
    QList<QByteArray> found;
    for (int at = meta.methodOffset(); at < meta.methodCount(); ++at) {
        if (meta.method(at).methodType() == QMetaMethod::Signal)
            found += meta.method(at).methodSignature();
    }
    QCOMPARE(found, expected);
}

void test_output_window::slots_are_there()
{
    for (const char* slot :
         {"setlanguage(int)", "set_parent_view(QWebEngineView*,graphic_widget*,int)",
          "on_pushButton_clicked()", "one_CSV_clicked()", "more_CSV_clicked()", "one_DXF_clicked()",
          "more_DXF_clicked()", "one_GPX_clicked()", "more_GPX_clicked()", "kml_clicked()",
          "picture_clicked()", "excel_clicked()"})
        QVERIFY2(outputWindow::staticMetaObject.indexOfSlot(slot) >= 0, slot);
}

void test_output_window::asks_for_the_path()
{
    QFETCH(int, row);
    const path_choice& choice = path_choices[row];
    const QTemporaryDir folder;
    box_watcher watcher;
    file_dialog_user user;
    user.path = choice.filter == nullptr ? folder.path() : folder.filePath("somewhere.txt");

    for (const int language : {0, 1}) {
        open_dialog dialog(language);
        auto* view = reinterpret_cast<QWebEngineView*>(&dialog.model); // only passed on
        auto* drawing = reinterpret_cast<graphic_widget*>(&dialog.model);
        dialog.window.set_parent_view(view, drawing, 1);
        const all_signals sent(dialog.window);
        dialog.formats()->setCurrentIndex(choice.format);
        user.dialogs.clear();
        dialog.confirm();

        QCOMPARE(user.dialogs.size(), 1);
        const file_dialog_user::seen_dialog& asked = user.dialogs[0];
        QCOMPARE(asked.title, QString(choice.title));
        QVERIFY(!asked.directory.startsWith("/home/user/Documents"));
        QVERIFY(QDir(asked.directory).exists());
        if (choice.filter != nullptr) {
            QCOMPARE(asked.accept_mode, QFileDialog::AcceptSave);
            QCOMPARE(asked.filters, (QStringList{choice.filter, "All Files (*)"}));
            QCOMPARE(asked.file_name, QString(choice.proposed));
        } else {
            QCOMPARE(asked.accept_mode, QFileDialog::AcceptOpen);
            QCOMPARE(asked.file_mode, QFileDialog::Directory);
            QVERIFY(asked.options.testFlag(QFileDialog::ShowDirsOnly));
            QVERIFY(asked.options.testFlag(QFileDialog::DontResolveSymlinks));
        }

        QCOMPARE(sent.sent(), 1);
        QVERIFY(dialog.window.isVisible()); // it stays open
        QCOMPARE(watcher.boxes.size(), 0);
        QList<QVariant> arguments;
        for (const auto& spy : sent.spies) {
            if (spy->isEmpty())
                continue;
            QVERIFY(spy->signal().startsWith(signature_start(choice.signal)));
            arguments = spy->first();
        }
        if (choice.format == picture_format) {
            QCOMPARE(arguments[0].toString(), user.path);
            QCOMPARE(arguments[1].value<QWebEngineView*>(), view);
            QCOMPARE(arguments[2].value<graphic_widget*>(), drawing);
            QCOMPARE(arguments[3].toInt(), 1);
            continue;
        }
        if (choice.format == excel_format) {
            QCOMPARE(arguments.takeFirst().value<QList<int>>(), QList<int>(12, 1));
            QCOMPARE(arguments.takeLast().toString(), QStringLiteral("second"));
        }
        QCOMPARE(arguments.size(), 10);
        QCOMPARE(arguments[0].toString(), user.path);
        QCOMPARE(arguments[1].toInt(), 3);
        QCOMPARE(arguments[2].toDouble(), 6378137.0);
        QCOMPARE(arguments[3].toDouble(), 6356752.25);
        QCOMPARE(arguments[4].toDouble(), 0.0033);
        QCOMPARE(int(arguments[5].value<model_param>().projection.method), 6);
        QCOMPARE(arguments[6].value<QStandardItemModel*>(), &dialog.model);
        QCOMPARE(arguments[7].value<QList<measuringData>>(), dialog.lists.table_list);
        QCOMPARE(arguments[8].toStringList(), dialog.lists.data_msg_altitude);
        QCOMPARE(arguments[9].value<QList<QList<point_msg>>>(), dialog.lists.point_msg_all);
    }
}

void test_output_window::without_a_path_nothing_is_sent()
{
    QFETCH(int, row);
    box_watcher watcher;
    file_dialog_user user; // cancels
    for (const int language : {0, 1}) {
        const open_dialog dialog(language);
        const all_signals sent(dialog.window);
        dialog.formats()->setCurrentIndex(path_choices[row].format);
        watcher.boxes.clear();
        dialog.confirm();
        QCOMPARE(sent.sent(), 0);
        QVERIFY(dialog.window.isVisible());
        QCOMPARE(watcher.boxes.size(), 1);
        // In Chinese whatever the language.
        QCOMPARE(watcher.boxes[0].icon, QMessageBox::Warning);
        QCOMPARE(watcher.boxes[0].text, QStringLiteral("未选择文件路径或文件名"));
        QCOMPARE(watcher.boxes[0].title, QStringLiteral("警告"));
    }
}

void test_output_window::a_rebuilt_table_sends_no_model()
{
    // A read that goes on behind the dialog replaces the model and clears the ticks.
    const QTemporaryDir folder;
    file_dialog_user user;
    user.path = folder.filePath("a.csv");
    open_dialog dialog;
    auto model = std::make_unique<QStandardItemModel>();
    dialog.window.model = model.get();
    user.look = [&](QFileDialog*) { model.reset(); };
    const QSignalSpy sent(&dialog.window, &outputWindow::send_btm_sign_to_threadkey_one_csv);
    dialog.confirm();
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent[0][6].value<QStandardItemModel*>(), nullptr);
}

void test_output_window::escape_closes()
{
    open_dialog dialog;
    QVERIFY(QTest::qWaitForWindowActive(&dialog.window));
    QTest::keyClick(&dialog.window, Qt::Key_Escape);
    QVERIFY(!dialog.window.isVisible());
}

QTEST_MAIN(test_output_window)
#include "test_output_window.moc"
