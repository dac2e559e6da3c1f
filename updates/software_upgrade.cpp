#include "updates/software_upgrade.h"

#include "update_host.h"
#include "updates/download.h"
#include "updates/feeds.h"

#include <QApplication>
#include <QDebug>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <optional>

namespace {

const QString check_failed = QStringLiteral("检查失败");
const QString check_title = QStringLiteral("检查更新");
const QString download_failed = QStringLiteral("下载错误");

QString megabytes(qint64 bytes)
{
    constexpr qint64 megabyte = 1048576;
    return QString::number(bytes / megabyte) + QStringLiteral("MB");
}

} // namespace

software_upgrade::software_upgrade(QObject* parent)
    : QThread(parent), manager(new QNetworkAccessManager(this)),
      feed(update_host::address(QStringLiteral("/software_update.json"))),
      folder(QCoreApplication::applicationDirPath())
{
}

software_upgrade::~software_upgrade()
{
    QThread::wait();
}

void software_upgrade::run()
{
    qDebug() << "software_upgrade ID:" << QThread::currentThreadId();
}

// The check

void software_upgrade::upgrade_request(QString version, int newValue)
{
    current_version = version;
    language = newValue;
    // A check that is still under way gives way: one press, one answer.
    disconnect(manager, &QNetworkAccessManager::finished, this, &software_upgrade::reply_finished);
    if (m_check != nullptr) {
        m_check->abort();
        m_check->deleteLater();
    }
    connect(manager, &QNetworkAccessManager::finished, this, &software_upgrade::reply_finished);
    m_check = manager->get(download::list_request(feed));
}

void software_upgrade::reply_finished(QNetworkReply* reply)
{
    m_check = nullptr;
    // A request that failed has an empty body, which is no JSON.
    take_feed(QString::fromUtf8(reply->readAll()));
    reply->deleteLater();
    if (m_check == nullptr)
        disconnect(manager, &QNetworkAccessManager::finished, this,
                   &software_upgrade::reply_finished);
}

void software_upgrade::take_feed(const QString& text)
{
    qDebug() << text;
    QString error;
    const std::optional<feeds::new_version> news = feeds::read_version(text.toUtf8(), error);
    if (!news) {
        if (error.isEmpty())
            return;
        QMessageBox::critical(QApplication::activeWindow(), check_failed,
                              QStringLiteral("服务器地址错误或JSON格式错误!"));
        QMessageBox::critical(QApplication::activeWindow(), check_failed, error);
        qDebug() << error;
        return;
    }
    download_url = news->url;
    file_name = download::file_name(QUrl(download_url));

    QString message = QStringLiteral("当前已经是最新版本!");
    // As plain text, not by number: "V3.10" comes before "V3.2".
    if (news->latest.compare(current_version) > 0) {
        message = QStringLiteral("检测到新版本!\n版本号：") + news->latest +
                  QStringLiteral("\n更新时间：") + news->time + QStringLiteral("\n更新说明：") +
                  news->note;
    }
    QMessageBox box(QMessageBox::Information, check_title, message, QMessageBox::Ok,
                    QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText); // the host's words are words
    box.exec();
}

// The download

void software_upgrade::download_file()
{
    auto* const loader = new QNetworkAccessManager(this);
    qDebug() << folder + QLatin1Char('/') + file_name;
    QNetworkReply* const reply = loader->get(download::request_for(QUrl(download_url)));
    connect(reply, &QNetworkReply::downloadProgress, this, &software_upgrade::tell_progress);
    connect(reply, &QNetworkReply::finished, this, [this, loader, reply] {
        download_finished(*reply);
        reply->deleteLater();
        loader->deleteLater();
    });
}

void software_upgrade::tell_progress(qint64 received, qint64 total)
{
    qDebug() << "Download progress: " << received << "/" << total;
    const double percent =
        total > 0 ? static_cast<double>(received) / static_cast<double>(total) * 100.0 : -1.0;
    emit send_set_ui_signal_to_software_upgrade(megabytes(received), megabytes(total),
                                                static_cast<int>(percent));
}

void software_upgrade::download_finished(QNetworkReply& reply)
{
    if (reply.error() != QNetworkReply::NoError) {
        qDebug() << "Download failed: " << reply.errorString();
        QMessageBox::warning(QApplication::activeWindow(), download_failed,
                             QStringLiteral("下载失败，原因可能是网络问题或服务器无响应"));
        return;
    }
    const QString path = folder + QLatin1Char('/') + file_name;
    if (!download::write_file(path, reply.readAll())) {
        qDebug() << "Failed to open the file for writing.";
        QMessageBox::warning(QApplication::activeWindow(), download_failed,
                             QStringLiteral("文件写入失败，请检查是否有足够的权限或磁盘空间"));
        return;
    }
    qDebug() << "Downloaded successfully to:" << path;
    QMessageBox::information(
        QApplication::activeWindow(), QStringLiteral("下载"),
        QStringLiteral("已下载最新版本到本软件的同地址下，请启动最新应用程序"));
    QCoreApplication::quit();
}
