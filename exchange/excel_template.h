#pragma once

#include <QString>

/// Writes the workbook that a person fills in by hand: the sheets of all kinds
/// with examples. Tells the user how that went. \a language: 0 Chinese.
void save_excel_template(const QString& path, int language);
