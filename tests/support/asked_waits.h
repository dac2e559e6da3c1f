#pragma once

#include <QList>

/// The milliseconds of all single shots that were asked of QTimer so far, in their
/// order. For tests that are linked with WRAPS.
QList<int>& asked_single_shots();
