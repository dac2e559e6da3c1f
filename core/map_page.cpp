#include "core/map_page.h"

#include <QColor>
#include <QDebug>
#include <QDir>
#include <QWebEngineDownloadRequest>
#include <QWebEngineProfile>

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
        const QStringList pages = own_pages();
        for (const QString& page : pages) {
            if (url == url_of(page))
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
