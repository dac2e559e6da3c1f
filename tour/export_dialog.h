#pragma once

#include <QString>

class stage;

/// A choice of the export dialog, and how a file of it comes back.
struct exchange_format
{
    int index;            ///< in the dialog's list
    const char* title;    ///< of its boxes
    const char* exported; ///< what the box says
    const char* suffix;
    const char* imported;              ///< what the box says
    const char* import_title = "导入"; ///< of that box
};

/// In the export dialog, which is open: chooses a format and gives a path. Takes a
/// picture of the box that says how it went.
void export_as(const stage& at, const exchange_format& format, const QString& path);
