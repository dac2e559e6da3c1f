#pragma once

#include "cable.h"
#include "in_front.h"
#include "instrument_memory.h"
#include "ledger.h"
#include "memory_watch.h"
#include "stage.h"

#include "exchange/export_formats.h"
#include "local_server.h"
#include "support/instrument_process.h"

#include <QList>
#include <QString>
#include <QStringList>

constexpr int long_wait = 60'000; // ms

// What the boxes say, behind their titles.

inline const QString attached_adb = QStringLiteral("串口: 安卓设备已连接");
inline const QString attached_serial = QStringLiteral("串口: 设备已连接");
inline const QString lost_serial = QStringLiteral("串口: 设备连接有误");
inline const QString read_whole = QStringLiteral("数据读取: 数据读取成功");
inline const QString read_text = QStringLiteral("数据读取: 数据读取完成");
inline const QString read_bad = QStringLiteral("数据读取: 数据读取失败");
inline const QString read_broken = QStringLiteral("数据读取: 数据读取失败，请重新读取");
inline const QString read_late = QStringLiteral("数据读取: 数据读取超时，请重新读取");
inline const QString not_connected = QStringLiteral("警告: 串口未连接");
inline const QString no_answer = QStringLiteral("警告: 数据未读取成功，请再次点击");

/// One run: what the acts need, and the acts. After each step the tables are held
/// against an account of their own. Whatever is wrong is thrown as `step_failed`.
class load_run
{
public:
    load_run(const QString& folder, local_server& tiles, cable& usb);

    /// Rounds until `minutes` have passed.
    void run(int minutes);
    /// Whether the instruments that should be there are.
    void say_instruments();

private:
    struct file_format;
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
    void export_ticked(format_index format, const QString& path, const QString& box);
    QList<mark> ticked_marks();
    QList<mark> last_marks(qsizetype count);
    void add_imported(format_index format, const QList<mark>& written);
    void import_damaged(const QString& path);
    void import_template();
    void there_and_back(const file_format& one, const QString& path);
    void into_a_folder(const file_format& one, const QString& folder);

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
