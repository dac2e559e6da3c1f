#pragma once

#include "ledger.h"

#include <QString>

class QWidget;

// What the program's window holds and shows. All in the GUI thread only.

/// The lists of the window.
held_lists held();

/// What the progress label says.
int percent();

/// The visible window of that class, or null.
QWidget* window_of(const char* class_name);

/// Where the tables show something else than the lists hold; empty if nowhere.
QString tables_differ(const held_lists& lists);
