// What a person does with the window: all at once, forms, edits.

#include "load_run.h"

#include "tables.h"

#include <QAbstractItemView>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QThread>

#include <functional>
#include <vector>

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
            export_ticked(one_csv_format, path, QStringLiteral("csv: csv多数据合并导出成功"));
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
    export_ticked(one_gpx_format, path, QStringLiteral("gpx: gpx多数据合并导出成功"));
    QFile::remove(path);
    read({not_connected});
    compare(QStringLiteral("one measurement"));
}
