#include "steps.h"

#include "output_steps.h"
#include "stage.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QPixmap>
#include <QThread>

#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <iterator>

namespace {

constexpr int name_column = 2;

QAbstractItemView* table(const char* name)
{
    return qobject_cast<QAbstractItemView*>(stage::widget(QLatin1String(name)));
}

int rows(const char* name)
{
    return table(name)->model()->rowCount();
}

int ticked_rows()
{
    const QAbstractItemModel* model = table("alltableView")->model();
    int ticked = 0;
    for (int row = 0; row < model->rowCount(); ++row)
        ticked += model->index(row, 0).data().toBool() ? 1 : 0;
    return ticked;
}

QString text_of(const char* label)
{
    return qobject_cast<QLabel*>(stage::widget(QLatin1String(label)))->text();
}

/// Screen place of a cell's middle.
QPoint cell(const char* name, int row, int column)
{
    QAbstractItemView* view = table(name);
    view->scrollTo(view->model()->index(row, column));
    return view->viewport()->mapToGlobal(
        view->visualRect(view->model()->index(row, column)).center());
}

constexpr const char* kind_views[] = {"areatableView", "distableView",   "pointtableView",
                                      "linetableView", "tracktableView", "fangyangtableView"};

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
    at.take_picture(QStringLiteral("04-english"));
    say(QStringLiteral("  the window speaks English"));
}

constexpr QRgb line_on_the_map = qRgb(0x1d, 0x4e, 0xd8);
constexpr QRgb pin_on_the_map = qRgb(0xdc, 0x26, 0x26);

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
        at.wait_for(QStringLiteral("figures on the page of %1").arg(title),
                    [] { return map_shows(line_on_the_map); });
        // Until the totals have followed and the screen has what the page has.
        QThread::msleep(700);
        at.take_picture(QStringLiteral("map-%1-%2").arg(language).arg(i + 1));
    }
    look_at_drawing(at, language);
    at.click(QStringLiteral("checkBox"));
    at.click(QStringLiteral("checkBox"));
    at.wait_for(QStringLiteral("all ticks gone"), [] { return ticked_rows() == 0; });
    say(QStringLiteral("  figures on the maps of %1").arg(titles.join(QStringLiteral(", "))));
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

/// What leaves the program: pictures, paper, firmware. With a field ticked, so that
/// there is something to see.
void look_at_output(const stage& at, const QString& folder, const QString& language)
{
    tick_measurement(at, 2);
    at.wait_for(QStringLiteral("figures on the map"), [] { return map_shows(line_on_the_map); });
    QThread::msleep(700); // until the drawing has followed
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
    const QString before = at.see(
        [] { return table("alltableView")->model()->index(0, name_column).data().toString(); });
    at.click(at.see([] { return cell("alltableView", 0, name_column); }), 2);
    at.wait_for(QStringLiteral("an editor in the cell"), [] {
        return table("alltableView")
                   ->viewport()
                   ->findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly) != nullptr;
    });
    at.press(QStringLiteral("ctrl+a"));
    at.type(name);
    at.press(QStringLiteral("Return"));
    at.wait_for(QStringLiteral("the new name in the first table"), [&] {
        return table("alltableView")->model()->index(0, name_column).data().toString() == name;
    });
    const bool found = at.see([&] {
        for (const char* view : kind_views) {
            const QAbstractItemModel* model = table(view)->model();
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

void close_the_program(const stage& at)
{
    at.choose(QStringLiteral("File"), QStringLiteral("action_quit"));
    const QString text = at.wait_for_box(QStringLiteral("Quit"));
    at.take_picture(QStringLiteral("11-quit"));
    at.answer_box(QMessageBox::No);
    check(at.see([] { return stage::widget(QStringLiteral("data_read"))->isVisible(); }),
          QStringLiteral("No closed the window"));
    say(QStringLiteral("  \"%1\": No leaves the window open").arg(text));
    at.choose(QStringLiteral("File"), QStringLiteral("action_quit"));
    at.wait_for_box(QStringLiteral("Quit"));
    const QPoint yes = at.see([] {
        const QAbstractButton* button = stage::box()->button(QMessageBox::Yes);
        return button->mapToGlobal(button->rect().center());
    });
    say(QStringLiteral("  Yes ends the program"));
    // Nothing is looked at after this click: there is no window any more.
    at.click(yes);
}

void walk(const QString& folder)
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
        {"save pictures, print, upgrade the firmware, Chinese",
         [&](const stage& at) { look_at_output(at, folder, QStringLiteral("zh")); }},
        {"switch to English", switch_to_english},
        {"look at three window sizes, English",
         [](const stage& at) { look_at_sizes(at, QStringLiteral("en")); }},
        {"tick all rows", tick_all},
        {"look at the maps, English",
         [](const stage& at) {
             look_at_maps(at, QStringLiteral("Setting"), QStringLiteral("en"),
                          {QStringLiteral("Google Map"), QStringLiteral("Sky Map"),
                           QStringLiteral("Gaode Map")});
         }},
        {"save pictures, print, upgrade the firmware, English",
         [&](const stage& at) { look_at_output(at, folder, QStringLiteral("en")); }},
        {"edit a name", edit_a_name},
        {"delete one row", delete_one_row},
        {"look at boxes and drawing", look_at_boxes},
        {"close the program", close_the_program},
    };
    const stage at(folder);
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

} // namespace

tour::tour(const QString& picture_folder) : m_folder(picture_folder)
{
    QMetaObject::invokeMethod(this, &tour::start, Qt::QueuedConnection);
}

tour::~tour()
{
    if (m_person)
        m_person->wait();
}

void tour::start()
{
    m_person.reset(QThread::create([folder = m_folder] { walk(folder); }));
    m_person->start();
}
