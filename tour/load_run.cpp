#include "load_run.h"

#include "tables.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QAction>
#include <QDeadlineTimer>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QTabBar>
#include <QTabWidget>
#include <QThread>

#include <algorithm>
#include <functional>
#include <iterator>
#include <numeric>
#include <utility>

namespace {

/// How long the window may take to answer. An import, an upload and adb hold it up,
/// as they do in daily use.
constexpr int patience_ms = 60'000;

} // namespace

load_run::load_run(const QString& folder, local_server& tiles, cable& usb)
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
    // A foreign file may bring a word for a kind that no table has. The box passes over
    // such a row.
    const auto done = [wanted] {
        const auto of_kinds = [] {
            return std::accumulate(
                std::begin(tables::kind_views), std::end(tables::kind_views), 0,
                [](int rows, const char* name) { return rows + tables::rows(name); });
        };
        return tables::ticked_rows() == (wanted ? of_kinds() : 0);
    };
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
    for (const int row : m_at.see(tables::rows_without_tick))
        tick(row);
    delete_ticked();
    check(m_own.rows() == 0, QStringLiteral("the account is not empty"));
    m_own.clear();
}

void load_run::close(const char* class_name)
{
    m_at.close(m_at.see([class_name] { return QPointer(window_of(class_name)); }));
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

/// The last measurements of the lists, which have come last.
QList<mark> load_run::last_marks(qsizetype count)
{
    const held_lists lists = m_at.see(held);
    QList<mark> marks;
    for (qsizetype row = lists.table_list.size() - count; row < lists.table_list.size(); ++row)
        marks += lists.mark_of(row);
    return marks;
}
