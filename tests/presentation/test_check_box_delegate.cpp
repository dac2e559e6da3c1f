// The delegate of the ticks by itself: what it draws, what it answers to each
// event, and the order of its writes.

#include "presentation/check_box_delegate.h"
#include "presentation/other_information.h"
#include "presentation/table_display.h"
#include "support/log_capture.h"

#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMetaMethod>
#include <QMouseEvent>
#include <QPainter>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStyleOptionButton>
#include <QTableView>
#include <QTest>

namespace {

/// Odd differences to the indicator's size show which way halves are cut.
constexpr QRect cell(3, 5, 42, 25);

QRect indicator_place()
{
    const QStyleOptionButton button;
    const QRect indicator =
        QApplication::style()->subElementRect(QStyle::SE_CheckBoxIndicator, &button);
    return {cell.x() + cell.width() / 2 - indicator.width() / 2,
            cell.y() + cell.height() / 2 - indicator.height() / 2, indicator.width(),
            indicator.height()};
}

QImage blank()
{
    QImage image(60, 40, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

QStyleOptionViewItem option()
{
    QStyleOptionViewItem made;
    made.rect = cell;
    return made;
}

} // namespace

class test_check_box_delegate : public QObject
{
    Q_OBJECT

private slots:
    void draws_the_styles_check_box_data();
    void draws_the_styles_check_box();
    void answers_to_events_data();
    void answers_to_events();
    void writes_emits_and_writes_again();
    void tells_the_success_and_not_the_tick();
    void tells_a_failure();
    void its_signal_is_all_that_it_adds();
    void space_ticks_all_that_is_selected();
    void other_columns_are_the_base_class_data();
    void other_columns_are_the_base_class();
    void unused_threads_log_their_labels();
};

void test_check_box_delegate::draws_the_styles_check_box_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("on");
    QTest::newRow("no value") << QVariant() << false;
    QTest::newRow("false") << QVariant(false) << false;
    QTest::newRow("true") << QVariant(true) << true;
}

void test_check_box_delegate::draws_the_styles_check_box()
{
    QFETCH(QVariant, value);
    QFETCH(bool, on);
    QStandardItemModel model(1, 2);
    model.setData(model.index(0, 0), value);

    QImage drawn = blank();
    {
        QPainter painter(&drawn);
        CheckBoxDelegate().paint(&painter, option(), model.index(0, 0));
    }
    QImage expected = blank();
    {
        QPainter painter(&expected);
        QStyleOptionButton button;
        button.rect = indicator_place();
        button.state = QStyle::State_Enabled | (on ? QStyle::State_On : QStyle::State_Off);
        QApplication::style()->drawControl(QStyle::CE_CheckBox, &button, &painter);
    }
    QCOMPARE(drawn, expected);
    QVERIFY(drawn != blank());
}

void test_check_box_delegate::answers_to_events_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("button_or_key");
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<bool>("toggles");
    const QPoint inside = indicator_place().center();
    const QPoint outside = cell.topLeft() + QPoint(1, 1);
    const int release = QEvent::MouseButtonRelease;
    const int double_click = QEvent::MouseButtonDblClick;
    const int key = QEvent::KeyPress;
    QTest::newRow("release on the box") << release << int(Qt::LeftButton) << inside << true << true;
    QTest::newRow("release at its last pixel")
        << release << int(Qt::LeftButton) << indicator_place().bottomRight() << true << true;
    QTest::newRow("release one pixel beside it")
        << release << int(Qt::LeftButton) << indicator_place().bottomRight() + QPoint(1, 0) << true
        << false;
    QTest::newRow("release outside") << release << int(Qt::LeftButton) << outside << true << false;
    QTest::newRow("release of the right button")
        << release << int(Qt::RightButton) << inside << true << false;
    QTest::newRow("double click") << double_click << int(Qt::LeftButton) << inside << true << false;
    QTest::newRow("double click of the right button")
        << double_click << int(Qt::RightButton) << inside << true << false;
    QTest::newRow("press") << int(QEvent::MouseButtonPress) << int(Qt::LeftButton) << inside
                           << false << false;
    QTest::newRow("space") << key << int(Qt::Key_Space) << QPoint() << true << true;
    QTest::newRow("select") << key << int(Qt::Key_Select) << QPoint() << true << true;
    QTest::newRow("return") << key << int(Qt::Key_Return) << QPoint() << false << false;
    QTest::newRow("letter") << key << int(Qt::Key_A) << QPoint() << false << false;
    QTest::newRow("key release") << int(QEvent::KeyRelease) << int(Qt::Key_Space) << QPoint()
                                 << false << false;
}

void test_check_box_delegate::answers_to_events()
{
    QFETCH(int, type);
    QFETCH(int, button_or_key);
    QFETCH(QPoint, place);
    QFETCH(bool, answer);
    QFETCH(bool, toggles);
    QStandardItemModel model(1, 1);
    CheckBoxDelegate delegate;
    const QModelIndex index = model.index(0, 0);
    std::unique_ptr<QEvent> event;
    if (type == QEvent::KeyPress || type == QEvent::KeyRelease)
        event = std::make_unique<QKeyEvent>(QEvent::Type(type), button_or_key, Qt::NoModifier);
    else
        event = std::make_unique<QMouseEvent>(QEvent::Type(type), QPointF(place), QPointF(place),
                                              Qt::MouseButton(button_or_key),
                                              Qt::MouseButton(button_or_key), Qt::NoModifier);
    QCOMPARE(delegate.editorEvent(event.get(), &model, option(), index), answer);
    QCOMPARE(index.data().toBool(), toggles);
    if (toggles) {
        delegate.editorEvent(event.get(), &model, option(), index);
        QVERIFY(!index.data().toBool());
    }
}

void test_check_box_delegate::writes_emits_and_writes_again()
{
    QStandardItemModel model(1, 1);
    CheckBoxDelegate delegate;
    QStringList order;
    connect(&model, &QStandardItemModel::itemChanged, this, [&](QStandardItem* item) {
        order += item->data(Qt::DisplayRole).toBool() ? "on" : "off";
    });
    // What a slot does to the cell is overwritten by the second write.
    connect(&delegate, &CheckBoxDelegate::checkboxStateChanged, this, [&] {
        order += "signal";
        model.setData(model.index(0, 0), false);
    });
    QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier);
    QVERIFY(delegate.editorEvent(&space, &model, option(), model.index(0, 0)));
    QCOMPARE(order, (QStringList{"on", "signal", "off", "on"}));
    QVERIFY(model.index(0, 0).data().toBool());
}

void test_check_box_delegate::tells_the_success_and_not_the_tick()
{
    QStandardItemModel model(1, 1);
    CheckBoxDelegate delegate;
    QSignalSpy changed(&delegate, &CheckBoxDelegate::checkboxStateChanged);
    QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier);
    for (int round = 0; round < 2; ++round)
        delegate.editorEvent(&space, &model, option(), model.index(0, 0));
    QCOMPARE(changed.size(), 2);
    QCOMPARE(changed[0][0].toBool(), true);
    QCOMPARE(changed[1][0].toBool(), true); // the untick succeeded as well
}

void test_check_box_delegate::tells_a_failure()
{
    // A model that takes nothing.
    class refusing_model : public QStandardItemModel
    {
    public:
        using QStandardItemModel::QStandardItemModel;
        bool setData(const QModelIndex& /*index*/, const QVariant& /*value*/, int /*role*/) override
        {
            return false;
        }
    };
    refusing_model model(1, 1);
    CheckBoxDelegate delegate;
    QSignalSpy changed(&delegate, &CheckBoxDelegate::checkboxStateChanged);
    QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier);
    QVERIFY(!delegate.editorEvent(&space, &model, option(), model.index(0, 0)));
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed[0][0].toBool(), false);
}

void test_check_box_delegate::its_signal_is_all_that_it_adds()
{
    const QMetaObject& meta = CheckBoxDelegate::staticMetaObject;
    QCOMPARE(meta.superClass(), &QStyledItemDelegate::staticMetaObject);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    const QMetaMethod signal = meta.method(meta.methodOffset());
    QCOMPARE(signal.methodType(), QMetaMethod::Signal);
    QCOMPARE(signal.methodSignature(), QByteArray("checkboxStateChanged(bool)"));
    QCOMPARE(signal.parameterNames(), QByteArrayList{"checked"});
}

void test_check_box_delegate::space_ticks_all_that_is_selected()
{
    QStandardItemModel model(5, 2);
    QTableView view;
    view.setModel(&model);
    auto* delegate = new CheckBoxDelegate(&view);
    view.setItemDelegate(delegate);
    QSignalSpy changed(delegate, &CheckBoxDelegate::checkboxStateChanged);
    const auto ticks = [&model] {
        QString all;
        for (int row = 0; row < model.rowCount(); ++row)
            all += model.index(row, 0).data().toBool() ? 'x' : '.';
        return all;
    };

    view.setCurrentIndex(model.index(1, 0));
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Space);
    QCOMPARE(ticks(), QStringLiteral(".xxx."));
    QCOMPARE(changed.size(), 1); // the map is drawn once
    QTest::keyClick(&view, Qt::Key_Space);
    QCOMPARE(ticks(), QStringLiteral("....."));
    QCOMPARE(changed.size(), 2);
    // The one under the cursor always changes, and the others follow it.
    model.setData(model.index(3, 0), true);
    QTest::keyClick(&view, Qt::Key_Space);
    QCOMPARE(ticks(), QStringLiteral("....."));
    model.setData(model.index(1, 0), true);
    QTest::keyClick(&view, Qt::Key_Space);
    QCOMPARE(ticks(), QStringLiteral(".xxx."));

    // Names that are selected with the ticks are left alone.
    view.selectAll();
    QTest::keyClick(&view, Qt::Key_Space);
    QCOMPARE(ticks(), QStringLiteral("....."));
    QTest::keyClick(&view, Qt::Key_Space);
    QCOMPARE(ticks(), QStringLiteral("xxxxx"));
    for (int row = 0; row < model.rowCount(); ++row)
        QVERIFY(!model.index(row, 1).data().isValid());
    // By mouse it is the one that is hit.
    const QRect hit = view.visualRect(model.index(1, 0));
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, hit.center());
    QCOMPARE(ticks(), QStringLiteral("x.xxx"));
}

void test_check_box_delegate::other_columns_are_the_base_class_data()
{
    QTest::addColumn<int>("column");
    for (const int column : {1, 2, 3, 4})
        QTest::addRow("%d", column) << column;
}

void test_check_box_delegate::other_columns_are_the_base_class()
{
    QFETCH(int, column);
    QStandardItemModel model(1, 5);
    model.setData(model.index(0, column), "true");
    const QModelIndex index = model.index(0, column);
    const auto drawn_by = [&index](const QStyledItemDelegate& delegate) {
        QImage image = blank();
        QPainter painter(&image);
        delegate.paint(&painter, option(), index);
        return image;
    };
    QCOMPARE(drawn_by(CheckBoxDelegate()), drawn_by(QStyledItemDelegate()));

    CheckBoxDelegate delegate;
    QSignalSpy changed(&delegate, &CheckBoxDelegate::checkboxStateChanged);
    const QPointF inside = indicator_place().center();
    QMouseEvent release(QEvent::MouseButtonRelease, inside, inside, Qt::LeftButton, Qt::LeftButton,
                        Qt::NoModifier);
    QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier);
    QVERIFY(!delegate.editorEvent(&release, &model, option(), index));
    QVERIFY(!delegate.editorEvent(&space, &model, option(), index));
    // What the base class can toggle, it toggles.
    model.itemFromIndex(index)->setCheckable(true);
    QStyleOptionViewItem enabled = option();
    enabled.state |= QStyle::State_Enabled;
    QVERIFY(delegate.editorEvent(&space, &model, enabled, index));
    QCOMPARE(model.itemFromIndex(index)->checkState(), Qt::Checked);
    QCOMPARE(index.data().toString(), QStringLiteral("true"));
    QCOMPARE(changed.size(), 0);
}

void test_check_box_delegate::unused_threads_log_their_labels()
{
    const log_capture log;
    table_display display;
    other_information information;
    for (QThread* thread : {static_cast<QThread*>(&display), static_cast<QThread*>(&information)}) {
        thread->start();
        QVERIFY(thread->wait(10'000));
    }
    QCOMPARE(log.texts().size(), 2);
    static const QRegularExpression display_line("^table_display ID: 0x[0-9a-f]+$");
    static const QRegularExpression information_line("^other_information ID: 0x[0-9a-f]+$");
    QVERIFY(display_line.match(log.texts().at(0)).hasMatch());
    QVERIFY(information_line.match(log.texts().at(1)).hasMatch());
}

QTEST_MAIN(test_check_box_delegate)
#include "test_check_box_delegate.moc"
