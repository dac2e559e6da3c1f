#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// The simulated instrument as a program beside the test. It ends with the
/// object.
class instrument_process
{
public:
    instrument_process() = default;
    ~instrument_process();
    instrument_process(const instrument_process&) = delete;
    instrument_process& operator=(const instrument_process&) = delete;

    /// Starts the program and returns true once every transport asked for with
    /// --adb or --pty has said that it is there.
    [[nodiscard]] bool start(const QStringList& arguments);
    /// Ends it as a user would. Returns its exit code, -1 if it had to be killed.
    int stop();

    /// Path of the pseudo-terminal.
    [[nodiscard]] QString serial_path() const;
    /// Name of the device in adb's list.
    [[nodiscard]] QString adb_serial() const;
    /// What it has printed so far.
    [[nodiscard]] QString output();
    /// Whether it runs, or how it has ended.
    [[nodiscard]] QString state();

    /// The program run to its end with these arguments: exit code and texts.
    struct result
    {
        int exit_code = -1;
        QByteArray output;
        QByteArray error;
    };
    [[nodiscard]] static result run(const QStringList& arguments);

private:
    /// The first word behind `prefix` in a line of the output.
    [[nodiscard]] QString word_after(const QString& prefix) const;

    QProcess m_process;
    QString m_output;
};
