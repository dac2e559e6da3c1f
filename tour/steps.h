#pragma once

#include "cable.h"
#include "local_server.h"

#include <QObject>
#include <QString>
#include <QThread>

#include <memory>

/// Walks through the program once the event loop runs, says each step and what
/// came of it on standard output, and ends the process with 1 at the first step
/// that fails. After the last step the program has ended by itself with 0. The
/// names of all hosts lead the web engine to the tour's own tiles.
class tour : public QObject
{
    Q_OBJECT

public:
    explicit tour(const QString& picture_folder);
    ~tour() override;

private:
    void start();

    QString m_folder;
    local_server m_tiles{local_server::kind::tls};
    cable m_cable;
    std::unique_ptr<QThread> m_person;
};
