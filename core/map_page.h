#pragma once

#include <QStringList>
#include <QUrl>
#include <QWebEnginePage>

/// The page of the map view. What an imported file holds between its commas
/// reaches the page as script text, so the page has no way out: it goes nowhere
/// but where the program sends it, which is to its own three pages, opens no
/// window or box, and gets no file, download or permission.
///
/// What the page may load is in the pages' Content-Security-Policy, which does
/// not stop a script from leaving the page; this class does.
class map_page : public QWebEnginePage
{
    Q_OBJECT

public:
    explicit map_page(QObject* parent = nullptr);

    /// Where a page of the program lies, of a name such as "/index.html".
    [[nodiscard]] static QUrl url_of(const QString& page);
    /// The names of the program's own pages.
    [[nodiscard]] static QStringList own_pages();

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool is_main_frame) override;
    QWebEnginePage* createWindow(WebWindowType type) override;
    QStringList chooseFiles(FileSelectionMode mode, const QStringList& old_files,
                            const QStringList& accepted_types) override;
    void javaScriptAlert(const QUrl& origin, const QString& text) override;
    bool javaScriptConfirm(const QUrl& origin, const QString& text) override;
    bool javaScriptPrompt(const QUrl& origin, const QString& text, const QString& default_text,
                          QString* answer) override;
};
