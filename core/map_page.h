#pragma once

#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QWebEnginePage>

/// The page of the map view. What an imported file holds between its commas
/// reaches the page as script text, so the page has no way out: it goes nowhere
/// but where the program sends it, which is to its own three pages, opens no
/// window or box, and gets no file, download or permission.
///
/// What the page may load is in the pages' Content-Security-Policy, which does
/// not stop a script from leaving the page; this class does.
///
/// A script may also never end, or bring the page's process down. The page asks
/// its process for a sign of life; one that gives none for long is ended, and
/// the page that was shown is loaded once more, without its figures.
class map_page : public QWebEnginePage
{
    Q_OBJECT

public:
    explicit map_page(QObject* parent = nullptr);

    /// Where a page of the program lies, of a name such as "/index.html".
    [[nodiscard]] static QUrl url_of(const QString& page);
    /// The names of the program's own pages.
    [[nodiscard]] static QStringList own_pages();

    /// So many seconds without a sign of life end the page's process. Drawing
    /// 500,000 points keeps a page busy for some two seconds on two cores; a
    /// slow or busy computer must not lose its figures either.
    int patience = 20;

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool is_main_frame) override;
    QWebEnginePage* createWindow(WebWindowType type) override;
    QStringList chooseFiles(FileSelectionMode mode, const QStringList& old_files,
                            const QStringList& accepted_types) override;
    void javaScriptAlert(const QUrl& origin, const QString& text) override;
    bool javaScriptConfirm(const QUrl& origin, const QString& text) override;
    bool javaScriptPrompt(const QUrl& origin, const QString& text, const QString& default_text,
                          QString* answer) override;

private:
    void look_for_life();
    void end_process();
    void load_again();

    QUrl m_shown; ///< the last page that the program asked for
    QTimer m_heartbeat;
    bool m_answered = true;    ///< since the last beat
    int m_beats_missed = 0;    ///< in a row
    int m_processes_ended = 0; ///< in a row without an answer between
};
