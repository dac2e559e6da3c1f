#pragma once

#include "coordinates/json_file_manager.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QTest>

#include <memory>

// How the tests use the forms: by object name, with the events of a person.

/// The widget of that name, which must be there.
template <typename Widget>
Widget* find(const QWidget* form, const QString& name)
{
    auto* found = form->findChild<Widget*>(name);
    if (found == nullptr)
        qFatal("no %s in the form", qPrintable(name));
    return found;
}

inline QString text_in(const QWidget* form, const QString& edit)
{
    return find<QLineEdit>(form, edit)->text();
}

inline void type(const QWidget* form, const QString& edit, const QString& text)
{
    auto* field = find<QLineEdit>(form, edit);
    field->setFocus();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    field->insert(text); // keys have no degree signs
}

inline void press(const QWidget* form, const QString& button)
{
    QTest::mouseClick(find<QAbstractButton>(form, button), Qt::LeftButton, {}, QPoint(10, 10));
}

/// The names of the widgets that Tab visits, from the first one on.
inline QStringList tab_order(QWidget* form, const QString& first)
{
    QStringList visited;
    auto* start = find<QWidget>(form, first);
    QWidget* at = start;
    do {
        if ((at->focusPolicy() & Qt::TabFocus) != 0 && at->isEnabled() &&
            at->focusProxy() == nullptr)
            visited += at->objectName();
        at = at->nextInFocusChain();
    } while (at != start);
    visited.removeAll(QString());
    return visited;
}

/// A store with the four built-in systems, anew for each test.
class fresh_store
{
public:
    fresh_store() : m_store(std::make_unique<JsonFileManager>())
    {
        QFile::remove(m_store->file_path);
        m_store = std::make_unique<JsonFileManager>();
    }
    JsonFileManager* operator->() const { return m_store.get(); }
    [[nodiscard]] JsonFileManager* get() const { return m_store.get(); }
    /// What a start of the program would load now.
    [[nodiscard]] static QList<CoordinateSystem> on_disk() { return JsonFileManager().systems; }
    /// From now on nothing can be written.
    void break_file() const { m_store->file_path += QStringLiteral("/below-a-file.json"); }

private:
    std::unique_ptr<JsonFileManager> m_store;
};
