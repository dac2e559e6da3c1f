#pragma once

#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QString>
#include <qwindowdefs.h>

#include <functional>
#include <stdexcept>

class QAction;
class QMenu;
class QMessageBox;
class QWidget;
class local_server;

/// A step of the tour did not come out as it should.
class step_failed : public std::runtime_error
{
public:
    explicit step_failed(const QString& what) : std::runtime_error(what.toStdString()) {}
};

/// A line on standard output.
void say(const QString& text);
/// Fails the step with `what` unless `holds`.
void check(bool holds, const QString& what);

/// What a person has in front of the program: eyes, a mouse and a keyboard. All
/// events go through the X server. Lives in a thread of its own; looks at
/// widgets happen in the GUI thread, also while a box is open.
class stage
{
public:
    /// The machine may be busy with other work: all waits last so many times as long
    /// as they say before they fail.
    static constexpr int patience = 8;

    stage(const QString& picture_folder, local_server& tiles);

    /// Runs `look` in the GUI thread and returns what it returns.
    template <typename Look>
    auto see(Look look) const
    {
        decltype(look()) seen{};
        in_gui_thread([&] { seen = look(); });
        return seen;
    }
    /// Waits until `condition`, seen in the GUI thread, holds; false if it does not
    /// within `timeout_ms`.
    [[nodiscard]] bool comes_true(const std::function<bool()>& condition, int timeout_ms) const;
    /// Waits until `condition`, seen in the GUI thread, holds; fails with
    /// `what` after `timeout_ms`.
    void wait_for(const QString& what, const std::function<bool()>& condition,
                  int timeout_ms = 30'000) const;

    /// The widget of that object name, which must be there; that of the form in
    /// front where several have one. GUI thread only.
    static QWidget* widget(const QString& name);
    /// The dialog in front, or null. GUI thread only.
    static QWidget* in_front();
    /// The message box in front, or null. GUI thread only.
    static QMessageBox* box();

    /// A point of a window, which the display server knows best: when a frame has just
    /// come around a window, Qt may take its place to be lower by a title bar.
    struct spot
    {
        WId window = 0; ///< 0: none
        QPoint inside;  ///< pixels from the upper left corner of what is in the frame
    };
    /// The middle of a widget; none if it is null. GUI thread only.
    static spot middle_of(const QWidget* shown);

    void move_to(const QPoint& place) const;
    void click(const QPoint& place, int times = 1) const;
    void click(const spot& place) const;
    void click(const QString& widget_name) const;
    /// Clicks a widget of the dialog in front.
    void click_in_front(const QString& widget_name) const;
    /// Waits for a dialog of that class in front.
    void wait_for_dialog(const QString& class_name) const;
    /// Clicks what may not yet take clicks, and again if it is not done some seconds
    /// later.
    void click_until(const QString& what, const std::function<spot()>& place,
                     const std::function<bool()>& done) const;
    /// Closes a window by the button of its title bar.
    void close(const QPointer<QWidget>& one) const;
    /// Closes the dialog in front likewise.
    void close_dialog() const;
    void type(const QString& text) const;
    /// Replaces the text of a field.
    void fill(const QString& field_name, const QString& text) const;
    void press(const QString& key) const;
    /// Opens a menu of the menu bar and clicks an action in it or in a submenu.
    void choose(const QString& menu_action_name_or_title, const QString& action_name) const;
    void resize_window(const QSize& size) const;

    /// Waits for a form of that title in front.
    void wait_for_form(const QString& title) const;
    /// Waits for a box of that title and returns its text.
    QString wait_for_box(const QString& title, int timeout_ms = 30'000) const;
    /// Clicks the button of the box in front and waits until the box is gone.
    void answer_box(int standard_button) const;

    /// Types a path into the file dialog that opens and confirms it.
    void give_path(const QString& path) const;
    /// Path of a file among the pictures.
    [[nodiscard]] QString file(const QString& name) const { return m_folder + u'/' + name; }

    /// Lets the map providers be reached, or not.
    void set_network(bool reached) const;

    /// Waits until the screen shows what the widget would draw now.
    void wait_for_screen(const QString& widget_name) const;
    /// Saves the whole screen as NAME.png in the picture folder. The text "in front"
    /// of the file says where the window in front is, as WIDTHxHEIGHT+X+Y.
    void take_picture(const QString& name) const;

private:
    static void in_gui_thread(const std::function<void()>& work);
    static void xdotool(const QStringList& arguments);

    QString m_folder;
    local_server& m_tiles;
};
