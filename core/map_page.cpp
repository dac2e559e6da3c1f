#include "core/map_page.h"

#include <QColor>
#include <QDebug>
#include <QDir>
#include <QPointer>
#include <QWebEngineDownloadRequest>
#include <QWebEngineHistory>
#include <QWebEngineLoadingInfo>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineSettings>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <csignal>
#endif

namespace {

constexpr int heartbeat_ms = 1000;

/// Between the end of the page's process and the next one, so that one that
/// ends at once each time does not take all of a core.
constexpr int pause_before_loading_again_ms = 500;

const QUrl empty_page(QStringLiteral("about:blank")); // the engine's own

} // namespace

map_page::map_page(QObject* parent) : QWebEnginePage(parent)
{
    // The colour of the pages, so that nothing flashes while one loads.
    setBackgroundColor(QColor(0xee, 0xf1, 0xf3));
    connect(profile(), &QWebEngineProfile::downloadRequested, this,
            [](QWebEngineDownloadRequest* request) { request->cancel(); });
    connect(this, &QWebEnginePage::featurePermissionRequested, this,
            [this](const QUrl& origin, Feature feature) {
                setFeaturePermission(origin, feature, PermissionDeniedByUser);
            });
    settings()->setUnknownUrlSchemePolicy(QWebEngineSettings::DisallowUnknownUrlSchemes);
    // A page that cannot be loaded leaves the map empty: neither the page before
    // stays, which would take figures for another provider's map, nor the engine's
    // own words come, in a language of its own choosing.
    settings()->setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    connect(this, &QWebEnginePage::loadingChanged, this, [this](const QWebEngineLoadingInfo& info) {
        if (info.status() == QWebEngineLoadingInfo::LoadFailedStatus && info.url() == m_shown)
            load(empty_page);
        // There is no way back, so the pages before need not be remembered.
        if (info.status() == QWebEngineLoadingInfo::LoadSucceededStatus)
            history()->clear();
    });
    // A name that is looked up tells a host as much as a request does.
    settings()->setAttribute(QWebEngineSettings::DnsPrefetchEnabled, false);

    connect(this, &QWebEnginePage::renderProcessTerminated, this,
            [this](RenderProcessTerminationStatus status, int code) {
                qWarning() << "The map page's process has ended:" << status << code;
                QTimer::singleShot(pause_before_loading_again_ms, this, &map_page::load_again);
            });
    connect(&m_heartbeat, &QTimer::timeout, this, &map_page::look_for_life);
    m_heartbeat.start(heartbeat_ms);
}

QStringList map_page::own_pages()
{
    return {QStringLiteral("/index.html"), QStringLiteral("/index_google.html"),
            QStringLiteral("/index_tiandi.html")};
}

QUrl map_page::url_of(const QString& page)
{
    // A bare path is a URL on Windows only, where the drive letter makes it
    // one; fromUserInput turns it into a file URL everywhere.
    return QUrl::fromUserInput(QDir::currentPath() + page);
}

bool map_page::acceptNavigationRequest(const QUrl& url, NavigationType type, bool is_main_frame)
{
    // "Typed" is what the program itself loads. A script, a link, the way back
    // or a reload would leave the map without its figures even on an own page.
    if (is_main_frame && type == NavigationTypeTyped) {
        if (url == empty_page)
            return true;
        const QStringList pages = own_pages();
        for (const QString& page : pages) {
            if (url != url_of(page))
                continue;
            m_shown = url;
            return true;
        }
    }
    qWarning() << "The map page may not go to" << url.toDisplayString();
    return false;
}

QWebEnginePage* map_page::createWindow(WebWindowType /*type*/)
{
    return nullptr;
}

QStringList map_page::chooseFiles(FileSelectionMode /*mode*/, const QStringList& /*old_files*/,
                                  const QStringList& /*accepted_types*/)
{
    return {};
}

void map_page::javaScriptAlert(const QUrl& /*origin*/, const QString& /*text*/) {}

bool map_page::javaScriptConfirm(const QUrl& /*origin*/, const QString& /*text*/)
{
    // Yes: it is also asked when the program loads another page and a script
    // wants to stay.
    return true;
}

bool map_page::javaScriptPrompt(const QUrl& /*origin*/, const QString& /*text*/,
                                const QString& /*default_text*/, QString* /*answer*/)
{
    return false;
}

// Counted in beats, not by the clock: while the program itself is busy none
// pass, and no answer could come in either.
void map_page::look_for_life()
{
    if (m_answered)
        m_beats_missed = 0;
    else
        ++m_beats_missed;
    m_answered = false;
    // Each process that was ended in vain doubles the time that the next one
    // has, for computers on which the start alone takes longer.
    if (m_beats_missed >= patience << qMin(m_processes_ended, 3)) {
        m_beats_missed = 0;
        end_process();
    }
    // In a world of its own, out of reach of what runs in the page.
    runJavaScript(QStringLiteral("1"), QWebEngineScript::ApplicationWorld,
                  [page = QPointer(this)](const QVariant& answer) {
                      if (!page || answer.toInt() != 1)
                          return;
                      page->m_answered = true;
                      page->m_processes_ended = 0;
                  });
}

void map_page::end_process()
{
    const qint64 process = renderProcessPid();
    if (process <= 0)
        return; // none yet, or it has just ended
    qWarning() << "The map page does not answer; its process is ended";
    ++m_processes_ended;
#ifdef Q_OS_WIN
    if (HANDLE handle = OpenProcess(PROCESS_TERMINATE, FALSE, static_cast<DWORD>(process))) {
        TerminateProcess(handle, 1);
        CloseHandle(handle);
    }
#else
    ::kill(static_cast<pid_t>(process), SIGKILL);
#endif
}

void map_page::load_again()
{
    if (m_shown.isValid())
        load(m_shown);
}
