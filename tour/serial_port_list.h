#pragma once

#include <QString>

/// Makes the running program see one serial port more: no pseudo-terminal stands
/// in the operating system's list of ports. GUI thread only; it takes effect
/// when the program next looks, which it does each second.
void list_serial_port(const QString& path);
