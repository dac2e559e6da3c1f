#include "coordinates/json_file_manager.h"
#include "core/thread_key.h"
#include "presentation/graphic_widget.h"
#include "presentation/other_information.h"
#include "support/log_capture.h"

#include <QDesktopServices>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QSet>
#include <QStandardItemModel>
#include <QStandardPaths>
#include <QTest>
#include <QTranslator>
#include <QUrl>
#include <QWebEngineView> // connecting a signal needs its argument types complete

#include <array>
#include <tuple>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// The calls of one signal, with their arguments.
template <typename... Args>
class recorder
{
public:
    recorder(thread_key& hub, void (thread_key::*signal)(Args...))
    {
        QObject::connect(&hub, signal, &m_context,
                         [this](Args... args) { calls.emplace_back(std::move(args)...); });
    }
    recorder(const recorder&) = delete;
    recorder& operator=(const recorder&) = delete;

    std::vector<std::tuple<Args...>> calls;

private:
    QObject m_context; // ends the connection with the recorder
};

/// All scripts for the map in the order of their emission, drawing and deleting
/// together.
class script_recorder
{
public:
    explicit script_recorder(thread_key& hub)
    {
        const auto gather = [this](const QString& script) { scripts += script; };
        QObject::connect(&hub, &thread_key::draw_map_signal, &m_context, gather);
        QObject::connect(&hub, &thread_key::delete_map_signal, &m_context, gather);
    }
    script_recorder(const script_recorder&) = delete;
    script_recorder& operator=(const script_recorder&) = delete;

    /// One text for each figure, "draw ROW KIND NUMBERS" or "erase KIND NUMBERS".
    /// An append or finish under another identifier than that of the begin shows
    /// as the script itself.
    [[nodiscard]] QStringList figures() const
    {
        static const QRegularExpression begin(
            "^beginLocatedCityPacket\\(\"(draw_(\\d+)_\\d+)\",(.*)\\)$");
        static const QRegularExpression append(
            "^appendLocatedCityPacket\\(\"(.*)\",\\[(.*)\\]\\)$");
        static const QRegularExpression erase("^deleteDrawnPolygons\\(([^,]*),(.*)\\)$");
        QStringList all;
        QString id;
        QString figure;
        for (const QString& script : scripts) {
            if (const auto match = begin.match(script); match.hasMatch()) {
                id = match.captured(1);
                figure = "draw " + match.captured(2) + " " + match.captured(3);
            } else if (const auto part = append.match(script);
                       part.hasMatch() && part.captured(1) == id) {
                figure += " " + part.captured(2);
            } else if (script == "finishLocatedCityPacket(\"" + id + "\")") {
                all += figure;
                id.clear();
            } else if (const auto gone = erase.match(script); gone.hasMatch()) {
                all += "erase " + gone.captured(1) + " " + gone.captured(2);
            } else {
                all += script;
            }
        }
        return all;
    }

    QStringList scripts;

private:
    QObject m_context; // ends the connections with the recorder
};

/// The window's side: seven tables, four lists and the hub's relation lists, all
/// built from the kinds of the measurements. Measurement i has the coordinate
/// text "i,i".
class window_side
{
public:
    window_side(thread_key& hub, const QStringList& methods)
    {
        static const QStringList order = {u"面积"_s, u"距离"_s, u"航点"_s,
                                          u"航线"_s, u"航迹"_s, u"放样"_s};
        std::array<relation_list, 6> relations;
        for (const QString& method : methods) {
            const auto row = int(table_list.size());
            measuringData data;
            data.method = method;
            data.name = QString::number(row);
            table_list += data;
            data_msg += QString::number(row) + "," + QString::number(row);
            data_msg_altitude += data_msg.constLast() + ",1.0\n";
            point_msg_all += QList<point_msg>{point_msg{"1.0", "2.0", "3", QString::number(row)}};
            model.appendRow({new QStandardItem, new QStandardItem(data.name)});
            const qsizetype kind = order.indexOf(method);
            if (kind < 0)
                continue;
            QStandardItemModel& table = of_kind[std::size_t(kind)];
            relations[std::size_t(kind)].append({table.rowCount(), row});
            table.appendRow({new QStandardItem, new QStandardItem(data.name)});
        }
        hub.change_table_relation(relations[0], relations[1], relations[2], relations[3],
                                  relations[4], relations[5]);
    }

    using bulk_slot = decltype(&thread_key::recv_check_all);

    void call(thread_key& hub, bulk_slot slot, bool clicked)
    {
        (hub.*slot)(clicked, &model, &of_kind[0], &of_kind[1], &of_kind[2], &of_kind[3],
                    &of_kind[4], &of_kind[5], table_list, data_msg);
    }

    void erase_ticked(thread_key& hub)
    {
        hub.recv_delete_sign_from_velmo(&model, table_list, data_msg, data_msg_altitude,
                                        point_msg_all);
    }

    static void tick(QStandardItemModel& table, int row, bool ticked = true)
    {
        QVERIFY(table.setData(table.index(row, 0), ticked, Qt::EditRole));
    }

    /// The ticks of a table from the top, one character for each row.
    static QString ticks(const QStandardItemModel& table)
    {
        QString all;
        for (int row = 0; row < table.rowCount(); ++row)
            all += table.index(row, 0).data(Qt::DisplayRole).toBool() ? u'x' : u'.';
        return all;
    }

    /// The ticks of the six tables of the kinds, one text for each.
    [[nodiscard]] QStringList kind_ticks() const
    {
        QStringList all;
        for (const QStandardItemModel& table : of_kind)
            all += ticks(table);
        return all;
    }

    QStandardItemModel model;
    std::array<QStandardItemModel, 6> of_kind;
    QList<measuringData> table_list;
    QStringList data_msg;
    QStringList data_msg_altitude;
    QList<QList<point_msg>> point_msg_all;
};

QStringList pairs(int count)
{
    QStringList numbers;
    for (int i = 0; i < 2 * count; ++i)
        numbers += QString::number(i) + ".5";
    return numbers;
}

} // namespace

/// Gathers the addresses that would go to the desktop's browser.
class address_catcher : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> addresses;

public slots:
    void opened(const QUrl& address) { addresses += address; }
};

/// Puts an English word behind the two words of the totals.
class unit_translator : public QTranslator
{
    Q_OBJECT

public:
    QString translate(const char* context, const char* text, const char* /*disambiguation*/,
                      int /*n*/) const override
    {
        if (qstrcmp(context, "thread_key") != 0)
            return {};
        const QString word = QString::fromUtf8(text);
        return word == u"点" ? u" points"_s : word == u"条" ? u" records"_s : QString();
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

Q_DECLARE_METATYPE(window_side::bulk_slot)

class test_thread_key : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void the_first_draw_of_the_process(); // stays the first: it needs a fresh process
    void one_row_drawn_data();
    void one_row_drawn();
    void long_lines_go_in_scripts_of_a_thousand_numbers_data();
    void long_lines_go_in_scripts_of_a_thousand_numbers();
    void rows_that_cannot_be_drawn_send_nothing();
    void identifiers_are_never_used_twice();
    void a_million_numbers();
    void erase_row();
    void texts_with_placeholders_stay_as_they_are();

    void relation_lookups();
    void relations_are_replaced_as_a_whole();

    void the_box_of_all_draws_and_erases_in_table_order();
    void the_box_of_all_leaves_records_of_no_kind_unticked();
    void a_record_of_no_kind_takes_the_map_kind_before_it();
    void the_box_of_a_kind_data();
    void the_box_of_a_kind();
    void the_box_of_a_kind_draws_the_rows_of_all_kinds();
    void a_tick_in_the_main_table();
    void a_tick_in_a_table_of_a_kind_data();
    void a_tick_in_a_table_of_a_kind();
    void a_change_that_failed_does_nothing();
    void rows_without_a_relation_go_on_to_the_map();
    void the_first_of_several_pairs_counts();
    void tables_longer_than_the_lists();
    void empty_tables();
    void the_log_line();
    void twenty_thousand_rows();

    void deletion();
    void deletion_takes_the_map_kind_from_the_row_alone();
    void deletion_beyond_the_lists();
    void deletion_of_many_rows();

    void totals();
    void totals_of_nothing_ticked();
    void totals_keep_six_digits_and_whole_metres();
    void totals_are_translated();
    void the_class_that_is_not_made_has_the_same_signal();

    void ticks_are_shown_values_and_edits();

    void signals_in_declaration_order();
    void arguments_have_their_names();
    void arguments_are_known_to_the_meta_object();
    void reads_go_to_the_serial_worker();
    void results_come_back_with_their_origin();
    void lights_and_progress();
    void imports_and_uploads();
    void exports_carry_their_command();
    void excel_sends_its_choices_first();
    void pictures_move_the_path_to_the_end();
    void updates();
    void the_makers_page();
    void the_thread_logs_and_ends();
};

// Drawing

void test_thread_key::the_first_draw_of_the_process()
{
    thread_key hub;
    const script_recorder map(hub);
    // A row that cannot be drawn takes no number.
    hub.draw_row(0, "1", {"", "", "", "116.5,39.5"});
    QVERIFY(map.scripts.isEmpty());
    hub.draw_row(3, "3", {"", "", "", "116.5,39.5"});
    QCOMPARE(map.scripts, (QStringList{"beginLocatedCityPacket(\"draw_3_1\",3)",
                                       "appendLocatedCityPacket(\"draw_3_1\",[116.5,39.5])",
                                       "finishLocatedCityPacket(\"draw_3_1\")"}));
    // The counter belongs to the process, not to the hub.
    thread_key other;
    const script_recorder other_map(other);
    other.draw_row(0, "1", {"1,2"});
    QCOMPARE(other_map.scripts.constFirst(), "beginLocatedCityPacket(\"draw_0_2\",1)");
}

void test_thread_key::one_row_drawn_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("numbers");
    QTest::newRow("waypoint") << "116.5,39.5"
                              << "116.5,39.5";
    QTest::newRow("line") << "1,2,3,4"
                          << "1,2,3,4";
    QTest::newRow("odd number of parts loses the last") << "1,2,3"
                                                        << "1,2";
    QTest::newRow("empty parts are left out") << ",1,,2,,,3,4,"
                                              << "1,2,3,4";
    QTest::newRow("parts are trimmed") << " 1 ,\t2,3\r\n, 4"
                                       << "1,2,3,4";
    QTest::newRow("a blank part is a part") << "1, ,3,4"
                                            << "1,,3,4";
}

void test_thread_key::one_row_drawn()
{
    QFETCH(QString, text);
    QFETCH(QString, numbers);
    thread_key hub;
    const script_recorder map(hub);
    hub.draw_row(1, "2", {"9,9", text});
    QCOMPARE(map.scripts.size(), 3);
    QCOMPARE(map.figures(), QStringList{"draw 1 2 " + numbers});
}

void test_thread_key::long_lines_go_in_scripts_of_a_thousand_numbers_data()
{
    QTest::addColumn<int>("points");
    QTest::addColumn<QList<int>>("numbers");
    QTest::newRow("499") << 499 << QList<int>{998};
    QTest::newRow("500") << 500 << QList<int>{1000};
    QTest::newRow("501") << 501 << QList<int>{1000, 2};
    QTest::newRow("1001") << 1001 << QList<int>{1000, 1000, 2};
}

void test_thread_key::long_lines_go_in_scripts_of_a_thousand_numbers()
{
    QFETCH(int, points);
    QFETCH(QList<int>, numbers);
    thread_key hub;
    const script_recorder map(hub);
    hub.draw_row(0, "2", {pairs(points).join(u',')});

    QCOMPARE(map.scripts.size(), numbers.size() + 2);
    const QString id = map.scripts.constFirst().section(u'"', 1, 1);
    QVERIFY(id.startsWith("draw_0_"));
    QCOMPARE(map.scripts.constFirst(), "beginLocatedCityPacket(\"" + id + "\",2)");
    QCOMPARE(map.scripts.constLast(), "finishLocatedCityPacket(\"" + id + "\")");
    QStringList sent;
    for (qsizetype i = 0; i < numbers.size(); ++i) {
        const QString& script = map.scripts.at(i + 1);
        const QString head = "appendLocatedCityPacket(\"" + id + "\",[";
        QVERIFY(script.startsWith(head) && script.endsWith("])"));
        const QStringList packet = script.mid(head.size()).chopped(2).split(u',');
        QCOMPARE(packet.size(), numbers.at(i));
        sent += packet;
    }
    QCOMPARE(sent, pairs(points));
}

void test_thread_key::rows_that_cannot_be_drawn_send_nothing()
{
    thread_key hub;
    const script_recorder map(hub);
    const QStringList data_msg = {"1,2", "", "1", ",,1,,", " "};
    for (const int row : {-1, 1, 2, 3, 4, 5, 1'000'000})
        hub.draw_row(row, "1", data_msg);
    hub.draw_row(0, "1", {});
    QCOMPARE(map.scripts, QStringList());
}

void test_thread_key::identifiers_are_never_used_twice()
{
    thread_key hub;
    const script_recorder map(hub);
    window_side window(hub, {u"面积"_s});
    window.call(hub, &thread_key::recv_check_all, true);
    window.call(hub, &thread_key::recv_check_all, false);
    window.call(hub, &thread_key::recv_check_all, true);
    QCOMPARE(map.scripts.size(), 7);
    QVERIFY(map.scripts.at(0).startsWith("begin"));
    QVERIFY(map.scripts.at(4).startsWith("begin"));
    QVERIFY(map.scripts.at(0) != map.scripts.at(4));
}

void test_thread_key::a_million_numbers()
{
    thread_key hub;
    const script_recorder map(hub);
    const QStringList data_msg{pairs(500'000).join(u',')};
    hub.draw_row(0, "2", data_msg);
    QCOMPARE(map.scripts.size(), 1002);
}

void test_thread_key::erase_row()
{
    // The whole text goes behind the kind as it is, neither trimmed nor cut:
    // the page takes the coordinates as single arguments.
    thread_key hub;
    const script_recorder map(hub);
    const recorder erased(hub, &thread_key::delete_map_signal);
    const QStringList data_msg = {"1.5,2.5,3.5,4.5", "", " 1 ,,2,3"};
    hub.erase_row(0, "1", data_msg);
    hub.erase_row(1, "2", data_msg);
    hub.erase_row(2, "", data_msg);
    hub.erase_row(-1, "1", data_msg);
    hub.erase_row(3, "1", data_msg);
    QCOMPARE(map.scripts,
             (QStringList{"deleteDrawnPolygons(1,1.5,2.5,3.5,4.5)", "deleteDrawnPolygons(2,)",
                          "deleteDrawnPolygons(, 1 ,,2,3)"}));
    QCOMPARE(erased.calls.size(), std::size_t(3));
}

void test_thread_key::texts_with_placeholders_stay_as_they_are()
{
    // An imported coordinate text is not ours: filling one text after the other
    // would fill its "%1" as well.
    thread_key hub;
    const script_recorder map(hub);
    hub.draw_row(0, "1", {"%1,%2,%99,4"});
    hub.erase_row(0, "%2", {"%1,%2"});
    QCOMPARE(map.figures(), (QStringList{"draw 0 1 %1,%2,%99,4", "erase %2 %1,%2"}));
}

// Relations

void test_thread_key::relation_lookups()
{
    const relation_list relation = {{0, 2}, {1, 5}, {2, 2}, {1, 9}};
    QCOMPARE(thread_key::find_type_row(2, relation), 0); // the first of two
    QCOMPARE(thread_key::find_type_row(5, relation), 1);
    QCOMPARE(thread_key::find_type_row(0, relation), -1);
    QCOMPARE(thread_key::find_main_row(1, relation), 5); // the first of two
    QCOMPARE(thread_key::find_main_row(2, relation), 2);
    QCOMPARE(thread_key::find_main_row(9, relation), -1);
    QCOMPARE(thread_key::find_type_row(0, {}), -1);
    QCOMPARE(thread_key::find_main_row(0, {}), -1);
}

void test_thread_key::relations_are_replaced_as_a_whole()
{
    thread_key hub;
    hub.change_table_relation({{0, 1}}, {{0, 2}}, {{0, 3}}, {{0, 4}}, {{0, 5}}, {{0, 6}, {1, 7}});
    QCOMPARE(hub.relation_area, (relation_list{{0, 1}}));
    QCOMPARE(hub.relation_distance, (relation_list{{0, 2}}));
    QCOMPARE(hub.relation_point, (relation_list{{0, 3}}));
    QCOMPARE(hub.relation_airline, (relation_list{{0, 4}}));
    QCOMPARE(hub.relation_track, (relation_list{{0, 5}}));
    QCOMPARE(hub.relation_fangyang, (relation_list{{0, 6}, {1, 7}}));

    // Nothing else writes them: not a tick, not a deletion.
    window_side window(hub, {u"面积"_s, u"面积"_s});
    window.call(hub, &thread_key::recv_check_all, true);
    window.erase_ticked(hub);
    QCOMPARE(hub.relation_area, (relation_list{{0, 0}, {1, 1}}));
    hub.change_table_relation({}, {}, {}, {}, {}, {});
    QVERIFY(hub.relation_area.isEmpty() && hub.relation_fangyang.isEmpty());
}

// Boxes and ticks

void test_thread_key::the_box_of_all_draws_and_erases_in_table_order()
{
    thread_key hub;
    const script_recorder map(hub);
    window_side window(
        hub, {u"放样"_s, u"航迹"_s, u"面积"_s, u"航线"_s, u"航点"_s, u"距离"_s, u"面积"_s});
    window.call(hub, &thread_key::recv_check_all, true);
    QCOMPARE(map.figures(),
             (QStringList{"draw 0 2 0,0", "draw 1 2 1,1", "draw 2 1 2,2", "draw 3 2 3,3",
                          "draw 4 3 4,4", "draw 5 2 5,5", "draw 6 1 6,6"}));
    QCOMPARE(window_side::ticks(window.model), "xxxxxxx");
    QCOMPARE(window.kind_ticks(), (QStringList{"xx", "x", "x", "x", "x", "x"}));

    script_recorder after(hub);
    window.call(hub, &thread_key::recv_check_all, false);
    QCOMPARE(after.figures(),
             (QStringList{"erase 2 0,0", "erase 2 1,1", "erase 1 2,2", "erase 2 3,3", "erase 3 4,4",
                          "erase 2 5,5", "erase 1 6,6"}));
    QCOMPARE(window_side::ticks(window.model), ".......");
    QCOMPARE(window.kind_ticks(), (QStringList{"..", ".", ".", ".", ".", "."}));
}

void test_thread_key::the_box_of_all_leaves_records_of_no_kind_unticked()
{
    // Drawn with the others, but the box does not write their tick, so they
    // stay out of totals, deletion and export until ticked by hand.
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"自制"_s, u"航点"_s, u"else"_s});
    window_side::tick(window.model, 3);
    const script_recorder map(hub);
    window.call(hub, &thread_key::recv_check_all, true);
    QCOMPARE(window_side::ticks(window.model), "x.xx");
    QCOMPARE(map.figures(),
             (QStringList{"draw 0 1 0,0", "draw 1 1 1,1", "draw 2 3 2,2", "draw 3 3 3,3"}));
    window.call(hub, &thread_key::recv_check_all, false);
    QCOMPARE(window_side::ticks(window.model), "...x");
}

void test_thread_key::a_record_of_no_kind_takes_the_map_kind_before_it()
{
    // It has none of its own, so the kind of the row before stays in force, and
    // none in the first row, even though the page cannot draw without one.
    thread_key hub;
    const script_recorder map(hub);
    window_side window(hub, {u"自制"_s, u"航点"_s, u"自制"_s, u"面积"_s, u"自制"_s});
    window.call(hub, &thread_key::recv_check_all, true);
    const QStringList drawn = {"draw 0  0,0", "draw 1 3 1,1", "draw 2 3 2,2", "draw 3 1 3,3",
                               "draw 4 1 4,4"};
    QCOMPARE(map.figures(), drawn);
    static const QRegularExpression empty_kind(R"(^beginLocatedCityPacket\("draw_0_\d+",\)$)");
    QVERIFY(empty_kind.match(map.scripts.constFirst()).hasMatch());

    // A change in the main table goes by the same rule.
    for (const int row : {0, 2, 4})
        window_side::tick(window.model, row);
    const script_recorder after(hub);
    window.call(hub, &thread_key::recv_all_table_change, true);
    QCOMPARE(after.figures(), drawn);
}

void test_thread_key::the_box_of_a_kind_data()
{
    QTest::addColumn<window_side::bulk_slot>("slot");
    QTest::addColumn<int>("own");
    QTest::addColumn<QString>("map_kind");
    QTest::newRow("area") << &thread_key::recv_check_mianji << 0 << "1";
    QTest::newRow("distance") << &thread_key::recv_check_juli << 1 << "2";
    QTest::newRow("point") << &thread_key::recv_check_hangdian << 2 << "3";
    QTest::newRow("airline") << &thread_key::recv_check_hangxian << 3 << "2";
    QTest::newRow("track") << &thread_key::recv_check_hangji << 4 << "2";
    QTest::newRow("fangyang") << &thread_key::recv_check_fangyang << 5 << "2";
}

void test_thread_key::the_box_of_a_kind()
{
    // Ticks its own rows and draws all of them, those before its first own row
    // with an empty map kind and those behind with its own. This reach beyond
    // its kind is how the boxes work.
    QFETCH(window_side::bulk_slot, slot);
    QFETCH(int, own);
    QFETCH(QString, map_kind);
    thread_key hub;
    window_side window(
        hub, {u"面积"_s, u"距离"_s, u"航点"_s, u"航线"_s, u"航迹"_s, u"放样"_s, u"自制"_s});
    for (const bool clicked : {true, false}) {
        const script_recorder map(hub);
        window.call(hub, slot, clicked);
        QStringList figures;
        QString main_ticks;
        QStringList kind_ticks;
        for (int row = 0; row < 7; ++row) {
            const QString kind = row < own ? QString() : map_kind;
            const QString numbers = QString::number(row) + "," + QString::number(row);
            figures += clicked ? "draw " + QString::number(row) + " " + kind + " " + numbers
                               : "erase " + kind + " " + numbers;
            main_ticks += clicked && row == own ? "x" : ".";
            if (row < 6)
                kind_ticks += clicked && row == own ? "x" : ".";
        }
        QCOMPARE(map.figures(), figures);
        QCOMPARE(window_side::ticks(window.model), main_ticks);
        QCOMPARE(window.kind_ticks(), kind_ticks);
    }
}

void test_thread_key::the_box_of_a_kind_draws_the_rows_of_all_kinds()
{
    thread_key hub;
    const script_recorder map(hub);
    window_side window(hub, {u"距离"_s, u"面积"_s});
    window.call(hub, &thread_key::recv_check_mianji, true);
    QCOMPARE(window_side::ticks(window.model), ".x");
    QCOMPARE(window.kind_ticks(), (QStringList{"x", ".", "", "", "", ""}));
    QCOMPARE(map.figures(), (QStringList{"draw 0  0,0", "draw 1 1 1,1"}));

    // The box writes ticks of its own kind only, and erases ticked rows of the
    // others all the same.
    window.call(hub, &thread_key::recv_check_juli, true);
    const script_recorder after(hub);
    window.call(hub, &thread_key::recv_check_mianji, false);
    QCOMPARE(window_side::ticks(window.model), "x.");
    QCOMPARE(after.figures(), (QStringList{"erase  0,0", "erase 1 1,1"}));
}

void test_thread_key::a_tick_in_the_main_table()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"距离"_s, u"面积"_s, u"自制"_s, u"航迹"_s});
    window_side::tick(window.model, 2);
    window_side::tick(window.model, 3);
    window_side::tick(window.of_kind[1], 0); // stale: the main table rules
    int written = 0;                         // the table that changed is read and not written
    connect(&window.model, &QStandardItemModel::itemChanged, this, [&written] { ++written; });
    const script_recorder map(hub);
    window.call(hub, &thread_key::recv_all_table_change, true);
    QCOMPARE(map.figures(), (QStringList{"erase 1 0,0", "erase 2 1,1", "draw 2 1 2,2",
                                         "draw 3 1 3,3", "erase 2 4,4"}));
    QCOMPARE(window_side::ticks(window.model), "..xx.");
    QCOMPARE(window.kind_ticks(), (QStringList{".x", ".", "", "", ".", ""}));
    QCOMPARE(written, 0);
}

void test_thread_key::a_tick_in_a_table_of_a_kind_data()
{
    QTest::addColumn<window_side::bulk_slot>("slot");
    QTest::addColumn<int>("own");
    QTest::addColumn<QString>("map_kind");
    QTest::newRow("area") << &thread_key::recv_area_table_change << 0 << "1";
    QTest::newRow("distance") << &thread_key::recv_dist_table_change << 1 << "2";
    QTest::newRow("point") << &thread_key::recv_point_table_change << 2 << "3";
    QTest::newRow("airline") << &thread_key::recv_line_table_change << 3 << "2";
    QTest::newRow("track") << &thread_key::recv_track_table_change << 4 << "2";
    QTest::newRow("fangyang") << &thread_key::recv_fangyang_table_change << 5 << "2";
}

void test_thread_key::a_tick_in_a_table_of_a_kind()
{
    // Only the rows of the table that changed go to the map, which the window
    // has just cleared: ticked rows of other tables keep their tick and lose
    // their figure. This narrowing is how the tables work.
    QFETCH(window_side::bulk_slot, slot);
    QFETCH(int, own);
    QFETCH(QString, map_kind);
    thread_key hub;
    const QStringList methods = {u"面积"_s, u"距离"_s, u"航点"_s, u"航线"_s, u"航迹"_s, u"放样"_s};
    window_side window(hub, methods + methods); // own rows are `own` and `own` + 6
    const int other = (own + 1) % 6;
    window_side::tick(window.model, other);
    window_side::tick(window.of_kind[std::size_t(other)], 0);
    window_side::tick(window.model, own); // stale: the table that changed rules
    window_side::tick(window.of_kind[std::size_t(own)], 1);

    const script_recorder map(hub);
    window.call(hub, slot, true);
    QCOMPARE(map.figures(), (QStringList{QString("erase %1 %2,%2").arg(map_kind).arg(own),
                                         QString("draw %2 %1 %2,%2").arg(map_kind).arg(own + 6)}));
    QString main_ticks(12, u'.');
    main_ticks[other] = u'x';
    main_ticks[own + 6] = u'x';
    QCOMPARE(window_side::ticks(window.model), main_ticks);
    QStringList kind_ticks(6, "..");
    kind_ticks[other] = "x.";
    kind_ticks[own] = ".x";
    QCOMPARE(window.kind_ticks(), kind_ticks);
}

void test_thread_key::a_change_that_failed_does_nothing()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"距离"_s});
    window_side::tick(window.model, 0);
    window_side::tick(window.of_kind[1], 0);
    const script_recorder map(hub);
    for (const window_side::bulk_slot slot :
         {&thread_key::recv_all_table_change, &thread_key::recv_area_table_change,
          &thread_key::recv_dist_table_change, &thread_key::recv_point_table_change,
          &thread_key::recv_line_table_change, &thread_key::recv_track_table_change,
          &thread_key::recv_fangyang_table_change})
        window.call(hub, slot, false);
    QCOMPARE(map.scripts, QStringList());
    QCOMPARE(window_side::ticks(window.model), "x.");
    QCOMPARE(window.kind_ticks(), (QStringList{".", "x", "", "", "", ""}));
}

void test_thread_key::rows_without_a_relation_go_on_to_the_map()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"面积"_s});
    hub.change_table_relation({{1, 1}}, {}, {}, {}, {}, {});
    script_recorder map(hub);
    window.call(hub, &thread_key::recv_check_all, true);
    QCOMPARE(map.figures(), (QStringList{"draw 0 1 0,0", "draw 1 1 1,1"}));
    QCOMPARE(window_side::ticks(window.model), "xx");
    QCOMPARE(window.kind_ticks().constFirst(), ".x");

    // From the other side there is no main row to draw.
    map.scripts.clear();
    window_side::tick(window.of_kind[0], 0);
    window.call(hub, &thread_key::recv_area_table_change, true);
    QCOMPARE(map.figures(), QStringList{"draw 1 1 1,1"});

    // Relations of an older, longer table point behind the end.
    hub.change_table_relation({{7, 0}, {0, 9}, {1, -4}}, {}, {}, {}, {}, {});
    map.scripts.clear();
    window.call(hub, &thread_key::recv_check_all, false);
    window.call(hub, &thread_key::recv_area_table_change, true);
    QCOMPARE(map.figures(), (QStringList{"erase 1 0,0", "erase 1 1,1"}));
    QCOMPARE(window_side::ticks(window.model), "..");
    QCOMPARE(window.of_kind[0].rowCount(), 2);
}

void test_thread_key::the_first_of_several_pairs_counts()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"面积"_s, u"面积"_s});
    hub.change_table_relation({{2, 0}, {0, 0}, {2, 1}}, {}, {}, {}, {}, {});
    script_recorder map(hub);
    window.call(hub, &thread_key::recv_check_mianji, true);
    QCOMPARE(window.kind_ticks().constFirst(), "..x");
    window.call(hub, &thread_key::recv_check_mianji, false);
    window_side::tick(window.of_kind[0], 2);
    map.scripts.clear();
    window.call(hub, &thread_key::recv_area_table_change, true);
    QCOMPARE(window_side::ticks(window.model), "x..");
    // Row 0 and row 2 of the table both belong to main row 0, row 1 to none.
    QCOMPARE(map.figures(), (QStringList{"erase 1 0,0", "draw 0 1 0,0"}));
}

void test_thread_key::tables_longer_than_the_lists()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"距离"_s, u"航点"_s});
    window.table_list.resize(2);
    window.data_msg.resize(1);
    script_recorder map(hub);
    window.call(hub, &thread_key::recv_check_all, true);
    QCOMPARE(map.figures(), QStringList{"draw 0 1 0,0"});
    QCOMPARE(window_side::ticks(window.model), "xx.");
    window_side::tick(window.of_kind[2], 0);
    window.call(hub, &thread_key::recv_all_table_change, true);
    window.call(hub, &thread_key::recv_point_table_change, true);
    window.call(hub, &thread_key::recv_check_fangyang, false);
    QCOMPARE(map.figures(), (QStringList{"draw 0 1 0,0", "draw 0 1 0,0", "erase  0,0"}));
}

void test_thread_key::empty_tables()
{
    thread_key hub;
    window_side window(hub, {});
    const script_recorder map(hub);
    const recorder deleted(hub, &thread_key::send_delete_table_data);
    for (const bool clicked : {true, false}) {
        for (const window_side::bulk_slot slot :
             {&thread_key::recv_check_all, &thread_key::recv_check_mianji,
              &thread_key::recv_check_juli, &thread_key::recv_check_hangdian,
              &thread_key::recv_check_hangxian, &thread_key::recv_check_hangji,
              &thread_key::recv_check_fangyang, &thread_key::recv_all_table_change,
              &thread_key::recv_area_table_change, &thread_key::recv_dist_table_change,
              &thread_key::recv_point_table_change, &thread_key::recv_line_table_change,
              &thread_key::recv_track_table_change, &thread_key::recv_fangyang_table_change})
            window.call(hub, slot, clicked);
    }
    QCOMPARE(map.scripts, QStringList());
    QVERIFY(deleted.calls.empty());

    // The deletion answers even so, and the window rebuilds.
    window.erase_ticked(hub);
    QCOMPARE(map.scripts, QStringList());
    QCOMPARE(deleted.calls.size(), std::size_t(1));
    const std::tuple<QList<measuringData>, QStringList, QStringList, QList<QList<point_msg>>> none;
    QVERIFY(deleted.calls.front() == none);
}

void test_thread_key::the_log_line()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s});
    for (const window_side::bulk_slot slot :
         {&thread_key::recv_check_all, &thread_key::recv_check_mianji, &thread_key::recv_check_juli,
          &thread_key::recv_check_hangdian, &thread_key::recv_check_hangxian,
          &thread_key::recv_check_hangji, &thread_key::recv_check_fangyang,
          &thread_key::recv_all_table_change, &thread_key::recv_area_table_change,
          &thread_key::recv_dist_table_change, &thread_key::recv_point_table_change,
          &thread_key::recv_line_table_change, &thread_key::recv_track_table_change,
          &thread_key::recv_fangyang_table_change}) {
        const log_capture log;
        window.call(hub, slot, true);
        window.call(hub, slot, false);
        QCOMPARE(log.texts(), (QStringList{"clicked true", "clicked false"}));
        QCOMPARE(log.lines().constFirst().type, QtDebugMsg);
    }
}

void test_thread_key::twenty_thousand_rows()
{
    thread_key hub;
    QStringList methods;
    for (int row = 0; row < 20'000; ++row)
        methods += row % 100 == 0 ? u"航点"_s : u"面积"_s;
    window_side window(hub, methods);
    int drawn = 0;
    int erased = 0;
    connect(&hub, &thread_key::draw_map_signal, this, [&drawn] { ++drawn; });
    connect(&hub, &thread_key::delete_map_signal, this, [&erased] { ++erased; });

    window.call(hub, &thread_key::recv_check_all, true);
    QCOMPARE(drawn, 60'000);
    window.call(hub, &thread_key::recv_all_table_change, true);
    QCOMPARE(drawn, 120'000);
    window.call(hub, &thread_key::recv_area_table_change, true);
    QCOMPARE(drawn, 120'000 + 3 * 19'800);
    window.call(hub, &thread_key::recv_check_mianji, false);
    QCOMPARE(erased, 20'000);
    QCOMPARE(window_side::ticks(window.model).count(u'x'), 200);
}

/// Notes with which roles the check cells are read and written.
class role_recorder : public QStandardItemModel
{
    Q_OBJECT

public:
    using QStandardItemModel::QStandardItemModel;

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override
    {
        read.insert(role);
        return QStandardItemModel::data(index, role);
    }
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        written.insert(role);
        return QStandardItemModel::setData(index, value, role);
    }

    mutable QSet<int> read;
    QSet<int> written;
};

void test_thread_key::ticks_are_shown_values_and_edits()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s});
    role_recorder all(1, 2);
    role_recorder areas(1, 2);
    const auto call = [&](window_side::bulk_slot slot) {
        (hub.*slot)(true, &all, &areas, &window.of_kind[1], &window.of_kind[2], &window.of_kind[3],
                    &window.of_kind[4], &window.of_kind[5], window.table_list, window.data_msg);
    };
    call(&thread_key::recv_check_all);
    QCOMPARE(all.written, QSet<int>{Qt::EditRole});
    QCOMPARE(areas.written, QSet<int>{Qt::EditRole});
    call(&thread_key::recv_all_table_change);
    QCOMPARE(all.read, QSet<int>{Qt::DisplayRole});
    call(&thread_key::recv_area_table_change);
    QCOMPARE(areas.read, QSet<int>{Qt::DisplayRole});
    all.read.clear();
    hub.check_countmsg(&all, window.table_list, window.data_msg);
    QCOMPARE(all.read, QSet<int>{Qt::DisplayRole});
    all.read.clear();
    hub.recv_delete_sign_from_velmo(&all, window.table_list, window.data_msg,
                                    window.data_msg_altitude, window.point_msg_all);
    QCOMPARE(all.read, QSet<int>{Qt::DisplayRole});
    QCOMPARE(all.written, QSet<int>{Qt::EditRole});
}

// Deletion

void test_thread_key::deletion()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"航点"_s, u"自制"_s, u"航线"_s, u"面积"_s});
    window_side::tick(window.model, 1);
    window_side::tick(window.model, 3);
    QStringList order;
    const script_recorder map(hub);
    connect(&hub, &thread_key::delete_map_signal, this, [&order] { order += "erase"; });
    connect(&hub, &thread_key::send_delete_table_data, this, [&order] { order += "lists"; });
    const recorder deleted(hub, &thread_key::send_delete_table_data);
    window.erase_ticked(hub);

    QCOMPARE(map.figures(), (QStringList{"erase 2 3,3", "erase 3 1,1"})); // the last row first
    QCOMPARE(order, (QStringList{"erase", "erase", "lists"}));
    QCOMPARE(deleted.calls.size(), std::size_t(1));
    const auto& [table_list, data_msg, data_msg_altitude, point_msg_all] = deleted.calls.front();
    const QList<int> kept = {0, 2, 4};
    QCOMPARE(table_list.size(), kept.size());
    QCOMPARE(data_msg.size(), kept.size());
    QCOMPARE(data_msg_altitude.size(), kept.size());
    QCOMPARE(point_msg_all.size(), kept.size());
    for (qsizetype i = 0; i < kept.size(); ++i) {
        QCOMPARE(table_list.at(i), window.table_list.at(kept.at(i)));
        QCOMPARE(data_msg.at(i), window.data_msg.at(kept.at(i)));
        QCOMPARE(data_msg_altitude.at(i), window.data_msg_altitude.at(kept.at(i)));
        QCOMPARE(point_msg_all.at(i), window.point_msg_all.at(kept.at(i)));
    }
    // The window replaces its lists and rebuilds; the hub touches no table.
    QCOMPARE(window_side::ticks(window.model), ".x.x.");
    QCOMPARE(window.table_list.size(), 5);
}

void test_thread_key::deletion_takes_the_map_kind_from_the_row_alone()
{
    // Unlike a tick: a record of no kind has an empty one wherever it stands.
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"自制"_s, u"距离"_s, u"航点"_s, u"航线"_s, u"航迹"_s,
                             u"放样"_s, u"自制"_s});
    for (int row = 0; row < 8; ++row)
        window_side::tick(window.model, row);
    const script_recorder map(hub);
    const recorder deleted(hub, &thread_key::send_delete_table_data);
    window.erase_ticked(hub);
    QCOMPARE(map.figures(),
             (QStringList{"erase  7,7", "erase 2 6,6", "erase 2 5,5", "erase 2 4,4", "erase 3 3,3",
                          "erase 2 2,2", "erase  1,1", "erase 1 0,0"}));
    QVERIFY(std::get<0>(deleted.calls.front()).isEmpty());
    QVERIFY(std::get<3>(deleted.calls.front()).isEmpty());
}

void test_thread_key::deletion_beyond_the_lists()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"面积"_s, u"面积"_s});
    for (int row = 1; row < 3; ++row)
        window_side::tick(window.model, row);
    window.table_list.resize(2);
    window.data_msg.resize(2);
    window.point_msg_all.resize(1);
    const script_recorder map(hub);
    const recorder deleted(hub, &thread_key::send_delete_table_data);
    window.erase_ticked(hub);
    QCOMPARE(map.figures(), QStringList{"erase 1 1,1"});
    const auto& [table_list, data_msg, data_msg_altitude, point_msg_all] = deleted.calls.front();
    QCOMPARE(table_list.size(), 1);
    QCOMPARE(data_msg, QStringList{"0,0"});
    QCOMPARE(data_msg_altitude, QStringList{"0,0,1.0\n"});
    QCOMPARE(point_msg_all.size(), 1);
}

void test_thread_key::deletion_of_many_rows()
{
    thread_key hub;
    window_side window(hub, QStringList(20'000, u"面积"_s));
    for (int row = 0; row < 20'000; row += 2)
        window_side::tick(window.model, row);
    const recorder deleted(hub, &thread_key::send_delete_table_data);
    window.erase_ticked(hub);
    const QList<measuringData>& table_list = std::get<0>(deleted.calls.front());
    QCOMPARE(table_list.size(), 10'000);
    for (qsizetype i = 0; i < table_list.size(); ++i)
        QCOMPARE(table_list.at(i).name, QString::number(2 * i + 1));
}

// Totals

void test_thread_key::totals()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"航点"_s, u"距离"_s});
    window.table_list[0].numpoint = "40";
    window.table_list[0].areameter = "1234";
    window.table_list[0].areamu = "1.85";
    window.table_list[0].distance = "140.5";
    window.table_list[1].numpoint = "1";
    window.table_list[2].numpoint = "12";
    const recorder information(hub, &thread_key::information);

    window_side::tick(window.model, 1);
    hub.check_countmsg(&window.model, window.table_list, window.data_msg);
    window_side::tick(window.model, 0);
    hub.check_countmsg(&window.model, window.table_list, window.data_msg);

    QCOMPARE(information.calls.size(), std::size_t(2));
    QVERIFY(information.calls.at(0) == std::tuple(u"1"_s, u"0"_s, u"0"_s, u"0"_s, u"53点"_s,
                                                  u"3条"_s, QList<widgetData>{{"1,1", 1}}));
    QVERIFY(information.calls.at(1) == std::tuple(u"2"_s, u"1234"_s, u"1.85"_s, u"140.5"_s,
                                                  u"53点"_s, u"3条"_s,
                                                  QList<widgetData>{{"0,0", 0}, {"1,1", 1}}));
}

void test_thread_key::totals_of_nothing_ticked()
{
    // Zero points and records although there are three: the panels are empty
    // until something is ticked.
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"航点"_s, u"距离"_s});
    window.table_list[0].numpoint = "40";
    const recorder information(hub, &thread_key::information);
    hub.check_countmsg(&window.model, window.table_list, window.data_msg);
    const QStandardItemModel empty;
    hub.check_countmsg(const_cast<QStandardItemModel*>(&empty), window.table_list, window.data_msg);
    const auto zero =
        std::tuple(u"0"_s, u"0"_s, u"0"_s, u"0"_s, u"0点"_s, u"0条"_s, QList<widgetData>());
    QCOMPARE(information.calls.size(), std::size_t(2));
    QVERIFY(information.calls.at(0) == zero);
    QVERIFY(information.calls.at(1) == zero);
}

void test_thread_key::totals_keep_six_digits_and_whole_metres()
{
    thread_key hub;
    window_side window(hub, {u"面积"_s, u"面积"_s});
    for (measuringData& record : window.table_list) {
        record.areameter = "900.5"; // with a decimal point, and so counted as 0
        record.areamu = "617283.9";
        record.distance = "61728.39";
    }
    const recorder information(hub, &thread_key::information);
    window_side::tick(window.model, 0);
    window_side::tick(window.model, 1);
    hub.check_countmsg(&window.model, window.table_list, window.data_msg);
    QCOMPARE(information.calls.size(), std::size_t(1));
    QCOMPARE(std::get<1>(information.calls.at(0)), "0");
    QCOMPARE(std::get<2>(information.calls.at(0)), "1.23457e+06");
    QCOMPARE(std::get<3>(information.calls.at(0)), "123457");
}

void test_thread_key::totals_are_translated()
{
    thread_key hub;
    window_side window(hub, {u"航点"_s});
    window.table_list[0].numpoint = "1";
    const recorder information(hub, &thread_key::information);
    unit_translator english;
    QVERIFY(QCoreApplication::installTranslator(&english));
    hub.check_countmsg(&window.model, window.table_list, window.data_msg);
    window_side::tick(window.model, 0);
    hub.check_countmsg(&window.model, window.table_list, window.data_msg);
    QCoreApplication::removeTranslator(&english);
    QCOMPARE(std::get<4>(information.calls.at(0)), "0 points");
    QCOMPARE(std::get<5>(information.calls.at(0)), "0 records");
    QCOMPARE(std::get<4>(information.calls.at(1)), "1 points");
    QCOMPARE(std::get<5>(information.calls.at(1)), "1 records");
}

void test_thread_key::the_class_that_is_not_made_has_the_same_signal()
{
    for (const QMetaObject* meta :
         {&thread_key::staticMetaObject, &other_information::staticMetaObject})
        QVERIFY2(meta->indexOfSignal("information(QString,QString,QString,QString,QString,QString,"
                                     "QList<widgetData>)") >= 0,
                 meta->className());
}

// Forwarding

void test_thread_key::signals_in_declaration_order()
{
    QStringList names;
    const QMetaObject& meta = thread_key::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == QMetaMethod::Signal)
            names += QString::fromLatin1(meta.method(i).name());
    }
    QCOMPARE(names, (QStringList{"data_finished",
                                 "key_set_progressbar",
                                 "send_cmd_to_serial_thread",
                                 "send_cmd_to_file_import_thread",
                                 "send_cmd_to_import_data_to_device_thread",
                                 "send_LED_control",
                                 "send_LED_2_control",
                                 "send_cmd_to_picture_export_thread",
                                 "send_cmd_to_file_export_thread",
                                 "send_cmd_to_file_export_thread_check_flag",
                                 "send_cmd_to_software_upgrade_thread",
                                 "send_cmd_to_software_upgrade_thread_down_file",
                                 "send_set_ui_to_updata_form",
                                 "send_cloud_updata_to_hardware_updata_thread",
                                 "send_sure_to_hardware_updata_thread",
                                 "send_local_updata_to_hardware_updata_thread",
                                 "send_add_comboBox_to_hardware_updata_form",
                                 "send_updata_progress_hardware_updata_form",
                                 "information",
                                 "draw_map_signal",
                                 "delete_map_signal",
                                 "re_init_model_table",
                                 "send_delete_table_data"}));
}

void test_thread_key::arguments_have_their_names()
{
    // In the spelling in force, capitals among them. Arguments that are not in
    // the table have names of our own choosing.
    const QMap<QByteArray, QByteArrayList> expected{
        {"data_finished", {"", "table_list", "data_msg", "data_msg_altitude", "point_msg_all"}},
        {"send_cmd_to_serial_thread",
         {"", "table_list", "data_msg", "data_msg_altitude", "point_msg_all"}},
        {"send_cmd_to_file_import_thread", {"", "mode", "js", "sys_index"}},
        {"send_cmd_to_import_data_to_device_thread", {"model", "Table_list", "Data_msg_altitude"}},
        {"send_cmd_to_picture_export_thread",
         {"m_parentWebEngineView", "m_parentwidgetView", "picture_flag", "file_path"}},
        {"send_cmd_to_file_export_thread",
         {"cmd", "mode", "", "", "", "", "model", "table_list", "data_msg_altitude", "file_path",
          "point_msg_all"}},
        {"send_set_ui_to_updata_form", {"bytesReceived", "bytesTotal", "progressBar"}},
        {"send_sure_to_hardware_updata_thread", {"combobox"}},
        {"re_init_model_table", {}},
        {"send_delete_table_data",
         {"table_list", "data_msg", "data_msg_altitude", "point_msg_all"}}};
    int found = 0;
    const QMetaObject& meta = thread_key::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const auto wanted = expected.constFind(method.name());
        if (method.methodType() != QMetaMethod::Signal || wanted == expected.cend())
            continue;
        ++found;
        const QByteArrayList names = method.parameterNames();
        QCOMPARE(names.size(), wanted->size());
        for (qsizetype k = 0; k < names.size(); ++k) {
            if (!wanted->at(k).isEmpty())
                QCOMPARE(names.at(k), wanted->at(k));
        }
    }
    QCOMPARE(found, expected.size());
}

void test_thread_key::arguments_are_known_to_the_meta_object()
{
    const QMetaObject& meta = thread_key::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        for (int k = 0; k < method.parameterCount(); ++k)
            QVERIFY2(method.parameterMetaType(k).isValid(), method.methodSignature().constData());
    }
}

void test_thread_key::reads_go_to_the_serial_worker()
{
    thread_key hub;
    const recorder sent(hub, &thread_key::send_cmd_to_serial_thread);
    const window_side window(hub, {u"面积"_s, u"航点"_s});
    hub.recv_read_data_sign_from_velmo(window.table_list, window.data_msg, window.data_msg_altitude,
                                       window.point_msg_all);
    QCOMPARE(sent.calls.size(), std::size_t(1));
    QVERIFY(sent.calls.front() == std::tuple(1, window.table_list, window.data_msg,
                                             window.data_msg_altitude, window.point_msg_all));
}

void test_thread_key::results_come_back_with_their_origin()
{
    thread_key hub;
    const recorder finished(hub, &thread_key::data_finished);
    const window_side window(hub, {u"面积"_s, u"航点"_s});
    hub.recv_read_data_finished(window.table_list, window.data_msg, window.data_msg_altitude,
                                window.point_msg_all);
    hub.recv_import_data_finished(window.table_list, window.data_msg, window.data_msg_altitude,
                                  window.point_msg_all);
    QCOMPARE(finished.calls.size(), std::size_t(2));
    for (const int origin : {0, 1})
        QVERIFY(finished.calls.at(std::size_t(origin)) ==
                std::tuple(origin, window.table_list, window.data_msg, window.data_msg_altitude,
                           window.point_msg_all));
}

void test_thread_key::lights_and_progress()
{
    thread_key hub;
    const recorder progress(hub, &thread_key::key_set_progressbar);
    const recorder first(hub, &thread_key::send_LED_control);
    const recorder second(hub, &thread_key::send_LED_2_control);
    hub.recv_set_progressbar(42);
    hub.recv_LED_control_from_serial(true);
    hub.recv_LED_2_control_from_serial(false);
    hub.recv_LED_2_control_from_serial(true);
    QVERIFY(progress.calls == std::vector{std::tuple(42)});
    QVERIFY(first.calls == std::vector{std::tuple(true)});
    QVERIFY((second.calls == std::vector{std::tuple(false), std::tuple(true)}));
}

void test_thread_key::imports_and_uploads()
{
    thread_key hub;
    const recorder import(hub, &thread_key::send_cmd_to_file_import_thread);
    const recorder upload(hub, &thread_key::send_cmd_to_import_data_to_device_thread);
    JsonFileManager systems;
    window_side window(hub, {u"面积"_s});
    hub.recv_import_file_sign_from_velmo("a.csv", 3, &systems, 7);
    hub.recv_device_sign_from_velmo(&window.model, window.table_list, window.data_msg_altitude);
    QCOMPARE(import.calls.size(), std::size_t(1));
    QVERIFY(import.calls.front() == std::tuple(u"a.csv"_s, 3, &systems, 7));
    QCOMPARE(upload.calls.size(), std::size_t(1));
    QVERIFY(upload.calls.front() ==
            std::tuple(&window.model, window.table_list, window.data_msg_altitude));
}

void test_thread_key::exports_carry_their_command()
{
    using export_slot = decltype(&thread_key::recv_kml_sign_from_output);
    // 2 is nobody's: pictures have a signal of their own.
    const std::array<std::pair<export_slot, int>, 7> slots_and_commands{{
        {&thread_key::recv_kml_sign_from_output, 1},
        {&thread_key::recv_one_csv_sign_from_output, 3},
        {&thread_key::recv_more_csv_sign_from_output, 4},
        {&thread_key::recv_one_dxf_sign_from_output, 5},
        {&thread_key::recv_more_dxf_sign_from_output, 6},
        {&thread_key::recv_one_gpx_sign_from_output, 7},
        {&thread_key::recv_more_gpx_sign_from_output, 8},
    }};
    thread_key hub;
    const recorder sent(hub, &thread_key::send_cmd_to_file_export_thread);
    const recorder flags(hub, &thread_key::send_cmd_to_file_export_thread_check_flag);
    window_side window(hub, {u"面积"_s});
    model_param parameters;
    parameters.projection.l0 = 117.0F;
    parameters.param4.rt = 4.5;
    for (const auto& [slot, command] : slots_and_commands) {
        (hub.*slot)("out.file", 4, 1.5, 2.5, 3.5, parameters, &window.model, window.table_list,
                    window.data_msg_altitude, window.point_msg_all);
        const auto& [cmd, mode, cz, dz, pl, param, model, table_list, altitude, path, points] =
            sent.calls.back();
        QCOMPARE(cmd, command);
        QCOMPARE(mode, 4);
        QCOMPARE(cz, 1.5);
        QCOMPARE(dz, 2.5);
        QCOMPARE(pl, 3.5);
        QCOMPARE(param.projection.l0, 117.0F);
        QCOMPARE(param.param4.rt, 4.5);
        QCOMPARE(model, &window.model);
        QCOMPARE(table_list, window.table_list);
        QCOMPARE(altitude, window.data_msg_altitude);
        QCOMPARE(path, "out.file");
        QCOMPARE(points, window.point_msg_all);
    }
    QCOMPARE(sent.calls.size(), slots_and_commands.size());
    QVERIFY(flags.calls.empty());
}

void test_thread_key::excel_sends_its_choices_first()
{
    // The worker reads the choices when the command arrives, so they must be
    // there by then.
    thread_key hub;
    QStringList order;
    connect(&hub, &thread_key::send_cmd_to_file_export_thread_check_flag, this,
            [&order] { order += "choices"; });
    connect(&hub, &thread_key::send_cmd_to_file_export_thread, this,
            [&order] { order += "command"; });
    const recorder sent(hub, &thread_key::send_cmd_to_file_export_thread);
    const recorder flags(hub, &thread_key::send_cmd_to_file_export_thread_check_flag);
    window_side window(hub, {u"面积"_s});
    model_param parameters;
    parameters.type = 2;
    hub.recv_excel_sign_from_output({1, 0, 1}, "out.xlsx", 1, 1.5, 2.5, 3.5, parameters,
                                    &window.model, window.table_list, window.data_msg_altitude,
                                    window.point_msg_all, "field system");
    QCOMPARE(order, (QStringList{"choices", "command"}));
    QVERIFY(flags.calls.front() == std::tuple(QList<int>{1, 0, 1}, u"field system"_s));
    const auto& [cmd, mode, cz, dz, pl, param, model, table_list, altitude, path, points] =
        sent.calls.front();
    QCOMPARE(cmd, 9);
    QCOMPARE(mode, 1);
    QCOMPARE(cz, 1.5);
    QCOMPARE(dz, 2.5);
    QCOMPARE(pl, 3.5);
    QCOMPARE(int(param.type), 2);
    QCOMPARE(model, &window.model);
    QCOMPARE(table_list, window.table_list);
    QCOMPARE(altitude, window.data_msg_altitude);
    QCOMPARE(path, "out.xlsx");
    QCOMPARE(points, window.point_msg_all);
}

void test_thread_key::pictures_move_the_path_to_the_end()
{
    thread_key hub;
    const recorder sent(hub, &thread_key::send_cmd_to_picture_export_thread);
    graphic_widget drawing;
    hub.recv_picture_sign_from_output("out.png", nullptr, &drawing, 2);
    QCOMPARE(sent.calls.size(), std::size_t(1));
    QVERIFY(sent.calls.front() ==
            std::tuple(static_cast<QWebEngineView*>(nullptr), &drawing, 2, u"out.png"_s));
}

void test_thread_key::updates()
{
    thread_key hub;
    const recorder upgrade(hub, &thread_key::send_cmd_to_software_upgrade_thread);
    const recorder down_file(hub, &thread_key::send_cmd_to_software_upgrade_thread_down_file);
    const recorder progress(hub, &thread_key::send_set_ui_to_updata_form);
    const recorder cloud(hub, &thread_key::send_cloud_updata_to_hardware_updata_thread);
    const recorder sure(hub, &thread_key::send_sure_to_hardware_updata_thread);
    const recorder local(hub, &thread_key::send_local_updata_to_hardware_updata_thread);
    const recorder combo_box(hub, &thread_key::send_add_comboBox_to_hardware_updata_form);
    const recorder percent(hub, &thread_key::send_updata_progress_hardware_updata_form);

    hub.recv_software_upgrade_sign_from_velmo("3.2.3", 1);
    QVERIFY(upgrade.calls == std::vector{std::tuple(u"3.2.3"_s, 1)});
    QCOMPARE(down_file.calls.size(), std::size_t(0));
    hub.recv_updata_form_down_file();
    QCOMPARE(down_file.calls.size(), std::size_t(1));
    hub.recv_set_ui_from_soft_upgrade_thread("1 MB", "4 MB", 25);
    QVERIFY(progress.calls == std::vector{std::tuple(u"1 MB"_s, u"4 MB"_s, 25)});

    hub.recv_cloud_updata_from_hardware_updata();
    QCOMPARE(cloud.calls.size(), std::size_t(1));
    QCOMPARE(local.calls.size(), std::size_t(0));
    hub.recv_local_updata_from_hardware_updata();
    QCOMPARE(local.calls.size(), std::size_t(1));
    QCOMPARE(cloud.calls.size(), std::size_t(1));
    hub.recv_sure_from_hardware_updata("image 7");
    QVERIFY(sure.calls == std::vector{std::tuple(u"image 7"_s)});
    hub.recv_add_comboBox_value_from_hardware_upgrade_thread("image 8");
    QVERIFY(combo_box.calls == std::vector{std::tuple(u"image 8"_s)});
    hub.recv_updata_progress_from_hardware_upgrade_thread(77);
    QVERIFY(percent.calls == std::vector{std::tuple(77)});
}

void test_thread_key::the_makers_page()
{
    thread_key hub;
    address_catcher browser;
    const QUrl page(VELMO_MAKER_URL);
    QDesktopServices::setUrlHandler(page.scheme(), &browser, "opened");
    hub.recv_marlund_sign_from_velmo();
    QDesktopServices::unsetUrlHandler(page.scheme());
    QCOMPARE(browser.addresses, QList<QUrl>{page});
}

void test_thread_key::the_thread_logs_and_ends()
{
    // The thread does nothing but log: the hub stays in the thread that made it.
    const log_capture log;
    {
        thread_key hub;
        hub.start();
        QVERIFY(hub.wait(10'000));
        QCOMPARE(hub.thread(), QThread::currentThread());
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.texts().constFirst().startsWith("thread_key ID:"));
        QCOMPARE(log.lines().constFirst().type, QtDebugMsg);
    }
    QCOMPARE(log.texts().constLast(), "thread_key is destroyed.");
}

QTEST_MAIN(test_thread_key)
#include "test_thread_key.moc"
