#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/// The instrument's end of a pseudo-terminal, played by a thread of its own, so
/// that it answers while the program blocks in a wait for its port.
class scripted_instrument
{
public:
    /// What the program sent, and the baud rate that its port had then.
    struct request
    {
        QByteArray bytes;
        int baud;
        bool operator==(const request&) const = default;
    };
    /// Gives the answer to a request; runs in the instrument's thread.
    using script = std::function<QByteArray(const request&)>;

    explicit scripted_instrument(script answer = {});
    ~scripted_instrument();
    scripted_instrument(const scripted_instrument&) = delete;
    scripted_instrument& operator=(const scripted_instrument&) = delete;

    /// What the program has to open.
    [[nodiscard]] QString path() const { return m_path; }
    /// Everything asked so far: text commands and whole 11-byte frames.
    [[nodiscard]] QList<request> requests() const;
    /// The baud rate of the program's port.
    [[nodiscard]] int baud() const;
    /// Says something unasked; false where the line takes no more.
    bool say(const QByteArray& bytes) const;
    /// Pulls the plug.
    void vanish();

private:
    void play();

    script m_answer;
    int m_instrument_end = -1;
    int m_program_end = -1;
    QString m_path;
    mutable std::mutex m_mutex;
    QList<request> m_requests;
    std::atomic<bool> m_stop = false;
    std::thread m_thread;
};
