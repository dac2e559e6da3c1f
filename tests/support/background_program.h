#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/// A program that runs beside the test and prints a line when it is ready. It
/// ends with the object.
class background_program
{
public:
    explicit background_program(const QString& program);
    ~background_program();
    background_program(const background_program&) = delete;
    background_program& operator=(const background_program&) = delete;

    /// Starts it and waits for a line that holds `ready`. Returns that
    /// line, empty when the program ends or says nothing.
    [[nodiscard]] QString start(const QStringList& arguments, const QString& ready);
    /// Waits for a further line that holds `part`. Returns it, or an empty one.
    [[nodiscard]] QString wait_for_line(const QString& part);
    /// Ends it with SIGTERM. Returns its exit code, -1 if it had to be killed.
    int stop();

private:
    QProcess m_process;
};
