#pragma once

#include <QPointer>
#include <QString>
#include <QThread>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkReply;

/// Looks on the update host for a newer version of this program, and fetches it
/// into the program's own folder. Starting it is left to the user.
///
/// Results and failures are told in boxes, in Chinese whatever the language.
class software_upgrade : public QThread
{
    Q_OBJECT
    Q_MOC_INCLUDE(<QNetworkReply>)

public:
    explicit software_upgrade(QObject* parent = nullptr);
    ~software_upgrade() override;

    QNetworkAccessManager* manager; ///< used for the check
    QString current_version;        ///< the running version, from the last check
    int language = 0;               ///< from the last check; no text depends on it
    QString file_name;              ///< of the file to fetch, without a folder
    QString download_url;           ///< of the file to fetch; empty before a check

    /// The feed, by default the update host's.
    QUrl feed;
    /// Where a fetched file goes, by default the program's folder.
    QString folder;

signals:
    /// Received size, total size, percent; a percent of -1 where the total is not
    /// known.
    void send_set_ui_signal_to_software_upgrade(QString bytesReceived, QString bytesTotal,
                                                int progressBar);

public slots:
    /// Asks the feed for the latest version, which is compared with `version` as
    /// plain text.
    void upgrade_request(QString version, int language);
    /// Takes the feed's answer.
    void reply_finished(QNetworkReply* reply);
    /// Fetches the file that the last check named, and ends the program when it
    /// has been written.
    void download_file();

protected:
    void run() override;

private:
    void take_feed(const QString& text);
    void tell_progress(qint64 received, qint64 total);
    void download_finished(QNetworkReply& reply);

    QPointer<QNetworkReply> m_check; ///< the check under way
};
