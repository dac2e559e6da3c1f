#include "stage.h"

#include "local_server.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPixmap>
#include <QPointer>
#include <QProcess>
#include <QScreen>
#include <QThread>

#include <cstdio>

void say(const QString& text)
{
    std::fprintf(stdout, "%s\n", qPrintable(text));
    std::fflush(stdout);
}

void check(bool holds, const QString& what)
{
    if (!holds)
        throw step_failed(what);
}

stage::stage(const QString& picture_folder, local_server& tiles)
    : m_folder(picture_folder), m_tiles(tiles)
{
    QDir().mkpath(m_folder);
}

void stage::in_gui_thread(const std::function<void()>& work)
{
    QMetaObject::invokeMethod(qApp, work, Qt::BlockingQueuedConnection);
}

void stage::xdotool(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    constexpr int longest = 60'000; // ms, on a busy machine
    if (!process.waitForFinished(longest) || process.exitCode() != 0)
        throw step_failed(QStringLiteral("xdotool %1: %2")
                              .arg(arguments.join(QLatin1Char(' ')),
                                   QString::fromLocal8Bit(process.readAllStandardError())));
}

bool stage::comes_true(const std::function<bool()>& condition, int timeout_ms) const
{
    const QDeadlineTimer deadline(qint64{timeout_ms} * patience);
    while (!see(condition)) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(20);
    }
    return true;
}

void stage::wait_for(const QString& what, const std::function<bool()>& condition,
                     int timeout_ms) const
{
    check(comes_true(condition, timeout_ms), QStringLiteral("waited in vain: %1").arg(what));
}

QWidget* stage::widget(const QString& name)
{
    QWidgetList windows = QApplication::topLevelWidgets();
    if (QWidget* front = QApplication::activeModalWidget(); front != nullptr)
        windows.prepend(front);
    // A dialog that was closed may still be there, with a button of the same name.
    QWidget* hidden = nullptr;
    for (QWidget* window : windows) {
        auto* found = window->findChild<QWidget*>(name);
        if (found != nullptr && found->isVisible())
            return found;
        if (found != nullptr)
            hidden = found;
    }
    if (hidden != nullptr)
        return hidden;
    qFatal("no widget of the name %s", qPrintable(name));
}

QWidget* stage::in_front()
{
    QWidget* dialog = QApplication::activeModalWidget();
    return dialog != nullptr && dialog->isVisible() ? dialog : nullptr;
}

QMessageBox* stage::box()
{
    auto* found = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    return found != nullptr && found->isVisible() ? found : nullptr;
}

void stage::move_to(const QPoint& place) const
{
    xdotool({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())});
}

void stage::click(const QPoint& place, int times) const
{
    move_to(place);
    xdotool({QStringLiteral("click"), QStringLiteral("--repeat"), QString::number(times),
             QStringLiteral("--delay"), QStringLiteral("60"), QStringLiteral("1")});
}

stage::spot stage::middle_of(const QWidget* shown)
{
    if (shown == nullptr)
        return {};
    const QWidget* const window = shown->window();
    return {window->winId(), shown->mapTo(window, shown->rect().center())};
}

void stage::click(const spot& place) const
{
    check(place.window != 0, QStringLiteral("nothing to click"));
    xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), QString::number(place.window),
             QStringLiteral("--"), QString::number(place.inside.x()),
             QString::number(place.inside.y())});
    xdotool({QStringLiteral("click"), QStringLiteral("1")});
}

void stage::click(const QString& widget_name) const
{
    click(see([&] { return middle_of(widget(widget_name)); }));
}

void stage::click_in_front(const QString& widget_name) const
{
    click(see([&] {
        const QWidget* const front = in_front();
        return middle_of(front == nullptr ? nullptr : front->findChild<QWidget*>(widget_name));
    }));
}

void stage::wait_for_dialog(const QString& class_name) const
{
    wait_for(QStringLiteral("the dialog %1").arg(class_name), [&] {
        return in_front() != nullptr && class_name == in_front()->metaObject()->className();
    });
    QThread::msleep(300); // until the window manager has placed and decorated it
}

void stage::click_until(const QString& what, const std::function<spot()>& place,
                        const std::function<bool()>& done) const
{
    constexpr int attempts = 3;
    for (int i = 0; i < attempts; ++i) {
        const spot at = see([&] { return done() ? spot() : place(); });
        if (at.window != 0)
            click(at);
        if (comes_true(done, 2000))
            return;
    }
    throw step_failed(QStringLiteral("clicked in vain: %1").arg(what));
}

void stage::close(const QPointer<QWidget>& one) const
{
    // All frames are alike, and Qt may not have heard of that of a new window.
    const int title_bar = see([] {
        const QWidget* const window = widget(QStringLiteral("centralWidget"))->window();
        return window->geometry().top() - window->frameGeometry().top();
    });
    constexpr int to_the_middle = 11; // pixels of the close button, in the upper right corner
    click_until(
        QStringLiteral("the window closed"),
        [&] {
            return spot{one->winId(),
                        QPoint(one->width() - to_the_middle, to_the_middle - title_bar)};
        },
        [&one] { return one.isNull() || !one->isVisible(); });
}

void stage::close_dialog() const
{
    close(see([] { return QPointer(in_front()); }));
}

void stage::type(const QString& text) const
{
    xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"),
             QStringLiteral("--"), text});
}

void stage::fill(const QString& field_name, const QString& text) const
{
    click(field_name);
    press(QStringLiteral("ctrl+a"));
    type(text);
}

void stage::press(const QString& key) const
{
    xdotool({QStringLiteral("key"), key});
}

void stage::choose(const QString& menu_title, const QString& action_name) const
{
    // Menus are found by their place in the bar: their titles change.
    const auto menu_of = [&]() -> QMenu* {
        const auto* bar = qobject_cast<QMenuBar*>(widget(QStringLiteral("menuBar")));
        for (QAction* entry : bar->actions()) {
            if (entry->text() == menu_title)
                return entry->menu();
        }
        return nullptr;
    };
    click(see([&] {
        const auto* bar = qobject_cast<QMenuBar*>(widget(QStringLiteral("menuBar")));
        QMenu* menu = menu_of();
        return menu == nullptr ? QPoint()
                               : bar->mapToGlobal(bar->actionGeometry(menu->menuAction()).center());
    }));
    wait_for(
        QStringLiteral("menu %1 open").arg(menu_title),
        [&] { return menu_of() != nullptr && menu_of()->isVisible(); }, 5000);
    // The action may be one level further down.
    const auto named = [&](const QMenu* menu) -> QAction* {
        for (QAction* action : menu->actions()) {
            if (action->objectName() == action_name)
                return action;
        }
        return nullptr;
    };
    const auto submenu_of = [&]() -> QMenu* {
        for (const QAction* entry : menu_of()->actions()) {
            if (entry->menu() != nullptr && named(entry->menu()) != nullptr)
                return entry->menu();
        }
        return nullptr;
    };
    const auto place_in = [](QMenu* menu, QAction* action) {
        return action == nullptr ? QPoint()
                                 : menu->mapToGlobal(menu->actionGeometry(action).center());
    };
    if (see([&] { return named(menu_of()) == nullptr && submenu_of() != nullptr; })) {
        click(see([&] { return place_in(menu_of(), submenu_of()->menuAction()); }));
        wait_for(
            QStringLiteral("the submenu of %1 open").arg(action_name),
            [&] { return submenu_of()->isVisible(); }, 5000);
        click(see([&] { return place_in(submenu_of(), named(submenu_of())); }));
    } else {
        click(see([&] { return place_in(menu_of(), named(menu_of())); }));
    }
    wait_for(
        QStringLiteral("menu %1 closed").arg(menu_title),
        [] { return QApplication::activePopupWidget() == nullptr; }, 5000);
}

void stage::resize_window(const QSize& size) const
{
    const QString id = see(
        [] { return QString::number(widget(QStringLiteral("centralWidget"))->window()->winId()); });
    xdotool({QStringLiteral("windowsize"), id, QString::number(size.width()),
             QString::number(size.height())});
    wait_for(
        QStringLiteral("window of %1 by %2").arg(size.width()).arg(size.height()),
        [&] { return widget(QStringLiteral("centralWidget"))->window()->size() == size; }, 5000);
}

void stage::wait_for_form(const QString& title) const
{
    const auto form = [&]() -> QWidget* {
        QWidget* front = QApplication::activeModalWidget();
        return front != nullptr && front->isVisible() && front->windowTitle() == title ? front
                                                                                       : nullptr;
    };
    wait_for(QStringLiteral("a form titled %1").arg(title), [&] { return form() != nullptr; });
    // When two dialogs close at once, the window manager may give none the keys: a
    // person clicks the title then.
    const auto active = [&] { return form() != nullptr && form()->isActiveWindow(); };
    constexpr int time_of_window_manager = 2000; // ms
    const QDeadlineTimer deadline(time_of_window_manager);
    while (!see(active) && !deadline.hasExpired())
        QThread::msleep(20);
    if (!see(active)) {
        constexpr int above_the_form = 10; // pixels, into the title bar
        click(see([&] {
            const QRect place = form()->geometry();
            return QPoint(place.center().x(), place.top() - above_the_form);
        }));
    }
    wait_for(QStringLiteral("the form titled %1 in front").arg(title), active);
}

QString stage::wait_for_box(const QString& title, int timeout_ms) const
{
    wait_for(
        QStringLiteral("a box titled %1").arg(title),
        [&] { return box() != nullptr && box()->windowTitle() == title; }, timeout_ms);
    return see([] { return box()->text(); });
}

void stage::answer_box(int standard_button) const
{
    // The next box may take the place of this one in memory.
    const QPointer<QMessageBox> open = see([] { return QPointer(box()); });
    click_until(
        QStringLiteral("the box closed"),
        [&] {
            return middle_of(
                open->button(static_cast<QMessageBox::StandardButton>(standard_button)));
        },
        [&open] { return open.isNull() || box() != open; });
}

void stage::give_path(const QString& path) const
{
    const auto dialog = [] {
        auto* front = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        return front != nullptr && front->isVisible() ? front : nullptr;
    };
    wait_for(QStringLiteral("a file dialog"), [&] { return dialog() != nullptr; });
    constexpr int placing = 500; // ms in which the window manager places and decorates it
    QThread::msleep(placing);
    const auto line = [] { return qobject_cast<QLineEdit*>(QApplication::focusWidget()); };
    const auto has_the_keys = [&] {
        return dialog() != nullptr && dialog()->isActiveWindow() && line() != nullptr;
    };
    // On a busy machine a key may be lost, or come when the list of files that opens
    // below the line takes it: a person looks, and types it again.
    constexpr int attempts = 3;
    constexpr int looking = 5000; // ms
    for (int i = 0; i < attempts; ++i) {
        if (!see(has_the_keys))
            click(QStringLiteral("fileNameEdit"));
        wait_for(QStringLiteral("the file dialog in front"), has_the_keys);
        press(QStringLiteral("ctrl+a"));
        type(path);
        if (!comes_true([&] { return line() != nullptr && line()->text() == path; }, looking))
            continue;
        press(QStringLiteral("Return"));
        if (comes_true([&] { return dialog() == nullptr; }, looking))
            return;
    }
    throw step_failed(QStringLiteral("the file dialog does not take ") + path);
}

void stage::set_network(bool reached) const
{
    in_gui_thread([&] { m_tiles.open = reached; });
}

void stage::wait_for_screen(const QString& widget_name) const
{
    wait_for(QStringLiteral("%1 on the screen as it is").arg(widget_name), [&] {
        QWidget* const shown = widget(widget_name);
        const QPoint place = shown->mapToGlobal(QPoint());
        const QImage screen =
            QApplication::primaryScreen()
                ->grabWindow(0, place.x(), place.y(), shown->width(), shown->height())
                .toImage();
        const QImage itself = shown->grab().toImage();
        return screen.convertToFormat(QImage::Format_RGB32) ==
               itself.convertToFormat(QImage::Format_RGB32);
    });
}

void stage::take_picture(const QString& name) const
{
    const QString path = m_folder + QLatin1Char('/') + name + QStringLiteral(".png");
    const bool saved = see([&] {
        QImage screen = QApplication::primaryScreen()->grabWindow(0).toImage();
        const QWidget* front = in_front() != nullptr ? in_front() : QApplication::activeWindow();
        if (front != nullptr) {
            const QRect place = front->frameGeometry();
            screen.setText(QStringLiteral("in front"), QStringLiteral("%1x%2+%3+%4")
                                                           .arg(place.width())
                                                           .arg(place.height())
                                                           .arg(place.x())
                                                           .arg(place.y()));
        }
        return !screen.isNull() && screen.save(path);
    });
    if (!saved)
        throw step_failed(QStringLiteral("no picture %1").arg(name));
}
