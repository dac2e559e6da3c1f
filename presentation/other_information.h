#pragma once

#include "core/records.h"

#include <QThread>

/// Declared for its meta-object only: the totals run in the hub, and the program
/// makes no instance of this class.
class other_information : public QThread
{
    Q_OBJECT

public:
    using QThread::QThread;

signals:
    /// Checked count, area in square metres, area in mu, length, points, records,
    /// and the checked measurements.
    void information(QString checked, QString areameter, QString areamu, QString length,
                     QString points, QString records, QList<widgetData> checked_data);

protected:
    void run() override;
};
