#include "steps.h"

#include "export_dialog.h"
#include "output_steps.h"
#include "stage.h"
#include "tables.h"
#include "tiles.h"

#include "coordinates/transforms.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPixmap>
#include <QProcess>
#include <QThread>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <span>

namespace {

using tables::cell;
using tables::kind_views;
using tables::name_column;
using tables::rows;
using tables::ticked_rows;

QString text_of(const char* label)
{
    return qobject_cast<QLabel*>(stage::widget(QLatin1String(label)))->text();
}

void connect_instrument(const stage& at)
{
    at.wait_for(QStringLiteral("the window"), [] {
        return !QApplication::topLevelWidgets().isEmpty() &&
               stage::widget(QStringLiteral("data_read"))->isVisible();
    });
    const QString text = at.wait_for_box(QStringLiteral("串口"));
    check(text == QStringLiteral("安卓设备已连接"), text);
    at.take_picture(QStringLiteral("01-connected"));
    at.answer_box(QMessageBox::Ok);
    check(at.see([] {
        return stage::widget(QStringLiteral("LED_2"))
            ->styleSheet()
            .contains(QStringLiteral("rgba(0, 229, 0, 255)"));
    }),
          QStringLiteral("the lamp is not green"));
    say(QStringLiteral("  the box says %1, the lamp is green, the text says %2")
            .arg(text, at.see([] { return text_of("label_serial"); })));
}

void read_measurements(const stage& at)
{
    at.click(QStringLiteral("data_read"));
    at.wait_for(QStringLiteral("the first rows"), [] { return rows("alltableView") > 0; });
    check(at.see([] {
        return stage::box() != nullptr || !stage::widget(QStringLiteral("data_read"))->isEnabled();
    }),
          QStringLiteral("the read button is not locked during the read"));
    at.take_picture(QStringLiteral("02-reading"));
    const QString text = at.wait_for_box(QStringLiteral("数据读取"), 300'000);
    at.take_picture(QStringLiteral("03-read"));
    check(text == QStringLiteral("数据读取成功"), text);
    at.answer_box(QMessageBox::Ok);
    const int all = at.see([] { return rows("alltableView"); });
    int by_kind = 0;
    for (const char* view : kind_views) {
        const int of_kind = at.see([view] { return rows(view); });
        check(of_kind > 0, QStringLiteral("nothing in %1").arg(QLatin1String(view)));
        by_kind += of_kind;
    }
    check(by_kind == all, QStringLiteral("%1 rows in all, %2 by kind").arg(all).arg(by_kind));
    check(at.see([] { return text_of("progressLabel"); }) == QStringLiteral("100%"),
          QStringLiteral("the progress is not at its end"));
    check(at.see([] { return stage::widget(QStringLiteral("data_read"))->isEnabled(); }),
          QStringLiteral("the read button is still locked"));
    say(QStringLiteral("  %1; %2 rows in the first table, as many in the other six")
            .arg(text)
            .arg(all));
}

void look_at_sizes(const stage& at, const QString& language)
{
    int number = 0;
    // The first has the layout that the window opens with: below it the layout
    // stays as it was last.
    for (const QSize size : {QSize(1296, 725), QSize(1850, 1000), QSize(1600, 900)}) {
        at.resize_window(size);
        // A moment for the page and the layout to be painted at the new size.
        QThread::msleep(600);
        at.take_picture(QStringLiteral("size-%1-%2").arg(language).arg(++number));
    }
    say(QStringLiteral("  three sizes, three pictures"));
}

void switch_to_english(const stage& at)
{
    at.choose(QStringLiteral("Language"), QStringLiteral("action_english"));
    at.wait_for(QStringLiteral("English words"),
                [] { return text_of("label_tablist") == QStringLiteral("Data List"); });
    check(at.see([] { return text_of("label_serial"); }) == QStringLiteral("connect"),
          QStringLiteral("the connection text did not follow"));
    at.wait_for_screen(QStringLiteral("menuBar"));
    at.take_picture(QStringLiteral("04-english"));
    say(QStringLiteral("  the window speaks English"));
}

constexpr QRgb line_on_the_map = qRgb(0x1d, 0x4e, 0xd8);
constexpr QRgb pin_on_the_map = qRgb(0xdc, 0x26, 0x26);
constexpr QRgb note_on_the_map = qRgb(0xff, 0xf8, 0xe6);

/// Whether the map shows enough of a colour to speak of.
bool map_shows(QRgb colour)
{
    constexpr int enough = 20; // pixels
    const QImage map = stage::widget(QStringLiteral("map"))->grab().toImage();
    int found = 0;
    for (int y = 0; y < map.height(); ++y) {
        for (int x = 0; x < map.width(); ++x)
            found += (map.pixel(x, y) & RGB_MASK) == (colour & RGB_MASK) ? 1 : 0;
    }
    return found >= enough;
}

/// Waits until the map looks the same for a while: tiles fade in.
void let_the_map_settle(const stage& at)
{
    const auto look = [&] {
        return at.see([] { return stage::widget(QStringLiteral("map"))->grab().toImage(); });
    };
    QImage before = look();
    constexpr int looks = 40; // at most: a map that never rests is worth a picture, too
    constexpr int enough = 4; // in a row: on a busy machine the tiles come in slowly
    for (int same = 0, taken = 0; same < enough && taken < looks; ++taken) {
        QThread::msleep(500);
        const QImage now = look();
        same = now == before ? same + 1 : 0;
        before = now;
    }
}

/// Clicks the tick of a measurement of the instrument's memory. The last
/// delivery of the read has them all, at the end of the first table.
void tick_measurement(const stage& at, int number)
{
    constexpr int measurements = 17;
    const int ticked = at.see(ticked_rows);
    at.click(at.see([number] {
        return cell("alltableView", rows("alltableView") - measurements + number - 1, 0);
    }));
    at.wait_for(QStringLiteral("the tick of measurement %1").arg(number),
                [ticked] { return ticked_rows() == ticked + 1; });
}

/// The same figures in the drawing, which has a timer's time to follow.
void look_at_drawing(const stage& at, const QString& language)
{
    at.click(QStringLiteral("pushButton_graph"));
    at.wait_for(QStringLiteral("the drawing's black lines"), [] {
        QWidget* drawing = stage::widget(QStringLiteral("widget_graphic"));
        const QImage picture = drawing->grab().toImage();
        int dark = 0;
        // Between the north arrow and the information frame.
        for (int y = 100; y < picture.height() - 150; ++y) {
            for (int x = 100; x < picture.width(); ++x)
                dark += qGray(picture.pixel(x, y)) < 80 ? 1 : 0;
        }
        return dark > 200;
    });
    at.take_picture(QStringLiteral("drawing-%1").arg(language));
    at.click(QStringLiteral("pushButton_map"));
}

void look_at_maps(const stage& at, const QString& menu, const QString& language,
                  const QStringList& titles)
{
    // Figures around one field; each page gets one more, which draws them all.
    for (const int number : {2, 7, 15})
        tick_measurement(at, number);
    struct provider
    {
        const char* action;
        int measurement;
    };
    const provider providers[] = {{"action_google", 10}, {"action_sky", 1}, {"action_gaode", 17}};
    for (std::size_t i = 0; i < std::size(providers); ++i) {
        const QString& title = titles[static_cast<qsizetype>(i)];
        at.choose(menu, QLatin1String(providers[i].action));
        at.wait_for(QStringLiteral("the page of %1").arg(title), [&] {
            return stage::widget(QStringLiteral("map"))->property("title").toString() == title;
        });
        at.wait_for(QStringLiteral("a page without the figures of the one before"),
                    [] { return !map_shows(line_on_the_map); });
        tick_measurement(at, providers[i].measurement);
        at.wait_for(QStringLiteral("figures and tiles on the page of %1").arg(title),
                    [] { return map_shows(line_on_the_map) && map_shows(tiles::land); });
        let_the_map_settle(at); // and the totals follow
        at.take_picture(QStringLiteral("map-%1-%2").arg(language).arg(i + 1));
    }
    look_at_drawing(at, language);

    // The same with no network.
    at.set_network(false);
    at.choose(menu, QLatin1String(providers[0].action));
    at.wait_for(QStringLiteral("the line that tells of missing tiles"),
                [] { return map_shows(note_on_the_map); });
    tick_measurement(at, 16);
    at.wait_for(QStringLiteral("figures on a plain background"),
                [] { return map_shows(line_on_the_map) && !map_shows(tiles::land); });
    let_the_map_settle(at);
    at.take_picture(QStringLiteral("map-%1-no-network").arg(language));
    at.set_network(true);
    at.choose(menu, QLatin1String(providers[2].action));
    at.wait_for(QStringLiteral("the tiles back"), [] { return map_shows(tiles::land); });

    at.click(QStringLiteral("checkBox"));
    at.click(QStringLiteral("checkBox"));
    at.wait_for(QStringLiteral("all ticks gone"), [] { return ticked_rows() == 0; });
    say(QStringLiteral("  figures on the maps of %1").arg(titles.join(QStringLiteral(", "))));
}

QWidget* dialog(const char* title)
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowTitle() == QString::fromUtf8(title))
            return window;
    }
    return nullptr;
}

/// Opens a dialog with its button, and gives it a moment to look at what is in it.
void open_dialog(const stage& at, const char* button, const char* title)
{
    at.click(QLatin1String(button));
    at.wait_for(QString::fromUtf8(title),
                [title] { return dialog(title) != nullptr && dialog(title)->isActiveWindow(); });
    QThread::msleep(700);
}

void close_dialog(const stage& at, const char* title)
{
    at.press(QStringLiteral("Escape"));
    at.wait_for(QStringLiteral("the dialog closed"), [title] { return dialog(title) == nullptr; });
}

constexpr exchange_format csv_format{0, "csv", "csv多数据合并导出成功", "csv",
                                     "csv多数据文件导入成功"};
constexpr exchange_format more_csv{1, "csv", "csv单数据分开导出成功", "csv", ""};
constexpr exchange_format dxf_format{2, "dxf", "dxf多数据合并导出成功", "dxf", "dxf文件导入成功"};
constexpr exchange_format more_dxf{3, "dxf", "dxf单数据分开导出成功", "dxf", "dxf文件导入成功"};
constexpr exchange_format gpx_format{4, "gpx", "gpx多数据合并导出成功", "gpx", "gpx文件导入成功"};
constexpr exchange_format more_gpx{5, "gpx", "gpx单数据分开导出成功", "gpx", "gpx文件导入成功"};
constexpr exchange_format kml_format{6, "kml", "kml文件导出成功", "kml", "kml文件导入成功"};
constexpr exchange_format excel_format{
    8, "Excel", "Excel文件导出成功", "xlsx", "Excel multi-data file import successful", "import"};

/// Exports what is ticked in each of the formats, each into one file.
void export_files(const stage& at, const char* title, const QString& language,
                  const QList<exchange_format>& formats)
{
    open_dialog(at, "data_output_file", title);
    at.take_picture(QStringLiteral("export-%1").arg(language));
    for (const exchange_format& format : formats) {
        const QString path =
            at.file(QStringLiteral("field-%1.%2").arg(language, QLatin1String(format.suffix)));
        export_as(at, format, path);
        check(QFileInfo(path).size() > 0, path);
        say(QStringLiteral("  %1: %2 bytes").arg(path).arg(QFileInfo(path).size()));
    }
}

constexpr int exported[] = {2, 7, 15};

/// Exports what is ticked into a folder, a file for each measurement.
void export_folder(const stage& at, const exchange_format& format)
{
    const QString folder = at.file(QStringLiteral("one-by-one-") + QLatin1String(format.suffix));
    QDir().mkpath(folder);
    export_as(at, format, folder);
    const QStringList files =
        QDir(folder).entryList({QStringLiteral("*.") + QLatin1String(format.suffix)});
    check(files.size() == std::ssize(exported), files.join(QStringLiteral(", ")));
    say(QStringLiteral("  %1: %2").arg(folder, files.join(QStringLiteral(", "))));
}

/// In the import dialog, which is open: imports a file, whose records come behind
/// those that are there.
void import_file(const stage& at, const exchange_format& format, const QString& path, int records)
{
    const auto count = [] { return rows("alltableView"); };
    const int before = at.see(count);
    at.click(QStringLiteral("pushButton_2"));
    at.give_path(path);
    const QString text = at.wait_for_box(QString::fromUtf8(format.import_title));
    check(text == QString::fromUtf8(format.imported), text);
    at.take_picture(QStringLiteral("imported-%1").arg(QFileInfo(path).fileName()));
    at.answer_box(QMessageBox::Ok);
    const int after = at.see(count);
    check(after == before + records, QStringLiteral("%1 rows became %2").arg(before).arg(after));
    say(QStringLiteral("  %1; %2 rows became %3").arg(text).arg(before).arg(after));
}

/// In the import dialog, which is open: saves the workbook that is filled in by hand.
void save_template(const stage& at, const QString& language)
{
    at.click(QStringLiteral("pushButton"));
    at.give_path(at.file(QStringLiteral("template-%1.xlsx").arg(language)));
    const QString text = at.wait_for_box(QStringLiteral("Excel"));
    at.take_picture(QStringLiteral("template-%1").arg(language));
    at.answer_box(QMessageBox::Ok);
    say(QStringLiteral("  %1").arg(text));
}

void export_in_chinese(const stage& at)
{
    for (const int number : exported)
        tick_measurement(at, number);
    export_files(at, "导出为", QStringLiteral("zh"),
                 {csv_format, gpx_format, kml_format, dxf_format, excel_format});
    export_folder(at, more_csv);
    export_folder(at, more_dxf);
    export_folder(at, more_gpx);
    close_dialog(at, "导出为");
    open_dialog(at, "data_input_file", "导入");
    at.take_picture(QStringLiteral("import-zh"));
    save_template(at, QStringLiteral("zh"));
    close_dialog(at, "导入");
    at.click(QStringLiteral("checkBox"));
    at.click(QStringLiteral("checkBox"));
    at.wait_for(QStringLiteral("all ticks gone"), [] { return ticked_rows() == 0; });
}

/// CSV with English headings is written and not read again, so what is read are
/// the Chinese files. An exported workbook has a sheet for each measurement, which
/// no import takes; the template is read.
void export_and_import_in_english(const stage& at)
{
    tick_measurement(at, exported[0]);
    export_files(at, "Export As", QStringLiteral("en"),
                 {csv_format, gpx_format, kml_format, dxf_format, excel_format});
    close_dialog(at, "Export As");
    open_dialog(at, "data_input_file", "Import");
    at.take_picture(QStringLiteral("import-en"));
    for (const exchange_format& format : {csv_format, gpx_format, kml_format, dxf_format})
        import_file(at, format, at.file(QStringLiteral("field-zh.") + QLatin1String(format.suffix)),
                    static_cast<int>(std::size(exported)));
    import_file(at, more_gpx, at.file(QStringLiteral("one-by-one-gpx/exported_data_1.gpx")), 1);
    import_file(at, more_dxf, at.file(QStringLiteral("one-by-one-dxf/exported_data_1.dxf")), 1);
    save_template(at, QStringLiteral("en"));
    // With their examples: two of each kind, and three waypoints.
    for (const char* name : {"template-zh.xlsx", "template-en.xlsx"})
        import_file(at, excel_format, at.file(QLatin1String(name)), 13);
    close_dialog(at, "Import");
}

void tick_all(const stage& at)
{
    at.click(QStringLiteral("checkBox"));
    at.wait_for(QStringLiteral("all rows ticked"),
                [] { return ticked_rows() == rows("alltableView"); });
    const int all = at.see([] { return rows("alltableView"); });
    at.wait_for(QStringLiteral("the totals"),
                [all] { return text_of("totalchecked") == QString::number(all); });
    at.wait_for(QStringLiteral("figures on the map"), [] { return map_shows(pin_on_the_map); });
    at.take_picture(QStringLiteral("05-all-ticked"));
    say(QStringLiteral("  %1 rows ticked, the panel counts as many").arg(all));
    at.click(QStringLiteral("checkBox"));
    at.wait_for(QStringLiteral("all ticks gone"), [] { return ticked_rows() == 0; });
}

/// What leaves the program: pictures, paper, firmware. With an area, a distance and
/// a route ticked, so that there is something to see.
void look_at_output(const stage& at, const QString& folder, const QString& language)
{
    for (const int number : exported)
        tick_measurement(at, number);
    at.wait_for(QStringLiteral("figures on the map"), [] { return map_shows(line_on_the_map); });
    let_the_map_settle(at); // and the drawing follows
    save_pictures(at, folder, language);
    print_the_drawing(at, folder, language);
    look_for_a_new_version(at, language);
    upgrade_firmware(at, folder, language);
    at.click(QStringLiteral("checkBox"));
    at.click(QStringLiteral("checkBox"));
    at.wait_for(QStringLiteral("all ticks gone"), [] { return ticked_rows() == 0; });
}

void edit_a_name(const stage& at)
{
    const QString name = QStringLiteral("North field 7");
    const QString before = at.see([] {
        return tables::view("alltableView")->model()->index(0, name_column).data().toString();
    });
    at.click(at.see([] { return cell("alltableView", 0, name_column); }), 2);
    at.wait_for(QStringLiteral("an editor in the cell"), [] {
        return tables::view("alltableView")
                   ->viewport()
                   ->findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly) != nullptr;
    });
    at.press(QStringLiteral("ctrl+a"));
    at.type(name);
    at.press(QStringLiteral("Return"));
    at.wait_for(QStringLiteral("the new name in the first table"), [&] {
        return tables::view("alltableView")->model()->index(0, name_column).data().toString() ==
               name;
    });
    const bool found = at.see([&] {
        for (const char* view : kind_views) {
            const QAbstractItemModel* model = tables::view(view)->model();
            for (int row = 0; row < model->rowCount(); ++row) {
                if (model->index(row, name_column).data().toString() == name)
                    return true;
            }
        }
        return false;
    });
    check(found, QStringLiteral("the name did not reach the table of its kind"));
    at.take_picture(QStringLiteral("06-name-edited"));
    say(QStringLiteral("  \"%1\" is now \"%2\", in both tables").arg(before, name));
}

void delete_one_row(const stage& at)
{
    const int before = at.see([] { return rows("alltableView"); });
    at.click(at.see([] { return cell("alltableView", 0, 0); }));
    at.wait_for(QStringLiteral("one tick"), [] { return ticked_rows() == 1; });
    at.click(QStringLiteral("delect_tableandmap"));
    at.wait_for(QStringLiteral("one row fewer"),
                [before] { return rows("alltableView") == before - 1; });
    at.take_picture(QStringLiteral("07-row-deleted"));
    say(QStringLiteral("  %1 rows became %2").arg(before).arg(before - 1));
}

void delete_all_rows(const stage& at)
{
    at.click(QStringLiteral("checkBox"));
    at.wait_for(QStringLiteral("all rows ticked"),
                [] { return ticked_rows() == rows("alltableView"); });
    at.click(QStringLiteral("delect_tableandmap"));
    at.wait_for(QStringLiteral("no rows"), [] { return rows("alltableView") == 0; });
    say(QStringLiteral("  no rows are left"));
}

/// Waits for a box, takes its picture and presses its button.
void expect_box(const stage& at, const char* title, const char* text, const char* picture)
{
    const QString said = at.wait_for_box(QString::fromUtf8(title), 120'000);
    at.take_picture(QLatin1String(picture));
    check(said == QString::fromUtf8(text), said);
    at.answer_box(QMessageBox::Ok);
    say(QStringLiteral("  the box says %1").arg(said));
}

/// Plugs in one of the instruments on pseudo-terminals, "newer" or "older".
void plug_in(const stage& at, const char* instrument, const QString& folder, cable& usb)
{
    const QString path = folder + QStringLiteral("/../tty-") + QLatin1String(instrument);
    at.wait_for(QStringLiteral("the search for serial ports"), [&] { return usb.plug_in(path); });
    expect_box(at, "串口", "设备已连接",
               qPrintable(QStringLiteral("connected-") + QLatin1String(instrument)));
}

/// Ends the instrument, which is to the program as if its cable were pulled out.
void pull_out(const stage& at, const char* instrument, const QString& folder)
{
    QFile file(folder + QStringLiteral("/../tty-") + QLatin1String(instrument) +
               QStringLiteral(".pid"));
    check(file.open(QIODevice::ReadOnly), file.fileName());
    const QString process = QString::fromLatin1(file.readAll().trimmed());
    check(QProcess::execute(QStringLiteral("kill"), {process}) == 0,
          QStringLiteral("no instrument to pull out"));
    expect_box(at, "串口", "设备连接有误",
               qPrintable(QStringLiteral("pulled-out-") + QLatin1String(instrument)));
}

void read_an_older_instrument(const stage& at, const QString& folder, cable& usb)
{
    plug_in(at, "older", folder, usb);
    at.click(QStringLiteral("data_read"));
    // After a download of text the Android channel has its turn.
    expect_box(at, "数据读取", "数据读取完成", "13-older-read");
    check(at.see([] { return rows("alltableView"); }) >= 17,
          QStringLiteral("not all of the older instrument's records are there"));
    expect_box(at, "数据读取", "数据读取成功", "14-both-read");
}

/// Measurements in the list that an instrument has written of what it was sent.
qsizetype received_by(const QString& folder, const char* instrument)
{
    QFile file(folder + QStringLiteral("/../received-") + QLatin1String(instrument) +
               QStringLiteral(".json"));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).array().size()
                                          : 0;
}

void upload_to_both(const stage& at, const QString& folder)
{
    constexpr int ticked = 3;
    for (int row = 0; row < ticked; ++row) {
        at.click(at.see([row] { return cell("alltableView", row, 0); }));
        at.wait_for(QStringLiteral("%1 ticks").arg(row + 1),
                    [row] { return ticked_rows() == row + 1; });
    }
    at.click(QStringLiteral("data_to_device"));
    expect_box(at, "上传", "上传数据成功", "15-uploaded");
    for (const char* const instrument : {"serial", "adb"}) {
        at.wait_for(
            QStringLiteral("what was sent in the %1 instrument").arg(QLatin1String(instrument)),
            [&] { return received_by(folder, instrument) == ticked; });
    }
    say(QStringLiteral("  %1 measurements in each instrument").arg(ticked));
}

void look_at_boxes(const stage& at)
{
    struct entry
    {
        const char* action;
        const char* picture;
    };
    for (const entry one :
         {entry{"action_instructions", "08-instructions"}, entry{"action_about", "09-about"}}) {
        at.choose(QStringLiteral("Help"), QLatin1String(one.action));
        at.wait_for(QStringLiteral("a box"), [] { return stage::box() != nullptr; });
        QThread::msleep(200);
        at.take_picture(QLatin1String(one.picture));
        at.answer_box(QMessageBox::Ok);
    }
    at.click(QStringLiteral("pushButton_graph"));
    at.wait_for(QStringLiteral("the drawing in front"), [] {
        return stage::widget(QStringLiteral("pushButton_graph"))
            ->styleSheet()
            .contains(QStringLiteral("graph_en_push.png"));
    });
    QThread::msleep(300);
    at.take_picture(QStringLiteral("10-drawing"));
    at.click(QStringLiteral("pushButton_map"));
    say(QStringLiteral("  help, about and drawing looked at"));
}

QString field(const char* name)
{
    return qobject_cast<QLineEdit*>(stage::widget(QLatin1String(name)))->text();
}

int systems()
{
    return qobject_cast<QComboBox*>(stage::widget(QStringLiteral("comboBox_3")))->count();
}

/// A moment for a form to be painted, then a picture.
void take_picture_of_form(const stage& at, const QString& name)
{
    QThread::msleep(400);
    at.take_picture(name);
}

/// Of another datum: shifted, turned and enlarged a little.
constexpr seven_parameters other_datum{-24.1, 123.4, 94.3, -0.02, 0.26, 0.13, 1.1e-6};

/// Adds a group and fills in its point in both frames.
void enter_pair(const stage& at, const cartesian_position& source)
{
    static constexpr const char* fields[] = {"lineEdit",   "lineEdit_2", "lineEdit_3",
                                             "lineEdit_4", "lineEdit_5", "lineEdit_6"};
    at.click(QStringLiteral("pushButton_3"));
    QThread::msleep(700); // the form shows a new group within half a second
    const cartesian_position target = By7Param(other_datum, source);
    const double values[] = {source.x, source.y, source.z, target.x, target.y, target.z};
    for (std::size_t i = 0; i < std::size(fields); ++i)
        at.fill(QLatin1String(fields[i]), QString::number(values[i], 'f', 4));
    at.click(QStringLiteral("pushButton_4"));
}

/// Opens the calibration and fills it in: the point is 1.75 m further east than
/// computed, and 1.25 m further south.
void fill_calibration(const stage& at, const QString& title, const QString& picture)
{
    at.click(QStringLiteral("pushButton_3"));
    at.wait_for_form(title);
    at.fill(QStringLiteral("lineEdit"), QStringLiteral("528811.75"));
    at.fill(QStringLiteral("lineEdit_2"), QStringLiteral("3374210.40"));
    at.fill(QStringLiteral("lineEdit_3"), QStringLiteral("528813.50"));
    at.fill(QStringLiteral("lineEdit_4"), QStringLiteral("3374209.15"));
    at.wait_for(QStringLiteral("the differences"), [] {
        return text_of("label_dx") == QStringLiteral("1.75") &&
               text_of("label_dy") == QStringLiteral("-1.25");
    });
    take_picture_of_form(at, picture);
}

void calibrate(const stage& at)
{
    fill_calibration(at, QStringLiteral("坐标校准"),
                     QStringLiteral("coordinates-zh-3-calibration"));
    at.click(QStringLiteral("pushButton"));
    at.wait_for_form(QStringLiteral("坐标系统"));
    check(at.see([] { return field("east") + u' ' + field("north"); }) ==
              QStringLiteral("500001.75 -1.25"),
          QStringLiteral("the offsets did not follow"));
    say(QStringLiteral("  calibrated: east 500001.75, north -1.25"));
}

/// Six towns far apart, so that the parameters themselves come back.
constexpr cartesian_position towns[] = {
    {-2178000.0, 4389000.0, 4070000.0}, {-2333000.0, 5407000.0, 2436000.0},
    {228000.0, 4640000.0, 4358000.0},   {-2678000.0, 3621000.0, 4502000.0},
    {-106000.0, 5552000.0, 3124000.0},  {-2850000.0, 4657000.0, 3283000.0}};

/// Opens the list of pairs and enters as many of the towns.
void fill_pairs(const stage& at, const QString& title, std::size_t count, const QString& picture)
{
    at.click(QStringLiteral("pushButton_4"));
    at.wait_for_form(title);
    at.click(QStringLiteral("radioButton_2"));
    at.click(QStringLiteral("radioButton_4"));
    for (const cartesian_position& town : std::span(towns).first(count))
        enter_pair(at, town);
    take_picture_of_form(at, picture);
}

void calculate(const stage& at)
{
    fill_pairs(at, QStringLiteral("七参数"), std::size(towns),
               QStringLiteral("coordinates-zh-4-pairs"));
    at.click(QStringLiteral("pushButton"));
    const QString text = at.wait_for_box(QStringLiteral("成功"));
    take_picture_of_form(at, QStringLiteral("coordinates-zh-5-parameters"));
    at.answer_box(QMessageBox::Yes);
    at.press(QStringLiteral("Escape"));
    at.wait_for_form(QStringLiteral("坐标系统"));
    const double dx = at.see([] { return field("dx_2").toDouble(); });
    const double k = at.see([] { return field("k_8").toDouble(); });
    check(std::abs(dx - other_datum.dx) < 0.01 && std::abs(k - other_datum.k) < 1e-9,
          QStringLiteral("not the parameters of the pairs: ") + text);
    say(QStringLiteral("  calculated by the server: dx %1, k %2").arg(dx).arg(k));
}

void make_a_coordinate_system(const stage& at)
{
    at.choose(QStringLiteral("设置"), QStringLiteral("action_coordinate"));
    at.wait_for_form(QStringLiteral("坐标设置"));
    at.click(QStringLiteral("radioButton"));
    take_picture_of_form(at, QStringLiteral("coordinates-zh-1-settings"));
    at.click(QStringLiteral("pushButton_6"));
    at.wait_for_form(QStringLiteral("坐标系统"));
    at.fill(QStringLiteral("sys_name"), QStringLiteral("Field 7"));
    at.fill(QStringLiteral("center"), QStringLiteral("114"));
    at.fill(QStringLiteral("center_2"), QStringLiteral("30"));
    at.click(QStringLiteral("radioButton"));
    take_picture_of_form(at, QStringLiteral("coordinates-zh-2-new"));
    calibrate(at);
    calculate(at);
    take_picture_of_form(at, QStringLiteral("coordinates-zh-6-filled"));
    at.click(QStringLiteral("pushButton"));
    const QString text = at.wait_for_box(QStringLiteral("新建"));
    take_picture_of_form(at, QStringLiteral("coordinates-zh-7-made"));
    check(text == QStringLiteral("坐标系统新建成功"), text);
    at.answer_box(QMessageBox::Ok);
    at.wait_for_form(QStringLiteral("坐标设置"));
    at.wait_for(QStringLiteral("five systems in the list"), [] { return systems() == 5; });
    at.click(QStringLiteral("radioButton_2")); // degrees again, which the files hold
    at.click(QStringLiteral("pushButton"));
    at.wait_for(QStringLiteral("the settings closed"),
                [] { return QApplication::activeModalWidget() == nullptr; });
    say(QStringLiteral("  %1").arg(text));
}

/// The editor of the system that is chosen in the settings.
void open_editor(const stage& at, const char* button)
{
    at.click(QLatin1String(button));
    at.wait_for_form(QStringLiteral("Coordinate System"));
}

void manage_coordinate_systems(const stage& at)
{
    at.choose(QStringLiteral("Setting"), QStringLiteral("action_coordinate"));
    at.wait_for_form(QStringLiteral("Coordinate Setting"));
    at.click(QStringLiteral("radioButton"));
    // The system made last stands at the end.
    at.click(QStringLiteral("comboBox_3"));
    at.press(QStringLiteral("End"));
    at.press(QStringLiteral("Return"));
    at.wait_for(QStringLiteral("the system chosen"), [] {
        return qobject_cast<QComboBox*>(stage::widget(QStringLiteral("comboBox_3")))
                   ->currentText() == QStringLiteral("Field 7");
    });
    take_picture_of_form(at, QStringLiteral("coordinates-en-1-settings"));

    open_editor(at, "pushButton_6");
    at.fill(QStringLiteral("sys_name"), QStringLiteral("Field 8"));
    at.click(QStringLiteral("radioButton"));
    take_picture_of_form(at, QStringLiteral("coordinates-en-8-new"));
    at.press(QStringLiteral("Escape"));
    at.wait_for_form(QStringLiteral("Coordinate Setting"));
    check(at.see(systems) == 5, QStringLiteral("a system was made that was not confirmed"));

    open_editor(at, "pushButton_4");
    check(at.see([] { return field("center_3"); }) == QStringLiteral("1800.0000"),
          QStringLiteral("half a degree does not stand in the seconds"));
    at.fill(QStringLiteral("tall"), QStringLiteral("35.5"));
    take_picture_of_form(at, QStringLiteral("coordinates-en-2-edit"));
    fill_calibration(at, QStringLiteral("Plane Calibration"),
                     QStringLiteral("coordinates-en-3-calibration"));
    at.press(QStringLiteral("Escape"));
    at.wait_for_form(QStringLiteral("Coordinate System"));
    fill_pairs(at, QStringLiteral("7 Parameter"), 3, QStringLiteral("coordinates-en-4-pairs"));
    at.click(QStringLiteral("pushButton"));
    say(QStringLiteral("  three pairs: ") + at.wait_for_box(QStringLiteral("Calculation")));
    take_picture_of_form(at, QStringLiteral("coordinates-en-5-too-few"));
    at.answer_box(QMessageBox::Ok);
    at.press(QStringLiteral("Escape"));
    at.wait_for_form(QStringLiteral("Coordinate System"));
    at.click(QStringLiteral("pushButton"));
    at.wait_for_form(QStringLiteral("Coordinate Setting"));

    open_editor(at, "pushButton_3");
    check(at.see([] { return field("tall"); }) == QStringLiteral("35.500000"),
          QStringLiteral("the edited height was not kept"));
    take_picture_of_form(at, QStringLiteral("coordinates-en-6-check"));
    at.press(QStringLiteral("Escape"));
    at.wait_for_form(QStringLiteral("Coordinate Setting"));

    at.click(QStringLiteral("pushButton_5"));
    const QString text = at.wait_for_box(QStringLiteral("DELETE"));
    take_picture_of_form(at, QStringLiteral("coordinates-en-7-deleted"));
    check(text == QStringLiteral("The coordinate system has been deleted."), text);
    at.answer_box(QMessageBox::Ok);
    at.wait_for(QStringLiteral("four systems in the list"), [] { return systems() == 4; });
    at.press(QStringLiteral("Escape"));
    at.wait_for(QStringLiteral("the settings closed"),
                [] { return QApplication::activeModalWidget() == nullptr; });
    say(QStringLiteral("  edited, looked at, deleted"));
}

void close_the_program(const stage& at)
{
    at.choose(QStringLiteral("File"), QStringLiteral("action_quit"));
    const QString text = at.wait_for_box(QStringLiteral("Quit"));
    at.take_picture(QStringLiteral("16-quit"));
    at.answer_box(QMessageBox::No);
    check(at.see([] { return stage::widget(QStringLiteral("data_read"))->isVisible(); }),
          QStringLiteral("No closed the window"));
    say(QStringLiteral("  \"%1\": No leaves the window open").arg(text));
    at.choose(QStringLiteral("File"), QStringLiteral("action_quit"));
    at.wait_for_box(QStringLiteral("Quit"));
    const stage::spot yes =
        at.see([] { return stage::middle_of(stage::box()->button(QMessageBox::Yes)); });
    say(QStringLiteral("  Yes ends the program"));
    // Nothing is looked at after this click: there is no window any more.
    at.click(yes);
}

} // namespace

void walk(const QString& folder, local_server& tiles, cable& usb)
{
    struct step
    {
        const char* name;
        std::function<void(const stage&)> run;
    };
    const std::initializer_list<step> steps = {
        {"the instrument is found", connect_instrument},
        {"read the measurements", read_measurements},
        {"look at three window sizes, Chinese",
         [](const stage& at) { look_at_sizes(at, QStringLiteral("zh")); }},
        {"look at the maps, Chinese",
         [](const stage& at) {
             look_at_maps(at, QStringLiteral("设置"), QStringLiteral("zh"),
                          {QStringLiteral("谷歌地图"), QStringLiteral("天地图"),
                           QStringLiteral("高德地图")});
         }},
        {"export files, Chinese", export_in_chinese},
        {"make a coordinate system, Chinese", make_a_coordinate_system},
        {"plug in an instrument with a serial port",
         [&](const stage& at) { plug_in(at, "newer", folder, usb); }},
        {"save pictures, print, upgrade the firmware, Chinese",
         [&](const stage& at) { look_at_output(at, folder, QStringLiteral("zh")); }},
        {"switch to English", switch_to_english},
        {"look at three window sizes, English",
         [](const stage& at) { look_at_sizes(at, QStringLiteral("en")); }},
        {"tick all rows", tick_all},
        {"edit a name", edit_a_name},
        {"delete one row", delete_one_row}, // from here on the headings are English
        {"look at the maps, English",
         [](const stage& at) {
             look_at_maps(at, QStringLiteral("Setting"), QStringLiteral("en"),
                          {QStringLiteral("Google Map"), QStringLiteral("Sky Map"),
                           QStringLiteral("Gaode Map")});
         }},
        {"save pictures, print, upgrade the firmware, English",
         [&](const stage& at) { look_at_output(at, folder, QStringLiteral("en")); }},
        {"export and import files, English", export_and_import_in_english},
        {"look at boxes and drawing", look_at_boxes},
        {"edit and delete a coordinate system, English", manage_coordinate_systems},
        {"delete all rows", delete_all_rows},
        {"pull out the instrument with the serial port",
         [&](const stage& at) { pull_out(at, "newer", folder); }},
        {"read an older instrument beside the other",
         [&](const stage& at) { read_an_older_instrument(at, folder, usb); }},
        {"upload to both", [&](const stage& at) { upload_to_both(at, folder); }},
        {"close the program", close_the_program},
    };
    const stage at(folder, tiles);
    const char* now = "";
    try {
        for (const step& one : steps) {
            now = one.name;
            say(QStringLiteral("step: %1").arg(QLatin1String(now)));
            one.run(at);
        }
        say(QStringLiteral("tour: all %1 steps done").arg(steps.size()));
    } catch (const step_failed& failure) {
        say(QStringLiteral("FAILED at \"%1\": %2")
                .arg(QLatin1String(now), QString::fromUtf8(failure.what())));
        try {
            at.take_picture(QStringLiteral("failed"));
        } catch (const step_failed&) {
        }
        std::_Exit(1);
    }
}

tour::tour(const QString& folder, tour_script script) : m_folder(folder), m_script(script)
{
    m_tiles.body_for = tiles::picture_for;
    // Read when the web engine starts.
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS",
            "--ignore-certificate-errors --host-resolver-rules=\"MAP * 127.0.0.1:" +
                QByteArray::number(m_tiles.port()) + '"');
    QMetaObject::invokeMethod(this, &tour::start, Qt::QueuedConnection);
}

tour::~tour()
{
    if (m_person)
        m_person->wait();
}

void tour::start()
{
    m_person.reset(QThread::create([this] { m_script(m_folder, m_tiles, m_cable); }));
    m_person->start();
}
