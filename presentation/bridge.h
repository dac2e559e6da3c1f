#pragma once

#include <QObject>

/// The object that a map page sees under the name "bridge_name". It offers
/// nothing: no call comes back from the page.
class bridge : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
};
