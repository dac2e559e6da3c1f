#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

/// The instrument's end of a pseudo-terminal or of a TCP connection on the loopback
/// interface, played by a thread of its own, so that it answers while the program
/// blocks in a wait for its device.
class scripted_instrument
{
public:
    enum class line
    {
        terminal,
        tcp,
    };
    /// What the program sent, and the baud rate that its port had then, 0 over TCP.
    struct request
    {
        QByteArray bytes;
        int baud;
        bool operator==(const request&) const = default;
    };
    /// Gives the answer to a request; runs in the instrument's thread.
    using script = std::function<QByteArray(const request&)>;

    explicit scripted_instrument(script answer = {}, line kind = line::terminal);
    ~scripted_instrument();
    scripted_instrument(const scripted_instrument&) = delete;
    scripted_instrument& operator=(const scripted_instrument&) = delete;

    /// What the program has to open.
    [[nodiscard]] QString path() const { return m_path; }
    /// Where the program has to connect to, once.
    [[nodiscard]] std::uint16_t tcp_port() const { return m_tcp_port; }
    /// Everything asked so far: text commands, whole frames, and what else came, in
    /// the pieces in which it came.
    [[nodiscard]] QList<request> requests() const;
    /// The baud rate of the program's port.
    [[nodiscard]] int baud() const;
    /// Says something unasked; false where the line takes no more.
    bool say(const QByteArray& bytes) const;
    /// Pulls the plug.
    void vanish();

private:
    void open_terminal();
    void open_tcp();
    /// Waits for the program to connect; false when told to stop.
    bool accept_program();
    void play();

    script m_answer;
    std::atomic<int> m_instrument_end = -1;
    int m_program_end = -1;
    int m_listening = -1;
    std::uint16_t m_tcp_port = 0;
    QString m_path;
    mutable std::mutex m_mutex;
    QList<request> m_requests;
    std::atomic<bool> m_stop = false;
    std::thread m_thread;
};
