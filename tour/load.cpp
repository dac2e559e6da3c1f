#include "load.h"

#include "load_run.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMessageBox>
#include <QPixmapCache>
#include <QThread>

#include <cstdlib>
#include <vector>

namespace {

constexpr int usual_minutes = 20;
/// Growth of what is allocated that is put down to chance, KiB a round.
constexpr double growth_limit = 64;

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

void close_the_program(const stage& at)
{
    at.press(QStringLiteral("ctrl+q"));
    at.wait_for(QStringLiteral("the question"), [] { return stage::box() != nullptr; });
    QThread::msleep(300);
    const stage::spot yes =
        at.see([] { return stage::middle_of(stage::box()->button(QMessageBox::Yes)); });
    // Nothing is looked at after this click: there is no window any more.
    at.click(yes);
}

} // namespace

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
    // Icons that Qt has scaled and keeps, up to 10 MiB, are not held for the person; and
    // the cache of Qt 6.4 keeps the names of those that it has thrown away.
    m_at.see([] {
        QPixmapCache::setCacheLimit(0);
        return 0;
    });
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
            // The stage's own: what it was asked, and some 80 KiB for each connection.
            m_tiles.requests.clear();
            m_tiles.hang_up();
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
