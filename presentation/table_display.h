#pragma once

#include <QThread>

/// Declared for its meta-object only; the program makes no instance of it.
class table_display : public QThread
{
    Q_OBJECT

public:
    using QThread::QThread;

protected:
    void run() override;
};
