#pragma once

#include <QList>

/// The milliseconds, rounded, for which serial ports and sockets waited at most, each
/// time so far in their order; -1 for a wait without end.
QList<int> asked_polls();
void forget_asked_polls();
