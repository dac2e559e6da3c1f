#pragma once

#include <QString>

class cable;
class local_server;

/// The load run: everything at once, again and again, for the minutes that
/// VELMO_LOAD_MINUTES says (20). Reads over adb and a serial port with faults and
/// pulled cables, exports, imports of large and of damaged files, uploads, changes of
/// language, map and coordinate format, ticks, deletions, forms. After each step the
/// tables must hold what an account of their own says. Memory is noted in
/// FOLDER/memory.csv. Ends the process with 1 at the first thing that is wrong.
void run_load(const QString& folder, local_server& tiles, cable& usb);
