#pragma once

#include "cable.h"
#include "local_server.h"

#include <QObject>
#include <QString>
#include <QThread>

#include <memory>

/// What is done with the program, in a thread of its own. Says each step and what came
/// of it on standard output, and ends the process with 1 at the first that fails.
/// Behind the last one the program has ended by itself with 0.
using tour_script = void (*)(const QString& folder, local_server& tiles, cable& usb);

/// The script of ./run: once through the whole program, with pictures of each step.
void walk(const QString& folder, local_server& tiles, cable& usb);

/// Runs a script once the event loop runs. The names of all hosts lead the web engine
/// to the tour's own tiles.
class tour : public QObject
{
    Q_OBJECT

public:
    /// `folder` is where files and pictures go.
    tour(const QString& folder, tour_script script);
    ~tour() override;

private:
    void start();

    QString m_folder;
    tour_script m_script;
    local_server m_tiles{local_server::kind::tls};
    cable m_cable;
    std::unique_ptr<QThread> m_person;
};
