#include "load.h"

#include "cable.h"
#include "ledger.h"
#include "memory_watch.h"
#include "stage.h"
#include "tables.h"

#include "core/code_tables.h"
#include "core/main_window.h"
#include "device/serial_thread.h"
#include "exchange/corpus_table.h"
#include "exchange/export_formats.h"
#include "local_server.h"
#include "support/instrument_process.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QSet>
#include <QTabWidget>
#include <QThread>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

namespace {

constexpr int usual_minutes = 20;
/// How long the window may take to answer. An import, an upload and adb hold it up,
/// as they do in daily use.
constexpr int patience_ms = 60'000;
constexpr int long_wait = 60'000; // ms
/// Growth of what is allocated that is put down to chance, KiB a round.
constexpr double growth_limit = 256;

const QString attached_adb = QStringLiteral("串口: 安卓设备已连接");
const QString attached_serial = QStringLiteral("串口: 设备已连接");
const QString lost_serial = QStringLiteral("串口: 设备连接有误");
const QString read_whole = QStringLiteral("数据读取: 数据读取成功");
const QString read_text = QStringLiteral("数据读取: 数据读取完成");
const QString read_bad = QStringLiteral("数据读取: 数据读取失败");
const QString read_broken = QStringLiteral("数据读取: 数据读取失败，请重新读取");
const QString read_late = QStringLiteral("数据读取: 数据读取超时，请重新读取");
const QString not_connected = QStringLiteral("警告: 串口未连接");
const QString no_answer = QStringLiteral("警告: 数据未读取成功，请再次点击");

const QString way_line = QStringLiteral("航线");
const QString way_point = QStringLiteral("航点");
const QString track = QStringLiteral("航迹");
const QString staking_out = QStringLiteral("放样");

// What the instrument holds

/// An instrument's memory, told by the instrument itself.
struct contents
{
    QStringList options;    ///< that make the instrument have it
    QList<mark> by_frames;  ///< as a binary read brings it
    QList<mark> by_text;    ///< as a read of short text records brings it
    QList<int> last_frames; ///< of each measurement in a binary read, which counts from 1

    /// Measurements that are whole when the read ends behind `frame`.
    [[nodiscard]] qsizetype whole_by(int frame) const
    {
        return std::count_if(last_frames.cbegin(), last_frames.cend(),
                             [frame](int last) { return last <= frame; });
    }
    [[nodiscard]] qsizetype size() const { return by_frames.size(); }
};

constexpr int points_in_a_frame = 51;

contents contents_of(int measurements, int points)
{
    contents all;
    all.options = {QStringLiteral("--measurements"), QString::number(measurements),
                   QStringLiteral("--points"), QString::number(points)};
    const QByteArray json =
        instrument_process::run(QStringList{QStringLiteral("--json")} + all.options).output;
    int frame = 0;
    for (const QJsonValue& one : QJsonDocument::fromJson(json).array()) {
        const int number = one[u"kind"].toInt();
        const auto kind = std::find_if(measurement_kinds.begin(), measurement_kinds.end(),
                                       [number](const auto& row) { return row.number == number; });
        check(kind != measurement_kinds.end(),
              QStringLiteral("a measurement of kind %1").arg(number));
        const QString method = kind->method.toString();
        QList<qint64> numbers;
        for (const QJsonValue& point : one[u"points"].toArray())
            numbers << point[0].toInteger() << point[1].toInteger();
        const auto start = QDateTime::fromString(one[u"start"].toString(), Qt::ISODate);
        all.by_frames.append(
            mark::of(start.toString(QStringLiteral("yyyy-M-d H:m:s")), method, numbers));
        // Staking-out lines have no short form, and the long one brings no name.
        all.by_text.append(mark::of(method == staking_out ? QStringLiteral("0")
                                                          : start.toString(u"yyyyMMddHHmmss"),
                                    method, numbers));
        const auto frames = (numbers.size() / 2 + points_in_a_frame - 1) / points_in_a_frame;
        frame += 1 + static_cast<int>(frames);
        all.last_frames.append(frame);
    }
    check(all.size() == measurements, QStringLiteral("the instrument tells of no memory"));
    return all;
}

/// What comes to the tables when `whole` measurements of a binary read arrive one by
/// one: each delivery brings all that the read began with and all before it.
ledger deliveries(const ledger& before, const contents& memory, qsizetype whole)
{
    ledger come;
    come.add(before, whole);
    for (qsizetype i = 0; i < whole; ++i)
        come.add(memory.by_frames[i], whole - i);
    return come;
}

// What is in front

/// The window. GUI thread only.
MainWindow& window()
{
    QWidget* const found = stage::widget(QStringLiteral("centralWidget"))->window();
    if (qstrcmp(found->metaObject()->className(), "MainWindow") != 0)
        qFatal("no window");
    return *static_cast<MainWindow*>(found); // whose code is in the program
}

held_lists held()
{
    const MainWindow& one = window();
    return {one.table_list, one.data_msg, one.data_msg_altitude, one.point_msg_all};
}

int percent()
{
    return qobject_cast<QLabel*>(stage::widget(QStringLiteral("progressLabel")))
        ->text()
        .chopped(1)
        .toInt();
}

/// The window of that class, or null. GUI thread only.
QWidget* window_of(const char* class_name)
{
    for (QWidget* one : QApplication::topLevelWidgets()) {
        if (one->isVisible() && qstrcmp(one->metaObject()->className(), class_name) == 0)
            return one;
    }
    return nullptr;
}

/// Where the tables show something else than the lists hold. GUI thread only.
QString tables_differ(const held_lists& lists)
{
    const auto differs = [&lists](const QAbstractItemModel& model, int row, qsizetype main_row) {
        const auto text = [&](int column) { return model.index(row, column).data().toString(); };
        return text(tables::name_column) != lists.table_list[main_row].name ||
               text(tables::time_column) != lists.table_list[main_row].time;
    };
    const QAbstractItemModel& all = *tables::view(tables::main_view)->model();
    if (all.rowCount() != lists.table_list.size()) {
        return QStringLiteral("the main table shows %1 rows of %2")
            .arg(all.rowCount())
            .arg(lists.table_list.size());
    }
    std::array<int, measurement_kinds.size()> shown{};
    for (qsizetype i = 0; i < lists.table_list.size(); ++i) {
        const auto row = static_cast<int>(i);
        if (differs(all, row, i))
            return QStringLiteral("row %1 of the main table shows another measurement").arg(row);
        const int kind = kind_index(lists.table_list[i].method);
        if (kind < 0)
            continue;
        const auto at = static_cast<size_t>(kind);
        const QAbstractItemModel& table = *tables::view(tables::kind_views[at])->model();
        if (differs(table, shown[at], i))
            return QStringLiteral("row %1 of %2")
                .arg(shown[at])
                .arg(QLatin1String(tables::kind_views[at]));
        ++shown[at];
    }
    for (size_t kind = 0; kind < shown.size(); ++kind) {
        if (tables::rows(tables::kind_views[kind]) != shown[kind])
            return QStringLiteral("rows of %1").arg(QLatin1String(tables::kind_views[kind]));
    }
    return {};
}

/// A choice of the export dialog.
struct format
{
    format_index index;
    const char* suffix;
    bool folder;          ///< one file for each measurement
    const char* exported; ///< the box behind it
    const char* imported; ///< the box when its file is read back; null where that is not done
};

constexpr format formats[] = {
    {one_csv_format, "csv", false, "csv: csv多数据合并导出成功", "导入: csv多数据文件导入成功"},
    {one_dxf_format, "dxf", false, "dxf: dxf多数据合并导出成功", "导入: dxf文件导入成功"},
    {one_gpx_format, "gpx", false, "gpx: gpx多数据合并导出成功", "导入: gpx文件导入成功"},
    {excel_format, "xlsx", false, "Excel: Excel文件导出成功", nullptr},
    {kml_format, "kml", false, "kml: kml文件导出成功", "导入: kml文件导入成功"},
    {more_csv_format, "csv", true, "csv: csv单数据分开导出成功", nullptr},
    {more_dxf_format, "dxf", true, "dxf: dxf单数据分开导出成功", nullptr},
    {more_gpx_format, "gpx", true, "gpx: gpx单数据分开导出成功", nullptr},
    {picture_format, "png", false, "img: 图片文件导出成功", nullptr},
};

const QString csv_refused = QStringLiteral("导入: csv文件导入失败");

/// A read that goes wrong.
struct wrong_read
{
    const char* fault;
    const QString& box;
    int whole_by; ///< what is whole by this frame arrives; -1: everything
};

/// In frames of measurements of three frames each: a head, 51 points and 9.
const wrong_read serial_faults[] = {
    {"split=7", read_whole, -1},          {"noise=300", read_whole, -1},
    {"ignore-request@8", read_whole, -1}, {"silent-after=13", read_late, 13},
    {"status-byte@13", read_bad, 12},     {"points-in-frame=52@8", read_bad, 7},
    {"flip-bit=80@9", read_bad, 8},       {"command=0x7E@16", read_broken, 15},
    {"end-status", read_broken, -1},      {"points-mode", read_whole, -1},
};

const wrong_read adb_faults[] = {
    {"noise=300@4", read_whole, -1},      {"status-byte@10", read_bad, 9},
    {"command=0x7E@13", read_broken, 12}, {"split=11", read_whole, -1},
    {"end-status", read_broken, -1},      {"currency@7", read_bad, 6},
};

class load_run
{
public:
    load_run(const QString& folder, local_server& tiles, cable& usb)
        : m_at(folder, tiles), m_tiles(tiles), m_usb(usb),
          m_watch(
              m_at.file(QStringLiteral("memory.csv")),
              [] {
                  const held_lists lists = held();
                  return holding{lists.table_list.size(), lists.points()};
              },
              patience_ms)
    {
    }

    /// Rounds until `minutes` have passed.
    void run(int minutes);
    /// Whether the instruments that should be there are.
    void say_instruments();

private:
    struct floor
    {
        int round;
        memory_sample memory;
    };

    void doing(const QString& what);
    void compare(const QString& after);
    void report(const QList<floor>& floors) const;

    QStringList boxes(qsizetype count);
    void expect_boxes(QStringList expected);
    void start_reading();
    void read(QStringList expected);
    void choose(const char* action);
    void show_tab(int index);
    void tick(int row);
    void tick_all(bool wanted);
    void delete_ticked();
    void delete_all();
    void close(const char* class_name);

    void attach_adb(const contents& memory, const QStringList& faults = {});
    void detach_adb();
    void attach_serial(const contents& memory, const QStringList& more = {});
    void unplug_serial();
    void detach_serial();
    void detach_all();
    void count_broken_read(const contents& memory, const ledger& before);

    void open_import();
    qsizetype import_file(const QString& path, const QString& box);
    void import_plain();
    void export_ticked(const format& one, const QString& path);
    QList<mark> ticked_marks();
    QList<mark> last_marks(qsizetype count);
    void add_imported(format_index format, const QList<mark>& written);
    void import_damaged(const QString& path);
    void import_template();
    void there_and_back(const format& one, const QString& path);
    void into_a_folder(const format& one, const QString& folder);

    // Acts.
    void everything_at_once();
    void files_there_and_back();
    void damaged_files();
    void large_files();
    void wrong_serial_reads();
    void wrong_adb_reads();
    void old_instrument();
    void pulled_cables();
    void repeated_reads();
    void upload();
    void forms();
    void edits_and_deletions();
    void leave_little_behind();

    const stage m_at;
    local_server& m_tiles;
    cable& m_usb;
    memory_watch m_watch;
    ledger m_own;
    instrument_process m_adb;
    instrument_process m_serial;
    bool m_adb_attached = false;
    bool m_serial_attached = false;
    bool m_english = false;
    int m_round = 0;
    // Where the acts go on in the next round.
    size_t m_corpus_next = 0;
    size_t m_serial_next = 0;
    size_t m_adb_next = 0;
    size_t m_format_next = 0;
    qint64 m_boxes = 0;
    int m_clicked_again = 0;
    int m_attached_again = 0;
    qint64 m_checks = 0;
    qint64 m_rows_seen = 0;

    const contents m_many = contents_of(24, 60);
    const contents m_few = contents_of(6, 60);
};

void load_run::doing(const QString& what)
{
    m_watch.say_doing(what);
    say(QStringLiteral("  ") + what);
}

/// The four lists and the seven tables against the account.
void load_run::compare(const QString& after)
{
    const held_lists lists = m_at.see(held);
    const QString wrong = lists.contradiction() + m_own.difference(lists) +
                          m_at.see([&lists] { return tables_differ(lists); });
    check(wrong.isEmpty(), QStringLiteral("after %1: %2").arg(after, wrong));
    ++m_checks;
    m_rows_seen += lists.table_list.size();
}

/// Answers boxes until so many have come; what they said, in alphabetical order.
QStringList load_run::boxes(qsizetype count)
{
    QStringList come;
    // A read on a busy machine may take long: patience begins anew with each delivery.
    QDeadlineTimer deadline(qint64{long_wait} * stage::patience);
    int rows = 0;
    while (come.size() < count) {
        const int shown = m_at.see([] { return tables::rows(); });
        if (std::exchange(rows, shown) != shown)
            deadline.setRemainingTime(qint64{long_wait} * stage::patience);
        check(!deadline.hasExpired(), QStringLiteral("waited in vain for %1 boxes; \"%2\" came")
                                          .arg(count)
                                          .arg(come.join(QStringLiteral("\", \""))));
        const QString text = m_at.see([] {
            const QMessageBox* const box = stage::box();
            return box == nullptr ? QString()
                                  : box->windowTitle() + QStringLiteral(": ") + box->text();
        });
        if (text.isEmpty()) {
            QThread::msleep(50);
            continue;
        }
        come += text;
        QThread::msleep(200); // until the window manager has placed it
        m_at.answer_box(QMessageBox::Ok);
        ++m_boxes;
    }
    std::sort(come.begin(), come.end());
    return come;
}

void load_run::expect_boxes(QStringList expected)
{
    const QStringList come = boxes(expected.size());
    std::sort(expected.begin(), expected.end());
    check(come == expected,
          QStringLiteral("boxes \"%1\" instead of \"%2\"")
              .arg(come.join(QStringLiteral("\", \"")), expected.join(QStringLiteral("\", \""))));
}

/// Clicks the read button until rows come. On a busy machine an instrument may take
/// longer for its first answer than it has; the box says to click again.
void load_run::start_reading()
{
    const int before = m_at.see([] { return tables::rows(); });
    for (;;) {
        m_at.click(QStringLiteral("data_read"));
        m_at.wait_for(
            QStringLiteral("the first rows"),
            [before] { return tables::rows() > before || stage::box() != nullptr; }, long_wait);
        if (m_at.see([] { return stage::box() == nullptr; }))
            return;
        expect_boxes({no_answer});
        ++m_clicked_again;
    }
}

/// Reads until the boxes tell of something else than an instrument that is too slow.
void load_run::read(QStringList expected)
{
    std::sort(expected.begin(), expected.end());
    for (;;) {
        m_at.click(QStringLiteral("data_read"));
        const QStringList come = boxes(expected.size());
        if (come == expected)
            return;
        check(come == QStringList{no_answer}, QStringLiteral("boxes \"%1\" instead of \"%2\"")
                                                  .arg(come.join(QStringLiteral("\", \"")),
                                                       expected.join(QStringLiteral("\", \""))));
        ++m_clicked_again;
    }
}

/// An action of the menu bar, whatever its menu is called now.
void load_run::choose(const char* action)
{
    const QString name = QLatin1String(action);
    const QString menu = m_at.see([&name] {
        const std::function<bool(const QWidget&)> holds = [&](const QWidget& one) {
            const QList<QAction*> actions = one.actions();
            return std::any_of(actions.cbegin(), actions.cend(), [&](const QAction* entry) {
                return entry->objectName() == name ||
                       (entry->menu() != nullptr && holds(*entry->menu()));
            });
        };
        for (const QAction* entry : stage::widget(QStringLiteral("menuBar"))->actions()) {
            if (entry->menu() != nullptr && holds(*entry->menu()))
                return entry->text();
        }
        return QString();
    });
    m_at.choose(menu, name);
}

void load_run::show_tab(int index)
{
    const auto tabs = [] {
        return qobject_cast<QTabWidget*>(stage::widget(QStringLiteral("tabWidget")));
    };
    m_at.click(m_at.see([&] {
        const QTabBar* const bar = tabs()->tabBar();
        return bar->mapToGlobal(bar->tabRect(index).center());
    }));
    m_at.wait_for(QStringLiteral("tab %1").arg(index),
                  [&] { return tabs()->currentIndex() == index; });
}

void load_run::tick(int row)
{
    const auto ticked = [row] {
        return tables::view(tables::main_view)->model()->index(row, 0).data().toBool();
    };
    const bool before = m_at.see(ticked);
    m_at.click(m_at.see([row] { return tables::cell(tables::main_view, row, 0); }));
    m_at.wait_for(QStringLiteral("the tick of row %1").arg(row),
                  [&] { return ticked() != before; });
}

void load_run::tick_all(bool wanted)
{
    const auto done = [wanted] { return tables::ticked_rows() == (wanted ? tables::rows() : 0); };
    // The box keeps its state when fresh tables come, so it may take two clicks.
    for (int clicks = 0; clicks < 2 && !m_at.see(done); ++clicks) {
        const auto box = [] {
            return qobject_cast<QAbstractButton*>(stage::widget(QStringLiteral("checkBox")));
        };
        const bool before = m_at.see([&] { return box()->isChecked(); });
        m_at.click(QStringLiteral("checkBox"));
        m_at.wait_for(QStringLiteral("the box of all ticks"),
                      [&] { return box()->isChecked() != before; });
    }
    check(m_at.see(done), QStringLiteral("not all ticks followed their box"));
}

void load_run::delete_ticked()
{
    const QList<mark> gone = ticked_marks();
    m_at.click(QStringLiteral("delect_tableandmap"));
    for (const mark& one : gone)
        m_own.add(one, -1);
    const qint64 rest = m_own.rows();
    m_at.wait_for(QStringLiteral("%1 rows behind a deletion").arg(rest),
                  [rest] { return tables::rows() == rest; });
    compare(QStringLiteral("a deletion"));
}

void load_run::delete_all()
{
    if (m_own.rows() == 0)
        return;
    show_tab(0);
    tick_all(true);
    delete_ticked();
    check(m_own.rows() == 0, QStringLiteral("the account is not empty"));
    m_own.clear();
}

/// Closes a window by the button of its title bar.
void load_run::close(const char* class_name)
{
    constexpr int to_the_middle = 11; // pixels of the close button, in the upper right corner
    m_at.click(m_at.see([class_name] {
        const QWidget* const one = window_of(class_name);
        return one == nullptr
                   ? QPoint()
                   : one->frameGeometry().topRight() + QPoint(-to_the_middle, to_the_middle);
    }));
    m_at.wait_for(QStringLiteral("%1 closed").arg(QLatin1String(class_name)),
                  [class_name] { return window_of(class_name) == nullptr; });
}

QList<mark> load_run::ticked_marks()
{
    const held_lists lists = m_at.see(held);
    const QList<int> rows = m_at.see([] {
        const QAbstractItemModel& model = *tables::view(tables::main_view)->model();
        QList<int> ticked;
        for (int row = 0; row < model.rowCount(); ++row) {
            if (model.index(row, 0).data().toBool())
                ticked.append(row);
        }
        return ticked;
    });
    QList<mark> marks;
    for (const int row : rows)
        marks.append(lists.mark_of(row));
    return marks;
}

// Instruments

QStringList as_options(const QStringList& faults)
{
    QStringList options;
    for (const QString& one : faults)
        options << QStringLiteral("--fault") << one;
    return options;
}

void load_run::attach_adb(const contents& memory, const QStringList& faults)
{
    const QString received = m_at.file(QStringLiteral("received-adb.json"));
    QFile::remove(received);
    const QStringList options =
        QStringList{QStringLiteral("--adb"), QStringLiteral("--received"), received} +
        memory.options + as_options(faults);
    // A connection that only the second attempt makes is of no use until the instrument
    // has been away.
    constexpr int enough = 60'000; // ms
    for (;;) {
        check(m_adb.start(options), QStringLiteral("no instrument over adb"));
        m_adb_attached = true;
        const QDeadlineTimer deadline(enough);
        while (!deadline.hasExpired() && m_at.see([] { return stage::box() == nullptr; }))
            QThread::msleep(50);
        if (m_at.see([] { return stage::box() != nullptr; }))
            break;
        detach_adb();
        ++m_attached_again;
    }
    expect_boxes({attached_adb});
}

void load_run::detach_adb()
{
    m_adb.stop();
    m_adb_attached = false;
    // One that comes back before adb's list was without it is not noticed.
    m_at.wait_for(
        QStringLiteral("the instrument gone from adb's list"),
        [this] { return m_usb.reader()->adb_manager.known_devices.isEmpty(); }, long_wait);
}

void load_run::attach_serial(const contents& memory, const QStringList& more)
{
    const QString received = m_at.file(QStringLiteral("received-serial.json"));
    QFile::remove(received);
    const QStringList options =
        QStringList{QStringLiteral("--pty"), QStringLiteral("--received"), received} +
        memory.options + more;
    check(m_serial.start(options), QStringLiteral("no instrument on a serial port"));
    m_serial_attached = true;
    const QString path = m_serial.serial_path();
    m_at.wait_for(QStringLiteral("the search for serial ports"),
                  [&] { return m_usb.plug_in(path); });
    expect_boxes({attached_serial});
}

/// Ends the instrument on the serial port, as a cable that is pulled out.
void load_run::unplug_serial()
{
    m_at.see([this] {
        m_usb.unplug();
        return 0;
    });
    m_serial.stop();
    m_serial_attached = false;
}

void load_run::detach_serial()
{
    unplug_serial();
    expect_boxes({lost_serial});
}

void load_run::detach_all()
{
    if (m_serial_attached)
        detach_serial();
    if (m_adb_attached)
        detach_adb();
}

/// A read was broken off at a place that nobody knows: counts how many measurements
/// have come, and enters them.
void load_run::count_broken_read(const contents& memory, const ledger& before)
{
    const qint64 rows = m_at.see([] { return static_cast<qint64>(tables::rows()); });
    for (qsizetype whole = 0; whole < memory.size(); ++whole) {
        const ledger come = deliveries(before, memory, whole);
        if (m_own.rows() + come.rows() == rows) {
            m_own.add(come);
            return;
        }
    }
    throw step_failed(QStringLiteral("%1 rows behind a broken read of %2 measurements")
                          .arg(rows)
                          .arg(memory.size()));
}

// Files

void load_run::open_import()
{
    m_at.click(QStringLiteral("data_input_file"));
    m_at.wait_for(QStringLiteral("the import window"),
                  [] { return window_of("input_window") != nullptr; });
    QThread::msleep(300); // until the window manager has placed it
}

/// Imports a file in the import window, which is open; the rows that came.
qsizetype load_run::import_file(const QString& path, const QString& box)
{
    const auto rows = [] { return held().table_list.size(); };
    const qsizetype before = m_at.see(rows);
    m_at.click(QStringLiteral("pushButton_2"));
    m_at.give_path(path);
    expect_boxes({box});
    return m_at.see(rows) - before;
}

/// Imports the one line of the small file.
void load_run::import_plain()
{
    open_import();
    check(import_file(m_at.file(QStringLiteral("plain.kml")),
                      QStringLiteral("导入: 自制kml文件导入成功")) >= 1,
          QStringLiteral("nothing was imported"));
    m_own.add(mark::of(QStringLiteral("One line"), way_line,
                       {1045000000, 305000000, 1046000000, 306000000}));
    close("input_window");
}

/// Exports what is ticked through the dialog.
void load_run::export_ticked(const format& one, const QString& path)
{
    m_at.click(QStringLiteral("data_output_file"));
    m_at.wait_for_dialog(QStringLiteral("outputWindow"));
    m_at.click_in_front(QStringLiteral("export_format"));
    QThread::msleep(200);
    m_at.press(QStringLiteral("Home"));
    for (int i = 0; i < one.index; ++i)
        m_at.press(QStringLiteral("Down"));
    m_at.press(QStringLiteral("Return"));
    m_at.wait_for(QStringLiteral("format %1").arg(one.index), [&one] {
        const auto* list =
            stage::in_front()->findChild<QComboBox*>(QStringLiteral("export_format"));
        return list != nullptr && list->currentIndex() == one.index;
    });
    m_at.click_in_front(QStringLiteral("pushButton"));
    m_at.give_path(path);
    expect_boxes({QString::fromUtf8(one.exported)});
    m_at.close_dialog();
}

// Acts

/// A slow read over adb, and meanwhile everything that a person can do.
void load_run::everything_at_once()
{
    doing(QStringLiteral("attach an instrument over adb"));
    attach_adb(m_many, {QStringLiteral("delay=250")});
    const ledger before = m_own;
    doing(QStringLiteral("read over adb"));
    start_reading();

    constexpr const char* providers[] = {"action_google", "action_sky", "action_gaode"};
    struct deed
    {
        const char* what;
        std::function<void()> run;
    };
    const std::vector<deed> deeds = {
        {"tabs",
         [&] {
             for (const int tab : {1, 3, 4, 0})
                 show_tab(tab);
         }},
        {"import", [&] { import_plain(); }},
        {"ticks",
         [&] {
             m_at.click(m_at.see([] { return tables::cell(tables::main_view, 0, 0); }));
             m_at.click(QStringLiteral("checkBox"));
             show_tab(1);
             m_at.click(QStringLiteral("checkBox_mianji"));
             show_tab(0);
         }},
        {"map", [&] { choose(providers[m_round % 3]); }},
        {"language",
         [&] {
             m_english = !m_english;
             choose(m_english ? "action_english" : "action_chinese");
         }},
        {"drawing",
         [&] {
             m_at.click(QStringLiteral("pushButton_graph"));
             m_at.click(QStringLiteral("pushButton_map"));
         }},
        {"export dialog",
         [&] {
             m_at.click(QStringLiteral("data_output_file"));
             m_at.wait_for_dialog(QStringLiteral("outputWindow"));
             m_at.close_dialog();
         }},
        {"coordinate settings",
         [&] {
             choose("action_coordinate");
             m_at.wait_for_dialog(QStringLiteral("zuobiaoForm_homepage"));
             m_at.close_dialog();
         }},
    };
    // One deed begins at a time as long as the read has a while to go, another one
    // first in each round: the language changes every time.
    doing(QStringLiteral("read over adb, and everything else meanwhile"));
    constexpr int late = 65; // percent
    QStringList done;
    for (size_t i = 0; i < deeds.size(); ++i) {
        const deed& one = deeds[(i + static_cast<size_t>(m_round) * 3) % deeds.size()];
        if (m_at.see(percent) >= late)
            break;
        one.run();
        done += QLatin1String(one.what);
    }
    say(QStringLiteral("    meanwhile: ") + done.join(QStringLiteral(", ")));
    expect_boxes({read_whole});
    m_own.add(deliveries(before, m_many, m_many.size()));
    compare(QStringLiteral("a read with everything at once"));
    show_tab(0);
}

/// The last measurements of the lists, which have come last.
QList<mark> load_run::last_marks(qsizetype count)
{
    const held_lists lists = m_at.see(held);
    QList<mark> marks;
    for (qsizetype row = lists.table_list.size() - count; row < lists.table_list.size(); ++row)
        marks += lists.mark_of(row);
    return marks;
}

/// Enters what comes back from a file of these measurements.
void load_run::add_imported(format_index format, const QList<mark>& written)
{
    const bool has_staking_out = std::any_of(written.cbegin(), written.cend(), [](const mark& was) {
        return was.method == staking_out;
    });
    const bool drawing = format == one_dxf_format;
    const QList<mark> come = last_marks(written.size());
    // A Placemark without a figure has all of a KML file read as lines and points
    // without names.
    const bool nameless = format == kml_format && has_staking_out;
    const bool figures_only = format == kml_format || format == one_gpx_format;
    for (mark was : written) {
        if (figures_only && was.method == staking_out)
            continue;
        if (nameless)
            was.name = QStringLiteral("0");
        if (nameless || drawing)
            was.method = was.points == 1 ? way_point : drawing ? track : way_line;
        if (drawing) {
            // Its name is the time at which it was imported.
            const auto same = std::find_if(come.cbegin(), come.cend(), [&was](const mark& one) {
                return one.places == was.places && one.points == was.points;
            });
            check(same != come.cend(), QStringLiteral("not in the drawing: ") + was.name);
            was.name = same->name;
        }
        m_own.add(was);
    }
}

/// Imports a file of which nobody knows what can still be read, in the import window,
/// which is open. What cannot be read brings nothing.
void load_run::import_damaged(const QString& path)
{
    const auto rows = [] { return held().table_list.size(); };
    const qsizetype before = m_at.see(rows);
    m_at.click(QStringLiteral("pushButton_2"));
    m_at.give_path(path);
    const QString box = boxes(1).constFirst();
    const qsizetype come = m_at.see(rows) - before;
    const bool read = box.contains(QStringLiteral("成功")) || box.endsWith(u"successful");
    check(come == 0 || (read && come > 0),
          QStringLiteral("%1: %2 rows and \"%3\"").arg(path).arg(come).arg(box));
    for (const mark& one : last_marks(come))
        m_own.add(one);
    compare(QStringLiteral("the import of ") + path);
}

/// Saves the workbook that is filled in by hand, and imports it with its examples.
void load_run::import_template()
{
    const QString path = m_at.file(QStringLiteral("template.xlsx"));
    m_at.click(QStringLiteral("pushButton"));
    m_at.give_path(path);
    expect_boxes({m_english ? QStringLiteral("Excel: Excel file template has been downloaded")
                            : QStringLiteral("Excel: Excel文件模版已下载")});
    constexpr qsizetype examples = 13; // two of each kind, and three waypoints
    const qsizetype come = import_file(
        path, m_english ? QStringLiteral("import: Excel multi-data file import successful")
                        : QStringLiteral("导入: Excel多数据文件导入成功"));
    check(come == examples, QStringLiteral("%1 rows of the template").arg(come));
    for (const mark& one : last_marks(come))
        m_own.add(one);
    QFile::remove(path);
    compare(QStringLiteral("the import of the template"));
}

/// Exports what is ticked into a file and imports that, whole and then its first half.
void load_run::there_and_back(const format& one, const QString& path)
{
    const QList<mark> ticked = ticked_marks();
    export_ticked(one, path);
    const qint64 size = QFileInfo(path).size();
    check(size > 0, path);
    if (one.index == picture_format) {
        QFile::remove(path);
        return;
    }
    open_import();
    if (one.index == excel_format) {
        // A sheet for each measurement, which no import takes.
        import_file(path, m_english ? QStringLiteral("import: Excel multi-data file import failed")
                                    : QStringLiteral("导入: Excel多数据文件导入失败"));
        import_template();
    } else if (one.index == one_csv_format && m_english) {
        import_file(path, csv_refused); // its headings are English
    } else if (one.imported != nullptr) {
        import_file(path, QString::fromUtf8(one.imported));
        add_imported(one.index, ticked);
    }
    compare(QStringLiteral("an export and an import"));
    check(QFile::resize(path, size / 2), path);
    import_damaged(path);
    close("input_window");
    QFile::remove(path);
}

/// Exports what is ticked into a folder, a file for each measurement.
void load_run::into_a_folder(const format& one, const QString& folder)
{
    const qsizetype most = ticked_marks().size();
    QDir().mkpath(folder);
    export_ticked(one, folder);
    const qsizetype files = QDir(folder).entryList(QDir::Files).size();
    check(files > 0 && files <= most,
          QStringLiteral("%1 files of %2 measurements").arg(files).arg(most));
    QDir(folder).removeRecursively();
    compare(QStringLiteral("an export"));
}

void load_run::files_there_and_back()
{
    delete_all();
    detach_all();
    attach_adb(m_few);
    read({read_whole});
    m_own.add(deliveries({}, m_few, m_few.size()));
    compare(QStringLiteral("a read"));
    const int rows = m_at.see([] { return tables::rows(); });
    for (int i = 0; i < 3; ++i) {
        const format& one = formats[m_format_next++ % std::size(formats)];
        doing(QStringLiteral("export and import, ") +
              QLatin1String(export_formats[static_cast<size_t>(one.index)].label));
        tick_all(false);
        // The last delivery of the read has one measurement of each kind.
        for (int row = rows - 6; row < rows; ++row)
            tick(row);
        const QString path = m_at.file(QStringLiteral("%1-%2").arg(m_round).arg(one.index));
        if (one.folder)
            into_a_folder(one, path);
        else
            there_and_back(one, path + u'.' + QLatin1String(one.suffix));
    }
}

/// Foreign and damaged files, each with what is known of it.
void load_run::damaged_files()
{
    struct entry
    {
        QString path;
        QString box; ///< empty: whatever comes
        int records;
    };
    static const std::vector<entry> all = [] {
        std::vector<entry> found;
        const QString folder = QStringLiteral(VELMO_CORPUS "/");
        for (const kml_file& one : kml_corpus) {
            found.push_back({folder + QStringLiteral("kml/") + QLatin1String(one.file),
                             one.result == kml_failed ? QStringLiteral("导入: kml文件导入失败")
                             : one.result == kml_own ? QStringLiteral("导入: kml文件导入成功")
                                                     : QStringLiteral("导入: 自制kml文件导入成功"),
                             one.records - one.twice});
        }
        for (const gpx_file& one : gpx_corpus) {
            found.push_back({folder + QStringLiteral("gpx/") + QLatin1String(one.file),
                             one.read ? QStringLiteral("导入: gpx文件导入成功")
                                      : QStringLiteral("导入: gpx文件导入失败"),
                             one.read ? one.records : 0});
        }
        for (const char* const kind : {"csv", "dxf"}) {
            const QDir files(folder + QLatin1String(kind));
            for (const QString& name : files.entryList(QDir::Files))
                found.push_back({files.filePath(name), {}, 0});
        }
        return found;
    }();
    open_import();
    constexpr int at_a_time = 12;
    for (int i = 0; i < at_a_time; ++i) {
        const entry& one = all[m_corpus_next++ % all.size()];
        doing(QStringLiteral("import ") + QFileInfo(one.path).fileName());
        if (one.box.isEmpty()) {
            import_damaged(one.path);
            continue;
        }
        const qsizetype come = import_file(one.path, one.box);
        check(come == one.records,
              QStringLiteral("%1: %2 rows instead of %3").arg(one.path).arg(come).arg(one.records));
        for (const mark& has_come : last_marks(come))
            m_own.add(has_come);
        compare(QStringLiteral("the import of ") + one.path);
    }
    close("input_window");
}

/// Writes Placemarks of so many points each into a file, and enters what it holds.
/// Its first tag is no XML if it is `damaged`: then the names are lost.
void write_kml_file(const QString& path, int placemarks, int points, bool damaged, ledger& holds)
{
    QFile file(path);
    check(file.open(QIODevice::WriteOnly), path);
    const QByteArray space = "http://www.opengis.net/kml/2.2";
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<kml xmlns=" +
               (damaged ? space : '"' + space + '"') + ">\n<Document>\n");
    for (int i = 0; i < placemarks; ++i) {
        const QString name = QStringLiteral("Line %1").arg(i);
        QList<qint64> numbers;
        QByteArray text;
        for (int k = 0; k < points; ++k) {
            numbers << 1'045'000'000 + i * 10'000 + k << 305'000'000 + k * 13;
            text += QByteArray::number(static_cast<double>(numbers[2 * k]) / 1e7, 'f', 7) + ',' +
                    QByteArray::number(static_cast<double>(numbers[2 * k + 1]) / 1e7, 'f', 7) +
                    ",500.1\n";
        }
        file.write("<Placemark>\n<name>" + name.toLatin1() +
                   "</name>\n<description>made elsewhere</description>\n<LineString>"
                   "<coordinates>\n" +
                   text + "</coordinates></LineString>\n</Placemark>\n");
        holds.add(mark::of(damaged ? QStringLiteral("0") : name, way_line, numbers));
    }
    file.write("</Document>\n</kml>\n");
}

void load_run::large_files()
{
    delete_all();
    open_import();
    const QString path = m_at.file(QStringLiteral("large.kml"));
    for (const bool damaged : {false, true}) {
        doing(damaged ? QStringLiteral("import a large file that is damaged")
                      : QStringLiteral("import a large file"));
        write_kml_file(path, 100, 2000, damaged, m_own);
        import_file(path, damaged ? QStringLiteral("导入: kml文件导入成功")
                                  : QStringLiteral("导入: 自制kml文件导入成功"));
        compare(QStringLiteral("a large file"));
    }
    QFile::remove(path);
    close("input_window");
    doing(QStringLiteral("tick large figures"));
    tick_all(true);
    tick_all(false);
}

void load_run::wrong_serial_reads()
{
    for (int i = 0; i < 2; ++i) {
        delete_all();
        detach_all();
        const wrong_read& one = serial_faults[m_serial_next++ % std::size(serial_faults)];
        const QString fault = QLatin1String(one.fault);
        doing(QStringLiteral("read over the serial port, ") + fault);
        attach_serial(m_few, as_options({fault}));
        read({one.box});
        m_own.add(
            deliveries({}, m_few, one.whole_by < 0 ? m_few.size() : m_few.whole_by(one.whole_by)));
        compare(fault);
    }
}

void load_run::wrong_adb_reads()
{
    delete_all();
    detach_all();
    const wrong_read& one = adb_faults[m_adb_next++ % std::size(adb_faults)];
    const QString fault = QLatin1String(one.fault);
    doing(QStringLiteral("read over adb, ") + fault);
    attach_adb(m_few, {fault});
    read({one.box});
    m_own.add(
        deliveries({}, m_few, one.whole_by < 0 ? m_few.size() : m_few.whole_by(one.whole_by)));
    compare(fault);
}

/// An instrument that speaks text, at the lower speed, and another over adb: both are
/// read. The second time the text records are there already.
void load_run::old_instrument()
{
    delete_all();
    detach_all();
    doing(QStringLiteral("read text and frames"));
    attach_adb(m_few);
    attach_serial(m_few, {QStringLiteral("--baud"), QStringLiteral("9600"),
                          QStringLiteral("--text"), QStringLiteral("short")});
    ledger text;
    for (const mark& one : m_few.by_text)
        text.add(one);
    for (int i = 0; i < 2; ++i) {
        // The text download brings all that the read began with and what is new, and
        // the other read begins with that.
        ledger delivered = m_own;
        if (i == 0)
            delivered.add(text);
        m_at.click(QStringLiteral("data_read"));
        const QStringList come = boxes(2);
        m_own.add(delivered);
        if (come == QStringList{read_text, no_answer}) {
            ++m_clicked_again;
        } else {
            check(come == QStringList{read_text, read_whole},
                  QStringLiteral("boxes \"%1\"").arg(come.join(QStringLiteral("\", \""))));
            m_own.add(deliveries(delivered, m_few, m_few.size()));
        }
        compare(QStringLiteral("text and frames"));
    }
}

void load_run::pulled_cables()
{
    const auto halfway = [this] {
        m_at.wait_for(
            QStringLiteral("the middle of the read"), [] { return percent() >= 30; }, long_wait);
    };
    delete_all();
    detach_all();
    doing(QStringLiteral("pull out the cable of adb during a read"));
    attach_adb(m_few, {QStringLiteral("delay=250")});
    start_reading();
    halfway();
    m_adb.stop();
    expect_boxes({read_broken});
    detach_adb();
    count_broken_read(m_few, {});
    compare(QStringLiteral("a read that was broken off"));

    delete_all();
    doing(QStringLiteral("pull out the serial cable during a read"));
    attach_serial(m_few, as_options({QStringLiteral("delay=250")}));
    start_reading();
    halfway();
    unplug_serial();
    expect_boxes({lost_serial, read_broken});
    count_broken_read(m_few, {});
    compare(QStringLiteral("a read that was broken off"));

    doing(QStringLiteral("read with no instrument"));
    read({not_connected});
    compare(QStringLiteral("a read with no instrument"));
}

void load_run::repeated_reads()
{
    delete_all();
    detach_all();
    doing(QStringLiteral("read twice"));
    attach_serial(m_few);
    for (int i = 0; i < 2; ++i) {
        const ledger before = m_own;
        read({read_whole});
        m_own.add(deliveries(before, m_few, m_few.size()));
        compare(QStringLiteral("a repeated read"));
    }
}

/// Measurements in what an instrument has written of what it was sent.
qsizetype received_in(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).array().size()
                                          : 0;
}

void load_run::upload()
{
    delete_all();
    detach_all();
    doing(QStringLiteral("upload over adb and the serial port"));
    attach_adb(m_few);
    read({read_whole});
    m_own.add(deliveries({}, m_few, m_few.size()));
    attach_serial(m_few);
    const int rows = m_at.see([] { return tables::rows(); });
    for (int row = rows - 6; row < rows; ++row)
        tick(row);
    m_at.click(QStringLiteral("data_to_device"));
    expect_boxes({QStringLiteral("上传: 上传数据成功")});
    for (const char* const name : {"received-adb.json", "received-serial.json"}) {
        const QString path = m_at.file(QLatin1String(name));
        m_at.wait_for(QStringLiteral("six measurements in ") + path,
                      [&] { return received_in(path) == 6; });
    }
    compare(QStringLiteral("an upload"));
}

void load_run::forms()
{
    doing(QStringLiteral("forms"));
    m_at.click(QStringLiteral("print"));
    m_at.wait_for_dialog(QStringLiteral("print"));
    m_at.click_in_front(QStringLiteral("pushButton_view"));
    m_at.wait_for_dialog(QStringLiteral("QPrintPreviewDialog"));
    m_at.close_dialog();
    m_at.close_dialog();
    m_at.click(QStringLiteral("softwareupgrade"));
    for (int i = 0; i < 2; ++i) {
        m_at.wait_for_box(QStringLiteral("检查失败"), long_wait);
        m_at.answer_box(QMessageBox::Ok);
    }
    m_at.wait_for_dialog(QStringLiteral("updateForm"));
    m_at.close_dialog();
    m_at.click(QStringLiteral("hardwareupgrade"));
    m_at.wait_for_dialog(QStringLiteral("hardwareupdata"));
    m_at.close_dialog();
    for (const char* const action : {"action_instructions", "action_about", "action_download"}) {
        choose(action);
        m_at.wait_for(QStringLiteral("a box"), [] { return stage::box() != nullptr; });
        QThread::msleep(200);
        m_at.answer_box(QMessageBox::Ok);
    }
    // Plane coordinates for one export, with a look at the editor, and degrees again.
    for (const char* const frame : {"radioButton", "radioButton_2"}) {
        choose("action_coordinate");
        m_at.wait_for_dialog(QStringLiteral("zuobiaoForm_homepage"));
        m_at.click_in_front(QLatin1String(frame));
        if (qstrcmp(frame, "radioButton") == 0) {
            m_at.click_in_front(QStringLiteral("pushButton_3"));
            m_at.wait_for_dialog(QStringLiteral("zuobiaoForm"));
            m_at.close_dialog();
            m_at.wait_for_dialog(QStringLiteral("zuobiaoForm_homepage"));
        }
        m_at.click_in_front(QStringLiteral("pushButton"));
        m_at.wait_for(QStringLiteral("the settings closed"),
                      [] { return stage::in_front() == nullptr; });
        if (m_own.rows() > 0 && qstrcmp(frame, "radioButton") == 0) {
            show_tab(0);
            tick_all(true);
            const QString path = m_at.file(QStringLiteral("plane.csv"));
            export_ticked(formats[0], path);
            check(QFileInfo(path).size() > 0, path);
            QFile::remove(path);
            tick_all(false);
        }
    }
    compare(QStringLiteral("the forms"));
}

void load_run::edits_and_deletions()
{
    delete_all();
    detach_all();
    doing(QStringLiteral("edit and delete"));
    attach_serial(m_few);
    read({read_whole});
    m_own.add(deliveries({}, m_few, m_few.size()));
    compare(QStringLiteral("a read"));
    for (const int row : {0, 7, 20}) {
        const mark was = m_at.see(held).mark_of(row);
        mark now = was;
        now.name = QStringLiteral("Field %1 of round %2").arg(row).arg(m_round);
        m_at.click(
            m_at.see([row] { return tables::cell(tables::main_view, row, tables::name_column); }),
            2);
        m_at.wait_for(QStringLiteral("an editor in the cell"), [] {
            return tables::view(tables::main_view)
                       ->viewport()
                       ->findChild<QWidget*>(QString(), Qt::FindDirectChildrenOnly) != nullptr;
        });
        m_at.press(QStringLiteral("ctrl+a"));
        m_at.type(now.name);
        m_at.press(QStringLiteral("Return"));
        m_at.wait_for(QStringLiteral("the new name"),
                      [&] { return held().table_list[row].name == now.name; });
        m_own.add(was, -1);
        m_own.add(now);
        compare(QStringLiteral("an edit"));
    }
    for (const int row : {0, 1, 5}) {
        tick(row);
        delete_ticked();
    }
}

/// The parts that read, import and export keep the lists of their last use until the
/// next. So that rounds can be compared, each ends with one measurement for each.
void load_run::leave_little_behind()
{
    delete_all();
    detach_all();
    doing(QStringLiteral("one measurement imported, exported and in vain read"));
    import_plain();
    show_tab(0);
    tick_all(true);
    const QString path = m_at.file(QStringLiteral("one.gpx"));
    export_ticked(formats[1], path);
    QFile::remove(path);
    read({not_connected});
    compare(QStringLiteral("one measurement"));
}

// The whole

/// Slope of the straight line through values one apart.
double slope_of(const QList<double>& values)
{
    const auto n = static_cast<double>(values.size());
    double sum_x = 0, sum_y = 0, sum_xx = 0, sum_xy = 0;
    for (qsizetype i = 0; i < values.size(); ++i) {
        const auto x = static_cast<double>(i);
        sum_x += x;
        sum_y += values[i];
        sum_xx += x * x;
        sum_xy += x * values[i];
    }
    return (n * sum_xy - sum_x * sum_y) / (n * sum_xx - sum_x * sum_x);
}

/// What the program takes with no row held, round by round. In the first half of the
/// rounds forms, formats and pages are used for the first time.
void load_run::report(const QList<floor>& floors) const
{
    QList<double> resident;
    QList<double> in_use;
    QList<double> web;
    for (qsizetype i = floors.size() / 2; i < floors.size(); ++i) {
        resident += static_cast<double>(floors[i].memory.resident);
        in_use += static_cast<double>(floors[i].memory.in_use);
        web += static_cast<double>(floors[i].memory.web);
    }
    say(QStringLiteral("rounds: %1; comparisons of lists and tables: %2, of %3 rows; boxes: %4")
            .arg(floors.size())
            .arg(m_checks)
            .arg(m_rows_seen)
            .arg(m_boxes));
    say(QStringLiteral("a busy machine: read clicked again %1 times, attached again %2 times")
            .arg(m_clicked_again)
            .arg(m_attached_again));
    say(QStringLiteral("longest wait for the window: %1 ms, \"%2\"")
            .arg(m_watch.longest_ms())
            .arg(m_watch.longest_doing()));
    constexpr int enough = 6; // rounds for a slope to mean something
    if (resident.size() < enough)
        return;
    const double growth = slope_of(in_use);
    say(QStringLiteral("growth with no rows held, over the last %1 rounds, KiB a round: "
                       "allocated %2, resident %3, web engine %4")
            .arg(resident.size())
            .arg(growth, 0, 'f', 1)
            .arg(slope_of(resident), 0, 'f', 1)
            .arg(slope_of(web), 0, 'f', 1));
    check(growth < growth_limit, QStringLiteral("more is allocated in every round"));
}

void load_run::say_instruments()
{
    if (m_adb_attached)
        say(QStringLiteral("  the instrument over adb ") + m_adb.state());
    if (m_serial_attached)
        say(QStringLiteral("  the instrument on the serial port ") + m_serial.state());
}

void load_run::run(int minutes)
{
    QElapsedTimer clock;
    clock.start();
    {
        QFile file(m_at.file(QStringLiteral("plain.kml")));
        check(file.open(QIODevice::WriteOnly), file.fileName());
        file.write("<kml xmlns=\"http://www.opengis.net/kml/2.2\"><Document><Placemark>\n"
                   "<name>One line</name><description>made elsewhere</description>\n"
                   "<LineString><coordinates>\n104.5,30.5,500.1\n104.6,30.6,501.2\n"
                   "</coordinates></LineString></Placemark></Document></kml>\n");
    }
    m_at.wait_for(
        QStringLiteral("the window"),
        [] {
            return !QApplication::topLevelWidgets().isEmpty() &&
                   stage::widget(QStringLiteral("data_read"))->isVisible();
        },
        long_wait);
    using act = void (load_run::*)();
    const std::vector<act> acts = {
        &load_run::files_there_and_back, &load_run::damaged_files,
        &load_run::wrong_serial_reads,   &load_run::large_files,
        &load_run::wrong_adb_reads,      &load_run::forms,
        &load_run::pulled_cables,        &load_run::repeated_reads,
        &load_run::damaged_files,        &load_run::old_instrument,
        &load_run::edits_and_deletions,  &load_run::upload,
    };
    constexpr size_t acts_in_a_round = 3;
    size_t next = 0;
    QList<floor> floors;
    while (clock.elapsed() < minutes * 60'000LL || next % acts.size() != 0) {
        ++m_round;
        say(QStringLiteral("round %1, minute %2").arg(m_round).arg(clock.elapsed() / 60'000));
        everything_at_once();
        for (size_t i = 0; i < acts_in_a_round; ++i)
            (this->*acts[next++ % acts.size()])();
        leave_little_behind();
        delete_all();
        m_at.see([this] {
            m_tiles.requests.clear(); // the stage's own growth
            return 0;
        });
        doing(QStringLiteral("rest"));
        QThread::msleep(3000);
        floors.append({m_round, m_watch.take()});
        const memory_sample& now = floors.last().memory;
        say(QStringLiteral("  no rows: allocated %1 KiB, resident %2 KiB, web engine %3 KiB")
                .arg(now.in_use)
                .arg(now.resident)
                .arg(now.web));
    }
    report(floors);
}

void close_the_program(const stage& at)
{
    at.press(QStringLiteral("ctrl+q"));
    at.wait_for(QStringLiteral("the question"), [] { return stage::box() != nullptr; });
    QThread::msleep(300);
    const QPoint yes = at.see([] {
        const QAbstractButton* button = stage::box()->button(QMessageBox::Yes);
        return button->mapToGlobal(button->rect().center());
    });
    // Nothing is looked at after this click: there is no window any more.
    at.click(yes);
}

} // namespace

void run_load(const QString& folder, local_server& tiles, cable& usb)
{
    bool told = false;
    const int minutes = qEnvironmentVariableIntValue("VELMO_LOAD_MINUTES", &told);
    const stage at(folder, tiles);
    try {
        {
            load_run run(folder, tiles, usb);
            try {
                run.run(told ? minutes : usual_minutes);
            } catch (const step_failed&) {
                run.say_instruments();
                throw;
            }
        }
        say(QStringLiteral("load: nothing lost, nothing doubled"));
        close_the_program(at);
    } catch (const step_failed& failure) {
        say(QStringLiteral("FAILED: %1").arg(QString::fromUtf8(failure.what())));
        try {
            at.take_picture(QStringLiteral("failed"));
        } catch (const step_failed&) {
        }
        std::_Exit(1);
    }
}
